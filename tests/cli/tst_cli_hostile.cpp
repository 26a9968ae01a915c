// Small files that ask for far more than they hold, as tools/make-hostile-samples writes them: each
// is refused with its own message, or read, while the command runs under a cap on its address
// space that the old readers blew through (or crashed before reaching).

#include "clirunner.h"

#include <QtTest>

#if defined(__SANITIZE_ADDRESS__)
#define CHROMAXIS_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define CHROMAXIS_ADDRESS_SANITIZER 1
#endif
#endif

namespace {

// Runs the command line with its address space capped at capMiB, as a shell's ulimit sets it.
CliRun runCapped(const QStringList &args, int capMiB)
{
#ifdef CHROMAXIS_ADDRESS_SANITIZER
    // The sanitizer reserves terabytes of shadow memory up front: no cap can be set under it.
    Q_UNUSED(capMiB);
    return runCli(args);
#else
    QProcess p;
    p.start(QStringLiteral("/bin/sh"), QStringList{QStringLiteral("-c"),
                                                   QStringLiteral("ulimit -v %1 && exec \"$0\" \"$@\"").arg(capMiB * 1024),
                                                   QStringLiteral(CHROMAXIS_CLI)} +
                                           args);
    p.closeWriteChannel();
    p.waitForFinished(60000);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, p.readAllStandardOutput(),
            QString::fromUtf8(p.readAllStandardError())};
#endif
}

} // namespace

class TestCliHostile : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void hostileFiles_data();
    void hostileFiles();
    void nothingWrittenFromWhatCannotBeRead();

private:
    QTemporaryDir m_dir;
};

void TestCliHostile::initTestCase()
{
    QVERIFY(m_dir.isValid());
    QProcess make;
    make.start(QStringLiteral("python3"), {QStringLiteral(CHROMAXIS_HOSTILE_SAMPLES), m_dir.path()});
    QVERIFY(make.waitForFinished(120000));
    QVERIFY2(make.exitCode() == 0, make.readAllStandardError().constData());
    QVERIFY(writeFile(m_dir.filePath("load.cxm"),
                      "chromaxis-macro 1\n%step load_image\nfilename:" + m_dir.filePath("wide-u4.npy").toUtf8() + "\n"));
}

void TestCliHostile::hostileFiles_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("capMiB");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("err"); // DIR stands for the folder of the samples
    QTest::addColumn<QByteArray>("outStart");

    const auto tooLarge = [](const QString &size) {
        return "The image is " + size + " pixels; at most 134217728 pixels, 262144 a side, can be opened.";
    };
    const auto numpyTooLarge = [&](const QString &file, const QString &size) {
        return "Error on reading NumPy array: The array in\n'DIR/" + file + "'\nis too large for an image.\n" +
               tooLarge(size) + "\n";
    };
    const auto project = [](const QString &file, const QString &reason) {
        return "Could not load: Cannot load project " + file + ".\n" + reason + "\n";
    };
    const QString wideU4 = numpyTooLarge("wide-u4.npy", "67108864 x 1");
    const QString wideF4 = numpyTooLarge("wide-f4.npy", "67108864 x 1");
    // Arrays with rows no picture can hold crashed every command that showed them.
    QTest::newRow("uint32 row of 2^26 cells, show")
        << QStringList{"image", "show", "@wide-u4.npy"} << 512 << 1 << wideU4 << QByteArray();
    QTest::newRow("float32 row of 2^26 cells, show")
        << QStringList{"image", "show", "@wide-f4.npy"} << 512 << 1 << wideF4 << QByteArray();
    QTest::newRow("uint32 row of 2^26 cells, render")
        << QStringList{"image", "render", "@wide-u4.npy", "@out.png"} << 512 << 1 << wideU4 << QByteArray();
    QTest::newRow("float32 row of 2^26 cells, fast")
        << QStringList{"image", "fast", "image_convert_grayscale", "@wide-f4.npy", "@out.npy"} << 512 << 1 << wideF4
        << QByteArray();
    QTest::newRow("uint32 row of 2^26 cells, macro")
        << QStringList{"macro", "run", "@load.cxm", "@utf16-jasc.pal", "@out.cxw"} << 512 << 1 << wideU4
        << QByteArray();
    QTest::newRow("2^30 pixels of uint8") << QStringList{"image", "show", "@many-pixels-u1.npy"} << 512 << 1
                                          << numpyTooLarge("many-pixels-u1.npy", "32768 x 32768") << QByteArray();
    // Tiny images whose headers declare gigapixels are refused before they are decoded.
    QTest::newRow("240-byte JPEG of 40000 x 40000")
        << QStringList{"image", "show", "@declares-40000x40000.jpg"} << 512 << 1
        << "Could not load: Cannot load declares-40000x40000.jpg.\n" + tooLarge("40000 x 40000") + "\n"
        << QByteArray();
    QTest::newRow("107 KB PNG of 30000 x 30000")
        << QStringList{"image", "show", "@bomb-30000x30000.png"} << 512 << 1
        << "Could not load: Cannot load bomb-30000x30000.png.\n" + tooLarge("30000 x 30000") + "\n" << QByteArray();
    // Archives: the member is read as it comes and checked from its first bytes.
    QTest::newRow("2 MB archive of 2 GiB of zeros")
        << QStringList{"image", "show", "@zeros-2g.npz"} << 512 << 1
        << "Error on reading NumPy array: 'DIR/zeros-2g.npz/image.npy'\nis not a NumPy array file.\n" << QByteArray();
    QTest::newRow("small array, then 2 GiB more in its member")
        << QStringList{"image", "show", "@long-member.npz"} << 512 << 1
        << "Error on reading NumPy array: The member 'image.npy' of\n'DIR/long-member.npz'\nholds 2146434816 bytes "
           "past its contents.\n"
        << QByteArray();
    // Projects: inflated only as far as the header is right.
    QTest::newRow("4 MB project of 4 GiB of zeros")
        << QStringList{"project", "show", "@zeros-4g.cxw"} << 512 << 1
        << project("zeros-4g.cxw", "The file does not match the format.\nExpected 'Chromaxis'.") << QByteArray();
    QTest::newRow("project palette of 2^28 entries")
        << QStringList{"project", "show", "@palette-2p28.cxw"} << 512 << 1
        << project("palette-2p28.cxw", "The palette has 268435456 entries; a project holds at most 16777216.")
        << QByteArray();
    QTest::newRow("project version text without end")
        << QStringList{"project", "show", "@endless-text.cxw"} << 512 << 1
        << project("endless-text.cxw", "A text in the file is longer than 16777216 bytes.") << QByteArray();
    QTest::newRow("project image of 65536 x 65536")
        << QStringList{"project", "show", "@image-65536-square.cxw"} << 512 << 1
        << project("image-65536-square.cxw", tooLarge("65536 x 65536")) << QByteArray();
    QTest::newRow("project image row of 2^26 cells")
        << QStringList{"image", "show", "@image-wide.cxw"} << 512 << 1
        << project("image-wide.cxw", tooLarge("67108864 x 4")) << QByteArray();
    // A valid palette of 64 MiB is read whole, line by line: all eleven million entries reach the writer.
    QTest::newRow("64 MiB GIMP palette")
        << QStringList{"palette", "convert", "@large-64m.gpl", "@out.act"} << 1024 << 1
        << "Error on palette export: An Adobe color table holds at most 256 colors; this one has 11184808.\n"
        << QByteArray();
    QTest::newRow("64 MiB GIMP palette shown") << QStringList{"palette", "show", "@large-64m.gpl"} << 1024 << 0 << ""
                                               << QByteArray("{\"entries\":[[0,0,0,65535],[0,0,0,65535],");
    // The content decides under the RIFF palette's suffix, in UTF-16 as well.
    QTest::newRow("UTF-16 JASC palette named .pal")
        << QStringList{"palette", "show", "@utf16-jasc.pal"} << 512 << 0 << ""
        << QByteArray("{\"entries\":[[65280,0,0,65535],[0,0,65280,65535]],\"properties\":");
}

void TestCliHostile::hostileFiles()
{
    QFETCH(QStringList, args);
    QFETCH(int, capMiB);
    QFETCH(int, code);
    QFETCH(QString, err);
    QFETCH(QByteArray, outStart);
    QElapsedTimer timer;
    timer.start();
    const CliRun run = runCapped(inFolder(args, m_dir), capMiB);
    QCOMPARE(run.err, QString(err).replace("DIR", m_dir.path()));
    QCOMPARE(run.code, code);
    QVERIFY2(run.out.startsWith(outStart), run.out.left(200).constData());
    // Refusals come from headers; only the large palette is read in full.
    QVERIFY2(timer.elapsed() < 30000, qPrintable(QString::number(timer.elapsed())));
}

// A project is never written from an image that cannot be read back.
void TestCliHostile::nothingWrittenFromWhatCannotBeRead()
{
    const CliRun run =
        runCapped(inFolder({"project", "create", "@made.cxw", "--image", "@wide-u4.npy"}, m_dir), 512);
    QCOMPARE(run.code, 1);
    QVERIFY2(run.err.contains("is too large for an image"), qPrintable(run.err));
    QVERIFY(!QFile::exists(m_dir.filePath("made.cxw")));
}

QTEST_GUILESS_MAIN(TestCliHostile)
#include "tst_cli_hostile.moc"
