#version 400 compatibility

// The bits of the texture coordinate u (iter 0) or v (iter 1), most significant byte in red.
uniform int iter;

void main()
{
    float value = iter == 0 ? gl_TexCoord[0].x : gl_TexCoord[0].y;
    uint b = floatBitsToUint(value);
    gl_FragColor = vec4(float((b >> 24) & 255u), float((b >> 16) & 255u), float((b >> 8) & 255u), float(b & 255u)) / 255.0;
}
