#pragma once

#include "operations/palettesharpen.h"
#include "palettedialog.h"

#include <array>

class QCheckBox;
class QComboBox;
class QCombinedSliderSpin;

// "Sharpen palette": the partner of the blur, an unsharp mask along the index axis.
class SharpenDialog : public PaletteDialog
{
    Q_OBJECT
public:
    SharpenDialog(const Palette<uint> &palette, const std::set<int> &selection, const QString &connectionName,
                  QWidget *parent = nullptr);

    QString settingsName() const override;
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;

protected:
    QStringList presetNames() const override;

private:
    SharpenSettings settings() const;
    void modeChanged(int mode);

    QComboBox *m_mode = nullptr;
    QComboBox *m_method = nullptr;
    QCombinedSliderSpin *m_radius = nullptr;
    QCombinedSliderSpin *m_amount = nullptr;
    std::array<QCheckBox *, 4> m_components{};
    QCheckBox *m_selectedOnly = nullptr;
};
