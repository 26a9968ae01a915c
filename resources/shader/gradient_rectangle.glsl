#version 120
// A rectangular gradient: 1 at the centre p1 moved by the offset, falling linearly to 0 at the
// edges of the picture along nested rectangles. xadd and yadd multiply the horizontal and the
// vertical distance, so larger steps make the rectangles narrower or flatter; beyond the edge
// rectangle the value turns negative and the repeating palette starts over.

uniform sampler1D tex;
uniform int gray = 0;
uniform vec4 off = vec4(0.0);
uniform vec4 scale = vec4(1.0);
uniform vec4 p1 = vec4(0.5, 0.5, 0.0, 0.0);

#include "include/readback.glsl"

void main()
{
    vec2 z = gl_TexCoord[0].xy - off.xy;
    vec2 d = abs(z - p1.xy) * scale.xy;
    float value = min(1.0 - 2.0 * max(d.x, d.y), 1.0);
    gl_FragColor = gray == 1 ? encodeValue(value) : texture1D(tex, value);
}
