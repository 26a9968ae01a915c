// Files are replaced whole or not at all, whatever goes wrong on the way.

#include "formats/writefileatomically.h"
#include "filesizelimit.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTextStream>
#include <QtTest>

#include <csignal>
#include <memory>
#include <stdexcept>
#include <sys/resource.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

Q_DECLARE_METATYPE(FileWriteResult::Stage)

namespace {

const QByteArray oldContents = "the old contents\n";

QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<unreadable>");
}

QByteArray pattern(int size)
{
    QByteArray b(size, '\0');
    for (int i = 0; i < size; ++i)
        b[i] = char('a' + i % 26);
    return b;
}

// How a row writes: bytes is what it means to leave in the file.
enum Form
{
    Bytes,
    TextStream,
    SeekBack,
    GiveUp,
    TextStreamIgnoringCount,
    TargetBecomesFolder
};

FileWriteResult write(Form form, const QString &path, const QByteArray &bytes)
{
    switch (form) {
    case Bytes:
        return writeFileAtomically(path, bytes);
    case TextStream:
        return writeFileAtomically(path, [&](QIODevice &device) {
            QTextStream stream(&device);
            stream << QString::fromLatin1(bytes);
            stream.flush();
            return stream.status() == QTextStream::Ok;
        });
    case TextStreamIgnoringCount:
        return writeFileAtomically(path, [&](QIODevice &device) {
            QTextStream stream(&device);
            stream << QString::fromLatin1(bytes);
            return true;
        });
    case SeekBack:
        // A header filled in after the body, as image writers do.
        return writeFileAtomically(path, [&](QIODevice &device) {
            return device.write(QByteArray(4, '?')) == 4 && device.write(bytes.mid(4)) == bytes.size() - 4 &&
                   device.seek(0) && device.write(bytes.left(4)) == 4 && device.pos() == 4;
        });
    case GiveUp:
        return writeFileAtomically(path, [&](QIODevice &device) {
            device.write(bytes);
            return false;
        });
    case TargetBecomesFolder:
        return writeFileAtomically(path, [&](QIODevice &device) {
            // Whatever takes the name meanwhile, the new file cannot replace it.
            return device.write(bytes) == bytes.size() && QDir().mkdir(path);
        });
    }
    return {};
}

} // namespace

class TestWriteFileAtomically : public QObject
{
    Q_OBJECT
private slots:
    void writes_data();
    void writes();
    void fails_data();
    void fails();
    void writerThrows();
    void standardOutputInPlace();
};

void TestWriteFileAtomically::writes_data()
{
    QTest::addColumn<int>("form");
    QTest::addColumn<bool>("existing");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("new file") << int(Bytes) << false << pattern(100);
    QTest::newRow("replaces a file") << int(Bytes) << true << pattern(100);
    QTest::newRow("empty file replaces one") << int(Bytes) << true << QByteArray();
    QTest::newRow("a megabyte") << int(Bytes) << true << pattern(1 << 20);
    QTest::newRow("text stream") << int(TextStream) << true << pattern(100000);
    QTest::newRow("seeking writer") << int(SeekBack) << false << pattern(70000);
}

void TestWriteFileAtomically::writes()
{
    QFETCH(int, form);
    QFETCH(bool, existing);
    QFETCH(QByteArray, bytes);
    QTemporaryDir dir;
    const QString path = dir.filePath("out.txt");
    if (existing) {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly) && f.write(oldContents) == oldContents.size());
    }
    const FileWriteResult result = write(Form(form), path, bytes);
    QVERIFY2(result.ok(), qPrintable(result.error));
    QCOMPARE(result.stage, FileWriteResult::Written);
    QVERIFY(result.error.isEmpty());
    QCOMPARE(readAll(path), bytes);
    QCOMPARE(QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{"out.txt"});
}

void TestWriteFileAtomically::fails_data()
{
    QTest::addColumn<QString>("name");     // the target, in a fresh folder
    QTest::addColumn<QString>("inTheWay"); // "file", "folder", "fifo" or nothing at the target
    QTest::addColumn<int>("form");
    QTest::addColumn<int>("sizeLimit"); // 0: none
    QTest::addColumn<int>("size");
    QTest::addColumn<FileWriteResult::Stage>("stage");
    QTest::addColumn<QString>("reason"); // empty: any reason at all

    const auto NotOpened = FileWriteResult::NotOpened;
    const auto NotWritten = FileWriteResult::NotWritten;
    const auto NotProduced = FileWriteResult::NotProduced;
    const auto NotCommitted = FileWriteResult::NotCommitted;
    const QString notRegular =
        "It is not a regular file but a device, a pipe or a socket, which is never replaced.";
    QTest::newRow("no such folder") << "none/out.txt"
                                    << "" << int(Bytes) << 0 << 10 << NotOpened << "No such file or directory";
    QTest::newRow("folder in the way") << "out.txt"
                                       << "folder" << int(Bytes) << 0 << 10 << NotOpened
                                       << "It is a folder, not a file.";
    QTest::newRow("pipe in the way") << "out.txt"
                                     << "fifo" << int(Bytes) << 0 << 10 << NotOpened << notRegular;
    QTest::newRow("device in the way") << "out.txt"
                                       << "device" << int(Bytes) << 0 << 10 << NotOpened << notRegular;
    QTest::newRow("writer gives up") << "out.txt"
                                     << "file" << int(GiveUp) << 0 << 10 << NotProduced << "";
    QTest::newRow("writer gives up, no old file") << "out.txt"
                                                  << "" << int(GiveUp) << 0 << 10 << NotProduced << "";
    QTest::newRow("disk full in one big write") << "out.txt"
                                                << "file" << int(Bytes) << 4096 << 100000 << NotWritten
                                                << "File too large";
    QTest::newRow("disk full, new file") << "out.txt"
                                         << "" << int(Bytes) << 4096 << 100000 << NotWritten << "File too large";
    QTest::newRow("disk full under a text stream")
        << "out.txt"
        << "file" << int(TextStream) << 4096 << 100000 << NotWritten << "File too large";
    // QTextStream drops the count of a short write; the file must fail all the same.
    QTest::newRow("disk full, count ignored")
        << "out.txt"
        << "file" << int(TextStreamIgnoringCount) << 4096 << 100000 << NotWritten << "File too large";
    // Small writes wait in the file's buffer and meet the full disk only on the final flush.
    QTest::newRow("disk full at the end") << "out.txt"
                                          << "file" << int(Bytes) << 4096 << 10000 << NotWritten
                                          << "File too large";
    QTest::newRow("name taken meanwhile") << "out.txt"
                                          << "" << int(TargetBecomesFolder) << 0 << 10 << NotCommitted << "";
}

void TestWriteFileAtomically::fails()
{
    QFETCH(QString, name);
    QFETCH(QString, inTheWay);
    QFETCH(int, form);
    QFETCH(int, sizeLimit);
    QFETCH(int, size);
    QFETCH(FileWriteResult::Stage, stage);
    QFETCH(QString, reason);
    QTemporaryDir dir;
    const QString path = dir.filePath(name);
    if (inTheWay == "file") {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly) && f.write(oldContents) == oldContents.size());
    } else if (inTheWay == "folder") {
        QVERIFY(QDir().mkdir(path));
    } else if (inTheWay == "fifo") {
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    } else if (inTheWay == "device") {
        // A twin of /dev/full: run as root, a replaced file used to take its place.
        if (mknod(QFile::encodeName(path).constData(), S_IFCHR | 0600, makedev(1, 7)) != 0)
            QSKIP("a device node can be made only with the right to make one (root)");
    }
    const QStringList before =
        QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);

    FileWriteResult result;
    {
        std::unique_ptr<FileSizeLimit> limit(sizeLimit > 0 ? new FileSizeLimit(rlim_t(sizeLimit)) : nullptr);
        result = write(Form(form), path, pattern(size));
    }
    QCOMPARE(result.stage, stage);
    QVERIFY(!result.ok());
    QVERIFY(!result.error.isEmpty());
    if (!reason.isEmpty())
        QCOMPARE(result.error, reason);

    // Nothing partial, nothing left over: the folder holds what it held.
    QStringList after = QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    if (form == TargetBecomesFolder) {
        QVERIFY(QFileInfo(path).isDir());
        after.removeOne(name);
    }
    QCOMPARE(after, before);
    if (inTheWay == "file")
        QCOMPARE(readAll(path), oldContents);
    if (inTheWay == "folder")
        QVERIFY(QFileInfo(path).isDir());
    if (inTheWay == "fifo") {
        struct stat st;
        QVERIFY(lstat(QFile::encodeName(path).constData(), &st) == 0 && S_ISFIFO(st.st_mode));
    }
    if (inTheWay == "device") {
        struct stat st;
        QVERIFY(lstat(QFile::encodeName(path).constData(), &st) == 0 && S_ISCHR(st.st_mode));
    }
}

void TestWriteFileAtomically::writerThrows()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("out.txt");
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly) && f.write(oldContents) == oldContents.size());
    f.close();
    QVERIFY_EXCEPTION_THROWN((void)writeFileAtomically(path,
                                                       [](QIODevice &device) -> bool {
                                                           device.write(pattern(50000));
                                                           throw std::runtime_error("encoder failed");
                                                       }),
                             std::runtime_error);
    QCOMPARE(readAll(path), oldContents);
    QCOMPARE(QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{"out.txt"});
}

// The standard output is written in place, wherever it points, with every write checked.
void TestWriteFileAtomically::standardOutputInPlace()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("stdout.txt");
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly) && f.write("kept:") == 5 && f.flush());
    const int target = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_APPEND);
    const int full = ::open("/dev/full", O_WRONLY);
    QVERIFY(target >= 0);
    struct stat before;
    QCOMPARE(fstat(target, &before), 0);

    std::fflush(stdout);
    const int saved = ::dup(STDOUT_FILENO);
    ::dup2(target, STDOUT_FILENO);
    const FileWriteResult seeking = write(SeekBack, standardOutputPath, pattern(70000));
    const FileWriteResult givenUp = write(GiveUp, standardOutputPath, pattern(10));
    FileWriteResult lost;
    if (full >= 0) {
        ::dup2(full, STDOUT_FILENO);
        lost = writeFileAtomically(standardOutputPath, pattern(100));
    }
    ::dup2(saved, STDOUT_FILENO);
    ::close(saved);
    ::close(target);

    QVERIFY2(seeking.ok(), qPrintable(seeking.error));
    QCOMPARE(givenUp.stage, FileWriteResult::NotProduced);
    QCOMPARE(readAll(path), QByteArray("kept:") + pattern(70000));
    struct stat after;
    QCOMPARE(stat(QFile::encodeName(path).constData(), &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
    if (full < 0)
        QSKIP("this system has no /dev/full");
    ::close(full);
    QCOMPARE(lost.stage, FileWriteResult::NotWritten);
    QCOMPARE(lost.error, QString("No space left on device"));
}

QTEST_GUILESS_MAIN(TestWriteFileAtomically)
#include "tst_writefileatomically.moc"
