#include "genimagewidget.h"

#include "generators/generatorgl.h"

#include <QElapsedTimer>
#include <QMouseEvent>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QOpenGLFunctions_2_1>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

// The generator draws with the caller's projection; the preview's is the identity.
void resetProjection(QOpenGLContext *context)
{
    if (auto *f = context->versionFunctions<QOpenGLFunctions_2_1>(); f && f->initializeOpenGLFunctions()) {
        f->glMatrixMode(GL_PROJECTION);
        f->glLoadIdentity();
    }
}

// The linear reduction of a frame drawn while the view moves.
constexpr int reduction = 4;
// How long the mouse must rest before the view is drawn in full again.
constexpr int refineDelayMs = 150;

} // namespace

GenImageWidget::GenImageWidget(QWidget *parent)
    : QOpenGLWidget(parent), m_gl(std::make_unique<GeneratorGL>())
{
    // Square: the view is as wide as it is high, and the drag rule measures in the widget's sides.
    setFixedSize(448, 448);
    setCursor(Qt::OpenHandCursor);
    m_refine.setSingleShot(true);
    m_refine.setInterval(refineDelayMs);
    connect(&m_refine, &QTimer::timeout, this, [this]() {
        m_moving = false;
        update();
    });
}

GenImageWidget::~GenImageWidget()
{
    // The base class destroys the context after this object's members are gone: free them now
    // and let the context's farewell find nothing left to do.
    if (context())
        disconnect(context(), nullptr, this, nullptr);
    releaseGL();
}

void GenImageWidget::setSettings(const GeneratorSettings &settings)
{
    m_settings = settings;
    update();
}

void GenImageWidget::setPalette(const Palette<uint> &palette)
{
    m_palette = palette;
    m_gl->setPalette(palette);
    update();
}

void GenImageWidget::initializeGL()
{
    // The objects belong to this context: free them before it goes, whenever that is.
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &GenImageWidget::releaseGL,
            Qt::UniqueConnection);
    m_gl->setPalette(m_palette);
}

void GenImageWidget::releaseGL()
{
    if (!context())
        return;
    makeCurrent();
    m_reducedFbo.reset();
    m_gl->release();
    doneCurrent();
}

void GenImageWidget::resizeGL(int w, int h)
{
    context()->functions()->glViewport(0, 0, w, h);
}

void GenImageWidget::paintGL()
{
    if (m_moving && m_frameMs > m_reduceAboveMs && drawReduced()) {
        m_lastReduced = true;
        return;
    }
    drawFull();
    m_lastReduced = false;
}

void GenImageWidget::drawFull()
{
    QOpenGLFunctions *f = context()->functions();
    const qreal ratio = devicePixelRatioF();
    QElapsedTimer timer;
    timer.start();
    f->glViewport(0, 0, int(width() * ratio), int(height() * ratio));
    f->glClearColor(0, 0, 0, 1);
    f->glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    resetProjection(context());
    m_error.clear();
    if (!m_gl->draw(m_settings, false, 1, 1, &m_error) && m_settings.precision == GeneratorSettings::Double) {
        // Without double precision in the driver the preview shows the single-precision view;
        // OK still renders in double, on the processor if need be.
        GeneratorSettings single = m_settings;
        single.precision = GeneratorSettings::Single;
        QString error;
        m_gl->draw(single, false, 1, 1, &error);
    }
    f->glFinish();
    m_frameMs = double(timer.nsecsElapsed()) / 1e6;
}

bool GenImageWidget::drawReduced()
{
    if (!QOpenGLFramebufferObject::hasOpenGLFramebufferBlit())
        return false;
    QOpenGLFunctions *f = context()->functions();
    const qreal ratio = devicePixelRatioF();
    const QSize full(int(width() * ratio), int(height() * ratio));
    const QSize small((full.width() + reduction - 1) / reduction, (full.height() + reduction - 1) / reduction);
    if (!m_reducedFbo || m_reducedFbo->size() != small)
        m_reducedFbo = std::make_unique<QOpenGLFramebufferObject>(small);
    if (!m_reducedFbo->isValid() || !m_reducedFbo->bind())
        return false;
    f->glViewport(0, 0, small.width(), small.height());
    f->glClearColor(0, 0, 0, 1);
    f->glClear(GL_COLOR_BUFFER_BIT);
    resetProjection(context());
    GeneratorSettings settings = m_settings;
    QString error;
    if (!m_gl->draw(settings, false, 1, 1, &error)) {
        settings.precision = GeneratorSettings::Single;
        m_gl->draw(settings, false, 1, 1, &error);
    }
    m_reducedFbo->release();
    QOpenGLFramebufferObject::blitFramebuffer(nullptr, QRect(QPoint(), full), m_reducedFbo.get(),
                                              QRect(QPoint(), small), GL_COLOR_BUFFER_BIT, GL_NEAREST);
    f->glViewport(0, 0, full.width(), full.height());
    return true;
}

double GenImageWidget::measureFrame(bool reduced)
{
    makeCurrent();
    double ms = -1;
    if (reduced) {
        QElapsedTimer timer;
        timer.start();
        if (drawReduced()) {
            context()->functions()->glFinish();
            ms = double(timer.nsecsElapsed()) / 1e6;
        }
    } else {
        drawFull();
        ms = m_frameMs;
    }
    doneCurrent();
    return ms;
}

QPointF GenImageWidget::offsetChange(double fx, double fy) const
{
    return {fx * 3.0 / m_settings.zoom, -fy * 3.0 / m_settings.zoom};
}

void GenImageWidget::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return QOpenGLWidget::mousePressEvent(event);
    m_anchor = event->pos();
    setCursor(Qt::ClosedHandCursor);
}

void GenImageWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_anchor || !(event->buttons() & Qt::LeftButton))
        return QOpenGLWidget::mouseMoveEvent(event);
    dragTo(event->pos());
}

void GenImageWidget::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_anchor)
        return QOpenGLWidget::mouseReleaseEvent(event);
    dragTo(event->pos());
    m_anchor.reset();
    setCursor(Qt::OpenHandCursor);
}

void GenImageWidget::dragTo(const QPoint &position)
{
    const QPoint d = position - *m_anchor;
    m_anchor = position;
    if (d.isNull() || width() <= 0 || height() <= 0)
        return;
    const QPointF change = offsetChange(double(d.x()) / width(), double(d.y()) / height());
    m_settings.xoff += change.x();
    m_settings.yoff += change.y();
    if (const double limit = offsetLimit(); limit > 0) {
        m_settings.xoff = std::clamp(m_settings.xoff, -limit, limit);
        m_settings.yoff = std::clamp(m_settings.yoff, -limit, limit);
    }
    moved();
}

void GenImageWidget::wheelEvent(QWheelEvent *event)
{
    const double steps = event->angleDelta().y() / 120.0;
    if (!zooms() || steps == 0)
        return QOpenGLWidget::wheelEvent(event);
    m_settings.zoom = std::clamp(m_settings.zoom * std::pow(1.25, steps), 1e-6, 1e12);
    moved();
}

void GenImageWidget::moved()
{
    m_moving = true;
    m_refine.start();
    update();
    emit viewChanged(m_settings.xoff, m_settings.yoff, m_settings.zoom);
}
