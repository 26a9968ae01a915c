#pragma once

#include "operations/paletteblur.h"
#include "palettedialog.h"

#include <array>

class QCheckBox;
class QComboBox;
class QCombinedSliderSpin;
class QLabel;
class QSpinBox;

// "Blur palette": a weighted mean along the index axis, per component of a colour space.
class BlurDialog : public PaletteDialog
{
    Q_OBJECT
public:
    BlurDialog(const Palette<uint> &palette, const std::set<int> &selection, const QString &connectionName,
               QWidget *parent = nullptr);

    QString settingsName() const override;
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;

private:
    BlurSettings settings() const;
    void modeChanged(int mode);
    void masterChanged(int value);

    QComboBox *m_mode = nullptr;
    QComboBox *m_method = nullptr;
    QCheckBox *m_wrap = nullptr;
    QCombinedSliderSpin *m_master = nullptr;
    std::array<QSpinBox *, 4> m_radii{};
    std::array<QLabel *, 4> m_labels{};
    QCheckBox *m_selectedOnly = nullptr;
};
