#version 400 compatibility
#extension GL_ARB_gpu_shader_fp64 : enable
// The Julia set of the constant c in double precision, for deep zooms where single precision turns blocky.
// The view and the orbit are doubles; the value, its encoding and the palette look-up are as in
// the single-precision shader. "smooth" is a keyword of this GLSL version, so the fractional count
// is switched by "smoothing"; double logarithms do not exist here, so |z| is taken to float first.
// The orbit is "precise": a fused multiply-add would round differently from the processor's
// evaluation, and deep in a zoom one rounding changes the count.

uniform sampler1D tex;
uniform int gray = 0;
uniform dvec2 off = dvec2(0.0, 0.0);
uniform double zoom = 1.0;
uniform int iter = 60;
uniform float norm = 60.0;
uniform dvec2 c = dvec2(-0.6, 0.6);
uniform int smoothing = 0;

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
    dvec2 uv = dvec2(gl_TexCoord[0].xy);
    precise dvec2 z;
    z.x = 3.0 * (uv.x - 0.5) / zoom - off.x;
    z.y = 2.0 * (uv.y - 0.5) / zoom - off.y;

    precise double x = 0.0;
    precise double y = 0.0;
    int i;
    for (i = 0; i < iter; i++) {
        x = z.x * z.x - z.y * z.y + c.x;
        y = 2.0 * z.x * z.y + c.y;
        if (x * x + y * y > 4.0)
            break;
        z = dvec2(x, y);
    }

    float value = 0.0;
    if (i < iter) {
        if (smoothing != 0) {
            // Carried on to |z|^2 > 65536 first: at radius 2 the fractional count jumps by up to
            // a band at the band edges.
            for (int k = 0; k < 8 && x * x + y * y <= 65536.0; k++) {
                precise double nx = x * x - y * y + c.x;
                y = 2.0 * x * y + c.y;
                x = nx;
                i++;
            }
            value = mod((float(i) + 1.0 - log2(log(float(sqrt(x * x + y * y))))) / norm, 1.0);
        } else {
            value = mod(float(i) / norm, 1.0);
        }
    }

    if (gray == 0)
        gl_FragColor = texture1D(tex, value);
    else
        gl_FragColor = encodeValue(value);
}
