#include "document/autosave.h"
#include "document/chromaxisdocument.h"
#include "document/documentcommands.h"
#include "palette/describedexception.h"
#include "storage/projectfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdlib>
#include <memory>

namespace {

const char *const crashOption = "--crash-with-autosave";

Palette<uint> samplePalette(uint seed = 0)
{
    Palette<uint> p;
    for (uint i = 0; i < 5; ++i)
        p.append({(i * 13000 + seed) & 0xFFFF, 65535 - i * 9000, (i * 7777 + 3 * seed) & 0xFFFF, 65535 - i});
    p.setProperty(PaletteName, QStringLiteral("Unsaved %1").arg(seed));
    p.setProperty(PaletteComment, QStringLiteral("kept across a crash"));
    return p;
}

// 3x2 images whose cells tell rows, columns and byte order apart.
DocumentImage sampleImage(int mode)
{
    switch (mode) {
    case DocumentImage::RGB: {
        QImage picture(3, 2, QImage::Format_ARGB32);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 3; ++x)
                picture.setPixel(x, y, 0xFF000000u | quint32(x * 0x500000 + y * 0x3300 + 7));
        return DocumentImage::fromPicture(picture);
    }
    case DocumentImage::Indexed8:
        return DocumentImage::fromIndexes8(3, 2, {0, 1, 2, 4, 3, 0});
    case DocumentImage::Indexed32: {
        DocumentImage image = DocumentImage::fromIndexes32(3, 2, {4, 3, 2, 1, 0, 0x01000002u});
        image.setInterpolate(true);
        return image;
    }
    case DocumentImage::Continuous:
        return DocumentImage::fromContinuous(3, 2, {0.0f, 100.5f, 30000.0f, 65535.0f, 12.25f, 50000.0f},
                                             true);
    default:
        return {};
    }
}

// Work the user has not saved: a new palette, maybe an image, a selection, in a document that
// belongs to a project file.
void makeUnsavedWork(ChromaxisDocument &document, int mode, uint seed = 0)
{
    document.setProjectFileName(QStringLiteral("/projects/mine.cxw"));
    document.setPalette(samplePalette(seed));
    if (mode != DocumentImage::None)
        document.setImage(sampleImage(mode));
    document.setSelection({1, 3});
}

QStringList autosaveFiles(const QString &folder)
{
    return QDir(folder).entryList({QStringLiteral("autosave-*")}, QDir::Files, QDir::Name);
}

// Leaves an autosave behind and dies without cleaning up, as a crash does.
[[noreturn]] void crashWithAutosave(const QString &folder, uint seed)
{
    ChromaxisDocument document;
    makeUnsavedWork(document, DocumentImage::Indexed8, seed);
    Autosave autosave(document, folder);
    autosave.save();
    std::_Exit(3);
}

} // namespace

class TestAutosave : public QObject
{
    Q_OBJECT
private slots:
    void init() { m_dir = std::make_unique<QTemporaryDir>(); }

    void savedProjectRestoresTheWork_data()
    {
        QTest::addColumn<int>("mode");
        QTest::newRow("palette only") << int(DocumentImage::None);
        QTest::newRow("RGB") << int(DocumentImage::RGB);
        QTest::newRow("indexed 8 bit") << int(DocumentImage::Indexed8);
        QTest::newRow("indexed 32 bit") << int(DocumentImage::Indexed32);
        QTest::newRow("continuous") << int(DocumentImage::Continuous);
    }
    void savedProjectRestoresTheWork()
    {
        QFETCH(int, mode);
        ChromaxisDocument document;
        makeUnsavedWork(document, mode);
        Autosave autosave(document, folder());
        QVERIFY(autosave.isActive());
        QVERIFY(autosave.update());
        QVERIFY(QFileInfo(autosave.path()).isFile());
        QCOMPARE(QFileInfo(autosave.path()).absolutePath(), QFileInfo(folder()).absoluteFilePath());

        // Autosaving is not saving: the document still belongs to its project and is unsaved.
        QCOMPARE(document.projectFileName(), QStringLiteral("/projects/mine.cxw"));
        QVERIFY(document.isPaletteModified());
        QCOMPARE(document.isImageModified(), mode != DocumentImage::None);

        ChromaxisDocument restored;
        DocumentCommands(restored, nullptr).restoreProject(autosave.path());
        QCOMPARE(restored.palette(), samplePalette());
        QCOMPARE(restored.palette().property(PaletteName), QStringLiteral("Unsaved 0"));
        QCOMPARE(restored.imageMode(), mode);
        QCOMPARE(restored.imageWidth(), document.imageWidth());
        QCOMPARE(restored.imageHeight(), document.imageHeight());
        QCOMPARE(ProjectFile::pixelBytes(restored.image()), ProjectFile::pixelBytes(sampleImage(mode)));
        QCOMPARE(restored.image().interpolate(), document.image().interpolate());
        QCOMPARE(restored.displayedPicture(), document.displayedPicture());
        QCOMPARE(restored.selection(), (std::set<int>{1, 3}));
        // Back as the unsaved work it was, tied to no file: saving asks for a name.
        QVERIFY(restored.projectFileName().isEmpty());
        QVERIFY(restored.isPaletteModified());
        QCOMPARE(restored.isImageModified(), mode != DocumentImage::None);
        QVERIFY(!restored.history().canUndo());
    }

    void onlyUnsavedChangesAreWritten()
    {
        ChromaxisDocument document;
        Autosave autosave(document, folder());
        QVERIFY(!Autosave::hasUnsavedChanges(document));
        QVERIFY(!autosave.update());
        QVERIFY(!QFile::exists(autosave.path()));

        makeUnsavedWork(document, DocumentImage::Indexed8);
        QVERIFY(autosave.update());
        const QByteArray first = readAll(autosave.path());
        // Nothing changed since: no second write.
        QVERIFY(!autosave.update());
        document.setSelection({0});
        QVERIFY(autosave.update());
        QVERIFY(readAll(autosave.path()) != first);
        QCOMPARE(ProjectFile::read(autosave.path()).selection, (std::set<int>{0}));

        // Saving the palette leaves the image unsaved: still worth keeping.
        DocumentCommands commands(document, nullptr);
        commands.savePalette(m_dir->filePath(QStringLiteral("work.gpl")));
        document.setSelection({2});
        QVERIFY(autosave.update());
        QVERIFY(QFile::exists(autosave.path()));
        // Once everything is saved there is nothing to recover.
        commands.saveImage(m_dir->filePath(QStringLiteral("work.png")));
        QVERIFY(!Autosave::hasUnsavedChanges(document));
        QVERIFY(!autosave.update());
        QVERIFY(!QFile::exists(autosave.path()));
    }

    void timerKeepsTheCopyCurrent()
    {
        ChromaxisDocument document;
        Autosave autosave(document, folder(), 20);
        QCOMPARE(autosave.interval(), 20);
        QTest::qWait(60);
        QVERIFY(!QFile::exists(autosave.path()));

        document.setPalette(samplePalette(7));
        QTRY_VERIFY(QFile::exists(autosave.path()));
        QTRY_COMPARE(ProjectFile::read(autosave.path()).palette, samplePalette(7));
        document.setPalette(samplePalette(8));
        QTRY_COMPARE(ProjectFile::read(autosave.path()).palette, samplePalette(8));

        DocumentCommands(document, nullptr).savePalette(m_dir->filePath(QStringLiteral("saved.gpl")));
        QTRY_VERIFY(!QFile::exists(autosave.path()));
    }

    void cleanExitRemovesTheCopy()
    {
        ChromaxisDocument document;
        makeUnsavedWork(document, DocumentImage::RGB);
        QString path;
        {
            Autosave autosave(document, folder());
            autosave.save();
            path = autosave.path();
            QCOMPARE(autosaveFiles(folder()).size(), 2); // the project and the session's lock
        }
        QVERIFY(!QFile::exists(path));
        QCOMPARE(autosaveFiles(folder()), QStringList());
    }

    void sessionsRunningTogetherKeepApart()
    {
        ChromaxisDocument first, second;
        makeUnsavedWork(first, DocumentImage::None, 1);
        makeUnsavedWork(second, DocumentImage::None, 2);
        Autosave a(first, folder());
        Autosave b(second, folder());
        QVERIFY(a.isActive() && b.isActive());
        QVERIFY(a.path() != b.path());
        a.save();
        b.save();
        QCOMPARE(ProjectFile::read(a.path()).palette, samplePalette(1));
        QCOMPARE(ProjectFile::read(b.path()).palette, samplePalette(2));
        // A running session's copy is its own, not an orphan to offer.
        QCOMPARE(a.orphans(), QStringList());
        QCOMPARE(b.orphans(), QStringList());
    }

    void crashedSessionsLeaveOrphans()
    {
        QCOMPARE(runCrashingSession(11), 3);
        const QStringList left = autosaveFiles(folder());
        QCOMPARE(left, QStringList({"autosave-0.cxw", "autosave-0.lock"}));
        const QString older = QDir(folder()).absoluteFilePath(QStringLiteral("autosave-0.cxw"));
        // The lock of a dead session no longer holds its slot, but the work in it is not overwritten.
        ChromaxisDocument probe;
        {
            Autosave autosave(probe, folder());
            QVERIFY(autosave.path() != older);
            QCOMPARE(runCrashingSession(12), 3);
        }
        QStringList crashed = QDir(folder()).entryList({QStringLiteral("autosave-*.cxw")}, QDir::Files);
        QCOMPARE(crashed.size(), 2);
        crashed.removeAll(QStringLiteral("autosave-0.cxw"));
        const QString newer = QDir(folder()).absoluteFilePath(crashed.value(0));
        QFile(older).setFileTime(QDateTime::currentDateTime().addSecs(-600),
                                 QFileDevice::FileModificationTime);

        ChromaxisDocument document;
        makeUnsavedWork(document, DocumentImage::None);
        Autosave autosave(document, folder());
        autosave.save();
        QCOMPARE(autosave.orphans(), QStringList({newer, older}));
        QCOMPARE(ProjectFile::read(newer).palette, samplePalette(12));
        QCOMPARE(ProjectFile::read(older).palette, samplePalette(11));

        Autosave::removeOrphan(newer);
        QCOMPARE(autosave.orphans(), QStringList({older}));
        Autosave::removeOrphan(older);
        QCOMPARE(autosave.orphans(), QStringList());
        QVERIFY(QFile::exists(autosave.path()));
    }

    void folderThatCannotBeMadeDisablesAutosave()
    {
        const QString blocker = m_dir->filePath(QStringLiteral("a file"));
        QFile file(blocker);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        ChromaxisDocument document;
        makeUnsavedWork(document, DocumentImage::None);
        Autosave autosave(document, blocker + QStringLiteral("/autosave"));
        QVERIFY(!autosave.isActive());
        QVERIFY(autosave.path().isEmpty());
        QVERIFY(!autosave.update());
        QCOMPARE(autosave.orphans(), QStringList());
    }

    void failedWriteIsReportedAndRetried()
    {
        ChromaxisDocument document;
        Autosave autosave(document, folder(), 20);
        QSignalSpy failures(&autosave, &Autosave::failed);
        // A folder where the file should go: the write cannot even start.
        QVERIFY(QDir().mkpath(autosave.path()));
        makeUnsavedWork(document, DocumentImage::None);
        QTRY_VERIFY(failures.count() >= 2);
        QCOMPARE(failures.first().first().toString(),
                 QStringLiteral("Cannot save project %1.\nCould not open the file for writing.\n"
                                "It is a folder, not a file.")
                     .arg(QFileInfo(autosave.path()).fileName()));
        QVERIFY_EXCEPTION_THROWN(autosave.update(), DescribedException);

        QVERIFY(QDir(autosave.path()).removeRecursively());
        QTRY_VERIFY(QFileInfo(autosave.path()).isFile());
        QCOMPARE(ProjectFile::read(autosave.path()).palette, samplePalette());
    }

private:
    QString folder() const { return m_dir->filePath(QStringLiteral("data")); }

    static QByteArray readAll(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    int runCrashingSession(uint seed) const
    {
        QProcess session;
        session.start(QCoreApplication::applicationFilePath(),
                      {QString::fromLatin1(crashOption), folder(), QString::number(seed)});
        if (!session.waitForFinished(60000))
            return -1;
        return session.exitCode();
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc == 4 && qstrcmp(argv[1], crashOption) == 0)
        crashWithAutosave(QString::fromLocal8Bit(argv[2]), uint(atoi(argv[3])));
    TestAutosave test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_autosave.moc"
