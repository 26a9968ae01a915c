// Adobe swatch exchange (".ase"), big-endian: "ASEF", version 1.0, the block count, then blocks of
// type and length. Colour blocks hold a UTF-16 name, a colour model and 32-bit floats; group blocks
// only bracket colour blocks. Groups are flattened and names dropped: a palette keeps neither.

#include "formats/bytereader.h"
#include "formats/paletteformatio.h"
#include "formats/paletteformats.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace PaletteFormatIO {

namespace {

constexpr uint colorBlock = 0x0001;
constexpr uint normalColor = 2;

double readFloat(ByteReader &in)
{
    const uint32_t bits = in.u32be();
    float value = 0.0f;
    std::memcpy(&value, &bits, sizeof value);
    return double(value);
}

// Floats outside 0..1 (and NaN) are clamped; the 8-bit value is widened like every file component.
uint toByte(double v)
{
    if (!(v > 0.0))
        return 0;
    if (v >= 1.0)
        return 255;
    return uint(std::lround(v * 255.0));
}

void readColorBlock(const QByteArray &block, const QString &path, Palette<uint> &palette)
{
    ByteReader in(block, readerTitle(FormatAse), path);
    in.skip(qint64(in.u16be()) * 2); // the name
    const QByteArray model = in.bytes(4);
    if (model == "RGB ") {
        const double r = readFloat(in);
        const double g = readFloat(in);
        const double b = readFloat(in);
        palette.append(colorFromBytes(toByte(r), toByte(g), toByte(b)));
    } else if (model == "Gray") {
        const uint v = toByte(readFloat(in));
        palette.append(colorFromBytes(v, v, v));
    } else if (model == "CMYK") {
        const double c = readFloat(in);
        const double m = readFloat(in);
        const double y = readFloat(in);
        const double k = readFloat(in);
        auto channel = [k](double ink) {
            return toByte((1.0 - std::clamp(ink, 0.0, 1.0)) * (1.0 - std::clamp(k, 0.0, 1.0)));
        };
        palette.append(colorFromBytes(channel(c), channel(m), channel(y)));
    } else {
        QString shown;
        for (char ch : model)
            shown += (ch >= 0x20 && ch < 0x7F) ? QLatin1Char(ch) : QLatin1Char('?');
        in.fail(QStringLiteral("Palette file\n'") + path + QStringLiteral("'\nuses the color model '") +
                shown + QStringLiteral("'.\nOnly RGB, CMYK and gray swatches are supported."));
    }
}

} // namespace

void readAse(const QByteArray &data, const QString &path, Palette<uint> &palette)
{
    ByteReader in(data, readerTitle(FormatAse), path);
    if (in.readUpTo(4) != "ASEF")
        in.fail(QStringLiteral("False header in\n'") + path + QStringLiteral("'."));
    const uint major = in.u16be();
    const uint minor = in.u16be();
    if (major != 1)
        in.fail(QStringLiteral("Unsupported version %1.%2 in\n'").arg(major).arg(minor) + path +
                QStringLiteral("'."));
    const uint32_t blocks = in.u32be();
    // Every block takes at least its 6-byte head; a count beyond that is caught as the data runs out.
    for (uint32_t i = 0; i < blocks; ++i) {
        const uint type = in.u16be();
        const uint32_t length = in.u32be();
        const QByteArray block = in.bytes(length);
        if (type == colorBlock)
            readColorBlock(block, path, palette);
        // Group starts and ends, and blocks of types unknown here, are stepped over by their length.
    }
}

QByteArray writeAse(const Palette<uint> &palette)
{
    QByteArray out("ASEF");
    appendU16BE(out, 1);
    appendU16BE(out, 0);
    appendU32BE(out, uint32_t(palette.size()));
    for (const RGBAColor<uint> &c : palette.entries()) {
        // Swatches are named by their hexadecimal value, as design tools show them in lists.
        const QString name = QLatin1Char('#') + hexColor(c);
        QByteArray block;
        appendU16BE(block, uint(name.size() + 1));
        for (QChar ch : name)
            appendU16BE(block, ch.unicode());
        appendU16BE(block, 0);
        block.append("RGB ");
        for (uint component : {c.r, c.g, c.b}) {
            const float value = float(byteOf(component) / 255.0);
            uint32_t bits = 0;
            std::memcpy(&bits, &value, sizeof bits);
            appendU32BE(block, bits);
        }
        appendU16BE(block, normalColor);
        appendU16BE(out, colorBlock);
        appendU32BE(out, uint32_t(block.size()));
        out.append(block);
    }
    return out;
}

} // namespace PaletteFormatIO
