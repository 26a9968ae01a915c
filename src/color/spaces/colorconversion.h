#pragma once

#include "spaces/hsbacolor.h"
#include "spaces/hslacolor.h"
#include "spaces/hsvacolor.h"
#include "spaces/rgbacolor.h"

// HSVA of a 16-bit colour. The alpha is divided by 65535 twice (an opaque colour gives 1/65535);
// the tone dialogs and quantisers depend on exactly these numbers, so it stays that way.
HSVAColor<double> toHSVA(const RGBAColor<uint> &c);

// HSVA back to a 16-bit colour, as the hue rotation generator and the tone dialogs use it:
// every component, alpha included, is multiplied by 65535 and truncated, so an alpha of 65535
// becomes the 32-bit word 65535 * 65535.
RGBAColor<uint> hsvaToRGBA(const HSVAColor<double> &c);

// HSLA and HSBA with alpha as a fraction; these have no legacy scaling of their own.
HSLAColor<double> toHSLA(const RGBAColor<uint> &c);
RGBAColor<uint> hslaToRGBA(const HSLAColor<double> &c);
HSBAColor<double> toHSBA(const RGBAColor<uint> &c);
RGBAColor<uint> hsbaToRGBA(const HSBAColor<double> &c);
