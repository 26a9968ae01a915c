#version 400 compatibility
#extension GL_ARB_gpu_shader_fp64 : enable
// The Julia set of the constant c in double precision, for deep zooms where single precision turns blocky.
// The view and the orbit are doubles; the value, its encoding and the palette look-up are as in
// the single-precision shader. "smooth" is a keyword of this GLSL version, so the fractional count
// is switched by "smoothing"; double logarithms do not exist here, so |z| is taken to float first.
// The orbit is "precise": a fused multiply-add would round differently from the processor's
// evaluation, and deep in a zoom one rounding changes the count.

uniform sampler1D tex;
uniform int gray = 0;
uniform dvec2 off = dvec2(0.0, 0.0);
uniform double zoom = 1.0;
uniform int iter = 60;
uniform float norm = 60.0;
uniform dvec2 c = dvec2(-0.6, 0.6);
uniform int smoothing = 0;

#include "include/readback.glsl"

void main()
{
    dvec2 uv = dvec2(gl_TexCoord[0].xy);
    precise dvec2 z;
    z.x = 3.0 * (uv.x - 0.5) / zoom - off.x;
    z.y = 2.0 * (uv.y - 0.5) / zoom - off.y;

#define REAL double
#define REAL2 dvec2
#define PRECISE precise
#define SMOOTHING smoothing
    #include "include/escape.glsl"

    if (gray == 0)
        gl_FragColor = texture1D(tex, value);
    else
        gl_FragColor = encodeValue(value);
}
