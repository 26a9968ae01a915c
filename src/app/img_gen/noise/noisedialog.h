#pragma once

#include "img_gen/genimagedialog.h"

// "Noise...": cellular, classic and simplex noise in 2D and 3D.
class NoiseDialog : public GenImageDialog
{
    Q_OBJECT
public:
    NoiseDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent = nullptr);
};
