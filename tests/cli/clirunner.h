#pragma once

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QString>
#include <QStringList>

// Runs chromaxis-cli as a user would, from the build tree.
struct CliRun
{
    int code = -1;
    QByteArray out;
    QString err;
};

inline CliRun runCli(const QStringList &args, const QByteArray &stdinData = QByteArray())
{
    QProcess p;
    p.start(QStringLiteral(CHROMAXIS_CLI), args);
    if (!stdinData.isEmpty())
        p.write(stdinData);
    p.closeWriteChannel();
    p.waitForFinished(60000);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, p.readAllStandardOutput(),
            QString::fromUtf8(p.readAllStandardError())};
}

// Fixture files of the command-line tests.
inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

inline QByteArray readFile(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Arguments written "@name" become the path of name in folder; options and "-" stay as they are.
inline QStringList inFolder(QStringList args, const QTemporaryDir &folder)
{
    for (QString &a : args)
        if (a.startsWith('@'))
            a = folder.filePath(a.mid(1));
    return args;
}
