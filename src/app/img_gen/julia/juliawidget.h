#pragma once

#include "img_gen/genimagewidget.h"

// The preview of the Julia family: 3 units wide and 2 high at zoom 1; the picture follows the mouse.
class JuliaWidget : public GenImageWidget
{
    Q_OBJECT
public:
    using GenImageWidget::GenImageWidget;

protected:
    QPointF offsetChange(double fx, double fy) const override;
};
