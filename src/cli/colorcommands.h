#pragma once

#include "clicontext.h"

int colorToSpace(CliContext &ctx);
int colorFromSpace(CliContext &ctx);
int colorHsva(CliContext &ctx);
