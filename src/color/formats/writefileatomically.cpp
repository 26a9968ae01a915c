#include "formats/writefileatomically.h"

#include <QBuffer>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace {

// Hands a writer's output on to the file and remembers any write the file did not take whole.
// QFileDevice reports a write cut short by a full disk as a short count, not as an error, and
// writers such as QTextStream drop that count; here it fails the file.
class CheckedDevice : public QIODevice
{
public:
    explicit CheckedDevice(QSaveFile &file) : m_file(file)
    {
        QIODevice::open(QIODevice::WriteOnly | Unbuffered);
    }

    bool failed() const { return m_failed; }

    bool isSequential() const override { return false; }
    qint64 size() const override { return m_file.size(); }
    bool seek(qint64 pos) override { return QIODevice::seek(pos) && m_file.seek(pos); }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 len) override
    {
        if (m_failed)
            return -1;
        // A write cut short takes what fits; the system names the reason when asked for the rest.
        qint64 done = 0;
        while (done < len) {
            const qint64 written = m_file.write(data + done, len - done);
            if (written <= 0)
                break;
            done += written;
        }
        if (done == len)
            return len;
        m_failed = true;
        setErrorString(m_file.error() != QFileDevice::NoError
                           ? m_file.errorString()
                           : QStringLiteral("The file took only part of a write."));
        return -1;
    }

private:
    QSaveFile &m_file;
    bool m_failed = false;
};

// The standard output cannot be replaced, only written. The writer fills a buffer first, so that
// it may seek, and a writer that gives up sends nothing at all.
FileWriteResult writeStandardOutput(const FileWriter &writer)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!writer(buffer))
        return {FileWriteResult::NotProduced, QStringLiteral("The contents could not be produced.")};
    // What the program printed before goes first.
    if (std::fflush(stdout) != 0)
        return {FileWriteResult::NotWritten, QString::fromLocal8Bit(std::strerror(errno))};
    const char *data = bytes.constData();
    qint64 left = bytes.size();
    while (left > 0) {
        const ssize_t n = ::write(STDOUT_FILENO, data, size_t(left));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return {FileWriteResult::NotWritten, n < 0 ? QString::fromLocal8Bit(std::strerror(errno))
                                                       : QStringLiteral("Nothing was written.")};
        data += n;
        left -= n;
    }
    return {};
}

} // namespace

const QString standardOutputPath = QStringLiteral("/dev/stdout");

FileWriteResult writeFileAtomically(const QString &path, const QByteArray &bytes)
{
    return writeFileAtomically(path,
                               [&bytes](QIODevice &device) { return device.write(bytes) == bytes.size(); });
}

FileWriteResult writeFileAtomically(const QString &path, const FileWriter &writer)
{
    if (path == standardOutputPath)
        return writeStandardOutput(writer);
    // QSaveFile would rename its temporary file over whatever is there; over a device node that
    // destroys the device (think of /dev/full written as root), over a pipe the reader waits on.
    const QFileInfo target(path);
    if (target.isDir())
        return {FileWriteResult::NotOpened, QStringLiteral("It is a folder, not a file.")};
    if (target.exists() && !target.isFile())
        return {FileWriteResult::NotOpened,
                QStringLiteral(
                    "It is not a regular file but a device, a pipe or a socket, which is never replaced.")};
    QSaveFile file(path);
    // Unbuffered, a write cut short by a full disk comes back at once as a short count, and the
    // next write names the reason; a buffer would swallow the reason when it is flushed.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return {FileWriteResult::NotOpened, file.errorString()};
    CheckedDevice device(file);
    const bool produced = writer(device);
    // What waits in the file's buffer meets a full disk here; commit() would not always tell.
    const bool flushed = produced && !device.failed() && file.flush();
    if (!flushed || file.error() != QFileDevice::NoError) {
        // Cancelling sets an error of its own; the file's is taken first.
        const FileWriteResult failure =
            device.failed() ? FileWriteResult{FileWriteResult::NotWritten, device.errorString()}
            : file.error() != QFileDevice::NoError
                ? FileWriteResult{FileWriteResult::NotWritten, file.errorString()}
                : FileWriteResult{FileWriteResult::NotProduced,
                                  QStringLiteral("The contents could not be produced.")};
        file.cancelWriting();
        return failure;
    }
    if (!file.commit())
        return {FileWriteResult::NotCommitted, file.errorString()};
    return {};
}
