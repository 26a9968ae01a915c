#pragma once

#include "storage/settingstext.h"

#include <QString>
#include <QStringList>

#include <optional>

// Where one dialog's settings are kept: named entries in the preset database, the last-used copy
// in the application's QSettings, and the built-in presets among the resources. The settings row
// of every parameter dialog works through this class; it holds no widgets, so the command line
// and the tests reach the same store.
class SettingsStore
{
public:
    enum class Result
    {
        Ok,
        Exists,
        NotFound,
        Failed
    };

    // connectionName is the preset database's connection; a connection that is missing or closed
    // makes every database command fail with Failed, and the list empty.
    SettingsStore(const QString &connectionName, const QString &dialogName);

    const QString &dialogName() const { return m_dialog; }

    // ---- Named entries in the database
    // The names saved for this dialog, in the database's order; empty when the database is unusable.
    QStringList names() const;
    bool contains(const QString &name) const;
    // The complete settings text of a saved entry: the name line with the stored version, then the
    // stored lines. Nothing when there is no such entry.
    std::optional<QString> load(const QString &name) const;
    // Exists when the name is taken for this dialog; Failed when the database refuses.
    Result save(const QString &name, const QString &lines);
    // NotFound when there is no such entry.
    Result remove(const QString &name);
    // NotFound when name does not exist, Exists when newName is taken.
    Result rename(const QString &name, const QString &newName);

    // ---- Last-used settings, under "dialog_" + name + "_settings", "_version" and "_preset"
    struct LastUsed
    {
        QString lines;
        QString version;
        std::optional<QString> preset; // the text of the preset box's entry, when stored
    };
    std::optional<LastUsed> lastUsed() const;
    void setLastUsed(const QString &lines, const QString &presetText) const;

    // ---- Built-in presets, ":res/presets/preset_<name><number>.txt" counted from 1
    // How many consecutive presets the resources hold for dialog.
    static int presetCount(const QString &dialog);
    // The complete settings text of a preset; a DescribedException when it is missing.
    static QString presetText(const QString &dialog, int number);
    // The name shown for preset number (from 1): names' entry, or "Predefined #<number>" when the
    // dialog gives none.
    static QString presetName(const QStringList &names, int number);

    // ---- Settings texts and files
    // The pairs of a settings text; a text of another dialog is a DescribedException.
    SettingsText::Pairs parse(const QString &text) const;
    SettingsText::Pairs readFile(const QString &path) const;
    // Writes the name line and lines; a DescribedException when the file cannot be written.
    void writeFile(const QString &path, const QString &lines) const;

private:
    QString m_connection;
    QString m_dialog;
};
