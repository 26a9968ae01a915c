#pragma once

#include "operations/selectionpattern.h"
#include "utils/qt/widgets/dialogsettingsio.h"

#include <QDialog>

#include <set>

class QCheckBox;
class QSpinBox;

// "Selection pattern": selects runs of entries, skipping runs between them, within an index range.
// The selection is announced on every change so that the palette view shows it at once.
class SelectionPatternDialog : public QDialog, public DialogSettingsIO::DialogSettingsIOParent
{
    Q_OBJECT
public:
    SelectionPatternDialog(int paletteSize, const QString &connectionName, QWidget *parent = nullptr);

    // Restores the last-used settings (or the first preset) and announces the first selection.
    void start();
    const std::set<int> &result() const { return m_result; }
    // The settings text as a macro step records it.
    QString settingsText() const;
    DialogSettingsIO *settingsIO() const { return m_settingsIO; }

    QString dialogName() const override { return SelectionPatternSettings::settingsName; }
    QString dialogSettings() const override;
    void applySettings(const SettingsText::Pairs &pairs) override;

signals:
    void selectionChanged(const std::set<int> &selection);

public slots:
    void accept() override;

private:
    SelectionPatternSettings settings() const;
    void controlChanged();
    void reselect();

    int m_paletteSize = 0;
    QSpinBox *m_start = nullptr;
    QCheckBox *m_fullPalette = nullptr;
    QSpinBox *m_end = nullptr;
    QSpinBox *m_set = nullptr;
    QSpinBox *m_skip = nullptr;
    DialogSettingsIO *m_settingsIO = nullptr;
    std::set<int> m_result;
    bool m_applying = false;
    bool m_announced = false;
};
