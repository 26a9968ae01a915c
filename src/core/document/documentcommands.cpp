#include "document/documentcommands.h"

#include "conversion/fastconversions.h"
#include "conversion/imageconverter.h"
#include "conversion/imagequantisizer.h"
#include "conversion/imagetransforms.h"
#include "document/chromaxisdocument.h"
#include "document/documentproject.h"
#include "document/indexremap.h"
#include "formats/paletteformats.h"
#include "formats/writefileatomically.h"
#include "operations/paletteedits.h"
#include "operations/paletteoperations.h"
#include "operations/palettesort.h"
#include "operations/selectionlist.h"
#include "operations/selectionpattern.h"
#include "palette/describedexception.h"
#include "palette/palettelimits.h"
#include "palette/standardpalettes.h"
#include "storage/documentimageio.h"
#include "storage/palettedatabase.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTextStream>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("DocumentCommands", text);
}

// A palette operation acts on the whole palette when nothing is selected; its step says so with
// an empty selection line. A step without one would act on whatever the replaying document has
// selected, which an undo (of a paste that cleared the selection, say) can leave different.
QString operationSelection(const std::set<int> &selection)
{
    return SelectionList::parameterLine(selection);
}

QString colorText(const RGBAColor<uint> &c)
{
    return QStringLiteral("%1,%2,%3,%4").arg(c.r).arg(c.g).arg(c.b).arg(c.a);
}

// The image mode a conversion that keeps the palette leads to; 0 for the others, which always
// convert.
int targetMode(const QString &step)
{
    if (step == QLatin1String("image_convert_indexed8bit"))
        return DocumentImage::Indexed8;
    if (step == QLatin1String("image_convert_indexed32bitint"))
        return DocumentImage::Indexed32;
    if (step == QLatin1String("image_convert_real"))
        return DocumentImage::Continuous;
    return 0;
}

} // namespace

DocumentCommands::DocumentCommands(ChromaxisDocument &document, const PaletteDatabase *builtins, Recording recording)
    : m_document(document), m_builtins(builtins), m_recording(recording)
{
}

void DocumentCommands::record(const QString &step, const QString &parameters)
{
    if (m_recording == RecordSteps)
        m_document.recordMacroStep(step, parameters);
}

void DocumentCommands::requireImage(const QString &step) const
{
    if (!m_document.hasImage())
        throw DescribedException(tr("No image"), tr("The command '%1' needs an image.").arg(step));
}

// ---- Images --------------------------------------------------------------------------------------

QString DocumentCommands::rgbOnLoadConversion(int action)
{
    static const char *const steps[] = {"image_convert_grayscale",
                                        "image_convert_extended_grayscale",
                                        "image_convert_continuous_grayscale",
                                        "image_convert_indexed8bit_lastpalette",
                                        "image_convert_continuous_lastpalette",
                                        "image_convert_indexed8bit",
                                        "image_convert_indexed32bitint"};
    if (action < 3 || action > RgbLastAction)
        return QString();
    return QString::fromLatin1(steps[action - 3]);
}

Palette<uint> DocumentCommands::ownColours(const DocumentImage &opened, const QString &path)
{
    if (opened.mode() != DocumentImage::Indexed8 || opened.imagePalette().isEmpty())
        return {};
    Palette<uint> colours = opened.imagePalette();
    colours.setProperty(PaletteName, QFileInfo(path).completeBaseName());
    return colours;
}

int DocumentCommands::loadImage(const QString &path, int rgbAction)
{
    DocumentImage image = DocumentImageIO::load(path);
    const bool rgb = image.mode() == DocumentImage::RGB;
    const Palette<uint> colours = ownColours(image, path);
    if (colours.isEmpty()) {
        m_document.setImageState({std::move(image), path, false});
    } else {
        // The colours are the image file's: nothing to save, and no palette file of their own, so
        // that "Save palette" asks for one instead of writing over the picture.
        PaletteState state = m_document.paletteState();
        state.palette = colours;
        state.fileName.clear();
        state.paletteModified = false;
        m_document.beginGroup();
        m_document.setPaletteState(state);
        m_document.setImageState({std::move(image), path, false});
        m_document.endGroup();
    }
    record(QStringLiteral("load_image"), QStringLiteral("filename:%1\n").arg(path));
    if (!rgb)
        return RgbKeep;
    const QString conversion = rgbOnLoadConversion(rgbAction);
    if (!conversion.isEmpty()) {
        fastConvert(conversion);
        return RgbKeep;
    }
    return rgbAction == RgbAsk || rgbAction == RgbConvertDialog ? rgbAction : RgbKeep;
}

void DocumentCommands::saveImage(const QString &path)
{
    requireImage(QStringLiteral("save_image"));
    DocumentImageIO::save(path, m_document.image());
    // Where the image lives is not a change worth a history step.
    m_document.setImageFileName(path);
    m_document.setImageModified(false);
}

void DocumentCommands::closeImage()
{
    m_document.closeImage();
    record(QStringLiteral("close_image"));
}

void DocumentCommands::setInterpolate(bool interpolate)
{
    if (!m_document.hasImage())
        return;
    DocumentImage image = m_document.image();
    image.setInterpolate(interpolate);
    m_document.setImage(image);
    record(QStringLiteral("image_interpolate_entries"), QStringLiteral("interpolate:%1\n").arg(interpolate ? 1 : 0));
}

// ---- Palettes ------------------------------------------------------------------------------------

bool DocumentCommands::loadingPaletteDiscardsImage() const
{
    return m_document.imageMode() == DocumentImage::RGB;
}

void DocumentCommands::loadPalette(const QString &path)
{
    const Palette<uint> palette = openPaletteFile(path);
    PaletteLimits::checkLength(palette.size()); // before the image is closed
    const bool discardImage = loadingPaletteDiscardsImage();
    if (discardImage) {
        m_document.beginGroup();
        m_document.closeImage();
    }
    PaletteState state = m_document.paletteState();
    state.palette = palette;
    state.fileName = path;
    state.paletteModified = false;
    m_document.setPaletteState(state);
    if (discardImage)
        m_document.endGroup();
    record(QStringLiteral("load_palette"), QStringLiteral("filename:%1\n").arg(path));
}

void DocumentCommands::savePalette(const QString &path)
{
    const int format = formatFromWord(QFileInfo(path).suffix());
    if (format == FormatUnknown)
        throw DescribedException(tr("Could not save"), tr("Unable to save palette %1.\nUnrecognized format.")
                                                           .arg(QFileInfo(path).fileName()));
    exportPalette(path, m_document.palette(), format);
    m_document.setPaletteFileName(path);
    m_document.setPaletteModified(false);
}

void DocumentCommands::exportPaletteText(const QString &path, const PaletteTextEncoder::Template &encoderTemplate)
{
    const FileWriteResult written = writeFileAtomically(path, [&](QIODevice &device) {
        QTextStream stream(&device);
        PaletteTextEncoder::encode(encoderTemplate, m_document.palette(), {}, stream);
        stream.flush();
        return stream.status() == QTextStream::Ok;
    });
    if (written.stage == FileWriteResult::NotOpened)
        throw DescribedException(tr("Could not save"), tr("Unable to save palette under\n%1.\nCould not open file.\n%2")
                                                           .arg(path, written.error));
    if (!written.ok())
        throw DescribedException(tr("Could not save"),
                                 tr("Unable to save palette under\n%1.\n%2").arg(path, written.error));
    record(QStringLiteral("export_palette_text"), QStringLiteral("filename:%1\n").arg(path));
}

void DocumentCommands::takeBuiltin(const QString &name)
{
    const auto palette = m_builtins ? m_builtins->lookup(name) : std::nullopt;
    if (!palette)
        throw DescribedException(tr("Palette database"),
                                 tr("There is no palette named '%1' in the database.").arg(elidedValue(name)));
    PaletteState state = m_document.paletteState();
    state.palette = *palette;
    state.palette.setProperty(PaletteName, name);
    state.builtinIndex = int(m_builtins->names().indexOf(name));
    state.fileName.clear();
    state.paletteModified = true;
    m_document.setPaletteState(state);
    record(QStringLiteral("palette_from_db"), QStringLiteral("name:%1\n").arg(name));
}

void DocumentCommands::takeBuiltin(int index)
{
    if (!m_builtins || index < 0 || index >= m_builtins->size())
        throw DescribedException(tr("Palette database"), tr("There is no palette at position %1 in the database.")
                                                             .arg(index));
    takeBuiltin(m_builtins->names().at(index));
}

void DocumentCommands::applyPaletteOperation(const QString &name, const std::set<int> &selection,
                                             const SettingsText::Pairs &settings)
{
    // A replayed or scripted sort keeps the picture just as the dialog's does.
    if (name == SortSettings::settingsName) {
        sortColors(selection, settings);
        return;
    }
    m_document.setPaletteResult(PaletteOperations::apply(name, m_document.palette(), selection, settings),
                                ChromaxisDocument::originOf(name));
    record(name, SettingsText::formatLines(settings) + operationSelection(selection));
}

void DocumentCommands::installPalette(const Palette<uint> &palette, const QString &step, const QString &settingsText)
{
    m_document.setPaletteResult(palette, ChromaxisDocument::originOf(step));
    record(step, settingsText + operationSelection(m_document.selection()));
}

bool DocumentCommands::sortMovesPixels(const SettingsText::Pairs &settings) const
{
    const int mode = m_document.imageMode();
    return SortSettings::fromPairs(settings).remap &&
           (mode == DocumentImage::Indexed8 || mode == DocumentImage::Indexed32);
}

void DocumentCommands::sortColors(const std::set<int> &selection, const SettingsText::Pairs &settings)
{
    const SortSettings sort = SortSettings::fromPairs(settings);
    const Palette<uint> &palette = m_document.palette();
    const std::vector<int> order = PaletteSort::order(palette, selection, sort);
    const Palette<uint> sorted = PaletteSort::reordered(palette, order);
    const bool movesPixels = sortMovesPixels(settings) && sorted != palette;
    if (movesPixels) {
        const DocumentImage image = remapIndexes(m_document.image(), PaletteSort::newPlaces(order));
        m_document.beginGroup();
        m_document.setPaletteResult(sorted, ChromaxisDocument::PaletteOrigin::Edit);
        m_document.setImage(image);
        m_document.endGroup();
    } else {
        m_document.setPaletteResult(sorted, ChromaxisDocument::PaletteOrigin::Edit);
    }
    record(SortSettings::settingsName,
           SettingsText::format(SortSettings::settingsName, SettingsText::formatLines(sort.toPairs())) +
               operationSelection(selection));
}

bool DocumentCommands::setPaletteSize(int size)
{
    PaletteLimits::checkLength(size);
    const PaletteViewSettings &s = m_document.paletteViewSettings();
    if (size < 0 || size > s.maximumSize || s.fixedSize)
        return false;
    if (size == m_document.palette().size())
        return true;
    Palette<uint> palette = m_document.palette();
    palette.resize(size, s.fillColor);
    m_document.setPalette(palette);
    record(QStringLiteral("palette_set_default_size"), QStringLiteral("size:%1\n").arg(size));
    return true;
}

void DocumentCommands::setMaximumPaletteSize(int size)
{
    if (size <= 0)
        throw DescribedException(tr("Invalid settings"), tr("The maximum palette size must be a positive number."));
    if (size > PaletteLimits::maximumLength)
        throw DescribedException(tr("Invalid settings"), tr("The maximum palette size can be at most %1 entries.")
                                                             .arg(PaletteLimits::maximumLength));
    PaletteViewSettings s = m_document.paletteViewSettings();
    if (m_document.hasImage() && size < s.maximumSize)
        throw DescribedException(tr("Image conflict"),
                                 tr("The current image may use more colors than the new maximum value.\nPlease "
                                    "close the image first."));
    if (s.maximumSize == size)
        return;
    s.maximumSize = size;
    m_document.setPaletteViewSettings(s);
    record(QStringLiteral("palette_set_max_size"), QStringLiteral("size:%1\n").arg(size));
}

void DocumentCommands::setFixedPaletteSize(bool fixed)
{
    PaletteViewSettings s = m_document.paletteViewSettings();
    s.fixedSize = fixed;
    m_document.setPaletteViewSettings(s);
    record(QStringLiteral("palette_fix_size"), QStringLiteral("fixed:%1\n").arg(fixed ? 1 : 0));
}

void DocumentCommands::setFillColor(const RGBAColor<uint> &color)
{
    PaletteViewSettings s = m_document.paletteViewSettings();
    s.fillColor = color;
    m_document.setPaletteViewSettings(s);
    record(QStringLiteral("palette_set_default_color"), QStringLiteral("color:%1\n").arg(colorText(color)));
}

// ---- Edits ---------------------------------------------------------------------------------------

std::vector<RGBAColor<uint>> DocumentCommands::copy(const std::set<int> &selection)
{
    std::vector<RGBAColor<uint>> colors;
    const Palette<uint> &palette = m_document.palette();
    for (int i = 0; i < palette.size(); ++i)
        if (selection.empty() || selection.count(i))
            colors.push_back(PaletteEdits::throughClipboard(palette[i]));
    record(QStringLiteral("copy"), SelectionList::parameterLine(selection));
    return colors;
}

void DocumentCommands::paste(const std::set<int> &selection, const std::vector<RGBAColor<uint>> &colors, bool single)
{
    const PaletteViewSettings &s = m_document.paletteViewSettings();
    Palette<uint> palette = m_document.palette();
    PaletteEdits::paste(palette, selection, colors, single, s.fixedSize ? palette.size() : s.maximumSize, s.fixedSize,
                        s.fillColor);
    m_document.setSelection({});
    m_document.setPalette(palette);
    record(QStringLiteral("paste"), SelectionList::parameterLine(selection));
}

void DocumentCommands::replace(const std::set<int> &selection, const std::vector<RGBAColor<uint>> &colors)
{
    Palette<uint> palette = m_document.palette();
    if (PaletteEdits::replaceSelected(palette, selection, colors) == 0)
        return;
    m_document.setPalette(palette);
    record(QStringLiteral("replace"), SelectionList::parameterLine(selection));
}

void DocumentCommands::remove(const std::set<int> &selection)
{
    const PaletteViewSettings &s = m_document.paletteViewSettings();
    Palette<uint> palette = m_document.palette();
    PaletteEdits::removeSelected(palette, selection, s.fixedSize, s.fillColor);
    m_document.setSelection({});
    m_document.setPalette(palette);
    record(QStringLiteral("delete"), SelectionList::parameterLine(selection));
}

void DocumentCommands::setColor(const std::set<int> &selection, const RGBAColor<uint> &color)
{
    Palette<uint> palette = m_document.palette();
    if (PaletteEdits::setSelected(palette, selection, color) == 0)
        return;
    m_document.setPalette(palette);
    record(QStringLiteral("edit"), SelectionList::parameterLine(selection) + QStringLiteral("color:%1\n").arg(colorText(color)));
}

// ---- Selection -----------------------------------------------------------------------------------

void DocumentCommands::loadSelection(const QString &path)
{
    m_document.setSelection(readSelectionFile(path));
    record(QStringLiteral("load_selection"), QStringLiteral("filename:%1\n").arg(path));
}

void DocumentCommands::saveSelection(const QString &path)
{
    writeSelectionFile(path, m_document.selection());
    record(QStringLiteral("save_selection"), QStringLiteral("filename:%1\n").arg(path));
}

void DocumentCommands::selectPattern(const SettingsText::Pairs &settings)
{
    m_document.setSelection(SelectionPattern::select(m_document.palette().size(), settings));
    record(QStringLiteral("select_pattern"), SettingsText::formatLines(settings));
}

// ---- Conversions ---------------------------------------------------------------------------------

// The image and the palette it is shown with change together, as one step to undo. The palette
// goes first so that only the new image is rendered through it.
void DocumentCommands::replaceImageAndPalette(const DocumentImage &image, const Palette<uint> &palette)
{
    PaletteLimits::checkLength(palette.size()); // a refusal inside the group would leave it open
    m_document.beginGroup();
    if (palette != m_document.palette())
        m_document.setPalette(palette);
    m_document.setImage(image);
    m_document.endGroup();
}

bool DocumentCommands::fastConversionChangesNothing(const QString &step) const
{
    const int target = targetMode(step);
    return target != 0 && m_document.imageMode() == target;
}

void DocumentCommands::fastConvert(const QString &step)
{
    requireImage(step);
    // Until the palette changes for the first time there is no earlier one; the palette shown so
    // far is the last one the user saw.
    const Palette<uint> &last = m_document.lastPalette().isEmpty() ? m_document.palette() : m_document.lastPalette();
    const FastConversions::Result r = FastConversions::apply(step, m_document.image(), m_document.palette(), last);
    replaceImageAndPalette(r.image, r.palette);
    record(step);
}

QStringList DocumentCommands::convertImage(const ImageConvertSettings &settings)
{
    requireImage(QStringLiteral("image_convert"));
    ImageConverter converter(m_builtins);
    settings.configure(converter, m_document.palette());
    const DocumentImage image = converter.convert(m_document.image(), m_document.palette());
    replaceImageAndPalette(image, converter.destinationPalette());
    record(QStringLiteral("image_convert"), SettingsText::formatLines(settings.toPairs()));
    return converter.missingPalettes();
}

QStringList DocumentCommands::quantiseImage(const ImageQuantisizeSettings &settings)
{
    requireImage(QStringLiteral("image_quantisize"));
    ImageQuantisizer quantisizer(m_builtins);
    settings.configure(quantisizer, m_document.palette());
    const DocumentImage image = quantisizer.apply(
        m_document.image(), quantisizer.colorsFor(m_document.image(), m_document.palette()), m_document.palette());
    replaceImageAndPalette(image, quantisizer.destinationPalette());
    // The quantised source's method and size are no stored settings, but a replay needs them.
    record(QStringLiteral("image_quantisize"), SettingsText::formatLines(settings.toPairs(true)));
    return quantisizer.missingPalettes();
}

void DocumentCommands::transformImage(const QString &step)
{
    // An unknown name says so even where there is no image to transform.
    const DocumentImage image = ImageTransforms::apply(step, m_document.image());
    requireImage(step);
    m_document.setImage(image);
    record(step);
}

void DocumentCommands::generateImage(const GeneratorSettings &settings, ImageGenerator::Renderer renderer,
                                     const ImageGenerator::Progress &progress)
{
    installGenerated(ImageGenerator::generate(settings, m_document.palette(), renderer, progress), settings);
}

void DocumentCommands::installGenerated(const DocumentImage &image, const GeneratorSettings &settings)
{
    if (image.isNull())
        throw outOfMemoryFailure();
    // A generated picture is no picture of the old image's file: saving it asks for a name
    // instead of overwriting that file.
    m_document.setImageState({image, QString(), true});
    record(settings.macroStep(), SettingsText::format(settings.name, settings.settingsText()));
}

void DocumentCommands::installConversion(const DocumentImage &image, const Palette<uint> &palette,
                                         const QString &step, const QString &settingsText)
{
    replaceImageAndPalette(image, palette);
    record(step, settingsText);
}

// ---- Projects ------------------------------------------------------------------------------------

void DocumentCommands::newProject()
{
    ProjectData fresh;
    fresh.palette = grayscalePalette();
    DocumentProject::install(m_document, fresh);
    m_document.setProjectFileName(QString());
}

void DocumentCommands::openProject(const QString &path)
{
    DocumentProject::install(m_document, ProjectFile::read(path));
    m_document.setProjectFileName(path);
}

void DocumentCommands::restoreProject(const QString &path)
{
    DocumentProject::install(m_document, ProjectFile::read(path));
    m_document.setProjectFileName(QString());
}

void DocumentCommands::saveProject(const QString &path)
{
    // The project now holds every change, so the saved state is a clean one: in the file, so that
    // reopening it asks nothing, and in the document.
    ProjectData data = DocumentProject::capture(m_document);
    data.paletteModified = false;
    data.imageModified = false;
    ProjectFile::write(path, data);
    m_document.setProjectFileName(path);
    m_document.setPaletteModified(false);
    m_document.setImageModified(false);
}

void DocumentCommands::open(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("cxw")) {
        openProject(path);
        return;
    }
    const int format = formatFromWord(suffix);
    if (format != FormatUnknown && format != FormatGif && format != FormatHtml && format != FormatCss &&
        format != FormatJavaScript) {
        loadPalette(path);
        return;
    }
    loadImage(path);
}

void DocumentCommands::clearHistory()
{
    m_document.clearHistory();
    record(QStringLiteral("reset_undo"));
}

void DocumentCommands::recordViewStep(const QString &step)
{
    record(step);
}
