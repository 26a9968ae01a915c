// Adobe colour tables (".act"): 256 RGB triplets, optionally followed by the number of colours in use
// and the index of the transparent one (16-bit big-endian each, 0xFFFF for none).

#include "formats/bytereader.h"
#include "formats/paletteformatio.h"
#include "formats/paletteformats.h"

namespace PaletteFormatIO {

namespace {
constexpr int tableSize = 768;
constexpr int trailerSize = 4;
constexpr uint noTransparency = 0xFFFF;
} // namespace

void readAct(const QByteArray &data, const QString &path, Palette<uint> &palette)
{
    ByteReader in(data, readerTitle(FormatAct), path);
    if (data.size() != tableSize && data.size() != tableSize + trailerSize)
        in.fail(QStringLiteral("Palette file\n'%1'\nhas %2 bytes; a color table has 768 or 772.")
                    .arg(path, QString::number(data.size())));
    uint count = 256;
    uint transparent = noTransparency;
    if (data.size() == tableSize + trailerSize) {
        ByteReader trailer(data, readerTitle(FormatAct), path);
        trailer.skip(tableSize);
        count = trailer.u16be();
        transparent = trailer.u16be();
        if (count > 256)
            in.fail(QStringLiteral("Palette file\n'%1'\nclaims %2 colors; a color table holds at most 256.")
                        .arg(path, QString::number(count)));
    }
    for (uint i = 0; i < count; ++i) {
        const uint r = in.u8();
        const uint g = in.u8();
        const uint b = in.u8();
        palette.append(colorFromBytes(r, g, b, i == transparent ? 0 : 65535));
    }
}

QByteArray writeAct(const Palette<uint> &palette)
{
    if (palette.size() > 256)
        failExport(QStringLiteral("An Adobe color table holds at most 256 colors; this one has %1.")
                       .arg(palette.size()));
    QByteArray out;
    out.reserve(tableSize + trailerSize);
    for (const RGBAColor<uint> &c : palette.entries()) {
        out.append(char(byteOf(c.r)));
        out.append(char(byteOf(c.g)));
        out.append(char(byteOf(c.b)));
    }
    out.append(QByteArray(tableSize - out.size(), '\0'));
    appendU16BE(out, uint(palette.size()));
    // Alpha is not written: an alpha of 0 is too common (RIFF palettes read that way) to stand for
    // "the transparent colour".
    appendU16BE(out, noTransparency);
    return out;
}

} // namespace PaletteFormatIO
