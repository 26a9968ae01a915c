#pragma once

#include "palette.h"

#include <QString>

// What the main window edits: the palette (always present), at most one image shown through it,
// the file names and the unsaved-changes flags. It lives in the core so that the command line,
// the tests and the window share one notion of "the document".
class ChromaxisDocument
{
public:
    ChromaxisDocument();

    const Palette<uint> &palette() const { return m_palette; }
    void setPalette(const Palette<uint> &palette) { m_palette = palette; }

    // Image mode: 0 none, 1 RGB, 2 indexed 8 bit, 3 indexed 32 bit, 4 continuous.
    int imageMode() const { return m_imageMode; }
    bool hasImage() const { return m_imageMode != 0; }
    int imageWidth() const { return m_imageWidth; }
    int imageHeight() const { return m_imageHeight; }
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

private:
    Palette<uint> m_palette;
    int m_imageMode = 0;
    int m_imageWidth = 0;
    int m_imageHeight = 0;
    bool m_imageModified = false;
    bool m_paletteModified = false;
    QString m_imageFileName;
    QString m_paletteFileName;
    QString m_projectFileName;
};
