#pragma once

#include "clicontext.h"

// Whether the command line asks for a generator that may draw with OpenGL while a display is at
// hand: only then does the program start as a graphical application, which OpenGL needs. Decided
// from the raw arguments, before any application object exists.
bool generateWantsOpenGL(int argc, char *argv[]);

int generate(CliContext &ctx);
