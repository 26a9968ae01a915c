#include "generators/patternevaluator.h"

#include "palette/describedexception.h"

#include <algorithm>
#include <cmath>
#include <thread>

// Every expression below is the shader's, operation for operation and in the same order, so that
// the processor rounds where the shader rounds: the read-back of both must agree to the last of
// its 16 bits. This file is compiled without contraction into fused multiply-adds, which the
// shaders' float arithmetic does not do either. Built-ins follow their GLSL definitions.
namespace {

inline float glFract(float x) { return x - std::floor(x); }
inline float glMin(float x, float y) { return y < x ? y : x; }
inline float glMax(float x, float y) { return x < y ? y : x; }
inline float glStep(float edge, float x) { return x < edge ? 0.0f : 1.0f; }
// mix() as the shaders write it out (their blend()), the form GL drivers compute.
inline float blend(float a, float b, float t) { return a + t * (b - a); }

inline float mod289(float x) { return x - std::floor(x * (1.0f / 289.0f)) * 289.0f; }
inline float mod7(float x) { return x - std::floor(x * (1.0f / 7.0f)) * 7.0f; }
inline float permute(float x) { return mod289((x * 34.0f + 10.0f) * x); }
inline float inverseLength(float r) { return 1.79284291400159f - 0.85373472095314f * r; }
inline float fade(float t) { return t * t * t * (t * (t * 6.0f - 15.0f) + 10.0f); }

// The cellular noise's jitter: a hash picks the feature point of its cell.
constexpr float K = 0.142857142857f;      // 1/7
constexpr float Ko = 0.428571428571f;     // 1/2 - K/2
constexpr float K2 = 0.020408163265306f;  // 1/49
constexpr float Kz = 0.166666666667f;     // 1/6
constexpr float Kzo = 0.416666666667f;    // 1/2 - Kz/2

// Squared distances fed in one by one keep the smallest (f1) and the second smallest (f2).
struct Nearest
{
    float f1 = 1.0e10f;
    float f2 = 1.0e10f;
    void add(float d)
    {
        f2 = glMin(f2, glMax(f1, d));
        f1 = glMin(f1, d);
    }
};

// The values of one classic-noise z layer: gradients from the hashes h of the four corners,
// normalised, dotted with the corner offsets.
void classicLayer(const float h[4], const float fx[4], const float fy[4], float fz, float out[4])
{
    for (int c = 0; c < 4; ++c) {
        float gx = h[c] * (1.0f / 7.0f);
        float gy = glFract(std::floor(gx) * (1.0f / 7.0f)) - 0.5f;
        gx = glFract(gx);
        const float gz = 0.5f - std::fabs(gx) - std::fabs(gy);
        const float below = glStep(gz, 0.0f);
        gx = gx - below * (glStep(0.0f, gx) - 0.5f);
        gy = gy - below * (glStep(0.0f, gy) - 0.5f);
        const float n = inverseLength(gx * gx + gy * gy + gz * gz);
        out[c] = gx * n * fx[c] + gy * n * fy[c] + gz * n * fz;
    }
}

// What a generator's uniforms hold, in the shader's float.
struct Uniforms
{
    enum Kind { Noise, Gradient, Moiree } kind = Noise;
    int method = 0;
    float offX = 0, offY = 0, offZ = 0;
    float scaleX = 1, scaleY = 1;
    float zoom = 1, norm = 60;
};

Uniforms uniformsOf(const GeneratorSettings &settings)
{
    Uniforms u;
    if (settings.name == QLatin1String("noise"))
        u.kind = Uniforms::Noise;
    else if (settings.name == QLatin1String("gradient"))
        u.kind = Uniforms::Gradient;
    else if (settings.name == QLatin1String("moiree"))
        u.kind = Uniforms::Moiree;
    else
        throw DescribedException(QStringLiteral("Unknown generator"),
                                 QStringLiteral("%1 is not a pattern generator.").arg(settings.name));
    // The dialogs offer only the listed methods and shapes; a number beyond them takes the
    // nearest, as the renderer does when it picks the shader.
    u.method = std::clamp(settings.method, 0, u.kind == Uniforms::Noise ? 5 : 2);
    u.offX = float(settings.xoff);
    u.offY = float(settings.yoff);
    u.offZ = float(settings.zoff);
    u.scaleX = float(settings.xadd);
    u.scaleY = float(settings.yadd);
    u.zoom = float(settings.zoom);
    u.norm = float(settings.norm);
    return u;
}

float noiseValue(const Uniforms &un, float u, float v)
{
    using namespace PatternEvaluator;
    const float x = u * un.scaleX + un.offX;
    const float y = v * un.scaleY + un.offY;
    float value = 0;
    switch (un.method) {
    case 0: value = cellular2D(x, y); break;
    case 1: value = cellular3D(x, y, un.offZ); break;
    case 2: value = classicNoise2D(x, y) * 0.5f + 0.5f; break;
    case 3: value = classicNoise3D(x, y, un.offZ) * 0.5f + 0.5f; break;
    case 4: value = simplexNoise2D(x, y) * 0.5f + 0.5f; break;
    default: value = simplexNoise3D(x, y, un.offZ) * 0.5f + 0.5f; break;
    }
    return glMin(value, 1.0f);
}

float gradientValue(const Uniforms &un, float u, float v)
{
    switch (un.method) {
    case 0: {
        const float zx = u / un.zoom - un.offX;
        const float zy = v / un.zoom - un.offY;
        const float dx = 0.5f - zx, dy = 0.5f - zy;
        return glMin(1.0f - std::sqrt(dx * dx + dy * dy), 1.0f);
    }
    case 1: {
        const float zx = u - un.offX, zy = v - un.offY;
        const float span = std::fabs(un.scaleX) + std::fabs(un.scaleY);
        const float along = zx * un.scaleX + zy * un.scaleY;
        return span > 0.0f ? glMin(along / span, 1.0f) : 0.0f;
    }
    default: {
        const float zx = u - un.offX, zy = v - un.offY;
        const float dx = std::fabs(zx - 0.5f) * un.scaleX;
        const float dy = std::fabs(zy - 0.5f) * un.scaleY;
        return glMin(1.0f - 2.0f * glMax(dx, dy), 1.0f);
    }
    }
}

float rings(const Uniforms &un, float zx, float zy, float cx, float cy)
{
    const float dx = zx - cx, dy = zy - cy;
    const float t = std::fabs(glFract(std::sqrt(dx * dx + dy * dy) * un.norm) * 2.0f - 1.0f);
    return t * t * (3.0f - 2.0f * t);
}

float moireeValue(const Uniforms &un, float u, float v)
{
    const float zx = (u - 0.5f) / un.zoom - un.offX;
    const float zy = (v - 0.5f) / un.zoom - un.offY;
    const float sx = un.scaleX * 0.05f, sy = un.scaleY * 0.05f;
    return glMin(rings(un, zx, zy, sx, sy) * rings(un, zx, zy, -sx, -sy), 1.0f);
}

float valueOf(const Uniforms &un, float u, float v)
{
    switch (un.kind) {
    case Uniforms::Noise: return noiseValue(un, u, v);
    case Uniforms::Gradient: return gradientValue(un, u, v);
    default: return moireeValue(un, u, v);
    }
}

} // namespace

namespace PatternEvaluator {

float cellular2D(float x, float y)
{
    const float Pix = mod289(std::floor(x)), Piy = mod289(std::floor(y));
    const float Pfx = glFract(x), Pfy = glFract(y);
    Nearest nearest;
    for (int a = 0; a < 3; ++a) {
        const float cx = float(a) - 1.0f;
        const float px = permute(Pix + cx);
        const float dx0 = Pfx - (cx + 0.5f);
        for (int b = 0; b < 3; ++b) {
            const float cy = float(b) - 1.0f;
            const float p = permute(px + Piy + cy);
            const float dx = dx0 + (glFract(p * K) - Ko);
            const float dy = Pfy - (cy + 0.5f) + (mod7(std::floor(p * K)) * K - Ko);
            nearest.add(dx * dx + dy * dy);
        }
    }
    return std::sqrt(nearest.f1);
}

float cellular3D(float x, float y, float z)
{
    const float Pix = mod289(std::floor(x)), Piy = mod289(std::floor(y)), Piz = mod289(std::floor(z));
    const float Pfx = glFract(x) - 0.5f, Pfy = glFract(y) - 0.5f, Pfz = glFract(z) - 0.5f;
    Nearest nearest;
    for (int a = 0; a < 3; ++a) {
        const float cx = float(a) - 1.0f;
        const float px = permute(Pix + cx);
        const float dx0 = Pfx - cx;
        for (int b = 0; b < 3; ++b) {
            const float cy = float(b) - 1.0f;
            const float py = permute(px + Piy + cy);
            const float dy0 = Pfy - cy;
            for (int c = 0; c < 3; ++c) {
                const float cz = float(c) - 1.0f;
                const float p = permute(py + Piz + cz);
                const float dx = dx0 + (glFract(p * K) - Ko);
                const float dy = dy0 + (mod7(std::floor(p * K)) * K - Ko);
                const float dz = Pfz - cz + (std::floor(p * K2) * Kz - Kzo);
                nearest.add(dx * dx + dy * dy + dz * dz);
            }
        }
    }
    return std::sqrt(nearest.f1);
}

float classicNoise2D(float x, float y)
{
    // Corners in the order (x0, y0), (x1, y0), (x0, y1), (x1, y1).
    const float fx0 = std::floor(x), fy0 = std::floor(y);
    const float ix0 = mod289(fx0 + 0.0f), iy0 = mod289(fy0 + 0.0f);
    const float ix1 = mod289(fx0 + 1.0f), iy1 = mod289(fy0 + 1.0f);
    const float Pfx = glFract(x) - 0.0f, Pfy = glFract(y) - 0.0f;
    const float Pfx1 = glFract(x) - 1.0f, Pfy1 = glFract(y) - 1.0f;
    const float ix[4] = {ix0, ix1, ix0, ix1};
    const float iy[4] = {iy0, iy0, iy1, iy1};
    const float fx[4] = {Pfx, Pfx1, Pfx, Pfx1};
    const float fy[4] = {Pfy, Pfy, Pfy1, Pfy1};
    float corner[4];
    for (int c = 0; c < 4; ++c) {
        const float h = permute(permute(ix[c]) + iy[c]);
        float gx = glFract(h * (1.0f / 41.0f)) * 2.0f - 1.0f;
        float gy = std::fabs(gx) - 0.5f;
        gx = gx - std::floor(gx + 0.5f);
        const float n = inverseLength(gx * gx + gy * gy);
        gx = gx * n;
        gy = gy * n;
        corner[c] = gx * fx[c] + gy * fy[c];
    }
    const float tx = fade(Pfx), ty = fade(Pfy);
    const float alongX0 = blend(corner[0], corner[1], tx);
    const float alongX1 = blend(corner[2], corner[3], tx);
    return 2.3f * blend(alongX0, alongX1, ty);
}

float classicNoise3D(float x, float y, float z)
{
    const float P[3] = {x, y, z};
    float Pi0[3], Pi1[3], Pf0[3], Pf1[3];
    for (int k = 0; k < 3; ++k) {
        const float f = std::floor(P[k]);
        Pi0[k] = mod289(f);
        Pi1[k] = mod289(f + 1.0f);
        Pf0[k] = glFract(P[k]);
        Pf1[k] = Pf0[k] - 1.0f;
    }
    const float ix[4] = {Pi0[0], Pi1[0], Pi0[0], Pi1[0]};
    const float iy[4] = {Pi0[1], Pi0[1], Pi1[1], Pi1[1]};
    const float fx[4] = {Pf0[0], Pf1[0], Pf0[0], Pf1[0]};
    const float fy[4] = {Pf0[1], Pf0[1], Pf1[1], Pf1[1]};
    float h0[4], h1[4];
    for (int c = 0; c < 4; ++c) {
        const float hxy = permute(permute(ix[c]) + iy[c]);
        h0[c] = permute(hxy + Pi0[2]);
        h1[c] = permute(hxy + Pi1[2]);
    }
    float n0[4], n1[4];
    classicLayer(h0, fx, fy, Pf0[2], n0);
    classicLayer(h1, fx, fy, Pf1[2], n1);

    const float tx = fade(Pf0[0]), ty = fade(Pf0[1]), tz = fade(Pf0[2]);
    float alongZ[4];
    for (int c = 0; c < 4; ++c)
        alongZ[c] = blend(n0[c], n1[c], tz);
    const float alongY0 = blend(alongZ[0], alongZ[2], ty);
    const float alongY1 = blend(alongZ[1], alongZ[3], ty);
    return 2.2f * blend(alongY0, alongY1, tx);
}

float simplexNoise2D(float x, float y)
{
    constexpr float skew = 0.366025403784439f;
    constexpr float unskew = 0.211324865405187f;
    const float s = (x + y) * skew;
    float ix = std::floor(x + s), iy = std::floor(y + s);
    const float t = (ix + iy) * unskew;
    const float x0 = x - ix + t, y0 = y - iy + t;
    const float i1x = x0 > y0 ? 1.0f : 0.0f, i1y = x0 > y0 ? 0.0f : 1.0f;
    const float x1 = x0 + unskew - i1x, y1 = y0 + unskew - i1y;
    constexpr float last = 2.0f * unskew - 1.0f;
    const float x2 = x0 + last, y2 = y0 + last;

    ix = mod289(ix);
    iy = mod289(iy);
    const float cx[3] = {0.0f, i1x, 1.0f};
    const float cy[3] = {0.0f, i1y, 1.0f};
    const float xs[3] = {x0, x1, x2};
    const float ys[3] = {y0, y1, y2};
    float sum = 0;
    for (int k = 0; k < 3; ++k) {
        const float p = permute(permute(iy + cy[k]) + ix + cx[k]);
        float m = glMax(0.5f - (xs[k] * xs[k] + ys[k] * ys[k]), 0.0f);
        m = m * m;
        m = m * m;
        const float gx = 2.0f * glFract(p * (1.0f / 41.0f)) - 1.0f;
        const float h = std::fabs(gx) - 0.5f;
        const float a0 = gx - std::floor(gx + 0.5f);
        m = m * (1.79284291400159f - 0.85373472095314f * (a0 * a0 + h * h));
        const float g = a0 * xs[k] + h * ys[k];
        sum = k == 0 ? m * g : sum + m * g;
    }
    return 130.0f * sum;
}

float simplexNoise3D(float x, float y, float z)
{
    constexpr float skew = 1.0f / 3.0f;
    constexpr float unskew = 1.0f / 6.0f;
    const float v[3] = {x, y, z};
    const float s = (x + y + z) * skew;
    float i[3] = {std::floor(x + s), std::floor(y + s), std::floor(z + s)};
    const float t = (i[0] + i[1] + i[2]) * unskew;
    float x0[3];
    for (int k = 0; k < 3; ++k)
        x0[k] = v[k] - i[k] + t;

    // g = step(x0.yzx, x0.xyz), l = 1 - g, i1 = min(g, l.zxy), i2 = max(g, l.zxy).
    float g[3], l[3], i1[3], i2[3];
    for (int k = 0; k < 3; ++k) {
        g[k] = glStep(x0[(k + 1) % 3], x0[k]);
        l[k] = 1.0f - g[k];
    }
    for (int k = 0; k < 3; ++k) {
        const float lz = l[(k + 2) % 3];
        i1[k] = glMin(g[k], lz);
        i2[k] = glMax(g[k], lz);
    }
    float corners[4][3];
    for (int k = 0; k < 3; ++k) {
        corners[0][k] = x0[k];
        corners[1][k] = x0[k] - i1[k] + unskew;
        corners[2][k] = x0[k] - i2[k] + skew;
        corners[3][k] = x0[k] - 0.5f;
    }
    for (int k = 0; k < 3; ++k)
        i[k] = mod289(i[k]);

    constexpr float step2 = 2.0f * K;
    constexpr float start = 0.5f * K - 1.0f;
    float sum = 0;
    for (int c = 0; c < 4; ++c) {
        const float ox = c == 0 ? 0.0f : c == 1 ? i1[0] : c == 2 ? i2[0] : 1.0f;
        const float oy = c == 0 ? 0.0f : c == 1 ? i1[1] : c == 2 ? i2[1] : 1.0f;
        const float oz = c == 0 ? 0.0f : c == 1 ? i1[2] : c == 2 ? i2[2] : 1.0f;
        const float p = permute(permute(permute(i[2] + oz) + i[1] + oy) + i[0] + ox);

        const float j = p - 49.0f * std::floor(p * (1.0f / 49.0f));
        const float cx = std::floor(j * K);
        const float cy = std::floor(j - 7.0f * cx);
        float gx = cx * step2 + start;
        float gy = cy * step2 + start;
        float gz = 1.0f - std::fabs(gx) - std::fabs(gy);
        const float fold = -glStep(gz, 0.0f);
        gx = gx + (std::floor(gx) * 2.0f + 1.0f) * fold;
        gy = gy + (std::floor(gy) * 2.0f + 1.0f) * fold;
        const float n = inverseLength(gx * gx + gy * gy + gz * gz);
        gx = gx * n;
        gy = gy * n;
        gz = gz * n;

        const float *xc = corners[c];
        float m = glMax(0.5f - (xc[0] * xc[0] + xc[1] * xc[1] + xc[2] * xc[2]), 0.0f);
        m = m * m;
        const float d = gx * xc[0] + gy * xc[1] + gz * xc[2];
        sum = c == 0 ? m * m * d : sum + m * m * d;
    }
    return 105.0f * sum;
}

float valueAt(const GeneratorSettings &settings, float u, float v)
{
    return valueOf(uniformsOf(settings), u, v);
}

void values(const GeneratorSettings &settings, const GeneratorGrid &grid, std::vector<float> &out)
{
    const Uniforms un = uniformsOf(settings);
    const int width = std::max(0, grid.width), height = std::max(0, grid.height);
    out.assign(size_t(width) * size_t(height), 0.0f);
    auto rows = [&](int first, int last) {
        for (int y = first; y < last; ++y) {
            float *row = out.data() + size_t(y) * size_t(width);
            for (int x = 0; x < width; ++x) {
                float u, v;
                grid.texCoord(x, y, u, v);
                row[x] = valueOf(un, u, v);
            }
        }
    };
    // Rows are independent; interleaved bands keep the cores equally busy where one part of the
    // picture is dearer than another.
    const int workers = std::max(1, std::min(int(std::thread::hardware_concurrency()), height / 16));
    if (workers <= 1) {
        rows(0, height);
        return;
    }
    constexpr int band = 8;
    auto worker = [&](int w) {
        for (int first = w * band; first < height; first += workers * band)
            rows(first, std::min(height, first + band));
    };
    std::vector<std::thread> threads;
    for (int w = 1; w < workers; ++w)
        threads.emplace_back(worker, w);
    worker(0);
    for (std::thread &t : threads)
        t.join();
}

} // namespace PatternEvaluator
