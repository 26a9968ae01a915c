#version 120
// Classic (gradient) noise in two dimensions, computed without a permutation texture: the lattice
// corners hash through a polynomial permutation modulo 289, and the hash picks a gradient on a
// diamond that is then normalised.

uniform sampler1D tex;
uniform int gray = 0;
uniform vec4 off = vec4(0.0);
uniform vec4 scale = vec4(1.0);

#include "include/noiseblocks.glsl"

float classicNoise(vec2 P)
{
    // Corners in the order (x0, y0), (x1, y0), (x0, y1), (x1, y1).
    vec4 Pi = floor(P.xyxy) + vec4(0.0, 0.0, 1.0, 1.0);
    vec4 Pf = fract(P.xyxy) - vec4(0.0, 0.0, 1.0, 1.0);
    Pi = mod289(Pi);
    vec4 ix = Pi.xzxz;
    vec4 iy = Pi.yyww;
    vec4 fx = Pf.xzxz;
    vec4 fy = Pf.yyww;

    vec4 h = permute(permute(ix) + iy);
    vec4 gx = fract(h * (1.0 / 41.0)) * 2.0 - 1.0;
    vec4 gy = abs(gx) - 0.5;
    gx = gx - floor(gx + 0.5);
    vec4 n = inverseLength(gx * gx + gy * gy);
    gx = gx * n;
    gy = gy * n;

    vec4 corner = gx * fx + gy * fy;
    vec2 t = fade(Pf.xy);
    vec2 alongX = blend(corner.xz, corner.yw, t.x);
    return 2.3 * blend(alongX.x, alongX.y, t.y);
}

#include "include/readback.glsl"

void main()
{
    vec2 uv = gl_TexCoord[0].xy;
    vec2 P = vec2(uv.x * scale.x + off.x, uv.y * scale.y + off.y);
    float value = min(classicNoise(P) * 0.5 + 0.5, 1.0);
    gl_FragColor = gray == 1 ? encodeValue(value) : texture1D(tex, value);
}
