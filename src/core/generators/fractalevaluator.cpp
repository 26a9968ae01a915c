#include "generators/fractalevaluator.h"

#include <QColor>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
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

// The escape-time loop across the lanes of a vector, each lane its own pixel: a lane whose orbit
// ends takes the next pixel at the following check, so the lanes stay busy however different the
// pixels' counts are. Every lane computes exactly the scalar loop's operations in the same order,
// so the counts and the escape points are the scalar loop's bit for bit. On top, a lane whose
// orbit returns exactly onto a point it saved earlier (Brent's doubling intervals) is periodic:
// it never escapes, which is the value 0 the full loop would give after all its iterations.
template <class T, int N> struct Kernel
{
    using Int = std::conditional_t<sizeof(T) == 4, int32_t, int64_t>;
    typedef T V __attribute__((vector_size(N * sizeof(T))));
    typedef Int I __attribute__((vector_size(N * sizeof(T))));

    // Steps between two checks of the lanes.
    static constexpr int steps = 16;

    __attribute__((always_inline)) static inline void run(const View<T> &view, const GeneratorGrid &grid,
                                                          float *out, Feed &feed)
    {
        V zx{}, zy{}, x2{}, y2{}, cx{}, cy{}, sx{}, sy{}, ex{}, ey{};
        I count{}, active{}, escaped{}, nextSave{}, interval{};
        int64_t pixel[N];
        int64_t next = 0, end = 0; // the pixels of the current band still to start
        bool more = true;
        const T never = std::numeric_limits<T>::quiet_NaN();
        for (int l = 0; l < N; ++l)
            pixel[l] = -1;

        for (;;) {
            // Lanes at the iteration limit are done (never escaped, value 0).
            active &= count < Int(view.iterations);
            bool any = false, idle = false;
            for (int l = 0; l < N; ++l) {
                any |= active[l] != 0;
                idle |= active[l] == 0;
            }
            if (idle) {
                for (int l = 0; l < N; ++l) {
                    if (active[l])
                        continue;
                    if (pixel[l] >= 0) {
                        out[pixel[l]] = escaped[l] ? view.value(int(count[l]), ex[l], ey[l], cx[l], cy[l]) : 0.0f;
                        pixel[l] = -1;
                    }
                    if (next == end && more) {
                        int first, last;
                        more = feed.next(first, last);
                        if (more) {
                            next = int64_t(first) * grid.width;
                            end = int64_t(last) * grid.width;
                        }
                    }
                    if (next == end)
                        continue;
                    const int64_t p = next++;
                    float u, v;
                    grid.texCoord(int(p % grid.width), int(p / grid.width), u, v);
                    T zx0, zy0, cx0, cy0;
                    view.start(u, v, zx0, zy0, cx0, cy0);
                    pixel[l] = p;
                    zx[l] = zx0;
                    zy[l] = zy0;
                    cx[l] = cx0;
                    cy[l] = cy0;
                    x2[l] = zx0 * zx0;
                    y2[l] = zy0 * zy0;
                    sx[l] = never;
                    sy[l] = never;
                    count[l] = 0;
                    active[l] = -1;
                    escaped[l] = 0;
                    nextSave[l] = 0;
                    interval[l] = steps;
                    any = true;
                }
                if (!any)
                    return;
            }

            // Save the orbit points due, doubling the interval to the next save each time.
            const I save = active & (count >= nextSave);
            sx = save ? zx : sx;
            sy = save ? zy : sy;
            nextSave = save ? count + interval : nextSave;
            interval = save ? interval + interval : interval;

            // No lane may pass its iteration limit within the run.
            Int run = steps;
            for (int l = 0; l < N; ++l)
                if (active[l])
                    run = std::min(run, Int(view.iterations) - count[l]);

            if (view.smooth) {
                for (Int k = 0; k < run; ++k)
                    step<true>(zx, zy, x2, y2, cx, cy, sx, sy, ex, ey, count, active, escaped);
            } else {
                for (Int k = 0; k < run; ++k)
                    step<false>(zx, zy, x2, y2, cx, cy, sx, sy, ex, ey, count, active, escaped);
            }
        }
    }

    template <bool keepEscape>
    __attribute__((always_inline)) static inline void step(V &zx, V &zy, V &x2, V &y2, const V &cx, const V &cy,
                                                           const V &sx, const V &sy, V &ex, V &ey, I &count,
                                                           I &active, I &escaped)
    {
        // x = zx^2 - zy^2 + cx, y = 2 zx zy + cy, as the scalar loop; zx^2 and zy^2 are the
        // previous step's x^2 and y^2.
        const V nx = x2 - y2 + cx;
        const V ny = T(2) * zx * zy + cy;
        x2 = nx * nx;
        y2 = ny * ny;
        const I out = x2 + y2 > T(4);
        const I leaving = active & out;
        escaped |= leaving;
        if (keepEscape) {
            ex = leaving ? nx : ex;
            ey = leaving ? ny : ey;
        }
        const I going = active & ~out;
        count -= going;
        active = going & ~((nx == sx) & (ny == sy));
        zx = nx;
        zy = ny;
    }
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

using KernelRun = void (*)(const View<float> &, const View<double> &, bool, const GeneratorGrid &, float *,
                           Feed &);

// Two vectors' worth of lanes a kernel: the loop's chain of dependent operations is long, and two
// independent halves keep the vector units busy while one waits.
void runPlain(const View<float> &f, const View<double> &d, bool useDouble, const GeneratorGrid &grid,
              float *out, Feed &feed)
{
    if (useDouble)
        Kernel<double, 4>::run(d, grid, out, feed);
    else
        Kernel<float, 8>::run(f, grid, out, feed);
}

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
__attribute__((target("avx2"))) void runAvx2(const View<float> &f, const View<double> &d, bool useDouble,
                                             const GeneratorGrid &grid, float *out, Feed &feed)
{
    if (useDouble)
        Kernel<double, 8>::run(d, grid, out, feed);
    else
        Kernel<float, 16>::run(f, grid, out, feed);
}

__attribute__((target("avx512f"))) void runAvx512(const View<float> &f, const View<double> &d, bool useDouble,
                                                  const GeneratorGrid &grid, float *out, Feed &feed)
{
    if (useDouble)
        Kernel<double, 16>::run(d, grid, out, feed);
    else
        Kernel<float, 32>::run(f, grid, out, feed);
}
#endif

KernelRun kernelRun()
{
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
    switch (simd()) {
    case Simd::Avx512:
        return runAvx512;
    case Simd::Avx2:
        return runAvx2;
    case Simd::None:
        break;
    }
#endif
    return runPlain;
}

bool escapeValues(const GeneratorSettings &settings, const GeneratorGrid &grid, std::vector<float> &out,
                  const FractalEvaluator::Progress &progress)
{
    const bool julia = isJuliaFamily(settings.name);
    const View<float> single(settings, julia);
    const View<double> precise(settings, julia);
    const bool useDouble = settings.precision == GeneratorSettings::Double;
    const KernelRun run = kernelRun();
    return onEveryCore(grid.height, progress,
                       [&](Feed &feed) { run(single, precise, useDouble, grid, out.data(), feed); });
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
