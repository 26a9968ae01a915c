// "Batch convert palettes...": many palette files to one format in a folder, one report of the
// failures, progress and cancelling, and the files a run must never destroy.
#include "conversion/palettebatchconvert.h"
#include "formats/paletteformats.h"
#include "palette/describedexception.h"
#include "storage/projectfile.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

namespace {

Palette<uint> paletteOf(std::initializer_list<uint> bytes)
{
    Palette<uint> p;
    const std::vector<uint> v(bytes);
    for (size_t i = 0; i + 2 < v.size(); i += 3)
        p.append({v[i] << 8, v[i + 1] << 8, v[i + 2] << 8, 65535});
    return p;
}

QByteArray bytesOf(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<unreadable>");
}

bool writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

// The 8-bit colours of a palette, which every format keeps.
QList<QRgb> rgbOf(const Palette<uint> &p)
{
    QList<QRgb> out;
    for (const auto &c : p.entries())
        out << qRgb(int(c.r >> 8), int(c.g >> 8), int(c.b >> 8));
    return out;
}

QFileInfoList infos(const QString &folder, const QStringList &names)
{
    QFileInfoList out;
    for (const QString &name : names)
        out << QFileInfo(QDir(folder).filePath(name));
    return out;
}

} // namespace

class TestPaletteBatchConvert : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void convertsEveryFileAndReportsTheBadOnes_data();
    void convertsEveryFileAndReportsTheBadOnes();
    void targets_data();
    void targets();
    void neverDestroysItsOwnFiles();
    void progressAndCancel();
    void refusals();

private:
    QString in(const QString &name) const { return m_dir->filePath("in/" + name); }
    QString out(const QString &name) const { return m_dir->filePath("out/" + name); }
    std::unique_ptr<QTemporaryDir> m_dir;
    Palette<uint> m_warm = paletteOf({255, 0, 0, 250, 128, 10, 200, 200, 40});
    Palette<uint> m_cool = paletteOf({0, 0, 255, 10, 128, 250});
    Palette<uint> m_grey = paletteOf({0, 0, 0, 128, 128, 128, 255, 255, 255, 60, 60, 60});
};

void TestPaletteBatchConvert::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_dir->path()).mkpath("in"));
    exportPalette(in("warm.gpl"), m_warm, FormatGimp);
    exportPalette(in("cool.aco"), m_cool, FormatPhotoshop);
    ProjectData project;
    project.palette = m_grey;
    ProjectFile::write(in("grey.cxw"), project);
    QVERIFY(writeBytes(in("broken.gpl"), "this is no palette\n"));
    QVERIFY(writeBytes(in("notes.xyz"), "1 2 3\n"));
}

void TestPaletteBatchConvert::convertsEveryFileAndReportsTheBadOnes_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("extension");
    QTest::newRow("jasc") << "jasc" << int(FormatJasc) << ".jasc";
    QTest::newRow("gimp by name") << "gimp" << int(FormatGimp) << ".gpl";
    QTest::newRow("color table") << "act" << int(FormatAct) << ".act";
    QTest::newRow("fractint") << "map" << int(FormatFractint) << ".map";
    QTest::newRow("hex lines") << "hextxt" << int(FormatHexLines) << ".hextxt";
    QTest::newRow("project") << "cxw" << int(FormatUnknown) << ".cxw";
}

void TestPaletteBatchConvert::convertsEveryFileAndReportsTheBadOnes()
{
    QFETCH(QString, target);
    QFETCH(int, format);
    QFETCH(QString, extension);
    const PaletteBatchConvert batch(m_dir->filePath("out"), target);
    QCOMPARE(batch.extension(), extension);
    const QFileInfoList files = infos(m_dir->filePath("in"), {"warm.gpl", "broken.gpl", "cool.aco",
                                                              "notes.xyz", "missing.gpl", "grey.cxw"});
    const PaletteBatchConvert::Report report = batch.run(files);

    QCOMPARE(report.total, 6);
    QCOMPARE(report.written, 3);
    QVERIFY(!report.cancelled);
    QVERIFY(!report.complete());
    QCOMPARE(report.failures.size(), 3);
    QVERIFY2(report.failures[0].startsWith("broken.gpl: "), qPrintable(report.failures[0]));
    QCOMPARE(report.failures[1],
             QString("notes.xyz: Unable to load palette notes.xyz. Unrecognized format."));
    QVERIFY2(report.failures[2].startsWith("missing.gpl: Could not open file"),
             qPrintable(report.failures[2]));
    for (const QString &line : report.failures)
        QVERIFY(!line.contains('\n'));
    QCOMPARE(report.text("F"),
             "3 of 6 palettes were written to F.\n\nThese palettes failed:\n" + report.failures.join('\n'));
    QCOMPARE(QDir(m_dir->filePath("out")).entryList(QDir::Files),
             QStringList({"cool" + extension, "grey" + extension, "warm" + extension}));

    const struct
    {
        const char *source;
        const Palette<uint> &colours;
    } written[] = {{"warm.gpl", m_warm}, {"cool.aco", m_cool}, {"grey.cxw", m_grey}};
    for (const auto &w : written) {
        const QString result = batch.targetOf(QFileInfo(in(w.source)));
        QCOMPARE(result, out(QFileInfo(w.source).completeBaseName() + extension));
        if (format == FormatUnknown) {
            // A project keeps every word of the palette.
            QCOMPARE(ProjectFile::read(result).palette.entries(), w.colours.entries());
            continue;
        }
        Palette<uint> back;
        importPalette(result, back, format);
        QCOMPARE(rgbOf(back), rgbOf(w.colours));
        // Byte for byte what opening the file and "Save palette as..." write.
        if (QString(w.source).endsWith(".cxw"))
            continue;
        const QString reference = m_dir->filePath("reference");
        exportPalette(reference, openPaletteFile(in(w.source)), format);
        QCOMPARE(bytesOf(result), bytesOf(reference));
    }
}

void TestPaletteBatchConvert::targets_data()
{
    QTest::addColumn<QString>("extension");
    for (const QString &e : PaletteBatchConvert::targetExtensions())
        QTest::newRow(qPrintable(e)) << e;
}

void TestPaletteBatchConvert::targets()
{
    // Every extension offered is a target, and a file with it opens in the format it was written in.
    QFETCH(QString, extension);
    const PaletteBatchConvert batch(m_dir->filePath("out"), extension);
    QCOMPARE(batch.extension(), "." + extension);
    if (extension != "cxw") {
        const int format = formatFromWord(extension);
        QVERIFY(format != FormatUnknown);
        QCOMPARE(extensionOfFormat(format), extension);
    }
    QCOMPARE(PaletteBatchConvert::targetExtensions().count(extension), 1);
    QCOMPARE(batch.run(infos(m_dir->filePath("in"), {"warm.gpl"})).written, 1);
    if (extension == "html" || extension == "css" || extension == "js")
        return; // written only
    if (extension == "cxw")
        QCOMPARE(ProjectFile::read(out("warm.cxw")).palette.entries(), m_warm.entries());
    else
        QCOMPARE(rgbOf(openPaletteFile(out("warm." + extension))), rgbOf(m_warm));
}

void TestPaletteBatchConvert::neverDestroysItsOwnFiles()
{
    // Converting a folder into itself: p.gpl would become p.jasc, which is another file of the
    // batch, and p.jasc would become itself.
    exportPalette(in("p.gpl"), m_warm, FormatGimp);
    exportPalette(in("p.jasc"), m_cool, FormatJasc);
    const QByteArray jascBefore = bytesOf(in("p.jasc"));
    const PaletteBatchConvert intoItself(m_dir->filePath("in"), "jasc");
    const QFileInfoList pair = infos(m_dir->filePath("in"), {"p.gpl", "p.jasc"});
    QCOMPARE(intoItself.existingTargets(pair), 2);
    const PaletteBatchConvert::Report own = intoItself.run(pair);
    QCOMPARE(own.written, 0);
    QCOMPARE(own.failures, QStringList({"p.gpl: The result would replace p.jasc, a palette of this batch.",
                                        "p.jasc: The result would replace the palette itself."}));
    QCOMPARE(bytesOf(in("p.jasc")), jascBefore);

    // Two sources of one name in different folders: the first result stays.
    QVERIFY(QDir(m_dir->path()).mkpath("other"));
    exportPalette(m_dir->filePath("other/warm.aco"), m_cool, FormatPhotoshop);
    const PaletteBatchConvert batch(m_dir->filePath("out"), "act");
    const PaletteBatchConvert::Report report =
        batch.run({QFileInfo(in("warm.gpl")), QFileInfo(m_dir->filePath("other/warm.aco"))});
    QCOMPARE(report.written, 1);
    QCOMPARE(report.failures,
             QStringList({"warm.aco: warm.act was already written from another palette of this batch."}));
    QCOMPARE(rgbOf(openPaletteFile(out("warm.act"))), rgbOf(m_warm));

    // A result that cannot be written leaves what is in its place and the others go on.
    QVERIFY(QDir(m_dir->path()).mkpath("out/cool.act"));
    const PaletteBatchConvert::Report blocked =
        batch.run(infos(m_dir->filePath("in"), {"cool.aco", "grey.cxw"}));
    QCOMPARE(blocked.written, 1);
    QCOMPARE(blocked.failures.size(), 1);
    QVERIFY2(blocked.failures[0].startsWith("cool.aco: The destination file '"),
             qPrintable(blocked.failures[0]));
    QVERIFY(QFileInfo(out("cool.act")).isDir());
    QCOMPARE(rgbOf(openPaletteFile(out("grey.act"))), rgbOf(m_grey));
}

void TestPaletteBatchConvert::progressAndCancel()
{
    const QFileInfoList files =
        infos(m_dir->filePath("in"), {"warm.gpl", "cool.aco", "grey.cxw", "broken.gpl"});
    QStringList calls;
    auto recorder = [&](int stopAt) {
        return [&calls, stopAt](int index, int count, const QString &name) {
            calls << QStringLiteral("%1/%2 %3").arg(index).arg(count).arg(name);
            return index != stopAt;
        };
    };
    const PaletteBatchConvert batch(m_dir->filePath("out"), "gpl");
    const PaletteBatchConvert::Report whole = batch.run(files, recorder(-1));
    QCOMPARE(calls, QStringList({"0/4 warm.gpl", "1/4 cool.aco", "2/4 grey.cxw", "3/4 broken.gpl"}));
    QCOMPARE(whole.written, 3);
    QVERIFY(!whole.cancelled);

    QDir(m_dir->filePath("out")).removeRecursively();
    calls.clear();
    const PaletteBatchConvert::Report stopped = batch.run(files, recorder(2));
    QCOMPARE(calls, QStringList({"0/4 warm.gpl", "1/4 cool.aco", "2/4 grey.cxw"}));
    QVERIFY(stopped.cancelled);
    QVERIFY(!stopped.complete());
    QCOMPARE(stopped.written, 2);
    QVERIFY(stopped.failures.isEmpty());
    QCOMPARE(QDir(m_dir->filePath("out")).entryList(QDir::Files), QStringList({"cool.gpl", "warm.gpl"}));
    QCOMPARE(stopped.text("F"), QString("2 of 4 palettes were written to F.\nThe run was cancelled."));
}

void TestPaletteBatchConvert::refusals()
{
    try {
        PaletteBatchConvert(m_dir->filePath("out"), "bmp");
        QFAIL("an image format became a palette target");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), QString("Batch convert palettes"));
        QCOMPARE(e.message(), QString("'bmp' is not a palette format."));
    }
    // A folder below a plain file cannot be made; nothing is read or written.
    const QString blocked = m_dir->filePath("in/warm.gpl/sub");
    try {
        PaletteBatchConvert(blocked, "jasc").run(infos(m_dir->filePath("in"), {"cool.aco"}));
        QFAIL("ran without a destination folder");
    } catch (const DescribedException &e) {
        QCOMPARE(e.message(), QString("Could not create the destination folder '%1'.").arg(blocked));
    }
    QVERIFY(!QFile::exists(in("cool.jasc")));
    // An empty run is complete and writes nothing.
    const PaletteBatchConvert::Report none = PaletteBatchConvert(m_dir->filePath("out"), "jasc").run({});
    QVERIFY(none.complete());
    QCOMPARE(none.total, 0);
}

QTEST_GUILESS_MAIN(TestPaletteBatchConvert)
#include "tst_palettebatchconvert.moc"
