#pragma once

#include "img_gen/julia/juliadialog.h"

// "Plasma": the Julia page under the settings name "plasma", whose presets use few iterations, so
// the bands run wide and soft like a plasma.
class PlasmaDialog : public JuliaDialog
{
    Q_OBJECT
public:
    PlasmaDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent = nullptr)
        : JuliaDialog(QStringLiteral("plasma"), palette, connectionName, parent)
    {
        setWindowTitle(tr("Plasma"));
    }
};
