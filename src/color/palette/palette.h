#pragma once

#include "spaces/rgbacolor.h"

#include <QMap>
#include <QMetaType>
#include <QString>

#include <vector>

// The property keys a palette carries.
enum PaletteProperty : int {
    PaletteName = 0,     // "name"
    PaletteComment = 1,  // "comment"
    PaletteFileExt = 2,  // "file.ext": file name with extension, no directory
    PaletteFile = 3,     // "file": the same without its last extension
};

// Text name of a property key ("name", "comment", "file.ext", "file"); empty for an unknown key.
QString palettePropertyName(int key);
// The key of a property name, or -1.
int palettePropertyKey(const QString &name);

// An ordered list of colours with a few text properties. A plain value: copies share nothing.
// The upper bound on the number of entries is a setting of the window, not of the container.
template <typename T>
class Palette
{
public:
    using Color = RGBAColor<T>;

    Palette() = default;
    explicit Palette(std::vector<Color> entries) : m_entries(std::move(entries)) {}

    int size() const { return int(m_entries.size()); }
    bool isEmpty() const { return m_entries.empty(); }

    Color &operator[](int i) { return m_entries[size_t(i)]; }
    const Color &operator[](int i) const { return m_entries[size_t(i)]; }
    const Color &at(int i) const { return m_entries.at(size_t(i)); }

    void append(const Color &c) { m_entries.push_back(c); }
    void insert(int i, const Color &c) { m_entries.insert(m_entries.begin() + i, c); }
    void remove(int i) { m_entries.erase(m_entries.begin() + i); }
    // Clears the entries only; the properties stay.
    void clear() { m_entries.clear(); }
    void reserve(int n) { m_entries.reserve(size_t(n)); }
    // Truncates, or appends fill until the palette holds n entries.
    void resize(int n, const Color &fill)
    {
        if (n < 0)
            n = 0;
        m_entries.resize(size_t(n), fill);
    }

    const std::vector<Color> &entries() const { return m_entries; }
    std::vector<Color> &entries() { return m_entries; }

    QString property(int key) const { return m_properties.value(key); }
    void setProperty(int key, const QString &value) { m_properties.insert(key, value); }
    const QMap<int, QString> &properties() const { return m_properties; }
    void setProperties(const QMap<int, QString> &p) { m_properties = p; }

    // Same entries and same properties (an absent property equals an empty one).
    bool operator==(const Palette &o) const
    {
        if (m_entries != o.m_entries)
            return false;
        for (int key = PaletteName; key <= PaletteFile; ++key)
            if (property(key) != o.property(key))
                return false;
        return true;
    }
    bool operator!=(const Palette &o) const { return !(*this == o); }

private:
    std::vector<Color> m_entries;
    QMap<int, QString> m_properties;
};

Q_DECLARE_METATYPE(Palette<uint>)

// Registers Palette<uint> under the name queued signals use; safe to call more than once.
void registerPaletteMetaType();
