#pragma once

#include <QString>

// The SQLite file that keeps named dialog presets ("chromaxis.db" in the documents folder).
// Opening can fail in three ways; the caller reports them and the program carries on without
// saving presets.
class PresetDatabase
{
public:
    enum class OpenResult { Ok, DriverMissing, OpenFailed, CreateFailed };

    PresetDatabase();
    ~PresetDatabase();
    PresetDatabase(const PresetDatabase &) = delete;
    PresetDatabase &operator=(const PresetDatabase &) = delete;

    // The default location: the documents folder joined with "/chromaxis.db".
    static QString defaultPath();

    OpenResult open(const QString &path = defaultPath());
    bool isOpen() const { return m_open; }
    // The driver's error text after a failed table creation.
    const QString &errorText() const { return m_error; }
    // Name of the connection for queries made by the settings store.
    const QString &connectionName() const { return m_connection; }

private:
    QString m_connection;
    QString m_error;
    bool m_open = false;
};
