#pragma once

#include "storage/settingsstore.h"
#include "storage/settingstext.h"

#include <QWidget>

class QComboBox;
class QLabel;
class QToolButton;

// The "Stored settings:" row of a parameter dialog: a box of the dialog's saved entries and
// built-in presets, and the commands that save, remove, rename and reload database entries and
// exchange settings as files.
class DialogSettingsIO : public QWidget
{
    Q_OBJECT
public:
    // What the row needs from its dialog.
    class DialogSettingsIOParent
    {
    public:
        virtual ~DialogSettingsIOParent() = default;
        // The settings key word of the dialog ("tint", "blur", ...).
        virtual QString dialogName() const = 0;
        // The dialog's current settings as key:value lines.
        virtual QString dialogSettings() const = 0;
        // Puts (key, value) pairs, in order, into the dialog's controls.
        virtual void applySettings(const SettingsText::Pairs &pairs) = 0;
    };

    // presetNames names the built-in presets in order; presets beyond the list are numbered.
    // connectionName is the preset database's connection.
    DialogSettingsIO(DialogSettingsIOParent *owner, const QString &connectionName,
                     const QStringList &presetNames = {}, QWidget *parent = nullptr);

    // Restores the dialog's last-used settings, or loads the first preset when there are none.
    void start();
    // Keeps the dialog's current settings and the chosen entry as the last-used ones.
    void recordLastUsed() const;
    // The controls no longer show the chosen entry: the box goes back to the empty entry.
    void markModified();

    QComboBox *comboBox() const { return m_combo; }
    int databaseCount() const { return m_databaseCount; }
    int presetCount() const { return m_presetCount; }
    // The box's index of preset number (from 1).
    int presetIndex(int number) const { return 1 + m_databaseCount + number - 1; }
    bool isDatabaseEntry(int index) const { return index >= 1 && index <= m_databaseCount; }
    bool isPreset(int index) const
    {
        return index > m_databaseCount && index <= m_databaseCount + m_presetCount;
    }

signals:
    void presetIndexChanged(int index);

public slots:
    void saveDB();
    void removeDB();
    void renameDB();
    void reloadDB();
    void exportFile();
    void importFile();

private slots:
    void entrySelected(int index);

private:
    QToolButton *addButton(const QString &text, const QString &icon, const char *name);
    // Hands the pairs of text to the dialog; a text of another dialog is reported and changes nothing.
    bool applyText(const QString &text);
    void updateButtons();
    void selectText(const QString &text);
    SettingsStore store() const;

    DialogSettingsIOParent *m_owner = nullptr;
    QString m_connection;
    QStringList m_presetNames;
    QLabel *m_label = nullptr;
    QComboBox *m_combo = nullptr;
    QToolButton *m_remove = nullptr;
    QToolButton *m_rename = nullptr;
    int m_databaseCount = 0;
    int m_presetCount = 0;
};
