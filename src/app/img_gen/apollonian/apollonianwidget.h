#pragma once

#include "img_gen/genimagewidget.h"

// The gasket's preview: 2 units across at zoom 1, the picture follows the mouse.
class ApollonianWidget : public GenImageWidget
{
    Q_OBJECT
public:
    using GenImageWidget::GenImageWidget;

protected:
    QPointF offsetChange(double fx, double fy) const override;
};
