#include "conversion/imageconvertsettings.h"

#include "conversion/imageconverter.h"
#include "storage/settingsfields.h"

const QString ImageConvertSettings::settingsName = QStringLiteral("image_format_convert");

namespace {

const SettingsFields<ImageConvertSettings> &convertFields()
{
    using S = ImageConvertSettings;
    using F = SettingsFields<S>;
    static const F fields({
        F::listPosition(QStringLiteral("mode"), &S::mode, 2),
        F::listPosition(QStringLiteral("palette"), &S::palette, 5),
        F::flag(QStringLiteral("interpolate"), &S::interpolate),
        F::text(QStringLiteral("db_palette"), &S::dbPalette),
        F::text(QStringLiteral("file_palette"), &S::filePalette),
        // Batch application only.
        F::text(QStringLiteral("extension"), &S::extension).extraKey(),
        F::text(QStringLiteral("folder"), &S::folder).extraKey(),
    });
    return fields;
}

} // namespace

ImageConvertSettings ImageConvertSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                     const ImageConvertSettings &base)
{
    return convertFields().read(pairs, base);
}

ImageConvertSettings ImageConvertSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, ImageConvertSettings());
}

SettingsText::Pairs ImageConvertSettings::toPairs(bool batch) const
{
    return convertFields().write(*this, batch);
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
