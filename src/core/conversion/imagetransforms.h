#pragma once

#include "document/documentimage.h"

#include <QString>
#include <QStringList>

// The Image > Transform commands, by their macro step names. Each is a pure function of the
// document image that moves its pixels and nothing else: the mode, the image palette and the
// interpolation flag stay, and every pixel keeps its index, cell value or colour.
//   image_mirror_h    left and right swap: each row is reversed
//   image_mirror_v    top and bottom swap: the rows are reversed
//   image_rotate_cw   a quarter turn clockwise: the top row becomes the right column
//   image_rotate_ccw  a quarter turn counter-clockwise: the top row becomes the left column
// The rotations swap width and height. Four rotations in one direction, or two mirrors of the
// same kind, give the image back exactly.
namespace ImageTransforms {

QStringList names();
bool exists(const QString &name);

// Throws DescribedException for an unknown name. A null image comes back null.
DocumentImage apply(const QString &name, const DocumentImage &image);

} // namespace ImageTransforms
