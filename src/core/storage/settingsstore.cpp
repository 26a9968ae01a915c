#include "storage/settingsstore.h"

#include "palette/describedexception.h"
#include "formats/writefileatomically.h"

#include <QFile>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

// Every name reaches SQLite as a bound value, never spliced into the statement text: a name is
// whatever the user typed, and a quote, a percent sign or a backslash in it must neither break
// the statement nor reach another dialog's rows. The statements are otherwise the plain ones the
// table was designed for; the insert is kept exactly as it always was.

namespace {

const char *const insertStatement =
    "INSERT INTO settings (dialog, version, name, vals) VALUES (:dialog, :version, :name, :vals)";

QString key(const QString &dialog, const char *suffix)
{
    return QStringLiteral("dialog_") + dialog + QLatin1String(suffix);
}

} // namespace

SettingsStore::SettingsStore(const QString &connectionName, const QString &dialogName)
    : m_connection(connectionName), m_dialog(dialogName)
{
}

namespace {

// The open database of the connection, or nothing: a closed or unknown connection is a database
// that cannot be used, not an error worth more than a failed command.
std::optional<QSqlDatabase> database(const QString &connection)
{
    if (!QSqlDatabase::contains(connection))
        return std::nullopt;
    QSqlDatabase db = QSqlDatabase::database(connection, false);
    if (!db.isOpen())
        return std::nullopt;
    return db;
}

} // namespace

QStringList SettingsStore::names() const
{
    QStringList out;
    const auto db = database(m_connection);
    if (!db)
        return out;
    QSqlQuery query(*db);
    query.prepare(QStringLiteral("SELECT name FROM settings WHERE dialog=:dialog;"));
    query.bindValue(QStringLiteral(":dialog"), m_dialog);
    if (!query.exec())
        return out;
    while (query.next())
        out << query.value(0).toString();
    return out;
}

bool SettingsStore::contains(const QString &name) const
{
    return load(name).has_value();
}

std::optional<QString> SettingsStore::load(const QString &name) const
{
    const auto db = database(m_connection);
    if (!db)
        return std::nullopt;
    QSqlQuery query(*db);
    query.prepare(QStringLiteral("SELECT vals, version FROM settings WHERE dialog=:dialog AND name=:name;"));
    query.bindValue(QStringLiteral(":dialog"), m_dialog);
    query.bindValue(QStringLiteral(":name"), name);
    if (!query.exec() || !query.next())
        return std::nullopt;
    return m_dialog + QLatin1Char(' ') + query.value(1).toString() + QLatin1Char('\n') +
           query.value(0).toString();
}

SettingsStore::Result SettingsStore::save(const QString &name, const QString &lines)
{
    const auto db = database(m_connection);
    if (!db)
        return Result::Failed;
    if (contains(name))
        return Result::Exists;
    QSqlQuery query(*db);
    query.prepare(QString::fromLatin1(insertStatement));
    query.bindValue(QStringLiteral(":dialog"), m_dialog);
    query.bindValue(QStringLiteral(":version"), SettingsText::version);
    query.bindValue(QStringLiteral(":name"), name);
    query.bindValue(QStringLiteral(":vals"), lines);
    return query.exec() ? Result::Ok : Result::Failed;
}

SettingsStore::Result SettingsStore::remove(const QString &name)
{
    const auto db = database(m_connection);
    if (!db)
        return Result::Failed;
    if (!contains(name))
        return Result::NotFound;
    QSqlQuery query(*db);
    query.prepare(QStringLiteral("DELETE FROM settings WHERE dialog=:dialog AND name=:name"));
    query.bindValue(QStringLiteral(":dialog"), m_dialog);
    query.bindValue(QStringLiteral(":name"), name);
    return query.exec() ? Result::Ok : Result::Failed;
}

SettingsStore::Result SettingsStore::rename(const QString &name, const QString &newName)
{
    const auto db = database(m_connection);
    if (!db)
        return Result::Failed;
    if (!contains(name))
        return Result::NotFound;
    if (contains(newName))
        return Result::Exists;
    QSqlQuery query(*db);
    query.prepare(QStringLiteral("UPDATE settings SET name=:newname WHERE dialog=:dialog AND name=:name"));
    query.bindValue(QStringLiteral(":newname"), newName);
    query.bindValue(QStringLiteral(":dialog"), m_dialog);
    query.bindValue(QStringLiteral(":name"), name);
    return query.exec() ? Result::Ok : Result::Failed;
}

std::optional<SettingsStore::LastUsed> SettingsStore::lastUsed() const
{
    const QSettings s;
    if (!s.contains(key(m_dialog, "_settings")))
        return std::nullopt;
    LastUsed last;
    last.lines = s.value(key(m_dialog, "_settings")).toString();
    last.version = s.value(key(m_dialog, "_version"), SettingsText::version).toString();
    if (s.contains(key(m_dialog, "_preset")))
        last.preset = s.value(key(m_dialog, "_preset")).toString();
    return last;
}

void SettingsStore::setLastUsed(const QString &lines, const QString &presetText) const
{
    QSettings s;
    s.setValue(key(m_dialog, "_settings"), lines);
    s.setValue(key(m_dialog, "_version"), SettingsText::version);
    s.setValue(key(m_dialog, "_preset"), presetText);
}

int SettingsStore::presetCount(const QString &dialog)
{
    int count = 0;
    while (QFile::exists(SettingsText::presetPath(dialog, count + 1)))
        ++count;
    return count;
}

QString SettingsStore::presetText(const QString &dialog, int number)
{
    const QString path = SettingsText::presetPath(dialog, number);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw DescribedException(
            QStringLiteral("Missing preset"),
            QStringLiteral("The built-in preset %1 of \"%2\" is missing.").arg(number).arg(dialog));
    return QString::fromUtf8(file.readAll());
}

QString SettingsStore::presetName(const QStringList &names, int number)
{
    const QString name = names.value(number - 1);
    return name.isEmpty() ? QStringLiteral("Predefined #%1").arg(number) : name;
}

SettingsText::Pairs SettingsStore::parse(const QString &text) const
{
    return SettingsText::parse(text, m_dialog);
}

SettingsText::Pairs SettingsStore::readFile(const QString &path) const
{
    return SettingsText::readFile(path, m_dialog);
}

void SettingsStore::writeFile(const QString &path, const QString &lines) const
{
    const FileWriteResult written = writeFileAtomically(path, SettingsText::format(m_dialog, lines).toUtf8());
    if (!written.ok())
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Cannot save %1.\n%2").arg(path, written.error));
}
