// Colour-cycling exports of a 640 x 480 8-bit indexed image, 256 frames each: the GIF writer, the
// MP4 writer, each frame's rendering alone, and for scale gifsicle -O1 over the GIF written here.
// Every benchmark reports frames per second; the GIF writer's target is at least 100.
#include "export/animationexport.h"
#include "export/moviewriter.h"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cmath>
#include <vector>

namespace {

constexpr int W = 640;
constexpr int H = 480;
constexpr int Frames = 256;

// Soft bands of every index, like a fractal or a plasma: what colour cycling is used on.
DocumentImage plasma()
{
    std::vector<uint8_t> cells(size_t(W) * H);
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            const double v = std::sin(x / 37.0) + std::sin(y / 23.0) + std::sin((x + y) / 51.0)
                             + std::sin(std::hypot(x - 320.0, y - 240.0) / 29.0);
            cells[size_t(y) * W + size_t(x)] = uint8_t(int((v + 4.0) * 32.0) & 255);
        }
    return DocumentImage::fromIndexes8(W, H, cells);
}

Palette<uint> rainbow()
{
    Palette<uint> p;
    for (int i = 0; i < 256; ++i) {
        const double a = i * 6.283185307179586 / 256.0;
        auto c = [a](double phase) { return uint((std::sin(a + phase) * 0.5 + 0.5) * 65535.0); };
        p.append({c(0.0), c(2.094), c(4.189), 65535});
    }
    return p;
}

const DocumentImage &image()
{
    static const DocumentImage img = plasma();
    return img;
}

QTemporaryDir &folder()
{
    static QTemporaryDir dir;
    return dir;
}

// One movie of Frames frames through the writer, rendered by the export's own frame functions.
void writeMovie(benchmark::State &state, const QString &name)
{
    const QString path = folder().filePath(name);
    const bool gif = AnimationExport::isGifPath(path);
    const Palette<uint> palette = rainbow();
    QImage frame;
    for (auto _ : state) {
        MovieWriter writer;
        if (!writer.open(path, 25, Frames, QSize(W, H), palette)) {
            state.SkipWithError(qPrintable(writer.errorText()));
            return;
        }
        for (int f = 0; f < Frames; ++f) {
            if (gif)
                AnimationExport::gifFrame(image(), 0, 255, f, frame);
            else
                AnimationExport::movieFrame(image(), palette, 0, 255, f, frame);
            writer.addFrame(frame);
        }
        if (!writer.close()) {
            state.SkipWithError(qPrintable(writer.errorText()));
            return;
        }
    }
    state.counters["frames_per_second"] =
        benchmark::Counter(double(Frames) * double(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["file_MiB"] = double(QFileInfo(path).size()) / 1048576.0;
}

void BM_GifWriter(benchmark::State &state)
{
    writeMovie(state, "cycle.gif");
}

void BM_Mp4Writer(benchmark::State &state)
{
    writeMovie(state, "cycle.mp4");
}

// The frames alone, so that the writers' figures can be split into rendering and encoding.
void BM_RenderFrames(benchmark::State &state)
{
    const bool gif = state.range(0) == 0;
    const Palette<uint> palette = rainbow();
    QImage frame;
    for (auto _ : state) {
        for (int f = 0; f < Frames; ++f) {
            if (gif)
                AnimationExport::gifFrame(image(), 0, 255, f, frame);
            else
                AnimationExport::movieFrame(image(), palette, 0, 255, f, frame);
            benchmark::DoNotOptimize(frame.constBits());
        }
    }
    state.SetLabel(gif ? "gif indexes" : "movie pictures");
    state.counters["frames_per_second"] =
        benchmark::Counter(double(Frames) * double(state.iterations()), benchmark::Counter::kIsRate);
}

// gifsicle -O1 over the GIF that BM_GifWriter wrote, for scale. Skipped where gifsicle is not
// installed.
void BM_GifsicleO1(benchmark::State &state)
{
    const QString gifsicle = QStandardPaths::findExecutable(QStringLiteral("gifsicle"));
    const QString gif = folder().filePath(QStringLiteral("cycle.gif"));
    if (gifsicle.isEmpty() || !QFileInfo::exists(gif)) {
        state.SkipWithError("gifsicle is not installed, or BM_GifWriter did not run first");
        return;
    }
    for (auto _ : state) {
        QProcess p;
        p.start(gifsicle, {QStringLiteral("-O1"), gif, QStringLiteral("-o"), folder().filePath("optimised.gif")});
        if (!p.waitForFinished(600000) || p.exitCode() != 0) {
            state.SkipWithError("gifsicle failed");
            return;
        }
    }
    state.counters["frames_per_second"] =
        benchmark::Counter(double(Frames) * double(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["file_MiB"] = double(QFileInfo(folder().filePath("optimised.gif")).size()) / 1048576.0;
}

} // namespace

BENCHMARK(BM_GifWriter)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(BM_Mp4Writer)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(BM_RenderFrames)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_GifsicleO1)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);

BENCHMARK_MAIN();
