#pragma once

#include <QStringList>
#include <QTextStream>

// What a command handler gets: its own arguments (after the command words) and the streams.
struct CliContext
{
    QStringList args;
    QTextStream &out;
    QTextStream &err;
};

// Thrown by a handler when its arguments are wrong: the dispatcher prints the usage and exits 2.
struct CliUsageError
{
    QString reason;
};

// Exit codes of the command-line contract.
enum CliExit : int { ExitOk = 0, ExitFailure = 1, ExitUsage = 2 };
