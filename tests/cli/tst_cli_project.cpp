#include "storage/numpyimage.h"
#include "storage/projectfile.h"

#include <QCryptographicHash>
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

QString sha256(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

QByteArray repeated(const QByteArray &unit, int n)
{
    QByteArray out;
    for (int i = 0; i < n; ++i)
        out += unit;
    return out;
}

QJsonObject jsonOf(const CliRun &r)
{
    return QJsonDocument::fromJson(r.out).object();
}

// A palette that no 8-bit palette file could carry: words above 65535 and odd low bytes.
Palette<uint> exactPalette()
{
    Palette<uint> p({{1, 258, 65535, 0xFFFE0001u}, {0x12345, 7, 0, 65534}});
    p.setProperty(PaletteName, "Exact");
    p.setProperty(PaletteFile, "exact");
    p.setProperty(PaletteComment, "kept word for word");
    return p;
}

} // namespace

class TestCliProject : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void createAndShow_data();
    void createAndShow();
    void showEverything();
    void paletteThroughProject();
    void imageFromProject();
    void failures_data();
    void failures();

private:
    QTemporaryDir m_dir;
    QString path(const QString &name) const { return m_dir.filePath(name); }
};

void TestCliProject::initTestCase()
{
    QVERIFY(writeImageFixtures(m_dir));
    QVERIFY(writeFile(path("duo.gpl"), duoGpl));
    QVERIFY(writeFile(path("bad.cxw"), "this is no project"));

    ProjectData exact;
    exact.palette = exactPalette();
    exact.paletteFileName = "/somewhere/exact.gpl";
    ProjectFile::write(path("exact.cxw"), exact);

    // Red and blue with an indexed 32-bit image and a continuous one between them.
    ProjectData indexed32;
    indexed32.palette = Palette<uint>({{65280, 0, 0, 65535}, {0, 0, 65280, 65535}});
    indexed32.image = DocumentImage::fromIndexes32(3, 1, {1, 0, 7});
    ProjectFile::write(path("i32.cxw"), indexed32);
    ProjectData continuous = indexed32;
    continuous.image = DocumentImage::fromContinuous(2, 1, {0.0f, 16384.0f}, true);
    ProjectFile::write(path("cont.cxw"), continuous);
}

void TestCliProject::createAndShow_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("paletteSize");
    QTest::addColumn<QString>("paletteFile");
    QTest::addColumn<QJsonValue>("image");
    QTest::addColumn<QJsonArray>("selection");
    const auto image = [&](int mode, int w, int h, const QString &file, const QByteArray &pixels) {
        return QJsonValue(QJsonObject{{"mode", mode},
                                      {"width", w},
                                      {"height", h},
                                      {"interpolate", false},
                                      {"fileName", path(file)},
                                      {"modified", false},
                                      {"pixelsSha256", sha256(pixels)}});
    };
    QTest::newRow("nothing: grayscale, no image")
        << QStringList{} << 256 << "" << QJsonValue(QJsonValue::Null) << QJsonArray{};
    QTest::newRow("palette and indexed image")
        << QStringList{"--palette", path("duo.gpl"), "--image", path("indexed.png"), "--select", "0,1"} << 2
        << path("duo.gpl") << image(2, 3, 2, "indexed.png", QByteArray("\0\1\2\2\1\0", 6))
        << QJsonArray{0, 1};
    QTest::newRow("rgb image, cells least significant byte first")
        << QStringList{"--image", path("rgb.png"), "--select", "3,250-252"} << 256 << ""
        << image(1, 4, 5, "rgb.png", repeated(QByteArray("\x1e\x14\x0a\xff"), 20))
        << QJsonArray{3, 250, 251, 252};
    // Opened alone, an indexed image brings its colour table; indexes past the palette are kept.
    QTest::newRow("indexed image in its own colours, selection past the end")
        << QStringList{"--image", path("indexed.png"), "--select", "1-3,9"} << 3 << ""
        << image(2, 3, 2, "indexed.png", QByteArray("\0\1\2\2\1\0", 6)) << QJsonArray{1, 2, 3, 9};
    // "Full palette" selects the index one past the end; such a project must be made and reopened.
    QTest::newRow("selection past the palette")
        << QStringList{"--palette", path("duo.gpl"), "--select", "0-2"} << 2 << path("duo.gpl")
        << QJsonValue(QJsonValue::Null) << QJsonArray{0, 1, 2};
    QTest::newRow("continuous image, float bits")
        << QStringList{"--image", path("cont.npy")} << 256 << ""
        << image(4, 2, 1, "cont.npy", QByteArray("\0\0\0\0\0\0\x80\x46", 8)) << QJsonArray{};
}

void TestCliProject::createAndShow()
{
    QFETCH(QStringList, options);
    QFETCH(int, paletteSize);
    QFETCH(QString, paletteFile);
    QFETCH(QJsonValue, image);
    QFETCH(QJsonArray, selection);
    const QString out = path("created.cxw");
    const CliRun create = runCli(QStringList{"project", "create", out} + options);
    QCOMPARE(create.err, QString());
    QCOMPARE(create.code, 0);
    QVERIFY(readFile(out).startsWith("\x1f\x8b"));

    const CliRun show = runCli({"project", "show", out});
    QCOMPARE(show.err, QString());
    QCOMPARE(show.code, 0);
    const QJsonObject json = jsonOf(show);
    QCOMPARE(json.keys(), QStringList({"dbIndex", "image", "palette", "selection", "version"}));
    QCOMPARE(json["version"].toString(), QString("2.0.0"));
    QCOMPARE(json["dbIndex"].toInt(-1), 0);
    const QJsonObject palette = json["palette"].toObject();
    QCOMPARE(palette["entries"].toArray().size(), paletteSize);
    QCOMPARE(palette["fileName"].toString(), paletteFile);
    QCOMPARE(palette["modified"], QJsonValue(false));
    QCOMPARE(palette["fixedSize"], QJsonValue(false));
    QCOMPARE(palette["fillColor"].toArray(), QJsonArray({0, 0, 0, 65535}));
    if (paletteSize == 2) {
        // Opened as the window opens it: the file name is recorded in the properties.
        QCOMPARE(palette["entries"].toArray(),
                 QJsonArray({QJsonArray{65280, 0, 0, 65535}, QJsonArray{0, 0, 65280, 65535}}));
        QCOMPARE(palette["properties"].toObject()["name"].toString(), QString("duo"));
        QCOMPARE(palette["properties"].toObject()["file"].toString(), QString("duo"));
    } else if (paletteSize == 3) {
        // The image's colour table, named after the image; it has no palette file.
        QCOMPARE(palette["entries"].toArray(), QJsonArray({QJsonArray{9 << 8, 9 << 8, 9 << 8, 65535},
                                                           QJsonArray{200 << 8, 100 << 8, 50 << 8, 65535},
                                                           QJsonArray{1 << 8, 2 << 8, 3 << 8, 65535}}));
        QCOMPARE(palette["properties"].toObject()["name"].toString(), QString("indexed"));
        QCOMPARE(palette["properties"].toObject()["file"].toString(), QString());
    } else {
        QCOMPARE(palette["entries"].toArray()[255].toArray(), QJsonArray({65280, 65280, 65280, 65535}));
    }
    QCOMPARE(json["image"], image);
    QCOMPARE(json["selection"].toArray(), selection);
}

// Every field that project show reports, from a project whose state the window could not get
// from files alone.
void TestCliProject::showEverything()
{
    ProjectData data;
    data.palette = exactPalette();
    data.paletteFileName = "/p/exact.gpl";
    data.paletteModified = true;
    data.fixedPaletteSize = true;
    data.fillColor = {0x1234, 0x5678, 0x9ABC, 65535};
    data.builtinIndex = 4000000000u;
    data.image = DocumentImage::fromIndexes8(2, 1, {5, 250});
    data.image.setInterpolate(true);
    data.imageFileName = "/p/pic.png";
    data.imageModified = true;
    data.selection = {1};
    ProjectFile::write(path("full.cxw"), data);

    const CliRun r = runCli({"project", "show", path("full.cxw")});
    QCOMPARE(r.code, 0);
    const QJsonObject json = jsonOf(r);
    QCOMPARE(json["dbIndex"].toDouble(), 4000000000.0);
    const QJsonObject palette = json["palette"].toObject();
    QCOMPARE(palette["entries"].toArray(),
             QJsonArray({QJsonArray{1, 258, 65535, 4294836225.0}, QJsonArray{0x12345, 7, 0, 65534}}));
    QCOMPARE(
        palette["properties"].toObject(),
        QJsonObject(
            {{"name", "Exact"}, {"file", "exact"}, {"comment", "kept word for word"}, {"file.ext", ""}}));
    QCOMPARE(palette["fileName"].toString(), QString("/p/exact.gpl"));
    QCOMPARE(palette["modified"], QJsonValue(true));
    QCOMPARE(palette["fixedSize"], QJsonValue(true));
    QCOMPARE(palette["fillColor"].toArray(), QJsonArray({0x1200, 0x5600, 0x9A00, 65535}));
    QCOMPARE(json["image"].toObject(), QJsonObject({{"mode", 2},
                                                    {"width", 2},
                                                    {"height", 1},
                                                    {"interpolate", true},
                                                    {"fileName", "/p/pic.png"},
                                                    {"modified", true},
                                                    {"pixelsSha256", sha256("\x05\xfa")}}));
    QCOMPARE(json["selection"].toArray(), QJsonArray{1});
}

void TestCliProject::paletteThroughProject()
{
    // A project keeps the exact words and properties, through show, convert and convert again.
    const CliRun show = runCli({"palette", "show", path("exact.cxw")});
    QCOMPARE(show.code, 0);
    const QJsonObject shown = jsonOf(show);
    QCOMPARE(shown["entries"].toArray(),
             QJsonArray({QJsonArray{1, 258, 65535, 4294836225.0}, QJsonArray{0x12345, 7, 0, 65534}}));
    QCOMPARE(shown["properties"].toObject()["comment"].toString(), QString("kept word for word"));

    QCOMPARE(runCli({"palette", "convert", path("exact.cxw"), path("copy.cxw")}).code, 0);
    const QJsonObject copy = jsonOf(runCli({"project", "show", path("copy.cxw")}));
    QCOMPARE(copy["palette"].toObject()["entries"], shown["entries"]);
    QCOMPARE(copy["palette"].toObject()["properties"], shown["properties"]);
    QCOMPARE(copy["palette"].toObject()["fileName"].toString(), QString("/somewhere/exact.gpl"));
    QCOMPARE(copy["image"], QJsonValue(QJsonValue::Null));

    // A palette file handed on through a project, and --to for a name without the extension.
    QCOMPARE(runCli({"palette", "convert", path("duo.gpl"), path("duo.cxw")}).code, 0);
    QCOMPARE(runCli({"palette", "convert", path("duo.gpl"), path("duo.project"), "--to", "cxw"}).code, 0);
    for (const char *name : {"duo.cxw", "duo.project"}) {
        const QJsonObject project = jsonOf(runCli({"project", "show", path(name)}));
        QCOMPARE(project["palette"].toObject()["fileName"].toString(), path("duo.gpl"));
        QCOMPARE(project["image"], QJsonValue(QJsonValue::Null));
        QCOMPARE(project["selection"].toArray(), QJsonArray{});
    }
    QCOMPARE(runCli({"palette", "convert", path("duo.gpl"), path("direct.gpl")}).code, 0);
    QCOMPARE(runCli({"palette", "convert", path("duo.cxw"), path("back.gpl")}).code, 0);
    QCOMPARE(readFile(path("back.gpl")), readFile(path("direct.gpl")));
    QCOMPARE(runCli({"palette", "convert", path("duo.project"), path("back2.gpl"), "--from", "cxw"}).code, 0);
    QCOMPARE(readFile(path("back2.gpl")), readFile(path("direct.gpl")));

    // The text encoder reads a project's palette as well.
    const CliRun text = runCli({"palette", "text", path("exact.cxw"), "-"});
    QCOMPARE(text.code, 0);
    QCOMPARE(text.out, runCli({"palette", "text", path("copy.cxw"), "-"}).out);
    QVERIFY(!text.out.isEmpty());
}

void TestCliProject::imageFromProject()
{
    const CliRun show = runCli({"image", "show", path("i32.cxw")});
    QCOMPARE(show.err, QString());
    const QJsonObject json = jsonOf(show);
    QCOMPARE(json["mode"].toInt(), 3);
    QCOMPARE(json["width"].toInt(), 3);
    QCOMPARE(json["palette"].toArray(),
             QJsonArray({QJsonArray{65280, 0, 0, 65535}, QJsonArray{0, 0, 65280, 65535}}));

    // Through the project's own palette; index 7 is past it and shows the last colour.
    QCOMPARE(runCli({"image", "render", path("i32.cxw"), path("i32.png")}).code, 0);
    QImage out(path("i32.png"));
    QCOMPARE(out.size(), QSize(3, 1));
    QCOMPARE(out.pixel(0, 0), qRgb(0, 0, 255));
    QCOMPARE(out.pixel(1, 0), qRgb(255, 0, 0));
    QCOMPARE(out.pixel(2, 0), qRgb(0, 0, 255));

    // A project as the palette of another image.
    QCOMPARE(
        runCli({"image", "render", path("indexed.png"), path("ix.png"), "--palette", path("i32.cxw")}).code,
        0);
    out = QImage(path("ix.png"));
    QCOMPARE(out.pixel(0, 0), qRgb(255, 0, 0));
    QCOMPARE(out.pixel(1, 0), qRgb(0, 0, 255));

    // The stored interpolation flag counts unless --interpolate overrides it.
    QCOMPARE(jsonOf(runCli({"image", "show", path("cont.cxw")})).value("interpolate"), QJsonValue(true));
    QCOMPARE(runCli({"image", "render", path("cont.cxw"), path("c1.png")}).code, 0);
    QCOMPARE(runCli({"image", "render", path("cont.cxw"), path("c0.png"), "--interpolate", "0"}).code, 0);
    QCOMPARE(runCli({"image", "render", path("cont.npy"), path("n1.png"), "--palette", path("duo.gpl"),
                     "--interpolate", "1"})
                 .code,
             0);
    QCOMPARE(QImage(path("c0.png")).pixel(1, 0), qRgb(255, 0, 0));
    QCOMPARE(QImage(path("c1.png")).pixel(1, 0), QImage(path("n1.png")).pixel(1, 0));
    QVERIFY(QImage(path("c1.png")).pixel(1, 0) != qRgb(255, 0, 0));
}

void TestCliProject::failures_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("err");
    const QString bad =
        "Could not load: Cannot load project %1.\nThe file does not match the format.\nExpected "
        "'Chromaxis'.\n";
    QTest::newRow("project show") << QStringList{"project", "show", "@bad.cxw"} << 1 << bad.arg("bad.cxw");
    QTest::newRow("project show missing")
        << QStringList{"project", "show", "@none.cxw"} << 1 << bad.arg("none.cxw");
    QTest::newRow("palette show") << QStringList{"palette", "show", "@bad.cxw"} << 1 << bad.arg("bad.cxw");
    QTest::newRow("palette show upper case")
        << QStringList{"palette", "show", "@BAD.CXW"} << 1 << bad.arg("BAD.CXW");
    QTest::newRow("palette show --from cxw")
        << QStringList{"palette", "show", "@duo.gpl", "--from", "cxw"} << 1 << bad.arg("duo.gpl");
    QTest::newRow("palette convert from")
        << QStringList{"palette", "convert", "@bad.cxw", "@x.gpl"} << 1 << bad.arg("bad.cxw");
    QTest::newRow("palette convert into")
        << QStringList{"palette", "convert", "@bad.cxw", "@x.cxw"} << 1 << bad.arg("bad.cxw");
    QTest::newRow("palette text") << QStringList{"palette", "text", "@bad.cxw", "-"} << 1
                                  << bad.arg("bad.cxw");
    QTest::newRow("image show") << QStringList{"image", "show", "@bad.cxw"} << 1 << bad.arg("bad.cxw");
    QTest::newRow("image render") << QStringList{"image", "render", "@bad.cxw", "@x.png"} << 1
                                  << bad.arg("bad.cxw");
    QTest::newRow("image render --palette")
        << QStringList{"image", "render", "@indexed.png", "@x.png", "--palette", "@bad.cxw"} << 1
        << bad.arg("bad.cxw");
    QTest::newRow("create from a bad palette")
        << QStringList{"project", "create", "@x.cxw", "--palette", "@bad.cxw"} << 1 << bad.arg("bad.cxw");
    QTest::newRow("create from a bad image")
        << QStringList{"project", "create", "@x.cxw", "--image", "@bad.cxw"} << 1 << bad.arg("bad.cxw");
    QTest::newRow("truncated project")
        << QStringList{"project", "show", "@cut.cxw"} << 1
        << "Could not load: Cannot load project cut.cxw.\nThe file does not match the "
           "format.\nExpected 'image'.\n";
    QTest::newRow("image of a palette-only project") << QStringList{"image", "show", "@exact.cxw"} << 1
                                                     << "No image: The project exact.cxw holds no image.\n";
    QTest::newRow("selection larger than a selection holds")
        << QStringList{"project", "create", "@x.cxw", "--select", "0-1048576"} << 1
        << "Invalid selection: The selection '0-1048576' names 1048577 indexes; a selection holds at most "
           "1048576.\n";
    QTest::newRow("unwritable output")
        << QStringList{"project", "create", "@no/dir/x.cxw"} << 1
        << "Could not save: Cannot save project x.cxw.\nCould not open the file for "
           "writing.\nNo such file or directory\n";
    QTest::newRow("create needs .cxw") << QStringList{"project", "create", "@x.gpl"} << 2 << "";
    QTest::newRow("malformed selection")
        << QStringList{"project", "create", "@x.cxw", "--select", "3-1"} << 2 << "";
    QTest::newRow("show takes one file") << QStringList{"project", "show"} << 2 << "";
    QTest::newRow("no export options for projects")
        << QStringList{"palette", "convert", "@duo.gpl", "@x.cxw", "--option", "columns=3"} << 2 << "";
}

void TestCliProject::failures()
{
    QFETCH(QStringList, args);
    QFETCH(int, code);
    QFETCH(QString, err);
    QVERIFY(writeFile(path("BAD.CXW"), "NO PROJECT"));
    const QByteArray full = readFile(path("exact.cxw"));
    QVERIFY(writeFile(path("cut.cxw"), ProjectFile::gunzip(full, "x").left(60)));
    const CliRun r = runCli(inFolder(args, m_dir));
    QCOMPARE(r.code, code);
    if (!err.isEmpty())
        QCOMPARE(r.err, err);
    else
        QVERIFY(r.err.contains("Usage: chromaxis-cli"));
    QVERIFY(r.out.isEmpty());
    // Nothing partial is left behind.
    for (const char *name : {"x.cxw", "x.gpl", "x.png"})
        QVERIFY2(!QFile::exists(path(name)), name);
}

QTEST_GUILESS_MAIN(TestCliProject)
#include "tst_cli_project.moc"
