#include "generators/fractalevaluator.h"

#include <QColor>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <thread>

// This file is built with -ffp-contract=off: the shaders' formulas are evaluated operation by
// operation, never fused, so that every path here gives the same bits.

namespace {

bool isJuliaFamily(const QString &name)
{
    return name == QLatin1String("julia") || name == QLatin1String("ifs") || name == QLatin1String("plasma");
}

// The view of one escape-time render in the arithmetic T of its orbits. The value's own
// arithmetic (count / norm, the palette cycle) is float in both, as in the shaders.
// The most steps the smooth count carries an orbit on after its escape.
constexpr int smoothSteps = 8;

template <class T> struct View
{
    T offX, offY, zoom, cr, ci;
    int iterations;
    float norm;
    bool smooth;
    bool julia;

    View(const GeneratorSettings &s, bool juliaFormula)
        : offX(T(s.xoff)), offY(T(s.yoff)), zoom(T(s.zoom)), cr(T(s.cr)), ci(T(s.ci)),
          iterations(s.iterations), norm(float(s.norm)), smooth(s.smooth), julia(juliaFormula)
    {
    }

    // The orbit's start z and constant c of texture coordinate (u, v).
    void start(float u, float v, T &zx, T &zy, T &cx, T &cy) const
    {
        const T tu = T(u), tv = T(v);
        if (julia) {
            zx = T(3) * (tu - T(0.5)) / zoom - offX;
            zy = T(2) * (tv - T(0.5)) / zoom - offY;
            cx = cr;
            cy = ci;
        } else {
            cx = T(-0.5) + (tu - T(0.5)) * T(3) / zoom - offX;
            cy = (tv - T(0.5)) * T(3) / zoom - offY;
            zx = cx;
            zy = cy;
        }
    }

    // The value of an orbit that stopped after i steps; (x, y) is the first point with
    // |z|^2 > 4 when i < iterations. The fractional count needs |z| far beyond the escape radius
    // to run on continuously across the bands (at radius 2 it jumps by up to a band), so the
    // orbit is carried on to |z|^2 > 65536, a few steps at most.
    float value(int i, T x, T y, T cx, T cy) const
    {
        if (i >= iterations)
            return 0.0f;
        float t;
        if (smooth) {
            for (int k = 0; k < smoothSteps && x * x + y * y <= T(65536); ++k) {
                const T nx = x * x - y * y + cx;
                y = T(2) * x * y + cy;
                x = nx;
                ++i;
            }
            t = (float(i) + 1.0f - std::log2(std::log(float(std::sqrt(x * x + y * y))))) / norm;
        } else {
            t = float(i) / norm;
        }
        const float value = t - std::floor(t);
        return std::isfinite(value) ? value : 0.0f;
    }

    // The plain escape-time loop, one pixel.
    float at(float u, float v) const
    {
        T zx, zy, cx, cy;
        start(u, v, zx, zy, cx, cy);
        T x = 0, y = 0;
        int i = 0;
        for (; i < iterations; ++i) {
            x = zx * zx - zy * zy + cx;
            y = T(2) * zx * zy + cy;
            if (x * x + y * y > T(4))
                break;
            zx = x;
            zy = y;
        }
        return value(i, x, y, cx, cy);
    }
};

// Runs rows(first, last) over every core, in bands taken from a shared counter so that the slow
// rows (deep inside a set) do not leave a core idle. The calling thread reports progress and
// stops the others when progress says so. False when cancelled.
template <class Rows>
bool forRows(int height, const FractalEvaluator::Progress &progress, const Rows &rows)
{
    constexpr int band = 4;
    const int bands = (height + band - 1) / band;
    std::atomic<int> next{0};
    std::atomic<int> done{0};
    std::atomic<bool> cancelled{false};
    int lastPercent = -1;
    auto work = [&](bool reporting) {
        for (;;) {
            if (cancelled.load(std::memory_order_relaxed))
                return;
            const int b = next.fetch_add(1);
            if (b >= bands)
                return;
            rows(b * band, std::min(height, (b + 1) * band));
            const int finished = done.fetch_add(1) + 1;
            if (reporting && progress) {
                const int percent = int(int64_t(finished) * 100 / bands);
                if (percent != lastPercent) {
                    lastPercent = percent;
                    if (!progress(percent))
                        cancelled = true;
                }
            }
        }
    };
    const int helpers = std::max(1, int(std::thread::hardware_concurrency())) - 1;
    std::vector<std::thread> threads;
    threads.reserve(size_t(helpers));
    for (int t = 0; t < helpers && t + 1 < bands; ++t)
        threads.emplace_back(work, false);
    work(true);
    for (auto &t : threads)
        t.join();
    // The last bands may have been finished by the helpers.
    if (!cancelled && progress && lastPercent != 100 && !progress(100))
        cancelled = true;
    return !cancelled;
}

template <class T>
bool escapeValues(const GeneratorSettings &settings, const GeneratorGrid &grid, std::vector<float> &out,
                  const FractalEvaluator::Progress &progress)
{
    const View<T> view(settings, isJuliaFamily(settings.name));
    return forRows(grid.height, progress, [&](int first, int last) {
        for (int y = first; y < last; ++y)
            for (int x = 0; x < grid.width; ++x) {
                float u, v;
                grid.texCoord(x, y, u, v);
                out[size_t(y) * size_t(grid.width) + size_t(x)] = view.at(u, v);
            }
    });
}

// The gasket's colour of texture coordinate (u, v), as ARGB.
QRgb apollonianAt(float offX, float offY, float zoom, float u, float v)
{
    constexpr float pi = 3.14159265f;
    constexpr int maxSteps = 50;
    const float zx = (2.0f * u - 1.0f) / zoom - offX;
    const float zy = (2.0f * v - 1.0f) / zoom - offY;

    // The disk map with the mouse at rest: m = 0, z' = (z - m) / (conj(m) z - 1).
    const float mx = 0.0f, my = 0.0f;
    const float ax = zx - mx, ay = zy - my;
    const float bx = (mx * zx - (-my) * zy) - 1.0f;
    const float by = mx * zy + (-my) * zx;
    const float d = bx * bx + by * by;
    float px = (ax * bx + ay * by) / d;
    float py = (ay * bx - ax * by) / d;

    struct Circle
    {
        float x, y, r;
    };
    static constexpr Circle circles[3] = {{0.0f, 0.2f, 0.2f}, {0.8f, 0.8f, 0.8f}, {-0.8f, 0.8f, 0.8f}};
    int n = 0;
    for (; n < maxSteps; ++n) {
        bool moved = false;
        for (const Circle &c : circles) {
            const float dx = px - c.x, dy = py - c.y;
            const float dd = dx * dx + dy * dy;
            if (std::sqrt(dd) < c.r) {
                px = dx * (c.r * c.r) / dd + c.x;
                py = dy * (c.r * c.r) / dd + c.y;
                moved = true;
                break;
            }
        }
        if (!moved) {
            if (py < 0.0f)
                py = -py;
            else
                break;
        }
    }
    if (n == maxSteps)
        return qRgba(0, 0, 0, 0);

    const float s = 0.08f * (4.0f - std::sqrt(px * px + py * py)) + float(n);
    const float arg = pi * s / 20.0f + 0.76f - 4.5f;
    const float phase[3] = {arg - 3.5f * pi, arg - pi, arg - 3.6f * pi};
    int channel[3];
    for (int k = 0; k < 3; ++k) {
        const float col = std::sin(phase[k]) * 0.4f + 0.5f;
        const float f = std::pow(col * col, 1.2f);
        // As an 8-bit framebuffer stores it.
        channel[k] = int(std::lround(std::clamp(f, 0.0f, 1.0f) * 255.0f));
    }
    return qRgba(channel[0], channel[1], channel[2], 255);
}

} // namespace

namespace FractalEvaluator {

bool values(const GeneratorSettings &settings, const GeneratorGrid &grid, std::vector<float> &out,
            const Progress &progress)
{
    out.clear();
    if (grid.width <= 0 || grid.height <= 0)
        return true;
    if (settings.name != QLatin1String("mandelbrot") && !isJuliaFamily(settings.name))
        return false;
    out.assign(size_t(grid.width) * size_t(grid.height), 0.0f);
    if (settings.precision == GeneratorSettings::Double)
        return escapeValues<double>(settings, grid, out, progress);
    return escapeValues<float>(settings, grid, out, progress);
}

QImage apollonian(const GeneratorSettings &settings, const GeneratorGrid &grid)
{
    if (grid.width <= 0 || grid.height <= 0)
        return QImage();
    QImage picture(grid.width, grid.height, QImage::Format_ARGB32);
    if (picture.isNull())
        return picture;
    const float offX = float(settings.xoff), offY = float(settings.yoff), zoom = float(settings.zoom);
    forRows(grid.height, {}, [&](int first, int last) {
        for (int y = first; y < last; ++y) {
            auto *row = reinterpret_cast<QRgb *>(picture.scanLine(y));
            for (int x = 0; x < grid.width; ++x) {
                float u, v;
                grid.texCoord(x, y, u, v);
                row[x] = apollonianAt(offX, offY, zoom, u, v);
            }
        }
    });
    return picture;
}

float mandelbrotAt(const GeneratorSettings &settings, float u, float v)
{
    if (settings.precision == GeneratorSettings::Double)
        return View<double>(settings, false).at(u, v);
    return View<float>(settings, false).at(u, v);
}

float juliaAt(const GeneratorSettings &settings, float u, float v)
{
    if (settings.precision == GeneratorSettings::Double)
        return View<double>(settings, true).at(u, v);
    return View<float>(settings, true).at(u, v);
}

} // namespace FractalEvaluator
