#version 120
// A radial gradient: 1 at the centre p1, falling by 1 per unit of distance. Beyond a distance
// of 1 the value turns negative, and the repeating palette starts over.

uniform sampler1D tex;
uniform int gray = 0;
uniform vec4 off = vec4(0.0);
uniform vec4 scale = vec4(1.0);
uniform vec4 p1 = vec4(0.5, 0.5, 0.0, 0.0);
uniform vec4 p2 = vec4(0.0);
uniform float zoom = 1.0;

#include "include/readback.glsl"

void main()
{
    vec2 z = gl_TexCoord[0].xy / zoom - off.xy;
    float value = min(1.0 - length(p1.xy - z), 1.0);
    gl_FragColor = gray == 1 ? encodeValue(value) : texture1D(tex, value);
}
