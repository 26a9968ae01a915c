// GIMP palettes (".gpl"): a "GIMP Palette" header, optional "Name:" and "Columns:" lines, comments
// starting with "#", and one "r g b name" line per colour.

#include "palette/describedexception.h"
#include "formats/paletteformatio.h"
#include "formats/paletteformats.h"

namespace PaletteFormatIO {

namespace {
bool isBlankLine(const QString &line)
{
    for (QChar c : line)
        if (!isWhite(c))
            return false;
    return true;
}
} // namespace

void readGimp(TextLines &lines, const QString &path, Palette<uint> &palette)
{
    const QString title = readerTitle(FormatGimp);
    QString line;
    // Only the first 12 characters are compared, case and all: "GIMP Palette v2" is fine,
    // "gimp palette" is not.
    const QString header = lines.next(line) ? line.left(12) : QString();
    if (header != QLatin1String("GIMP Palette"))
        throw DescribedException(title, QStringLiteral("Found mismatching header '") + header +
                                            QStringLiteral("' in\n'") + path + QStringLiteral("'."));

    while (lines.next(line)) {
        // Blank lines are skipped like comments: palettes shipped by several painting programs have
        // them between the header and the colours.
        if (line.startsWith(QLatin1Char('#')) || isBlankLine(line))
            continue;
        if (line.startsWith(QLatin1String("name:"), Qt::CaseInsensitive)) {
            palette.setProperty(PaletteName,
                                trimLineBreaksAndBlanks(line.mid(line.indexOf(QLatin1Char(':')) + 1)));
            continue;
        }
        if (line.startsWith(QLatin1String("columns:"), Qt::CaseInsensitive))
            continue;

        QStringView tokens[3];
        const int found = firstTokens(line, tokens, 3);
        if (found < 3)
            throw DescribedException(title, QStringLiteral("Broken entry (missing components) found in\n'") +
                                                path + QStringLiteral("'."));
        long long rgb[3] = {0, 0, 0};
        for (int c = 0; c < 3; ++c)
            if (!parseDecimal(tokens[c], rgb[c]))
                throw DescribedException(title, QStringLiteral("Invalid number found in\n'") + path +
                                                    QStringLiteral("'."));
        clampComponents(rgb[0], rgb[1], rgb[2]);
        palette.append(colorFromBytes(uint(rgb[0]), uint(rgb[1]), uint(rgb[2])));
    }
}

QByteArray writeGimp(const Palette<uint> &palette)
{
    QString name = palette.properties().contains(PaletteName) ? palette.property(PaletteName)
                                                              : palette.property(PaletteFileExt);
    // A line break in the name would end the "Name:" line and turn the rest into a broken entry.
    name.replace(QLatin1Char('\r'), QLatin1Char(' '));
    name.replace(QLatin1Char('\n'), QLatin1Char(' '));

    QString text = QStringLiteral("GIMP Palette\nName: ") + name + QStringLiteral("\n#\n");
    for (const RGBAColor<uint> &c : palette.entries())
        text +=
            QStringLiteral("%1%2%3\tUntitled\n").arg(byteOf(c.r), 3).arg(byteOf(c.g), 4).arg(byteOf(c.b), 4);
    return text.toUtf8();
}

} // namespace PaletteFormatIO
