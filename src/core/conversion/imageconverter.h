#pragma once

#include "conversion/imageconversionengine.h"

// Converts an image by brightness: the channel sum of each pixel becomes its index or its
// continuous value, and the destination palette is only attached to the result. No colour is
// matched against the palette.
//   continuous:                      value (r + g + b) * 257 / 3 as float, 0..765 onto 0..65535
//   indexed, palette <= 256 entries: 8-bit index (r + g + b) / 3
//   indexed, larger palette:         32-bit index r + g + b (the extended grayscale palette thus
//                                    shows the brightness exactly)
// Palette sources: 0 grayscale, 1 extended grayscale, 2 a given palette (current, last, database
// or file).
class ImageConverter : public ImageConversionEngine
{
    Q_OBJECT
public:
    explicit ImageConverter(const PaletteDatabase *paletteList = nullptr, QObject *parent = nullptr)
        : ImageConversionEngine(paletteList, parent)
    {
    }

    // The converted image (not rendered; its image palette is the destination palette), or a
    // null image when cancelled. shownWith is the palette an indexed or continuous image is shown
    // through; an RGB image needs none.
    DocumentImage convert(const DocumentImage &image, const Palette<uint> &shownWith = {});

    // The conversion itself on 8-bit colours (an RGB picture, or an 8-bit indexed one read through
    // its colour table). A progress callback returning false cancels it: the result is null.
    static DocumentImage byBrightness(const QImage &picture, int paletteSize, int format, bool interpolate,
                                      const std::function<bool(int)> &progress = {});

protected:
    int givenSource() const override { return 2; }
};
