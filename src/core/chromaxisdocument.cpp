#include "chromaxisdocument.h"

#include "standardpalettes.h"

ChromaxisDocument::ChromaxisDocument() : m_palette(grayscalePalette()) {}

QString ChromaxisDocument::modeText(int mode, bool interpolate)
{
    switch (mode) {
    case 1:
        return QStringLiteral("RGB");
    case 2:
        return QStringLiteral("indexed 8bit");
    case 3:
        return QStringLiteral("indexed 32bit");
    case 4:
        return interpolate ? QStringLiteral("continuous (interpolated)") : QStringLiteral("continuous");
    default:
        return QStringLiteral("N/A");
    }
}
