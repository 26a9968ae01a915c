#pragma once

#include "img_gen/genimagedialog.h"

// "Mandelbrot...": the Mandelbrot set's view and iteration count.
class MandelbrotDialog : public GenImageDialog
{
    Q_OBJECT
public:
    MandelbrotDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent = nullptr);
};
