#include "imagelabel.h"

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
