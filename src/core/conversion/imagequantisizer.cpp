#include "conversion/imagequantisizer.h"

#include "quantization/colorindex.h"
#include "dithering/dithering_errordiffusion.h"
#include "dithering/dithering_nearest.h"
#include "dithering/dithering_ordered.h"
#include "conversion/imageconverter.h"
#include "document/imagerender.h"
#include "quantization/quantization_algorithmfixedsize.h"

#include <memory>

void ImageQuantisizer::setQuantized(uint method, uint colorCount)
{
    resetTo(2, grayscale());
    m_method = method;
    m_colorCount = colorCount;
}

void ImageQuantisizer::setFromImage()
{
    resetTo(4, grayscale());
}

void ImageQuantisizer::setBlackAndWhite(int threshold)
{
    resetTo(5, blackAndWhite());
    m_bwThreshold = threshold;
}

Palette<uint> ImageQuantisizer::imageColors(const DocumentImage &image, const Palette<uint> &shownWith)
{
    const QImage picture = sourcePicture(image, shownWith);
    return picture.isNull() ? Palette<uint>() : distinctColours(picture);
}

Palette<uint> ImageQuantisizer::colorsFor(const DocumentImage &image, const Palette<uint> &shownWith) const
{
    return m_source == 4 ? imageColors(image, shownWith) : Palette<uint>();
}

bool ImageQuantisizer::progress(int step, int percent)
{
    emit progressChanged(step, percent);
    return !m_cancelled;
}

DocumentImage ImageQuantisizer::apply(const DocumentImage &image, const Palette<uint> &sourceColors,
                                      const Palette<uint> &shownWith)
{
    m_cancelled = false;
    QImage picture = ImageConversionEngine::sourcePicture(image, shownWith);
    if (picture.isNull())
        return {};
    const auto stepReport = [this](int step) {
        return [this, step](int percent) { return progress(step, percent); };
    };

    if (m_source == 2) {
        Palette<uint> computed =
            Quantization_AlgorithmFixedSize(m_colorCount, m_method).quantize(picture, stepReport(0));
        if (m_cancelled)
            return {};
        m_destination = computed;
    } else if (m_source == 4) {
        m_destination = sourceColors;
    }

    // Nearest mapping onto a grayscale palette is the converter's brightness conversion; the
    // continuous grayscale result is shown through the extended palette.
    const bool grayPath = m_dither == 0 && (m_source == 0 || m_source == 1);
    if (grayPath && m_format == Continuous)
        m_destination = extendedGrayscale();
    emit paletteChanged(m_destination);

    DocumentImage result;
    if (grayPath) {
        result = ImageConverter::byBrightness(picture, m_destination.size(), m_format, m_interpolate,
                                              stepReport(1));
    } else {
        if (picture.format() != QImage::Format_ARGB32 && picture.format() != QImage::Format_RGB32)
            picture = picture.convertToFormat(QImage::Format_ARGB32);
        auto index = std::make_unique<ColorIndex>(m_destination);
        for (const RGBAColor<uint> &c : sourceColors.entries())
            index->lookup(((c.r >> 8) & 0xFF) << 16 | ((c.g >> 8) & 0xFF) << 8 | ((c.b >> 8) & 0xFF));
        std::unique_ptr<Dithering> dithering;
        if (m_dither >= 1 && m_dither <= 8)
            dithering = std::make_unique<Dithering_ErrorDiffusion>(index.get(), m_dither);
        else if (m_dither >= 9 && m_dither <= 12)
            dithering = std::make_unique<Dithering_Ordered>(index.get(), m_dither, m_destination.size());
        else
            dithering = std::make_unique<Dithering_Nearest>(index.get());
        DitherResult mapped = dithering->dither(picture, m_destination, m_format, stepReport(1));
        dithering.reset();
        index.reset();
        picture = QImage(); // the source copy is no longer needed
        switch (mapped.kind) {
        case 2:
            result = DocumentImage::fromIndexes8(mapped.width, mapped.height, std::move(mapped.indexes8));
            break;
        case 3:
            result = DocumentImage::fromIndexes32(mapped.width, mapped.height, std::move(mapped.indexes32));
            break;
        case 4:
            result = DocumentImage::fromContinuous(mapped.width, mapped.height, std::move(mapped.values),
                                                   m_interpolate);
            break;
        default:
            return {};
        }
    }
    if (result.isNull())
        return {};
    result.setImagePalette(m_destination);
    emit progressChanged(1, 100);
    return result;
}
