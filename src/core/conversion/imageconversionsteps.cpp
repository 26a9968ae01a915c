#include "conversion/imageconversionsteps.h"

#include "document/chromaxisdocument.h"
#include "palette/describedexception.h"
#include "conversion/fastconversions.h"
#include "conversion/imageconverter.h"
#include "conversion/imageconvertsettings.h"
#include "conversion/imagequantisizer.h"
#include "conversion/imagequantisizesettings.h"
#include "storage/palettedatabase.h"

namespace {

// The list the window or the command line handed the player; the shipped one otherwise.
const PaletteDatabase &builtinPalettes()
{
    if (const PaletteDatabase *given = MacroPlayer::paletteDatabase())
        return *given;
    static const PaletteDatabase db = [] {
        PaletteDatabase d;
        d.loadFromFile(QStringLiteral(":res/texts/db.txt"));
        return d;
    }();
    return db;
}

SettingsText::Pairs pairsOf(const MacroPlayer::Parameters &p)
{
    SettingsText::Pairs pairs;
    for (const auto &[key, value] : p)
        pairs.emplace_back(key, value);
    return pairs;
}

void requireImage(const ChromaxisDocument &doc, const QString &step)
{
    if (!doc.hasImage())
        throw DescribedException(QStringLiteral("Error on playing macro"),
                                 QStringLiteral("The step '%1' needs an image.").arg(step));
}

void install(ChromaxisDocument &doc, const DocumentImage &image, const Palette<uint> &palette)
{
    doc.beginGroup();
    if (palette != doc.palette())
        doc.setPalette(palette);
    doc.setImage(image);
    doc.endGroup();
}

} // namespace

void registerImageConversionSteps(std::map<QString, MacroPlayer::Handler> &registry)
{
    using P = MacroPlayer::Parameters;
    for (const QString &name : FastConversions::names())
        registry[name] = [name](MacroPlayer &, ChromaxisDocument &doc, const P &) {
            requireImage(doc, name);
            const FastConversions::Result r =
                FastConversions::apply(name, doc.image(), doc.palette(), doc.lastPalette());
            install(doc, r.image, r.palette);
        };
    registry[QStringLiteral("image_convert")] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        requireImage(doc, QStringLiteral("image_convert"));
        ImageConverter converter(&builtinPalettes());
        ImageConvertSettings::fromPairs(pairsOf(p)).configure(converter, doc.palette());
        const DocumentImage image = converter.convert(doc.image(), doc.palette());
        install(doc, image, converter.destinationPalette());
    };
    registry[QStringLiteral("image_quantisize")] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        requireImage(doc, QStringLiteral("image_quantisize"));
        ImageQuantisizer quantisizer(&builtinPalettes());
        ImageQuantisizeSettings::fromPairs(pairsOf(p)).configure(quantisizer, doc.palette());
        const DocumentImage image = quantisizer.apply(
            doc.image(), ImageQuantisizer::imageColors(doc.image(), doc.palette()), doc.palette());
        install(doc, image, quantisizer.destinationPalette());
    };
}
