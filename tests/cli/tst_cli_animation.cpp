// chromaxis-cli animation: the movie the window would write, and each refusal with its message.

#include "climagefixtures.h"
#include "clirunner.h"
#include "export/animationexport.h"
#include "storage/documentimageio.h"

#include <QtTest>

#include <gif_lib.h>

class TestCliAnimation : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void gifAsTheWindowWritesIt();
    void movies_data();
    void movies();
    void failures_data();
    void failures();

private:
    QTemporaryDir m_dir;
};

void TestCliAnimation::initTestCase()
{
    QVERIFY(writeImageFixtures(m_dir));
    QVERIFY(writeFile(m_dir.filePath("four.gpl"), "GIMP Palette\nName: four\n#\n255 0 0 a\n0 255 0 b\n0 0 255 c\n"
                                                  "255 255 255 d\n"));
}

void TestCliAnimation::gifAsTheWindowWritesIt()
{
    const CliRun r = runCli(inFolder({"animation", "@indexed.png", "@out.gif", "--start", "0", "--end", "2", "--fps",
                                      "25"},
                                     m_dir));
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    // The same bytes as the export of the window's document: the image in its own colours.
    const QString here = m_dir.filePath("here.gif");
    DocumentImage image = DocumentImageIO::load(m_dir.filePath("indexed.png"));
    const auto result = AnimationExport::write(here, image, image.imagePalette(), {0, 2, 25});
    QCOMPARE(int(result.outcome), int(AnimationExport::Outcome::Written));
    QCOMPARE(readFile(m_dir.filePath("out.gif")), readFile(here));
    const QByteArray gif = readFile(here);
    QVERIFY(gif.startsWith("GIF89a"));
    // The image's colours in the global table.
    QCOMPARE(gif.mid(13, 6), QByteArray("\x09\x09\x09\xc8\x64\x32", 6));
}

void TestCliAnimation::movies_data()
{
    QTest::addColumn<QString>("out");
    QTest::addColumn<QByteArray>("magic"); // at offset 8 for AVI, 4 for MP4, 0 otherwise
    QTest::addColumn<int>("at");
    QTest::newRow("avi") << "m.avi" << QByteArray("AVI ") << 8;
    QTest::newRow("wmv") << "m.wmv" << QByteArray("\x30\x26\xb2\x75", 4) << 0;
    QTest::newRow("mp4") << "m.mp4" << QByteArray("ftyp") << 4;
    QTest::newRow("webm") << "m.webm" << QByteArray("\x1a\x45\xdf\xa3", 4) << 0;
}

void TestCliAnimation::movies()
{
    QFETCH(QString, out);
    QFETCH(QByteArray, magic);
    QFETCH(int, at);
    const CliRun r = runCli(inFolder({"animation", "@cont.npy", "@" + out, "--start", "1", "--end", "3", "--fps", "12",
                                      "--palette", "@four.gpl"},
                                     m_dir));
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    QCOMPARE(readFile(m_dir.filePath(out)).mid(at, magic.size()), magic);
}

void TestCliAnimation::failures_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("err"); // the whole of stderr, or for usage errors its first line
    const QStringList range{"--start", "0", "--end", "2"};
    QTest::newRow("no rate") << QStringList{"animation", "@indexed.png", "@a.gif"} + range << 2
                             << "chromaxis-cli: animation needs --fps";
    QTest::newRow("rate not a number") << QStringList{"animation", "@indexed.png", "@a.gif", "--fps", "x"} + range
                                       << 2 << "chromaxis-cli: --fps takes a whole number, not 'x'";
    QTest::newRow("rate 0") << QStringList{"animation", "@indexed.png", "@a.gif", "--fps", "0"} + range << 1
                            << "Animation export error: A movie needs at least 1 frame per second; 0 was asked for.\n";
    QTest::newRow("unknown suffix") << QStringList{"animation", "@indexed.png", "@a.bmp", "--fps", "5"} + range << 1
                                    << "Animation export error: Unkown export format 'bmp'.\n";
    QTest::newRow("rgb image") << QStringList{"animation", "@rgb.png", "@a.avi", "--fps", "5"} + range << 1
                               << "Format error: An image with a palette to rotate is needed.\n";
    QTest::newRow("gif of continuous cells")
        << QStringList{"animation", "@cont.npy", "@a.gif", "--fps", "5"} + range << 1
        << "Format error: Only an 8-bit indexed image can be exported as a GIF animation.\n";
    QTest::newRow("end past the palette")
        << QStringList{"animation", "@indexed.png", "@a.avi", "--fps", "5", "--start", "0", "--end", "3"} << 1
        << "Animation export error: The end index 3 lies past the palette's last entry 2.\n";
    QTest::newRow("end below start")
        << QStringList{"animation", "@indexed.png", "@a.avi", "--fps", "5", "--start", "2", "--end", "1"} << 1
        << "Animation export error: The end index 1 lies below the start index 2.\n";
    QTest::newRow("no folder") << QStringList{"animation", "@indexed.png", "@none/a.avi", "--fps", "5"} + range << 1
                               << "Animation export error: Unable to Create the Movie File\n";
    QTest::newRow("no input") << QStringList{"animation", "@missing.png", "@a.avi", "--fps", "5"} + range << 1
                              << QString();
}

void TestCliAnimation::failures()
{
    QFETCH(QStringList, args);
    QFETCH(int, code);
    QFETCH(QString, err);
    const CliRun r = runCli(inFolder(args, m_dir));
    QCOMPARE(r.code, code);
    if (code == 2)
        QCOMPARE(r.err.section('\n', 0, 0), err);
    else if (!err.isEmpty())
        QCOMPARE(r.err, err);
    else
        QVERIFY(!r.err.isEmpty());
    QVERIFY(r.out.isEmpty());
    const QStringList left = QDir(m_dir.path()).entryList({"a.*"}, QDir::Files);
    QVERIFY2(left.isEmpty(), qPrintable(left.join(", ")));
}

QTEST_GUILESS_MAIN(TestCliAnimation)
#include "tst_cli_animation.moc"
