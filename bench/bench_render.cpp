// Rendering a full-HD document image through its palette, against a memcpy of the same number of
// output bytes measured in the same run. The live preview renders on every palette change, so the
// target is every render within 4x its memcpy baseline.
#include "document/documentimage.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr int W = 1920;
constexpr int H = 1080;

Palette<uint> rampPalette(int n)
{
    Palette<uint> p;
    for (int i = 0; i < n; ++i) {
        const uint v = uint(i) * 65535u / uint(n - 1);
        p.append({v, 65535 - v, (v * 7) & 0xFFFF, 65535});
    }
    return p;
}

void BM_MemcpyBaseline(benchmark::State &state)
{
    std::vector<uint32_t> src(size_t(W) * H, 0x12345678u), dst(size_t(W) * H);
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), dst.size() * sizeof(uint32_t));
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(dst.size() * sizeof(uint32_t)));
}

void BM_RenderIndexed32(benchmark::State &state)
{
    const int n = int(state.range(0));
    std::mt19937 rng(1);
    std::vector<uint32_t> cells(size_t(W) * H);
    for (auto &c : cells)
        c = rng() % uint32_t(n + 16); // a few past the palette
    DocumentImage img = DocumentImage::fromIndexes32(W, H, std::move(cells));
    const Palette<uint> p = rampPalette(n);
    for (auto _ : state) {
        img.render(p);
        benchmark::DoNotOptimize(img.picture().constBits());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * W * H * 4);
}

void BM_RenderContinuous(benchmark::State &state)
{
    const int n = int(state.range(0));
    const bool interpolate = state.range(1) != 0;
    std::mt19937 rng(2);
    std::uniform_real_distribution<float> d(0.0f, 65535.0f);
    std::vector<float> cells(size_t(W) * H);
    for (auto &c : cells)
        c = d(rng);
    DocumentImage img = DocumentImage::fromContinuous(W, H, std::move(cells), interpolate);
    const Palette<uint> p = rampPalette(n);
    for (auto _ : state) {
        img.render(p);
        benchmark::DoNotOptimize(img.picture().constBits());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * W * H * 4);
}

void BM_RenderIndexed8(benchmark::State &state)
{
    std::vector<uint8_t> idx(size_t(W) * H);
    for (size_t i = 0; i < idx.size(); ++i)
        idx[i] = uint8_t(i * 31);
    DocumentImage img = DocumentImage::fromIndexes8(W, H, idx);
    const Palette<uint> p = rampPalette(256);
    for (auto _ : state) {
        img.render(p);
        benchmark::DoNotOptimize(img.picture().constBits());
    }
}

} // namespace

BENCHMARK(BM_MemcpyBaseline)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RenderIndexed32)->Arg(256)->Arg(4096)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RenderContinuous)->Args({256, 0})->Args({256, 1})->Args({4096, 0})->Args({4096, 1})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RenderIndexed8)->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
