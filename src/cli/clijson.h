#pragma once

#include "palette/palette.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTextStream>

// Colours as the raw 32-bit words [r, g, b, a]. Doubles hold every 32-bit word exactly, and
// QJsonDocument writes them without exponent.
QJsonArray colourJson(const RGBAColor<uint> &c);
QJsonArray entriesJson(const Palette<uint> &palette);
// {"properties": {"name", "comment", "file.ext", "file"}, "entries": [...]}
QJsonObject paletteJson(const Palette<uint> &palette);
// The same text QJsonDocument writes for paletteJson in its compact form, written entry by entry:
// a palette of millions of entries costs no document many times its size.
void writePaletteJson(QTextStream &out, const Palette<uint> &palette);
