#include "quantization/qa_nquant.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace {

constexpr int netBiasShift = 4;  // colour values carry 4 extra bits
constexpr int intBiasShift = 16; // frequency and bias fixed point
constexpr int intBias = 1 << intBiasShift;
constexpr int gammaShift = 10;
constexpr int betaShift = 10;
constexpr int beta = intBias >> betaShift;                     // 64
constexpr int betaGamma = intBias << (gammaShift - betaShift); // 65536
constexpr int radiusBiasShift = 6;
constexpr int radiusBias = 1 << radiusBiasShift;
constexpr int radiusDec = 30;
constexpr int initAlpha = 1 << 10;
constexpr int radBias = 1 << 8;
constexpr int alphaRadBias = 1 << 18;
constexpr int alphaDec = QA_NQuant::samplingFactor + 29; // 39

} // namespace

QA_NQuant::QA_NQuant(uint size)
    : m_size(int(size)), m_network(size), m_bias(size, 0), m_freq(size, 0), m_radPower(size)
{
    for (int i = 0; i < m_size; ++i) {
        const int v = (i << (netBiasShift + 8)) / m_size;
        m_network[size_t(i)] = {v, v, v};
        m_freq[size_t(i)] = intBias / m_size;
    }
    m_alpha = initAlpha;
    m_radius = (m_size >> 3) * radiusBias;
    updateRadPower();
}

void QA_NQuant::updateRadPower()
{
    m_rad = m_radius >> radiusBiasShift;
    if (m_rad <= 1)
        m_rad = 0;
    if (size_t(m_rad) > m_radPower.size())
        m_radPower.resize(size_t(m_rad));
    for (int i = 0; i < m_rad; ++i)
        m_radPower[size_t(i)] = m_alpha * (((m_rad * m_rad - i * i) * radBias) / (m_rad * m_rad));
}

int QA_NQuant::contest(int b, int g, int r)
{
    int bestd = INT_MAX, bestBiasd = INT_MAX;
    int bestPos = -1, bestBiasPos = -1;
    for (int i = 0; i < m_size; ++i) {
        const std::array<int, 3> &n = m_network[size_t(i)];
        const int dist = std::abs(n[0] - b) + std::abs(n[1] - g) + std::abs(n[2] - r);
        if (dist < bestd) {
            bestd = dist;
            bestPos = i;
        }
        const int biasDist = dist - (m_bias[size_t(i)] >> (intBiasShift - netBiasShift));
        if (biasDist < bestBiasd) {
            bestBiasd = biasDist;
            bestBiasPos = i;
        }
        const int betaFreq = m_freq[size_t(i)] >> betaShift;
        m_freq[size_t(i)] -= betaFreq;
        m_bias[size_t(i)] += betaFreq << gammaShift;
    }
    m_freq[size_t(bestPos)] += beta;
    m_bias[size_t(bestPos)] -= betaGamma;
    return bestBiasPos;
}

void QA_NQuant::alterSingle(int alpha, int i, int b, int g, int r)
{
    std::array<int, 3> &n = m_network[size_t(i)];
    n[0] -= (alpha * (n[0] - b)) / initAlpha;
    n[1] -= (alpha * (n[1] - g)) / initAlpha;
    n[2] -= (alpha * (n[2] - r)) / initAlpha;
}

void QA_NQuant::alterNeighbours(int rad, int i, int b, int g, int r)
{
    const int lo = std::max(i - rad, -1);
    const int hi = std::min(i + rad, m_size);
    int j = i + 1, k = i - 1;
    size_t q = 0;
    while (j < hi || k > lo) {
        const int a = m_radPower[++q];
        if (j < hi) {
            std::array<int, 3> &p = m_network[size_t(j)];
            p[0] -= (a * (p[0] - b)) / alphaRadBias;
            p[1] -= (a * (p[1] - g)) / alphaRadBias;
            p[2] -= (a * (p[2] - r)) / alphaRadBias;
            ++j;
        }
        if (k > lo) {
            std::array<int, 3> &p = m_network[size_t(k)];
            p[0] -= (a * (p[0] - b)) / alphaRadBias;
            p[1] -= (a * (p[1] - g)) / alphaRadBias;
            p[2] -= (a * (p[2] - r)) / alphaRadBias;
            --k;
        }
    }
}

int QA_NQuant::addColor(uint rgb)
{
    if (std::rand() % samplingFactor != 0)
        return 0;
    const int r = int((rgb >> 16) & 0xFF) << netBiasShift;
    const int g = int((rgb >> 8) & 0xFF) << netBiasShift;
    const int b = int(rgb & 0xFF) << netBiasShift;
    const int winner = contest(b, g, r);
    alterSingle(m_alpha, winner, b, g, r);
    if (m_rad > 0)
        alterNeighbours(m_rad, winner, b, g, r);
    m_alpha -= m_alpha / alphaDec;
    m_radius -= m_radius / radiusDec;
    updateRadPower();
    return 0;
}

void QA_NQuant::getPalette(Palette<uint> &out)
{
    // The published algorithm also sorts a copy by green for its own lookups; the palette comes
    // out in the neurons' starting order, which that sort does not change.
    for (const std::array<int, 3> &n : m_network) {
        const auto channel = [](int v) { return uint(std::clamp(v >> netBiasShift, 0, 255)); };
        out.append(paletteColor(channel(n[2]), channel(n[1]), channel(n[0])));
    }
}
