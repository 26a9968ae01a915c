#include "formats/exportoptions.h"
#include "formats/paletteformats.h"
#include "paletteformattesting.h"

#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#include <gd.h>

#include <memory>
#include <set>

using namespace PaletteFormatTesting;
using Properties = QMap<int, QString>;

class TestPaletteFormats : public QObject
{
    Q_OBJECT
private slots:
    void init() { QVERIFY(m_dir.isValid()); }

    void formatWords_data();
    void formatWords();
    void openFilters();
    void writerBytes_data();
    void writerBytes();
    void gimpNameLine_data();
    void gimpNameLine();
    void roundTrip_data();
    void roundTrip();
    void fixtures_data();
    void fixtures();
    void textEncodings_data();
    void textEncodings();
    void gifLayout_data();
    void gifLayout();
    void exportOptions_data();
    void exportOptions();
    void recordFileName_data();
    void recordFileName();

private:
    QString path(const QString &name) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
};

void TestPaletteFormats::formatWords_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<int>("format");
    const struct
    {
        const char *word;
        int format;
    } rows[] = {{"gimp", 1},     {"GPL", 1},  {"adobe", 2},     {"PhotoShop", 2}, {"aco", 2},
                {"fractint", 3}, {"map", 3},  {"microsoft", 4}, {"Pal", 4},       {"gif", 5},
                {"html", 6},     {"css", 7},  {"js", 8},        {"hextxt", 9},    {"HEX", 10},
                {"jasc", 11},    {"ase", 12}, {"ACT", 13},      {"", 0},          {"txt", 0},
                {".gpl", 0},     {"gpl ", 0}, {"htm", 0},       {"hex.txt", 0},   {"png", 0}};
    for (const auto &r : rows)
        QTest::addRow("'%s'", r.word) << QString::fromLatin1(r.word) << r.format;
}

void TestPaletteFormats::formatWords()
{
    QFETCH(QString, word);
    QFETCH(int, format);
    QCOMPARE(formatFromWord(word), format);
}

void TestPaletteFormats::openFilters()
{
    const QStringList filters = paletteOpenFilters();
    const QStringList established = {"All palette files (*.gimp *.gpl *.aco *.map *.fractint *.pal)",
                                     "GIMP palettes (*.gimp *.gpl)",
                                     "Adobe palettes (*.aco)",
                                     "Fractint palettes (*.map *.fractint)",
                                     "Microsoft palettes (*.pal)",
                                     "All files (* *.*)"};
    // The established filters keep their order; the filter of every readable format comes right
    // before "All files".
    QCOMPARE(filters.mid(0, 5), established.mid(0, 5));
    QCOMPARE(filters.at(5), QString("All readable formats (*.gimp *.gpl *.aco *.map *.fractint *.pal *.jasc *.ase "
                                    "*.act *.gif *.hex *.hextxt)"));
    QCOMPARE(filters.at(6), established.at(5));
    QCOMPARE(filters.mid(7), QStringList({"JASC palettes (*.pal)", "Adobe swatch exchange (*.ase)",
                                          "Adobe color tables (*.act)"}));

    auto patternsOf = [](const QString &filter) {
        const int open = filter.indexOf('(');
        return filter.mid(open + 1, filter.lastIndexOf(')') - open - 1).split(' ');
    };
    const QStringList readable = patternsOf(filters.at(5));
    std::set<int> formats;
    for (const QString &pattern : readable) {
        QVERIFY2(pattern.startsWith("*."), qPrintable(pattern));
        const int format = formatFromWord(pattern.mid(2));
        // Each pattern opens as a palette: known, and not one of the export-only text formats.
        QVERIFY2(format != FormatUnknown && format != FormatHtml && format != FormatCss && format != FormatJavaScript,
                 qPrintable(pattern));
        formats.insert(format);
    }
    for (int format = FormatGimp; format <= FormatLast; ++format)
        if (format != FormatHtml && format != FormatCss && format != FormatJavaScript)
            QVERIFY2(formats.count(format), qPrintable(QString::number(format)));
    // Whatever another filter offers, the readable-formats filter offers too.
    for (const QString &filter : filters)
        if (filter != established.at(5))
            for (const QString &pattern : patternsOf(filter))
                QVERIFY2(readable.contains(pattern), qPrintable(filter));
}

void TestPaletteFormats::writerBytes_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *tag, int format, const QStringList &options, const QByteArray &expected) {
        QTest::newRow(tag) << format << options << expected;
    };
    const QStringList none;
    row("gimp", 1, none,
        QByteArray("GIMP Palette\nName: My palette  with blanks\n#\n"
                   " 18 255   0\tUntitled\n255   1 127\tUntitled\n 10 100 200\tUntitled\n"));
    row("photoshop", 2, none,
        QByteArray::fromHex("00010003"
                            "000012abff0100ff0000"
                            "0000ffff01017f800000"
                            "00000a0a6464c8c80000"));
    row("fractint", 3, none, QByteArray(" 18 255   0\n255   1 127\n 10 100 200\n"));
    row("microsoft", 4, none,
        QByteArray::fromHex("52494646"
                            "20000000"
                            "50414c2064617461"
                            "10000000"
                            "0003"
                            "0300"
                            "12ff0000ff017f000a64c800"));
    row("html", 6, none,
        QByteArray("<table border=\"0\" cellspacing=\"0\" cellpadding=\"0\" width=\"100%\">\n"
                   "<tr><th colspan=\"3\">Palette My palette  with blanks (3 entries)</th></tr>\n"
                   "<tr>\n<td bgcolor=\"#12ff00\">&nbsp;</td>\n"
                   "<td bgcolor=\"#ff017f\">&nbsp;</td>\n<td bgcolor=\"#0a64c8\">&nbsp;</td>\n"
                   "</tr>\n<tr><td colspan=\"3\">file: out.bin</td></tr>\n</table>\n"));
    row("css defaults", 7, none,
        QByteArray(".pal0 { background-color: #12ff00; }\n"
                   ".pal1 { background-color: #ff017f; }\n"
                   ".pal2 { background-color: #0a64c8; }\n"));
    row("css options", 7, QStringList({"css.name=div.swatch-", "css.attribute=border-color"}),
        QByteArray("div.swatch-0 { border-color: #12ff00; }\n"
                   "div.swatch-1 { border-color: #ff017f; }\n"
                   "div.swatch-2 { border-color: #0a64c8; }\n"));
    row("js triplet", 8, none, QByteArray("var palette = [[18, 255, 0], [255, 1, 127], [10, 100, 200]];\n"));
    row("js hex", 8, QStringList({"js.type=hex", "js.name=colours"}),
        QByteArray("var colours = [\"#12ff00\", \"#ff017f\", \"#0a64c8\"];\n"));
    row("js rgb", 8, QStringList({"js.type=rgb"}),
        QByteArray("var palette = [\"rgb(18, 255, 0)\", \"rgb(255, 1, 127)\", "
                   "\"rgb(10, 100, 200)\"];\n"));
    row("hextxt", 9, none, QByteArray("12ff00\nff017f\n0a64c8\n"));
    row("hex", 10, none, QByteArray("12ff00ff017f0a64c8\n"));
    row("jasc", 11, none, QByteArray("JASC-PAL\r\n0100\r\n3\r\n18 255 0\r\n255 1 127\r\n10 100 200\r\n"));
    row("ase", 12, none,
        QByteArray::fromHex("41534546000100000000000300010000002400080023003100320066006600300030000052474220"
                            "3d9090913f8000000000000000020001000000240008002300660066003000310037006600005247"
                            "42203f8000003b8080813efefeff00020001000000240008002300300061003600340063003800"
                            "00524742203d20a0a13ec8c8c93f48c8c90002"));
    row("act", 13, none,
        QByteArray::fromHex("12ff00ff017f0a64c8") + QByteArray(759, '\0') + QByteArray::fromHex("0003ffff"));
}

void TestPaletteFormats::writerBytes()
{
    QFETCH(int, format);
    QFETCH(QStringList, options);
    QFETCH(QByteArray, expected);
    ExportOptions set;
    for (const QString &o : options)
        set.setFromText(o);
    QVERIFY(exportChecked(path("out.bin"), awkwardPalette(), format, set));
    QCOMPARE(readAll(path("out.bin")), expected);
}

void TestPaletteFormats::gimpNameLine_data()
{
    QTest::addColumn<Properties>("properties");
    QTest::addColumn<QByteArray>("nameLine");
    QTest::newRow("name") << Properties{{0, "N"}, {2, "f.gpl"}} << QByteArray("Name: N\n");
    QTest::newRow("file name when no name") << Properties{{2, "f.gpl"}} << QByteArray("Name: f.gpl\n");
    QTest::newRow("an empty name is a name") << Properties{{0, ""}, {2, "f.gpl"}} << QByteArray("Name: \n");
    QTest::newRow("nothing") << Properties{} << QByteArray("Name: \n");
    QTest::newRow("line breaks flattened") << Properties{{0, "a\nb\r\nc"}} << QByteArray("Name: a b  c\n");
    QTest::newRow("utf-8") << Properties{{0, QString::fromUtf8("Grün")}} << QByteArray("Name: Gr\xc3\xbcn\n");
}

void TestPaletteFormats::gimpNameLine()
{
    QFETCH(Properties, properties);
    QFETCH(QByteArray, nameLine);
    Palette<uint> p;
    p.setProperties(properties);
    QVERIFY(exportChecked(path("n.gpl"), p, FormatGimp));
    QCOMPARE(readAll(path("n.gpl")), QByteArray("GIMP Palette\n") + nameLine + "#\n");
}

void TestPaletteFormats::roundTrip_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<bool>("keepsWords"); // the full 16-bit components come back
    QTest::addColumn<int>("alpha");       // -1: the written alpha's high byte
    for (int format : {1, 3, 5, 9, 10, 11, 12, 13})
        QTest::addRow("format %d", format) << format << false << 65535;
    QTest::newRow("photoshop keeps 16 bits") << 2 << true << 65535;
    QTest::newRow("microsoft: flags 0 read as alpha 0") << 4 << false << 0;
}

void TestPaletteFormats::roundTrip()
{
    QFETCH(int, format);
    QFETCH(bool, keepsWords);
    QFETCH(int, alpha);
    const Palette<uint> original = awkwardPalette();
    QVERIFY(exportChecked(path("rt.bin"), original, format));
    Palette<uint> read;
    QVERIFY(importChecked(path("rt.bin"), read, format));
    QCOMPARE(read.size(), original.size());
    for (int i = 0; i < original.size(); ++i) {
        const auto &o = original[i];
        const uint mask = keepsWords ? 0xFFFF : 0xFF00;
        const RGBAColor<uint> expected(o.r & mask, o.g & mask, o.b & mask, uint(alpha));
        QCOMPARE(read[i], expected);
    }
    // A reader leaves the file-name properties to the caller.
    QVERIFY(read.property(PaletteFileExt).isEmpty());
    QCOMPARE(read.property(PaletteName), format == FormatGimp ? original.property(PaletteName) : QString());
}

void TestPaletteFormats::fixtures_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("format");
    QTest::addColumn<Colors>("colors");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *tag, const QString &file, int format, const Colors &colors, const QString &name) {
        QTest::newRow(tag) << file << format << colors << name;
    };
    const uint o = 65535;
    // Blank, whitespace-only, comment, "Name:" and "Columns:" lines around three colours.
    row("gimp", "gimp.gpl", 1, {{0, 0, 0, o}, {65280, 32768, 1792, o}, {3072, 8704, 14336, o}},
        "Fixture  with blanks");
    row("fractint", "fractint.map", 3, {{0, 0, 0, o}, {65280, 65280, 65280, o}, {2560, 5120, 7680, o}}, "");
    // A version 1 section followed by a version 2 section with names: only the first is read.
    row("photoshop", "photoshop.aco", 2, {{0x1234, 0x5678, 0x9ABC, o}, {0xFFFF, 0, 0x0101, o}}, "");
    row("microsoft", "microsoft.pal", 4,
        {{256, 512, 768, 0}, {64000, 32768, 1792, 32768}, {65280, 65280, 65280, 65280}}, "");
    row("jasc by content under pal", "jasc.pal", 4,
        {{0, 0, 0, o}, {65280, 32768, 1792, o}, {3072, 8704, 14336, o}}, "");
    row("jasc", "jasc.pal", 11, {{0, 0, 0, o}, {65280, 32768, 1792, o}, {3072, 8704, 14336, o}}, "");
    row("gif", "cells.gif", 5, {{65280, 0, 0, o}, {0, 32768, 65280, o}, {2560, 5120, 7680, o}}, "");
    row("hextxt", "lines.hextxt", 9, {{65280, 0, 0, o}, {0, 65280, 0, o}, {0, 0, 65280, o}}, "");
    row("hex", "oneline.hex", 10, {{65280, 0, 0, o}, {0, 65280, 0, o}, {0, 0, 65280, o}}, "");
    // A group around the first swatch; RGB, gray and CMYK swatches.
    row("ase", "swatches.ase", 12, {{65280, 32768, 0, o}, {32768, 32768, 32768, o}, {65280, 0, 0, o}}, "");
    // 772 bytes: four colours in use, the second transparent.
    row("act", "table.act", 13,
        {{0, 0, 0, o}, {65280, 0, 65280, 0}, {2560, 5120, 7680, o}, {65280, 65280, 65280, o}}, "");
}

void TestPaletteFormats::fixtures()
{
    QFETCH(QString, file);
    QFETCH(int, format);
    QFETCH(Colors, colors);
    QFETCH(QString, name);
    Palette<uint> p;
    QVERIFY(importChecked(fixture(file), p, format));
    QCOMPARE(colorsOf(p), colors);
    QCOMPARE(p.property(PaletteName), name);
}

void TestPaletteFormats::textEncodings_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("encoding");
    QTest::addColumn<int>("count");
    const QString jasc = "JASC-PAL\r\n0100\r\n3\r\n255 128 7\r\n0 0 0\r\n12 34 56\r\n";
    // A comment line longer than one block of reading: lines are joined across blocks.
    const QString gimp = "GIMP Palette\n# " + QString(70000, QChar(0x00FC)) + "\n255 128 7 a\n0 0 0\n12 34 56 c";
    const QString fractint = "255 128 7 \xFC\n0 0 0\n12 34 56\n";
    const QString hexLines = "ff8007\n000000\n0c2238\n";
    const QString hexOne = "ff80070000000c2238\n";
    for (const char *encoding : {"UTF-8", "UTF-8 BOM", "UTF-16LE", "UTF-16BE", "UTF-32LE"}) {
        QTest::addRow("gimp %s", encoding) << "a.gpl" << 1 << gimp << QByteArray(encoding) << 3;
        QTest::addRow("fractint %s", encoding) << "a.map" << 3 << fractint << QByteArray(encoding) << 3;
        QTest::addRow("hex lines %s", encoding) << "a.hextxt" << 9 << hexLines << QByteArray(encoding) << 3;
        QTest::addRow("hex one line %s", encoding) << "a.hex" << 10 << hexOne << QByteArray(encoding) << 3;
        QTest::addRow("jasc %s", encoding) << "a.pal" << 11 << jasc << QByteArray(encoding) << 3;
        // Under the RIFF palette's suffix, the content decides, in any encoding.
        QTest::addRow("jasc as .pal %s", encoding) << "b.pal" << 4 << jasc << QByteArray(encoding) << 3;
    }
}

// Every text palette reads the same in UTF-8 and in the encodings a byte order mark announces.
void TestPaletteFormats::textEncodings()
{
    QFETCH(QString, file);
    QFETCH(int, format);
    QFETCH(QString, text);
    QFETCH(QByteArray, encoding);
    QFETCH(int, count);
    QByteArray bytes;
    if (encoding == "UTF-8" || encoding == "UTF-8 BOM") {
        bytes = (encoding == "UTF-8 BOM" ? QByteArray("\xEF\xBB\xBF") : QByteArray()) + text.toUtf8();
    } else {
        QTextCodec *codec = QTextCodec::codecForName(encoding);
        QVERIFY(codec);
        // The codec's own encoder writes no mark for an explicit byte order; the mark is added here.
        const QByteArray mark = encoding == "UTF-16LE"   ? QByteArray("\xFF\xFE")
                                : encoding == "UTF-16BE" ? QByteArray("\xFE\xFF")
                                                         : QByteArray("\xFF\xFE\0\0", 4);
        QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
        bytes = mark + codec->fromUnicode(text.constData(), text.size(), &state);
    }
    const QString path = m_dir.filePath(file);
    writeAll(path, bytes);
    Palette<uint> p;
    QVERIFY(importChecked(path, p, format));
    QCOMPARE(p.size(), count);
    const uint o = 65535;
    QCOMPARE(colorsOf(p), (Colors{{65280, 32768, 1792, o}, {0, 0, 0, o}, {3072, 8704, 14336, o}}));
}

void TestPaletteFormats::gifLayout_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("cellWidth");
    QTest::addColumn<int>("cellHeight");
    QTest::newRow("defaults") << 3 << QStringList() << 3 << 16 << 16;
    QTest::newRow("256 colours in one row") << 256 << QStringList() << 256 << 16 << 16;
    QTest::newRow("partial last row")
        << 20 << QStringList{"columns=6", "cell-width=4", "cell-height=3"} << 6 << 4 << 3;
    QTest::newRow("more columns than colours") << 2 << QStringList{"columns=5"} << 5 << 16 << 16;
    QTest::newRow("one pixel") << 1 << QStringList{"cell-width=1", "cell-height=1"} << 1 << 1 << 1;
}

void TestPaletteFormats::gifLayout()
{
    QFETCH(int, size);
    QFETCH(QStringList, options);
    QFETCH(int, columns);
    QFETCH(int, cellWidth);
    QFETCH(int, cellHeight);
    ExportOptions set;
    for (const QString &o : options)
        set.setFromText(o);
    Palette<uint> p;
    for (int i = 0; i < size; ++i) // distinct high bytes, noisy low bytes
        p.append(
            {uint((i * 37) & 255) << 8 | 0x7F, uint((i * 11) & 255) << 8 | 0x01, uint(255 - i) << 8, 1234});
    QVERIFY(exportChecked(path("out.gif"), p, FormatGif, set));
    const QByteArray bytes = readAll(path("out.gif"));
    const int rows = (size + columns - 1) / columns;
    QVERIFY(bytes.startsWith("GIF8"));
    QCOMPARE(uchar(bytes[6]) | uchar(bytes[7]) << 8, columns * cellWidth);
    QCOMPARE(uchar(bytes[8]) | uchar(bytes[9]) << 8, rows * cellHeight);

    const std::unique_ptr<gdImage, void (*)(gdImagePtr)> decoded(
        gdImageCreateFromGifPtr(bytes.size(), const_cast<char *>(bytes.constData())), gdImageDestroy);
    const gdImagePtr image = decoded.get();
    QVERIFY(image);
    const auto rgbAt = [image](int x, int y) {
        const int c = gdImageGetPixel(image, x, y);
        return QVector<uint>{uint(gdImageRed(image, c)), uint(gdImageGreen(image, c)),
                             uint(gdImageBlue(image, c))};
    };
    QCOMPARE(gdImageColorsTotal(image), size);
    for (int cell = 0; cell < rows * columns; ++cell) {
        const auto &c = p[cell < size ? cell : 0]; // cells past the last colour show the first
        const QVector<uint> expected{c.r >> 8, c.g >> 8, c.b >> 8};
        const int x0 = (cell % columns) * cellWidth;
        const int y0 = (cell / columns) * cellHeight;
        QCOMPARE(rgbAt(x0, y0), expected);
        QCOMPARE(rgbAt(x0 + cellWidth - 1, y0 + cellHeight - 1), expected);
    }
}

void TestPaletteFormats::exportOptions_data()
{
    QTest::addColumn<QString>("assignment");
    QTest::addColumn<QString>("error"); // empty: accepted
    const auto row = [](const char *tag, const QString &assignment, const QString &error) {
        QTest::newRow(tag) << assignment << error;
    };
    const QString bad = "'%1' is not a valid value for the option '%2'.\nAllowed: %3.";
    const QString cols = "a whole number from 1 to 256 (default: one column per colour, at most 256)";
    const QString cell = "a whole number from 1 to 255 (default 16)";
    row("columns 12", "columns=12", "");
    row("columns 0", "columns=0", bad.arg("0", "columns", cols));
    row("columns 257", "columns=257", bad.arg("257", "columns", cols));
    row("columns 1e2", "columns=1e2", bad.arg("1e2", "columns", cols));
    row("columns blank", "columns= 5", bad.arg(" 5", "columns", cols));
    row("cell-width 255", "cell-width=255", "");
    row("cell-width 256", "cell-width=256", bad.arg("256", "cell-width", cell));
    row("cell-height -3", "cell-height=-3", bad.arg("-3", "cell-height", cell));
    row("css.name", "css.name=.swatch", "");
    row("css.name with =", "css.name=a=b", "");
    row("css.name blank", "css.name=a b",
        bad.arg("a b", "css.name",
                "a selector prefix without blanks, braces, commas or semicolons "
                "(default \".pal\")"));
    row("css.name empty", "css.name=",
        bad.arg("", "css.name",
                "a selector prefix without blanks, braces, commas or semicolons "
                "(default \".pal\")"));
    row("css.attribute", "css.attribute=color", "");
    row("css.attribute colon", "css.attribute=col:or",
        bad.arg("col:or", "css.attribute", "a CSS property name (default \"background-color\")"));
    row("js.name", "js.name=$pal_1", "");
    row("js.name digit", "js.name=1pal",
        bad.arg("1pal", "js.name", "a JavaScript identifier (default \"palette\")"));
    row("js.type hex", "js.type=hex", "");
    row("js.type case", "js.type=Triplet",
        bad.arg("Triplet", "js.type",
                "one of triplet ([r, g, b]), hex (\"#rrggbb\"), rgb (\"rgb(r, g, b)\") "
                "(default triplet)"));
    row("unknown key", "colour=3",
        "Unknown option 'colour'.\nKnown options: columns, cell-width, cell-height, "
        "css.name, css.attribute, js.name, js.type.");
    row("no =", "columns", "'columns' is not of the form KEY=VALUE.");
}

void TestPaletteFormats::exportOptions()
{
    QFETCH(QString, assignment);
    QFETCH(QString, error);
    ExportOptions options;
    QCOMPARE(options.isSet("columns"), false);
    QCOMPARE(options.integer("columns"), 0);
    QCOMPARE(options.integer("cell-width"), 16);
    QCOMPARE(options.integer("cell-height"), 16);
    QCOMPARE(options.string("css.name"), QString(".pal"));
    QCOMPARE(options.string("css.attribute"), QString("background-color"));
    QCOMPARE(options.string("js.name"), QString("palette"));
    QCOMPARE(options.string("js.type"), QString("triplet"));
    const ExportOptions before = options;
    try {
        options.setFromText(assignment);
        QVERIFY2(error.isEmpty(), "accepted a value it should refuse");
        const int eq = assignment.indexOf('=');
        const QString key = assignment.left(eq);
        QVERIFY(options.isSet(key));
        QCOMPARE(options.text(key), assignment.mid(eq + 1));
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), QString("Invalid export option"));
        QCOMPARE(e.message(), error);
        QVERIFY(options == before);
    }
}

void TestPaletteFormats::recordFileName_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("fileExt");
    QTest::addColumn<QString>("file");
    QTest::newRow("unix") << "/home/u/pals/My Palette.gpl"
                          << "My Palette.gpl"
                          << "My Palette";
    QTest::newRow("windows, several dots") << "C:\\Users\\u\\old.backup.gpl"
                                           << "old.backup.gpl"
                                           << "old.backup";
    QTest::newRow("mixed separators") << "mixed\\dir/sub\\name.tar.gz"
                                      << "name.tar.gz"
                                      << "name.tar";
    QTest::newRow("no extension") << "noext"
                                  << "noext"
                                  << "noext";
    QTest::newRow("dots only in the directory") << "/dir.with.dots\\noext"
                                                << "noext"
                                                << "noext";
    QTest::newRow("hidden file") << "/x/.hidden"
                                 << ".hidden"
                                 << "";
    QTest::newRow("trailing separator") << "trailing\\"
                                        << ""
                                        << "";
}

void TestPaletteFormats::recordFileName()
{
    QFETCH(QString, path);
    QFETCH(QString, fileExt);
    QFETCH(QString, file);
    Palette<uint> p;
    p.setProperty(PaletteName, "from the file");
    p.setProperty(PaletteComment, "kept");
    recordPaletteFileName(p, path);
    QCOMPARE(p.property(PaletteFileExt), fileExt);
    QCOMPARE(p.property(PaletteFile), file);
    QCOMPARE(p.property(PaletteName), file);
    QCOMPARE(p.property(PaletteComment), QString("kept"));
}

QTEST_GUILESS_MAIN(TestPaletteFormats)
#include "tst_paletteformats.moc"
