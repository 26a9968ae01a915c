#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include "climagefixtures.h"
#include "clirunner.h"

namespace {

const char trioGpl[] = "GIMP Palette\nName: Trio\n#\n255 0 0\tred\n0 255 0\tgreen\n0 0 255\tblue\n";

// The bounding box of what is not white on the first page of pdf, rasterised at 36 dpi.
QRect inkOnPage(const QString &pdf, const QString &folder, QSize *pageSize)
{
    const QString pdftoppm = QStandardPaths::findExecutable(QStringLiteral("pdftoppm"));
    QProcess p;
    p.start(pdftoppm, {"-r", "36", "-png", "-singlefile", pdf, folder + "/page"});
    if (!p.waitForFinished(30000) || p.exitCode() != 0)
        return {};
    const QImage page(folder + "/page.png");
    *pageSize = page.size();
    QRect box;
    for (int y = 0; y < page.height(); ++y)
        for (int x = 0; x < page.width(); ++x)
            if ((page.pixel(x, y) & 0xFFFFFF) != 0xFFFFFF)
                box |= QRect(x, y, 1, 1);
    return box;
}

} // namespace

class TestCliPictures : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void render_data();
    void render();
    void renderOtherFormats_data();
    void renderOtherFormats();
    void failures_data();
    void failures();
    void prints_data();
    void prints();

private:
    QTemporaryDir m_dir;
    QString path(const QString &name) const { return m_dir.filePath(name); }
};

void TestCliPictures::initTestCase()
{
    QVERIFY(writeImageFixtures(m_dir));
    QVERIFY(writeFile(path("trio.gpl"), trioGpl));
    QVERIFY(writeFile(path("black.txt"), "palette_render 2.0.0\ncolumns:2\ncell_width:2\ncell_height:1\n"
                                         "bgcolor:#ff000000\n"));
    QVERIFY(writeFile(path("other.txt"), "palette_textencode 2.0.0\nentry:%i\n"));
    QVERIFY(writeFile(path("empty.gpl"), "GIMP Palette\nName: Empty\n#\n"));
    QVERIFY(writeFile(path("old.png"), "old contents"));
}

void TestCliPictures::render_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QSize>("size");
    // Pixels sampled: point -> colour.
    QTest::addColumn<QList<QPoint>>("points");
    QTest::addColumn<QList<QRgb>>("colours");
    const QRgb red = qRgb(255, 0, 0), green = qRgb(0, 255, 0), blue = qRgb(0, 0, 255), white = qRgb(255, 255, 255),
               black = qRgb(0, 0, 0);
    QTest::newRow("initial values") << QStringList() << QSize(256, 16) << QList<QPoint>{{0, 0}, {16, 15}, {47, 0}, {48, 0}}
                                    << QList<QRgb>{red, green, blue, white};
    QTest::newRow("preset by name, (1) as written")
        << QStringList{"--preset", "line big (1) with offset"} << QSize(264, 24)
        << QList<QPoint>{{3, 3}, {4, 4}, {5, 19}, {6, 4}, {7, 4}} << QList<QRgb>{white, red, green, blue, white};
    QTest::newRow("preset with black background")
        << QStringList{"--preset", "square middle (8x8) with offset"} << QSize(162, 2 + 8 + 2)
        << QList<QPoint>{{1, 1}, {2, 2}, {10, 2}, {12, 9}, {22, 2}, {30, 2}}
        << QList<QRgb>{black, red, black, green, blue, black};
    QTest::newRow("--set over a preset")
        << QStringList{"--preset", "square small (1x1)", "--set", "columns=2", "--set", "spc_v=1"} << QSize(2, 3)
        << QList<QPoint>{{0, 0}, {1, 0}, {0, 1}, {1, 1}, {0, 2}, {1, 2}}
        << QList<QRgb>{red, green, white, white, blue, white};
    QTest::newRow("settings file, then --set")
        << QStringList{"--settings", "@black.txt", "--set", "pad_left=1"} << QSize(5, 2)
        << QList<QPoint>{{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}, {1, 1}, {3, 1}}
        << QList<QRgb>{black, red, red, green, green, blue, black};
}

void TestCliPictures::render()
{
    QFETCH(QStringList, options);
    QFETCH(QSize, size);
    QFETCH(QList<QPoint>, points);
    QFETCH(QList<QRgb>, colours);
    QFile::remove(path("out.png"));
    const CliRun r = runCli(inFolder(QStringList{"palette", "render", "@trio.gpl", "@out.png"} + options, m_dir));
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const QImage out(path("out.png"));
    QCOMPARE(out.size(), size);
    for (int i = 0; i < points.size(); ++i)
        QCOMPARE(QColor(out.pixel(points[i])).name(), QColor(colours[i]).name());
}

void TestCliPictures::renderOtherFormats_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("format");
    QTest::newRow("bmp") << "out.bmp" << QByteArray("bmp");
    QTest::newRow("ppm") << "out.ppm" << QByteArray("ppm");
    QTest::newRow("jpeg") << "out.jpg" << QByteArray("jpeg");
}

// Any format the image writers know, chosen by the file name.
void TestCliPictures::renderOtherFormats()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, format);
    const CliRun r = runCli({"palette", "render", path("trio.gpl"), path(file), "--preset", "square big (16x16)"});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    QImageReader reader(path(file));
    QCOMPARE(reader.format(), format);
    QCOMPARE(reader.size(), QSize(256, 16));
}

void TestCliPictures::failures_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("err");
    QTest::newRow("unknown preset")
        << QStringList{"palette", "render", "@trio.gpl", "@old.png", "--preset", "line big (1)"} << 1
        << "Invalid settings: There is no palette picture preset \"line big (1)\". The presets are \"square small "
           "(1x1)\", \"square middle (8x8)\", \"square big (16x16)\", \"square middle (8x8) with offset\", \"square "
           "big (16x16) with offset\", \"line small (1)\", \"line middle (8)\", \"line big (16)\", \"line big (1) with "
           "offset\".\n";
    QTest::newRow("settings of another dialog")
        << QStringList{"palette", "render", "@trio.gpl", "@old.png", "--settings", "@other.txt"} << 1
        << "Invalid settings: These settings belong to \"palette_textencode\", not to \"palette_render\".\n";
    QTest::newRow("not a number") << QStringList{"palette", "print", "@trio.gpl", "@old.png", "--set", "columns=many"}
                                  << 1 << "";
    QTest::newRow("empty palette") << QStringList{"palette", "render", "@empty.gpl", "@old.png"} << 1
                                   << "Could not save: Unable to save old.png.\nThe palette is empty.\n";
    QTest::newRow("empty palette printed") << QStringList{"palette", "print", "@empty.gpl", "@old.png"} << 1
                                           << "Could not print: There is nothing to print: the picture is empty.\n";
    QTest::newRow("no such palette") << QStringList{"palette", "print", "@none.gpl", "@old.png"} << 1 << "";
    QTest::newRow("no such image") << QStringList{"image", "print", "@none.png", "@old.png"} << 1 << "";
    QTest::newRow("missing output") << QStringList{"palette", "render", "@trio.gpl"} << 2 << "";
    QTest::newRow("image print takes no preset")
        << QStringList{"image", "print", "@indexed.png", "@old.png", "--preset", "x"} << 2 << "";
}

// Nothing is written when a command fails: the old file stays as it was.
void TestCliPictures::failures()
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
    QCOMPARE(readFile(path("old.png")), QByteArray("old contents"));
}

void TestCliPictures::prints_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<double>("aspect");
    QTest::newRow("palette, a strip") << QStringList{"palette", "print", "@trio.gpl", "@print.pdf", "--preset",
                                                     "square big (16x16)", "--set", "columns=3"}
                                      << 3.0;
    QTest::newRow("palette, a column") << QStringList{"palette", "print", "@trio.gpl", "@print.pdf", "--set",
                                                      "columns=1", "--set", "cell_width=4", "--set", "cell_height=6"}
                                       << 4.0 / 18.0;
    QTest::newRow("image") << QStringList{"image", "print", "@indexed.png", "@print.pdf"} << 1.5;
    QTest::newRow("image through a palette")
        << QStringList{"image", "print", "@indexed.png", "@print.pdf", "--palette", "@trio.gpl"} << 1.5;
}

// An A4 page with the picture as large as the page allows, its proportions kept.
void TestCliPictures::prints()
{
    QFETCH(QStringList, args);
    QFETCH(double, aspect);
    if (QStandardPaths::findExecutable(QStringLiteral("pdftoppm")).isEmpty())
        QSKIP("pdftoppm (poppler-utils) is not installed");
    QFile::remove(path("print.pdf"));
    const CliRun r = runCli(inFolder(args, m_dir));
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    QVERIFY(readFile(path("print.pdf")).startsWith("%PDF-"));
    QSize page;
    const QRect box = inkOnPage(path("print.pdf"), m_dir.path(), &page);
    QVERIFY(qAbs(page.width() - 298) <= 1 && qAbs(page.height() - 421) <= 1);
    QVERIFY(!box.isEmpty());
    const double seen = double(box.width()) / box.height();
    QVERIFY2(qAbs(seen - aspect) < aspect * 0.06 + 0.02, qPrintable(QString::number(seen)));
    const bool fillsWidth = qAbs((page.width() - 1 - box.right()) - box.left()) <= 2;
    const bool fillsHeight = qAbs((page.height() - 1 - box.bottom()) - box.top()) <= 2;
    QVERIFY2(fillsWidth || fillsHeight, qPrintable(QString("%1,%2 %3x%4")
                                                       .arg(box.left())
                                                       .arg(box.top())
                                                       .arg(box.width())
                                                       .arg(box.height())));
}

QTEST_MAIN(TestCliPictures)
#include "tst_cli_pictures.moc"
