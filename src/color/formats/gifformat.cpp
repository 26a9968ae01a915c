// GIF images as palettes through libgd: reading takes the image's colour table, writing draws one cell
// per colour.

#include "formats/bytereader.h"
#include "palette/describedexception.h"
#include "formats/paletteformatio.h"
#include "formats/paletteformats.h"

#include <gd.h>

#include <memory>

namespace PaletteFormatIO {

namespace {

// libgd allocates the whole pixel raster of the first image before it decodes a single pixel, so
// a few header bytes could make it ask for gigabytes. No palette image comes near this many pixels.
constexpr qint64 maxGifPixels = qint64(1) << 26;

struct GdImageDeleter
{
    void operator()(gdImagePtr image) const { gdImageDestroy(image); }
};
using GdImage = std::unique_ptr<gdImage, GdImageDeleter>;

// Walks the header, the logical screen and the blocks up to the first image descriptor and checks the
// sizes libgd will allocate for. False for a stream too large to decode; a stream that is merely
// malformed is left to libgd to refuse.
bool gifSizeAcceptable(const QByteArray &data, const QString &path)
{
    ByteReader in(data, QString(), path);
    try {
        in.skip(6);
        const qint64 screenWidth = in.u16le();
        const qint64 screenHeight = in.u16le();
        if (screenWidth * screenHeight > maxGifPixels)
            return false;
        const uint flags = in.u8();
        in.skip(2);
        if (flags & 0x80)
            in.skip(3 << ((flags & 7) + 1));
        for (;;) {
            const uint introducer = in.u8();
            if (introducer == 0x21) {
                in.u8();
                for (uint length = in.u8(); length != 0; length = in.u8())
                    in.skip(length);
            } else if (introducer == 0x2C) {
                in.skip(4);
                const qint64 width = in.u16le();
                const qint64 height = in.u16le();
                return width * height <= maxGifPixels;
            } else {
                return true;
            }
        }
    } catch (const DescribedException &) {
        return true; // truncated: libgd gives up on it without a large allocation
    }
}

} // namespace

void readGif(const QByteArray &data, const QString &path, Palette<uint> &palette)
{
    const QString title = readerTitle(FormatGif);
    const QString unreadable = QStringLiteral("Could not read file\n'") + path + QStringLiteral("'.");
    if (data.isEmpty() || !gifSizeAcceptable(data, path))
        throw DescribedException(title, unreadable);
    // libgd only reads from the buffer; the cast drops a const it does not declare.
    GdImage image(gdImageCreateFromGifPtr(data.size(), const_cast<char *>(data.constData())));
    if (!image)
        throw DescribedException(title, unreadable);
    const int count = gdImageColorsTotal(image.get());
    for (int i = 0; i < count; ++i)
        palette.append(colorFromBytes(uint(gdImageRed(image.get(), i)) & 0xFF,
                                      uint(gdImageGreen(image.get(), i)) & 0xFF,
                                      uint(gdImageBlue(image.get(), i)) & 0xFF));
}

namespace {
[[noreturn]] void failGif(const QString &message)
{
    throw DescribedException(QStringLiteral("Error on writing GIF image"), message);
}

int checkedOption(const ExportOptions &options, const char *key, int maximum)
{
    const int value = options.integer(QLatin1String(key));
    if (value < 1 || value > maximum)
        failExport(QStringLiteral("'%1' is not a valid value for the option '%2'.")
                       .arg(options.text(QLatin1String(key)), QLatin1String(key)));
    return value;
}
} // namespace

QByteArray writeGif(const Palette<uint> &palette, const ExportOptions &options)
{
    const int size = palette.size();
    // Checked before the image exists: the colour table would refuse the 257th colour anyway.
    if (size > gdMaxColors)
        failGif(QStringLiteral("Too many colors."));
    // libgd writes a colour table even for an image without colours, so an empty palette would come
    // back with a colour it never had.
    if (size == 0)
        failGif(QStringLiteral("A GIF image needs at least one color."));
    const int columns =
        options.isSet(QStringLiteral("columns")) ? checkedOption(options, "columns", 256) : qMin(size, 256);
    const int cellWidth = checkedOption(options, "cell-width", 255);
    const int cellHeight = checkedOption(options, "cell-height", 255);
    const int rows = (size + columns - 1) / columns;

    GdImage image(gdImageCreate(cellWidth * columns, cellHeight * rows));
    if (!image)
        failGif(QStringLiteral("The image could not be created."));
    for (int i = 0; i < size; ++i) {
        const RGBAColor<uint> &c = palette[i];
        const int index =
            gdImageColorAllocate(image.get(), int(byteOf(c.r)), int(byteOf(c.g)), int(byteOf(c.b)));
        if (index < 0)
            failGif(QStringLiteral("Too many colors."));
        const int x = (i % columns) * cellWidth;
        const int y = (i / columns) * cellHeight;
        gdImageFilledRectangle(image.get(), x, y, x + cellWidth - 1, y + cellHeight - 1, index);
    }
    int length = 0;
    void *bytes = gdImageGifPtr(image.get(), &length);
    if (!bytes)
        failGif(QStringLiteral("The image could not be encoded."));
    const QByteArray result(static_cast<const char *>(bytes), length);
    gdFree(bytes);
    return result;
}

} // namespace PaletteFormatIO
