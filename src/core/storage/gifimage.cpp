#include "storage/gifimage.h"

#include "document/imagelimits.h"
#include "palette/describedexception.h"

#include <QFile>
#include <QFileInfo>

#include <gif_lib.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace GifImage {

namespace {

// A code w bits wide names one of at most 2^w table entries, none longer than the table, so a bit
// of data yields at most 2^w / w pixels: 4096 / 12 at GIF's widest codes, under 2731 a byte. A frame
// claiming more pixels than the bytes left can hold is refused before anything is allocated.
constexpr qint64 maxPixelsPerByte = 4096;

[[noreturn]] void fail(const QString &name, const QString &reason)
{
    throw DescribedException(QStringLiteral("Could not load"),
                             QStringLiteral("Cannot load %1.\n%2").arg(name, reason));
}

[[noreturn]] void failDamaged(const QString &name, int error)
{
    if (error == D_GIF_ERR_NOT_ENOUGH_MEM)
        fail(name, QStringLiteral("There is not enough memory."));
    fail(name, QStringLiteral("The GIF file is damaged or cut short."));
}

struct Source
{
    const QByteArray &data;
    int position = 0;
};

int readFromSource(GifFileType *gif, GifByteType *buffer, int length)
{
    Source &source = *static_cast<Source *>(gif->UserData);
    const int count = std::max(0, std::min(length, source.data.size() - source.position));
    std::memcpy(buffer, source.data.constData() + source.position, size_t(count));
    source.position += count;
    return count;
}

struct DecoderCloser
{
    void operator()(GifFileType *gif) const
    {
        int error = 0;
        DGifCloseFile(gif, &error);
    }
};

int writeToArray(GifFileType *gif, const GifByteType *bytes, int length)
{
    static_cast<QByteArray *>(gif->UserData)->append(reinterpret_cast<const char *>(bytes), length);
    return length;
}

struct EncoderCloser
{
    void operator()(GifFileType *gif) const
    {
        int error = 0;
        EGifCloseFile(gif, &error);
    }
};

struct MapDeleter
{
    void operator()(ColorMapObject *map) const { GifFreeMapObject(map); }
};

// Skips the extensions before the first image and returns the transparent index their graphic
// control block names, or NO_TRANSPARENT_COLOR.
int transparentIndexBeforeImage(GifFileType *gif, const QString &name)
{
    int transparent = NO_TRANSPARENT_COLOR;
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif, &type) == GIF_ERROR)
            failDamaged(name, gif->Error);
        if (type == IMAGE_DESC_RECORD_TYPE)
            return transparent;
        if (type == TERMINATE_RECORD_TYPE)
            fail(name, QStringLiteral("The GIF file holds no image."));
        if (type != EXTENSION_RECORD_TYPE)
            failDamaged(name, D_GIF_ERR_WRONG_RECORD);
        int code = 0;
        GifByteType *block = nullptr;
        if (DGifGetExtension(gif, &code, &block) == GIF_ERROR)
            failDamaged(name, gif->Error);
        GraphicsControlBlock control;
        // The block's first byte is its length; a control block that is not four bytes says nothing.
        if (code == GRAPHICS_EXT_FUNC_CODE && block && block[0] == 4 &&
            DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK)
            transparent = control.TransparentColor;
        while (block)
            if (DGifGetExtensionNext(gif, &block) == GIF_ERROR)
                failDamaged(name, gif->Error);
    }
}

DocumentImage decode(const QByteArray &data, const QString &name)
{
    Source source{data};
    int error = 0;
    std::unique_ptr<GifFileType, DecoderCloser> gif(DGifOpen(&source, readFromSource, &error));
    if (!gif)
        failDamaged(name, error);
    const int transparent = transparentIndexBeforeImage(gif.get(), name);
    if (DGifGetImageDesc(gif.get()) == GIF_ERROR)
        failDamaged(name, gif->Error);

    const GifImageDesc &frame = gif->Image;
    const ColorMapObject *table = frame.ColorMap ? frame.ColorMap : gif->SColorMap;
    if (frame.Width <= 0 || frame.Height <= 0)
        fail(name,
             QStringLiteral("The image size %1 x %2 is not supported.").arg(frame.Width).arg(frame.Height));
    const qint64 width = std::max<qint64>(gif->SWidth, qint64(frame.Left) + frame.Width);
    const qint64 height = std::max<qint64>(gif->SHeight, qint64(frame.Top) + frame.Height);
    // A frame may reach past the logical screen, but not past what a GIF can describe.
    if (width > 65535 || height > 65535)
        fail(name, QStringLiteral("The image size %1 x %2 is not supported.").arg(width).arg(height));
    if (!ImageLimits::fits(width, height))
        fail(name, ImageLimits::tooLarge(width, height));
    if (!table || table->ColorCount <= 0 || !table->Colors)
        fail(name, QStringLiteral("The GIF image has no colour table."));
    if (qint64(frame.Width) * frame.Height > qint64(data.size() - source.position) * maxPixelsPerByte)
        failDamaged(name, D_GIF_ERR_READ_FAILED);

    const int colours = std::min(table->ColorCount, 256);
    const bool hasTransparent = transparent >= 0 && transparent < colours;
    const int background =
        gif->SBackGroundColor >= 0 && gif->SBackGroundColor < colours ? gif->SBackGroundColor : 0;
    std::vector<uint8_t> indexes(size_t(width * height), uint8_t(hasTransparent ? transparent : background));

    // Interlaced rows arrive in four passes: every 8th from 0, every 8th from 4, every 4th from 2,
    // every 2nd from 1.
    static const int passStart[] = {0, 4, 2, 1};
    static const int passStep[] = {8, 8, 4, 2};
    const int passes = frame.Interlace ? 4 : 1;
    for (int pass = 0; pass < passes; ++pass) {
        const int start = frame.Interlace ? passStart[pass] : 0;
        const int step = frame.Interlace ? passStep[pass] : 1;
        for (int y = start; y < frame.Height; y += step) {
            GifPixelType *row = indexes.data() + size_t(frame.Top + y) * size_t(width) + size_t(frame.Left);
            if (DGifGetLine(gif.get(), row, frame.Width) == GIF_ERROR)
                failDamaged(name, gif->Error);
        }
    }

    Palette<uint> palette;
    for (int i = 0; i < colours; ++i) {
        const GifColorType &c = table->Colors[i];
        palette.append({uint(c.Red) << 8, uint(c.Green) << 8, uint(c.Blue) << 8,
                        hasTransparent && i == transparent ? 0u : 65535u});
    }
    DocumentImage image = DocumentImage::fromIndexes8(int(width), int(height), indexes);
    image.setImagePalette(palette);
    image.render(palette);
    return image;
}

} // namespace

bool isGif(const QByteArray &head)
{
    return head.startsWith(GIF87_STAMP) || head.startsWith(GIF89_STAMP);
}

bool isGifFile(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) && isGif(f.read(6));
}

DocumentImage fromBytes(const QByteArray &data, const QString &name)
{
    try {
        return decode(data, name);
    } catch (const std::bad_alloc &) {
        fail(name, QStringLiteral("There is not enough memory."));
    }
}

DocumentImage read(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        fail(name, QStringLiteral("Unknown error."));
    if (f.size() > qint64(INT_MAX) - 1)
        fail(name, QStringLiteral("The file is too large."));
    const QByteArray data = f.readAll();
    if (qint64(data.size()) != f.size())
        fail(name, QStringLiteral("Unknown error."));
    return fromBytes(data, name);
}

QByteArray toBytes(const DocumentImage &image)
{
    const int width = image.width(), height = image.height();
    if (image.mode() != DocumentImage::Indexed8 || width > 65535 || height > 65535)
        return {};
    int highest = 0;
    for (int y = 0; y < height; ++y) {
        const uint8_t *row = image.indexRow(y);
        highest = std::max<int>(highest, *std::max_element(row, row + width));
    }
    // A GIF table holds a power of two entries, at least two.
    int bits = 1;
    while ((1 << bits) <= highest)
        ++bits;
    const QVector<QRgb> colours = image.picture().colorTable();
    std::unique_ptr<ColorMapObject, MapDeleter> table(GifMakeMapObject(1 << bits, nullptr));
    if (!table)
        return {};
    for (int i = 0; i < (1 << bits); ++i) {
        const QRgb c = i < colours.size() ? colours[i] : qRgb(0, 0, 0);
        table->Colors[i] = {GifByteType(qRed(c)), GifByteType(qGreen(c)), GifByteType(qBlue(c))};
    }

    QByteArray out;
    int error = 0;
    std::unique_ptr<GifFileType, EncoderCloser> gif(EGifOpen(&out, writeToArray, &error));
    if (!gif || EGifPutScreenDesc(gif.get(), width, height, bits, 0, table.get()) == GIF_ERROR ||
        EGifPutImageDesc(gif.get(), 0, 0, width, height, false, nullptr) == GIF_ERROR)
        return {};
    // The encoder masks the line it is given in place, and the image's pixels are shared.
    std::vector<GifPixelType> line(size_t(width), 0);
    for (int y = 0; y < height; ++y) {
        std::memcpy(line.data(), image.indexRow(y), size_t(width));
        if (EGifPutLine(gif.get(), line.data(), width) == GIF_ERROR)
            return {};
    }
    // Closing writes the trailer.
    if (EGifCloseFile(gif.release(), &error) == GIF_ERROR)
        return {};
    return out;
}

} // namespace GifImage
