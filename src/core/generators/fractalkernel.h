// The escape-time kernel of the fractal evaluator. No include guard: fractalevaluator.cpp includes
// it once for every instruction set, each time inside its own namespace under its own
// "#pragma GCC target", so that the vector operations are compiled for that set (an inline
// function of the plain target would be lowered to the plain target's vectors before it is
// inlined). It uses the evaluator's View, Starts, PixelStream and Feed.

// The escape-time loop across vector lanes, each lane its own pixel, in two runs. The first run
// starts a vector's worth of neighbouring pixels together for a few dozen steps, which ends most
// orbits of a picture at the cost of a few vector loads. The orbits still going wait for a lane of
// the long run, where a lane whose orbit ends takes the next waiting orbit at the following check,
// so the lanes stay busy however different the pixels' counts are. Every lane computes exactly
// the scalar loop's operations in the same order, so the counts and the escape points are the
// scalar loop's bit for bit. On top, in the long run a lane whose orbit returns exactly onto a
// point it saved earlier (Brent's doubling intervals) is periodic: it never escapes, which is the
// value 0 the full loop would give after all its iterations.
template <class T, int W, int G> struct Kernel
{
    using Int = std::conditional_t<sizeof(T) == 4, int32_t, int64_t>;
    // Vectors of the processor's own width (wider ones GCC splits badly): G of them side by side,
    // whose chains of dependent operations interleave.
    typedef T V __attribute__((vector_size(W * sizeof(T))));
    typedef Int I __attribute__((vector_size(W * sizeof(T))));
    static constexpr int N = W * G;
    static_assert(N <= Starts<T>::padding, "the first run reads a whole vector of columns");

    // Steps of the first run, and the shortest and longest runs between two checks of the lanes.
    static constexpr int firstSteps = 32, fewest = 4, most = 32;

    // The lanes between two runs of steps, where plain loops over them check and refill them.
    struct alignas(64) Lanes
    {
        T zx[N], zy[N], x2[N], y2[N], cx[N], cy[N], sx[N], sy[N], ex[N], ey[N];
        Int count[N], active[N], escaped[N], nextSave[N], interval[N];
        int64_t pixel[N];
    };

    // An orbit that outlived the first run.
    struct Waiting
    {
        int64_t pixel;
        T zx, zy, x2, y2, cx, cy;
        Int count;
    };

    // The lanes in registers during a run of steps.
    struct Regs
    {
        V zx[G], zy[G], x2[G], y2[G], cx[G], cy[G], sx[G], sy[G], ex[G], ey[G];
        I count[G], active[G], escaped[G];
    };

    template <class E, class Vec> static inline void load(Vec (&v)[G], const E (&a)[N])
    {
        std::memcpy(&v[0], &a[0], sizeof v);
    }
    template <class E, class Vec> static inline void store(E (&a)[N], const Vec (&v)[G])
    {
        std::memcpy(&a[0], &v[0], sizeof v);
    }

    static inline void load(Regs &r, const Lanes &L, bool smooth)
    {
        load(r.zx, L.zx);
        load(r.zy, L.zy);
        load(r.x2, L.x2);
        load(r.y2, L.y2);
        load(r.cx, L.cx);
        load(r.cy, L.cy);
        load(r.sx, L.sx);
        load(r.sy, L.sy);
        load(r.count, L.count);
        load(r.active, L.active);
        load(r.escaped, L.escaped);
        if (smooth) {
            load(r.ex, L.ex);
            load(r.ey, L.ey);
        }
    }
    static inline void store(Lanes &L, const Regs &r, bool smooth)
    {
        store(L.zx, r.zx);
        store(L.zy, r.zy);
        store(L.x2, r.x2);
        store(L.y2, r.y2);
        store(L.count, r.count);
        store(L.active, r.active);
        store(L.escaped, r.escaped);
        if (smooth) {
            store(L.ex, r.ex);
            store(L.ey, r.ey);
        }
    }

    static inline void steps(Regs &r, Int run, bool smooth)
    {
        if (smooth) {
            for (Int k = 0; k < run; ++k)
                for (int g = 0; g < G; ++g)
                    step<true>(r, g);
        } else {
            for (Int k = 0; k < run; ++k)
                for (int g = 0; g < G; ++g)
                    step<false>(r, g);
        }
    }

    template <bool keepEscape> static inline void step(Regs &r, int g)
    {
        // x = zx^2 - zy^2 + cx, y = 2 zx zy + cy, as the scalar loop; zx^2 and zy^2 are the
        // previous step's x^2 and y^2.
        const V nx = r.x2[g] - r.y2[g] + r.cx[g];
        const V ny = T(2) * r.zx[g] * r.zy[g] + r.cy[g];
        r.x2[g] = nx * nx;
        r.y2[g] = ny * ny;
        const I out = r.x2[g] + r.y2[g] > T(4);
        const I leaving = r.active[g] & out;
        r.escaped[g] |= leaving;
        if (keepEscape) {
            r.ex[g] = leaving ? nx : r.ex[g];
            r.ey[g] = leaving ? ny : r.ey[g];
        }
        const I going = r.active[g] & ~out;
        r.count[g] -= going;
        r.active[g] = going & ~((nx == r.sx[g]) & (ny == r.sy[g]));
        r.zx[g] = nx;
        r.zy[g] = ny;
    }

    // The first run of the pixels [x0, x0 + n) of row y (n <= N): the values of the orbits that
    // end are written, the others are appended to waiting.
    static inline void first(const View<T> &view, const Starts<T> &starts, int width, int y, int x0, int n,
                             float *out, std::vector<Waiting> &waiting)
    {
        const Int iterations = Int(view.iterations);
        const T never = std::numeric_limits<T>::quiet_NaN();
        Lanes L;
        // b - 0 broadcasts b exactly, the sign of a zero included.
        const T b = starts.rows[size_t(y)];
        std::memcpy(&L.zx[0], &starts.columns[size_t(x0)], sizeof L.zx);
        for (int l = 0; l < N; ++l) {
            L.zy[l] = b;
            view.start(L.zx[l], b, L.zx[l], L.zy[l], L.cx[l], L.cy[l]);
            L.x2[l] = L.zx[l] * L.zx[l];
            L.y2[l] = L.zy[l] * L.zy[l];
            L.sx[l] = never;
            L.sy[l] = never;
            L.ex[l] = 0;
            L.ey[l] = 0;
            L.count[l] = 0;
            L.active[l] = l < n ? -1 : 0;
            L.escaped[l] = 0;
        }
        Regs r;
        load(r, L, true);
        const Int run = std::min(Int(firstSteps), iterations);
        // Stop early once every orbit of the vector has ended.
        constexpr Int part = 8;
        for (Int k = 0; k < run; k += part) {
            steps(r, std::min(part, run - k), view.smooth);
            I going = r.active[0];
            for (int g = 1; g < G; ++g)
                going |= r.active[g];
            Int any = 0;
            for (int l = 0; l < W; ++l)
                any |= going[l];
            if (!any)
                break;
        }
        store(L, r, true);
        alignas(64) float plain[N];
        const bool vectorValues = std::is_same<T, float>::value && !view.smooth;
        if (vectorValues)
            plainValues(r, view.norm, plain);
        const int64_t base = int64_t(y) * width + x0;
        for (int l = 0; l < n; ++l) {
            if (L.active[l] && L.count[l] < iterations)
                waiting.push_back({base + l, L.zx[l], L.zy[l], L.x2[l], L.y2[l], L.cx[l], L.cy[l], L.count[l]});
            else if (!L.escaped[l])
                out[base + l] = 0.0f;
            else
                out[base + l] = vectorValues ? plain[l]
                                             : view.value(int(L.count[l]), L.ex[l], L.ey[l], L.cx[l], L.cy[l]);
        }
    }

    // View::value without smooth for every lane, the same operations on vectors: count / norm
    // less its floor (exact: truncation, one down for negatives, and the value itself from 2^23 on
    // where every float is whole), 0 where that is not finite.
    static inline void plainValues(const Regs &r, float norm, float (&values)[N])
    {
        if constexpr (std::is_same<T, float>::value) {
            for (int g = 0; g < G; ++g) {
                const V t = __builtin_convertvector(r.count[g], V) / norm;
                const I small = (t < T(0) ? -t : t) < T(8388608);
                V f = __builtin_convertvector(__builtin_convertvector(small ? t : V{}, I), V);
                f = f > t ? f - T(1) : f;
                // A whole t is its own floor, -0 included.
                f = small && f != t ? f : t;
                V v = t - f;
                v = v - v == V{} ? v : V{};
                std::memcpy(&values[g * W], &v, sizeof v);
            }
        } else {
            (void)r;
            (void)norm;
            (void)values;
        }
    }

    static inline void run(const View<T> &view, const Starts<T> &starts, const GeneratorGrid &grid, float *out,
                           Feed &feed)
    {
        const T never = std::numeric_limits<T>::quiet_NaN();
        const Int iterations = Int(view.iterations);
        PixelStream pixels(feed, grid.width);
        std::vector<Waiting> waiting;
        waiting.reserve(4 * N);
        Lanes L;
        std::memset(&L, 0, sizeof L);
        for (int l = 0; l < N; ++l)
            L.pixel[l] = -1;
        int steps = fewest;

        for (;;) {
            // Lanes at the iteration limit are done (never escaped, value 0).
            Int idle = 0;
            for (int l = 0; l < N; ++l) {
                L.active[l] &= -Int(L.count[l] < iterations);
                idle |= ~L.active[l];
            }
            int refilled = 0;
            if (idle) {
                for (int l = 0; l < N; ++l) {
                    if (L.active[l])
                        continue;
                    if (L.pixel[l] >= 0) {
                        out[L.pixel[l]] = L.escaped[l] ? view.value(int(L.count[l]), L.ex[l], L.ey[l], L.cx[l],
                                                                    L.cy[l])
                                                       : 0.0f;
                        L.pixel[l] = -1;
                    }
                    int y, x0, n;
                    while (waiting.empty() && pixels.next(N, y, x0, n))
                        first(view, starts, grid.width, y, x0, n, out, waiting);
                    if (waiting.empty())
                        continue;
                    const Waiting w = waiting.back();
                    waiting.pop_back();
                    ++refilled;
                    L.pixel[l] = w.pixel;
                    L.zx[l] = w.zx;
                    L.zy[l] = w.zy;
                    L.x2[l] = w.x2;
                    L.y2[l] = w.y2;
                    L.cx[l] = w.cx;
                    L.cy[l] = w.cy;
                    L.sx[l] = never;
                    L.sy[l] = never;
                    L.count[l] = w.count;
                    L.active[l] = -1;
                    L.escaped[l] = 0;
                    L.nextSave[l] = w.count;
                    L.interval[l] = most;
                }
            }
            // Lanes left idle until the next check are lost: check more often while lanes keep
            // ending, less often while they run on.
            steps = refilled * 4 > N ? std::max(int(fewest), steps / 2) : std::min(int(most), steps * 2);

            // Save the orbit points due, doubling the interval to the next save each time, and
            // keep every lane within its iteration limit.
            Int any = 0, run = steps;
            for (int l = 0; l < N; ++l) {
                const Int a = L.active[l];
                any |= a;
                const Int save = a & -Int(L.count[l] >= L.nextSave[l]);
                L.sx[l] = save ? L.zx[l] : L.sx[l];
                L.sy[l] = save ? L.zy[l] : L.sy[l];
                L.nextSave[l] = save ? L.count[l] + L.interval[l] : L.nextSave[l];
                L.interval[l] = save ? L.interval[l] * 2 : L.interval[l];
                run = std::min(run, a ? iterations - L.count[l] : run);
            }
            if (!any)
                return;

            Regs r;
            load(r, L, view.smooth);
            Kernel::steps(r, run, view.smooth);
            store(L, r, view.smooth);
        }
    }
};
