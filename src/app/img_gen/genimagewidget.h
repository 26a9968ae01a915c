#pragma once

#include "generators/generatorsettings.h"
#include "palette/palette.h"

#include <QOpenGLWidget>
#include <QPoint>
#include <QPointF>
#include <QTimer>

#include <memory>
#include <optional>

class GeneratorGL;
class QOpenGLFramebufferObject;

// The live picture of a generator dialog: the generator's shaders drawn through the document's
// palette, the very drawing the off-screen render of OK makes, only in colour. Dragging with the
// left button moves the view, the wheel zooms; both report the new view to the dialog. A view
// that takes long to draw is drawn at a quarter of the size while the mouse moves and drawn in
// full once it rests, so dragging stays fluid however deep the view.
class GenImageWidget : public QOpenGLWidget
{
    Q_OBJECT
public:
    explicit GenImageWidget(QWidget *parent = nullptr);
    ~GenImageWidget() override;

    void setSettings(const GeneratorSettings &settings);
    const GeneratorSettings &settings() const { return m_settings; }
    void setPalette(const Palette<uint> &palette);

    // How long the last full-size frame took to draw, glFinish included, in milliseconds
    // (negative before the first one).
    double lastFrameMs() const { return m_frameMs; }
    // Whether the last frame was drawn at the reduced size.
    bool lastFrameReduced() const { return m_lastReduced; }
    // The compiler's or linker's complaint when the generator's program could not be built.
    QString lastError() const { return m_error; }
    // Frames slower than this are drawn reduced while the view moves.
    void setReduceAbove(double milliseconds) { m_reduceAboveMs = milliseconds; }
    // Draws one frame now, in full or as while the view moves (the context must exist: the widget
    // has been shown), and returns its time in milliseconds, glFinish included.
    double measureFrame(bool reduced = false);

signals:
    void viewChanged(double xoff, double yoff, double zoom);

protected:
    // The change of (xoff, yoff) for a drag over the fraction (fx, fy) of the widget's width and
    // height (right and down positive). The Mandelbrot rule by default: the view is 3 units
    // across at zoom 1 and the picture follows the mouse.
    virtual QPointF offsetChange(double fx, double fy) const;
    // Offsets are limited to -limit..limit after a drag; 0 leaves them free.
    virtual double offsetLimit() const { return 4.0; }
    // Whether the wheel changes the zoom (generators without a zoom leave it alone).
    virtual bool zooms() const { return true; }

    void initializeGL() override;
    void resizeGL(int w, int h) override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void dragTo(const QPoint &position);
    void moved();
    void drawFull();
    bool drawReduced();
    void releaseGL();

    GeneratorSettings m_settings;
    Palette<uint> m_palette;
    std::unique_ptr<GeneratorGL> m_gl;
    std::unique_ptr<QOpenGLFramebufferObject> m_reducedFbo;
    std::optional<QPoint> m_anchor;
    QTimer m_refine;
    QString m_error;
    double m_frameMs = -1;
    double m_reduceAboveMs = 40;
    bool m_moving = false;
    bool m_lastReduced = false;
};
