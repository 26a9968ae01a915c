// The building blocks of the textureless noises: mod 289 without a division, the polynomial
// permutation (34x + 10)x modulo 289 that hashes lattice cells, the cellular jitter's mod 7, a
// first-order inverse square root for gradients' lengths, the quintic fade, and linear blending
// written out so that every driver and the processor's evaluation round it alike.
float blend(float a, float b, float t) { return a + t * (b - a); }
vec2 blend(vec2 a, vec2 b, float t) { return a + t * (b - a); }
vec4 blend(vec4 a, vec4 b, float t) { return a + t * (b - a); }
vec2 fade(vec2 t) { return t * t * t * (t * (t * 6.0 - 15.0) + 10.0); }
vec3 fade(vec3 t) { return t * t * t * (t * (t * 6.0 - 15.0) + 10.0); }
vec4 inverseLength(vec4 r) { return 1.79284291400159 - 0.85373472095314 * r; }
float mod289(float x) { return x - floor(x * (1.0 / 289.0)) * 289.0; }
vec2 mod289(vec2 x) { return x - floor(x * (1.0 / 289.0)) * 289.0; }
vec3 mod289(vec3 x) { return x - floor(x * (1.0 / 289.0)) * 289.0; }
vec4 mod289(vec4 x) { return x - floor(x * (1.0 / 289.0)) * 289.0; }
float mod7(float x) { return x - floor(x * (1.0 / 7.0)) * 7.0; }
float permute(float x) { return mod289((x * 34.0 + 10.0) * x); }
vec3 permute(vec3 x) { return mod289((x * 34.0 + 10.0) * x); }
vec4 permute(vec4 x) { return mod289((x * 34.0 + 10.0) * x); }
