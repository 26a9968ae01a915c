#pragma once

#include "operations/cosinepalette.h"
#include "pal_manip/palettedialog.h"

#include <array>

class QCheckBox;
class QCombinedSliderSpin;
class QDoubleSpinBox;

// "Generate cosinus palette": each of red, green and blue follows a + b cos(2 pi (c t + d)).
class CosinePaletteDialog : public PaletteDialog
{
    Q_OBJECT
public:
    CosinePaletteDialog(const Palette<uint> &palette, const std::set<int> &selection,
                        const QString &connectionName, int maximumSize, QWidget *parent = nullptr);

    QString settingsName() const override;
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;

protected:
    QStringList presetNames() const override;

private:
    CosinePaletteSettings settings() const;

    // Per channel (red, green, blue) the offset, amplitude, frequency and phase.
    std::array<std::array<QDoubleSpinBox *, 4>, 3> m_coefficients{};
    QCombinedSliderSpin *m_size = nullptr;
    QCheckBox *m_keepAspect = nullptr;
};
