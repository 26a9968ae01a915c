#pragma once

#include "clicontext.h"

int imageConvert(CliContext &ctx);
int imageQuantise(CliContext &ctx);
int imageFast(CliContext &ctx);
int imageBatch(CliContext &ctx);
