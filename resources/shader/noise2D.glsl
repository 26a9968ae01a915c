#version 120
// Simplex noise in two dimensions, computed without a permutation texture: the three corners of
// the skewed triangle around the point hash through a polynomial permutation modulo 289, the hash
// picks a gradient, and each corner contributes with a radial falloff.

uniform sampler1D tex;
uniform int gray = 0;
uniform vec4 off = vec4(0.0);
uniform vec4 scale = vec4(1.0);

#include "include/noiseblocks.glsl"

float simplexNoise(vec2 v)
{
    const float skew = 0.366025403784439;   // (sqrt(3) - 1) / 2
    const float unskew = 0.211324865405187; // (3 - sqrt(3)) / 6
    vec2 i = floor(v + (v.x + v.y) * skew);
    vec2 x0 = v - i + (i.x + i.y) * unskew;
    // The middle corner: along x first when the point lies below the diagonal.
    vec2 i1 = x0.x > x0.y ? vec2(1.0, 0.0) : vec2(0.0, 1.0);
    vec2 x1 = x0 + unskew - i1;
    vec2 x2 = x0 + (2.0 * unskew - 1.0);

    i = mod289(i);
    vec3 p = permute(permute(i.y + vec3(0.0, i1.y, 1.0)) + i.x + vec3(0.0, i1.x, 1.0));

    vec3 m = max(0.5 - vec3(dot(x0, x0), dot(x1, x1), dot(x2, x2)), 0.0);
    m = m * m;
    m = m * m;

    // Gradients on a 41-point circle-ish set, normalised by a first-order approximation.
    vec3 x = 2.0 * fract(p * (1.0 / 41.0)) - 1.0;
    vec3 h = abs(x) - 0.5;
    vec3 a0 = x - floor(x + 0.5);
    m = m * (1.79284291400159 - 0.85373472095314 * (a0 * a0 + h * h));

    vec3 g = vec3(a0.x * x0.x + h.x * x0.y, a0.y * x1.x + h.y * x1.y, a0.z * x2.x + h.z * x2.y);
    return 130.0 * dot(m, g);
}

#include "include/readback.glsl"

void main()
{
    vec2 uv = gl_TexCoord[0].xy;
    vec2 P = vec2(uv.x * scale.x + off.x, uv.y * scale.y + off.y);
    float value = min(simplexNoise(P) * 0.5 + 0.5, 1.0);
    gl_FragColor = gray == 1 ? encodeValue(value) : texture1D(tex, value);
}
