#include "juliawidget.h"

QPointF JuliaWidget::offsetChange(double fx, double fy) const
{
    return {fx * 3.0 / settings().zoom, -fy * 2.0 / settings().zoom};
}
