// Photoshop colour swatches (".aco"), all values 16-bit big-endian: version, count, then per entry a
// colour space and four words; version 2 adds a name after every entry.

#include "formats/bytereader.h"
#include "formats/paletteformatio.h"
#include "formats/paletteformats.h"

namespace PaletteFormatIO {

void readPhotoshop(const QByteArray &data, const QString &path, Palette<uint> &palette)
{
    ByteReader in(data, readerTitle(FormatPhotoshop), path);
    const uint version = in.u16be();
    const uint count = in.u16be();
    // Version 1 entries are 10 bytes; reserve no more than the file can hold.
    palette.reserve(palette.size() + int(qMin<qint64>(count, in.remaining() / 10)));
    // A file holds a version 1 section, often followed by a version 2 section with the same colours
    // and their names; the first section is all this reader needs.
    for (uint i = 0; i < count; ++i) {
        const uint space = in.u16be();
        const uint c1 = in.u16be();
        const uint c2 = in.u16be();
        const uint c3 = in.u16be();
        in.u16be();
        if (space != 0)
            in.fail(QStringLiteral("Palette file\n'") + path +
                    QStringLiteral("'\nuses an unsupported encoding.\nOnly RGB-palettes are supported."));
        palette.append({c1, c2, c3, 65535});
        if (version == 2) {
            in.u16be();
            const uint length = in.u16be();
            in.skip(qint64(length) * 2);
        }
    }
}

QByteArray writePhotoshop(const Palette<uint> &palette)
{
    if (palette.size() > 65535)
        failExport(QStringLiteral("A Photoshop palette holds at most 65535 colors; this one has %1.")
                       .arg(palette.size()));
    QByteArray out;
    out.reserve(4 + 10 * palette.size());
    appendU16BE(out, 1);
    appendU16BE(out, uint(palette.size()));
    for (const RGBAColor<uint> &c : palette.entries()) {
        appendU16BE(out, 0);
        appendU16BE(out, wordOf(c.r));
        appendU16BE(out, wordOf(c.g));
        appendU16BE(out, wordOf(c.b));
        appendU16BE(out, 0);
    }
    return out;
}

} // namespace PaletteFormatIO
