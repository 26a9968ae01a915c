#pragma once

#include "quantization/quantizationalgorithm.h"

#include <QImage>

#include <cstdint>
#include <vector>

// Xiaolin Wu's variance-minimising cut (Graphics Gems II, 1991) over a 33 x 33 x 33 histogram of
// 5-bit cells, followed by one refinement pass: every fed colour goes to the box whose mean is
// nearest and the emitted colours are the means of what each box attracted.
//
// The refinement reads the pixels of the picture being fed a second time rather than keeping a
// record of each one: it only needs the sums over the pixels each box attracts, which do not
// depend on the order, so the picture itself serves as the record at no cost in memory.
class QA_Wu : public QuantizationAlgorithm
{
public:
    static constexpr int maxBoxes = 512;

    // pixels is the picture whose every pixel is fed (through addColor, exactly once each); it
    // must stay unchanged until getPalette has run.
    explicit QA_Wu(const QImage &pixels);

    int addColor(uint rgb) override;
    void setColorCount(uint n) override { m_wanted = n; }
    void getPalette(Palette<uint> &out) override;

private:
    struct Box
    {
        int r0 = 0, r1 = 0, g0 = 0, g1 = 0, b0 = 0, b1 = 0; // lower bounds exclusive
        int vol = 0;
    };
    enum Axis
    {
        Red,
        Green,
        Blue
    };

    static int cell(int r, int g, int b) { return (r * 33 + g) * 33 + b; }
    void cumulate();
    template <typename M> M volume(const Box &c, const std::vector<M> &m) const;
    template <typename M> M bottom(const Box &c, Axis dir, const std::vector<M> &m) const;
    template <typename M> M top(const Box &c, Axis dir, int pos, const std::vector<M> &m) const;
    double variance(const Box &c) const;
    double maximize(const Box &c, Axis dir, int first, int last, int &cut, int64_t wholeR, int64_t wholeG,
                    int64_t wholeB, int64_t wholeW) const;
    bool cut(Box &set1, Box &set2) const;

    std::vector<int64_t> m_wt, m_mr, m_mg, m_mb;
    std::vector<double> m_m2;
    QImage m_pixels;
    uint m_wanted = 0;
};
