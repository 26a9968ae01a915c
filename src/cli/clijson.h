#pragma once

#include "palette/palette.h"

#include <QJsonArray>
#include <QJsonObject>

// Colours as the raw 32-bit words [r, g, b, a]. Doubles hold every 32-bit word exactly, and
// QJsonDocument writes them without exponent.
QJsonArray colourJson(const RGBAColor<uint> &c);
QJsonArray entriesJson(const Palette<uint> &palette);
// {"properties": {"name", "comment", "file.ext", "file"}, "entries": [...]}
QJsonObject paletteJson(const Palette<uint> &palette);
