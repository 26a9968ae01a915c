#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

// The options of the palette writers that take any: the GIF writer ("columns", "cell-width",
// "cell-height"), the CSS writer ("css.name", "css.attribute") and the JavaScript writer ("js.name",
// "js.type"). Every key has a default; "columns" alone defaults to "not set", which the GIF writer
// reads as "as many columns as colours, at most 256".
//
// Values arrive as text (the command line's --option KEY=VALUE, a dialog's fields) and are checked
// when they are set, so a writer never meets a value it cannot use. setUnchecked() exists for callers
// that restore values they checked earlier; the GIF and JavaScript writers check again and refuse
// numbers and types they cannot work with.
class ExportOptions
{
public:
    ExportOptions() = default;

    // The known keys, in a stable order.
    static QStringList keys();
    // A one-line description of a key's allowed values, for help texts and error messages.
    static QString describe(const QString &key);

    // Checks key and value and stores the value. Throws DescribedException for an unknown key or a
    // value the key does not allow.
    void set(const QString &key, const QString &value);
    // "KEY=VALUE", split at the first "=". Throws DescribedException when there is no "=".
    void setFromText(const QString &assignment);
    // Stores value for a known key without checking the value.
    void setUnchecked(const QString &key, const QString &value);
    // Returns key to its default.
    void unset(const QString &key);

    // Whether key was given a value (defaults do not count).
    bool isSet(const QString &key) const;
    // The value as text: the one set, else the default ("" for "columns").
    QString text(const QString &key) const;
    // The value of an integer key; 0 for "columns" when it is not set.
    int integer(const QString &key) const;
    // The value of a text key.
    QString string(const QString &key) const;

    bool operator==(const ExportOptions &o) const { return m_values == o.m_values; }
    bool operator!=(const ExportOptions &o) const { return !(*this == o); }

private:
    QMap<QString, QString> m_values;
};
