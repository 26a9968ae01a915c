#include "noisewidget.h"

QPointF NoiseWidget::offsetChange(double fx, double fy) const
{
    // The sample point is texture coordinate x step + offset, with v growing upwards.
    return {-fx * settings().xadd, fy * settings().yadd};
}
