// JASC palettes (".pal" of Paint Shop Pro and many pixel-art tools): "JASC-PAL", "0100", the count,
// then one "r g b" line per colour.

#include "palette/describedexception.h"
#include "formats/paletteformatio.h"
#include "formats/paletteformats.h"

namespace PaletteFormatIO {

void readJasc(TextLines &lines, const QString &path, Palette<uint> &palette)
{
    const QString title = readerTitle(FormatJasc);
    QString text;
    auto line = [&]() { return lines.next(text) ? trimLineBreaksAndBlanks(text) : QString(); };
    auto fail = [&](const QString &message) {
        throw DescribedException(title, message + QStringLiteral(" in\n'") + path + QStringLiteral("'."));
    };

    const QString header = line();
    if (header != QLatin1String("JASC-PAL"))
        fail(QStringLiteral("Found mismatching header '") + header.left(40) + QLatin1Char('\''));
    const QString version = line();
    if (version != QLatin1String("0100"))
        fail(QStringLiteral("Unsupported JASC palette version '") + version.left(40) + QLatin1Char('\''));
    const QString countText = line();
    long long count = 0;
    if (!parseDecimal(countText, count) || count < 0)
        fail(QStringLiteral("Invalid color count '") + countText.left(40) + QLatin1Char('\''));

    for (long long i = 0; i < count; ++i) {
        // The count is only a claim: the palette grows with the lines that are really there.
        if (!lines.next(text))
            fail(QStringLiteral("The color count %1 is larger than the number of entries").arg(count));
        // A fourth number (alpha, written by some tools) and anything after it are ignored.
        QStringView tokens[3];
        const int found = firstTokens(text, tokens, 3);
        if (found < 3)
            fail(QStringLiteral("Broken entry (missing components) found"));
        long long rgb[3] = {0, 0, 0};
        for (int c = 0; c < 3; ++c)
            if (!parseDecimal(tokens[c], rgb[c]))
                fail(QStringLiteral("Invalid number found"));
        clampComponents(rgb[0], rgb[1], rgb[2]);
        palette.append(colorFromBytes(uint(rgb[0]), uint(rgb[1]), uint(rgb[2])));
    }
}

QByteArray writeJasc(const Palette<uint> &palette)
{
    // Paint Shop Pro wrote CRLF line ends, and some readers still insist on them.
    QString text =
        QStringLiteral("JASC-PAL\r\n0100\r\n") + QString::number(palette.size()) + QStringLiteral("\r\n");
    for (const RGBAColor<uint> &c : palette.entries())
        text += QStringLiteral("%1 %2 %3\r\n").arg(byteOf(c.r)).arg(byteOf(c.g)).arg(byteOf(c.b));
    return text.toLatin1();
}

} // namespace PaletteFormatIO
