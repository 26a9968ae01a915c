#pragma once

#include "palettedialog.h"
#include "operations/tonemanipulation.h"

#include <array>

class QCheckBox;
class QComboBox;
class QCombinedSliderSpin;
class QLabel;

// "Component manipulation": shifts the components of a colour space.
class ComponentManipulationDialog : public PaletteDialog
{
    Q_OBJECT
public:
    ComponentManipulationDialog(const Palette<uint> &palette, const std::set<int> &selection,
                                const QString &connectionName, QWidget *parent = nullptr);

    QString settingsName() const override;
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;

private:
    ComponentManipulationSettings settings() const;
    // The sliders are labelled with the mode's components; a space of three leaves the fourth idle.
    void modeChanged(int mode);

    QComboBox *m_mode = nullptr;
    std::array<QCombinedSliderSpin *, 4> m_components{};
    std::array<QLabel *, 4> m_labels{};
    QCheckBox *m_wrap = nullptr;
    QCheckBox *m_selectedOnly = nullptr;
};
