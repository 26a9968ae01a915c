// Microsoft RIFF palettes (".pal"), little-endian: "RIFF", size, "PAL ", a "data" chunk holding the
// version 0x0300, the count and four bytes per colour.

#include "formats/bytereader.h"
#include "formats/paletteformatio.h"
#include "formats/paletteformats.h"

namespace PaletteFormatIO {

namespace {
QString inPath(const QString &text, const QString &path)
{
    return text + QStringLiteral(" in \n'") + path + QStringLiteral("'.");
}
} // namespace

void readMicrosoft(const QByteArray &data, const QString &path, Palette<uint> &palette)
{
    ByteReader in(data, readerTitle(FormatMicrosoft), path);
    if (in.readUpTo(4) != "RIFF")
        in.fail(inPath(QStringLiteral("False header"), path));
    in.u32le(); // the RIFF size: writers disagree about it, this one included
    if (in.readUpTo(4) != "PAL ")
        in.fail(inPath(QStringLiteral("First entry is not a palette"), path));
    if (in.readUpTo(4) != "data")
        in.fail(inPath(QStringLiteral("False data chunk"), path));
    const uint32_t chunkSize = in.u32le();
    if (in.u16le() != 0x0300)
        in.fail(inPath(QStringLiteral("Unsupported palette version"), path));
    const uint count = in.u16le();
    if (4 * qint64(count) + 4 != qint64(chunkSize))
        in.fail(inPath(QStringLiteral("Mismatching length"), path));
    palette.reserve(palette.size() + int(qMin<qint64>(count, in.remaining() / 4)));
    for (uint i = 0; i < count; ++i) {
        const uint r = in.u8();
        const uint g = in.u8();
        const uint b = in.u8();
        // The flags byte becomes the alpha: files written with flags 0 read as transparent.
        const uint flags = in.u8();
        palette.append(colorFromBytes(r, g, b, flags << 8));
    }
}

QByteArray writeMicrosoft(const Palette<uint> &palette)
{
    if (palette.size() > 65535)
        failExport(QStringLiteral("A Microsoft palette holds at most 65535 colors; this one has %1.")
                       .arg(palette.size()));
    const uint32_t count = uint32_t(palette.size());
    QByteArray out("RIFF");
    // Four more than the standard RIFF size; files written so have always been read back fine.
    appendU32LE(out, 4 * count + 20);
    out.append("PAL data");
    appendU32LE(out, 4 * count + 4);
    appendU16LE(out, 0x0300);
    appendU16LE(out, count);
    for (const RGBAColor<uint> &c : palette.entries()) {
        out.append(char(byteOf(c.r)));
        out.append(char(byteOf(c.g)));
        out.append(char(byteOf(c.b)));
        out.append(char(0));
    }
    return out;
}

} // namespace PaletteFormatIO
