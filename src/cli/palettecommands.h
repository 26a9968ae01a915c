#pragma once

#include "clicontext.h"

int paletteShow(CliContext &ctx);
int paletteConvert(CliContext &ctx);
int paletteText(CliContext &ctx);
int paletteBatch(CliContext &ctx);
