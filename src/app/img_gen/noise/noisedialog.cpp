#include "noisedialog.h"

#include "noisewidget.h"

#include <QComboBox>
#include <QGroupBox>
#include <QVBoxLayout>

NoiseDialog::NoiseDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent)
    : GenImageDialog(QStringLiteral("noise"), palette, connectionName, parent)
{
    setWindowTitle(tr("Noise"));
    makeList("method", {tr("Worley noise 2D"), tr("Worley noise 3D"), tr("Classic noise 2D"),
                        tr("Classic noise 3D"), tr("Simplex noise 2D"), tr("Simplex noise 3D")});
    for (const char *key : {"xoff", "yoff", "zoff"})
        makeNumber(key, -1000000, 1000000, 8);
    for (const char *key : {"xadd", "yadd"})
        makeNumber(key, -1000000, 1000000, 8);
    auto *page = new QVBoxLayout;
    page->addWidget(makeGroup(tr("Method"), {{QString(), "method"}}));
    page->addWidget(makeGroup(tr("Offset"), {{tr("X:"), "xoff"}, {tr("Y:"), "yoff"}, {tr("Z:"), "zoff"}}));
    page->addWidget(makeGroup(tr("Steps"), {{tr("X:"), "xadd"}, {tr("Y:"), "yadd"}}));
    setPage(tr("Noise"), page, new NoiseWidget);
}
