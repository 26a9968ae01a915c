#pragma once

#include "img_gen/genimagewidget.h"

// The Mandelbrot preview: 3 units across at zoom 1, dragged by the framework's rule.
class MandelbrotWidget : public GenImageWidget
{
    Q_OBJECT
public:
    using GenImageWidget::GenImageWidget;
};
