#pragma once

#include "clicontext.h"

int imageShow(CliContext &ctx);
int imageRender(CliContext &ctx);
int imagePrint(CliContext &ctx);
int animation(CliContext &ctx);
int dbList(CliContext &ctx);
int dbShow(CliContext &ctx);
