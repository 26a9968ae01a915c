#include "conversion/imageconvertsettings.h"

#include "conversion/imageconverter.h"
#include "storage/settingsvalues.h"

using namespace SettingsValues;

const QString ImageConvertSettings::settingsName = QStringLiteral("image_format_convert");

ImageConvertSettings ImageConvertSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                     const ImageConvertSettings &base)
{
    ImageConvertSettings s = base;
    for (const auto &[key, value] : pairs) {
        if (key == QLatin1String("mode"))
            s.mode = listPosition(key, value, 2);
        else if (key == QLatin1String("palette"))
            s.palette = listPosition(key, value, 5);
        else if (key == QLatin1String("interpolate"))
            s.interpolate = flag(key, value);
        else if (key == QLatin1String("db_palette"))
            s.dbPalette = value;
        else if (key == QLatin1String("file_palette"))
            s.filePalette = value;
        else if (key == QLatin1String("extension"))
            s.extension = value;
        else if (key == QLatin1String("folder"))
            s.folder = value;
    }
    return s;
}

ImageConvertSettings ImageConvertSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, ImageConvertSettings());
}

SettingsText::Pairs ImageConvertSettings::toPairs(bool batch) const
{
    SettingsText::Pairs pairs{{QStringLiteral("mode"), text(mode)},
                              {QStringLiteral("palette"), text(palette)},
                              {QStringLiteral("interpolate"), text(interpolate)},
                              {QStringLiteral("db_palette"), dbPalette},
                              {QStringLiteral("file_palette"), filePalette}};
    if (batch) {
        pairs.emplace_back(QStringLiteral("extension"), extension);
        pairs.emplace_back(QStringLiteral("folder"), folder);
    }
    return pairs;
}

void ImageConvertSettings::configure(ImageConverter &engine, const Palette<uint> &given) const
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
        engine.setDatabasePalette(dbPalette);
        break;
    default:
        engine.setFilePalette(filePalette);
        break;
    }
    engine.setFormat(mode == 1 ? ImageConversionEngine::Continuous : ImageConversionEngine::Indexed,
                     interpolate);
}

QStringList ImageConvertSettings::paletteTexts(bool lastPalette)
{
    return {QStringLiteral("Grayscale"), QStringLiteral("Extended grayscale"),
            lastPalette ? QStringLiteral("Last palette") : QStringLiteral("Current palette"),
            QStringLiteral("From DB"), QStringLiteral("From file")};
}

QStringList ImageConvertSettings::modeTexts()
{
    return {QStringLiteral("Indexed"), QStringLiteral("Continuous")};
}

QStringList ImageConvertSettings::extensions()
{
    return {".bmp", ".cur", ".gif",  ".icns", ".ico", ".jpeg", ".jpg",  ".pbm",  ".pgm", ".png",
            ".ppm", ".svg", ".svgz", ".tga",  ".tif", ".tiff", ".wbmp", ".webp", ".xbm", ".xpm"};
}
