#include "storage/numpyimage.h"

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include "climagefixtures.h"
#include "clirunner.h"

namespace {

const char duoGpl[] = "GIMP Palette\nName: Duo\n#\n255 0 0\tred\n0 0 255\tblue\n";

} // namespace

class TestCliImage : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void show_data();
    void show();
    void renderIndexedThroughPalette();
    void renderContinuousInterpolated();
    void failures_data();
    void failures();
    void database();

private:
    QTemporaryDir m_dir;
    QString path(const QString &name) const { return m_dir.filePath(name); }
};

void TestCliImage::initTestCase()
{
    QVERIFY(writeImageFixtures(m_dir));
    QVERIFY(writeFile(path("duo.gpl"), duoGpl));
    QVERIFY(writeFile(path("junk.png"), "this is no picture"));
}

void TestCliImage::show_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("mode");
    QTest::newRow("indexed png") << "indexed.png" << 3 << 2 << 2;
    QTest::newRow("rgb png") << "rgb.png" << 4 << 5 << 1;
    QTest::newRow("continuous npy") << "cont.npy" << 2 << 1 << 4;
}

void TestCliImage::show()
{
    QFETCH(QString, file);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(int, mode);
    const CliRun r = runCli({"image", "show", path(file)});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const QJsonObject json = QJsonDocument::fromJson(r.out).object();
    QCOMPARE(json["width"].toInt(), width);
    QCOMPARE(json["height"].toInt(), height);
    QCOMPARE(json["mode"].toInt(), mode);
    QCOMPARE(json["interpolate"].toBool(), false);
    // A fresh document shows every image through the standard grayscale palette.
    const QJsonArray palette = json["palette"].toArray();
    QCOMPARE(palette.size(), 256);
    QCOMPARE(palette[255].toArray(), QJsonArray({65280, 65280, 65280, 65535}));
}

void TestCliImage::renderIndexedThroughPalette()
{
    const CliRun r = runCli({"image", "render", path("indexed.png"), path("out.png"), "--palette", path("duo.gpl")});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const QImage out(path("out.png"));
    QCOMPARE(out.size(), QSize(3, 2));
    QCOMPARE(out.pixel(0, 0), qRgb(255, 0, 0));
    QCOMPARE(out.pixel(1, 0), qRgb(0, 0, 255));
    QCOMPARE(out.pixel(2, 0), qRgb(0, 0, 255)); // index 2 is past the palette: the last colour
    QVERIFY(out.hasAlphaChannel());
}

void TestCliImage::renderContinuousInterpolated()
{
    // Two entries: 16384 sits at p = 0.50001 between red and blue.
    for (const char *interpolate : {"0", "1"}) {
        const CliRun r = runCli({"image", "render", path("cont.npy"), path("cont.png"), "--palette",
                                 path("duo.gpl"), "--interpolate", interpolate});
        QCOMPARE(r.code, 0);
        const QImage out(path("cont.png"));
        QCOMPARE(out.pixel(0, 0), qRgb(255, 0, 0));
        const float p = 16384.0f * 2.0f / 65535.0f;
        const double w = double(p);
        const int red = int(uint(65280 * (1.0 - w)) >> 8), blue = int(uint(65280 * w) >> 8);
        QCOMPARE(out.pixel(1, 0), interpolate[0] == '1' ? qRgb(red, 0, blue) : qRgb(255, 0, 0));
    }
}

void TestCliImage::failures_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("err");
    QTest::newRow("not a picture") << QStringList{"image", "show", "@junk.png"} << 1
                                   << "Could not load: Cannot load junk.png.\nUnknown image format.\n";
    QTest::newRow("missing file") << QStringList{"image", "show", "@none.png"} << 1
                                  << "Could not load: Cannot load none.png.\nUnknown error.\n";
    QTest::newRow("bad interpolate") << QStringList{"image", "render", "@indexed.png", "@x.png", "--interpolate", "2"}
                                     << 2 << "";
    QTest::newRow("unwritable output")
        << QStringList{"image", "render", "@indexed.png", "@no/such/dir/x.png"} << 1 << "";
    QTest::newRow("unknown db name") << QStringList{"db", "show", "nobody/nothing"} << 1
                                     << "Palette database: No palette named 'nobody/nothing' in the database.\n";
    QTest::newRow("db list takes nothing") << QStringList{"db", "list", "extra"} << 2 << "";
}

void TestCliImage::failures()
{
    QFETCH(QStringList, args);
    QFETCH(int, code);
    QFETCH(QString, err);
    const CliRun r = runCli(inFolder(args, m_dir));
    QCOMPARE(r.code, code);
    if (!err.isEmpty())
        QCOMPARE(r.err, err);
    else
        QVERIFY(!r.err.isEmpty());
    QVERIFY(!QFile::exists(path("x.png")));
}

void TestCliImage::database()
{
    const CliRun list = runCli({"db", "list"});
    QCOMPARE(list.code, 0);
    const QStringList names = QString::fromUtf8(list.out).split('\n', Qt::SkipEmptyParts);
    QVERIFY(names.size() >= 200);
    QVERIFY(names.contains("kestil96/game-boy"));
    QVERIFY(names.contains("orvane/rainbow"));
    const CliRun show = runCli({"db", "show", "kestil96/game-boy"});
    QCOMPARE(show.code, 0);
    const QJsonObject json = QJsonDocument::fromJson(show.out).object();
    QCOMPARE(json["entries"].toArray().size(), 4);
    QCOMPARE(json["entries"].toArray()[0].toArray(), QJsonArray({0x0f00, 0x3800, 0x0f00, 65535}));
}

QTEST_GUILESS_MAIN(TestCliImage)
#include "tst_cli_image.moc"
