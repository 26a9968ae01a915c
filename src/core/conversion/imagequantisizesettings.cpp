#include "conversion/imagequantisizesettings.h"

#include "conversion/imagequantisizer.h"
#include "quantization/quantization_algorithmfixedsize.h"
#include "storage/settingsfields.h"

const QString ImageQuantisizeSettings::settingsName = QStringLiteral("image_quantisize");

namespace {

const SettingsFields<ImageQuantisizeSettings> &quantisizeFields()
{
    using S = ImageQuantisizeSettings;
    using F = SettingsFields<S>;
    static const F fields({
        F::listPosition(QStringLiteral("format"), &S::format, 2),
        F::listPosition(QStringLiteral("palette"), &S::palette, 8),
        F::integer(QStringLiteral("bw_threshold"), &S::bwThreshold, 0, 255),
        F::text(QStringLiteral("db_palette"), &S::dbPalette),
        F::text(QStringLiteral("file_palette"), &S::filePalette),
        F::listPosition(QStringLiteral("dither"), &S::dither, 13),
        // The quantised source's method and size come from the command line; the dialog stores neither.
        F::listPosition(QStringLiteral("method"), &S::method,
                        int(Quantization_AlgorithmFixedSize::LastMethod) + 1)
            .extraKey(),
        F::integer(QStringLiteral("colors"), &S::colors, 1, SettingsValues::maximumPaletteSize).extraKey(),
    });
    return fields;
}

} // namespace

ImageQuantisizeSettings ImageQuantisizeSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                           const ImageQuantisizeSettings &base)
{
    return quantisizeFields().read(pairs, base);
}

ImageQuantisizeSettings ImageQuantisizeSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, ImageQuantisizeSettings());
}

SettingsText::Pairs ImageQuantisizeSettings::toPairs(bool extra) const
{
    return quantisizeFields().write(*this, extra);
}

void ImageQuantisizeSettings::configure(ImageQuantisizer &engine, const Palette<uint> &given) const
{
    switch (palette) {
    case 0:
        engine.setGrayscale();
        break;
    case 1:
        engine.setExtendedGrayscale();
        break;
    case 2:
        engine.setGivenPalette(given);
        break;
    case 3:
        engine.setQuantized(uint(method), uint(colors));
        break;
    case 4:
        engine.setDatabasePalette(dbPalette);
        break;
    case 5:
        engine.setFilePalette(filePalette);
        break;
    case 6:
        engine.setFromImage();
        break;
    default:
        engine.setBlackAndWhite(bwThreshold);
        break;
    }
    engine.setFormat(format == 1 ? ImageConversionEngine::Continuous : ImageConversionEngine::Indexed, false);
    engine.setDitherMethod(dither);
}

QStringList ImageQuantisizeSettings::paletteTexts(bool lastPalette)
{
    return {QStringLiteral("Grayscale"),
            QStringLiteral("Extended grayscale"),
            lastPalette ? QStringLiteral("Last palette") : QStringLiteral("Current palette"),
            QStringLiteral("Quantized"),
            QStringLiteral("From DB"),
            QStringLiteral("From file"),
            QStringLiteral("From image"),
            QStringLiteral("B/W")};
}

QStringList ImageQuantisizeSettings::methodTexts()
{
    return {QStringLiteral("Median cut"), QStringLiteral("Popularity"), QStringLiteral("Wu"),
            QStringLiteral("Distinct HSV")};
}

QStringList ImageQuantisizeSettings::ditherTexts()
{
    return {QStringLiteral("Nearest"),        QStringLiteral("Floyd-Steinberg"),
            QStringLiteral("Burkes"),         QStringLiteral("Jarvis, Judice & Ninke"),
            QStringLiteral("Stucki"),         QStringLiteral("Sierra"),
            QStringLiteral("Two Row Sierra"), QStringLiteral("Sierra Lite"),
            QStringLiteral("Atkinson"),       QStringLiteral("Bayer2"),
            QStringLiteral("Bayer3"),         QStringLiteral("Bayer4"),
            QStringLiteral("Bayer8")};
}

QStringList ImageQuantisizeSettings::formatTexts()
{
    return {QStringLiteral("Indexed"), QStringLiteral("Continuous")};
}
