// The quantisers and the dithering methods on a full-HD picture with photograph-like variety
// (smooth gradients with noise), 256 colours. Timings of whole commands against other tools
// are compare-quantisers.sh's job; this isolates the stages.
#include "quantization/colorindex.h"
#include "dithering/dithering_errordiffusion.h"
#include "dithering/dithering_nearest.h"
#include "dithering/dithering_ordered.h"
#include "quantization/quantization_algorithmfixedsize.h"

#include <benchmark/benchmark.h>

#include <QImage>

#include <memory>
#include <random>

namespace {

constexpr int W = 1920;
constexpr int H = 1080;

const QImage &picture()
{
    static const QImage image = [] {
        QImage p(W, H, QImage::Format_RGB32);
        std::mt19937 rng(42);
        std::uniform_int_distribution<int> noise(-12, 12);
        for (int y = 0; y < H; ++y) {
            auto *row = reinterpret_cast<QRgb *>(p.scanLine(y));
            for (int x = 0; x < W; ++x) {
                const auto c = [&](int v) { return qBound(0, v + noise(rng), 255); };
                row[x] =
                    qRgb(c(x * 255 / W), c(y * 255 / H), c((x + y) * 127 / (W + H) + 60 * ((x / 240) % 2)));
            }
        }
        return p;
    }();
    return image;
}

const Palette<uint> &wuPalette()
{
    static const Palette<uint> p = Quantization_AlgorithmFixedSize(256, 2).quantize(picture());
    return p;
}

void BM_Quantize(benchmark::State &state)
{
    const uint method = uint(state.range(0));
    for (auto _ : state) {
        Palette<uint> p = Quantization_AlgorithmFixedSize(256, method).quantize(picture());
        benchmark::DoNotOptimize(p.entries().data());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * W * H);
}

void BM_Dither(benchmark::State &state)
{
    const int method = int(state.range(0));
    for (auto _ : state) {
        ColorIndex index(wuPalette());
        std::unique_ptr<Dithering> d;
        if (method == 0)
            d = std::make_unique<Dithering_Nearest>(&index);
        else if (method <= 8)
            d = std::make_unique<Dithering_ErrorDiffusion>(&index, method);
        else
            d = std::make_unique<Dithering_Ordered>(&index, method, wuPalette().size());
        DitherResult r = d->dither(picture(), wuPalette(), 2);
        benchmark::DoNotOptimize(r.indexes8.data());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * W * H);
}

// A cold search per colour: what every cache miss costs.
void BM_ColorIndexSearch(benchmark::State &state)
{
    const ColorIndex index(wuPalette());
    std::mt19937 rng(7);
    std::vector<uint32_t> colours(4096);
    for (uint32_t &c : colours)
        c = rng() & 0xFFFFFF;
    size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(index.search(colours[i++ & 4095]));
}

} // namespace

BENCHMARK(BM_Quantize)->DenseRange(0, 6)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Dither)->Arg(0)->Arg(1)->Arg(3)->Arg(4)->Arg(8)->Arg(12)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ColorIndexSearch);
BENCHMARK_MAIN();
