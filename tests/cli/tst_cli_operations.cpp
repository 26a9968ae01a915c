#include "operations/cosinepalette.h"
#include "formats/paletteformats.h"
#include "operations/paletteoperations.h"
#include "storage/projectfile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

#include "clirunner.h"

namespace {

using Colour = RGBAColor<uint>;
using Entries = std::vector<Colour>;

} // namespace

Q_DECLARE_METATYPE(Colour)
Q_DECLARE_METATYPE(std::set<int>)

namespace {

const Entries sample = {{0, 0, 0, 0},          {65535, 32768, 100, 65535}, {1000, 2000, 3000, 4294836225u},
                        {40000, 40000, 0, 12}, {7, 65535, 65535, 65535},   {30000, 10000, 50000, 65535}};

const char tintSettings[] = "tint 2.0.0\ncolor:#aa00ff\nopacity:40\nsel_only:1\n";

SettingsText::Pairs pairsOf(const QString &lines)
{
    SettingsText::Pairs pairs;
    for (const QString &line : lines.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const int colon = line.indexOf(QLatin1Char(':'));
        pairs.emplace_back(colon < 0 ? line : line.left(colon), colon < 0 ? QString() : line.mid(colon + 1));
    }
    return pairs;
}

} // namespace

class TestCliOperations : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void apply_data();
    void apply();
    void setOverridesFile();
    void gimpInAndOut();
    void reorderedGimpPalette();
    void generatorsFromNothing();
    void generate_data();
    void generate();
    void select_data();
    void select();
    void failures_data();
    void failures();

private:
    QString path(const QString &name) const { return m_dir->filePath(name); }
    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile f(path(name));
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }
    Palette<uint> readProject(const QString &name) const { return ProjectFile::read(path(name)).palette; }
    QStringList inDir(const QStringList &args) const { return inFolder(args, *m_dir); }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestCliOperations::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    ProjectData project;
    project.palette = Palette<uint>(sample);
    ProjectFile::write(path("in.cxw"), project);
    write("tint.txt", tintSettings);
    write("six.gpl", "GIMP Palette\n0 0 0\n255 0 0\n0 255 0\n0 0 255\n255 255 0\n255 255 255\n");
    write("pattern.txt", "selectionpattern 2.0.0\nstart_index:1\nend_index:4\nfull_palette:0\nset_number:2\n"
                         "skip_number:1\n");
}

void TestCliOperations::apply_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("settingsFile"); // settings text lines after the name line, or empty
    QTest::addColumn<QStringList>("sets");     // KEY=VALUE
    QTest::addColumn<QString>("select");
    QTest::addColumn<std::set<int>>("selection");
    const auto row = [](const char *tag, const QString &operation, const QString &settingsFile,
                        const QStringList &sets, const QString &select, const std::set<int> &selection) {
        QTest::newRow(tag) << operation << settingsFile << sets << select << selection;
    };

    row("tint from a file, selected", "tint", "color:#aa00ff\nopacity:40\nsel_only:1", {}, "1,3-4",
        {1, 3, 4});
    row("gradient tint over a range", "gradienttint",
        "color1:#000000\nopacity1:0\ncolor2:#ffffff\nopacity2:100\nmode:9", {"begin=1", "end=4"}, "", {});
    row("blur by --set", "blur", "", {"value=2", "method=1"}, "", {});
    row("hue / saturation / value", "hue_saturation_value", "hue:90\nsaturation:-20\nsel_only:1", {}, "0-2",
        {0, 1, 2});
    row("brightness / contrast", "brightness_contrast", "", {"contrast=100"}, "", {});
    row("component manipulation", "component_manipulation", "mode:0\ncomp1:50\nwrap:1", {}, "", {});
    row("shift order", "shift_order", "", {"offset=2"}, "", {});
    row("parameterless step", "palette_invert_order", "", {}, "", {});
    row("interpolate selected", "interpolate_selected", "", {}, "0,5", {0, 5});
    row("sort colors", "sort_colors", "", {"key=0", "descending=1"}, "", {});
    row("sort selected", "sort_colors", "key:4\nsel_only:1\ndescending:1", {}, "0,2-4", {0, 2, 3, 4});
    row("sharpen", "sharpen", "", {"amount=200", "radius=1", "method=0"}, "", {});
    row("resize", "resize_palette", "size:11\nmode:3\nmethod:2", {}, "", {});
    row("repetition pattern", "pattern_generation", "", {"count=2", "mirror=1"}, "1,3,4", {1, 3, 4});
    row("persian raster", "persian_raster", "period1:2\nperiod2:1\nreverse:1\nsize:9", {}, "", {});
    row("append mirrored", "palette_append_mirrored", "", {}, "", {});
}

void TestCliOperations::apply()
{
    QFETCH(QString, operation);
    QFETCH(QString, settingsFile);
    QFETCH(QStringList, sets);
    QFETCH(QString, select);
    QFETCH(std::set<int>, selection);

    QStringList args{"palette", "apply", operation, path("in.cxw"), path("out.cxw")};
    SettingsText::Pairs pairs;
    if (!settingsFile.isEmpty()) {
        write("settings.txt", (operation + " 2.0.0\n" + settingsFile + "\n").toUtf8());
        args << "--settings" << path("settings.txt");
        pairs = pairsOf(settingsFile);
    }
    for (const QString &set : sets) {
        args << "--set" << set;
        pairs.emplace_back(set.section('=', 0, 0), set.mid(set.indexOf('=') + 1));
    }
    if (!select.isEmpty())
        args << "--select" << select;
    const CliRun r = runCli(args);
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const Palette<uint> expected =
        PaletteOperations::apply(operation, Palette<uint>(sample), selection, pairs);
    const Palette<uint> got = readProject("out.cxw");
    QVERIFY(got.entries() == expected.entries());
    QVERIFY(got.entries() != sample);
}

void TestCliOperations::setOverridesFile()
{
    // The file says 40 percent; --set after it makes it 100, so the selected entries become the
    // tint colour itself and the others stay as they were.
    const CliRun r = runCli({"palette", "apply", "tint", path("in.cxw"), path("out.cxw"), "--settings",
                             path("tint.txt"), "--set", "opacity=100", "--select", "2,4"});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const Entries got = readProject("out.cxw").entries();
    const Colour purple(0xaa00, 0, 0xff00, 65535);
    QVERIFY(got == Entries({sample[0], sample[1], purple, sample[3], purple, sample[5]}));
}

void TestCliOperations::gimpInAndOut()
{
    // The formats follow the extensions; hue rotation by 120 turns red into green.
    const CliRun r = runCli({"palette", "apply", "hue_saturation_value", path("six.gpl"), path("out.gpl"),
                             "--set", "hue=120", "--select", "1", "--set", "sel_only=1"});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    Palette<uint> out;
    importPalette(path("out.gpl"), out, FormatGimp);
    QCOMPARE(out.size(), 6);
    QVERIFY(out[1] == Colour(0, 65280, 0, 65535));
    QVERIFY(out[0] == Colour(0, 0, 0, 65535));
    QVERIFY(out[2] == Colour(0, 65280, 0, 65535));
}

void TestCliOperations::reorderedGimpPalette()
{
    // Black, red, green, blue, yellow, white by luminance: black, blue, red, green, yellow, white.
    CliRun r = runCli({"palette", "apply", "sort_colors", path("six.gpl"), path("sorted.gpl"), "--set", "key=4"});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    Palette<uint> in, out;
    importPalette(path("six.gpl"), in, FormatGimp);
    importPalette(path("sorted.gpl"), out, FormatGimp);
    QCOMPARE(out.size(), 6);
    for (const auto &[to, from] : std::vector<std::pair<int, int>>{{0, 0}, {1, 3}, {2, 1}, {3, 2}, {4, 4}, {5, 5}})
        QVERIFY(out[to] == in[from]);
    // The mirror doubles the ends: twelve entries, the second half the first backwards.
    r = runCli({"palette", "apply", "palette_append_mirrored", path("six.gpl"), path("mirrored.gpl")});
    QCOMPARE(r.code, 0);
    Palette<uint> mirrored;
    importPalette(path("mirrored.gpl"), mirrored, FormatGimp);
    QCOMPARE(mirrored.size(), 12);
    for (int i = 0; i < 6; ++i)
        QVERIFY(mirrored[i] == in[i] && mirrored[11 - i] == in[i]);
    // An empty palette cannot be resized: the command says why and writes nothing.
    write("empty.gpl", "GIMP Palette\n");
    r = runCli({"palette", "apply", "resize_palette", path("empty.gpl"), path("resized.gpl")});
    QCOMPARE(r.code, 1);
    QCOMPARE(r.err, QStringLiteral("Empty palette: An empty palette cannot be resized.\n"));
    QVERIFY(!QFile::exists(path("resized.gpl")));
}

void TestCliOperations::generatorsFromNothing()
{
    CliRun r = runCli({"palette", "apply", "cosini", "-", path("cos.cxw"), "--set", "size=10", "--set",
                       "keep_aspect=1", "--set", "d_g=0.25"});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    CosinePaletteSettings s;
    s.size = 10;
    s.keepAspect = true;
    s.channels[1].d = 0.25;
    QVERIFY(readProject("cos.cxw").entries() == CosinePalette::generate(s).entries());

    write("ticks.txt", "interpolation 2.0.0\nindex:0\ncolor:4278190080\ncolorSpace:0\nfunction:0\ntickend\n"
                       "index:255\ncolor:4294967295\ncolorSpace:0\nfunction:0\ntickend\nsize:1024\n");
    r = runCli({"palette", "apply", "interpolation", "-", path("ramp.cxw"), "--settings", path("ticks.txt")});
    QCOMPARE(r.code, 0);
    const Palette<uint> ramp = readProject("ramp.cxw");
    QCOMPARE(ramp.size(), 1021);
    QVERIFY(ramp[1020] == Colour(65280, 65280, 65280, 65535));
    // A generator given a palette ignores it.
    r = runCli({"palette", "apply", "interpolation", path("in.cxw"), path("ramp2.cxw"), "--settings",
                path("ticks.txt")});
    QCOMPARE(r.code, 0);
    QVERIFY(readProject("ramp2.cxw").entries() == ramp.entries());
}

void TestCliOperations::generate_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("size");
    QTest::addColumn<int>("entries");
    QTest::addColumn<int>("probe");
    QTest::addColumn<Colour>("colour");
    QTest::newRow("grayscale") << "palette_generate_grayscale" << QStringList() << 256 << 255
                               << Colour(65280, 65280, 65280, 65535);
    QTest::newRow("extended grayscale")
        << "palette_generate_extgrayscale" << QStringList() << 766 << 1 << Colour(256, 0, 0, 65280);
    QTest::newRow("hue rotation 256") << "palette_generate_huerot256" << QStringList() << 256 << 128
                                      << Colour(0, 65535, 65535, 4294836225u);
    QTest::newRow("hue rotation 1024") << "palette_generate_huerot1024" << QStringList() << 1024 << 512
                                       << Colour(0, 65535, 65535, 4294836225u);
    QTest::newRow("cut to 4") << "palette_generate_extgrayscale" << QStringList{"--size", "4"} << 4 << 3
                              << Colour(256, 256, 256, 65280);
    QTest::newRow("padded to 300") << "palette_generate_grayscale" << QStringList{"--size=300"} << 300 << 299
                                   << Colour(0, 0, 0, 65535);
}

void TestCliOperations::generate()
{
    QFETCH(QString, name);
    QFETCH(QStringList, size);
    QFETCH(int, entries);
    QFETCH(int, probe);
    QFETCH(Colour, colour);
    const CliRun r = runCli(QStringList{"palette", "generate", name, path("gen.cxw")} + size);
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const Palette<uint> p = readProject("gen.cxw");
    QCOMPARE(p.size(), entries);
    QVERIFY(p[probe] == colour);
    QVERIFY(p[0] == PaletteOperations::apply(name, {}, {})[0]);
}

void TestCliOperations::select_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QByteArray>("expected");
    // The palette's length (6) is the last index with "Full palette", and is printed too.
    QTest::newRow("defaults") << QStringList{"@six.gpl"} << QByteArray("0\n1\n2\n3\n4\n5\n6\n");
    QTest::newRow("every other") << QStringList{"@six.gpl", "--set", "skip_number=1"}
                                 << QByteArray("0\n2\n4\n6\n");
    QTest::newRow("from a file") << QStringList{"@six.gpl", "--settings", "@pattern.txt"}
                                 << QByteArray("1\n2\n4\n");
    QTest::newRow("file, then --set")
        << QStringList{"@six.gpl", "--settings", "@pattern.txt", "--set", "end_index=9"}
        << QByteArray("1\n2\n4\n5\n7\n8\n");
    QTest::newRow("start beyond") << QStringList{"@in.cxw", "--set", "start_index=9"} << QByteArray();
}

void TestCliOperations::select()
{
    QFETCH(QStringList, args);
    QFETCH(QByteArray, expected);
    const CliRun r = runCli(QStringList{"palette", "select"} + inDir(args));
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    QCOMPARE(r.out, expected);
}

void TestCliOperations::failures_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("err"); // the first line of stderr
    const auto row = [](const char *tag, const QStringList &args, int code, const QString &err) {
        QTest::newRow(tag) << args << code << err;
    };

    row("unknown operation", {"apply", "tinted", "@in.cxw", "@out.cxw"}, 1,
        "Unknown operation: There is no palette operation named 'tinted'.");
    row("unknown generator from nothing", {"apply", "cosinus", "-", "@out.cxw"}, 1,
        "Unknown operation: There is no palette operation named 'cosinus'.");
    row("bad value", {"apply", "tint", "@in.cxw", "@out.cxw", "--set", "opacity=lots"}, 1,
        "Invalid settings: The value \"lots\" of \"opacity\" is not an integer.");
    row("bad colour in file",
        {"apply", "tint", "@in.cxw", "@out.cxw", "--settings", "@tint.txt", "--set", "color=#12"}, 1,
        "Invalid settings: The value \"#12\" of \"color\" is not a colour like #aa00ff.");
    row("another dialog's file", {"apply", "blur", "@in.cxw", "@out.cxw", "--settings", "@tint.txt"}, 1,
        "Invalid settings: These settings belong to \"tint\", not to \"blur\".");
    row("selection beyond the palette", {"apply", "tint", "@in.cxw", "@out.cxw", "--select", "2,6"}, 1,
        "Invalid selection: The selection names index 6, but the palette has 6 entries.");
    row("missing input", {"apply", "tint", "@none.cxw", "@out.cxw"}, 1, "");
    row("no input for a manipulation", {"apply", "tint", "-", "@out.cxw"}, 2, "");
    row("malformed selection", {"apply", "tint", "@in.cxw", "@out.cxw", "--select", "1-"}, 2, "");
    row("--set without value", {"apply", "tint", "@in.cxw", "@out.cxw", "--set", "opacity"}, 2, "");
    row("missing operand", {"apply", "tint", "@in.cxw"}, 2, "");
    row("not a parameterless generator", {"generate", "cosini", "@out.cxw"}, 2, "");
    row("size 0", {"generate", "palette_generate_grayscale", "@out.cxw", "--size", "0"}, 2, "");
    row("size not a number", {"generate", "palette_generate_grayscale", "@out.cxw", "--size", "many"}, 2, "");
    row("select with a bad value", {"select", "@in.cxw", "--set", "set_number=x"}, 1,
        "Invalid settings: The value \"x\" of \"set_number\" is not an integer.");
    row("select with another dialog's file", {"select", "@in.cxw", "--settings", "@tint.txt"}, 1,
        "Invalid settings: These settings belong to \"tint\", not to "
        "\"selectionpattern\".");
}

void TestCliOperations::failures()
{
    QFETCH(QStringList, args);
    QFETCH(int, code);
    QFETCH(QString, err);
    const CliRun r = runCli(QStringList{"palette"} + inDir(args));
    QCOMPARE(r.code, code);
    if (!err.isEmpty())
        QCOMPARE(r.err.section('\n', 0, 0), err);
    if (code == 2)
        QVERIFY2(r.err.contains("Usage: chromaxis-cli"), qPrintable(r.err));
    QVERIFY(r.out.isEmpty());
    QVERIFY(!QFile::exists(path("out.cxw")));
}

QTEST_GUILESS_MAIN(TestCliOperations)
#include "tst_cli_operations.moc"
