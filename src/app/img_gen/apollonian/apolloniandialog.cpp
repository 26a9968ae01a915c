#include "apolloniandialog.h"

#include "apollonianwidget.h"

#include <QGroupBox>
#include <QVBoxLayout>

ApollonianDialog::ApollonianDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent)
    : GenImageDialog(QStringLiteral("apollonian"), palette, connectionName, parent)
{
    setWindowTitle(tr("Apollonian fractal"));
    auto *page = new QVBoxLayout;
    page->addWidget(makeViewGroup(4));
    page->addWidget(makeComputationGroup(false, false));
    setPage(tr("Apollonian fractals"), page, new ApollonianWidget);
}
