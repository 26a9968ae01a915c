// The window keeps unsaved work in its data folder, offers it back after a crash and removes it on
// a clean exit; every question is answered as a user would.
#include "chromaxismainwindow.h"
#include "crashrecovery.h"
#include "guitesting.h"
#include "paletteview.h"
#include "storage/palettedatabase.h"
#include "storage/projectfile.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QSettings>

namespace {

ProjectData crashedWork()
{
    ProjectData data;
    data.palette = Palette<uint>({{65280, 0, 0, 65535}, {0, 32768, 65280, 65535}, {4096, 4096, 4096, 65535}});
    data.palette.setProperty(PaletteName, QStringLiteral("Before the crash"));
    data.paletteFileName = QStringLiteral("/palettes/work.gpl");
    data.paletteModified = true;
    data.image = DocumentImage::fromIndexes8(3, 1, {2, 1, 0});
    data.imageFileName = QStringLiteral("/images/work.png");
    data.imageModified = true;
    data.selection = {0, 2};
    return data;
}

QStringList autosaveFiles()
{
    return QDir(CrashRecovery::defaultFolder()).entryList({QStringLiteral("autosave-*")}, QDir::Files);
}

// An autosave as a session that crashed leaves it: its file, and no running session holding it.
QString
leaveCrashedAutosave(const QByteArray &contents = ProjectFile::gzip(ProjectFile::encode(crashedWork())))
{
    QDir().mkpath(CrashRecovery::defaultFolder());
    const QString path = QDir(CrashRecovery::defaultFolder()).filePath(QStringLiteral("autosave-5.cxw"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

} // namespace

class TestCrashRecovery : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        QSettings().clear();
        QVERIFY(QDir(CrashRecovery::defaultFolder()).removeRecursively());
    }

    void startOffersCrashedWork_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("restored");
        QTest::addColumn<bool>("offeredAgain");
        QTest::newRow("restore") << int(QMessageBox::Yes) << true << false;
        QTest::newRow("discard") << int(QMessageBox::Discard) << false << false;
        QTest::newRow("ask again later") << int(QMessageBox::Cancel) << false << true;
    }
    void startOffersCrashedWork()
    {
        QFETCH(int, answer);
        QFETCH(bool, restored);
        QFETCH(bool, offeredAgain);
        const QString crashed = leaveCrashedAutosave();
        ChromaxisMainWindow window(&m_db);
        window.show();
        const Palette<uint> fresh = window.document().palette();
        auto *recovery = new CrashRecovery(&window);

        SeenBox seen;
        answerNextBox(seen, QMessageBox::StandardButton(answer));
        QCOMPARE(recovery->offerRestore(), restored);
        QVERIFY(seen.seen);
        QCOMPARE(seen.title, QStringLiteral("Chromaxis"));
        QVERIFY2(
            seen.text.startsWith(QStringLiteral("Chromaxis did not exit cleanly. Unsaved work was kept at ")),
            qPrintable(seen.text));
        QVERIFY(seen.text.endsWith(QStringLiteral(".\nDo you want to restore it?")));
        QCOMPARE(QFile::exists(crashed), offeredAgain);

        const ChromaxisDocument &document = window.document();
        if (!restored) {
            QCOMPARE(document.palette(), fresh);
            QVERIFY(!document.hasImage());
            return;
        }
        const ProjectData work = crashedWork();
        QCOMPARE(document.palette(), work.palette);
        QCOMPARE(window.paletteView()->palette(), work.palette);
        QCOMPARE(document.imageMode(), int(DocumentImage::Indexed8));
        QCOMPARE(ProjectFile::pixelBytes(document.image()), ProjectFile::pixelBytes(work.image));
        QCOMPARE(document.displayedPicture().pixel(0, 0), qRgb(16, 16, 16));
        QCOMPARE(document.displayedPicture().pixel(2, 0), qRgb(255, 0, 0));
        QCOMPARE(document.selection(), work.selection);
        QCOMPARE(document.paletteFileName(), work.paletteFileName);
        QVERIFY(document.projectFileName().isEmpty());
        QVERIFY(document.isPaletteModified());
        QVERIFY(document.isImageModified());
        // The work is safe again at once, in this session's own autosave.
        QCOMPARE(ProjectFile::read(recovery->autosave().path()).palette, work.palette);
    }

    void nothingToOfferAsksNothing()
    {
        ChromaxisMainWindow window(&m_db);
        window.show();
        auto *recovery = new CrashRecovery(&window);
        QVERIFY(!recovery->offerRestore());
        QVERIFY(!QApplication::activeModalWidget());
    }

    void damagedAutosaveIsSetAside()
    {
        const QString crashed = leaveCrashedAutosave(QByteArrayLiteral("not a project at all"));
        ChromaxisMainWindow window(&m_db);
        window.show();
        const Palette<uint> fresh = window.document().palette();
        auto *recovery = new CrashRecovery(&window);
        SeenBox question, failure;
        answerNextBox(question, QMessageBox::Yes);
        answerNextBox(failure, QMessageBox::Ok);
        QVERIFY(!recovery->offerRestore());
        QVERIFY(question.seen);
        QCOMPARE(failure.title, QStringLiteral("Could not load project"));
        QVERIFY2(failure.text.startsWith(QStringLiteral("Cannot load project autosave-5.cxw.\n")),
                 qPrintable(failure.text));
        QCOMPARE(window.document().palette(), fresh);
        QVERIFY(!QFile::exists(crashed));
        QVERIFY(QFile::exists(crashed + QStringLiteral(".damaged")));
        // Set aside, it is not offered at the next start.
        ChromaxisMainWindow next(&m_db);
        QVERIFY(!(new CrashRecovery(&next))->offerRestore());
    }

    void unsavedWorkIsKeptUntilCleanExit()
    {
        auto *window = new ChromaxisMainWindow(&m_db);
        window->show();
        auto *recovery = new CrashRecovery(window, 20);
        const QString path = recovery->autosave().path();
        QVERIFY(path.startsWith(CrashRecovery::defaultFolder()));
        window->action(QStringLiteral("paletteGenerateHueRot256"))->trigger();
        QVERIFY(window->document().isPaletteModified());
        QTRY_VERIFY(QFile::exists(path));
        QCOMPARE(ProjectFile::read(path).palette, window->document().palette());
        // Keeping the copy saves nothing of the user's own.
        QVERIFY(window->document().isPaletteModified());
        QVERIFY(window->document().projectFileName().isEmpty());

        // The user closes the window and discards the changes: a clean exit leaves nothing behind.
        SeenBox seen;
        answerNextBox(seen, QMessageBox::Discard);
        QVERIFY(window->close());
        QVERIFY(seen.seen);
        delete window;
        QVERIFY(!QFile::exists(path));
        QCOMPARE(autosaveFiles(), QStringList());
    }

private:
    PaletteDatabase m_db;
};

CHROMAXIS_GUI_TEST_MAIN(TestCrashRecovery)
#include "tst_crashrecovery.moc"
