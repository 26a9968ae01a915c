#pragma once

#include "conversion/imageconvertsettings.h"
#include "conversion/imagequantisizesettings.h"
#include "document/documentimage.h"
#include "export/palettetextencoder.h"
#include "generators/imagegenerator.h"
#include "palette/palette.h"
#include "storage/settingstext.h"

#include <QString>
#include <QStringList>

#include <set>
#include <vector>

class ChromaxisDocument;
class PaletteDatabase;

// The commands that change a document, written once for every face: the window's slots gather
// what the user chose and call them, the macro player maps each step name to one of them, and
// the command line runs them on a document without a window. A command changes the document
// (one history step, grouped where it changes palette and image together), then records its
// macro step. Failures throw DescribedException before anything has changed; so does every
// command that would give the document a palette longer than PaletteLimits::maximumLength.
class DocumentCommands
{
public:
    // A replay must not record what it replays: the recorder would double every step.
    enum Recording { RecordSteps, DoNotRecord };

    DocumentCommands(ChromaxisDocument &document, const PaletteDatabase *builtins,
                     Recording recording = RecordSteps);

    ChromaxisDocument &document() { return m_document; }
    const PaletteDatabase *builtins() const { return m_builtins; }

    // ---- Images
    // What happens to an RGB image right after it is opened ("rgb action" of the settings):
    // 0 ask, 1 keep it, 2 the conversion dialog, 3..9 one of the fast conversions.
    enum RgbOnLoad { RgbAsk = 0, RgbKeep = 1, RgbConvertDialog = 2, RgbLastAction = 9 };
    // The fast conversion an RGB-on-load action runs; empty for the actions that are no conversion.
    static QString rgbOnLoadConversion(int action);
    // The palette an image read from path brings with it: an 8-bit indexed picture is shown in its
    // own colour table, named after the file. Empty for every other image (indexed arrays carry no
    // colours), which is shown through the palette it meets.
    static Palette<uint> ownColours(const DocumentImage &opened, const QString &path);
    // Opens an image file as the document's image. An image with its own colours installs them as
    // the palette in the same history step; the palette shown before becomes the last palette.
    // An RGB image then meets the RGB-on-load rule: the conversions run here; the actions that
    // need the user (ask, the dialog) are returned for the caller to carry out, RgbKeep when
    // nothing is left to do.
    int loadImage(const QString &path, int rgbAction = RgbKeep);
    // Writes the image rendered through the palette; the document takes the new file name.
    void saveImage(const QString &path);
    void closeImage();
    void setInterpolate(bool interpolate);

    // ---- Palettes
    // Loading a palette discards an RGB image: no palette can show it. Callers that can ask the
    // user do so when this is true.
    bool loadingPaletteDiscardsImage() const;
    void loadPalette(const QString &path);
    void savePalette(const QString &path);
    // The whole palette as text through an encoder template.
    void exportPaletteText(const QString &path, const PaletteTextEncoder::Template &encoderTemplate);
    // A palette of the built-in collection, by its full name or its position.
    void takeBuiltin(const QString &name);
    void takeBuiltin(int index);
    // A palette operation of the core by its step name, acting on the selected entries.
    void applyPaletteOperation(const QString &name, const std::set<int> &selection,
                               const SettingsText::Pairs &settings = {});
    // The result of a palette dialog, recorded under the dialog's step with its settings text and
    // the document's selection.
    void installPalette(const Palette<uint> &palette, const QString &step, const QString &settingsText);
    // Sorts the palette, or its selected entries, by a "sort_colors" setting. When the setting
    // asks for it an indexed image's pixels follow their colours in the same history step, so the
    // picture stays as it was; a continuous image cannot follow (its cells are positions along the
    // palette) and shows the sorted palette. applyPaletteOperation("sort_colors") comes here.
    void sortColors(const std::set<int> &selection, const SettingsText::Pairs &settings);
    // Whether sortColors with these settings moves the image's pixels along.
    bool sortMovesPixels(const SettingsText::Pairs &settings) const;
    // False when the size is fixed or out of the window's range: the palette stays as it is. A size
    // past PaletteLimits::maximumLength is refused with PaletteLimits::tooLong, whatever the range.
    bool setPaletteSize(int size);
    void setMaximumPaletteSize(int size);
    void setFixedPaletteSize(bool fixed);
    void setFillColor(const RGBAColor<uint> &color);

    // ---- Edits of the selected entries (the window edits through its palette view, whose
    // clipboard is the system's; these carry the same edits for replays and scripts)
    std::vector<RGBAColor<uint>> copy(const std::set<int> &selection);
    void paste(const std::set<int> &selection, const std::vector<RGBAColor<uint>> &colors, bool single);
    void replace(const std::set<int> &selection, const std::vector<RGBAColor<uint>> &colors);
    void remove(const std::set<int> &selection);
    void setColor(const std::set<int> &selection, const RGBAColor<uint> &color);

    // ---- Selection files
    void loadSelection(const QString &path);
    void saveSelection(const QString &path);
    void selectPattern(const SettingsText::Pairs &settings);

    // ---- Conversions: each replaces image and palette as one history step
    // Throws for an unknown name or a document without an image.
    void fastConvert(const QString &step);
    // The fast conversion that would leave the image as it is (already in its target mode).
    bool fastConversionChangesNothing(const QString &step) const;
    // Returns the palettes that could not be found and were replaced by grayscale.
    QStringList convertImage(const ImageConvertSettings &settings);
    QStringList quantiseImage(const ImageQuantisizeSettings &settings);
    // Mirrors or rotates the image by the transform's step name (ImageTransforms), the palette
    // untouched. Throws for an unknown name or a document without an image.
    void transformImage(const QString &step);
    // The result of a conversion dialog, recorded under step with its settings text.
    void installConversion(const DocumentImage &image, const Palette<uint> &palette, const QString &step,
                           const QString &settingsText = {});

    // ---- Generators
    // Replaces the image with a generator's picture through the document's palette, which stays as
    // it is: one history step, then the macro step settings.macroStep() with the settings text.
    // A render that fails, or that progress cancels (ImageGenerator::Cancelled), throws before
    // anything has changed.
    void generateImage(const GeneratorSettings &settings,
                       ImageGenerator::Renderer renderer = ImageGenerator::Renderer::Auto,
                       const ImageGenerator::Progress &progress = {});
    // The same with a picture already made elsewhere.
    void installGenerated(const DocumentImage &image, const GeneratorSettings &settings);

    // ---- Projects and the document as a whole
    void newProject();
    void openProject(const QString &path);
    void saveProject(const QString &path);
    // A project kept as a copy of unsaved work (an autosave): it comes back as the unsaved work it
    // was, tied to no project file, so the copy is never mistaken for the user's own file.
    void restoreProject(const QString &path);
    // The document a file becomes when opened: a project restores the whole state, a palette file
    // becomes the palette, anything else is opened as an image.
    void open(const QString &path);
    void clearHistory();
    // Steps that move only the view; recorded so a replay keeps the user's sequence.
    void recordViewStep(const QString &step);

private:
    void record(const QString &step, const QString &parameters = {});
    void replaceImageAndPalette(const DocumentImage &image, const Palette<uint> &palette);
    void requireImage(const QString &step) const;

    ChromaxisDocument &m_document;
    const PaletteDatabase *m_builtins;
    Recording m_recording;
};
