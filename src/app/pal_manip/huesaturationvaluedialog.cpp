#include "huesaturationvaluedialog.h"

#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QCheckBox>
#include <QFormLayout>

HueSaturationValueDialog::HueSaturationValueDialog(const Palette<uint> &palette,
                                                   const std::set<int> &selection,
                                                   const QString &connectionName, QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent)
{
    setWindowTitle(tr("Hue / saturation / value"));
    using S = HueSaturationValueSettings;
    m_hue = makeSlider("hue", S::hueMinimum, S::hueMaximum, 20, 0);
    m_saturation = makeSlider("saturation", S::percentMinimum, S::percentMaximum, 20, 0);
    m_value = makeSlider("value", S::percentMinimum, S::percentMaximum, 20, 0);
    m_colorize = makeCheckBox(tr("Colorize"), "colorize");
    m_selectedOnly = makeCheckBox(tr("Selected only"), "sel_only");
    auto *form = new QFormLayout;
    form->addRow(tr("Hue"), m_hue);
    form->addRow(tr("Saturation"), m_saturation);
    form->addRow(tr("Value"), m_value);
    form->addRow(m_colorize);
    form->addRow(m_selectedOnly);
    setControls(form);
    resize(420, sizeHint().height());
}

QString HueSaturationValueDialog::settingsName() const
{
    return HueSaturationValueSettings::settingsName;
}

HueSaturationValueSettings HueSaturationValueDialog::settings() const
{
    HueSaturationValueSettings s;
    s.hue = m_hue->value();
    s.saturation = m_saturation->value();
    s.value = m_value->value();
    s.colorize = m_colorize->isChecked();
    s.selectedOnly = m_selectedOnly->isChecked();
    return s;
}

SettingsText::Pairs HueSaturationValueDialog::currentPairs() const
{
    return settings().toPairs();
}

void HueSaturationValueDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    const auto s = HueSaturationValueSettings::fromPairs(pairs, settings());
    m_hue->setValue(s.hue);
    m_saturation->setValue(s.saturation);
    m_value->setValue(s.value);
    m_colorize->setChecked(s.colorize);
    m_selectedOnly->setChecked(s.selectedOnly);
}
