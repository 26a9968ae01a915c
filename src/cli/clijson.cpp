#include "clijson.h"

QJsonArray colourJson(const RGBAColor<uint> &c)
{
    return QJsonArray{double(c.r), double(c.g), double(c.b), double(c.a)};
}

QJsonArray entriesJson(const Palette<uint> &palette)
{
    QJsonArray entries;
    for (const auto &colour : palette.entries())
        entries.append(colourJson(colour));
    return entries;
}

QJsonObject paletteJson(const Palette<uint> &palette)
{
    QJsonObject properties;
    for (int key = PaletteName; key <= PaletteFile; ++key)
        properties.insert(palettePropertyName(key), palette.property(key));
    return QJsonObject{{QStringLiteral("properties"), properties}, {QStringLiteral("entries"), entriesJson(palette)}};
}
