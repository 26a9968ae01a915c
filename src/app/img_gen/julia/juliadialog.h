#pragma once

#include "img_gen/genimagedialog.h"

// "Julia...": a Julia set's view, iteration count and constant. The IFS and plasma dialogs are
// the same page under their own settings names.
class JuliaDialog : public GenImageDialog
{
    Q_OBJECT
public:
    JuliaDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent = nullptr)
        : JuliaDialog(QStringLiteral("julia"), palette, connectionName, parent)
    {
    }

protected:
    JuliaDialog(const QString &name, const Palette<uint> &palette, const QString &connectionName,
                QWidget *parent);
};
