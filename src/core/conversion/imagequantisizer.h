#pragma once

#include "conversion/imageconversionengine.h"

// Converts an image by colour: a destination palette is chosen or computed and every pixel is
// mapped onto it by a dithering method.
//   palette sources: 0 grayscale, 1 extended grayscale, 2 quantized (method, colour count),
//                    3 given palette (current, last, database or file), 4 from image (the colour
//                    list handed over with the image), 5 black and white
//   dither methods:  0 nearest, 1..8 error diffusion with that kernel, 9..12 Bayer 2, 3, 4, 8
// The dither numbers are the positions of the dialog's list as they stand, so its entries run
// the kernel of the same number ("Floyd-Steinberg" runs Atkinson). That pairing is intended.
class ImageQuantisizer : public ImageConversionEngine
{
    Q_OBJECT
public:
    explicit ImageQuantisizer(const PaletteDatabase *paletteList = nullptr, QObject *parent = nullptr)
        : ImageConversionEngine(paletteList, parent)
    {
    }

    void setQuantized(uint method, uint colorCount);
    void setFromImage();
    void setBlackAndWhite(int threshold = 128);
    void setDitherMethod(int method) { m_dither = method; }

    uint quantizationMethod() const { return m_method; }
    uint colorCount() const { return m_colorCount; }
    int blackAndWhiteThreshold() const { return m_bwThreshold; }
    int ditherMethod() const { return m_dither; }

    // The mapped image (not rendered; its image palette is the destination palette), or a null
    // image when cancelled. sourceColors is the image's colour list: the palette of the
    // from-image source, and the colours the nearest-colour search is warmed with. shownWith is
    // the palette an indexed or continuous image is shown through.
    DocumentImage apply(const DocumentImage &image, const Palette<uint> &sourceColors,
                        const Palette<uint> &shownWith = {});

    // The colour list of an image as the caller hands it to apply(): its distinct 24-bit colours
    // in the order of their interleaved bits, the picture of an indexed or continuous image
    // taken as shown through shownWith.
    static Palette<uint> imageColors(const DocumentImage &image, const Palette<uint> &shownWith = {});
    // The colour list to hand to apply(): the image's colours for the from-image source, and none
    // for the others, where they would only warm the colour search that needs no warming, at the
    // cost of one entry for each of a photograph's millions of colours.
    Palette<uint> colorsFor(const DocumentImage &image, const Palette<uint> &shownWith = {}) const;

protected:
    int givenSource() const override { return 3; }

private:
    bool progress(int step, int percent);

    uint m_method = 2;
    uint m_colorCount = 256;
    int m_bwThreshold = 128;
    int m_dither = 0;
};
