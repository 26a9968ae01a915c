#include "conversion/imageconversionengine.h"

#include "palette/describedexception.h"
#include "storage/palettedatabase.h"
#include "formats/paletteformats.h"
#include "operations/palettegenerators.h"
#include "palette/standardpalettes.h"

ImageConversionEngine::ImageConversionEngine(const PaletteDatabase *paletteList, QObject *parent)
    : QObject(parent), m_destination(grayscale()), m_paletteList(paletteList)
{
    registerPaletteMetaType();
}

Palette<uint> ImageConversionEngine::grayscale()
{
    return grayscalePalette();
}

Palette<uint> ImageConversionEngine::extendedGrayscale()
{
    // The generator of the same name builds exactly these entries; the tests hold it to this
    // definition.
    return PaletteGenerators::extendedGrayscale();
}

Palette<uint> ImageConversionEngine::blackAndWhite()
{
    Palette<uint> p;
    p.append({0, 0, 0, 65535});
    p.append({65280, 65280, 65280, 65535});
    return p;
}

void ImageConversionEngine::resetTo(int source, const Palette<uint> &palette)
{
    m_source = source;
    m_destination = palette;
}

void ImageConversionEngine::setGrayscale()
{
    resetTo(0, grayscale());
}

void ImageConversionEngine::setExtendedGrayscale()
{
    resetTo(1, extendedGrayscale());
}

void ImageConversionEngine::setGivenPalette(const Palette<uint> &palette)
{
    resetTo(givenSource(), palette);
}

void ImageConversionEngine::setDatabasePalette(const QString &name)
{
    resetTo(givenSource(), grayscale());
    if (name.isEmpty())
        return;
    const std::optional<Palette<uint>> found = m_paletteList ? m_paletteList->lookup(name) : std::nullopt;
    if (found)
        m_destination = *found;
    else
        m_missing << name;
}

void ImageConversionEngine::setFilePalette(const QString &path)
{
    resetTo(givenSource(), grayscale());
    if (path.isEmpty())
        return;
    const int dot = path.lastIndexOf('.');
    Palette<uint> read;
    try {
        importPalette(path, read, formatFromWord(dot < 0 ? QString() : path.mid(dot + 1)));
    } catch (const DescribedException &) {
        m_missing << path;
        return;
    }
    m_destination = read;
}

void ImageConversionEngine::setFormat(int format, bool interpolate)
{
    m_format = format;
    m_interpolate = interpolate;
}

QImage ImageConversionEngine::sourcePicture(const DocumentImage &image, const Palette<uint> &shownWith)
{
    if (image.mode() == DocumentImage::RGB)
        return image.picture();
    if (image.isNull())
        return {};
    DocumentImage shown = image;
    shown.render(shownWith.isEmpty() && image.mode() == DocumentImage::Indexed8 ? image.imagePalette()
                                                                                : shownWith);
    return shown.picture();
}
