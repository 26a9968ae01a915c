#pragma once

#include "clicontext.h"

int projectShow(CliContext &ctx);
int projectCreate(CliContext &ctx);
