#include "generators/imagegenerator.h"

#include "document/imagelimits.h"
#include "generators/fractalevaluator.h"
#include "generators/generatoroutput.h"
#include "generators/offscreenrenderer.h"
#include "generators/patternevaluator.h"

#include <QRgb>

#include <new>

namespace ImageGenerator {

namespace {

const QString failureTitle = QStringLiteral("Cannot render the image");

GeneratorRaster renderOnProcessor(const GeneratorSettings &settings, const Progress &progress)
{
    const GeneratorGrid grid{settings.xsize, settings.ysize};
    GeneratorRaster raster;
    raster.width = grid.width;
    raster.height = grid.height;
    try {
        if (settings.isEscapeTime()) {
            if (!FractalEvaluator::values(settings, grid, raster.values, progress))
                throw Cancelled();
        } else if (!settings.usesPalette()) {
            // The gasket's values are its colours read as any framebuffer is read.
            raster.colours = FractalEvaluator::apollonian(settings, grid);
            if (raster.colours.isNull())
                throw std::bad_alloc();
            raster.values.resize(size_t(grid.width) * size_t(grid.height));
            for (int y = 0; y < grid.height; ++y) {
                const auto *line = reinterpret_cast<const QRgb *>(raster.colours.constScanLine(y));
                float *row = raster.values.data() + size_t(y) * size_t(grid.width);
                for (int x = 0; x < grid.width; ++x)
                    row[x] = float(GeneratorOutput::decode(
                        {uint8_t(qRed(line[x])), uint8_t(qGreen(line[x])), uint8_t(qBlue(line[x]))}));
            }
            return raster;
        } else {
            PatternEvaluator::values(settings, grid, raster.values);
        }
    } catch (const std::bad_alloc &) {
        throw outOfMemoryFailure();
    }
    // The framebuffer keeps 16 bits of a value; so does the processor's picture.
    for (float &v : raster.values)
        v = GeneratorOutput::readBack(v);
    return raster;
}

} // namespace

Cancelled::Cancelled()
    : DescribedException(QStringLiteral("Cancelled"), QStringLiteral("The image was not generated."))
{
}

Renderer rendererFromText(const QString &word)
{
    if (word == QLatin1String("auto"))
        return Renderer::Auto;
    if (word == QLatin1String("gl"))
        return Renderer::Gl;
    if (word == QLatin1String("cpu"))
        return Renderer::Cpu;
    throw DescribedException(QStringLiteral("Invalid settings"),
                             QStringLiteral("The renderer \"%1\" is none of auto, gl and cpu.").arg(elidedValue(word)));
}

bool usesOpenGL(Renderer renderer)
{
    return renderer == Renderer::Gl || (renderer == Renderer::Auto && OffscreenRenderer::available());
}

GeneratorRaster render(const GeneratorSettings &settings, const Palette<uint> &palette, Renderer renderer,
                       const Progress &progress)
{
    if (!ImageLimits::fits(settings.xsize, settings.ysize))
        throw DescribedException(failureTitle, ImageLimits::tooLarge(settings.xsize, settings.ysize));
    if (renderer == Renderer::Gl) {
        QString reason;
        if (!OffscreenRenderer::available(&reason))
            throw DescribedException(QStringLiteral("OpenGL unavailable"),
                                     QStringLiteral("OpenGL cannot render here: %1").arg(reason));
    }
    if (usesOpenGL(renderer)) {
        try {
            return OffscreenRenderer::render(settings, palette);
        } catch (const OffscreenRenderer::ProgramFailure &) {
            // A driver without double precision in its shaders: the processor computes the same
            // picture in double.
            if (settings.precision != GeneratorSettings::Double)
                throw;
        }
    }
    return renderOnProcessor(settings, progress);
}

GeneratorRaster render(const GeneratorSettings &settings, const Palette<uint> &palette, Renderer renderer)
{
    return render(settings, palette, renderer, Progress());
}

DocumentImage generate(const GeneratorSettings &settings, const Palette<uint> &palette, Renderer renderer,
                       const Progress &progress)
{
    const GeneratorRaster raster = render(settings, palette, renderer, progress);
    DocumentImage image = GeneratorOutput::toImage(raster, palette, settings.target);
    if (image.isNull())
        throw outOfMemoryFailure();
    return image;
}

} // namespace ImageGenerator
