#include "generators/offscreenrenderer.h"

#include "document/imagelimits.h"
#include "generators/generatorgl.h"
#include "generators/generatoroutput.h"

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QOpenGLFunctions_2_1>
#include <QPointer>
#include <QThread>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace OffscreenRenderer {

namespace {

const QString failureTitle = QStringLiteral("Cannot render the image");

constexpr int tileLimit = 4096;

QSurfaceFormat requestedFormat()
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
    return format;
}

// One row of a read-back (RGBA bytes, as a little-endian word each) decoded as
// GeneratorOutput::decode does: (R x 65536 + G x 256 + B) / 65536, which a float holds exactly
// (24 bits), written as a loop the compiler can vectorise.
void decodeRow(const uint32_t *pixels, int count, float *values)
{
    static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "the read-back words are taken as little-endian");
    for (int i = 0; i < count; ++i) {
        const uint32_t p = pixels[i];
        const uint32_t fixed = ((p & 0xFFu) << 16) | (p & 0xFF00u) | ((p >> 16) & 0xFFu);
        values[i] = float(int32_t(fixed)) * (1.0f / 65536.0f);
    }
}

// The gasket's own colours of one row of a read-back.
void copyColours(const uint32_t *pixels, int count, QRgb *colours)
{
    for (int i = 0; i < count; ++i) {
        const uint32_t p = pixels[i];
        colours[i] = qRgba(int(p & 0xFFu), int((p >> 8) & 0xFFu), int((p >> 16) & 0xFFu), int(p >> 24));
    }
}

bool guiApplication(QString *reason)
{
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return true;
    *reason = QStringLiteral("OpenGL needs a graphical application, and this program runs without one.");
    return false;
}

// The framebuffer of one tile size; the context it was made in must be current to free it. One
// quad without depth test is drawn into it, so it has no depth buffer to clear.
struct Framebuffer
{
    QOpenGLFunctions *f = nullptr;
    GLuint fbo = 0, colour = 0;
    int width = 0, height = 0;

    void release()
    {
        if (!f)
            return;
        f->glBindFramebuffer(GL_FRAMEBUFFER, 0);
        if (colour)
            f->glDeleteRenderbuffers(1, &colour);
        if (fbo)
            f->glDeleteFramebuffers(1, &fbo);
        *this = Framebuffer();
    }

    // Bound and complete at w x h, made again only when the size changes.
    bool use(QOpenGLFunctions *functions, int w, int h)
    {
        if (fbo && w == width && h == height) {
            f->glBindFramebuffer(GL_FRAMEBUFFER, fbo);
            return true;
        }
        release();
        f = functions;
        width = w;
        height = h;
        f->glGenFramebuffers(1, &fbo);
        f->glBindFramebuffer(GL_FRAMEBUFFER, fbo);
        f->glGenRenderbuffers(1, &colour);
        f->glBindRenderbuffer(GL_RENDERBUFFER, colour);
        f->glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, w, h);
        f->glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colour);
        if (f->glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE)
            return true;
        release();
        return false;
    }
};

// A context on its own surface with what renders in it keep between renders: the framebuffer and
// the generators' programs. Creating a context and compiling a program cost a software driver
// more than drawing a simple generator, so a session lasts as long as it can.
struct Session
{
    QOffscreenSurface surface;
    QOpenGLContext context;
    Framebuffer framebuffer;
    GeneratorGL gl;
    int largestTile = 0;

    ~Session()
    {
        // The GL objects go with the context; freeing them first keeps the driver's books even.
        if (context.isValid() && context.makeCurrent(&surface)) {
            framebuffer.release();
            gl.release();
            context.doneCurrent();
        }
    }

    bool open(QString *reason)
    {
        context.setFormat(requestedFormat());
        if (!context.create()) {
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
        if (!context.makeCurrent(&surface)) {
            *reason = QStringLiteral("The OpenGL context cannot be made current.");
            return false;
        }
        if (context.isOpenGLES() || !context.versionFunctions<QOpenGLFunctions_2_1>()) {
            *reason = QStringLiteral("The OpenGL here lacks the functions of OpenGL 2.1.");
            return false;
        }
        QOpenGLFunctions *f = context.functions();
        if (!f->hasOpenGLFeature(QOpenGLFunctions::Framebuffers)) {
            *reason = QStringLiteral("The OpenGL here has no framebuffer objects.");
            return false;
        }
        // Tiles keep the renderbuffers within what the driver allows.
        GLint maxRenderbuffer = 0;
        GLint viewportDims[2] = {0, 0};
        f->glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &maxRenderbuffer);
        f->glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewportDims);
        largestTile = std::min({tileLimit, int(maxRenderbuffer), int(viewportDims[0]),
                                int(viewportDims[1])});
        return true;
    }

    // Current again, unless the context was lost or cannot be used any more.
    bool resume() { return context.isValid() && context.makeCurrent(&surface); }
};

// The GUI thread's session, kept from the first render to the application's end. It must go
// while the platform that made it is still there: at aboutToQuit when the event loop ran, else
// with the application's children, which ~QObject deletes after ~QGuiApplication and
// ~QCoreApplication have run but before the private part of the application deletes the
// platform integration (which is when Qt frees its own global share context too).
std::unique_ptr<Session> &guiSession()
{
    static std::unique_ptr<Session> session;
    return session;
}

class SessionKeeper : public QObject
{
public:
    explicit SessionKeeper(QObject *application) : QObject(application)
    {
        connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, [] { guiSession().reset(); });
    }
    ~SessionKeeper() override { guiSession().reset(); }
};

std::unique_ptr<Session> openSession(QString *reason)
{
    auto session = std::make_unique<Session>();
    if (!session->open(reason))
        return nullptr;
    return session;
}

// A current session for this thread. On the GUI thread it is the kept one (made again when its
// context was lost); another thread gets one for this render only, since an off-screen surface
// may be a hidden window, which only the GUI thread may create and destroy.
Session *currentSession(std::unique_ptr<Session> &scoped, QString *reason)
{
    QCoreApplication *application = QCoreApplication::instance();
    if (QThread::currentThread() != application->thread()) {
        scoped = openSession(reason);
        return scoped.get();
    }
    std::unique_ptr<Session> &kept = guiSession();
    if (kept && kept->resume())
        return kept.get();
    kept.reset();
    kept = openSession(reason);
    static QPointer<SessionKeeper> keeper;
    if (kept && !keeper)
        keeper = new SessionKeeper(application);
    return kept.get();
}

// Puts back the context that was current before a render (none, or the preview's), so that a
// render does not change what the caller draws into.
class ContextRestorer
{
public:
    ContextRestorer()
        : m_context(QOpenGLContext::currentContext()), m_surface(m_context ? m_context->surface() : nullptr)
    {
    }
    ~ContextRestorer()
    {
        QOpenGLContext *now = QOpenGLContext::currentContext();
        if (m_context && m_surface)
            m_context->makeCurrent(m_surface);
        else if (now)
            now->doneCurrent();
    }

private:
    QPointer<QOpenGLContext> m_context;
    QSurface *m_surface;
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
            ContextRestorer restorer;
            std::unique_ptr<Session> scoped;
            return currentSession(scoped, &cachedReason) != nullptr;
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
    ContextRestorer restorer;
    std::unique_ptr<Session> scoped;
    Session *session = currentSession(scoped, &reason);
    if (!session)
        throw DescribedException(failureTitle, reason);
    QOpenGLFunctions *f = session->context.functions();
    auto *legacy = session->context.versionFunctions<QOpenGLFunctions_2_1>();
    legacy->initializeOpenGLFunctions();

    // Each tile moves the projection over the whole picture's quad, so its pixels sample exactly
    // what an undivided render would.
    int tile = session->largestTile;
    if (options.tileSize > 0)
        tile = std::min(tile, options.tileSize);
    if (tile <= 0)
        throw DescribedException(failureTitle, QStringLiteral("The OpenGL here allows no renderbuffer."));
    const int tileW = std::min(w, tile);
    const int tileH = std::min(h, tile);

    GeneratorRaster raster;
    raster.width = w;
    raster.height = h;
    std::vector<uint32_t> pixels;
    try {
        raster.values.assign(size_t(w) * size_t(h), 0.0f);
        if (!settings.usesPalette()) {
            raster.colours = QImage(w, h, QImage::Format_ARGB32);
            if (raster.colours.isNull())
                throw std::bad_alloc();
        }
        pixels.resize(size_t(tileW) * size_t(tileH));
    } catch (const std::bad_alloc &) {
        throw outOfMemoryFailure();
    }

    if (!session->framebuffer.use(f, tileW, tileH))
        throw DescribedException(failureTitle, QStringLiteral("The framebuffer of %1 x %2 pixels cannot be made.")
                                                   .arg(tileW)
                                                   .arg(tileH));
    GeneratorGL &gl = session->gl;
    gl.setPalette(palette);
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
                                     ? gl.draw(settings, true, w, h, &error)
                                     : gl.drawWith(options.fragmentShader, settings, true, w, h, &error);
            if (!drawnOk)
                throw ProgramFailure(failureTitle, error);
            f->glReadPixels(0, 0, tw, th, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
            for (int j = 0; j < th; ++j) {
                const int row = h - 1 - (y0 + j);
                decodeRow(pixels.data() + size_t(j) * size_t(tw), tw,
                          raster.values.data() + size_t(row) * size_t(w) + size_t(x0));
                if (!raster.colours.isNull())
                    copyColours(pixels.data() + size_t(j) * size_t(tw), tw,
                                reinterpret_cast<QRgb *>(raster.colours.scanLine(row)) + x0);
            }
        }
    }
    return raster;
}

void release()
{
    // Only the thread that made the session may free it.
    const QCoreApplication *application = QCoreApplication::instance();
    if (!application || QThread::currentThread() != application->thread())
        return;
    ContextRestorer restorer;
    guiSession().reset();
}

} // namespace OffscreenRenderer
