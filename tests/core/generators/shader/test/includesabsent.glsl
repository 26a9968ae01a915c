#version 120
  #include "test/absent.glsl"
void main() {}
