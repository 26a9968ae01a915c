#pragma once

#include "img_gen/genimagedialog.h"

// "!!!Gradient...": a radial, linear or rectangular gradient through the palette.
class GradientDialog : public GenImageDialog
{
    Q_OBJECT
public:
    GradientDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent = nullptr);
};
