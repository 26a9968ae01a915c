#version 120
// A linear gradient along the direction (xadd, yadd): 0 on the line through the offset point
// (xoff, yoff) across that direction, rising to 1 at the opposite corner. Dividing by
// |xadd| + |yadd| makes one palette cycle span the picture whatever the direction; a negative
// step runs the ramp the other way (the value turns negative and the palette repeats).

uniform sampler1D tex;
uniform int gray = 0;
uniform vec4 off = vec4(0.0);
uniform vec4 scale = vec4(1.0);

vec4 encode(float value)
{
    // Green carries the high byte, blue the low byte; red is set only by 1.0. The framebuffer
    // stores round(channel x 255), hence the division by 255.
    float w = value * 65536.0;
    float r = floor(w * (1.0 / 65536.0));
    float g = floor((w - r * 65536.0) * (1.0 / 256.0));
    float b = floor(w - r * 65536.0 - g * 256.0);
    return vec4(r / 255.0, g / 255.0, b / 255.0, 1.0);
}

void main()
{
    vec2 z = gl_TexCoord[0].xy - off.xy;
    float span = abs(scale.x) + abs(scale.y);
    float along = z.x * scale.x + z.y * scale.y;
    float value = span > 0.0 ? min(along / span, 1.0) : 0.0;
    gl_FragColor = gray == 1 ? encode(value) : texture1D(tex, value);
}
