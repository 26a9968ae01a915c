// Bad input and failures of the palette readers and writers: every message, and what is kept.

#include "formats/exportoptions.h"
#include "formats/paletteformats.h"
#include "paletteformattesting.h"
#include "refusal.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>
#include <map>
#include <unistd.h>

using namespace PaletteFormatTesting;

namespace {

// Collects what is written to file descriptor 2 while it lives.
class StderrCapture
{
public:
    explicit StderrCapture(const QString &path) : m_path(path)
    {
        std::fflush(stderr);
        m_saved = dup(2);
        FILE *f = std::fopen(path.toLocal8Bit().constData(), "w");
        dup2(fileno(f), 2);
        std::fclose(f);
    }
    ~StderrCapture() { finish(); }
    QByteArray finish()
    {
        if (m_saved >= 0) {
            std::fflush(stderr);
            dup2(m_saved, 2);
            close(m_saved);
            m_saved = -1;
        }
        return readAll(m_path);
    }

private:
    QString m_path;
    int m_saved = -1;
};

const QString gimpTitle = "Error on parsing GIMP palette";
const QString acoTitle = "Error on parsing Photoshop palette";
const QString mapTitle = "Error on parsing Fractint palette";
const QString riffTitle = "Error on parsing Microsoft palette";
const QString gifTitle = "Error on parsing GIF image";
const QString hexTitle = "Error on parsing HexText palette";
const QString jascTitle = "Error on parsing JASC palette";
const QString aseTitle = "Error on parsing ASE palette";
const QString actTitle = "Error on parsing ACT palette";
const QString truncated = "Unexpected end of file in\n'PATH'.";

QByteArray riff(const char *magic, quint32 chunk, const QByteArray &rest)
{
    QByteArray b = QByteArray("RIFF") + QByteArray::fromHex("00000000") + magic;
    b += QByteArray::fromHex("64617461"); // "data"
    for (int i = 0; i < 4; ++i)
        b += char((chunk >> (8 * i)) & 0xFF);
    return b + rest;
}

QByteArray aseBlock(const char *typeHex, const QByteArray &body)
{
    QByteArray b = QByteArray::fromHex(typeHex);
    for (int i = 3; i >= 0; --i)
        b += char((body.size() >> (8 * i)) & 0xFF);
    return b + body;
}

const QByteArray aseHead = QByteArray("ASEF") + QByteArray::fromHex("00010000");
const QByteArray aseRgb = QByteArray::fromHex("0000") + "RGB " +
                          QByteArray::fromHex("3f8000000000000000000000"
                                              "0002");

// Runs an import that must fail and checks title, message and the colours kept from before the failure.
void expectImportFailure(const QString &file, int format, const QString &title, const QString &message,
                         int kept)
{
    Palette<uint> p;
    QCOMPARE(refusal([&] { importPalette(file, p, format); }), title + ": " + QString(message).replace("PATH", file));
    QCOMPARE(p.size(), kept);
}
} // namespace

class TestPaletteFormatErrors : public QObject
{
    Q_OBJECT
private slots:
    void init() { QVERIFY(m_dir.isValid()); }

    void readerErrors_data();
    void readerErrors();
    void openFailure_data();
    void openFailure();
    void formatNumberErrors_data();
    void formatNumberErrors();
    void textReaders_data();
    void textReaders();
    void failedExportKeepsFile_data();
    void failedExportKeepsFile();

private:
    QString path(const QString &name) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
};

void TestPaletteFormatErrors::readerErrors_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("kept");
    // Each reader says which format it failed to read.
    const std::map<int, QString> titles{{1, gimpTitle}, {2, acoTitle}, {3, mapTitle},  {4, riffTitle},
                                        {5, gifTitle},  {9, hexTitle}, {10, hexTitle}, {11, jascTitle},
                                        {12, aseTitle}, {13, actTitle}};
    const auto row = [&](const char *tag, int format, const QByteArray &content, const QString &message,
                         int kept) {
        QTest::newRow(tag) << format << content << titles.at(format) << message << kept;
    };
    const QString gimpHeader = "Found mismatching header '%1' in\n'PATH'.";
    const QString broken = "Broken entry (missing components) found in\n'PATH'.";
    const QString invalid = "Invalid number found in\n'PATH'.";
    row("gimp lower-case header", 1, QByteArray("gimp palette\n0 0 0\n"), gimpHeader.arg("gimp palette"), 0);
    row("gimp empty file", 1, QByteArray(), gimpHeader.arg(""), 0);
    row("gimp short header", 1, QByteArray("GIMP Pal\n"), gimpHeader.arg("GIMP Pal"), 0);
    row("gimp two numbers", 1, QByteArray("GIMP Palette\n1 2 3\n4 5\n"), broken, 1);
    row("gimp indented name line", 1, QByteArray("GIMP Palette\n Name: x\n"), broken, 0);
    row("gimp hex number", 1, QByteArray("GIMP Palette\n0x10 2 3\n"), invalid, 0);
    row("gimp decimal point", 1, QByteArray("GIMP Palette\n1.5 2 3\n"), invalid, 0);
    row("gimp sign alone", 1, QByteArray("GIMP Palette\n+ 2 3\n"), invalid, 0);
    row("gimp double sign", 1, QByteArray("GIMP Palette\n--1 2 3\n"), invalid, 0);
    row("gimp stops at the bad line", 1, QByteArray("GIMP Palette\n1 2 3\n4 x 6\n7 8 9\n"), invalid, 1);

    row("aco no count", 2, QByteArray::fromHex("000100"), truncated, 0);
    row("aco count beyond data", 2,
        QByteArray::fromHex("00010003"
                            "00000001000200030000"),
        truncated, 1);
    row("aco huge count, no entries", 2, QByteArray::fromHex("0001ffff"), truncated, 0);
    row("aco CMYK entry", 2,
        QByteArray::fromHex("00010002"
                            "00000001000200030000"
                            "00020001000200030000"),
        "Palette file\n'PATH'\nuses an unsupported encoding.\nOnly RGB-palettes are supported.", 1);
    row("aco v2 name cut short", 2,
        QByteArray::fromHex("00020001"
                            "00000001000200030000"
                            "000000050041"),
        truncated, 1);

    const QString notNumeric = "A component in a RGB-triplet is not numeric in\n'PATH'.";
    row("map word", 3, QByteArray("1 2 three\n"), notNumeric, 0);
    row("map decimal point", 3, QByteArray("1 2 3\n4 5 6.0 # c\n"), notNumeric, 1);

    const QByteArray v300 = QByteArray::fromHex("0003");
    row("riff header", 4, QByteArray("RIFX0000PAL data"), "False header in \n'PATH'.", 0);
    row("riff empty", 4, QByteArray(), "False header in \n'PATH'.", 0);
    row("riff no size", 4, QByteArray("RIFF"), truncated, 0);
    row("riff short form type", 4, QByteArray("RIFF\0\0\0\0PAL", 11),
        "First entry is not a palette in \n'PATH'.", 0);
    row("riff wave", 4, riff("WAVE", 4, v300 + QByteArray(2, 0)), "First entry is not a palette in \n'PATH'.",
        0);
    row("riff data chunk", 4, QByteArray("RIFF\0\0\0\0PAL date", 16), "False data chunk in \n'PATH'.", 0);
    row("riff version", 4, riff("PAL ", 4, QByteArray::fromHex("01030000")),
        "Unsupported palette version in \n'PATH'.", 0);
    row("riff length", 4, riff("PAL ", 8, v300 + QByteArray::fromHex("0200") + QByteArray(8, 1)),
        "Mismatching length in \n'PATH'.", 0);
    row("riff entries cut short", 4, riff("PAL ", 16, v300 + QByteArray::fromHex("0300") + QByteArray(9, 1)),
        truncated, 2);
    row("riff huge count, no entries", 4, riff("PAL ", 262144, v300 + QByteArray::fromHex("ffff")), truncated,
        0);

    const QString unreadable = "Could not read file\n'PATH'.";
    row("gif garbage", 5, QByteArray("GIF89a\x10\0\x10\0garbage", 17), unreadable, 0);
    row("gif empty", 5, QByteArray(), unreadable, 0);
    row("gif text", 5, QByteArray("not a gif\n"), unreadable, 0);
    row("gif giant screen", 5,
        QByteArray::fromHex("474946383961ffffffff800000ff000000ff002c000000000100010000020144003b"),
        unreadable, 0);

    const QString threeByte = "An entry that does not have a three-byte entry occured in\n'PATH'.";
    const QString notHex = "A component in a RGB-triplet is not hexadecimal in\n'PATH'.";
    row("hextxt short", 9, QByteArray("ff00\n"), threeByte, 0);
    row("hextxt empty line", 9, QByteArray("ff0000\n\nff0000\n"), threeByte, 1);
    row("hextxt leading hash", 9, QByteArray("#ff0000\n"), threeByte, 0);
    row("hextxt long", 9, QByteArray("ff0000ff\n"), threeByte, 0);
    row("hextxt punctuation", 9, QByteArray("ff00g!\n"), notHex, 0);
    row("hextxt inner blank", 9, QByteArray("ff 000\n"), notHex, 0);
    row("hex short last group", 10, QByteArray("ff0000ff00\n"), notHex, 1);
    row("hex inner blank", 10, QByteArray("ff0000 00ff00\n"), notHex, 1);
    row("hex hash", 10, QByteArray("#ff0000\n"), notHex, 0);

    row("jasc header", 11, QByteArray("JASC-PAK\r\n0100\r\n0\r\n"),
        "Found mismatching header 'JASC-PAK' in\n'PATH'.", 0);
    row("jasc version", 11, QByteArray("JASC-PAL\r\n0200\r\n0\r\n"),
        "Unsupported JASC palette version '0200' in\n'PATH'.", 0);
    row("jasc count", 11, QByteArray("JASC-PAL\n0100\nx\n"), "Invalid color count 'x' in\n'PATH'.", 0);
    row("jasc negative count", 11, QByteArray("JASC-PAL\n0100\n-1\n"), "Invalid color count '-1' in\n'PATH'.",
        0);
    row("jasc missing count", 11, QByteArray("JASC-PAL\n0100\n"), "Invalid color count '' in\n'PATH'.", 0);
    row("jasc too few entries", 11, QByteArray("JASC-PAL\n0100\n3\n1 2 3\n4 5 6\n"),
        "The color count 3 is larger than the number of entries in\n'PATH'.", 2);
    row("jasc huge count", 11, QByteArray("JASC-PAL\n0100\n999999999\n1 2 3\n"),
        "The color count 999999999 is larger than the number of entries in\n'PATH'.", 1);
    row("jasc two numbers", 11, QByteArray("JASC-PAL\n0100\n1\n1 2\n"), broken, 0);
    row("jasc word", 11, QByteArray("JASC-PAL\n0100\n1\n1 2 x\n"), invalid, 0);

    row("ase header", 12, QByteArray("ASEX\0\1\0\0\0\0\0\0", 12), "False header in\n'PATH'.", 0);
    row("ase version", 12, QByteArray("ASEF\0\2\0\0\0\0\0\0", 12), "Unsupported version 2.0 in\n'PATH'.", 0);
    row("ase huge block count", 12, aseHead + QByteArray::fromHex("ffffffff"), truncated, 0);
    row("ase block past the end", 12,
        aseHead +
            QByteArray::fromHex("00000001"
                                "0001ffffff00") +
            aseRgb,
        truncated, 0);
    row("ase lab swatch", 12,
        aseHead + QByteArray::fromHex("00000002") + aseBlock("0001", aseRgb) +
            aseBlock("0001", QByteArray::fromHex("0000") + "LAB " + QByteArray(14, 0)),
        "Palette file\n'PATH'\nuses the color model 'LAB '.\nOnly RGB, CMYK and gray "
        "swatches are supported.",
        1);
    row("ase floats beyond block", 12,
        aseHead + QByteArray::fromHex("00000001") + aseBlock("0001", aseRgb.left(10)), truncated, 0);
    row("ase name beyond block", 12,
        aseHead + QByteArray::fromHex("00000001") + aseBlock("0001", QByteArray::fromHex("7fff0041")),
        truncated, 0);

    row("act 767 bytes", 13, QByteArray(767, 1),
        "Palette file\n'PATH'\nhas 767 bytes; a color table has 768 or 772.", 0);
    row("act empty", 13, QByteArray(), "Palette file\n'PATH'\nhas 0 bytes; a color table has 768 or 772.", 0);
    row("act count 257", 13, QByteArray(768, 1) + QByteArray::fromHex("0101ffff"),
        "Palette file\n'PATH'\nclaims 257 colors; a color table holds at most 256.", 0);
}

void TestPaletteFormatErrors::readerErrors()
{
    QFETCH(int, format);
    QFETCH(QByteArray, content);
    QFETCH(QString, title);
    QFETCH(QString, message);
    QFETCH(int, kept);
    const QString file = path(QString("bad-%1").arg(QTest::currentDataTag()).replace(' ', '_'));
    writeAll(file, content);
    expectImportFailure(file, format, title, message, kept);
}

void TestPaletteFormatErrors::openFailure_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<bool>("directory");
    QTest::addColumn<QString>("title");
    const QString titles[] = {gimpTitle, acoTitle, mapTitle, acoTitle /* sic: the RIFF reader */, gifTitle};
    for (int format = 1; format <= 5; ++format)
        QTest::addRow("format %d", format) << format << false << titles[format - 1];
    QTest::newRow("hextxt") << 9 << false << hexTitle;
    QTest::newRow("hex") << 10 << false << hexTitle;
    QTest::newRow("jasc") << 11 << false << jascTitle;
    QTest::newRow("ase") << 12 << false << aseTitle;
    QTest::newRow("act") << 13 << false << actTitle;
    QTest::newRow("a directory") << 1 << true << gimpTitle;
}

void TestPaletteFormatErrors::openFailure()
{
    QFETCH(int, format);
    QFETCH(bool, directory);
    QFETCH(QString, title);
    const QString file = directory ? m_dir.path() : path("missing.file");
    expectImportFailure(file, format, title, "Could not open file\n'PATH'.", 0);
}

void TestPaletteFormatErrors::formatNumberErrors_data()
{
    QTest::addColumn<bool>("import");
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("message");
    const QString notKnown = "The format to import from is not known or supported.";
    const QString eitherNot = "The format to import from is either not known or not supported.";
    const QString notReadable = "Reading this format is not supported.";
    const QString noExport = "The format to export into is not known or supported.";
    QTest::newRow("import 0") << true << 0 << notKnown;
    QTest::newRow("import html") << true << 6 << notReadable;
    QTest::newRow("import css") << true << 7 << notReadable;
    QTest::newRow("import js") << true << 8 << notReadable;
    QTest::newRow("import past the last") << true << int(FormatLast) + 1 << eitherNot;
    QTest::newRow("import 100") << true << 100 << eitherNot;
    QTest::newRow("import -1") << true << -1 << eitherNot;
    QTest::newRow("export 0") << false << 0 << noExport;
    QTest::newRow("export past the last") << false << int(FormatLast) + 1 << noExport;
    QTest::newRow("export -1") << false << -1 << noExport;
}

void TestPaletteFormatErrors::formatNumberErrors()
{
    QFETCH(bool, import);
    QFETCH(int, format);
    QFETCH(QString, message);
    if (import) {
        // The file is a good GIMP palette: the format number alone must fail, before any reading.
        expectImportFailure(fixture("gimp.gpl"), format, "Error on palette import", message, 0);
        return;
    }
    const QString file = path("never.out");
    QCOMPARE(refusal([&] { exportPalette(file, awkwardPalette(), format); }), "Error on palette export: " + message);
    QVERIFY(!QFile::exists(file));
}

void TestPaletteFormatErrors::textReaders_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<Colors>("colors");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("warnings");
    const auto row = [](const char *tag, int format, const QByteArray &content, const Colors &colors,
                        const QString &name, int warnings) {
        QTest::newRow(tag) << format << content << colors << name << warnings;
    };
    const uint o = 65535;
    row("gimp 300 -5 12", 1, QByteArray("GIMP Palette\n300 -5 12 Too bright\n"), {{65280, 0, 3072, o}}, "",
        1);
    row("gimp one warning per line", 1, QByteArray("GIMP Palette\n300 400 -500\n1 2 3\n256 0 0\n"),
        {{65280, 65280, 0, o}, {256, 512, 768, o}, {65280, 0, 0, o}}, "", 2);
    row("gimp in range", 1, QByteArray("GIMP Palette\n+0 255 -0\n"), {{0, 65280, 0, o}}, "", 0);
    row("gimp huge number", 1, QByteArray("GIMP Palette\n99999999999999999999999 0 0\n"), {{65280, 0, 0, o}},
        "", 1);
    row("gimp header with more text", 1, QByteArray("GIMP Palette v2 \nname:a:b \n1 2 3\n"),
        {{256, 512, 768, o}}, "a:b", 0);
    row("gimp name, columns, crlf, bom", 1,
        QByteArray("\xef\xbb\xbfGIMP Palette\r\nNAME: \t Mixed Case\t\r\nColumns: 4\r\n#1 2\r\n1 2 3\r\n"),
        {{256, 512, 768, o}}, "Mixed Case", 0);
    row("gimp blank lines", 1, QByteArray("GIMP Palette\n\n   \n\t\r\n1 2 3\n\n"), {{256, 512, 768, o}}, "",
        0);
    row("map -1 256 3", 3, QByteArray("-1 256 3 a comment\n1 2\n  # only comment\n"), {{0, 65280, 768, o}},
        "", 1);
    row("jasc 256", 11, QByteArray("JASC-PAL\n0100\n1\n256 0 0\n"), {{65280, 0, 0, o}}, "", 1);
    row("hextxt zz", 9, QByteArray("zz0000\n"), {{83 << 8, 0, 0, o}}, "", 0);
    row("hextxt letters past f", 9, QByteArray("ZZgG10\n"), {{83 << 8, 16 << 8, 16 << 8, o}}, "", 0);
    row("hextxt blanks and comment", 9, QByteArray("  0a0B0c \t# note\r\nffffff"),
        {{2560, 2816, 3072, o}, {65280, 65280, 65280, o}}, "", 0);
    row("hex lines and blanks", 10, QByteArray("  ff000000ff00  \n\n0000ff\n"),
        {{65280, 0, 0, o}, {0, 65280, 0, o}, {0, 0, 65280, o}}, "", 0);
}

void TestPaletteFormatErrors::textReaders()
{
    QFETCH(int, format);
    QFETCH(QByteArray, content);
    QFETCH(Colors, colors);
    QFETCH(QString, name);
    QFETCH(int, warnings);
    writeAll(path("in.txt"), content);
    Palette<uint> p;
    StderrCapture capture(path("stderr.txt"));
    QVERIFY(importChecked(path("in.txt"), p, format));
    const QByteArray err = capture.finish();
    QCOMPARE(err, QByteArray("Warning: a component is outside the range of 0-255.\n").repeated(warnings));
    QCOMPARE(colorsOf(p), colors);
    QCOMPARE(p.property(PaletteName), name);
}

void TestPaletteFormatErrors::failedExportKeepsFile_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("size");
    QTest::addColumn<QStringList>("options"); // stored unchecked
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *tag, int format, int size, const QStringList &options,
                        const QString &title, const QString &message) {
        QTest::newRow(tag) << format << size << options << title << message;
    };
    const QString gifTitle = "Error on writing GIF image";
    const QString exportTitle = "Error on palette export";
    row("gif 257 colours", 5, 257, {}, gifTitle, "Too many colors.");
    row("gif empty", 5, 0, {}, gifTitle, "A GIF image needs at least one color.");
    row("gif columns 0", 5, 4, {"columns", "0"}, exportTitle,
        "'0' is not a valid value for the option 'columns'.");
    row("js type", 8, 2, {"js.type", "list"}, exportTitle,
        "'list' is not an allowed attribute for the 'js.type' option (exception should have "
        "been checked before).");
    row("act 257", 13, 257, {}, exportTitle,
        "An Adobe color table holds at most 256 colors; this one has 257.");
    row("riff 65536", 4, 65536, {}, exportTitle,
        "A Microsoft palette holds at most 65535 colors; this one has 65536.");
    row("aco 65536", 2, 65536, {}, exportTitle,
        "A Photoshop palette holds at most 65535 colors; this one has 65536.");
    row("format 0", 0, 2, {}, exportTitle, "The format to export into is not known or supported.");
    // Failures of the destination itself.
    row("destination is a directory", 1, 2, {"@dir"}, exportTitle,
        "The destination file\n'PATH'\ncould not be built.\n"
        "It is a folder, not a file.");
    row("destination in a missing directory", 1, 2, {"@missing"}, exportTitle,
        "The destination file\n'PATH'\ncould not be built.\nNo such file or directory");
}

void TestPaletteFormatErrors::failedExportKeepsFile()
{
    QFETCH(int, format);
    QFETCH(int, size);
    QFETCH(QStringList, options);
    QFETCH(QString, title);
    QFETCH(QString, message);
    QDir dir(path("keep"));
    QVERIFY(dir.removeRecursively() && QDir().mkpath(dir.path()) && dir.mkdir("sub"));
    const QByteArray precious("precious old contents\n");
    writeAll(dir.filePath("old.file"), precious);

    QString file = dir.filePath("old.file");
    ExportOptions set;
    if (options.value(0) == "@dir")
        file = dir.filePath("sub");
    else if (options.value(0) == "@missing")
        file = dir.filePath("nowhere/new.gpl");
    else if (!options.isEmpty())
        set.setUnchecked(options[0], options[1]);
    Palette<uint> p;
    for (int i = 0; i < size; ++i)
        p.append({uint(i) << 8, uint(i) >> 8, 0x7777, 65535});

    QCOMPARE(refusal([&] { exportPalette(file, p, format, set); }),
             title + ": " + QString(message).replace("PATH", file));
    QCOMPARE(readAll(dir.filePath("old.file")), precious);
    QCOMPARE(dir.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
             QStringList({"old.file", "sub"}));
    QVERIFY(QFileInfo(dir.filePath("sub")).isDir());
}

QTEST_GUILESS_MAIN(TestPaletteFormatErrors)
#include "tst_paletteformaterrors.moc"
