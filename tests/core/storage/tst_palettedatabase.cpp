#include "document/chromaxisdocument.h"
#include "storage/palettedatabase.h"
#include "storage/presetdatabase.h"

#include <QDir>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

class TestPaletteDatabase : public QObject
{
    Q_OBJECT
private slots:
    void parsesLines();
    void badLinesCostOnePalette_data();
    void badLinesCostOnePalette();
    void unreadableFileLeavesEmpty();
    void presetDatabaseCreatesTable();
    void presetDatabaseReportsFailures();
    void documentStartsWithGrayscale();
    void modeTexts_data();
    void modeTexts();
};

void TestPaletteDatabase::parsesLines()
{
    PaletteDatabase db;
    db.loadFromText("fractint/23;ff000000ff00;\r\nkestil96/game-boy;0f380f306230;\r\n\r\n");
    QCOMPARE(db.size(), 2);
    QCOMPARE(db.names(), QStringList({"fractint/23", "kestil96/game-boy"}));
    const auto p = db.lookup("fractint/23");
    QVERIFY(p.has_value());
    QCOMPARE(p->size(), 2);
    QCOMPARE((*p)[0], RGBAColor<uint>(0xff00, 0, 0, 65535));
    QCOMPARE((*p)[1], RGBAColor<uint>(0, 0xff00, 0, 65535));
    QCOMPARE(p->property(PaletteName), QString("23"));
    const auto gb = db.lookup("kestil96/game-boy");
    QVERIFY(gb.has_value());
    QCOMPARE((*gb)[1], RGBAColor<uint>(0x3000, 0x6200, 0x3000, 65535));
    QVERIFY(!db.lookup("fractint/24").has_value());
    QVERIFY(!db.lookup("").has_value());
    QCOMPARE(PaletteDatabase::subsetOf("orvane/rainbow"), QString("orvane"));
}

void TestPaletteDatabase::badLinesCostOnePalette_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("no separator") << QByteArray("gimp/abc");
    QTest::newRow("no closing separator") << QByteArray("gimp/abc;ff0000");
    QTest::newRow("odd digit count") << QByteArray("gimp/abc;ff000;");
    QTest::newRow("not hex") << QByteArray("gimp/abc;ff00zz;");
    QTest::newRow("empty name") << QByteArray(";ff0000;");
}

void TestPaletteDatabase::badLinesCostOnePalette()
{
    QFETCH(QByteArray, line);
    PaletteDatabase db;
    db.loadFromText("gimp/first;010203;\n" + line + "\ngimp/last;040506;\n");
    QCOMPARE(db.names(), QStringList({"gimp/first", "gimp/last"}));
}

void TestPaletteDatabase::unreadableFileLeavesEmpty()
{
    PaletteDatabase db;
    db.loadFromText("a/b;000000;\n");
    QVERIFY(!db.loadFromFile("/nonexistent/db.txt"));
    QVERIFY(db.isEmpty());
}

void TestPaletteDatabase::presetDatabaseCreatesTable()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("chromaxis.db");
    {
        PresetDatabase presets;
        QCOMPARE(presets.open(path), PresetDatabase::OpenResult::Ok);
        QVERIFY(presets.isOpen());
        QSqlDatabase db = QSqlDatabase::database(presets.connectionName());
        QSqlQuery q(db);
        QVERIFY(q.exec("INSERT INTO settings (dialog, version, name, vals) VALUES ('tint', '2.0.0', 'a', 'x')"));
    }
    // Opening again keeps what is there.
    PresetDatabase again;
    QCOMPARE(again.open(path), PresetDatabase::OpenResult::Ok);
    QSqlQuery q(QSqlDatabase::database(again.connectionName()));
    QVERIFY(q.exec("SELECT COUNT(*) FROM settings"));
    QVERIFY(q.next());
    QCOMPARE(q.value(0).toInt(), 1);
}

void TestPaletteDatabase::presetDatabaseReportsFailures()
{
    QTemporaryDir dir;
    // A directory where the file should be cannot hold a table.
    QVERIFY(QDir(dir.path()).mkdir("chromaxis.db"));
    PresetDatabase presets;
    const auto result = presets.open(dir.filePath("chromaxis.db"));
    QVERIFY(result == PresetDatabase::OpenResult::OpenFailed ||
            result == PresetDatabase::OpenResult::CreateFailed);
    QVERIFY(!presets.isOpen());
    if (result == PresetDatabase::OpenResult::CreateFailed)
        QVERIFY(!presets.errorText().isEmpty());
}

void TestPaletteDatabase::documentStartsWithGrayscale()
{
    const ChromaxisDocument doc;
    QCOMPARE(doc.palette().size(), 256);
    QCOMPARE(doc.palette()[255], RGBAColor<uint>(65280, 65280, 65280, 65535));
    QVERIFY(!doc.hasImage());
    QVERIFY(!doc.isImageModified());
    QVERIFY(!doc.isPaletteModified());
}

void TestPaletteDatabase::modeTexts_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("interpolate");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << 0 << false << "N/A";
    QTest::newRow("rgb") << 1 << false << "RGB";
    QTest::newRow("8bit") << 2 << false << "indexed 8bit";
    QTest::newRow("32bit") << 3 << false << "indexed 32bit";
    QTest::newRow("continuous") << 4 << false << "continuous";
    QTest::newRow("interpolated") << 4 << true << "continuous (interpolated)";
}

void TestPaletteDatabase::modeTexts()
{
    QFETCH(int, mode);
    QFETCH(bool, interpolate);
    QFETCH(QString, text);
    QCOMPARE(ChromaxisDocument::modeText(mode, interpolate), text);
}

QTEST_GUILESS_MAIN(TestPaletteDatabase)
#include "tst_palettedatabase.moc"
