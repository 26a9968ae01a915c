#pragma once

#include "quantization/quantizationalgorithm.h"

#include <array>
#include <vector>

// Anthony Dekker's NeuQuant, a one-dimensional Kohonen network of colours, with the network as
// large as the palette asked for and with learning done while the pixels are fed: every pixel
// for which rand() % 10 is 0 is learned at once, and the learning rate and radius shrink after
// each learned pixel. The result therefore depends on the C library's random sequence.
class QA_NQuant : public QuantizationAlgorithm
{
public:
    static constexpr int samplingFactor = 10;

    // size neurons; callers never pass 0.
    explicit QA_NQuant(uint size);

    int addColor(uint rgb) override;
    void setColorCount(uint) override {}
    // The neurons reduced to 8 bits a channel, in their starting order.
    void getPalette(Palette<uint> &out) override;

private:
    int contest(int b, int g, int r);
    void alterSingle(int alpha, int i, int b, int g, int r);
    void alterNeighbours(int rad, int i, int b, int g, int r);
    void updateRadPower();

    int m_size = 0;
    std::vector<std::array<int, 3>> m_network; // b, g, r with 4 extra bits
    std::vector<int> m_bias;
    std::vector<int> m_freq;
    std::vector<int> m_radPower;
    int m_alpha = 1024;
    int m_radius = 0;
    int m_rad = 0;
};
