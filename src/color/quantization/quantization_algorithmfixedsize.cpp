#include "quantization/quantization_algorithmfixedsize.h"

#include "quantization/pixelrows.h"
#include "quantization/qa_distincthsb.h"
#include "quantization/qa_mediancut.h"
#include "quantization/qa_nquant.h"
#include "quantization/qa_octree.h"
#include "quantization/qa_popularity.h"
#include "quantization/qa_uniform.h"
#include "quantization/qa_wu.h"

namespace {

// Progress is reported every so many rows, so that a callback costs nothing measurable.
constexpr int rowsPerReport = 64;

std::unique_ptr<QuantizationAlgorithm> makeAlgorithm(uint method, uint colorCount, const QImage &image)
{
    switch (method) {
    case Quantization_AlgorithmFixedSize::Popularity:
        return std::make_unique<QA_Popularity>();
    case Quantization_AlgorithmFixedSize::Wu:
        return std::make_unique<QA_Wu>(image);
    case Quantization_AlgorithmFixedSize::DistinctHSB:
        return std::make_unique<QA_DistinctHSB>();
    case Quantization_AlgorithmFixedSize::Octree:
        return std::make_unique<QA_Octree<char>>();
    case Quantization_AlgorithmFixedSize::NeuQuant:
        return std::make_unique<QA_NQuant>(colorCount);
    case Quantization_AlgorithmFixedSize::Uniform:
        return std::make_unique<QA_Uniform>();
    default:
        return std::make_unique<QA_Octree<char>>(); // the exact histogram of the median cut
    }
}

} // namespace

bool Quantization_AlgorithmFixedSize::feed(const QImage &image, QuantizationAlgorithm &algorithm,
                                           const Progress &progress)
{
    const int w = image.width(), h = image.height();
    return forEachRowUpwards(image, [&](const QRgb *row, int y) {
        for (int x = w - 1; x >= 0; --x)
            algorithm.addColor(row[x] & 0xFFFFFFu);
        return !progress || y % rowsPerReport != 0 || progress(100 * (h - y) / h);
    });
}

Palette<uint> Quantization_AlgorithmFixedSize::quantize(const QImage &image, const Progress &progress)
{
    Palette<uint> result;
    std::unique_ptr<QuantizationAlgorithm> algorithm =
        makeAlgorithm(m_method > LastMethod ? uint(MedianCut) : m_method, m_colorCount, image);
    if (!feed(image, *algorithm, progress))
        return result;
    if (m_method == MedianCut || m_method > LastMethod) {
        // The median cut works on one entry per distinct colour, in the histogram's depth-first
        // order; the histogram is gone before the cut starts.
        std::vector<QA_MedianCut::Entry> entries;
        {
            auto &histogram = static_cast<QA_Octree<char> &>(*algorithm);
            entries.reserve(histogram.leafCount());
            histogram.forEachLeaf([&](uint32_t id) {
                const auto &n = histogram.node(id);
                const uint32_t rgb =
                    ((n.sum[0] / n.pixels) << 16) | ((n.sum[1] / n.pixels) << 8) | (n.sum[2] / n.pixels);
                entries.push_back({rgb, n.pixels});
            });
            algorithm.reset();
        }
        QA_MedianCut cut(std::move(entries));
        cut.setColorCount(m_colorCount);
        cut.getPalette(result);
        return result;
    }
    algorithm->setColorCount(m_colorCount);
    algorithm->getPalette(result);
    return result;
}
