#include "quantization/qa_wu.h"

#include "quantization/nearestsearch.h"
#include "quantization/pixelrows.h"

#include <algorithm>
#include <array>

namespace {

constexpr int cells = 33 * 33 * 33;

const std::array<double, 256> &squares()
{
    static const std::array<double, 256> table = [] {
        std::array<double, 256> t{};
        for (int i = 0; i < 256; ++i)
            t[size_t(i)] = double(i) * double(i);
        return t;
    }();
    return table;
}

} // namespace

QA_Wu::QA_Wu(const QImage &pixels)
    : m_wt(cells, 0), m_mr(cells, 0), m_mg(cells, 0), m_mb(cells, 0), m_m2(cells, 0.0), m_pixels(pixels)
{
}

int QA_Wu::addColor(uint rgb)
{
    const int r = int((rgb >> 16) & 0xFF), g = int((rgb >> 8) & 0xFF), b = int(rgb & 0xFF);
    const int i = cell((r >> 3) + 1, (g >> 3) + 1, (b >> 3) + 1);
    ++m_wt[size_t(i)];
    m_mr[size_t(i)] += r;
    m_mg[size_t(i)] += g;
    m_mb[size_t(i)] += b;
    const auto &sq = squares();
    m_m2[size_t(i)] += sq[size_t(r)] + sq[size_t(g)] + sq[size_t(b)];
    return 0;
}

void QA_Wu::cumulate()
{
    int64_t area[33], areaR[33], areaG[33], areaB[33];
    double area2[33];
    for (int r = 1; r <= 32; ++r) {
        std::fill(area, area + 33, 0);
        std::fill(areaR, areaR + 33, 0);
        std::fill(areaG, areaG + 33, 0);
        std::fill(areaB, areaB + 33, 0);
        std::fill(area2, area2 + 33, 0.0);
        for (int g = 1; g <= 32; ++g) {
            int64_t line = 0, lineR = 0, lineG = 0, lineB = 0;
            double line2 = 0;
            for (int b = 1; b <= 32; ++b) {
                const size_t i1 = size_t(cell(r, g, b));
                const size_t i2 = size_t(cell(r - 1, g, b));
                line += m_wt[i1];
                lineR += m_mr[i1];
                lineG += m_mg[i1];
                lineB += m_mb[i1];
                line2 += m_m2[i1];
                area[b] += line;
                areaR[b] += lineR;
                areaG[b] += lineG;
                areaB[b] += lineB;
                area2[b] += line2;
                m_wt[i1] = m_wt[i2] + area[b];
                m_mr[i1] = m_mr[i2] + areaR[b];
                m_mg[i1] = m_mg[i2] + areaG[b];
                m_mb[i1] = m_mb[i2] + areaB[b];
                m_m2[i1] = m_m2[i2] + area2[b];
            }
        }
    }
}

template <typename M> M QA_Wu::volume(const Box &c, const std::vector<M> &m) const
{
    return m[size_t(cell(c.r1, c.g1, c.b1))] - m[size_t(cell(c.r1, c.g1, c.b0))] -
           m[size_t(cell(c.r1, c.g0, c.b1))] + m[size_t(cell(c.r1, c.g0, c.b0))] -
           m[size_t(cell(c.r0, c.g1, c.b1))] + m[size_t(cell(c.r0, c.g1, c.b0))] +
           m[size_t(cell(c.r0, c.g0, c.b1))] - m[size_t(cell(c.r0, c.g0, c.b0))];
}

template <typename M> M QA_Wu::bottom(const Box &c, Axis dir, const std::vector<M> &m) const
{
    switch (dir) {
    case Red:
        return -m[size_t(cell(c.r0, c.g1, c.b1))] + m[size_t(cell(c.r0, c.g1, c.b0))] +
               m[size_t(cell(c.r0, c.g0, c.b1))] - m[size_t(cell(c.r0, c.g0, c.b0))];
    case Green:
        return -m[size_t(cell(c.r1, c.g0, c.b1))] + m[size_t(cell(c.r1, c.g0, c.b0))] +
               m[size_t(cell(c.r0, c.g0, c.b1))] - m[size_t(cell(c.r0, c.g0, c.b0))];
    case Blue:
        break;
    }
    return -m[size_t(cell(c.r1, c.g1, c.b0))] + m[size_t(cell(c.r1, c.g0, c.b0))] +
           m[size_t(cell(c.r0, c.g1, c.b0))] - m[size_t(cell(c.r0, c.g0, c.b0))];
}

template <typename M> M QA_Wu::top(const Box &c, Axis dir, int pos, const std::vector<M> &m) const
{
    switch (dir) {
    case Red:
        return m[size_t(cell(pos, c.g1, c.b1))] - m[size_t(cell(pos, c.g1, c.b0))] -
               m[size_t(cell(pos, c.g0, c.b1))] + m[size_t(cell(pos, c.g0, c.b0))];
    case Green:
        return m[size_t(cell(c.r1, pos, c.b1))] - m[size_t(cell(c.r1, pos, c.b0))] -
               m[size_t(cell(c.r0, pos, c.b1))] + m[size_t(cell(c.r0, pos, c.b0))];
    case Blue:
        break;
    }
    return m[size_t(cell(c.r1, c.g1, pos))] - m[size_t(cell(c.r1, c.g0, pos))] -
           m[size_t(cell(c.r0, c.g1, pos))] + m[size_t(cell(c.r0, c.g0, pos))];
}

double QA_Wu::variance(const Box &c) const
{
    const double dr = double(volume(c, m_mr));
    const double dg = double(volume(c, m_mg));
    const double db = double(volume(c, m_mb));
    const double xx = volume(c, m_m2);
    return xx - (dr * dr + dg * dg + db * db) / double(volume(c, m_wt));
}

double QA_Wu::maximize(const Box &c, Axis dir, int first, int last, int &cutAt, int64_t wholeR,
                       int64_t wholeG, int64_t wholeB, int64_t wholeW) const
{
    const int64_t baseR = bottom(c, dir, m_mr), baseG = bottom(c, dir, m_mg);
    const int64_t baseB = bottom(c, dir, m_mb), baseW = bottom(c, dir, m_wt);
    double best = 0.0;
    cutAt = -1;
    for (int i = first; i < last; ++i) {
        int64_t halfR = baseR + top(c, dir, i, m_mr);
        int64_t halfG = baseG + top(c, dir, i, m_mg);
        int64_t halfB = baseB + top(c, dir, i, m_mb);
        int64_t halfW = baseW + top(c, dir, i, m_wt);
        if (halfW == 0) // never split off an empty box
            continue;
        double temp =
            (double(halfR) * double(halfR) + double(halfG) * double(halfG) + double(halfB) * double(halfB)) /
            double(halfW);
        halfR = wholeR - halfR;
        halfG = wholeG - halfG;
        halfB = wholeB - halfB;
        halfW = wholeW - halfW;
        if (halfW == 0)
            continue;
        temp +=
            (double(halfR) * double(halfR) + double(halfG) * double(halfG) + double(halfB) * double(halfB)) /
            double(halfW);
        if (temp > best) {
            best = temp;
            cutAt = i;
        }
    }
    return best;
}

bool QA_Wu::cut(Box &set1, Box &set2) const
{
    const int64_t wholeR = volume(set1, m_mr), wholeG = volume(set1, m_mg);
    const int64_t wholeB = volume(set1, m_mb), wholeW = volume(set1, m_wt);
    int cutR = -1, cutG = -1, cutB = -1;
    const double maxR = maximize(set1, Red, set1.r0 + 1, set1.r1, cutR, wholeR, wholeG, wholeB, wholeW);
    const double maxG = maximize(set1, Green, set1.g0 + 1, set1.g1, cutG, wholeR, wholeG, wholeB, wholeW);
    const double maxB = maximize(set1, Blue, set1.b0 + 1, set1.b1, cutB, wholeR, wholeG, wholeB, wholeW);
    Axis dir = Blue;
    if (maxR >= maxG && maxR >= maxB) {
        dir = Red;
        if (cutR < 0)
            return false; // nothing along any axis improves: the box cannot be split
    } else if (maxG >= maxR && maxG >= maxB) {
        dir = Green;
    }
    set2.r1 = set1.r1;
    set2.g1 = set1.g1;
    set2.b1 = set1.b1;
    switch (dir) {
    case Red:
        set2.r0 = set1.r1 = cutR;
        set2.g0 = set1.g0;
        set2.b0 = set1.b0;
        break;
    case Green:
        set2.g0 = set1.g1 = cutG;
        set2.r0 = set1.r0;
        set2.b0 = set1.b0;
        break;
    case Blue:
        set2.b0 = set1.b1 = cutB;
        set2.r0 = set1.r0;
        set2.g0 = set1.g0;
        break;
    }
    set1.vol = (set1.r1 - set1.r0) * (set1.g1 - set1.g0) * (set1.b1 - set1.b0);
    set2.vol = (set2.r1 - set2.r0) * (set2.g1 - set2.g0) * (set2.b1 - set2.b0);
    return true;
}

void QA_Wu::getPalette(Palette<uint> &out)
{
    if (m_wanted == 0)
        return;
    cumulate();
    const int wanted = int(std::min<uint>(m_wanted, uint(maxBoxes)));
    std::vector<Box> boxes(static_cast<size_t>(maxBoxes));
    std::vector<double> vv(static_cast<size_t>(maxBoxes), 0.0);
    boxes[0].r1 = boxes[0].g1 = boxes[0].b1 = 32;
    boxes[0].vol = 32 * 32 * 32;
    int count = wanted;
    int next = 0;
    for (int i = 1; i < wanted; ++i) {
        if (cut(boxes[size_t(next)], boxes[size_t(i)])) {
            // Variance is zero for a box of one cell: it can never be split again.
            vv[size_t(next)] = boxes[size_t(next)].vol > 1 ? variance(boxes[size_t(next)]) : 0.0;
            vv[size_t(i)] = boxes[size_t(i)].vol > 1 ? variance(boxes[size_t(i)]) : 0.0;
        } else {
            vv[size_t(next)] = 0.0;
            --i;
        }
        next = 0;
        double temp = vv[0];
        for (int k = 1; k <= i; ++k)
            if (vv[size_t(k)] > temp) {
                temp = vv[size_t(k)];
                next = k;
            }
        if (temp <= 0.0) {
            count = i + 1;
            break;
        }
    }
    boxes.resize(size_t(count));

    // The moment means of the boxes, then one pass that gives every pixel to the nearest mean.
    const size_t boxCount = static_cast<size_t>(count);
    std::vector<int32_t> means(boxCount * 3, 0); // all reds, then greens, then blues
    int32_t *mr = means.data(), *mg = mr + boxCount, *mb = mg + boxCount;
    for (size_t k = 0; k < boxCount; ++k) {
        const int64_t w = volume(boxes[k], m_wt);
        if (w > 0) {
            mr[k] = int32_t(volume(boxes[k], m_mr) / w);
            mg[k] = int32_t(volume(boxes[k], m_mg) / w);
            mb[k] = int32_t(volume(boxes[k], m_mb) / w);
        }
    }
    // The nearest mean, the lowest box number among equals (every distance is below the starting
    // bound of 100000000, so some box always wins).
    BlockNearest nearest(mr, mg, mb, boxCount);
    std::vector<int64_t> sr(boxCount, 0), sg(boxCount, 0), sb(boxCount, 0), sw(boxCount, 0);
    const int width = m_pixels.width();
    forEachRowUpwards(m_pixels, [&](const QRgb *row, int) {
        for (int x = width - 1; x >= 0; --x) {
            const int r = qRed(row[x]), g = qGreen(row[x]), b = qBlue(row[x]);
            const size_t best = nearest.nearest(r, g, b);
            sr[best] += r;
            sg[best] += g;
            sb[best] += b;
            ++sw[best];
        }
        return true;
    });
    for (int k = 0; k < count; ++k) {
        const size_t i = size_t(k);
        if (sw[i] == 0) // only when two means coincide: the box keeps its moment mean
            out.append(paletteColor(uint(mr[i]), uint(mg[i]), uint(mb[i])));
        else
            out.append(paletteColor(uint(sr[i] / sw[i]), uint(sg[i] / sw[i]), uint(sb[i] / sw[i])));
    }
}
