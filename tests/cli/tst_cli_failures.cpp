// The command line when things go wrong around it: a standard output that takes nothing, an
// output path that is a pipe or a device, image files that make the libraries talk, values too
// long to repeat, and too little memory. It says what happened, in words, and exits 1.

#include "climagefixtures.h"
#include "clirunner.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QtTest>

#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace {

const char fireGpl[] = "GIMP Palette\n"
                       "Name: Fire\n"
                       "#\n"
                       "255 128   0\tOrange\n"
                       "  0   0 255\tBlue\n"
                       " 18  52  86\tSome grey\n";

const QString notRegular =
    QStringLiteral("It is not a regular file but a device, a pipe or a socket, which is never replaced.");

struct Run
{
    int code = -1;
    QByteArray out;
    QString err;
};

// Runs the command line with its standard output going to outFile (or read back when empty),
// under the extra environment variables and, when shell is given, through /bin/sh -c shell with
// the command line and its arguments as "$0" "$@".
Run run(const QStringList &args, const QString &outFile = QString(), const QStringList &env = {},
        const QString &shell = QString())
{
    QProcess p;
    QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
    for (const QString &assignment : env)
        e.insert(assignment.section('=', 0, 0), assignment.section('=', 1));
    p.setProcessEnvironment(e);
    if (!outFile.isEmpty())
        p.setStandardOutputFile(outFile);
    if (shell.isEmpty())
        p.start(QStringLiteral(CHROMAXIS_CLI), args);
    else
        p.start(QStringLiteral("/bin/sh"), QStringList{"-c", shell, QStringLiteral(CHROMAXIS_CLI)} + args);
    p.closeWriteChannel();
    p.waitForFinished(60000);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, p.readAllStandardOutput(),
            QString::fromUtf8(p.readAllStandardError())};
}

mode_t typeOf(const QString &path)
{
    struct stat st;
    return lstat(QFile::encodeName(path).constData(), &st) == 0 ? (st.st_mode & S_IFMT) : 0;
}

// A PNG whose text chunk has a wrong checksum: libpng warns and reads the picture all the same.
QByteArray pngWithBadTextChunk()
{
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    QImage picture(4, 3, QImage::Format_RGB32);
    picture.fill(qRgb(10, 20, 30));
    picture.save(&buffer, "png");
    const QByteArray text =
        QByteArray("\0\0\0\x0DtEXtComment\0hello", 21) + QByteArray("\x12\x34\x56\x78", 4);
    return png.insert(33, text); // after the signature and the header chunk
}

// A JPEG with two stray bytes before its end marker: libjpeg warns and decodes it all the same.
QByteArray jpegWithStrayBytes()
{
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    QImage picture(8, 8, QImage::Format_RGB32);
    picture.fill(qRgb(200, 100, 50));
    picture.save(&buffer, "jpg");
    return jpeg.insert(jpeg.size() - 2, "\x01\x02");
}

} // namespace

class TestCliFailures : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void lostStandardOutput_data();
    void lostStandardOutput();
    void standardOutputInPlace();
    void devicesAreNotReplaced_data();
    void devicesAreNotReplaced();
    void libraryChatterStaysQuiet_data();
    void libraryChatterStaysQuiet();
    void longValuesAreCut_data();
    void longValuesAreCut();
    void outOfMemorySaysSo();

private:
    QString path(const QString &name) const { return m_dir->filePath(name); }
    QStringList inDir(const QStringList &args) const { return inFolder(args, *m_dir); }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestCliFailures::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(writeFile(path("fire.gpl"), fireGpl));
    QVERIFY(writeImageFixtures(*m_dir));
}

void TestCliFailures::lostStandardOutput_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("err");
    const QString lost = "Could not save: Unable to write to the standard output.\nNo space left on device\n";
    QTest::newRow("palette show") << QStringList{"palette", "show", "@fire.gpl"} << lost;
    QTest::newRow("palette text to -") << QStringList{"palette", "text", "@fire.gpl", "-"} << lost;
    QTest::newRow("database list") << QStringList{"db", "list"} << lost;
    QTest::newRow("image show") << QStringList{"image", "show", "@indexed.png"} << lost;
    QTest::newRow("help") << QStringList{"--help"} << lost;
    QTest::newRow("palette to /dev/stdout")
        << QStringList{"palette", "convert", "@fire.gpl", "/dev/stdout", "--to", "gpl"}
        << "Could not save: Unable to save palette under\n/dev/stdout.\nNo space left on device\n";
}

// "palette show X >/dev/full" used to exit 0 with nothing shown.
void TestCliFailures::lostStandardOutput()
{
    QFETCH(QStringList, args);
    QFETCH(QString, err);
    if (typeOf("/dev/full") != S_IFCHR)
        QSKIP("this system has no /dev/full");
    const Run r = run(inDir(args), "/dev/full");
    QCOMPARE(r.err, err);
    QCOMPARE(r.code, 1);
}

// /dev/stdout is written where it points, a pipe or a file the shell opened, never replaced.
void TestCliFailures::standardOutputInPlace()
{
    Run r = run(inDir({"palette", "convert", "@fire.gpl", "@direct.gpl"}));
    QCOMPARE(r.code, 0);
    const QByteArray direct = readFile(path("direct.gpl"));
    QVERIFY(direct.startsWith("GIMP Palette\n"));
    r = run({"palette", "convert", path("fire.gpl"), "/dev/stdout", "--to", "gpl"});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    QCOMPARE(r.out, direct);

    // Into a file the shell opened: the file stays the one the shell holds.
    r = run(inDir({"image", "render", "@indexed.png", "@direct.png"}));
    QCOMPARE(r.code, 0);
    QVERIFY(writeFile(path("opened.png"), "x"));
    struct stat before;
    QCOMPARE(stat(QFile::encodeName(path("opened.png")).constData(), &before), 0);
    r = run(inDir({"image", "render", "@indexed.png", "/dev/stdout"}), path("opened.png"));
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    struct stat after;
    QCOMPARE(stat(QFile::encodeName(path("opened.png")).constData(), &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
    QCOMPARE(readFile(path("opened.png")), readFile(path("direct.png")));
    QCOMPARE(QImage::fromData(readFile(path("opened.png")), "png").size(), QSize(3, 2));
}

void TestCliFailures::devicesAreNotReplaced_data()
{
    QTest::addColumn<QString>("kind"); // "pipe" or "device"
    QTest::addColumn<QString>("node"); // its name; the node stands where the output should go
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("err");
    for (const QString kind : {"pipe", "device"}) {
        const auto row = [&](const char *name, const QString &node, const QStringList &args,
                             const QString &err) {
            QTest::addRow("%s, %s", name, qPrintable(kind))
                << kind << node << args
                << QString(err).replace("%1", "@" + node).replace("%2", node) + '\n' + notRegular + '\n';
        };
        row("palette convert", "out.gpl", {"palette", "convert", "@fire.gpl", "@out.gpl"},
            "Error on palette export: The destination file\n'%1'\ncould not be built.");
        row("palette text", "out.txt", {"palette", "text", "@fire.gpl", "@out.txt"},
            "Could not save: Unable to save palette under\n%1.\nCould not open file.");
        row("project create", "out.cxw", {"project", "create", "@out.cxw", "--palette", "@fire.gpl"},
            "Could not save: Cannot save project %2.\nCould not open the file for writing.");
        row("image render", "out.png", {"image", "render", "@indexed.png", "@out.png"},
            "Could not save: Unable to save %2.");
        row("image fast", "out.npy",
            {"image", "fast", "image_convert_indexed32bitint", "@indexed.png", "@out.npy"},
            "Error on writing NumPy array: Could not open file '%1' for writing.");
        row("macro run", "out.cxw", {"macro", "run", "@m.cxm", "@fire.gpl", "@out.cxw"},
            "Could not save: Cannot save project %2.\nCould not open the file for writing.");
    }
}

// Run as root, the writers used to rename a file over /dev/full.
void TestCliFailures::devicesAreNotReplaced()
{
    QFETCH(QString, kind);
    QFETCH(QString, node);
    QFETCH(QStringList, args);
    QFETCH(QString, err);
    QVERIFY(writeFile(path("m.cxm"), "chromaxis-macro 1\n%step palette_invert_order\n"));
    const QByteArray name = QFile::encodeName(path(node));
    if (kind == "pipe")
        QCOMPARE(mkfifo(name.constData(), 0600), 0);
    else if (mknod(name.constData(), S_IFCHR | 0600, makedev(1, 7)) != 0)
        QSKIP("a device node can be made only with the right to make one (root)");
    const mode_t type = typeOf(path(node));
    const Run r = run(inDir(args));
    QCOMPARE(r.err, err.replace('@', m_dir->path() + '/'));
    QCOMPARE(r.code, 1);
    QCOMPARE(typeOf(path(node)), type);
}

void TestCliFailures::libraryChatterStaysQuiet_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("PNG with a damaged text chunk") << "chunk.png" << pngWithBadTextChunk();
    QTest::newRow("JPEG with stray bytes") << "stray.jpg" << jpegWithStrayBytes();
}

// The libraries' warnings came before the program's own output; they are for developers, who can
// ask for them.
void TestCliFailures::libraryChatterStaysQuiet()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, bytes);
    QVERIFY(writeFile(path(file), bytes));
    Run r = run({"image", "show", path(file)});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    QVERIFY(r.out.startsWith("{\"height\":"));
    r = run({"image", "show", path(file)}, QString(), {"CHROMAXIS_LIBRARY_MESSAGES=1"});
    QCOMPARE(r.code, 0);
    QVERIFY2(r.err.contains("warning") || r.err.contains("Corrupt"), qPrintable(r.err));
}

void TestCliFailures::longValuesAreCut_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("macro"); // written to @m.cxm when given
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("err"); // the first line of stderr
    const QString x(20000, 'x');
    const QString cut = QString(80, 'x') + "...";
    QTest::newRow("a setting's value")
        << QStringList{"palette", "apply", "tint", "@fire.gpl", "@o.gpl", "--set", "opacity=" + x}
        << QString() << 1 << "Invalid settings: The value \"" + cut + "\" of \"opacity\" is not an integer.";
    QTest::newRow("a format word") << QStringList{"palette", "convert", "@fire.gpl", "@o.gpl", "--to", x}
                                   << QString() << 2
                                   << "chromaxis-cli: '" + cut + "' is not a palette format";
    QTest::newRow("a command") << QStringList{"palette", x} << QString() << 2
                               << "chromaxis-cli: unknown command 'palette " + QString(72, 'x') + "...'";
    QTest::newRow("a macro's colour")
        << QStringList{"macro", "run", "@m.cxm", "@fire.gpl", "@o.cxw"}
        << "chromaxis-macro 1\n%step edit\nselection:0\ncolor:" + x + "\n"
        << 1 << "Error on playing macro: The step 'edit' has a colour that cannot be read: '" + cut + "'.";
    QString unknown = "chromaxis-macro 1\n";
    for (int i = 0; i < 30; ++i)
        unknown += QStringLiteral("%step later_%1\n").arg(i % 12) + "%step " + x + "\n";
    QTest::newRow("steps not built yet")
        << QStringList{"macro", "run", "@m.cxm", "@fire.gpl", "@o.cxw"} << unknown << 0
        << "warning: 60 steps are unknown and were skipped: later_0, " + cut +
               ", later_1, later_2, later_3, later_4, later_5, later_6, later_7, "
               "later_8 and 6 more";
}

// An error message repeated a hostile 10 MB value whole.
void TestCliFailures::longValuesAreCut()
{
    QFETCH(QStringList, args);
    QFETCH(QString, macro);
    QFETCH(int, code);
    QFETCH(QString, err);
    if (!macro.isEmpty())
        QVERIFY(writeFile(path("m.cxm"), macro.toUtf8()));
    const Run r = run(inDir(args));
    QCOMPARE(r.err.section('\n', 0, 0), err);
    QCOMPARE(r.code, code);
    QVERIFY(r.err.size() < 4000);
}

// Running out of memory used to end in "Error: std::bad_alloc". Under an address-space limit
// that lets the command line start and show a palette, doubling a palette to a million entries
// cannot be done.
void TestCliFailures::outOfMemorySaysSo()
{
    QString macro = "chromaxis-macro 1\n";
    for (int i = 0; i < 20; ++i)
        macro += "%step copy\nselection:\n%step paste\nselection:\n";
    QVERIFY(writeFile(path("double.cxm"), macro.toUtf8()));
    // The smallest limit in steps of 16 MiB: what the doubling needs, some 100 MiB, is not left.
    QString limited;
    for (int megabytes = 128; megabytes <= 768 && limited.isEmpty(); megabytes += 16) {
        const QString shell = QStringLiteral("ulimit -v %1 && exec \"$0\" \"$@\"").arg(megabytes * 1024);
        if (run({"palette", "show", path("fire.gpl")}, QString(), {}, shell).code == 0) {
            limited = shell;
        }
    }
    if (limited.isEmpty())
        QSKIP("the command line does not start under a small address-space limit here (a sanitizer build?)");
    const Run r =
        run({"macro", "run", path("double.cxm"), path("fire.gpl"), path("o.cxw")}, QString(), {}, limited);
    QCOMPARE(r.err, QString("Out of memory: There is not enough memory to carry out the command.\n"));
    QCOMPARE(r.code, 1);
    QVERIFY(!QFile::exists(path("o.cxw")));
}

QTEST_GUILESS_MAIN(TestCliFailures)
#include "tst_cli_failures.moc"
