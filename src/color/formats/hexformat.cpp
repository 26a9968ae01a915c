// Hex text palettes: "rrggbb" per line (format 9) or all colours on one line (format 10).

#include "palette/describedexception.h"
#include "formats/paletteformatio.h"
#include "formats/paletteformats.h"

namespace PaletteFormatIO {

namespace {

// Letters beyond "f" count on as digits up to 35 ("z"), so "zz" is 35 * 16 + 35 kept to 8 bits; files
// that relied on it keep reading the same.
int digitValue(QChar c)
{
    const ushort u = c.unicode();
    if (u >= '0' && u <= '9')
        return u - '0';
    if (u >= 'a' && u <= 'z')
        return u - 'a' + 10;
    if (u >= 'A' && u <= 'Z')
        return u - 'A' + 10;
    return -1;
}

// Six characters to a colour; false when one of them is not a digit.
bool parseGroup(const QString &text, int start, RGBAColor<uint> &color)
{
    uint bytes[3] = {0, 0, 0};
    for (int i = 0; i < 3; ++i) {
        const int hi = digitValue(text.at(start + 2 * i));
        const int lo = digitValue(text.at(start + 2 * i + 1));
        if (hi < 0 || lo < 0)
            return false;
        bytes[i] = uint(hi * 16 + lo) & 0xFF;
    }
    color = colorFromBytes(bytes[0], bytes[1], bytes[2]);
    return true;
}

QString notHexadecimal(const QString &path)
{
    return QStringLiteral("A component in a RGB-triplet is not hexadecimal in\n'") + path +
           QStringLiteral("'.");
}

} // namespace

void readHexLines(TextLines &lines, const QString &path, Palette<uint> &palette)
{
    const QString title = readerTitle(FormatHexLines);
    QString line;
    while (lines.next(line)) {
        const int hash = line.indexOf(QLatin1Char('#'));
        if (hash >= 0)
            line.truncate(hash);
        line = trimLineBreaksAndBlanks(line);
        if (line.size() != 6)
            throw DescribedException(
                title, QStringLiteral("An entry that does not have a three-byte entry occured in\n'") + path +
                           QStringLiteral("'."));
        RGBAColor<uint> color;
        if (!parseGroup(line, 0, color))
            throw DescribedException(title, notHexadecimal(path));
        palette.append(color);
    }
}

void readHexOneLine(TextLines &lines, const QString &path, Palette<uint> &palette)
{
    const QString title = readerTitle(FormatHexOneLine);
    QString raw;
    while (lines.next(raw)) {
        const QString line = trimLineBreaksAndBlanks(raw);
        for (int start = 0; start < line.size(); start += 6) {
            RGBAColor<uint> color;
            // A short last group is as unreadable as one with a stray character.
            if (line.size() - start < 6 || !parseGroup(line, start, color))
                throw DescribedException(title, notHexadecimal(path));
            palette.append(color);
        }
    }
}

QByteArray writeHexLines(const Palette<uint> &palette)
{
    QString text;
    for (const RGBAColor<uint> &c : palette.entries())
        text += hexColor(c) + QLatin1Char('\n');
    return text.toLatin1();
}

QByteArray writeHexOneLine(const Palette<uint> &palette)
{
    QString text;
    for (const RGBAColor<uint> &c : palette.entries())
        text += hexColor(c);
    text += QLatin1Char('\n');
    return text.toLatin1();
}

} // namespace PaletteFormatIO
