#pragma once

#include "palettedialog.h"
#include "operations/palettetint.h"

class QCheckBox;
class QCombinedSliderSpin;
class SelectColorButton;

// "Tint": blends one colour into the palette.
class TintDialog : public PaletteDialog
{
    Q_OBJECT
public:
    TintDialog(const Palette<uint> &palette, const std::set<int> &selection, const QString &connectionName,
               QWidget *parent = nullptr);

    QString settingsName() const override;
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;

private:
    TintSettings settings() const;

    SelectColorButton *m_color = nullptr;
    QCombinedSliderSpin *m_opacity = nullptr;
    QCheckBox *m_selectedOnly = nullptr;
};
