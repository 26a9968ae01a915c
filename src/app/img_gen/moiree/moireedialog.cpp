#include "moireedialog.h"

#include "img_gen/genimagewidget.h"

#include <QGroupBox>
#include <QVBoxLayout>

namespace {

// One unit across at zoom 1; the offset is subtracted from the position, so the picture follows
// the mouse when the offset moves with it.
class MoireeWidget : public GenImageWidget
{
public:
    using GenImageWidget::GenImageWidget;

protected:
    QPointF offsetChange(double fx, double fy) const override
    {
        return {fx / settings().zoom, -fy / settings().zoom};
    }
    double offsetLimit() const override { return 0; }
};

} // namespace

MoireeDialog::MoireeDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent)
    : GenImageDialog(QStringLiteral("moiree"), palette, connectionName, parent)
{
    setWindowTitle(tr("Moiree pattern"));
    makeNumber("norm", 0.0001, 1000000, 6);
    makeNumber("xadd", -1000000, 1000000, 8);
    makeNumber("yadd", -1000000, 1000000, 8);
    auto *page = new QVBoxLayout;
    page->addWidget(makeViewGroup(1000));
    page->addWidget(makeGroup(tr("Rings"), {{tr("Rings per unit:"), "norm"}, {tr("X-distance:"), "xadd"}, {tr("Y-distance:"), "yadd"}}));
    setPage(tr("Moiree patterns"), page, new MoireeWidget);
}
