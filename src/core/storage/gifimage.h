#pragma once

#include "document/documentimage.h"

#include <QByteArray>
#include <QString>

// GIF pictures as document images, through GIFLIB. The toolkit's own reader composes every GIF
// into 32-bit colours, which would open the most common indexed format as an RGB image; read here,
// a GIF keeps its indexes and its colour table and opens as an 8-bit indexed image.
namespace GifImage {

// Whether data begins with a GIF signature ("GIF87a" or "GIF89a").
bool isGif(const QByteArray &head);
// Whether the file at path begins with one; false when it cannot be read.
bool isGifFile(const QString &path);

// The first frame as an 8-bit indexed image (not rendered yet; its picture shows its own colours)
// whose image palette is the frame's colour table, the local table before the global one. The
// entry of a transparent index gets alpha 0. The picture covers the logical screen and the frame,
// within 65535 x 65535; what the frame leaves uncovered holds the transparent index, or else the
// background index. Every failure is a
// DescribedException titled "Could not load" that names the file by name.
DocumentImage fromBytes(const QByteArray &data, const QString &name);
DocumentImage read(const QString &path);

// An 8-bit indexed image as a GIF with the colour table of its picture, cut to the smallest table
// that holds every index the pixels use. Empty for any other image and for sizes beyond GIF's
// 65535 x 65535.
QByteArray toBytes(const DocumentImage &image);

} // namespace GifImage
