#pragma once

// Where a pixel of a rendered picture samples its generator. The quad's texture coordinates run
// over the unit square; the renderer stretches the quad so the picture keeps the view's
// proportions: a wide picture (w > h) is stretched vertically by w / h around the centre, a tall
// one horizontally by h / w. Pixel (x, y), row 0 at the top, is the fragment at the pixel's centre,
// so every face (shader, processor, tests) samples the same (u, v).
struct GeneratorGrid
{
    int width = 0;
    int height = 0;

    // The texture coordinate of pixel (x, y), in T (float where the shaders use float).
    template <class T> void texCoord(int x, int y, T &u, T &v) const
    {
        u = (T(x) + T(0.5)) / T(width);
        v = T(1) - (T(y) + T(0.5)) / T(height);
        if (width >= height)
            v = T(0.5) + (v - T(0.5)) * (T(height) / T(width));
        else
            u = T(0.5) + (u - T(0.5)) * (T(width) / T(height));
    }
};
