#include "brightnesscontrastdialog.h"

#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QCheckBox>
#include <QFormLayout>

BrightnessContrastDialog::BrightnessContrastDialog(const Palette<uint> &palette,
                                                   const std::set<int> &selection,
                                                   const QString &connectionName, QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent)
{
    setWindowTitle(tr("Brightness / contrast"));
    using S = BrightnessContrastSettings;
    m_brightness = makeSlider("brightness", S::minimum, S::maximum, 32, 0);
    m_contrast = makeSlider("contrast", S::minimum, S::maximum, 32, 0);
    m_selectedOnly = makeCheckBox(tr("Selected only"), "sel_only");
    auto *form = new QFormLayout;
    form->addRow(tr("Brightness"), m_brightness);
    form->addRow(tr("Contrast"), m_contrast);
    form->addRow(m_selectedOnly);
    setControls(form);
    resize(420, sizeHint().height());
}

QString BrightnessContrastDialog::settingsName() const
{
    return BrightnessContrastSettings::settingsName;
}

BrightnessContrastSettings BrightnessContrastDialog::settings() const
{
    BrightnessContrastSettings s;
    s.brightness = m_brightness->value();
    s.contrast = m_contrast->value();
    s.selectedOnly = m_selectedOnly->isChecked();
    return s;
}

SettingsText::Pairs BrightnessContrastDialog::currentPairs() const
{
    return settings().toPairs();
}

void BrightnessContrastDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    const auto s = BrightnessContrastSettings::fromPairs(pairs, settings());
    m_brightness->setValue(s.brightness);
    m_contrast->setValue(s.contrast);
    m_selectedOnly->setChecked(s.selectedOnly);
}
