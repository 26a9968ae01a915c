#pragma once

#include "palettedialog.h"
#include "operations/tonemanipulation.h"

class QCheckBox;
class QCombinedSliderSpin;

// "Hue / saturation / value".
class HueSaturationValueDialog : public PaletteDialog
{
    Q_OBJECT
public:
    HueSaturationValueDialog(const Palette<uint> &palette, const std::set<int> &selection,
                             const QString &connectionName, QWidget *parent = nullptr);

    QString settingsName() const override;
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;

private:
    HueSaturationValueSettings settings() const;

    QCombinedSliderSpin *m_hue = nullptr;
    QCombinedSliderSpin *m_saturation = nullptr;
    QCombinedSliderSpin *m_value = nullptr;
    QCheckBox *m_colorize = nullptr;
    QCheckBox *m_selectedOnly = nullptr;
};
