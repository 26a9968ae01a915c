#pragma once

#include <QString>

#include <utility>
#include <vector>

// The one text form in which dialog settings travel: files, database values, built-in presets and
// the last-used copy. The first line is the dialog's name and the version, every further line
// "key:value"; a line without a colon is a key with an empty value (list records end with one).
class SettingsText
{
public:
    using Pairs = std::vector<std::pair<QString, QString>>;

    static const QString version; // "2.0.0"

    // The pairs of text in order. The first word must be expectedName, otherwise the text belongs
    // to another dialog and is rejected with a DescribedException. The rest of the first line
    // (" 2.0.0") comes back as a key without value, like any line without a colon; "\n" and
    // "\r\n" line ends are both accepted.
    static Pairs parse(const QString &text, const QString &expectedName);

    // Reads a settings file (UTF-8) and parses it; an unreadable file is a DescribedException.
    static Pairs readFile(const QString &path, const QString &expectedName);

    // The name line followed by lines, which are "key:value\n" lines as formatLines makes them.
    static QString format(const QString &name, const QString &lines);
    static QString formatLines(const Pairs &pairs);

    // The resource of a dialog's built-in preset, number counted from 1.
    static QString presetPath(const QString &name, int number);

    // The value of the last pair with key, or fallback; later lines override earlier ones.
    static QString value(const Pairs &pairs, const QString &key, const QString &fallback = {});
};
