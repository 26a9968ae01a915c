#include "formats/writefileatomically.h"

#include <QFileInfo>
#include <QSaveFile>

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
        const qint64 written = m_file.write(data, len);
        if (written == len)
            return written;
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

} // namespace

FileWriteResult writeFileAtomically(const QString &path, const QByteArray &bytes)
{
    return writeFileAtomically(path,
                               [&bytes](QIODevice &device) { return device.write(bytes) == bytes.size(); });
}

FileWriteResult writeFileAtomically(const QString &path, const FileWriter &writer)
{
    // QSaveFile would rename its temporary file over whatever is there; over a device node that
    // destroys the device (think of /dev/null written as root).
    const QFileInfo target(path);
    if (target.exists() && !target.isFile() && !target.isDir())
        return {FileWriteResult::NotOpened, QStringLiteral("Not a regular file.")};
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {FileWriteResult::NotOpened, file.errorString()};
    CheckedDevice device(file);
    const bool produced = writer(device);
    // What waits in the file's buffer meets a full disk here; commit() would not always tell.
    const bool flushed = produced && !device.failed() && file.flush();
    if (!flushed || file.error() != QFileDevice::NoError) {
        const QString error = device.failed()                        ? device.errorString()
                              : file.error() != QFileDevice::NoError ? file.errorString()
                                                                     : QStringLiteral("The writer failed.");
        file.cancelWriting();
        return {FileWriteResult::NotWritten, error};
    }
    if (!file.commit())
        return {FileWriteResult::NotCommitted, file.errorString()};
    return {};
}
