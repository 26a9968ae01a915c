#include "apollonianwidget.h"

QPointF ApollonianWidget::offsetChange(double fx, double fy) const
{
    return {fx * 2.0 / settings().zoom, -fy * 2.0 / settings().zoom};
}
