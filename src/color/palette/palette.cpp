#include "palette/palette.h"

namespace {
const char *const propertyNames[] = {"name", "comment", "file.ext", "file"};
}

QString palettePropertyName(int key)
{
    if (key < 0 || key > PaletteFile)
        return {};
    return QString::fromLatin1(propertyNames[key]);
}

int palettePropertyKey(const QString &name)
{
    for (int key = PaletteName; key <= PaletteFile; ++key)
        if (name == QLatin1String(propertyNames[key]))
            return key;
    return -1;
}

void registerPaletteMetaType()
{
    qRegisterMetaType<Palette<uint>>("Palette<uint>");
}
