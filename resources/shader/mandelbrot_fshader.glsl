#version 120
// The Mandelbrot set by escape time. gray 0 shows the value through the palette texture; gray 1
// writes it encoded for read-back: value x 65536 split into red (set only for 1.0), green (high
// byte) and blue (low byte), each divided by 255 so that the framebuffer stores the byte itself.

uniform sampler1D tex;
uniform int gray = 0;
uniform vec2 off = vec2(0.0, 0.0);
uniform float zoom = 1.0;
uniform int iter = 70;
uniform float norm = 60.0;
// The fractional count n + 1 - log2(log|z|) instead of n, so that colour cycling shows no bands.
uniform int smooth = 0;

vec4 encodeValue(float value)
{
    float w = value * 65536.0;
    float r = floor(w / 65536.0);
    float g = floor((w - r * 65536.0) / 256.0);
    float b = floor(w - r * 65536.0 - g * 256.0);
    return vec4(r / 255.0, g / 255.0, b / 255.0, 1.0);
}

void main()
{
    vec2 uv = gl_TexCoord[0].xy;
    // Three units across at zoom 1, centred on (-0.5, 0).
    vec2 c;
    c.x = -0.5 + (uv.x - 0.5) * 3.0 / zoom - off.x;
    c.y = (uv.y - 0.5) * 3.0 / zoom - off.y;

    vec2 z = c;
    float x = 0.0;
    float y = 0.0;
    int i;
    for (i = 0; i < iter; i++) {
        x = z.x * z.x - z.y * z.y + c.x;
        y = 2.0 * z.x * z.y + c.y;
        if (x * x + y * y > 4.0)
            break;
        z = vec2(x, y);
    }

    // A point that never escapes is 0, the palette's first colour.
    float value = 0.0;
    if (i < iter) {
        if (smooth != 0) {
            // Carried on to |z|^2 > 65536 first: at radius 2 the fractional count jumps by up to
            // a band at the band edges.
            for (int k = 0; k < 8 && x * x + y * y <= 65536.0; k++) {
                float nx = x * x - y * y + c.x;
                y = 2.0 * x * y + c.y;
                x = nx;
                i++;
            }
            value = mod((float(i) + 1.0 - log2(log(sqrt(x * x + y * y)))) / norm, 1.0);
        } else {
            value = mod(float(i) / norm, 1.0);
        }
    }

    if (gray == 0)
        gl_FragColor = texture1D(tex, value);
    else
        gl_FragColor = encodeValue(value);
}
