#pragma once

#include "img_gen/genimagedialog.h"

// "!!!Moiree...": two ring patterns laid over each other.
class MoireeDialog : public GenImageDialog
{
    Q_OBJECT
public:
    MoireeDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent = nullptr);
};
