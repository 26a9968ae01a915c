#version 120
// Cellular (Worley) noise in two dimensions, computed without a permutation texture: every cell
// of the integer lattice holds one feature point, jittered from the cell's centre by a hash of the
// cell (a polynomial permutation modulo 289). The value is F1, the distance to the nearest
// feature point, searched over the 3 x 3 cells around the point; F2, the second nearest, is kept
// alongside.

uniform sampler1D tex;
uniform int gray = 0;
uniform vec4 off = vec4(0.0);
uniform vec4 scale = vec4(1.0);

#include "include/noiseblocks.glsl"

// (F1, F2).
vec2 cellular(vec2 P)
{
    const float K = 0.142857142857;  // 1/7
    const float Ko = 0.428571428571; // 1/2 - K/2: the jitter stays inside the cell
    vec2 Pi = mod289(floor(P));
    vec2 Pf = fract(P);
    float f1 = 1.0e10;
    float f2 = 1.0e10;
    for (int a = 0; a < 3; ++a) {
        float cx = float(a) - 1.0;
        float px = permute(Pi.x + cx);
        float dx0 = Pf.x - (cx + 0.5);
        for (int b = 0; b < 3; ++b) {
            float cy = float(b) - 1.0;
            float p = permute(px + Pi.y + cy);
            float dx = dx0 + (fract(p * K) - Ko);
            float dy = Pf.y - (cy + 0.5) + (mod7(floor(p * K)) * K - Ko);
            float d = dx * dx + dy * dy;
            f2 = min(f2, max(f1, d));
            f1 = min(f1, d);
        }
    }
    return sqrt(vec2(f1, f2));
}

#include "include/readback.glsl"

void main()
{
    vec2 uv = gl_TexCoord[0].xy;
    vec2 P = vec2(uv.x * scale.x + off.x, uv.y * scale.y + off.y);
    float value = min(cellular(P).x, 1.0);
    gl_FragColor = gray == 1 ? encodeValue(value) : texture1D(tex, value);
}
