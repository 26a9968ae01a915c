#pragma once

#include "palettedialog.h"

class QCombinedSliderSpin;

// "Shift order": rotates the palette by a signed offset.
class ShiftOrderDialog : public PaletteDialog
{
    Q_OBJECT
public:
    ShiftOrderDialog(const Palette<uint> &palette, const std::set<int> &selection,
                     const QString &connectionName, QWidget *parent = nullptr);

    QString settingsName() const override { return QStringLiteral("shift_order"); }
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;

private:
    QCombinedSliderSpin *m_offset = nullptr;
};
