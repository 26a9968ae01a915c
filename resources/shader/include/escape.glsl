// The escape-time loop shared by the Mandelbrot and Julia shaders, placed in their main() once z
// (the orbit's start) and c are set; it leaves the value in `value`. The includer defines REAL and
// REAL2 (float and vec2, or double and dvec2), PRECISE (empty, or "precise" where the double
// orbit must not be fused into multiply-adds) and SMOOTHING (the uniform that switches the
// fractional count on).
    // The squares of one step are the next step's: computed once, they are also never fused
    // into a multiply-add, which would round differently from the processor's evaluation.
    PRECISE REAL x = 0.0;
    PRECISE REAL y = 0.0;
    PRECISE REAL x2 = z.x * z.x;
    PRECISE REAL y2 = z.y * z.y;
    // The first steps, where most orbits end, as written. The orbits still going after them are
    // checked for a cycle as well: one that comes back exactly onto a point it passed repeats for
    // ever and never escapes, so it stops there with the value the full count would give.
    int first = iter < 1024 ? iter : 1024;
    int i;
    for (i = 0; i < first; i++) {
        x = x2 - y2 + c.x;
        y = 2.0 * z.x * z.y + c.y;
        x2 = x * x;
        y2 = y * y;
        if (x2 + y2 > 4.0)
            break;
        z = REAL2(x, y);
    }
    if (i == first) {
        REAL2 saved = z;
        int save = first + first;
        for (; i < iter; i++) {
            x = x2 - y2 + c.x;
            y = 2.0 * z.x * z.y + c.y;
            x2 = x * x;
            y2 = y * y;
            if (x2 + y2 > 4.0)
                break;
            z = REAL2(x, y);
            if (z == saved) {
                i = iter;
                break;
            }
            if (i == save) {
                saved = z;
                save += save;
            }
        }
    }

    // A point that never escapes is 0, the palette's first colour.
    float value = 0.0;
    if (i < iter) {
        if (SMOOTHING != 0) {
            // Carried on to |z|^2 > 65536 first: at radius 2 the fractional count jumps by up to
            // a band at the band edges.
            for (int k = 0; k < 8 && x2 + y2 <= 65536.0; k++) {
                PRECISE REAL nx = x2 - y2 + c.x;
                y = 2.0 * x * y + c.y;
                x = nx;
                x2 = x * x;
                y2 = y * y;
                i++;
            }
            value = mod((float(i) + 1.0 - log2(log(float(sqrt(x2 + y2))))) / norm, 1.0);
        } else {
            value = mod(float(i) / norm, 1.0);
        }
    }
