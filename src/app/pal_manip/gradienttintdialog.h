#pragma once

#include "palettedialog.h"
#include "operations/palettetint.h"

class QCheckBox;
class QComboBox;
class QCombinedSliderSpin;
class SelectColorButton;

// "Gradient tint": a tint that runs between two colours and opacities over an index range.
class GradientTintDialog : public PaletteDialog
{
    Q_OBJECT
public:
    // The palette must hold at least two entries: the range has two ends.
    GradientTintDialog(const Palette<uint> &palette, const std::set<int> &selection,
                       const QString &connectionName, QWidget *parent = nullptr);

    QString settingsName() const override;
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;
    // The index range travels with the operation, though the dialog does not store it.
    SettingsText::Pairs operationPairs() const override;

private:
    GradientTintSettings settings() const;

    SelectColorButton *m_color1 = nullptr;
    QCombinedSliderSpin *m_opacity1 = nullptr;
    QCombinedSliderSpin *m_begin = nullptr;
    SelectColorButton *m_color2 = nullptr;
    QCombinedSliderSpin *m_opacity2 = nullptr;
    QCombinedSliderSpin *m_end = nullptr;
    QComboBox *m_mode = nullptr;
    QCheckBox *m_selectedOnly = nullptr;
};
