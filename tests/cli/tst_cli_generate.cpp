// `chromaxis-cli generate` as scripts run it: every generator without a display on the processor
// and under a display with OpenGL, the two giving the same cells within one step of the 16-bit
// encoding; the output kinds; and the refusals of bad arguments.

#include "clirunner.h"
#include "storage/numpyimage.h"
#include "storage/projectfile.h"

#include <QProcessEnvironment>
#include <QtTest>

namespace {

// Runs the command line with or without the display this test runs under.
CliRun runWith(bool display, const QStringList &args)
{
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    if (!display) {
        env.remove(QStringLiteral("DISPLAY"));
        env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    }
    p.setProcessEnvironment(env);
    p.start(QStringLiteral(CHROMAXIS_CLI), args);
    p.closeWriteChannel();
    p.waitForFinished(120000);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, p.readAllStandardOutput(),
            QString::fromUtf8(p.readAllStandardError())};
}

} // namespace

class TestCliGenerate : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString path(const QString &name) const { return m_dir.filePath(name); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        // The OpenGL half needs the display the GUI tests run under.
        QVERIFY2(!qgetenv("DISPLAY").isEmpty(), "run under xvfb-run");
    }

    void everyGenerator_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"mandelbrot", "julia", "apollonian", "ifs", "plasma", "noise", "gradient", "moiree"})
            QTest::newRow(name) << QString(name);
    }
    void everyGenerator()
    {
        QFETCH(QString, name);
        const QString cpuOut = path(name + "_cpu.npy");
        const QString glOut = path(name + "_gl.npy");
        const QString autoOut = path(name + "_auto.npy");
        const QStringList common{"--size", "48x36", "--set", name == "noise" ? "method=3" : "xoff=0.1"};
        CliRun r = runWith(false, QStringList{"generate", name, cpuOut, "--renderer", "cpu"} + common);
        QVERIFY2(r.code == 0, qPrintable(r.err));
        r = runWith(false, QStringList{"generate", name, autoOut} + common);
        QVERIFY2(r.code == 0, qPrintable(r.err));
        r = runWith(true, QStringList{"generate", name, glOut, "--renderer", "gl"} + common);
        QVERIFY2(r.code == 0, qPrintable(r.err));

        const DocumentImage cpu = NumpyImage::read(cpuOut);
        const DocumentImage gl = NumpyImage::read(glOut);
        QCOMPARE(cpu.mode(), int(DocumentImage::Continuous));
        QCOMPARE(gl.mode(), int(DocumentImage::Continuous));
        QCOMPARE(cpu.width(), 48);
        QCOMPARE(cpu.height(), 36);
        // Without a display, auto is the processor.
        QCOMPARE(NumpyImage::read(autoOut).continuousCells(), cpu.continuousCells());
        const auto &a = cpu.continuousCells();
        const auto &b = gl.continuousCells();
        QCOMPARE(a.size(), b.size());
        size_t close = 0;
        for (size_t i = 0; i < a.size(); ++i)
            close += std::abs(a[i] - b[i]) <= 65535.0f / 65536.0f + 1e-3f;
        QVERIFY2(close * 100 >= a.size() * 98, qPrintable(QString("%1 of %2 agree").arg(close).arg(a.size())));
    }

    void openGLWithoutADisplayFails()
    {
        const CliRun r = runWith(false, {"generate", "mandelbrot", path("none.npy"), "--renderer", "gl"});
        QCOMPARE(r.code, 1);
        QCOMPARE(r.err, QString("OpenGL unavailable: OpenGL needs a display (DISPLAY or WAYLAND_DISPLAY), and there "
                                "is none; --renderer cpu computes the same picture without one.\n"));
        QVERIFY(!QFile::exists(path("none.npy")));
    }

    void targetsAndOutputs()
    {
        // Indexed through the default grayscale palette: 8-bit cells.
        CliRun r = runWith(false, {"generate", "gradient", path("g.npy"), "--size", "20x10", "--target", "indexed",
                                   "--renderer", "cpu"});
        QVERIFY2(r.code == 0, qPrintable(r.err));
        QCOMPARE(NumpyImage::read(path("g.npy")).mode(), int(DocumentImage::Indexed8));
        // RGB as a picture.
        r = runWith(false, {"generate", "noise", path("n.png"), "--size", "20x10", "--target", "rgb", "--renderer",
                            "cpu"});
        QVERIFY2(r.code == 0, qPrintable(r.err));
        QCOMPARE(QImage(path("n.png")).size(), QSize(20, 10));
        // A project holds the image and the palette it was made with.
        QVERIFY(writeFile(path("two.gpl"), "GIMP Palette\nName: two\n#\n255 0 0 red\n0 0 255 blue\n"));
        r = runWith(false, {"generate", "julia", path("j.cxw"), "--palette", path("two.gpl"), "--target", "indexed",
                            "--renderer", "cpu", "--size", "16x12"});
        QVERIFY2(r.code == 0, qPrintable(r.err));
        const ProjectData project = ProjectFile::read(path("j.cxw"));
        QCOMPARE(project.palette.size(), 2);
        QCOMPARE(project.image.mode(), int(DocumentImage::Indexed8));
        QCOMPARE(project.image.width(), 16);
        // An image's own colours serve as the palette; an RGB picture has none to give.
        QImage indexed(4, 4, QImage::Format_Indexed8);
        indexed.setColorTable({qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255)});
        indexed.fill(0);
        QVERIFY(indexed.save(path("three.png")));
        r = runWith(false, {"generate", "noise", path("t.png"), "--palette", path("three.png"), "--target", "rgb",
                            "--renderer", "cpu", "--size", "16x16"});
        QVERIFY2(r.code == 0, qPrintable(r.err));
        const QImage three = QImage(path("t.png")).convertToFormat(QImage::Format_RGB32);
        QSet<QRgb> seen;
        for (int y = 0; y < three.height(); ++y)
            for (int x = 0; x < three.width(); ++x)
                seen.insert(three.pixel(x, y));
        QVERIFY(seen.size() >= 2);
        QVERIFY(seen.subtract({qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255)}).isEmpty());
        QVERIFY(QImage(path("n.png")).save(path("rgb.png")));
        r = runWith(false, {"generate", "noise", path("x.png"), "--palette", path("rgb.png"), "--renderer", "cpu"});
        QCOMPARE(r.code, 1);
        QVERIFY2(r.err.contains("brings no colours of its own"), qPrintable(r.err));
        // A settings file gives the size; --size overrides it.
        QVERIFY(writeFile(path("m.txt"), "mandelbrot 2.0.0\niterations:30\nxsize:24\nysize:8\n"));
        r = runWith(false, {"generate", "mandelbrot", path("m1.npy"), "--settings", path("m.txt"), "--renderer", "cpu"});
        QVERIFY2(r.code == 0, qPrintable(r.err));
        QCOMPARE(NumpyImage::read(path("m1.npy")).width(), 24);
        QCOMPARE(NumpyImage::read(path("m1.npy")).height(), 8);
        r = runWith(false, {"generate", "mandelbrot", path("m2.npy"), "--settings", path("m.txt"), "--size", "9x7",
                            "--renderer", "cpu"});
        QVERIFY2(r.code == 0, qPrintable(r.err));
        QCOMPARE(NumpyImage::read(path("m2.npy")).width(), 9);
    }

    void refusals_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("message");
        const QStringList base{"generate", "mandelbrot", "@out.npy", "--renderer", "cpu"};
        QTest::newRow("unknown generator")
            << QStringList{"generate", "spiral", "@out.npy"} << 2
            << "unknown generator 'spiral' (one of gradient, moiree, mandelbrot, julia, apollonian, noise, plasma, ifs)";
        QTest::newRow("size 0") << base + QStringList{"--size", "0x10"} << 2
                                << "--size '0x10' is not WIDTHxHEIGHT (for example 1024x768)";
        QTest::newRow("size words") << base + QStringList{"--size", "big"} << 2
                                    << "--size 'big' is not WIDTHxHEIGHT (for example 1024x768)";
        QTest::newRow("size too large") << base + QStringList{"--size", "200000x200000"} << 1
                                        << "Cannot render the image: The image is 200000 x 200000 pixels";
        QTest::newRow("target") << base + QStringList{"--target", "grey"} << 2
                                << "--target 'grey' is none of indexed, continuous and rgb";
        QTest::newRow("renderer") << QStringList{"generate", "noise", "@out.npy", "--renderer", "gpu"} << 2
                                  << "--renderer 'gpu' is none of auto, gl and cpu";
        QTest::newRow("set without value") << base + QStringList{"--set", "zoom"} << 2 << "'--set zoom' is not KEY=VALUE";
        QTest::newRow("set of another generator") << base + QStringList{"--set", "c_r=0.3"} << 2
                                                  << "'--set c_r=0.3': mandelbrot has no setting 'c_r'";
        QTest::newRow("set a bad value") << base + QStringList{"--set", "zoom=near"} << 1
                                         << "Invalid settings: The value \"near\" of \"zoom\" is not a number.";
        QTest::newRow("another generator's settings")
            << base + QStringList{"--settings", "@julia.txt"} << 1 << "Invalid settings";
        QTest::newRow("missing operand") << QStringList{"generate", "noise"} << 2 << "";
    }
    void refusals()
    {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        QFETCH(QString, message);
        QVERIFY(writeFile(path("julia.txt"), "julia 2.0.0\nzoom:2\n"));
        const CliRun r = runWith(false, inFolder(args, m_dir));
        QCOMPARE(r.code, code);
        QVERIFY2(r.err.contains(message), qPrintable(r.err));
        if (code == 2)
            QVERIFY2(r.err.contains("Usage: chromaxis-cli"), qPrintable(r.err));
        QVERIFY(!QFile::exists(path("out.npy")));
    }
};

QTEST_GUILESS_MAIN(TestCliGenerate)
#include "tst_cli_generate.moc"
