#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

class QIODevice;

// How writeFileAtomically ended. On any failure nothing is left behind: an existing file keeps
// its old contents and no new file appears.
struct FileWriteResult
{
    enum Stage
    {
        Written,     // the file holds the new contents
        NotOpened,   // the file could not be created: no such folder, a folder or device there, ...
        NotWritten,  // a write was refused or short, or the writer gave up
        NotCommitted // the written file could not replace the old one
    };
    Stage stage = Written;
    QString error; // the system's reason, for a log; empty on success

    bool ok() const { return stage == Written; }
};

// Writes a file so that it is replaced whole or not at all (through QSaveFile). Every write is
// checked: a write the file does not take whole fails the file even where the writer ignores the
// count, as QTextStream does. Only regular files are written; an existing device or pipe at path
// is refused rather than replaced by a file.
[[nodiscard]] FileWriteResult writeFileAtomically(const QString &path, const QByteArray &bytes);

// The streaming form: writer gets a device positioned at the start of the new file and returns
// false when it could not produce its output. The device can seek, as image writers need. An
// exception from writer leaves the file as a failure does and goes on to the caller.
using FileWriter = std::function<bool(QIODevice &device)>;
[[nodiscard]] FileWriteResult writeFileAtomically(const QString &path, const FileWriter &writer);
