#include "storage/presetdatabase.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>

#include <atomic>

namespace {
std::atomic<int> connectionCounter{0};
}

PresetDatabase::PresetDatabase()
    : m_connection(QStringLiteral("chromaxis_presets_%1").arg(connectionCounter.fetch_add(1)))
{
}

PresetDatabase::~PresetDatabase()
{
    if (QSqlDatabase::contains(m_connection)) {
        {
            QSqlDatabase db = QSqlDatabase::database(m_connection, false);
            db.close();
        }
        QSqlDatabase::removeDatabase(m_connection);
    }
}

QString PresetDatabase::defaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/" + "chromaxis.db";
}

PresetDatabase::OpenResult PresetDatabase::open(const QString &path)
{
    m_open = false;
    m_error.clear();
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QSQLITE")))
        return OpenResult::DriverMissing;
    QSqlDatabase db = QSqlDatabase::contains(m_connection)
                          ? QSqlDatabase::database(m_connection, false)
                          : QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    // A fresh account may have no documents folder yet; SQLite will not create it.
    QDir().mkpath(QFileInfo(path).absolutePath());
    db.setDatabaseName(path);
    if (!db.open())
        return OpenResult::OpenFailed;
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral(
            "CREATE TABLE IF NOT EXISTS `settings` (dialog text, version text, name text, vals text)"))) {
        m_error = query.lastError().text();
        db.close();
        return OpenResult::CreateFailed;
    }
    m_open = true;
    return OpenResult::Ok;
}
