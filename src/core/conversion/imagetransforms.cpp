#include "conversion/imagetransforms.h"

#include "palette/describedexception.h"

#include <QCoreApplication>

#include <cstring>
#include <vector>

namespace ImageTransforms {

namespace {

enum class Kind
{
    MirrorH,
    MirrorV,
    RotateCW,
    RotateCCW
};

struct Size
{
    int width;
    int height;
};

Size resultSize(Kind kind, int width, int height)
{
    const bool quarterTurn = kind == Kind::RotateCW || kind == Kind::RotateCCW;
    return quarterTurn ? Size{height, width} : Size{width, height};
}

// Calls copy(index of the result pixel, source x, source y) for every pixel of the result, row by
// row; width and height are the source's.
template <typename Copy> void eachResultPixel(Kind kind, int width, int height, Copy copy)
{
    const Size out = resultSize(kind, width, height);
    size_t at = 0;
    for (int y = 0; y < out.height; ++y) {
        for (int x = 0; x < out.width; ++x, ++at) {
            switch (kind) {
            case Kind::MirrorH:
                copy(at, width - 1 - x, y);
                break;
            case Kind::MirrorV:
                copy(at, x, height - 1 - y);
                break;
            case Kind::RotateCW:
                // The result's column x is the source's row height - 1 - x, read downwards.
                copy(at, y, height - 1 - x);
                break;
            case Kind::RotateCCW:
                copy(at, width - 1 - y, x);
                break;
            }
        }
    }
}

template <typename T>
std::vector<T> movedCells(Kind kind, const DocumentImage &image, const std::vector<T> &cells)
{
    const size_t width = size_t(image.width());
    std::vector<T> out(cells.size());
    eachResultPixel(kind, image.width(), image.height(),
                    [&](size_t at, int x, int y) { out[at] = cells[size_t(y) * width + size_t(x)]; });
    return out;
}

DocumentImage transformed(Kind kind, const DocumentImage &image)
{
    const Size size = resultSize(kind, image.width(), image.height());
    DocumentImage out;
    switch (image.mode()) {
    case DocumentImage::RGB: {
        const QImage source = image.picture().convertToFormat(QImage::Format_ARGB32);
        QImage picture(size.width, size.height, QImage::Format_ARGB32);
        if (picture.isNull())
            throw DescribedException(
                QCoreApplication::translate("ImageTransforms", "Transform image"),
                QCoreApplication::translate("ImageTransforms", "There is not enough memory for the image."));
        const auto *src = source.constBits();
        const size_t srcStride = size_t(source.bytesPerLine());
        auto *dst = picture.bits();
        const size_t dstStride = size_t(picture.bytesPerLine());
        eachResultPixel(kind, image.width(), image.height(), [&](size_t at, int x, int y) {
            const size_t row = at / size_t(size.width), column = at % size_t(size.width);
            std::memcpy(dst + row * dstStride + column * 4, src + size_t(y) * srcStride + size_t(x) * 4, 4);
        });
        out = DocumentImage::fromPicture(picture);
        break;
    }
    case DocumentImage::Indexed8: {
        std::vector<uint8_t> bytes(size_t(size.width) * size_t(size.height));
        eachResultPixel(kind, image.width(), image.height(),
                        [&](size_t at, int x, int y) { bytes[at] = image.indexRow(y)[x]; });
        out = DocumentImage::fromIndexes8(size.width, size.height, bytes);
        break;
    }
    case DocumentImage::Indexed32:
        out = DocumentImage::fromIndexes32(size.width, size.height,
                                           movedCells(kind, image, image.indexCells()));
        break;
    case DocumentImage::Continuous:
        out = DocumentImage::fromContinuous(
            size.width, size.height, movedCells(kind, image, image.continuousCells()), image.interpolate());
        break;
    default:
        return image;
    }
    out.setInterpolate(image.interpolate());
    out.setImagePalette(image.imagePalette());
    return out;
}

} // namespace

QStringList names()
{
    return {QStringLiteral("image_mirror_h"), QStringLiteral("image_mirror_v"),
            QStringLiteral("image_rotate_cw"), QStringLiteral("image_rotate_ccw")};
}

bool exists(const QString &name)
{
    return names().contains(name);
}

DocumentImage apply(const QString &name, const DocumentImage &image)
{
    const int which = names().indexOf(name);
    if (which < 0)
        throw DescribedException(
            QCoreApplication::translate("ImageTransforms", "Unknown transform"),
            QCoreApplication::translate("ImageTransforms", "There is no image transform named '%1'.")
                .arg(name));
    static const Kind kinds[] = {Kind::MirrorH, Kind::MirrorV, Kind::RotateCW, Kind::RotateCCW};
    return transformed(kinds[which], image);
}

} // namespace ImageTransforms
