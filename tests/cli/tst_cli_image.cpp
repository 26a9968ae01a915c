#include "storage/numpyimage.h"

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include "../core/storage/gifbuilder.h"
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
    void renderIndexedInItsOwnColours_data();
    void renderIndexedInItsOwnColours();
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
    GifFrame frame;
    frame.width = frame.height = 2;
    frame.pixels = {3, 2, 1, 0};
    frame.localTable = {qRgb(5, 6, 7), qRgb(80, 90, 100), qRgb(250, 0, 0), qRgb(0, 0, 250)};
    frame.transparent = 1;
    QVERIFY(writeFile(path("local.gif"), buildGif(2, 2, {qRgb(255, 255, 255), qRgb(0, 0, 0)}, {frame})));
    QVERIFY(writeFile(path("broken.gif"),
                      buildGif(2, 2, {qRgb(255, 255, 255), qRgb(0, 0, 0)}, {frame}).left(30)));
}

void TestCliImage::show_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("paletteSize");
    QTest::addColumn<QJsonArray>("firstEntries");
    const auto entry = [](int r, int g, int b, int a = 65535) {
        return QJsonArray{r << 8, g << 8, b << 8, a};
    };
    // An indexed file shows its own colour table.
    QTest::newRow("indexed png") << "indexed.png" << 3 << 2 << 2 << 3
                                 << QJsonArray{entry(9, 9, 9), entry(200, 100, 50), entry(1, 2, 3)};
    // The first frame's local table, not the global one; the transparent entry has alpha 0.
    QTest::newRow("gif") << "local.gif" << 2 << 2 << 2 << 4
                         << QJsonArray{entry(5, 6, 7), entry(80, 90, 100, 0), entry(250, 0, 0),
                                       entry(0, 0, 250)};
    // An RGB image has no palette of its own.
    QTest::newRow("rgb png") << "rgb.png" << 4 << 5 << 1 << 0 << QJsonArray{};
    // Cells are shown through the start-up palette, the standard grayscale.
    QTest::newRow("continuous npy") << "cont.npy" << 2 << 1 << 4 << 256
                                    << QJsonArray{entry(0, 0, 0), entry(1, 1, 1)};
}

void TestCliImage::show()
{
    QFETCH(QString, file);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(int, mode);
    QFETCH(int, paletteSize);
    QFETCH(QJsonArray, firstEntries);
    const CliRun r = runCli({"image", "show", path(file)});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const QJsonObject json = QJsonDocument::fromJson(r.out).object();
    QCOMPARE(json["width"].toInt(), width);
    QCOMPARE(json["height"].toInt(), height);
    QCOMPARE(json["mode"].toInt(), mode);
    QCOMPARE(json["interpolate"].toBool(), false);
    const QJsonArray palette = json["palette"].toArray();
    QCOMPARE(palette.size(), paletteSize);
    for (int i = 0; i < firstEntries.size(); ++i)
        QCOMPARE(palette[i].toArray(), firstEntries[i].toArray());
}

// Without --palette an image is rendered as the window shows it after opening: in its own colours.
void TestCliImage::renderIndexedInItsOwnColours_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QVector<QRgb>>("pixels");
    QTest::newRow("indexed png") << "indexed.png"
                                 << QVector<QRgb>{qRgb(9, 9, 9), qRgb(200, 100, 50), qRgb(1, 2, 3),
                                                  qRgb(1, 2, 3), qRgb(200, 100, 50), qRgb(9, 9, 9)};
    // Rendered pictures are opaque, the transparent entry too.
    QTest::newRow("gif") << "local.gif"
                         << QVector<QRgb>{qRgb(0, 0, 250), qRgb(250, 0, 0), qRgb(80, 90, 100), qRgb(5, 6, 7)};
}

void TestCliImage::renderIndexedInItsOwnColours()
{
    QFETCH(QString, file);
    QFETCH(QVector<QRgb>, pixels);
    const CliRun r = runCli({"image", "render", path(file), path("own.png")});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const QImage out(path("own.png"));
    QVector<QRgb> shown;
    for (int y = 0; y < out.height(); ++y)
        for (int x = 0; x < out.width(); ++x)
            shown << out.pixel(x, y);
    QCOMPARE(shown, pixels);
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
    QTest::newRow("gif cut short")
        << QStringList{"image", "show", "@broken.gif"} << 1
        << "Could not load: Cannot load broken.gif.\nThe GIF file is damaged or cut short.\n";
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
