#include "chromaxismainwindow.h"
#include "cxpropertywidget.h"
#include "guitesting.h"
#include "storage/palettedatabase.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QMessageBox>
#include <QScrollArea>
#include <QSettings>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <functional>


class TestMainWindow : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void shellLayout();
    void startsWithGrayscaleAndReady();
    void settingsPersist();
    void maximizedSkipsGeometry();
    void keyFlags();
    void unsavedPalettePrompt_data();
    void unsavedPalettePrompt();
    void presetDatabaseFailureIsReported();

private:
    PaletteDatabase m_db;
};

void TestMainWindow::init()
{
    QSettings().clear();
    QDir(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)).removeRecursively();
    QDir().mkpath(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
}

void TestMainWindow::shellLayout()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(QTest::qWaitForWindowExposed(&w));
    QCOMPARE(w.size(), QSize(500, 400));

    auto *imageScroll = w.findChild<QScrollArea *>("imageScrollArea");
    auto *paletteScroll = w.findChild<QScrollArea *>("paletteScrollArea");
    QVERIFY(imageScroll && paletteScroll);
    QCOMPARE(imageScroll->backgroundRole(), QPalette::Dark);
    QCOMPARE(paletteScroll->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(paletteScroll->widget()->width(), 222);
    auto *image = qobject_cast<QLabel *>(imageScroll->widget());
    QVERIFY(image);
    QVERIFY(image->hasScaledContents());
    QCOMPARE(image->sizePolicy().horizontalPolicy(), QSizePolicy::Ignored);

    // Image area on the left, the palette column on the right.
    QWidget *column = w.findChild<QWidget *>("sideColumn");
    QVERIFY(column);
    QVERIFY(imageScroll->mapTo(&w, QPoint()).x() < column->mapTo(&w, QPoint()).x());
    QVERIFY(paletteScroll->mapTo(&w, QPoint()).y() < w.propertyWidget()->mapTo(&w, QPoint()).y());
    QVERIFY(column->maximumWidth() >= 241 && column->maximumWidth() < 241 + 40);

    CXPropertyWidget *props = w.propertyWidget();
    QCOMPARE(props->topLevelItemCount(), 2);
    QCOMPARE(props->topLevelItem(0)->text(0), QString("Palette"));
    QCOMPARE(props->topLevelItem(1)->text(0), QString("Image"));
    QStringList paletteRows, imageRows;
    for (int i = 0; i < props->topLevelItem(0)->childCount(); ++i)
        paletteRows << props->topLevelItem(0)->child(i)->text(0);
    for (int i = 0; i < props->topLevelItem(1)->childCount(); ++i)
        imageRows << props->topLevelItem(1)->child(i)->text(0);
    QCOMPARE(paletteRows, QStringList({"Name", "Comment", "File", "Size"}));
    QCOMPARE(imageRows, QStringList({"File", "Height", "Width", "Mode"}));
    // Fixed to its own height: every row visible without scrolling.
    QCOMPARE(props->minimumHeight(), props->maximumHeight());
    const QRect lastRow = props->visualItemRect(props->topLevelItem(1)->child(3));
    QVERIFY(lastRow.bottom() <= props->viewport()->height());
    QVERIFY(!w.windowIcon().isNull());
}

void TestMainWindow::startsWithGrayscaleAndReady()
{
    ChromaxisMainWindow w(&m_db);
    QCOMPARE(w.statusBar()->currentMessage(), QString("Ready"));
    QCOMPARE(w.document().palette().size(), 256);
    QCOMPARE(w.document().palette()[255].r, 65280u);
    QCOMPARE(w.propertyWidget()->value("Palette", "Size"), QString("256"));
    QCOMPARE(w.propertyWidget()->value("Image", "Mode"), QString("N/A"));
    QVERIFY(w.presetDatabase().isOpen());
    QVERIFY(QFile::exists(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/chromaxis.db"));
}

void TestMainWindow::settingsPersist()
{
    {
        ChromaxisMainWindow w(&m_db);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        w.resize(640, 480);
        for (QAction *a : w.findChildren<QAction *>())
            if (a->text() == "Show status bar")
                a->setChecked(false);
        QVERIFY(w.close());
    }
    QSettings s;
    QCOMPARE(s.value("size").toSize(), QSize(640, 480));
    QCOMPARE(s.value("showbar_status").toBool(), false);
    QCOMPARE(s.value("maximized").toBool(), false);

    ChromaxisMainWindow again(&m_db);
    QCOMPARE(again.size(), QSize(640, 480));
    QVERIFY(again.statusBar()->isHidden());
}

void TestMainWindow::maximizedSkipsGeometry()
{
    QSettings s;
    s.setValue("maximized", true);
    s.setValue("size", QSize(321, 234));
    ChromaxisMainWindow w(&m_db);
    QVERIFY(w.windowState() & Qt::WindowMaximized);
    QVERIFY(w.size() != QSize(321, 234));
}

void TestMainWindow::keyFlags()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(QTest::qWaitForWindowExposed(&w));
    QTest::keyPress(&w, Qt::Key_Shift);
    QVERIFY(w.isShiftHeld());
    QVERIFY(!w.isControlHeld());
    QTest::keyPress(&w, Qt::Key_Control);
    QVERIFY(w.isControlHeld());
    QTest::keyRelease(&w, Qt::Key_Shift);
    QVERIFY(!w.isShiftHeld());
    QVERIFY(w.isControlHeld());
    QTest::keyRelease(&w, Qt::Key_Control);
    QVERIFY(!w.isControlHeld());
}

void TestMainWindow::unsavedPalettePrompt_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<bool>("closes");
    QTest::newRow("cancel keeps the window") << int(QMessageBox::Cancel) << false;
    QTest::newRow("discard closes") << int(QMessageBox::Discard) << true;
}

void TestMainWindow::unsavedPalettePrompt()
{
    QFETCH(int, button);
    QFETCH(bool, closes);
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(QTest::qWaitForWindowExposed(&w));
    w.document().setPaletteModified(true);
    SeenBox seen;
    answerNextBox(seen, QMessageBox::StandardButton(button));
    QCOMPARE(w.close(), closes);
    QVERIFY(seen.seen);
    QCOMPARE(seen.title, QString("Chromaxis"));
    QCOMPARE(seen.text, QString("The palette has been modified.\nDo you want to save your changes?"));
    QCOMPARE(w.document().isPaletteModified(), !closes);

    // An unmodified palette closes without a question.
    if (!closes) {
        w.document().setPaletteModified(false);
        QVERIFY(w.close());
    }
}

void TestMainWindow::presetDatabaseFailureIsReported()
{
    const QString docs = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    QVERIFY(QDir(docs).mkdir("chromaxis.db"));
    SeenBox seen;
    answerNextBox(seen, QMessageBox::Ok);
    ChromaxisMainWindow w(&m_db);
    QVERIFY(seen.seen);
    QCOMPARE(seen.title, QString("Database error"));
    QVERIFY2(seen.text == "Could not open database.\nSaving to the database will be not possible." ||
                 seen.text.startsWith("Could not write to database.\nSaving to the database will be not "
                                      "possible.\nError:\n"),
             qPrintable(seen.text));
    QVERIFY(!w.presetDatabase().isOpen());
}

CHROMAXIS_GUI_TEST_MAIN(TestMainWindow)

#include "tst_mainwindow.moc"
