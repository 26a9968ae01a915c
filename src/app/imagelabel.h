#pragma once

#include <QLabel>

// The label that shows the document's picture; a wheel turn asks the window for another zoom.
// Scaled pictures are drawn nearest-neighbour: a zoomed pixel stays one sharp block of its colour,
// which is what pixel art and a check of single indexes need.
class ImageLabel : public QLabel
{
    Q_OBJECT
public:
    explicit ImageLabel(QWidget *parent = nullptr);

signals:
    // Touch pads report pixels, mice report notches (positive away from the user).
    void zoomChanged(double val);

protected:
    void wheelEvent(QWheelEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};
