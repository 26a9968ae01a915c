#include "generators/offscreenrenderer.h"

#include "document/imagelimits.h"
#include "generators/generatorgl.h"
#include "generators/generatoroutput.h"

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLFunctions_2_1>

#include <algorithm>
#include <memory>

namespace OffscreenRenderer {

namespace {

const QString failureTitle = QStringLiteral("Cannot render the image");

constexpr int largestTile = 4096;

QSurfaceFormat requestedFormat(bool fp64)
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setProfile(QSurfaceFormat::CompatibilityProfile);
    // Without it a request for 4.0 is taken as forward-compatible and gets a core profile, which
    // has no fixed-function matrices.
    format.setOption(QSurfaceFormat::DeprecatedFunctions);
    format.setRedBufferSize(8);
    format.setGreenBufferSize(8);
    format.setBlueBufferSize(8);
    format.setAlphaBufferSize(8);
    // Double precision in the shaders needs GLSL 4.00 and the fixed-function quad a compatibility
    // context. Asking for version 4.0 gets a core context from Mesa's GLX (no fixed function), while
    // the default is its newest compatibility context; where that is older than 4.0 the
    // double-precision program fails to build and the caller evaluates on the processor.
    (void)fp64;
    return format;
}

// A current context on its own surface, given up when it goes.
struct Session
{
    QOffscreenSurface surface;
    QOpenGLContext context;
    bool current = false;

    ~Session()
    {
        if (current)
            context.doneCurrent();
    }

    bool open(bool fp64, QString *reason)
    {
        context.setFormat(requestedFormat(fp64));
        if (!context.create() && fp64) {
            context.setFormat(requestedFormat(false));
            context.create();
        }
        if (!context.isValid()) {
            *reason = QStringLiteral("No OpenGL context can be made on this platform (%1).")
                          .arg(QGuiApplication::platformName());
            return false;
        }
        surface.setFormat(context.format());
        surface.create();
        if (!surface.isValid()) {
            *reason = QStringLiteral("No off-screen surface can be made on this platform (%1).")
                          .arg(QGuiApplication::platformName());
            return false;
        }
        current = context.makeCurrent(&surface);
        if (!current) {
            *reason = QStringLiteral("The OpenGL context cannot be made current.");
            return false;
        }
        if (context.isOpenGLES() || !context.versionFunctions<QOpenGLFunctions_2_1>()) {
            *reason = QStringLiteral("The OpenGL here lacks the functions of OpenGL 2.1.");
            return false;
        }
        if (!context.functions()->hasOpenGLFeature(QOpenGLFunctions::Framebuffers)) {
            *reason = QStringLiteral("The OpenGL here has no framebuffer objects.");
            return false;
        }
        return true;
    }
};

bool guiApplication(QString *reason)
{
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return true;
    *reason = QStringLiteral("OpenGL needs a graphical application, and this program runs without one.");
    return false;
}

// The framebuffer of one tile size, freed with its renderbuffers.
struct Framebuffer
{
    QOpenGLFunctions *f = nullptr;
    GLuint fbo = 0, colour = 0, depth = 0;

    ~Framebuffer()
    {
        if (!f)
            return;
        f->glBindFramebuffer(GL_FRAMEBUFFER, 0);
        if (colour)
            f->glDeleteRenderbuffers(1, &colour);
        if (depth)
            f->glDeleteRenderbuffers(1, &depth);
        if (fbo)
            f->glDeleteFramebuffers(1, &fbo);
    }

    bool create(QOpenGLFunctions *functions, int w, int h)
    {
        f = functions;
        f->glGenFramebuffers(1, &fbo);
        f->glBindFramebuffer(GL_FRAMEBUFFER, fbo);
        f->glGenRenderbuffers(1, &colour);
        f->glBindRenderbuffer(GL_RENDERBUFFER, colour);
        f->glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, w, h);
        f->glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colour);
        f->glGenRenderbuffers(1, &depth);
        f->glBindRenderbuffer(GL_RENDERBUFFER, depth);
        f->glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, w, h);
        f->glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth);
        return f->glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    }
};

} // namespace

bool available(QString *reason)
{
    QString why;
    bool ok = guiApplication(&why);
    if (ok) {
        // The answer cannot change while the application runs.
        static QString cachedReason;
        static const bool cached = [] {
            Session session;
            return session.open(false, &cachedReason);
        }();
        ok = cached;
        why = cachedReason;
    }
    if (reason)
        *reason = why;
    return ok;
}

GeneratorRaster render(const GeneratorSettings &settings, const Palette<uint> &palette, const Options &options)
{
    const int w = settings.xsize;
    const int h = settings.ysize;
    if (!ImageLimits::fits(w, h))
        throw DescribedException(failureTitle, ImageLimits::tooLarge(w, h));
    QString reason;
    if (!available(&reason))
        throw DescribedException(failureTitle, reason);
    Session session;
    if (!session.open(settings.precision == GeneratorSettings::Double, &reason))
        throw DescribedException(failureTitle, reason);
    QOpenGLFunctions *f = session.context.functions();
    auto *legacy = session.context.versionFunctions<QOpenGLFunctions_2_1>();
    legacy->initializeOpenGLFunctions();

    // Tiles keep the renderbuffers within what the driver allows; each tile moves the projection
    // over the whole picture's quad, so its pixels sample exactly what an undivided render would.
    GLint maxRenderbuffer = 0;
    GLint viewportDims[2] = {0, 0};
    f->glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &maxRenderbuffer);
    f->glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewportDims);
    int tile = std::min({largestTile, int(maxRenderbuffer), int(viewportDims[0]), int(viewportDims[1])});
    if (options.tileSize > 0)
        tile = std::min(tile, options.tileSize);
    if (tile <= 0)
        throw DescribedException(failureTitle, QStringLiteral("The OpenGL here allows no renderbuffer."));
    const int tileW = std::min(w, tile);
    const int tileH = std::min(h, tile);

    GeneratorRaster raster;
    raster.width = w;
    raster.height = h;
    try {
        raster.values.assign(size_t(w) * size_t(h), 0.0f);
        if (!settings.usesPalette()) {
            raster.colours = QImage(w, h, QImage::Format_ARGB32);
            if (raster.colours.isNull())
                throw std::bad_alloc();
        }
    } catch (const std::bad_alloc &) {
        throw outOfMemoryFailure();
    }

    Framebuffer framebuffer;
    if (!framebuffer.create(f, tileW, tileH))
        throw DescribedException(failureTitle, QStringLiteral("The framebuffer of %1 x %2 pixels cannot be made.")
                                                   .arg(tileW)
                                                   .arg(tileH));
    GeneratorGL gl;
    gl.setPalette(palette);
    GeneratorSettings drawn = settings;
    std::vector<uint8_t> pixels(size_t(tileW) * size_t(tileH) * 4);
    f->glPixelStorei(GL_PACK_ALIGNMENT, 1);
    f->glDisable(GL_DEPTH_TEST);
    f->glDisable(GL_BLEND);
    for (int y0 = 0; y0 < h; y0 += tileH) { // y0 counts rows from the bottom, as OpenGL does
        for (int x0 = 0; x0 < w; x0 += tileW) {
            const int tw = std::min(tileW, w - x0);
            const int th = std::min(tileH, h - y0);
            f->glViewport(0, 0, tw, th);
            legacy->glMatrixMode(GL_PROJECTION);
            legacy->glLoadIdentity();
            if (tw != w || th != h)
                legacy->glOrtho(-1.0 + 2.0 * x0 / w, -1.0 + 2.0 * (x0 + tw) / w, -1.0 + 2.0 * y0 / h,
                                -1.0 + 2.0 * (y0 + th) / h, -1.0, 1.0);
            QString error;
            const bool drawnOk = options.fragmentShader.isEmpty()
                                     ? gl.draw(drawn, true, w, h, &error)
                                     : gl.drawWith(options.fragmentShader, drawn, true, w, h, &error);
            if (!drawnOk) {
                gl.release();
                throw ProgramFailure(failureTitle, error);
            }
            f->glReadPixels(0, 0, tw, th, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
            for (int j = 0; j < th; ++j) {
                const int row = h - 1 - (y0 + j);
                const uint8_t *p = pixels.data() + size_t(j) * size_t(tw) * 4;
                float *values = raster.values.data() + size_t(row) * size_t(w) + size_t(x0);
                QRgb *colours = raster.colours.isNull()
                                    ? nullptr
                                    : reinterpret_cast<QRgb *>(raster.colours.scanLine(row)) + x0;
                for (int i = 0; i < tw; ++i, p += 4) {
                    values[i] = float(GeneratorOutput::decode({p[0], p[1], p[2]}));
                    if (colours)
                        colours[i] = qRgba(p[0], p[1], p[2], p[3]);
                }
            }
        }
    }
    gl.release();
    return raster;
}

} // namespace OffscreenRenderer
