#include "juliadialog.h"

#include "juliawidget.h"

#include <QGroupBox>
#include <QVBoxLayout>

JuliaDialog::JuliaDialog(const QString &name, const Palette<uint> &palette, const QString &connectionName,
                         QWidget *parent)
    : GenImageDialog(name, palette, connectionName, parent)
{
    setWindowTitle(tr("Julia fractal"));
    auto *page = new QVBoxLayout;
    page->addWidget(makeViewGroup(4));
    page->addWidget(makeComputationGroup(true, true));
    setPage(tr("Julia fractals"), page, new JuliaWidget);
}
