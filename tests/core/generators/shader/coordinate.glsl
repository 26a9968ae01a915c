#version 120

// Writes the quad's texture coordinate u (iter 0) or v (iter 1), as the generators write a value.
uniform sampler1D tex;
uniform int gray;
uniform int iter;

void main()
{
    float value = iter == 0 ? gl_TexCoord[0].x : gl_TexCoord[0].y;
    if (gray == 1) {
        float w = value * 65536.0;
        float r = floor(w / 65536.0);
        float g = floor((w - r * 65536.0) / 256.0);
        float b = floor(w - r * 65536.0 - g * 256.0);
        gl_FragColor = vec4(r / 255.0, g / 255.0, b / 255.0, 1.0);
    } else {
        gl_FragColor = texture1D(tex, value);
    }
}
