#pragma once

#include "img_gen/genimagedialog.h"

// "Apollonian...": the gasket's view. It colours itself; the palette plays no part.
class ApollonianDialog : public GenImageDialog
{
    Q_OBJECT
public:
    ApollonianDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent = nullptr);
};
