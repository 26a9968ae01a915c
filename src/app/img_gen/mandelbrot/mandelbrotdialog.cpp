#include "mandelbrotdialog.h"

#include "mandelbrotwidget.h"

#include <QGroupBox>
#include <QVBoxLayout>

MandelbrotDialog::MandelbrotDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent)
    : GenImageDialog(QStringLiteral("mandelbrot"), palette, connectionName, parent)
{
    setWindowTitle(tr("Mandelbrot fractal"));
    auto *page = new QVBoxLayout;
    page->addWidget(makeViewGroup(4));
    page->addWidget(makeComputationGroup(false, true));
    setPage(tr("Mandelbrot fractals"), page, new MandelbrotWidget);
}
