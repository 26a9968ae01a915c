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
        NotWritten,  // a write was refused or short: a full disk, a file size limit, an I/O error
        NotProduced, // the writer gave up while every write went through; it knows why
        NotCommitted // the written file could not replace the old one
    };
    Stage stage = Written;
    // Why it failed, in words a message can end with ("No space left on device"); empty on success.
    QString error;

    bool ok() const { return stage == Written; }
};

// The one name written in place rather than replaced: the process's standard output, whatever it
// is (a terminal, a pipe, a file the shell opened).
extern const QString standardOutputPath; // "/dev/stdout"

// Writes a file so that it is replaced whole or not at all (through QSaveFile). Every write is
// checked, and so are the final flush and the commit: a write the file does not take whole fails
// the file even where the writer ignores the count, as QTextStream does. Only regular files are
// replaced; a folder, device node, pipe or socket at path is refused with a reason, never
// replaced by a file. standardOutputPath is written in place, with every write checked as well.
[[nodiscard]] FileWriteResult writeFileAtomically(const QString &path, const QByteArray &bytes);

// The streaming form: writer gets a device positioned at the start of the new file and returns
// false when it could not produce its output. The device can seek, as image writers need. An
// exception from writer leaves the file as a failure does and goes on to the caller.
using FileWriter = std::function<bool(QIODevice &device)>;
[[nodiscard]] FileWriteResult writeFileAtomically(const QString &path, const FileWriter &writer);
