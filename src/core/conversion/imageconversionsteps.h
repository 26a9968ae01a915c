#pragma once

#include "document/macroplayer.h"

#include <map>

// Adds the macro steps that change the image's mode: the fast conversions by their step names,
// "image_convert" (parameters: an image_format_convert settings text) and "image_quantisize"
// (an image_quantisize settings text). Each replaces image and palette in one history step; a
// step without an image to convert fails with its message. Database palettes come from the
// built-in collection; a palette that cannot be found leaves grayscale, as in the dialogs.
void registerImageConversionSteps(std::map<QString, MacroPlayer::Handler> &registry);
