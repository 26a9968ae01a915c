#pragma once

#include "operations/palettesort.h"
#include "palettedialog.h"

class QCheckBox;
class QComboBox;
class QLabel;

// "Sort colors": orders the palette, or its selected entries, by a key. The dialog knows the
// image's mode, because what a sort does to the picture depends on it: an indexed image's pixels
// can follow their colours, a continuous image's cannot.
class SortColorsDialog : public PaletteDialog
{
    Q_OBJECT
public:
    SortColorsDialog(const Palette<uint> &palette, const std::set<int> &selection,
                     const QString &connectionName, int imageMode, QWidget *parent = nullptr);

    QString settingsName() const override;
    SettingsText::Pairs currentPairs() const override;
    void applyPairs(const SettingsText::Pairs &pairs) override;

protected:
    QStringList presetNames() const override;

private:
    SortSettings settings() const;
    void updateControls();

    int m_imageMode = 0;
    QComboBox *m_key = nullptr;
    QComboBox *m_mode = nullptr;
    QCheckBox *m_descending = nullptr;
    QCheckBox *m_selectedOnly = nullptr;
    QCheckBox *m_remap = nullptr;
    QLabel *m_note = nullptr;
};
