#pragma once

#include "palettedialog.h"
#include "operations/tonemanipulation.h"

class QCheckBox;
class QCombinedSliderSpin;

// "Brightness / contrast".
class BrightnessContrastDialog : public PaletteDialog
{
    Q_OBJECT
public:
    BrightnessContrastDialog(const Palette<uint> &palette, const std::set<int> &selection,
                             const QString &connectionName, QWidget *parent = nullptr);

    QString settingsName() const override;
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;

private:
    BrightnessContrastSettings settings() const;

    QCombinedSliderSpin *m_brightness = nullptr;
    QCombinedSliderSpin *m_contrast = nullptr;
    QCheckBox *m_selectedOnly = nullptr;
};
