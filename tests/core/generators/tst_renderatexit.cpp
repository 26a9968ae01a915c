// A program that renders with OpenGL and ends: the context the renderer keeps for the next render
// must go without a crash (and, under the sanitizers, without a leak) whether the program returns
// from main without an event loop (the command line) or quits its loop (the window). With "quit"
// the loop renders once more, and a render after the loop (when the session kept so far is gone)
// makes a new one, which must draw the same picture. Exits 0 when all went well.

#include "generators/imagegenerator.h"
#include "palette/standardpalettes.h"

#include <QGuiApplication>
#include <QTimer>

#include <cstdio>
#include <cstring>

namespace {

bool renderOnce(GeneratorRaster &previous)
{
    GeneratorSettings s = GeneratorSettings::defaults(QStringLiteral("mandelbrot"));
    s.xsize = 48;
    s.ysize = 40;
    try {
        const GeneratorRaster raster = ImageGenerator::render(s, grayscalePalette(), ImageGenerator::Renderer::Gl);
        if (raster.width != s.xsize || raster.height != s.ysize || raster.values.size() != size_t(48 * 40)) {
            std::fprintf(stderr, "a render of %d x %d pixels\n", raster.width, raster.height);
            return false;
        }
        if (!previous.values.empty()
            && std::memcmp(previous.values.data(), raster.values.data(), raster.values.size() * sizeof(float)) != 0) {
            std::fprintf(stderr, "a render that differs from the first one\n");
            return false;
        }
        previous = raster;
        return true;
    } catch (const DescribedException &e) {
        std::fprintf(stderr, "%s\n", qPrintable(e.message()));
        return false;
    }
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    const bool loop = argc > 1 && std::strcmp(argv[1], "quit") == 0;
    GeneratorRaster first;
    if (!renderOnce(first))
        return 1;
    if (loop) {
        bool ok = false;
        QTimer::singleShot(0, &app, [&] {
            ok = renderOnce(first);
            app.quit();
        });
        if (app.exec() != 0 || !ok)
            return 1;
        if (!renderOnce(first))
            return 1;
    }
    return 0;
}
