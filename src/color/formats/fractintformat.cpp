// Fractint maps: "r g b [comment]" lines, "#" starts a comment, lines with fewer than three
// tokens are skipped.

#include "palette/describedexception.h"
#include "formats/paletteformatio.h"
#include "formats/paletteformats.h"

namespace PaletteFormatIO {

void readFractint(TextLines &lines, const QString &path, Palette<uint> &palette)
{
    const QString title = readerTitle(FormatFractint);
    QString line;
    while (lines.next(line)) {
        const int hash = line.indexOf(QLatin1Char('#'));
        if (hash >= 0)
            line.truncate(hash);
        QStringView tokens[3];
        const int found = firstTokens(line, tokens, 3);
        if (found < 3)
            continue;
        long long rgb[3] = {0, 0, 0};
        for (int c = 0; c < 3; ++c)
            if (!parseDecimal(tokens[c], rgb[c]))
                throw DescribedException(title,
                                         QStringLiteral("A component in a RGB-triplet is not numeric in\n'") +
                                             path + QStringLiteral("'."));
        clampComponents(rgb[0], rgb[1], rgb[2]);
        // The tokens after the third are the entry's comment, which a palette has no place for.
        palette.append(colorFromBytes(uint(rgb[0]), uint(rgb[1]), uint(rgb[2])));
    }
}

QByteArray writeFractint(const Palette<uint> &palette)
{
    QString text;
    for (const RGBAColor<uint> &c : palette.entries())
        text += QStringLiteral("%1%2%3\n").arg(byteOf(c.r), 3).arg(byteOf(c.g), 4).arg(byteOf(c.b), 4);
    return text.toUtf8();
}

} // namespace PaletteFormatIO
