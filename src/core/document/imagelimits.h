#pragma once

#include <QString>

// The largest image the program builds, and so the largest any reader accepts: NumPy arrays,
// projects and the toolkit's image formats are all refused from their headers, before anything is
// allocated, when they declare more. A picture of the largest size must exist in every form the
// program keeps or shows it in: as 32-bit ARGB, 2^27 pixels are 512 MiB, which leaves room for the
// cells, the shown picture and a conversion together within 2 GiB. Real photographs (a 100
// megapixel camera included) stay well inside.
namespace ImageLimits {

constexpr qint64 maxPixels = qint64(1) << 27;
// A side of 2^18 pixels keeps every row far from the toolkit's 2^26 pixels of a 32-bit row.
constexpr qint64 maxSide = qint64(1) << 18;

// Whether an image of width x height can be built: both positive, neither side past maxSide and
// at most maxPixels in all.
bool fits(qint64 width, qint64 height);

// "The image is W x H pixels; at most 134217728 pixels, 262144 a side, can be opened."
QString tooLarge(qint64 width, qint64 height);

} // namespace ImageLimits
