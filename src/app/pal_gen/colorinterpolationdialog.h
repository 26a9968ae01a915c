#pragma once

#include "operations/colorinterpolation.h"
#include "pal_manip/palettedialog.h"

class ColorTicksBar;
class QComboBox;
class QGroupBox;
class QLabel;
class QSpinBox;
class SelectColorButton;

// "Generate palette by interpolation": key colours on a ticks bar, interpolated segment by
// segment in the colour space and with the function of the tick on the segment's left.
class ColorInterpolationDialog : public PaletteDialog
{
    Q_OBJECT
public:
    ColorInterpolationDialog(const Palette<uint> &palette, const std::set<int> &selection,
                             const QString &connectionName, int maximumSize, QWidget *parent = nullptr);

    // Starts from the selected entries of the palette instead of the stored settings: one tick
    // per selected colour at its place, at the palette's size.
    void setTicksFromSelection() { m_fromSelection = true; }

    QString settingsName() const override;
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;

    ColorTicksBar *ticksBar() const { return m_bar; }
    // The 256 entries of the strip under the bar.
    const Palette<uint> &strip() const { return m_strip; }

protected:
    void started() override;
    void resultChanged() override;

private:
    InterpolationSettings settings() const;
    void tickSelected(int position);
    InterpolationSettings selectionSettings() const;

    ColorTicksBar *m_bar = nullptr;
    QLabel *m_stripLabel = nullptr;
    QGroupBox *m_entry = nullptr;
    QSpinBox *m_index = nullptr;
    SelectColorButton *m_color = nullptr;
    QComboBox *m_function = nullptr;
    QComboBox *m_colorSpace = nullptr;
    QSpinBox *m_size = nullptr;
    Palette<uint> m_strip;
    bool m_fromSelection = false;
};
