// Every writer of the program, on a disk that fills up, under a file size it may not pass, and
// with a pipe or a device node where the file should go: each says why it failed, the old file
// stays whole, nothing is left beside it, and what sits in the way stays what it was. The
// document does not take the name of a file it could not write.

#include "document/chromaxisdocument.h"
#include "filesizelimit.h"
#include "document/chromaxismacrosystem.h"
#include "document/documentcommands.h"
#include "formats/paletteformats.h"
#include "palette/describedexception.h"
#include "storage/projectfile.h"
#include "storage/settingsstore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <functional>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace {

const QByteArray oldContents = "the old contents\n";

enum Trouble
{
    SizeLimit, // the file may not grow past 4 KiB
    FullDisk,  // a 16 KiB file system holds the old file
    Pipe,      // a named pipe where the file should go
    Device     // a twin of /dev/full where the file should go
};

// Large enough that no trouble above lets it through.
Palette<uint> bigPalette()
{
    Palette<uint> p;
    for (int i = 0; i < 6000; ++i)
        p.append({uint(i * 7) & 0xFFFF, uint(i * 13) & 0xFFFF, uint(i * 31) & 0xFFFF, 65535});
    return p;
}

// Indexes of bigPalette() in no order a compressor could use.
DocumentImage noisyImage()
{
    std::vector<uint32_t> cells(128 * 128);
    quint32 x = 12345;
    for (uint32_t &c : cells) {
        x = x * 1103515245u + 12345u;
        c = (x >> 8) % 6000;
    }
    return DocumentImage::fromIndexes32(128, 128, std::move(cells));
}

struct Writer
{
    const char *name;
    const char *file;
    // The messages, %1 the path, %2 the file name; the reason follows on a line of its own.
    QString notOpenedTitle, notOpened, notWrittenTitle, notWritten;
    std::function<void(ChromaxisDocument &, const QString &)> write;
};

std::vector<Writer> writers()
{
    const QString save = QStringLiteral("Could not save");
    std::vector<Writer> w;
    w.push_back({"palette file", "old.gpl", "Error on palette export",
                 "The destination file\n'%1'\ncould not be built.", save, "Unable to save palette under\n%1.",
                 [](ChromaxisDocument &, const QString &p) {
                     exportPalette(p, bigPalette(), formatFromWord("gpl"));
                 }});
    w.push_back({"Photoshop palette", "old.aco", "Error on palette export",
                 "The destination file\n'%1'\ncould not be built.", save, "Unable to save palette under\n%1.",
                 [](ChromaxisDocument &, const QString &p) {
                     exportPalette(p, bigPalette(), formatFromWord("aco"));
                 }});
    w.push_back(
        {"document palette", "old.gpl", "Error on palette export",
         "The destination file\n'%1'\ncould not be built.", save, "Unable to save palette under\n%1.",
         [](ChromaxisDocument &d, const QString &p) { DocumentCommands(d, nullptr).savePalette(p); }});
    w.push_back(
        {"text export", "old.txt", save, "Unable to save palette under\n%1.\nCould not open file.", save,
         "Unable to save palette under\n%1.", [](ChromaxisDocument &d, const QString &p) {
             DocumentCommands(d, nullptr).exportPaletteText(p, PaletteTextEncoder::clipboardTemplate());
         }});
    w.push_back(
        {"project", "old.cxw", save, "Cannot save project %2.\nCould not open the file for writing.", save,
         "Cannot save project %2.\nCould not write the file.",
         [](ChromaxisDocument &d, const QString &p) { DocumentCommands(d, nullptr).saveProject(p); }});
    w.push_back({"picture", "old.png", save, "Unable to save %2.", save, "Unable to save %2.",
                 [](ChromaxisDocument &d, const QString &p) { DocumentCommands(d, nullptr).saveImage(p); }});
    w.push_back({"NumPy array", "old.npy", "Error on writing NumPy array",
                 "Could not open file '%1' for writing.", save, "Could not write file '%1'.",
                 [](ChromaxisDocument &d, const QString &p) { DocumentCommands(d, nullptr).saveImage(p); }});
    w.push_back({"macro", "old.cxm", "Error on writing macro",
                 "The destination file\n'%1'\ncould not be built.", save, "Unable to save macro under\n%1.",
                 [](ChromaxisDocument &, const QString &p) {
                     MacroFile::write(p, {{"tint", QString(70000, QLatin1Char('x'))}});
                 }});
    w.push_back(
        {"selection", "old.txt", save, "Could not open file '%1'.", save, "Could not write file '%1'.",
         [](ChromaxisDocument &d, const QString &p) { DocumentCommands(d, nullptr).saveSelection(p); }});
    w.push_back({"settings", "old.txt", save, "Cannot save %1.", save, "Cannot save %1.",
                 [](ChromaxisDocument &, const QString &p) {
                     SettingsStore("no database", "tint")
                         .writeFile(p, QStringLiteral("comment:%1\n").arg(QString(70000, 'c')));
                 }});
    return w;
}

QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<unreadable>");
}

mode_t typeOf(const QString &path)
{
    struct stat st;
    return lstat(QFile::encodeName(path).constData(), &st) == 0 ? (st.st_mode & S_IFMT) : 0;
}

} // namespace

class TestFailedSaves : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void failedSaveKeepsEverything_data();
    void failedSaveKeepsEverything();

private:
    QTemporaryDir m_dir;
    QString m_smallDisk; // a mounted 16 KiB file system, or empty
    int m_rows = 0;
};

void TestFailedSaves::initTestCase()
{
    QVERIFY(m_dir.isValid());
    const QString mountPoint = m_dir.filePath("small");
    QVERIFY(QDir().mkdir(mountPoint));
    if (mount("chromaxis-test", QFile::encodeName(mountPoint).constData(), "tmpfs", MS_NOSUID | MS_NODEV,
              "size=16k,mode=0700") == 0)
        m_smallDisk = mountPoint;
}

void TestFailedSaves::cleanupTestCase()
{
    if (!m_smallDisk.isEmpty())
        umount2(QFile::encodeName(m_smallDisk).constData(), MNT_DETACH);
}

void TestFailedSaves::failedSaveKeepsEverything_data()
{
    QTest::addColumn<int>("writer");
    QTest::addColumn<int>("trouble");
    const std::vector<Writer> all = writers();
    for (int i = 0; i < int(all.size()); ++i)
        for (const auto &t :
             {std::make_pair(SizeLimit, "file size limit"), std::make_pair(FullDisk, "full disk"),
              std::make_pair(Pipe, "pipe"), std::make_pair(Device, "device")})
            QTest::addRow("%s, %s", all[size_t(i)].name, t.second) << i << int(t.first);
}

void TestFailedSaves::failedSaveKeepsEverything()
{
    QFETCH(int, writer);
    QFETCH(int, trouble);
    const Writer w = writers()[size_t(writer)];

    QString folder = m_dir.filePath(QString::number(++m_rows));
    if (trouble == FullDisk) {
        if (m_smallDisk.isEmpty())
            QSKIP("a small file system can be mounted only with the right to mount (root)");
        folder = m_smallDisk;
    } else {
        QVERIFY(QDir().mkpath(folder));
    }
    const QString path = folder + QLatin1Char('/') + QLatin1String(w.file);
    QFile::remove(path);
    if (trouble == Pipe) {
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    } else if (trouble == Device) {
        if (mknod(QFile::encodeName(path).constData(), S_IFCHR | 0600, makedev(1, 7)) != 0)
            QSKIP("a device node can be made only with the right to make one (root)");
    } else {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly) && f.write(oldContents) == oldContents.size() && f.flush());
        f.close();
        QCOMPARE(readAll(path), oldContents);
    }
    const mode_t type = typeOf(path);
    const QStringList before =
        QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::System);

    ChromaxisDocument doc;
    doc.setPaletteState({bigPalette(), 0, QStringLiteral("before.gpl"), true, true}, true);
    doc.setImageState({noisyImage(), QStringLiteral("before.npy"), true}, true);
    std::set<int> selection;
    for (int i = 0; i < 5000; ++i)
        selection.insert(i);
    doc.setSelection(selection);
    doc.setProjectFileName(QStringLiteral("before.cxw"));

    const bool refused = trouble == Pipe || trouble == Device;
    const QString reason =
        trouble == SizeLimit ? QStringLiteral("File too large")
        : trouble == FullDisk
            ? QStringLiteral("No space left on device")
            : QStringLiteral("It is not a regular file but a device, a pipe or a socket, which is "
                             "never replaced.");
    const QString name = QFileInfo(path).fileName();
    const QString title = refused ? w.notOpenedTitle : w.notWrittenTitle;
    const QString message = QString(refused ? w.notOpened : w.notWritten)
                                .replace(QLatin1String("%1"), path)
                                .replace(QLatin1String("%2"), name) +
                            QLatin1Char('\n') + reason;
    try {
        std::unique_ptr<FileSizeLimit> limit(trouble == SizeLimit ? new FileSizeLimit(4096) : nullptr);
        w.write(doc, path);
        QFAIL("the save succeeded");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), title);
        QCOMPARE(e.message(), message);
    }

    QCOMPARE(typeOf(path), type);
    if (!refused)
        QCOMPARE(readAll(path), oldContents);
    QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::System),
             before);
    QCOMPARE(doc.paletteFileName(), QString("before.gpl"));
    QVERIFY(doc.isPaletteModified());
    QCOMPARE(doc.imageFileName(), QString("before.npy"));
    QVERIFY(doc.isImageModified());
    QCOMPARE(doc.projectFileName(), QString("before.cxw"));
    QFile::remove(path);
}

QTEST_GUILESS_MAIN(TestFailedSaves)
#include "tst_failedsaves.moc"
