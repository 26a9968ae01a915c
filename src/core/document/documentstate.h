#pragma once

#include "document/documentimage.h"
#include "palette/palette.h"

#include <QString>

// What a palette change replaces, as the history keeps it.
struct PaletteState
{
    Palette<uint> palette;
    int builtinIndex = 0; // the position in the built-in list travels with the palette it chose
    QString fileName;
    bool paletteModified = false;
    bool imageModified = false;
};

// What an image change replaces.
struct ImageState
{
    DocumentImage image; // a null image is "no image"
    QString fileName;
    bool imageModified = false;
};

// The palette view's settings that belong to the document.
struct PaletteViewSettings
{
    int maximumSize = 1024;
    bool fixedSize = false;
    RGBAColor<uint> fillColor{0, 0, 0, 65535};

    bool operator==(const PaletteViewSettings &o) const
    {
        return maximumSize == o.maximumSize && fixedSize == o.fixedSize && fillColor == o.fillColor;
    }
    bool operator!=(const PaletteViewSettings &o) const { return !(*this == o); }
};
