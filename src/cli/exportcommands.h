#pragma once

#include "clicontext.h"

// Palette pictures: "palette render" writes one as an image file, "palette print" prints it on an
// A4 page into a PDF file.
int paletteRender(CliContext &ctx);
int palettePrint(CliContext &ctx);
