#pragma once

#include "clicontext.h"

// palette apply OPERATION IN OUT: one registered palette operation on a palette file.
int paletteApply(CliContext &ctx);
// palette generate NAME OUT: one of the generators without parameters.
int paletteGenerate(CliContext &ctx);
// palette select IN: the index set of a selection pattern, one index a line.
int paletteSelect(CliContext &ctx);
