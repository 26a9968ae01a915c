#pragma once

#include "clicontext.h"

int macroRun(CliContext &ctx);
