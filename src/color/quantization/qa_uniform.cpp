#include "quantization/qa_uniform.h"

int QA_Uniform::addColor(uint rgb)
{
    const uint r = (rgb >> 16) & 0xFF, g = (rgb >> 8) & 0xFF, b = rgb & 0xFF;
    m_red[r >> 5].sum += r;
    ++m_red[r >> 5].count;
    m_green[g >> 5].sum += g;
    ++m_green[g >> 5].count;
    m_blue[b >> 6].sum += b;
    ++m_blue[b >> 6].count;
    return 0;
}

void QA_Uniform::getPalette(Palette<uint> &out)
{
    for (const Bin &r : m_red)
        for (const Bin &g : m_green)
            for (const Bin &b : m_blue)
                out.append(paletteColor(r.mean(), g.mean(), b.mean()));
}
