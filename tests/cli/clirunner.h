#pragma once

#include <QProcess>
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
