#pragma once

#include "document/documentimage.h"
#include "palette/palette.h"

#include <QString>

#include <array>
#include <cstdint>
#include <functional>

// The colour-cycling export of an image: over the indexes start … end the colours move by one
// position a frame, for end - start frames (one fewer than a full cycle).
namespace AnimationExport {

struct Settings
{
    int start = 0;
    int end = 0;
    int framesPerSecond = 10;
};

// The palette of frame f of a movie: the range turned f steps towards lower indexes, so entry i
// shows the old entry start + (i - start + f) mod (end - start + 1). Entries outside the range, and
// a range that leaves the palette, are left as they are.
Palette<uint> rotatedPalette(const Palette<uint> &palette, int start, int end, int frame);

// The GIF's rule, which moves the indexes instead and differs from the movies at the wrap on
// purpose: an index v in start … end becomes (v + frame) in 8 bits, less (end - start) in 8 bits
// when that is above end. Indexes outside the range stay. Entry v of the table is v's new index.
std::array<uint8_t, 256> indexRotation(int start, int end, int frame);

// Frame f of a GIF: the image's 8-bit indexes through indexRotation, written into out, which is
// made a Format_Indexed8 picture of the image's size unless it already is one. Its colour table is
// left alone: the GIF's table is the palette, fixed.
void gifFrame(const DocumentImage &image, int start, int end, int frame, QImage &out);

// Frame f of a movie: the image rendered through rotatedPalette, into out (whose buffer is reused).
void movieFrame(const DocumentImage &image, const Palette<uint> &palette, int start, int end, int frame,
                QImage &out);

// Whether path's suffix asks for a GIF, which only an 8-bit indexed image can give.
bool isGifPath(const QString &path);

// Refuses an image without a palette to rotate: none at all ("No image error") or an RGB image
// ("Format error"). Throws DescribedException.
void checkImage(const DocumentImage &image);

// Refuses what cannot be exported, as the window tells it: no image ("No image error"), an RGB
// image without a palette to rotate or a GIF of anything but an 8-bit indexed image ("Format
// error"), an end below the start or past the palette ("Animation export error"). Throws
// DescribedException.
void check(const QString &path, const DocumentImage &image, const Palette<uint> &palette, const Settings &settings);

enum class Outcome { Written, Cancelled, Failed };

struct Result
{
    Outcome outcome = Outcome::Failed;
    QString error; // the writer's text when Failed
};

// Called before frame f with f = 0 … frames - 1, and with frames at the end of a written movie;
// returning false cancels before the next frame.
using Progress = std::function<bool(int frame)>;

// Writes the movie of image through palette (after check() passed). A cancelled or failed movie
// leaves the destination as it was.
Result write(const QString &path, const DocumentImage &image, const Palette<uint> &palette, const Settings &settings,
             const Progress &progress = {});

} // namespace AnimationExport
