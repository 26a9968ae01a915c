#version 120
// Simplex noise in three dimensions, computed without a permutation texture: the four corners of
// the skewed tetrahedron around the point hash through a polynomial permutation modulo 289, the
// hash picks one of 49 gradients on an octahedron, and each corner contributes with a radial
// falloff.

uniform sampler1D tex;
uniform int gray = 0;
uniform vec4 off = vec4(0.0);
uniform vec4 scale = vec4(1.0);

#include "include/noiseblocks.glsl"

float simplexNoise(vec3 v)
{
    const float skew = 1.0 / 3.0;
    const float unskew = 1.0 / 6.0;
    vec3 i = floor(v + (v.x + v.y + v.z) * skew);
    vec3 x0 = v - i + (i.x + i.y + i.z) * unskew;

    // The two middle corners from the order of x0's components.
    vec3 g = step(x0.yzx, x0.xyz);
    vec3 l = 1.0 - g;
    vec3 i1 = min(g, l.zxy);
    vec3 i2 = max(g, l.zxy);
    vec3 x1 = x0 - i1 + unskew;
    vec3 x2 = x0 - i2 + skew;
    vec3 x3 = x0 - 0.5;

    i = mod289(i);
    vec4 p = permute(permute(permute(i.z + vec4(0.0, i1.z, i2.z, 1.0))
                             + i.y + vec4(0.0, i1.y, i2.y, 1.0))
                     + i.x + vec4(0.0, i1.x, i2.x, 1.0));

    // Gradients: 7 x 7 points on a square, folded onto an octahedron.
    const float k = 0.142857142857; // 1/7
    const float step2 = 2.0 * k;
    const float start = 0.5 * k - 1.0;
    vec4 j = p - 49.0 * floor(p * (1.0 / 49.0));
    vec4 cx = floor(j * k);
    vec4 cy = floor(j - 7.0 * cx);
    vec4 gx = cx * step2 + start;
    vec4 gy = cy * step2 + start;
    vec4 gz = 1.0 - abs(gx) - abs(gy);
    // Points outside the octahedron's upper half are folded down onto its lower half.
    vec4 fold = -step(gz, vec4(0.0));
    gx = gx + (floor(gx) * 2.0 + 1.0) * fold;
    gy = gy + (floor(gy) * 2.0 + 1.0) * fold;
    vec4 n = inverseLength(gx * gx + gy * gy + gz * gz);
    gx = gx * n;
    gy = gy * n;
    gz = gz * n;

    vec4 m = max(0.5 - vec4(dot(x0, x0), dot(x1, x1), dot(x2, x2), dot(x3, x3)), 0.0);
    m = m * m;
    vec4 d = vec4(gx.x * x0.x + gy.x * x0.y + gz.x * x0.z,
                  gx.y * x1.x + gy.y * x1.y + gz.y * x1.z,
                  gx.z * x2.x + gy.z * x2.y + gz.z * x2.z,
                  gx.w * x3.x + gy.w * x3.y + gz.w * x3.z);
    return 105.0 * dot(m * m, d);
}

#include "include/readback.glsl"

void main()
{
    vec2 uv = gl_TexCoord[0].xy;
    vec3 P = vec3(uv.x * scale.x + off.x, uv.y * scale.y + off.y, off.z);
    float value = min(simplexNoise(P) * 0.5 + 0.5, 1.0);
    gl_FragColor = gray == 1 ? encodeValue(value) : texture1D(tex, value);
}
