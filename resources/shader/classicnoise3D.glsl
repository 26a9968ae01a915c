#version 120
// Classic (gradient) noise in three dimensions, computed without a permutation texture: the eight
// lattice corners hash through a polynomial permutation modulo 289, and the hash picks one of the
// gradients on an octahedron, which is then normalised.

uniform sampler1D tex;
uniform int gray = 0;
uniform vec4 off = vec4(0.0);
uniform vec4 scale = vec4(1.0);

#include "include/noiseblocks.glsl"

// The gradients of the four corners of one z layer, normalised; their dot products with the
// corner offsets (fx, fy, fz).
vec4 layer(vec4 h, vec4 fx, vec4 fy, float fz)
{
    vec4 gx = h * (1.0 / 7.0);
    vec4 gy = fract(floor(gx) * (1.0 / 7.0)) - 0.5;
    gx = fract(gx);
    vec4 gz = vec4(0.5) - abs(gx) - abs(gy);
    vec4 below = step(gz, vec4(0.0));
    gx = gx - below * (step(0.0, gx) - 0.5);
    gy = gy - below * (step(0.0, gy) - 0.5);
    vec4 n = inverseLength(gx * gx + gy * gy + gz * gz);
    return gx * n * fx + gy * n * fy + gz * n * fz;
}

float classicNoise(vec3 P)
{
    vec3 Pi0 = floor(P);
    vec3 Pi1 = Pi0 + 1.0;
    Pi0 = mod289(Pi0);
    Pi1 = mod289(Pi1);
    vec3 Pf0 = fract(P);
    vec3 Pf1 = Pf0 - 1.0;
    // Corners of a layer in the order (x0, y0), (x1, y0), (x0, y1), (x1, y1).
    vec4 ix = vec4(Pi0.x, Pi1.x, Pi0.x, Pi1.x);
    vec4 iy = vec4(Pi0.y, Pi0.y, Pi1.y, Pi1.y);
    vec4 fx = vec4(Pf0.x, Pf1.x, Pf0.x, Pf1.x);
    vec4 fy = vec4(Pf0.y, Pf0.y, Pf1.y, Pf1.y);

    vec4 hxy = permute(permute(ix) + iy);
    vec4 n0 = layer(permute(hxy + Pi0.z), fx, fy, Pf0.z);
    vec4 n1 = layer(permute(hxy + Pi1.z), fx, fy, Pf1.z);

    vec3 t = fade(Pf0);
    vec4 alongZ = blend(n0, n1, t.z);
    vec2 alongY = blend(alongZ.xy, alongZ.zw, t.y);
    return 2.2 * blend(alongY.x, alongY.y, t.x);
}

#include "include/readback.glsl"

void main()
{
    vec2 uv = gl_TexCoord[0].xy;
    vec3 P = vec3(uv.x * scale.x + off.x, uv.y * scale.y + off.y, off.z);
    float value = min(classicNoise(P) * 0.5 + 0.5, 1.0);
    gl_FragColor = gray == 1 ? encodeValue(value) : texture1D(tex, value);
}
