// The fractal generators at 1024 x 1024, three ways: a plain scalar loop of the formula (the
// baseline), the processor's evaluator (vector lanes, every core, periodicity check) and the
// shaders in an off-screen OpenGL context. Each view's scalar loop runs first; the others report
// their time as a ratio to it ("x_scalar"), measured in the same run. Targets: OpenGL at most
// 0.3x the scalar loop, the evaluator at most 0.5x.
#include "generators/fractalevaluator.h"
#include "generators/imagegenerator.h"
#include "palette/describedexception.h"

#include <QGuiApplication>

#include <benchmark/benchmark.h>

#include <chrono>
#include <map>
#include <string>

namespace {

constexpr int Size = 1024;

GeneratorSettings view(int which)
{
    GeneratorSettings s;
    switch (which) {
    case 0: // the first Mandelbrot preset
        s.name = "mandelbrot";
        s.iterations = 5000;
        s.norm = 1000;
        s.xoff = -0.37216;
        s.yoff = -0.842;
        s.zoom = 6000;
        break;
    case 1: // the first Julia preset
        s.name = "julia";
        s.iterations = 5000;
        s.norm = 100;
        s.zoom = 0.9;
        s.cr = -1.275;
        s.ci = 0.19375;
        break;
    default: // the whole Mandelbrot set
        s.name = "mandelbrot";
        s.iterations = 5000;
        s.norm = 60;
        break;
    }
    s.xsize = Size;
    s.ysize = Size;
    return s;
}

const char *viewName(int which)
{
    return which == 0 ? "mandelbrot preset 1" : which == 1 ? "julia preset 1" : "whole set";
}

// Seconds a render of each view took in the scalar loop of this run.
std::map<int, double> &scalarSeconds()
{
    static std::map<int, double> seconds;
    return seconds;
}

using Clock = std::chrono::steady_clock;

void report(benchmark::State &state, int which, double seconds)
{
    state.SetLabel(viewName(which));
    const auto scalar = scalarSeconds().find(which);
    if (scalar != scalarSeconds().end())
        state.counters["x_scalar"] = seconds / scalar->second;
}

void BM_ScalarLoop(benchmark::State &state)
{
    const int which = int(state.range(0));
    const GeneratorSettings s = view(which);
    const GeneratorGrid grid{Size, Size};
    const bool julia = s.name == QLatin1String("julia");
    std::vector<float> out(size_t(Size) * Size);
    double seconds = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x) {
                float u, v;
                grid.texCoord(x, y, u, v);
                out[size_t(y) * Size + size_t(x)] =
                    julia ? FractalEvaluator::juliaAt(s, u, v) : FractalEvaluator::mandelbrotAt(s, u, v);
            }
        benchmark::DoNotOptimize(out.data());
        seconds += std::chrono::duration<double>(Clock::now() - start).count();
    }
    scalarSeconds()[which] = seconds / double(state.iterations());
    state.SetLabel(viewName(which));
}

void BM_CpuEvaluator(benchmark::State &state)
{
    const int which = int(state.range(0));
    const GeneratorSettings s = view(which);
    std::vector<float> out;
    double seconds = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        FractalEvaluator::values(s, GeneratorGrid{Size, Size}, out);
        benchmark::DoNotOptimize(out.data());
        seconds += std::chrono::duration<double>(Clock::now() - start).count();
    }
    report(state, which, seconds / double(state.iterations()));
}

// The whole OpenGL render of the dialog's OK as it is repeated: the renderer keeps its context,
// framebuffer and programs from one render to the next (the first render of the run makes them),
// so each render pays for the draw, the read-back and its decoding.
void BM_OpenGl(benchmark::State &state)
{
    const int which = int(state.range(0));
    const GeneratorSettings s = view(which);
    Palette<uint> grey;
    grey.append({0, 0, 0, 65535});
    grey.append({65535, 65535, 65535, 65535});
    double seconds = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        try {
            const GeneratorRaster raster = ImageGenerator::render(s, grey, ImageGenerator::Renderer::Gl);
            benchmark::DoNotOptimize(raster.values.data());
        } catch (const DescribedException &e) {
            state.SkipWithError(e.what());
            return;
        }
        seconds += std::chrono::duration<double>(Clock::now() - start).count();
    }
    report(state, which, seconds / double(state.iterations()));
}

} // namespace

BENCHMARK(BM_ScalarLoop)->DenseRange(0, 2)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_CpuEvaluator)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_OpenGl)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char **argv)
{
    // OpenGL needs the GUI application (a display, or another platform that has contexts); without
    // one the OpenGL benchmarks say so and the others run.
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
