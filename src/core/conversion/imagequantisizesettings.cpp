#include "conversion/imagequantisizesettings.h"

#include "conversion/imagequantisizer.h"
#include "quantization/quantization_algorithmfixedsize.h"
#include "storage/settingsvalues.h"

using namespace SettingsValues;

const QString ImageQuantisizeSettings::settingsName = QStringLiteral("image_quantisize");

ImageQuantisizeSettings ImageQuantisizeSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                           const ImageQuantisizeSettings &base)
{
    ImageQuantisizeSettings s = base;
    for (const auto &[key, value] : pairs) {
        if (key == QLatin1String("format"))
            s.format = listPosition(key, value, 2);
        else if (key == QLatin1String("palette"))
            s.palette = listPosition(key, value, 8);
        else if (key == QLatin1String("bw_threshold"))
            s.bwThreshold = clampedInteger(key, value, 0, 255);
        else if (key == QLatin1String("db_palette"))
            s.dbPalette = value;
        else if (key == QLatin1String("file_palette"))
            s.filePalette = value;
        else if (key == QLatin1String("dither"))
            s.dither = listPosition(key, value, 13);
        else if (key == QLatin1String("method"))
            s.method = listPosition(key, value, int(Quantization_AlgorithmFixedSize::LastMethod) + 1);
        else if (key == QLatin1String("colors"))
            s.colors = clampedInteger(key, value, 1, maximumPaletteSize);
    }
    return s;
}

ImageQuantisizeSettings ImageQuantisizeSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, ImageQuantisizeSettings());
}

SettingsText::Pairs ImageQuantisizeSettings::toPairs() const
{
    return {{QStringLiteral("format"), text(format)},
            {QStringLiteral("palette"), text(palette)},
            {QStringLiteral("bw_threshold"), text(bwThreshold)},
            {QStringLiteral("db_palette"), dbPalette},
            {QStringLiteral("file_palette"), filePalette},
            {QStringLiteral("dither"), text(dither)}};
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
