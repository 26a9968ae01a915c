#version 120
// A moire: two sets of concentric rings, laid over each other like two printed transparencies.
// Their centres lie symmetric about the view's centre, (xadd, yadd) / 10 apart; norm rings fit in
// one unit of the view, zoom magnifies and (xoff, yoff) pans. Each set is a smooth profile that is
// 1 on a ring and 0 halfway between two rings; the product of both shows the large interference
// fringes where the rings fall in and out of step.

uniform sampler1D tex;
uniform int gray = 0;
uniform vec4 off = vec4(0.0);
uniform vec4 scale = vec4(1.0);
uniform float zoom = 1.0;
uniform float norm = 60.0;

float rings(vec2 z, vec2 centre)
{
    float t = abs(fract(length(z - centre) * norm) * 2.0 - 1.0);
    return t * t * (3.0 - 2.0 * t);
}

#include "include/readback.glsl"

void main()
{
    vec2 z = (gl_TexCoord[0].xy - 0.5) / zoom - off.xy;
    vec2 shift = scale.xy * 0.05;
    float value = min(rings(z, shift) * rings(z, -shift), 1.0);
    gl_FragColor = gray == 1 ? encodeValue(value) : texture1D(tex, value);
}
