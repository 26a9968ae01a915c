#version 120
// An Apollonian gasket by repeated inversion in three circles and reflection in the x axis. It
// colours its pixels by itself from the number of steps and the final point, so neither the
// palette nor the gray read-back mode takes part.

uniform vec2 off = vec2(0.0, 0.0);
uniform float zoom = 1.0;
uniform vec2 iResolution = vec2(1.0, 1.0);
uniform vec4 iMouse = vec4(0.0, 0.0, 0.0, 0.0);
uniform float iTime = 0.0;

const float pi = 3.14159265;
const int maxSteps = 50;

vec2 cmul(vec2 a, vec2 b)
{
    return vec2(a.x * b.x - a.y * b.y, a.x * b.y + a.y * b.x);
}

vec2 cdiv(vec2 a, vec2 b)
{
    float d = b.x * b.x + b.y * b.y;
    return vec2((a.x * b.x + a.y * b.y) / d, (a.y * b.x - a.x * b.y) / d);
}

// Inversion in the circle of centre c and radius r.
vec2 invert(vec2 p, vec2 c, float r)
{
    vec2 d = p - c;
    return d * (r * r) / (d.x * d.x + d.y * d.y) + c;
}

void main()
{
    vec2 z = (2.0 * gl_TexCoord[0].xy - vec2(1.0, 1.0)) / zoom - off;

    // A Moebius map of the unit disk onto itself, moved by the mouse; the identity up to sign
    // while the mouse is at rest at the origin.
    vec2 m = vec2(0.0, 0.0);
    if (iMouse.x != 0.0 || iMouse.y != 0.0)
        m = 2.0 * iMouse.xy / iResolution.y - vec2(iResolution.x / iResolution.y, 1.0);
    m = 5.0 * m;
    vec2 p = cdiv(z - m, cmul(vec2(m.x, -m.y), z) - vec2(1.0, 0.0));

    int n = 0;
    for (int k = 0; k < maxSteps; k++) {
        if (length(p - vec2(0.0, 0.2)) < 0.2) {
            p = invert(p, vec2(0.0, 0.2), 0.2);
        } else if (length(p - vec2(0.8, 0.8)) < 0.8) {
            p = invert(p, vec2(0.8, 0.8), 0.8);
        } else if (length(p - vec2(-0.8, 0.8)) < 0.8) {
            p = invert(p, vec2(-0.8, 0.8), 0.8);
        } else if (p.y < 0.0) {
            p.y = -p.y;
        } else {
            break;
        }
        n++;
    }

    if (n == maxSteps) {
        gl_FragColor = vec4(0.0, 0.0, 0.0, 0.0);
        return;
    }
    float s = 0.08 * (4.0 - length(p)) + float(n);
    float arg = pi * s / 20.0 + 0.76 - 4.5;
    vec3 col = sin(vec3(arg - 3.5 * pi, arg - pi, arg - 3.6 * pi)) * 0.4 + 0.5;
    gl_FragColor = vec4(pow(col * col, vec3(1.2)), 1.0);
}
