#include "imagelabel.h"

#include <QPainter>
#include <QWheelEvent>

ImageLabel::ImageLabel(QWidget *parent) : QLabel(parent) {}

void ImageLabel::wheelEvent(QWheelEvent *event)
{
    const QPoint pixels = event->pixelDelta();
    const QPoint degrees = event->angleDelta();
    if (!pixels.isNull()) {
        emit zoomChanged(pixels.y());
    } else if (!degrees.isNull()) {
        // The angle delta comes in eighths of a degree; a notch of a common mouse wheel is 15 degrees.
        emit zoomChanged(degrees.y() * 0.125 / 15);
    }
    event->accept();
}

void ImageLabel::paintEvent(QPaintEvent *event)
{
    const QPixmap picture = pixmap(Qt::ReturnByValue);
    // The label's own scaling smooths, so it only draws what is not scaled.
    if (!hasScaledContents() || picture.isNull()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    drawFrame(&painter);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawPixmap(contentsRect(), picture);
}
