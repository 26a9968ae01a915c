#pragma once

#include "document/documentimage.h"
#include "palette/palette.h"

#include <QString>
#include <QStringList>

// The image menu's fast conversions, by their macro step names. Each is a pure function of the
// document's image, its palette and its last palette, giving the new image (not rendered) and
// the palette to show it with.
//   image_convert_grayscale                 8-bit indexed against the grayscale palette
//   image_convert_extended_grayscale        32-bit indexed against the extended grayscale
//   image_convert_continuous_grayscale      continuous against the grayscale palette
//   image_convert_indexed8bit_lastpalette   indexed against the last palette
//   image_convert_continuous_lastpalette    continuous against the last palette
//   image_convert_indexed8bit               8-bit indexed, keeping the palette
//   image_convert_indexed32bitint           32-bit indexed, the cells read as integers
//   image_convert_real                      continuous, keeping the palette
// From an RGB image all of them convert by brightness as the image converter does (so a palette
// of more than 256 entries gives a 32-bit index image there too). The last three also change
// the mode of indexed and continuous images, keeping what each pixel shows where they can:
//   to 8 bit:   32-bit indexes above 255 become 255; continuous cells take the entry they show
//               (v * N / 65535, limited to N - 1), again at most 255
//   to 32 bit:  8-bit indexes as they are; an RGB pixel becomes its 24-bit value 0xRRGGBB;
//               continuous cells their value truncated to an integer (negative ones 0)
//   continuous: index i becomes i * 65535 / N, the value its entry starts at
// An image already in the target mode comes back unchanged.
namespace FastConversions {

struct Result
{
    DocumentImage image;
    Palette<uint> palette;
};

QStringList names();
bool exists(const QString &name);

// Throws DescribedException for an unknown name or a missing image.
Result apply(const QString &name, const DocumentImage &image, const Palette<uint> &palette,
             const Palette<uint> &lastPalette);

} // namespace FastConversions
