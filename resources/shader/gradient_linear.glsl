#version 120
// A linear gradient along the direction (xadd, yadd): 0 on the line through the offset point
// (xoff, yoff) across that direction, rising to 1 at the opposite corner. Dividing by
// |xadd| + |yadd| makes one palette cycle span the picture whatever the direction; a negative
// step runs the ramp the other way (the value turns negative and the palette repeats).

uniform sampler1D tex;
uniform int gray = 0;
uniform vec4 off = vec4(0.0);
uniform vec4 scale = vec4(1.0);

#include "include/readback.glsl"

void main()
{
    vec2 z = gl_TexCoord[0].xy - off.xy;
    float span = abs(scale.x) + abs(scale.y);
    float along = z.x * scale.x + z.y * scale.y;
    float value = span > 0.0 ? min(along / span, 1.0) : 0.0;
    gl_FragColor = gray == 1 ? encodeValue(value) : texture1D(tex, value);
}
