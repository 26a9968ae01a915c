#pragma once

#include "documentimage.h"
#include "palette.h"

#include <QString>

#include <set>

// What the main window edits: the palette (always present), at most one image shown through it,
// the palette shown before the current one, the file names and the unsaved-changes flags. It
// lives in the core so that the command line, the tests and the window share one document.
class ChromaxisDocument
{
public:
    ChromaxisDocument();

    const Palette<uint> &palette() const { return m_palette; }
    // Installs a new palette: the current one becomes the last palette and the image is rendered
    // again through the new one.
    void setPalette(const Palette<uint> &palette);
    // Installs a palette for a live preview: the last palette stays as it is.
    void previewPalette(const Palette<uint> &palette);
    const Palette<uint> &lastPalette() const { return m_lastPalette; }
    void setLastPalette(const Palette<uint> &p) { m_lastPalette = p; }

    // Indexes of the selected palette entries.
    const std::set<int> &selection() const { return m_selection; }
    void setSelection(const std::set<int> &s) { m_selection = s; }

    const DocumentImage &image() const { return m_image; }
    // Replaces the image (a null image closes it) and renders it through the palette.
    void setImage(const DocumentImage &image);
    void closeImage();
    bool hasImage() const { return !m_image.isNull(); }
    int imageMode() const { return m_image.mode(); }
    int imageWidth() const { return m_image.width(); }
    int imageHeight() const { return m_image.height(); }
    // The text the property panel shows for a mode.
    static QString modeText(int mode, bool interpolate);

    bool isImageModified() const { return m_imageModified; }
    void setImageModified(bool m) { m_imageModified = m; }
    bool isPaletteModified() const { return m_paletteModified; }
    void setPaletteModified(bool m) { m_paletteModified = m; }

    const QString &imageFileName() const { return m_imageFileName; }
    void setImageFileName(const QString &f) { m_imageFileName = f; }
    const QString &paletteFileName() const { return m_paletteFileName; }
    void setPaletteFileName(const QString &f) { m_paletteFileName = f; }
    const QString &projectFileName() const { return m_projectFileName; }
    void setProjectFileName(const QString &f) { m_projectFileName = f; }

    // Position in the built-in palette list.
    int builtinIndex() const { return m_builtinIndex; }
    void setBuiltinIndex(int i) { m_builtinIndex = i; }

private:
    Palette<uint> m_palette;
    Palette<uint> m_lastPalette;
    DocumentImage m_image;
    std::set<int> m_selection;
    bool m_imageModified = false;
    bool m_paletteModified = false;
    QString m_imageFileName;
    QString m_paletteFileName;
    QString m_projectFileName;
    int m_builtinIndex = 0;
};

// Walking the built-in palette list of count entries.
namespace BuiltinList {
int next(int index, int count);
int prior(int index, int count);
// r is a value of the C library's rand() (0..32767); the product is taken in single precision.
int random(int r, int count);
} // namespace BuiltinList

// Zoom steps of the image view. Out is not the inverse of in; zooming in and out again does not
// return to the old scale, and users' muscle memory relies on these steps.
namespace Zoom {
constexpr double inFactor = 1.25;
constexpr double outFactor = 0.75;
} // namespace Zoom

// Selection files: one decimal index a line, ascending.
std::set<int> readSelectionFile(const QString &path);
void writeSelectionFile(const QString &path, const std::set<int> &selection);
