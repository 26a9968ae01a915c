// JASC palettes (".pal" of Paint Shop Pro and many pixel-art tools): "JASC-PAL", "0100", the count,
// then one "r g b" line per colour.

#include "palette/describedexception.h"
#include "formats/paletteformatio.h"
#include "formats/paletteformats.h"

namespace PaletteFormatIO {

void readJasc(const QByteArray &data, const QString &path, Palette<uint> &palette)
{
    const QString title = readerTitle(FormatJasc);
    const QStringList lines = textLines(decodeText(data));
    auto line = [&lines](int i) {
        return i < lines.size() ? trimLineBreaksAndBlanks(lines.at(i)) : QString();
    };
    auto fail = [&](const QString &text) {
        throw DescribedException(title, text + QStringLiteral(" in\n'") + path + QStringLiteral("'."));
    };

    if (line(0) != QLatin1String("JASC-PAL"))
        fail(QStringLiteral("Found mismatching header '") + line(0).left(40) + QLatin1Char('\''));
    if (line(1) != QLatin1String("0100"))
        fail(QStringLiteral("Unsupported JASC palette version '") + line(1).left(40) + QLatin1Char('\''));
    long long count = 0;
    if (!parseDecimal(line(2), count) || count < 0)
        fail(QStringLiteral("Invalid color count '") + line(2).left(40) + QLatin1Char('\''));

    const int first = 3;
    palette.reserve(palette.size() + int(qMin<long long>(count, lines.size() - first)));
    for (long long i = 0; i < count; ++i) {
        if (first + i >= lines.size())
            fail(QStringLiteral("The color count %1 is larger than the number of entries").arg(count));
        // A fourth number (alpha, written by some tools) and anything after it are ignored.
        const QStringList tokens = splitAtWhite(lines.at(int(first + i)));
        if (tokens.size() < 3)
            fail(QStringLiteral("Broken entry (missing components) found"));
        long long rgb[3] = {0, 0, 0};
        for (int c = 0; c < 3; ++c)
            if (!parseDecimal(tokens.at(c), rgb[c]))
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
