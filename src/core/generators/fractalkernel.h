// The escape-time kernel of the fractal evaluator. No include guard: fractalevaluator.cpp includes
// it once for every instruction set, each time inside its own namespace under its own
// "#pragma GCC target", so that the vector operations are compiled for that set (an inline
// function of the plain target would be lowered to the plain target's vectors before it is
// inlined). It uses the evaluator's View, Starts, PixelStream and Feed.

// The escape-time loop across vector lanes, each lane its own pixel: a lane whose orbit ends
// takes the next pixel at the following check, so the lanes stay busy however different the
// pixels' counts are. Every lane computes exactly the scalar loop's operations in the same order,
// so the counts and the escape points are the scalar loop's bit for bit. On top, a lane whose
// orbit returns exactly onto a point it saved earlier (Brent's doubling intervals) is periodic:
// it never escapes, which is the value 0 the full loop would give after all its iterations.
template <class T, int W, int G> struct Kernel
{
    using Int = std::conditional_t<sizeof(T) == 4, int32_t, int64_t>;
    // Vectors of the processor's own width (wider ones GCC splits badly): G of them side by side,
    // whose chains of dependent operations interleave.
    typedef T V __attribute__((vector_size(W * sizeof(T))));
    typedef Int I __attribute__((vector_size(W * sizeof(T))));
    static constexpr int N = W * G;

    // The lanes between two runs of steps, where plain loops over them check and refill them.
    struct alignas(64) Lanes
    {
        T zx[N], zy[N], x2[N], y2[N], cx[N], cy[N], sx[N], sy[N], ex[N], ey[N];
        Int count[N], active[N], escaped[N], nextSave[N], interval[N];
        int64_t pixel[N];
    };

    template <class E, class Vec>
    static inline void load(Vec (&v)[G], const E (&a)[N])
    {
        std::memcpy(&v[0], &a[0], sizeof v);
    }
    template <class E, class Vec>
    static inline void store(E (&a)[N], const Vec (&v)[G])
    {
        std::memcpy(&a[0], &v[0], sizeof v);
    }

    static inline void run(const View<T> &view, const Starts<T> &starts,
                                                          const GeneratorGrid &grid, float *out, Feed &feed)
    {
        constexpr int fewest = 4, most = 32;
        const T never = std::numeric_limits<T>::quiet_NaN();
        const Int iterations = Int(view.iterations);
        PixelStream pixels(feed, grid.width);
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
                        out[L.pixel[l]] = L.escaped[l] ? view.value(int(L.count[l]), L.ex[l], L.ey[l], L.cx[l], L.cy[l])
                                                       : 0.0f;
                        L.pixel[l] = -1;
                    }
                    int x, y;
                    if (!pixels.next(x, y))
                        continue;
                    ++refilled;
                    L.pixel[l] = int64_t(y) * grid.width + x;
                    view.start(starts.columns[size_t(x)], starts.rows[size_t(y)], L.zx[l], L.zy[l], L.cx[l], L.cy[l]);
                    L.x2[l] = L.zx[l] * L.zx[l];
                    L.y2[l] = L.zy[l] * L.zy[l];
                    L.sx[l] = never;
                    L.sy[l] = never;
                    L.count[l] = 0;
                    L.active[l] = -1;
                    L.escaped[l] = 0;
                    L.nextSave[l] = 0;
                    L.interval[l] = most;
                }
            }
            // Short orbits leave lanes idle until the next check: check more often while lanes
            // keep ending, less often while they run on.
            steps = refilled * 4 > N ? std::max(fewest, steps / 2) : std::min(most, steps * 2);

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

            V zx[G], zy[G], x2[G], y2[G], cx[G], cy[G], sx[G], sy[G], ex[G], ey[G];
            I count[G], active[G], escaped[G];
            load(zx, L.zx);
            load(zy, L.zy);
            load(x2, L.x2);
            load(y2, L.y2);
            load(cx, L.cx);
            load(cy, L.cy);
            load(sx, L.sx);
            load(sy, L.sy);
            load(count, L.count);
            load(active, L.active);
            load(escaped, L.escaped);
            if (view.smooth) {
                load(ex, L.ex);
                load(ey, L.ey);
                for (Int k = 0; k < run; ++k)
                    for (int g = 0; g < G; ++g)
                        step<true>(zx[g], zy[g], x2[g], y2[g], cx[g], cy[g], sx[g], sy[g], ex[g], ey[g], count[g],
                                   active[g], escaped[g]);
                store(L.ex, ex);
                store(L.ey, ey);
            } else {
                for (Int k = 0; k < run; ++k)
                    for (int g = 0; g < G; ++g)
                        step<false>(zx[g], zy[g], x2[g], y2[g], cx[g], cy[g], sx[g], sy[g], ex[g], ey[g],
                                    count[g], active[g], escaped[g]);
            }
            store(L.zx, zx);
            store(L.zy, zy);
            store(L.x2, x2);
            store(L.y2, y2);
            store(L.count, count);
            store(L.active, active);
            store(L.escaped, escaped);
        }
    }

    template <bool keepEscape>
    static inline void step(V &zx, V &zy, V &x2, V &y2, const V &cx, const V &cy,
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

