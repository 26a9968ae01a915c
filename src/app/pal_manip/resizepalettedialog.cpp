#include "resizepalettedialog.h"

#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>

ResizePaletteDialog::ResizePaletteDialog(const Palette<uint> &palette, const std::set<int> &selection,
                                         const QString &connectionName, int maximumSize, QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent)
{
    setWindowTitle(tr("Resize the palette"));
    using S = ResizeSettings;
    const int largest = qMax(int(S::minimumSize), maximumSize);
    m_size =
        makeSlider("size", S::minimumSize, largest, 32, qBound(int(S::minimumSize), palette.size(), largest));
    m_mode = makeColourSpaceBox("mode");
    m_method = new QComboBox;
    m_method->setObjectName(QStringLiteral("method"));
    m_method->addItems({tr("nearest"), tr("linear"), tr("sigmoid")});
    m_method->setCurrentIndex(S().method);
    connect(m_method, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &ResizePaletteDialog::controlChanged);

    auto *form = new QFormLayout;
    form->addRow(tr("Current size:"), new QLabel(QString::number(palette.size())));
    form->addRow(tr("New size:"), m_size);
    form->addRow(tr("Color space:"), m_mode);
    form->addRow(tr("Method:"), m_method);
    setControls(form);
    resize(420, sizeHint().height());
}

QString ResizePaletteDialog::settingsName() const
{
    return ResizeSettings::settingsName;
}

QStringList ResizePaletteDialog::presetNames() const
{
    return {tr("256 entries, linear RGB"), tr("256 entries, sigmoid Lab"), tr("1024 entries, linear LCH"),
            tr("16 entries, nearest")};
}

ResizeSettings ResizePaletteDialog::settings() const
{
    ResizeSettings s;
    s.size = m_size->value();
    s.mode = m_mode->currentIndex();
    s.method = m_method->currentIndex();
    return s;
}

SettingsText::Pairs ResizePaletteDialog::currentPairs() const
{
    return settings().toPairs();
}

void ResizePaletteDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    // A size beyond the window's largest palette stops at it, as the slider does.
    const auto s = ResizeSettings::fromPairs(pairs, settings());
    m_size->setValue(s.size);
    m_mode->setCurrentIndex(s.mode);
    m_method->setCurrentIndex(s.method);
}
