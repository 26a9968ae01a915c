#include "sharpendialog.h"

#include "spaces/colorspace.h"
#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>

SharpenDialog::SharpenDialog(const Palette<uint> &palette, const std::set<int> &selection,
                             const QString &connectionName, QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent)
{
    setWindowTitle(tr("Sharpen palette"));
    using S = SharpenSettings;
    const S initial;
    m_mode = makeColourSpaceBox("mode");
    m_method = new QComboBox;
    m_method->setObjectName(QStringLiteral("method"));
    m_method->addItems({tr("running mean"), tr("normal (Gauss)")});
    m_method->setCurrentIndex(initial.method);
    connect(m_method, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &SharpenDialog::controlChanged);
    m_radius = makeSlider("radius", 1, S::maximumRadius, 8, initial.radius);
    m_amount = makeSlider("amount", 0, S::maximumAmount, 25, initial.amount);
    auto *components = new QHBoxLayout;
    for (int k = 0; k < 4; ++k) {
        m_components[size_t(k)] =
            makeCheckBox(QString(), QByteArray("comp" + QByteArray::number(k + 1)).constData());
        m_components[size_t(k)]->setChecked(initial.components[size_t(k)]);
        components->addWidget(m_components[size_t(k)]);
    }
    m_selectedOnly = makeCheckBox(tr("Selected only"), "sel_only");

    auto *form = new QFormLayout;
    form->addRow(tr("Mode:"), m_mode);
    form->addRow(tr("Method:"), m_method);
    form->addRow(tr("Radius"), m_radius);
    form->addRow(tr("Amount (%)"), m_amount);
    form->addRow(tr("Components:"), components);
    form->addRow(m_selectedOnly);
    connect(m_mode, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &SharpenDialog::modeChanged);
    modeChanged(0);
    setControls(form);
    resize(440, sizeHint().height());
}

void SharpenDialog::modeChanged(int mode)
{
    // Only the components a space names are sharpened; the others are shown but cannot be chosen.
    const QStringList labels = componentLabels(mode);
    const int used =
        colorSpaceTable().at(size_t(qBound(0, mode, int(ColorSpaceCount) - 1))).components.size();
    for (int k = 0; k < 4; ++k) {
        m_components[size_t(k)]->setText(labels[k]);
        m_components[size_t(k)]->setEnabled(k < used);
    }
}

QString SharpenDialog::settingsName() const
{
    return SharpenSettings::settingsName;
}

QStringList SharpenDialog::presetNames() const
{
    return {tr("Gentle"), tr("Strong"), tr("Lab lightness only")};
}

SharpenSettings SharpenDialog::settings() const
{
    SharpenSettings s;
    s.mode = m_mode->currentIndex();
    s.method = m_method->currentIndex();
    s.radius = m_radius->value();
    s.amount = m_amount->value();
    for (int k = 0; k < 4; ++k)
        s.components[size_t(k)] = m_components[size_t(k)]->isChecked();
    s.selectedOnly = m_selectedOnly->isChecked();
    return s;
}

SettingsText::Pairs SharpenDialog::currentPairs() const
{
    return settings().toPairs();
}

void SharpenDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    const auto s = SharpenSettings::fromPairs(pairs, settings());
    m_mode->setCurrentIndex(s.mode);
    m_method->setCurrentIndex(s.method);
    m_radius->setValue(s.radius);
    m_amount->setValue(s.amount);
    for (int k = 0; k < 4; ++k)
        m_components[size_t(k)]->setChecked(s.components[size_t(k)]);
    m_selectedOnly->setChecked(s.selectedOnly);
}
