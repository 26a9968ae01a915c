// Undo and redo through the window's commands, and a macro recorded in the window that the
// command line replays to the same document.
#include "chromaxismainwindow.h"
#include "document/documentproject.h"
#include "guitesting.h"
#include "imagelabel.h"
#include "storage/palettedatabase.h"
#include "paletteview.h"

#include <QAction>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QSettings>
#include <QStatusBar>

class TestUndoMacro : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void undoRedoThroughActions();
    void historyKeepsNineteenSteps();
    void projectRoundTrip();
    void recordedMacroReplaysOnCommandLine();

private:
    QString path(const QString &name) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
    PaletteDatabase m_db;
};

void TestUndoMacro::initTestCase()
{
    m_db.loadFromText("a/one;ff0000;\nb/two;00ff000000ff;\nc/three;0000ff;\n");
    QFile gpl(path("four.gpl"));
    QVERIFY(gpl.open(QIODevice::WriteOnly));
    gpl.write("GIMP Palette\nName: Four\n#\n10 0 0\ta\n20 0 0\tb\n30 0 0\tc\n40 0 0\td\n");
    gpl.close();
    QImage indexed(3, 1, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(0, 0, 0), qRgb(1, 1, 1), qRgb(2, 2, 2)});
    indexed.setPixel(0, 0, 0);
    indexed.setPixel(1, 0, 1);
    indexed.setPixel(2, 0, 2);
    QVERIFY(indexed.save(path("three.png")));
}

void TestUndoMacro::init()
{
    QSettings().clear();
    QSettings().setValue("rgb_onload_action", 1);
}

void TestUndoMacro::undoRedoThroughActions()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(!w.action("undo")->isEnabled());
    QVERIFY(w.loadImageFile(path("three.png")));
    w.action("paletteNextDB")->trigger();
    QCOMPARE(w.document().palette().property(PaletteName), QString("b/two"));
    QVERIFY(w.action("undo")->isEnabled());
    QVERIFY(!w.action("redo")->isEnabled());

    w.action("undo")->trigger();
    QCOMPARE(w.document().palette().size(), 256);
    QCOMPARE(w.paletteView()->palette().size(), 256); // the view follows the history
    QCOMPARE(w.imageView()->pixmap(Qt::ReturnByValue).toImage().pixel(1, 0), qRgb(1, 1, 1));
    QVERIFY(w.action("redo")->isEnabled());
    w.action("undo")->trigger(); // the image load
    QVERIFY(!w.document().hasImage());
    QVERIFY(!w.action("saveImage")->isEnabled());
    w.action("redo")->trigger();
    w.action("redo")->trigger();
    QCOMPARE(w.document().palette().property(PaletteName), QString("b/two"));
    QCOMPARE(w.imageView()->pixmap(Qt::ReturnByValue).toImage().pixel(1, 0), qRgb(0, 0, 255));

    // Deleting entries in the view is one step, even though the view announces it twice.
    w.paletteView()->setSelected({0});
    w.action("deleteA")->trigger();
    QCOMPARE(w.document().palette().size(), 1);
    w.action("undo")->trigger();
    QCOMPARE(w.document().palette().size(), 2);

    w.action("clearHistory")->trigger();
    QVERIFY(!w.action("undo")->isEnabled());
    w.document().setPaletteModified(false);
}

void TestUndoMacro::historyKeepsNineteenSteps()
{
    ChromaxisMainWindow w(&m_db);
    for (int i = 0; i < 25; ++i)
        w.action("paletteNextDB")->trigger();
    int undone = 0;
    while (w.action("undo")->isEnabled()) {
        w.action("undo")->trigger();
        ++undone;
    }
    QCOMPARE(undone, 19);
    w.document().setPaletteModified(false);
}

void TestUndoMacro::projectRoundTrip()
{
    const QString project = path("work.cxw");
    {
        ChromaxisMainWindow w(&m_db);
        QVERIFY(w.loadImageFile(path("three.png")));
        QVERIFY(w.loadPaletteFile(path("four.gpl")));
        w.paletteView()->setSelected({1, 3});
        QVERIFY(w.saveProjectFile(project));
        w.document().setImageModified(false);
    }
    ChromaxisMainWindow w(&m_db);
    w.show();
    w.action("paletteNextDB")->trigger();
    QVERIFY(w.loadProjectFile(project));
    QCOMPARE(w.document().palette().size(), 4);
    QCOMPARE(w.document().palette()[3].r, 40u << 8);
    QCOMPARE(w.document().imageMode(), 2);
    QCOMPARE(w.paletteView()->selection(), std::set<int>({1, 3}));
    QCOMPARE(w.imageView()->pixmap(Qt::ReturnByValue).toImage().pixel(2, 0), qRgb(30, 0, 0));
    QVERIFY(!w.action("undo")->isEnabled()); // a loaded project starts a fresh history

    SeenBox seen;
    answerNextBox(seen, QMessageBox::Ok);
    QFile bad(path("bad.cxw"));
    QVERIFY(bad.open(QIODevice::WriteOnly));
    bad.write(QByteArray("Chromaxis\0" "2.0.0\0" "palette\0", 24));
    bad.close();
    QVERIFY(!w.loadProjectFile(path("bad.cxw")));
    QCOMPARE(seen.text, QString("Cannot load project bad.cxw.\nThe file does not match the format.\nExpected "
                                "'settings'."));
    QCOMPARE(w.document().palette().size(), 4); // nothing of the bad file was applied
}

void TestUndoMacro::recordedMacroReplaysOnCommandLine()
{
    const QString start = path("start.cxw");
    {
        ChromaxisMainWindow w(&m_db);
        QVERIFY(w.saveProjectFile(start));
    }
    ChromaxisMainWindow w(&m_db);
    w.show();
    w.action("macroRecord")->trigger();
    QVERIFY(w.document().isRecording());
    QVERIFY(w.statusBar()->findChild<QLabel *>() != nullptr);

    // An indexed image brings its own colours; the palette loaded after it replaces them.
    QVERIFY(w.loadImageFile(path("three.png")));
    QVERIFY(w.loadPaletteFile(path("four.gpl")));
    w.paletteView()->setSelected({0, 1});
    w.action("copy")->trigger();
    w.paletteView()->setSelected({3});
    w.action("paste")->trigger(); // a pasted list takes the selected entry's place: 10 20 30 10 20
    w.paletteView()->setSelected({4});
    w.action("deleteA")->trigger(); // 10 20 30 10
    w.action("paletteNextDB")->trigger();
    w.action("zoomOut")->trigger();
    w.action("undo")->trigger(); // takes the database palette out of the macro, and only that
    w.action("normalSize")->trigger();
    w.action("zoomIn")->trigger();
    w.action("macroRecord")->trigger();
    QVERIFY(!w.document().isRecording());

    const QString macro = path("session.cxm");
    handleNextDialog<QFileDialog>([macro](QFileDialog *d) {
        d->selectFile(macro);
        QMetaObject::invokeMethod(d, "accept");
    });
    w.action("macroSave")->trigger();
    QVERIFY(QFile::exists(macro));

    QProcess cli;
    cli.start(QStringLiteral(CHROMAXIS_CLI), {"macro", "run", macro, start, path("replayed.cxw")});
    QVERIFY(cli.waitForFinished(30000));
    QCOMPARE(QString::fromUtf8(cli.readAllStandardError()), QString());
    QCOMPARE(cli.exitCode(), 0);

    const ProjectData replayed = ProjectFile::read(path("replayed.cxw"));
    QCOMPARE(w.document().palette().size(), 4);
    QCOMPARE(replayed.palette.entries(), w.document().palette().entries());
    QCOMPARE(replayed.image.mode(), w.document().imageMode());
    QCOMPARE(ProjectFile::pixelBytes(replayed.image), ProjectFile::pixelBytes(w.document().image()));
    QCOMPARE(replayed.paletteFileName, w.document().paletteFileName());
    w.document().setPaletteModified(false);
    w.document().setImageModified(false);
}

CHROMAXIS_GUI_TEST_MAIN(TestUndoMacro)
#include "tst_undomacro.moc"
