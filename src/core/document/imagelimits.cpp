#include "document/imagelimits.h"

namespace ImageLimits {

bool fits(qint64 width, qint64 height)
{
    return width > 0 && height > 0 && width <= maxSide && height <= maxSide && width * height <= maxPixels;
}

QString tooLarge(qint64 width, qint64 height)
{
    return QStringLiteral("The image is %1 x %2 pixels; at most %3 pixels, %4 a side, can be opened.")
        .arg(width)
        .arg(height)
        .arg(maxPixels)
        .arg(maxSide);
}

} // namespace ImageLimits
