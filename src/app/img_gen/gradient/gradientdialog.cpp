#include "gradientdialog.h"

#include "img_gen/genimagewidget.h"

#include <QComboBox>
#include <QGroupBox>
#include <QVBoxLayout>

namespace {

// The gradient is one unit across; the offset is subtracted from the position, so the picture
// follows the mouse when the offset moves with it (v grows upwards).
class GradientWidget : public GenImageWidget
{
public:
    using GenImageWidget::GenImageWidget;

protected:
    QPointF offsetChange(double fx, double fy) const override
    {
        return {fx / settings().zoom, -fy / settings().zoom};
    }
    double offsetLimit() const override { return 0; }
    bool zooms() const override { return false; }
};

} // namespace

GradientDialog::GradientDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent)
    : GenImageDialog(QStringLiteral("gradient"), palette, connectionName, parent)
{
    setWindowTitle(tr("Gradient"));
    // Six entries name three shapes: radial, linear and rectangle, then the three again.
    makeList("method", {tr("Worley Gradient 2D"), tr("Worley Gradient 3D"), tr("Classic Gradient 2D"),
                        tr("Classic Gradient 3D"), tr("Simplex Gradient 2D"), tr("Simplex Gradient 3D")})
        ->setProperty("values", 3);
    for (const char *key : {"xoff", "yoff", "zoff", "xadd", "yadd"})
        makeNumber(key, -1000000, 1000000, 8);
    auto *page = new QVBoxLayout;
    page->addWidget(makeGroup(tr("Shape"), {{QString(), "method"}}));
    page->addWidget(makeGroup(tr("offset"), {{tr("X:"), "xoff"}, {tr("Y:"), "yoff"}, {tr("Z:"), "zoff"}}));
    page->addWidget(makeGroup(tr("steps:"), {{tr("X:"), "xadd"}, {tr("Y:"), "yadd"}}));
    setPage(tr("Gradients"), page, new GradientWidget);
}
