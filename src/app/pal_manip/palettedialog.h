#pragma once

#include "palette/palette.h"
#include "storage/settingstext.h"
#include "utils/qt/widgets/dialogsettingsio.h"

#include <QDialog>

#include <set>

class QCheckBox;
class QComboBox;
class QCombinedSliderSpin;
class QLayout;
class QSpinBox;

// The common ground of the palette dialogs: a copy of the document's palette and selection, the
// settings row, OK and Cancel, and a live result. A dialog only turns its controls into settings
// pairs; the palette operation registered under its settings name computes the result, the same
// one the command line and the macro player run. Changes are gathered and computed once per turn
// of the event loop, so dragging a slider over a large palette never queues stale work.
class PaletteDialog : public QDialog, public DialogSettingsIO::DialogSettingsIOParent
{
    Q_OBJECT
public:
    PaletteDialog(const Palette<uint> &palette, const std::set<int> &selection, const QString &connectionName,
                  QWidget *parent = nullptr);

    // The settings key word, which is also the palette operation's name.
    virtual QString settingsName() const = 0;
    // The controls as settings pairs, in the order the settings text keeps them.
    virtual SettingsText::Pairs currentPairs() const = 0;
    // Puts settings pairs into the controls; keys the dialog does not know are ignored. Throws
    // DescribedException for a value that is no value of its control.
    virtual void applyPairs(const SettingsText::Pairs &pairs) = 0;
    // What the operation is given: the stored settings and whatever else the dialog shows but
    // does not store (an index range, for example).
    virtual SettingsText::Pairs operationPairs() const { return currentPairs(); }
    // The operation's complete settings text, as a macro step records it.
    QString settingsText() const;

    // Restores the last-used settings (or the first preset) and announces the first result.
    void start();
    const Palette<uint> &result() const { return m_result; }
    const Palette<uint> &original() const { return m_palette; }
    const std::set<int> &selection() const { return m_selection; }
    DialogSettingsIO *settingsIO() const { return m_settingsIO; }

    QString dialogName() const override { return settingsName(); }
    QString dialogSettings() const override { return SettingsText::formatLines(currentPairs()); }
    void applySettings(const SettingsText::Pairs &pairs) override;

signals:
    void paletteChanged(const Palette<uint> &palette);

public slots:
    void accept() override;

protected:
    // Builds the dialog around the derived dialog's controls: the controls, the settings row and
    // OK / Cancel. Called once, at the end of the derived constructor.
    void setControls(QLayout *controls);
    // The names of the built-in presets, in order; unnamed ones are numbered.
    virtual QStringList presetNames() const { return {}; }
    // Every control's change ends here.
    void controlChanged();
    // The result for the pairs; the registered operation unless a dialog needs more.
    virtual Palette<uint> compute(const SettingsText::Pairs &pairs) const;
    // After a new result, for dialogs that show something of it themselves.
    virtual void resultChanged() {}
    // Called by start() once the settings row has put the starting settings into the controls.
    virtual void started() {}
    bool isApplying() const { return m_applying; }

    // Controls named after their settings key, each reporting its changes to controlChanged().
    QCombinedSliderSpin *makeSlider(const char *key, int minimum, int maximum, int pageStep, int value);
    QCheckBox *makeCheckBox(const QString &text, const char *key);
    QSpinBox *makeSpinBox(const char *key, int minimum, int maximum, int value);
    QComboBox *makeColourSpaceBox(const char *key);
    // The four component names of a colour space for labels, "-" where the space has fewer.
    static QStringList componentLabels(int space);
    // Computes now if the controls changed since the last result.
    void recomputeNow(bool force = false);

private:
    void schedule();

    Palette<uint> m_palette;
    std::set<int> m_selection;
    QString m_connection;
    Palette<uint> m_result;
    SettingsText::Pairs m_lastPairs;
    DialogSettingsIO *m_settingsIO = nullptr;
    bool m_computed = false;
    bool m_pending = false;
    bool m_applying = false;
};
