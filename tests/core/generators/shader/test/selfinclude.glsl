#version 120
#include "test/selfinclude.glsl"
void main() {}
