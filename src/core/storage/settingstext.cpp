#include "storage/settingstext.h"

#include "palette/describedexception.h"

#include <QFile>

const QString SettingsText::version = QStringLiteral("2.0.0");

namespace {

// A line end is "\n" or "\r\n"; the carriage return is not part of the value.
QString withoutCarriageReturn(const QString &line)
{
    return line.endsWith(QLatin1Char('\r')) ? line.left(line.size() - 1) : line;
}

std::pair<QString, QString> splitLine(const QString &line)
{
    const int colon = line.indexOf(QLatin1Char(':'));
    if (colon < 0)
        return {line.trimmed(), QString()};
    return {line.left(colon), line.mid(colon + 1)};
}

} // namespace

SettingsText::Pairs SettingsText::parse(const QString &text, const QString &expectedName)
{
    // The name is the first word, read the way a text stream reads a word: leading white space
    // skipped, the word ending at the next white space.
    int pos = 0;
    while (pos < text.size() && text[pos].isSpace())
        ++pos;
    const int nameStart = pos;
    while (pos < text.size() && !text[pos].isSpace())
        ++pos;
    const QString name = text.mid(nameStart, pos - nameStart);
    if (name.isEmpty())
        throw DescribedException(
            QStringLiteral("Invalid settings"),
            QStringLiteral("The text holds no settings; settings for \"%1\" were expected.")
                .arg(expectedName));
    if (name != expectedName)
        throw DescribedException(
            QStringLiteral("Invalid settings"),
            QStringLiteral("These settings belong to \"%1\", not to \"%2\".").arg(elidedValue(name), expectedName));

    Pairs pairs;
    while (pos < text.size()) {
        int end = text.indexOf(QLatin1Char('\n'), pos);
        if (end < 0)
            end = text.size();
        pairs.push_back(splitLine(withoutCarriageReturn(text.mid(pos, end - pos))));
        pos = end + 1;
    }
    return pairs;
}

SettingsText::Pairs SettingsText::readFile(const QString &path, const QString &expectedName)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw DescribedException(QStringLiteral("Error on reading settings"),
                                 QStringLiteral("Could not open file\n'%1'.").arg(path));
    // Settings are a few lines; anything far larger is not a settings file.
    constexpr qint64 maxSize = 16 * 1024 * 1024;
    if (file.size() > maxSize)
        throw DescribedException(QStringLiteral("Error on reading settings"),
                                 QStringLiteral("The file\n'%1'\nis too large for settings.").arg(path));
    return parse(QString::fromUtf8(file.read(maxSize)), expectedName);
}

QString SettingsText::format(const QString &name, const QString &lines)
{
    return name + QLatin1Char(' ') + version + QLatin1Char('\n') + lines;
}

QString SettingsText::formatLines(const Pairs &pairs)
{
    QString lines;
    for (const auto &[key, value] : pairs) {
        lines += key;
        lines += QLatin1Char(':');
        lines += value;
        lines += QLatin1Char('\n');
    }
    return lines;
}

QString SettingsText::presetPath(const QString &name, int number)
{
    return QStringLiteral(":res/presets/preset_%1%2.txt").arg(name).arg(number);
}

QString SettingsText::value(const Pairs &pairs, const QString &key, const QString &fallback)
{
    for (auto it = pairs.rbegin(); it != pairs.rend(); ++it)
        if (it->first == key)
            return it->second;
    return fallback;
}
