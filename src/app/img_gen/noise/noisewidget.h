#pragma once

#include "img_gen/genimagewidget.h"

// The noise preview, dragged in the noise's own units: the widget spans xadd x yadd of them, and
// the picture follows the mouse. Noise has no zoom; the steps scale it.
class NoiseWidget : public GenImageWidget
{
    Q_OBJECT
public:
    using GenImageWidget::GenImageWidget;

protected:
    QPointF offsetChange(double fx, double fy) const override;
    double offsetLimit() const override { return 0; }
    bool zooms() const override { return false; }
};
