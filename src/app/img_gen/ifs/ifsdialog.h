#pragma once

#include "img_gen/julia/juliadialog.h"

// The Julia page kept under the settings name "ifs", with presets of its own.
class IFSDialog : public JuliaDialog
{
    Q_OBJECT
public:
    IFSDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent = nullptr)
        : JuliaDialog(QStringLiteral("ifs"), palette, connectionName, parent)
    {
        setWindowTitle(tr("IFS fractal"));
    }
};
