#include "storage/numpyimage.h"
#include "storage/projectfile.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include "../core/storage/gifbuilder.h"
#include "clirunner.h"

class TestCliConversion : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void quantiseToIndexedPng();
    void convertToNumpy_data();
    void convertToNumpy();
    void indexedSourceConvertsLikeItsPicture_data();
    void indexedSourceConvertsLikeItsPicture();
    void fastToProject();
    void projectInputGivesItsPalette();
    void missingPaletteIsReported();
    void batchAppliesAndReportsFailures();
    void transforms_data();
    void transforms();
    void failures_data();
    void failures();

private:
    QTemporaryDir m_dir;
    QString path(const QString &name) const { return m_dir.filePath(name); }
};

void TestCliConversion::initTestCase()
{
    QImage rgb(8, 6, QImage::Format_RGB32);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x)
            rgb.setPixel(x, y, x < 4 ? qRgb(200, 30 + y, 10) : qRgb(20, 40, 220 - y));
    QVERIFY(rgb.save(path("photo.png")));
    QImage tiny(3, 1, QImage::Format_RGB32);
    tiny.setPixel(0, 0, qRgb(10, 20, 31));
    tiny.setPixel(1, 0, qRgb(255, 255, 255));
    tiny.setPixel(2, 0, qRgb(1, 2, 3));
    QVERIFY(tiny.save(path("tiny.png")));
    QVERIFY(writeFile(path("quantise.txt"), "image_quantisize 2.0.0\nformat:0\npalette:3\ndither:1\n"));
    QVERIFY(writeFile(path("other.txt"), "tint 2.0.0\ncolor:#000000\n"));
    QVERIFY(writeFile(path("junk.png"), "no picture here"));

    // One picture three ways: an indexed PNG, a GIF with a local table and a transparent index,
    // and the RGB picture they show.
    QImage indexed(7, 4, QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (int i = 0; i < 8; ++i)
        table << qRgb(255 - i * 30, i * 33, (i * 77) % 256);
    indexed.setColorTable(table);
    GifFrame frame;
    frame.width = 7;
    frame.height = 4;
    frame.localTable = table;
    frame.transparent = 6;
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 7; ++x) {
            indexed.setPixel(x, y, uint((x + 2 * y) % 8));
            frame.pixels.push_back(uint8_t((x + 2 * y) % 8));
        }
    QVERIFY(indexed.save(path("indexed.png")));
    QVERIFY(indexed.convertToFormat(QImage::Format_RGB32).save(path("shown.png")));
    QVERIFY(writeFile(path("indexed.gif"), buildGif(7, 4, {qRgb(0, 0, 0), qRgb(9, 9, 9)}, {frame})));
}

void TestCliConversion::quantiseToIndexedPng()
{
    const QString out = path("quantised.png");
    const CliRun r = runCli({"image", "quantise", path("photo.png"), out, "--settings", path("quantise.txt"),
                             "--set", "method=2", "--set", "colors=4"});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const QImage result(out);
    QCOMPARE(result.format(), QImage::Format_Indexed8);
    QCOMPARE(result.size(), QSize(8, 6));
    QSet<QRgb> shown;
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x)
            shown.insert(result.pixel(x, y));
    QVERIFY(shown.size() >= 2 && shown.size() <= 4);
    // The two halves keep their hues.
    QVERIFY(qRed(result.pixel(0, 0)) > 150 && qBlue(result.pixel(0, 0)) < 60);
    QVERIFY(qBlue(result.pixel(7, 5)) > 150 && qRed(result.pixel(7, 5)) < 60);
}

void TestCliConversion::convertToNumpy_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QList<double>>("cells");
    const float k = 85.666664f;
    QTest::newRow("convert continuous")
        << QStringList{"image", "convert", "tiny.png", "out.npy", "--set", "mode=1"} << 4
        << QList<double>{61 * k, 765 * k, 6 * k};
    QTest::newRow("convert extended")
        << QStringList{"image", "convert", "tiny.png", "out.npy", "--set", "palette=1"} << 3
        << QList<double>{61, 765, 6};
    QTest::newRow("fast extended") << QStringList{"image", "fast", "image_convert_extended_grayscale",
                                                  "tiny.png", "out.npy"}
                                   << 3 << QList<double>{61, 765, 6};
    QTest::newRow("fast as ints") << QStringList{"image", "fast", "image_convert_indexed32bitint", "tiny.png",
                                                 "out.npy"}
                                  << 3 << QList<double>{0x0A141F, 0xFFFFFF, 0x010203};
    QTest::newRow("quantise grayscale nearest")
        << QStringList{"image", "quantise", "tiny.png", "out.npy", "--set", "palette=0", "--set", "format=0"}
        << 2 << QList<double>{20, 255, 2};
}

void TestCliConversion::convertToNumpy()
{
    QFETCH(QStringList, command);
    QFETCH(int, mode);
    QFETCH(QList<double>, cells);
    for (QString &word : command)
        if (word.endsWith(".png") || word.endsWith(".npy"))
            word = path(word);
    QFile::remove(path("out.npy"));
    const CliRun r = runCli(command);
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const DocumentImage image = NumpyImage::read(path("out.npy"));
    QCOMPARE(image.mode(), mode);
    QList<double> actual;
    for (int x = 0; x < 3; ++x)
        actual << (mode == 2   ? double(image.indexRow(0)[x])
                   : mode == 3 ? double(image.indexCells()[size_t(x)])
                               : double(image.continuousCells()[size_t(x)]));
    QCOMPARE(actual, cells);
}

void TestCliConversion::indexedSourceConvertsLikeItsPicture_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QStringList>("command");
    const QList<QStringList> commands{
        {"image", "quantise", "--set", "palette=0", "--set", "dither=0"},
        {"image", "quantise", "--set", "palette=3", "--set", "method=2", "--set", "colors=3", "--set",
         "dither=1"},
        {"image", "quantise", "--set", "palette=6", "--set", "format=1"},
        {"image", "convert", "--set", "palette=0"},
        {"image", "convert", "--set", "palette=1", "--set", "mode=1"},
        {"image", "fast", "image_convert_grayscale"},
        {"image", "fast", "image_convert_extended_grayscale"},
    };
    for (const char *source : {"indexed.png", "indexed.gif"})
        for (const QStringList &command : commands)
            QTest::newRow(qPrintable(QString(source) + ": " + command.mid(1).join(' '))) << source << command;
}

// The colours an indexed source shows are what is converted: the result is that of the RGB
// picture, palette and pixels.
void TestCliConversion::indexedSourceConvertsLikeItsPicture()
{
    QFETCH(QString, source);
    QFETCH(QStringList, command);
    const auto run = [&](const QString &in, const QString &out) {
        QStringList args = command.mid(0, command[1] == "fast" ? 3 : 2);
        args << path(in) << path(out) << command.mid(args.size());
        const CliRun r = runCli(args);
        QCOMPARE(r.err, QString());
        QCOMPARE(r.code, 0);
    };
    run(source, "from-indexed.cxw");
    run("shown.png", "from-rgb.cxw");
    const ProjectData indexed = ProjectFile::read(path("from-indexed.cxw"));
    const ProjectData rgb = ProjectFile::read(path("from-rgb.cxw"));
    QVERIFY(rgb.image.mode() != DocumentImage::RGB);
    QCOMPARE(indexed.image.mode(), rgb.image.mode());
    QCOMPARE(indexed.palette.entries(), rgb.palette.entries());
    QCOMPARE(ProjectFile::pixelBytes(indexed.image), ProjectFile::pixelBytes(rgb.image));
}

void TestCliConversion::fastToProject()
{
    const CliRun r = runCli({"image", "fast", "image_convert_grayscale", path("tiny.png"), path("gray.cxw")});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const ProjectData project = ProjectFile::read(path("gray.cxw"));
    QCOMPARE(project.image.mode(), 2);
    QCOMPARE(project.palette.size(), 256);
    QCOMPARE(project.imageFileName, path("tiny.png"));
    QVERIFY(project.imageModified);
    QCOMPARE(project.image.indexRow(0)[0], uint8_t(20));
}

void TestCliConversion::projectInputGivesItsPalette()
{
    // "Current palette" is the project's palette.
    ProjectData project;
    project.image = DocumentImage::fromPicture(QImage(path("photo.png")));
    project.palette.append({200 << 8, 30 << 8, 10 << 8, 65535});
    project.palette.append({20 << 8, 40 << 8, 220 << 8, 65535});
    ProjectFile::write(path("in.cxw"), project);
    const CliRun r = runCli({"image", "quantise", path("in.cxw"), path("out.cxw"), "--set", "palette=2"});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const ProjectData result = ProjectFile::read(path("out.cxw"));
    QCOMPARE(result.palette.entries(), project.palette.entries());
    QCOMPARE(result.image.mode(), 2);
    QCOMPARE(result.image.indexRow(0)[0], uint8_t(0));
    QCOMPARE(result.image.indexRow(5)[7], uint8_t(1));
}

void TestCliConversion::missingPaletteIsReported()
{
    const CliRun r = runCli({"image", "convert", path("tiny.png"), path("missing.cxw"), "--set", "palette=3",
                             "--set", "db_palette=nobody/nothing"});
    QCOMPARE(r.code, 0);
    QVERIFY(r.err.contains("nobody/nothing"));
    QCOMPARE(ProjectFile::read(path("missing.cxw")).palette.size(), 256);
}

// Each file becomes OUTDIR/<base name><extension>; a bad file is reported and the run goes on.
void TestCliConversion::batchAppliesAndReportsFailures()
{
    const QString out = path("batch/out");
    const CliRun r = runCli({"image", "batch", out, path("photo.png"), path("junk.png"), path("tiny.png"), "--set",
                             "extension=.bmp", "--set", "palette=1"});
    QCOMPARE(r.code, 1);
    QVERIFY2(r.err.startsWith(QStringLiteral("2 of 3 images were written to ")), qPrintable(r.err));
    QVERIFY2(r.err.contains(QStringLiteral("These images failed:\njunk.png: ")), qPrintable(r.err));
    const QImage photo(out + "/photo.bmp");
    QCOMPARE(photo.size(), QSize(8, 6));
    QVERIFY(QFile::exists(out + "/tiny.bmp"));
    QVERIFY(!QFile::exists(out + "/junk.bmp"));
    // Extended grayscale shows every pixel grey.
    QCOMPARE(qRed(photo.pixel(7, 5)), qGreen(photo.pixel(7, 5)));

    const CliRun clean = runCli({"image", "batch", path("batch/again"), path("tiny.png")});
    QCOMPARE(clean.code, 0);
    QCOMPARE(clean.err, QString());
    QVERIFY(QFile::exists(path("batch/again/tiny.png")));
}

void TestCliConversion::transforms_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QPoint>("cornerGoesTo"); // where the photo's top left pixel ends up
    QTest::newRow("mirror h") << "image_mirror_h" << QSize(8, 6) << QPoint(7, 0);
    QTest::newRow("mirror v") << "image_mirror_v" << QSize(8, 6) << QPoint(0, 5);
    QTest::newRow("rotate cw") << "image_rotate_cw" << QSize(6, 8) << QPoint(5, 0);
    QTest::newRow("rotate ccw") << "image_rotate_ccw" << QSize(6, 8) << QPoint(0, 7);
}

void TestCliConversion::transforms()
{
    QFETCH(QString, step);
    QFETCH(QSize, size);
    QFETCH(QPoint, cornerGoesTo);
    // An RGB picture written as a picture, and the cells of a continuous image kept in a project.
    CliRun r = runCli({"image", "fast", step, path("photo.png"), path("turned.png")});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const QImage photo(path("photo.png")), turned(path("turned.png"));
    QCOMPARE(turned.size(), size);
    QCOMPARE(turned.pixel(cornerGoesTo), photo.pixel(0, 0));

    std::vector<float> cells(8 * 6);
    for (size_t i = 0; i < cells.size(); ++i)
        cells[i] = float(i) * 1000.25f;
    NumpyImage::write(DocumentImage::fromContinuous(8, 6, cells), path("cells.npy"));
    r = runCli({"image", "fast", step, path("cells.npy"), path("turned.cxw")});
    QCOMPARE(r.code, 0);
    const ProjectData project = ProjectFile::read(path("turned.cxw"));
    QCOMPARE(project.image.mode(), 4);
    QCOMPARE(QSize(project.image.width(), project.image.height()), size);
    const size_t corner = size_t(cornerGoesTo.y()) * size_t(size.width()) + size_t(cornerGoesTo.x());
    QCOMPARE(project.image.continuousCells()[corner], 0.0f);
    QCOMPARE(project.palette.size(), 256); // the start-up palette, untouched
    QVERIFY(!project.paletteModified);
}

void TestCliConversion::failures_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");
    QTest::newRow("unknown fast conversion")
        << QStringList{"image", "fast", "image_convert_sepia", "tiny.png", "x.png"} << 2
        << "unknown conversion";
    QTest::newRow("missing operand") << QStringList{"image", "quantise", "tiny.png"} << 2 << "Usage";
    QTest::newRow("settings of another dialog")
        << QStringList{"image", "quantise", "tiny.png", "x.png", "--settings", "other.txt"} << 1
        << "Invalid settings: These settings belong to \"tint\", not to \"image_quantisize\".";
    QTest::newRow("dither out of the list")
        << QStringList{"image", "quantise", "tiny.png", "x.png", "--set", "dither=13"} << 1
        << "Invalid settings: The value \"13\" of \"dither\"";
    QTest::newRow("set without value")
        << QStringList{"image", "convert", "tiny.png", "x.png", "--set", "mode"} << 2 << "KEY=VALUE";
    QTest::newRow("unreadable picture") << QStringList{"image", "convert", "junk.png", "x.png"} << 1
                                        << "Could not load: Cannot load junk.png.\nUnknown";
    QTest::newRow("unwritable output")
        << QStringList{"image", "fast", "image_convert_grayscale", "tiny.png", "nodir/x.png"} << 1
        << "Could not save";
}

void TestCliConversion::failures()
{
    QFETCH(QStringList, command);
    QFETCH(int, code);
    QFETCH(QString, message);
    for (QString &word : command)
        if (word.endsWith(".png") || word.endsWith(".txt"))
            word = path(word);
    const CliRun r = runCli(command);
    QCOMPARE(r.code, code);
    QVERIFY2(r.err.contains(message), qPrintable(r.err));
    QVERIFY(!QFile::exists(path("x.png")));
    QVERIFY(!QFile::exists(path("nodir")));
    QVERIFY(readFile(path("junk.png")) == "no picture here");
}

QTEST_GUILESS_MAIN(TestCliConversion)
#include "tst_cli_conversion.moc"
