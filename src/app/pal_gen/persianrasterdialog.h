#pragma once

#include "operations/palettepatterns.h"
#include "pal_manip/palettedialog.h"

class QCheckBox;
class QSpinBox;

// "Persian raster": two runs through the palette's colours woven together like warp and weft.
class PersianRasterDialog : public PaletteDialog
{
    Q_OBJECT
public:
    PersianRasterDialog(const Palette<uint> &palette, const std::set<int> &selection,
                        const QString &connectionName, int maximumSize, QWidget *parent = nullptr);

    QString settingsName() const override;
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;

protected:
    QStringList presetNames() const override;

private:
    PersianRasterSettings settings() const;

    QSpinBox *m_period1 = nullptr;
    QSpinBox *m_period2 = nullptr;
    QSpinBox *m_offset = nullptr;
    QCheckBox *m_reverse = nullptr;
    QSpinBox *m_thread = nullptr;
    QSpinBox *m_over = nullptr;
    QSpinBox *m_under = nullptr;
    QSpinBox *m_size = nullptr;
    QCheckBox *m_selectedOnly = nullptr;
};
