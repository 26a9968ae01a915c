#pragma once

#include "operations/palettepatterns.h"
#include "pal_manip/palettedialog.h"

class QCheckBox;
class QSpinBox;

// "Repetition pattern": repeats the selected entries, or the palette, to fill a palette.
class RepetitionPatternDialog : public PaletteDialog
{
    Q_OBJECT
public:
    RepetitionPatternDialog(const Palette<uint> &palette, const std::set<int> &selection,
                            const QString &connectionName, int maximumSize, QWidget *parent = nullptr);

    QString settingsName() const override;
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;

protected:
    QStringList presetNames() const override;

private:
    RepetitionPatternSettings settings() const;

    QSpinBox *m_count = nullptr;
    QSpinBox *m_stride = nullptr;
    QSpinBox *m_offset = nullptr;
    QCheckBox *m_mirror = nullptr;
    QSpinBox *m_size = nullptr;
    QCheckBox *m_selectedOnly = nullptr;
};
