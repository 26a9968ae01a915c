// Whole-palette conversions into each colour space, against copying the same palette. The
// interpolation and sort dialogs convert the palette on every control change, so these must stay
// cheap next to the copy a dialog makes anyway.
#include "spaces/colorspace.h"

#include <benchmark/benchmark.h>

#include <random>

namespace {

Palette<uint> randomPalette(int n)
{
    std::mt19937 rng(4096);
    std::uniform_int_distribution<uint> d(0, 65535);
    Palette<uint> p;
    for (int i = 0; i < n; ++i)
        p.append({d(rng), d(rng), d(rng), 65535});
    return p;
}

void BM_CopyPalette(benchmark::State &state)
{
    const Palette<uint> p = randomPalette(int(state.range(0)));
    for (auto _ : state) {
        Palette<uint> copy = p;
        benchmark::DoNotOptimize(copy);
    }
}

void BM_ToSpace(benchmark::State &state)
{
    const Palette<uint> p = randomPalette(4096);
    const int space = int(state.range(0));
    for (auto _ : state) {
        auto v = colourToSpace(p, space);
        benchmark::DoNotOptimize(v);
    }
    state.SetLabel(colorSpaceTable()[size_t(space)].name.toStdString());
}

void BM_RoundTrip(benchmark::State &state)
{
    const Palette<uint> p = randomPalette(4096);
    const int space = int(state.range(0));
    for (auto _ : state) {
        auto v = spaceToColour(colourToSpace(p, space), space);
        benchmark::DoNotOptimize(v);
    }
    state.SetLabel(colorSpaceTable()[size_t(space)].name.toStdString());
}

} // namespace

BENCHMARK(BM_CopyPalette)->Arg(4096);
BENCHMARK(BM_ToSpace)->DenseRange(0, 11);
BENCHMARK(BM_RoundTrip)->DenseRange(0, 11);
BENCHMARK_MAIN();
