#pragma once

#include "palette/palette.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <map>
#include <optional>

// The built-in collection of named palettes. The text holds one palette a line:
// "subset/name;rrggbb...;" with six lower-case hex digits a colour. Loaded once at start-up and
// kept for the program's lifetime; the "from DB" commands and the converter look palettes up here.
class PaletteDatabase
{
public:
    // Replaces the contents with the palettes of text. Lines that do not parse are skipped: the
    // collection is ours and a bad line should cost one palette, not the whole list.
    void loadFromText(const QByteArray &text);
    // Loads a file or resource path; an unreadable one leaves the database empty and returns false.
    bool loadFromFile(const QString &path);
    // The collection shipped inside the program, loaded on first use.
    static const PaletteDatabase &shipped();

    std::optional<Palette<uint>> lookup(const QString &fullName) const;
    // Full names in the order of the text.
    const QStringList &names() const { return m_names; }
    int size() const { return m_names.size(); }
    bool isEmpty() const { return m_names.isEmpty(); }

    // The subset of a full name: the part before "/".
    static QString subsetOf(const QString &fullName);

private:
    QStringList m_names;
    std::map<QString, Palette<uint>> m_palettes;
};
