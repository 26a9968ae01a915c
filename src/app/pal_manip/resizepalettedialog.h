#pragma once

#include "operations/paletteresize.h"
#include "palettedialog.h"

class QComboBox;
class QCombinedSliderSpin;

// "Resize the palette": resamples the palette to a new length in a colour space.
class ResizePaletteDialog : public PaletteDialog
{
    Q_OBJECT
public:
    ResizePaletteDialog(const Palette<uint> &palette, const std::set<int> &selection,
                        const QString &connectionName, int maximumSize, QWidget *parent = nullptr);

    QString settingsName() const override;
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;

protected:
    QStringList presetNames() const override;

private:
    ResizeSettings settings() const;

    QCombinedSliderSpin *m_size = nullptr;
    QComboBox *m_mode = nullptr;
    QComboBox *m_method = nullptr;
};
