#include "blurdialog.h"

#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSpinBox>

BlurDialog::BlurDialog(const Palette<uint> &palette, const std::set<int> &selection,
                       const QString &connectionName, QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent)
{
    setWindowTitle(tr("Blur palette"));
    const BlurSettings initial;
    m_mode = makeColourSpaceBox("mode");
    m_method = new QComboBox;
    m_method->setObjectName(QStringLiteral("method"));
    m_method->addItems({tr("running mean"), tr("normal (Gauss)")});
    connect(m_method, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &BlurDialog::controlChanged);
    m_wrap = makeCheckBox(tr("Wrap"), "wrap");
    m_master = makeSlider("value", 0, BlurSettings::maximumRadius, 8, initial.master);
    connect(m_master, &QCombinedSliderSpin::valueChanged, this, &BlurDialog::masterChanged);
    m_selectedOnly = makeCheckBox(tr("Selected only"), "sel_only");

    auto *form = new QFormLayout;
    form->addRow(tr("Mode:"), m_mode);
    form->addRow(tr("Method:"), m_method);
    form->addRow(m_wrap);
    form->addRow(tr("Master size"), m_master);
    for (int k = 0; k < 4; ++k) {
        auto *spin = new QSpinBox;
        spin->setObjectName(QStringLiteral("comp%1").arg(k + 1));
        spin->setRange(0, BlurSettings::maximumRadius);
        spin->setValue(initial.radii[size_t(k)]);
        connect(spin, QOverload<int>::of(&QSpinBox::valueChanged), this, &BlurDialog::controlChanged);
        m_radii[size_t(k)] = spin;
        m_labels[size_t(k)] = new QLabel;
        form->addRow(m_labels[size_t(k)], spin);
    }
    form->addRow(m_selectedOnly);
    connect(m_mode, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &BlurDialog::modeChanged);
    modeChanged(0);
    setControls(form);
    resize(420, sizeHint().height());
}

void BlurDialog::modeChanged(int mode)
{
    const QStringList labels = componentLabels(mode);
    for (int k = 0; k < 4; ++k)
        m_labels[size_t(k)]->setText(labels[k]);
}

void BlurDialog::masterChanged(int value)
{
    // Settings being loaded set every radius themselves, in their own order.
    if (isApplying())
        return;
    for (QSpinBox *spin : m_radii) {
        const QSignalBlocker block(spin);
        spin->setValue(value);
    }
    controlChanged();
}

QString BlurDialog::settingsName() const
{
    return BlurSettings::settingsName;
}

BlurSettings BlurDialog::settings() const
{
    BlurSettings s;
    s.mode = m_mode->currentIndex();
    s.method = m_method->currentIndex();
    s.wrap = m_wrap->isChecked();
    s.master = m_master->value();
    for (int k = 0; k < 4; ++k)
        s.radii[size_t(k)] = m_radii[size_t(k)]->value();
    s.selectedOnly = m_selectedOnly->isChecked();
    return s;
}

SettingsText::Pairs BlurDialog::currentPairs() const
{
    return settings().toPairs();
}

void BlurDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    const auto s = BlurSettings::fromPairs(pairs, settings());
    m_mode->setCurrentIndex(s.mode);
    m_method->setCurrentIndex(s.method);
    m_wrap->setChecked(s.wrap);
    m_master->setValue(s.master);
    for (int k = 0; k < 4; ++k)
        m_radii[size_t(k)]->setValue(s.radii[size_t(k)]);
    m_selectedOnly->setChecked(s.selectedOnly);
}
