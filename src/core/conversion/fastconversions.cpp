#include "conversion/fastconversions.h"

#include "palette/describedexception.h"
#include "conversion/imageconverter.h"

#include <algorithm>
#include <cmath>

namespace FastConversions {

namespace {

enum class Source
{
    Grayscale,
    Extended,
    Current,
    Last
};

Result byBrightness(const DocumentImage &image, const Palette<uint> &shownWith, Source source, int format,
                    const Palette<uint> &current, const Palette<uint> &last)
{
    ImageConverter converter;
    switch (source) {
    case Source::Grayscale:
        converter.setGrayscale();
        break;
    case Source::Extended:
        converter.setExtendedGrayscale();
        break;
    case Source::Current:
        converter.setGivenPalette(current);
        break;
    case Source::Last:
        converter.setGivenPalette(last);
        break;
    }
    converter.setFormat(format, image.interpolate());
    return {converter.convert(image, shownWith), converter.destinationPalette()};
}

// The entry a continuous cell shows, as rendering finds it.
uint32_t shownEntry(float v, int n)
{
    if (n <= 0 || !(v > 0.0f))
        return 0;
    const float p = std::min(v * float(n) / 65535.0f, float(n - 1));
    return uint32_t(std::floor(p));
}

template <typename F> std::vector<uint32_t> eachCell(const DocumentImage &image, F f)
{
    const size_t n = size_t(image.width()) * size_t(image.height());
    std::vector<uint32_t> cells(n);
    const int w = image.width();
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < w; ++x)
            cells[size_t(y) * size_t(w) + size_t(x)] = f(x, y, size_t(y) * size_t(w) + size_t(x));
    return cells;
}

// The palette index of every pixel of an indexed or continuous image.
std::vector<uint32_t> indexesOf(const DocumentImage &image, int paletteSize)
{
    switch (image.mode()) {
    case DocumentImage::Indexed8:
        return eachCell(image, [&](int x, int y, size_t) { return uint32_t(image.indexRow(y)[x]); });
    case DocumentImage::Indexed32:
        return image.indexCells();
    default:
        return eachCell(
            image, [&](int, int, size_t i) { return shownEntry(image.continuousCells()[i], paletteSize); });
    }
}

Result toIndexed8(const DocumentImage &image, const Palette<uint> &palette)
{
    if (image.mode() == DocumentImage::Indexed8)
        return {image, palette};
    const std::vector<uint32_t> indexes = indexesOf(image, palette.size());
    std::vector<uint8_t> bytes(indexes.size());
    std::transform(indexes.begin(), indexes.end(), bytes.begin(),
                   [](uint32_t v) { return uint8_t(std::min<uint32_t>(v, 255)); });
    return {DocumentImage::fromIndexes8(image.width(), image.height(), bytes), palette};
}

Result toIndexed32(const DocumentImage &image, const Palette<uint> &palette)
{
    switch (image.mode()) {
    case DocumentImage::Indexed32:
        return {image, palette};
    case DocumentImage::RGB: {
        const QImage &picture = image.picture();
        return {DocumentImage::fromIndexes32(image.width(), image.height(),
                                             eachCell(image,
                                                      [&](int x, int y, size_t) {
                                                          return uint32_t(reinterpret_cast<const QRgb *>(
                                                                              picture.constScanLine(y))[x] &
                                                                          0xFFFFFFu);
                                                      })),
                palette};
    }
    case DocumentImage::Continuous:
        return {DocumentImage::fromIndexes32(image.width(), image.height(),
                                             eachCell(image,
                                                      [&](int, int, size_t i) {
                                                          const float v = image.continuousCells()[i];
                                                          if (!(v > 0.0f))
                                                              return 0u;
                                                          return v >= 4294967295.0f ? 0xFFFFFFFFu
                                                                                    : uint32_t(v);
                                                      })),
                palette};
    default:
        return {DocumentImage::fromIndexes32(image.width(), image.height(), indexesOf(image, palette.size())),
                palette};
    }
}

Result toContinuous(const DocumentImage &image, const Palette<uint> &palette)
{
    if (image.mode() == DocumentImage::Continuous)
        return {image, palette};
    const std::vector<uint32_t> indexes = indexesOf(image, palette.size());
    std::vector<float> cells(indexes.size(), 0.0f);
    if (!palette.isEmpty())
        std::transform(indexes.begin(), indexes.end(), cells.begin(),
                       [n = double(palette.size())](uint32_t v) { return float(double(v) * 65535.0 / n); });
    return {
        DocumentImage::fromContinuous(image.width(), image.height(), std::move(cells), image.interpolate()),
        palette};
}

} // namespace

QStringList names()
{
    return {QStringLiteral("image_convert_grayscale"),
            QStringLiteral("image_convert_extended_grayscale"),
            QStringLiteral("image_convert_continuous_grayscale"),
            QStringLiteral("image_convert_indexed8bit_lastpalette"),
            QStringLiteral("image_convert_continuous_lastpalette"),
            QStringLiteral("image_convert_indexed8bit"),
            QStringLiteral("image_convert_indexed32bitint"),
            QStringLiteral("image_convert_real")};
}

bool exists(const QString &name)
{
    return names().contains(name);
}

Result apply(const QString &name, const DocumentImage &image, const Palette<uint> &palette,
             const Palette<uint> &lastPalette)
{
    if (!exists(name))
        throw DescribedException(QStringLiteral("Unknown conversion"),
                                 QStringLiteral("There is no image conversion named '%1'.").arg(elidedValue(name)));
    if (image.isNull())
        throw DescribedException(QStringLiteral("Convert image"),
                                 QStringLiteral("There is no image to convert."));
    using C = ImageConversionEngine;
    const int which = names().indexOf(name);
    switch (which) {
    case 0:
        return byBrightness(image, palette, Source::Grayscale, C::Indexed, palette, lastPalette);
    case 1:
        return byBrightness(image, palette, Source::Extended, C::Indexed, palette, lastPalette);
    case 2:
        return byBrightness(image, palette, Source::Grayscale, C::Continuous, palette, lastPalette);
    case 3:
        return byBrightness(image, palette, Source::Last, C::Indexed, palette, lastPalette);
    case 4:
        return byBrightness(image, palette, Source::Last, C::Continuous, palette, lastPalette);
    default:
        break;
    }
    if (image.mode() == DocumentImage::RGB && which != 6)
        return byBrightness(image, palette, Source::Current, which == 5 ? C::Indexed : C::Continuous, palette,
                            lastPalette);
    if (which == 5)
        return toIndexed8(image, palette);
    if (which == 6)
        return toIndexed32(image, palette);
    return toContinuous(image, palette);
}

} // namespace FastConversions
