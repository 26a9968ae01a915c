#version 120
// The Julia set of the constant c by escape time. gray 0 shows the value through the palette
// texture; gray 1 writes it encoded for read-back: value x 65536 split into red (set only for 1.0),
// green (high byte) and blue (low byte), each divided by 255 so that the framebuffer stores the
// byte itself.

uniform sampler1D tex;
uniform int gray = 0;
uniform vec2 off = vec2(0.0, 0.0);
uniform float zoom = 1.0;
uniform int iter = 60;
uniform float norm = 60.0;
uniform vec2 c = vec2(-0.6, 0.6);
// The fractional count n + 1 - log2(log|z|) instead of n, so that colour cycling shows no bands.
uniform int smooth = 0;

#include "include/readback.glsl"

void main()
{
    vec2 uv = gl_TexCoord[0].xy;
    // Three units wide and two high at zoom 1, centred on the origin.
    vec2 z;
    z.x = 3.0 * (uv.x - 0.5) / zoom - off.x;
    z.y = 2.0 * (uv.y - 0.5) / zoom - off.y;

#define REAL float
#define REAL2 vec2
#define PRECISE
#define SMOOTHING smooth
    #include "include/escape.glsl"

    if (gray == 0)
        gl_FragColor = texture1D(tex, value);
    else
        gl_FragColor = encodeValue(value);
}
