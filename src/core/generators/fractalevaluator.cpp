#include "generators/fractalevaluator.h"

#include <QColor>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>

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

    // The start of the orbit splits into a part of u alone and a part of v alone: z.x (Julia) or
    // c.x (Mandelbrot) from u, z.y or c.y from v. A picture's columns share the first, its rows
    // the second.
    T fromU(float u) const
    {
        return julia ? T(3) * (T(u) - T(0.5)) / zoom - offX : T(-0.5) + (T(u) - T(0.5)) * T(3) / zoom - offX;
    }
    T fromV(float v) const
    {
        return julia ? T(2) * (T(v) - T(0.5)) / zoom - offY : (T(v) - T(0.5)) * T(3) / zoom - offY;
    }

    // The orbit's start z and constant c from the parts of u and v.
    void start(T a, T b, T &zx, T &zy, T &cx, T &cy) const
    {
        zx = a;
        zy = b;
        cx = julia ? cr : a;
        cy = julia ? ci : b;
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
        start(fromU(u), fromV(v), zx, zy, cx, cy);
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

// Bands of rows handed out to the threads from a shared counter, so that the slow rows (deep
// inside a set) do not leave a core idle. The calling thread's feed reports progress and stops
// the others when progress says so.
struct Bands
{
    static constexpr int rows = 4;
    int height = 0;
    int count = 0;
    std::atomic<int> next{0};
    std::atomic<bool> cancelled{false};
    const FractalEvaluator::Progress *progress = nullptr;
    int lastPercent = -1; // the reporting thread's alone
};

class Feed
{
public:
    Feed(Bands &bands, bool reporting) : m_bands(bands), m_reporting(reporting && *bands.progress) {}

    // The next band's rows [first, last); false when none is left or the work was cancelled.
    bool next(int &first, int &last)
    {
        if (m_bands.cancelled.load(std::memory_order_relaxed))
            return false;
        const int b = m_bands.next.fetch_add(1);
        if (m_reporting) {
            // Bands handed out so far, the last of them not yet done.
            const int percent = int(int64_t(std::min(b, m_bands.count)) * 100 / m_bands.count);
            if (percent != m_bands.lastPercent) {
                m_bands.lastPercent = percent;
                if (!(*m_bands.progress)(percent)) {
                    m_bands.cancelled = true;
                    return false;
                }
            }
        }
        if (b >= m_bands.count)
            return false;
        first = b * Bands::rows;
        last = std::min(m_bands.height, first + Bands::rows);
        return true;
    }

private:
    Bands &m_bands;
    bool m_reporting;
};

// Runs work(feed) on every core, each with its own feed of bands. False when cancelled.
template <class Work>
bool onEveryCore(int height, const FractalEvaluator::Progress &progress, const Work &work)
{
    Bands bands;
    bands.height = height;
    bands.count = (height + Bands::rows - 1) / Bands::rows;
    bands.progress = &progress;
    const int helpers = std::max(1, int(std::thread::hardware_concurrency())) - 1;
    std::vector<std::thread> threads;
    threads.reserve(size_t(helpers));
    for (int t = 0; t < helpers && t + 1 < bands.count; ++t)
        threads.emplace_back([&] {
            Feed feed(bands, false);
            work(feed);
        });
    {
        Feed feed(bands, true);
        work(feed);
    }
    for (auto &t : threads)
        t.join();
    // The last bands may have been finished by the helpers.
    if (!bands.cancelled && progress && bands.lastPercent != 100 && !progress(100))
        bands.cancelled = true;
    return !bands.cancelled;
}

template <class Rows> bool forRows(int height, const FractalEvaluator::Progress &progress, const Rows &rows)
{
    return onEveryCore(height, progress, [&](Feed &feed) {
        int first, last;
        while (feed.next(first, last))
            rows(first, last);
    });
}

// The parts of the orbits' starts by column and by row (View::fromU, View::fromV); the columns
// run on by a vector's worth of lanes, so that a row's last vector reads no further.
template <class T> struct Starts
{
    static constexpr int padding = 64;
    std::vector<T> columns, rows;

    Starts(const View<T> &view, const GeneratorGrid &grid)
        : columns(size_t(grid.width) + padding), rows(size_t(grid.height))
    {
        float u, v;
        for (int x = 0; x < grid.width; ++x) {
            grid.texCoord(x, 0, u, v);
            columns[size_t(x)] = view.fromU(u);
        }
        for (int y = 0; y < grid.height; ++y) {
            grid.texCoord(0, y, u, v);
            rows[size_t(y)] = view.fromV(v);
        }
    }
};

// The pixels of one thread in order, band after band from its feed.
class PixelStream
{
public:
    PixelStream(Feed &feed, int width) : m_feed(feed), m_width(width), m_x(width) {}

    // The next at most count pixels [x0, x0 + n) of row y.
    bool next(int count, int &y, int &x0, int &n)
    {
        if (m_x == m_width) {
            if (!m_more)
                return false;
            if (++m_y >= m_last && !(m_more = m_feed.next(m_y, m_last)))
                return false;
            m_x = 0;
        }
        y = m_y;
        x0 = m_x;
        n = std::min(count, m_width - m_x);
        m_x += n;
        return true;
    }

private:
    Feed &m_feed;
    int m_width;
    int m_x; // m_x == m_width: the row is done
    int m_y = -1, m_last = 0;
    bool m_more = true;
};

// The widest vector kernels the processor runs, lowered by CHROMAXIS_SIMD ("avx2" or "none") so
// that the tests can check every kernel on a machine that has the widest.
enum class Simd
{
    None,
    Avx2,
    Avx512
};

Simd simd()
{
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
    static const Simd level = [] {
        const char *cap = std::getenv("CHROMAXIS_SIMD");
        const std::string limit = cap ? cap : "";
        if (limit == "none" || !__builtin_cpu_supports("avx2"))
            return Simd::None;
        if (limit == "avx2" || !__builtin_cpu_supports("avx512f"))
            return Simd::Avx2;
        return Simd::Avx512;
    }();
    return level;
#else
    return Simd::None;
#endif
}

struct Job
{
    View<float> single;
    View<double> precise;
    bool useDouble;
    const Starts<float> *singleStarts;
    const Starts<double> *preciseStarts;
    const GeneratorGrid &grid;
    float *out;
};

using KernelRun = void (*)(const Job &, Feed &);

namespace plain {
#include "generators/fractalkernel.h"

void run(const Job &job, Feed &feed)
{
    if (job.useDouble)
        Kernel<double, 2, 2>::run(job.precise, *job.preciseStarts, job.grid, job.out, feed);
    else
        Kernel<float, 4, 2>::run(job.single, *job.singleStarts, job.grid, job.out, feed);
}
} // namespace plain

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#pragma GCC push_options
#pragma GCC target("avx2")
namespace avx2 {
#include "generators/fractalkernel.h"

void run(const Job &job, Feed &feed)
{
    if (job.useDouble)
        Kernel<double, 4, 2>::run(job.precise, *job.preciseStarts, job.grid, job.out, feed);
    else
        Kernel<float, 8, 2>::run(job.single, *job.singleStarts, job.grid, job.out, feed);
}
} // namespace avx2
#pragma GCC pop_options

#pragma GCC push_options
#pragma GCC target("avx512f")
namespace avx512 {
#include "generators/fractalkernel.h"

void run(const Job &job, Feed &feed)
{
    if (job.useDouble)
        Kernel<double, 8, 2>::run(job.precise, *job.preciseStarts, job.grid, job.out, feed);
    else
        Kernel<float, 16, 2>::run(job.single, *job.singleStarts, job.grid, job.out, feed);
}
} // namespace avx512
#pragma GCC pop_options
#endif

KernelRun kernelRun()
{
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
    switch (simd()) {
    case Simd::Avx512:
        return avx512::run;
    case Simd::Avx2:
        return avx2::run;
    case Simd::None:
        break;
    }
#endif
    return plain::run;
}

bool escapeValues(const GeneratorSettings &settings, const GeneratorGrid &grid, std::vector<float> &out,
                  const FractalEvaluator::Progress &progress)
{
    const bool julia = isJuliaFamily(settings.name);
    const bool useDouble = settings.precision == GeneratorSettings::Double;
    Job job{View<float>(settings, julia), View<double>(settings, julia), useDouble, nullptr, nullptr, grid,
            out.data()};
    std::unique_ptr<Starts<float>> singleStarts;
    std::unique_ptr<Starts<double>> preciseStarts;
    if (useDouble)
        preciseStarts = std::make_unique<Starts<double>>(job.precise, grid);
    else
        singleStarts = std::make_unique<Starts<float>>(job.single, grid);
    job.singleStarts = singleStarts.get();
    job.preciseStarts = preciseStarts.get();
    const KernelRun run = kernelRun();
    return onEveryCore(grid.height, progress, [&](Feed &feed) { run(job, feed); });
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
    return escapeValues(settings, grid, out, progress);
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
