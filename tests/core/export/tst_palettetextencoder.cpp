#include "palette/describedexception.h"
#include "export/palettetextencoder.h"
#include "storage/settingstext.h"
#include "refusal.h"

#include <QBuffer>
#include <QFile>
#include <QTextCodec>
#include <QTextStream>
#include <QtTest>

namespace {

using Colour = RGBAColor<uint>;

Colour rgb8(uint r, uint g, uint b)
{
    return fromByteColor(RGBAColor<uchar>(uchar(r), uchar(g), uchar(b), 255));
}

Palette<uint> paletteOf(int n)
{
    Palette<uint> p;
    for (int i = 0; i < n; ++i)
        p.append(rgb8(uint(i * 16), 255 - uint(i), uint(i)));
    return p;
}

PaletteTextEncoder::Template tmpl(const QString &header, const QString &entry, const QString &divider,
                                  const QString &bottom, const QString &encoding = QStringLiteral("UTF-8"))
{
    PaletteTextEncoder::Template t;
    t.encoding = encoding;
    t.header = header;
    t.entry = entry;
    t.divider = divider;
    t.bottom = bottom;
    return t;
}

QByteArray encodeBytes(const PaletteTextEncoder::Template &t, const Palette<uint> &p)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QTextStream stream(&buffer);
    stream.setCodec("UTF-8"); // what an unknown name must leave in place
    PaletteTextEncoder::encode(t, p, {}, stream);
    return bytes;
}

QByteArray utf16(const char *latin1)
{
    QByteArray out;
    for (const char *c = latin1; *c; ++c) {
        const char hi = 0, lo = *c;
        if (QSysInfo::ByteOrder == QSysInfo::LittleEndian)
            out.append(lo).append(hi);
        else
            out.append(hi).append(lo);
    }
    return out;
}

struct PresetRow
{
    const char *name, *header, *entry, *divider, *footer;
};

// The built-in presets as users know them; the escapes are stored unexpanded.
const PresetRow presetTable[] = {
    {"html table", "<table>\\n", "   <tr width=\"1\"><td style=\"background-color:#%R%G%B\"></td></tr>\\n",
     "", "</table>"},
    {"css #1", "", ".pal%i { background-color: rgb(%r, %g, %b); }\\n", "", ""},
    {"css #2", "", ".pal%i { background-color: #%R%G%B; }\\n", "", ""},
    {"JavaScript #1", "var palette = [", "[%r, %g, %b]", ", ", "];"},
    {"JavaScript #2", "var palette = [", "\"#%R%G%B\"", ", ", "];"},
    {"hex text", "", "#%R%G%B", "\\n", ""},
    {"hext text compact", "", "%R%G%B", "", ""},
    {"json #1", "[\\n", "   [%r, %g, %b]", ",\\n", "]\\n"},
    {"json #2", "[\\n", "   \"#%R%G%B\"", ",\\n", "]\\n"},
};

} // namespace

Q_DECLARE_METATYPE(Colour)
Q_DECLARE_METATYPE(PaletteTextEncoder::Template)

class TestPaletteTextEncoder : public QObject
{
    Q_OBJECT
private slots:
    void formatColour_data();
    void formatColour();
    void encodes_data();
    void encodes();
    void encodings_data();
    void encodings();
    void presetsMatchTheirTable();
    void presetOutput_data();
    void presetOutput();
    void parsesSettings_data();
    void parsesSettings();
    void rejectsOtherDialogs_data();
    void rejectsOtherDialogs();
    void settingsRoundTrip();
    void templateFromSettingsKeepsMissingKeys();
};

void TestPaletteTextEncoder::formatColour_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<Colour>("colour");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *tag, int index, const Colour &colour, const QString &pattern,
                        const QString &expected) {
        QTest::newRow(tag) << index << colour << pattern << expected;
    };
    const Colour orange = rgb8(255, 128, 0);
    row("hex", 0, orange, "#%R%G%B", "#ff8000");
    row("decimal", 0, orange, "(%r, %g, %b)", "(255, 128, 0)");
    row("low byte ignored", 0, Colour(0x12ff, 0x05ff, 0x00ff, 0), "%r %R %G %B", "18 12 05 00");
    row("index unpadded, repeated", 1234, orange, "%i-%i", "1234-1234");
    row("case sensitive, unknown kept", 3, orange, "%I %x %% %H", "%I %x %% %H");
    row("hsv of orange", 0, orange, "%h %s %v", "30.1176 1 0.996109");
    row("hsv small saturation uses exponent", 0, Colour(65535, 65534, 65534, 65535), "%h|%s|%v",
        "0|1.5259e-05|1");
    row("hsv blue side", 0, Colour(0, 0x1234, 0xabcd, 65535), "%h %s %v", "233.643 1 0.671107");
    row("black", 0, Colour(), "%h %s %v %r%g%b", "0 0 0 000");
    row("alpha has no placeholder", 0, Colour(0, 0, 0, 65535), "%a", "%a");
}

void TestPaletteTextEncoder::formatColour()
{
    QFETCH(int, index);
    QFETCH(Colour, colour);
    QFETCH(QString, pattern);
    QFETCH(QString, expected);
    QCOMPARE(PaletteTextEncoder::formatColour(index, colour, pattern), expected);
}

void TestPaletteTextEncoder::encodes_data()
{
    QTest::addColumn<PaletteTextEncoder::Template>("t");
    QTest::addColumn<Palette<uint>>("palette");
    QTest::addColumn<QList<int>>("selection");
    QTest::addColumn<int>("limit");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *tag, const PaletteTextEncoder::Template &t, const Palette<uint> &palette,
                        const QList<int> &selection, int limit, const QString &expected) {
        QTest::newRow(tag) << t << palette << selection << limit << expected;
    };
    const int all = PaletteTextEncoder::previewLimit;

    row("empty palette", tmpl("<h>", "%i", ",", "</h>"), Palette<uint>(), {}, all, "<h></h>");
    row("whole palette", tmpl("[", "%i", ",", "]"), paletteOf(4), {}, all, "[0,1,2,3]");
    row("selection", tmpl("", "%i", "-", ""), paletteOf(8), {2, 5}, all, "2-5");
    row("selection beyond the palette", tmpl("", "%i", "-", ""), paletteOf(3), {1, 7}, all, "1");
    row("divider shows the next index", tmpl("", "e", "[%i]", ""), paletteOf(3), {}, all, "e[1]e[2]e");
    Palette<uint> two;
    two.append(rgb8(255, 128, 0));
    two.append(rgb8(0, 0, 255));
    row("divider takes the next colour", tmpl("", "%R%G%B", " >%R%G%B< ", ""), two, {}, all,
        "ff8000 >0000ff< 0000ff");
    row("limit", tmpl("", "%i", ",", ""), paletteOf(5), {}, 3, "0,1,2");
    row("limit zero", tmpl("a", "%i", ",", "b"), paletteOf(5), {}, 0, "ab");
    row("selection past the limit", tmpl("", "%i", ",", ""), paletteOf(5), {1, 4}, 3, "1");
    row("escapes", tmpl("\\a\\b\\f", "\\n\\r", "\\t", "\\v"), paletteOf(2), {}, all, "\a\b\f\n\r\t\n\r\v");
    row("double backslash is a backslash and a break", tmpl("\\\\n", "", "", ""), paletteOf(1), {}, all,
        "\\\n");
    row("unknown escape kept", tmpl("\\q\\", "", "", ""), Palette<uint>(), {}, all, "\\q\\");

    Palette<uint> named = paletteOf(2);
    named.setProperty(PaletteName, "Fire");
    named.setProperty(PaletteComment, "warm");
    named.setProperty(PaletteFile, "fire");
    named.setProperty(PaletteFileExt, "fire.gpl");
    row("palette properties", tmpl("%n/%c/%f:", "%n%i", "", ";%f"), named, {}, all,
        "Fire/warm/fire:Fire0Fire1;fire");
    row("missing properties are empty", tmpl("<%n|%c|%f>", "", "", ""), paletteOf(1), {}, all, "<||>");
    row("escaped percent still expands", tmpl("\\%n ", "\\%i", ",", ""), named, {}, all, "Fire 0,1");
    Palette<uint> tricky = paletteOf(2);
    tricky.setProperty(PaletteName, "no.%i");
    row("properties expand before the entry", tmpl("", "%n ", "", ""), tricky, {}, all, "no.0 no.1 ");
}

void TestPaletteTextEncoder::encodes()
{
    QFETCH(PaletteTextEncoder::Template, t);
    QFETCH(Palette<uint>, palette);
    QFETCH(QList<int>, selection);
    QFETCH(int, limit);
    QFETCH(QString, expected);
    const std::set<int> set(selection.begin(), selection.end());
    QCOMPARE(PaletteTextEncoder::encodeToString(t, palette, set, limit), expected);
}

void TestPaletteTextEncoder::encodings_data()
{
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<QByteArray>("expected");
    // The palette is named "hé€" and the template is "%n".
    QTest::newRow("UTF-8") << "UTF-8" << QByteArray("h\xc3\xa9\xe2\x82\xac");
    QTest::newRow("LATIN1") << "LATIN1" << QByteArray("h\xe9?");
    QTest::newRow("ASCII") << "ASCII" << QByteArray("h??");
    QTest::newRow("UTF-16") << "UTF-16"
                            << utf16("h") + utf16("\xe9") +
                                   (QSysInfo::ByteOrder == QSysInfo::LittleEndian ? QByteArray("\xac\x20")
                                                                                  : QByteArray("\x20\xac"));
    QTest::newRow("unknown keeps the stream's codec") << "EBCDIC-NONE" << QByteArray("h\xc3\xa9\xe2\x82\xac");
    QTest::newRow("empty keeps the stream's codec") << "" << QByteArray("h\xc3\xa9\xe2\x82\xac");
}

void TestPaletteTextEncoder::encodings()
{
    QFETCH(QString, encoding);
    QFETCH(QByteArray, expected);
    Palette<uint> p = paletteOf(1);
    p.setProperty(PaletteName, QString::fromUtf8("h\xc3\xa9\xe2\x82\xac"));
    QCOMPARE(encodeBytes(tmpl("%n", "", "", "", encoding), p), expected);
}

void TestPaletteTextEncoder::presetsMatchTheirTable()
{
    const auto &presets = PaletteTextEncoder::presets();
    QCOMPARE(int(presets.size()), int(std::size(presetTable)));
    for (size_t i = 0; i < presets.size(); ++i) {
        const PresetRow &row = presetTable[i];
        const auto expected = tmpl(row.header, row.entry, row.divider, row.footer, "ASCII");
        QCOMPARE(presets[i].name, QString(row.name));
        const auto pairs = SettingsText::parse(presets[i].settingsText, "palette_textencode");
        QCOMPARE(PaletteTextEncoder::fromSettings(pairs), expected);

        // The dialog loads its presets from the resources, which must say the same.
        QFile file(SettingsText::presetPath("palette_textencode", int(i) + 1));
        QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
        const QString text = QString::fromUtf8(file.readAll());
        QCOMPARE(text, presets[i].settingsText);
        QCOMPARE(PaletteTextEncoder::fromSettings(SettingsText::parse(text, "palette_textencode")), expected);
    }
    QVERIFY(!QFile::exists(SettingsText::presetPath("palette_textencode", int(presets.size()) + 1)));
}

void TestPaletteTextEncoder::presetOutput_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &expected) {
        QTest::newRow(name) << name << expected;
    };
    row("html table", "<table>\n"
                      "   <tr width=\"1\"><td style=\"background-color:#ff8000\"></td></tr>\n"
                      "   <tr width=\"1\"><td style=\"background-color:#0000ff\"></td></tr>\n"
                      "</table>");
    row("css #1", ".pal0 { background-color: rgb(255, 128, 0); }\n"
                  ".pal1 { background-color: rgb(0, 0, 255); }\n");
    row("JavaScript #2", "var palette = [\"#ff8000\", \"#0000ff\"];");
    row("hex text", "#ff8000\n#0000ff");
    row("hext text compact", "ff80000000ff");
    row("json #1", "[\n   [255, 128, 0],\n   [0, 0, 255]]\n");
}

void TestPaletteTextEncoder::presetOutput()
{
    QFETCH(QString, name);
    QFETCH(QString, expected);
    Palette<uint> p;
    p.append(rgb8(255, 128, 0));
    p.append(rgb8(0, 0, 255));
    for (const auto &preset : PaletteTextEncoder::presets()) {
        if (preset.name != name)
            continue;
        const auto t =
            PaletteTextEncoder::fromSettings(SettingsText::parse(preset.settingsText, "palette_textencode"));
        QCOMPARE(QString::fromLatin1(encodeBytes(t, p)), expected);
        return;
    }
    QFAIL("preset not found");
}

using PairList = QList<QStringList>;

void TestPaletteTextEncoder::parsesSettings_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<PairList>("expected");
    const auto row = [](const char *tag, const QString &text, const PairList &expected) {
        QTest::newRow(tag) << text << expected;
    };
    row("plain", "palette_textencode 2.0.0\nheader:[\nencoding:UTF-8\n",
        {{"2.0.0", ""}, {"header", "["}, {"encoding", "UTF-8"}});
    row("value keeps every colon",
        "palette_textencode 2.0.0\nentry:.pal%i { background-color: rgb(%r, %g, %b); }\nx:a:b:",
        {{"2.0.0", ""}, {"entry", ".pal%i { background-color: rgb(%r, %g, %b); }"}, {"x", "a:b:"}});
    row("crlf", "palette_textencode 2.0.0\r\nheader:a\r\nbottom:\r\n",
        {{"2.0.0", ""}, {"header", "a"}, {"bottom", ""}});
    row("values untrimmed, keys too", "palette_textencode 2.0.0\n divider: , \n",
        {{"2.0.0", ""}, {" divider", " , "}});
    row("line without colon", "palette_textencode 2.0.0\nindex:1\n  tickend \nindex:2\ntickend",
        {{"2.0.0", ""}, {"index", "1"}, {"tickend", ""}, {"index", "2"}, {"tickend", ""}});
    row("blank line", "palette_textencode 2.0.0\n\nk:v\n", {{"2.0.0", ""}, {"", ""}, {"k", "v"}});
    row("name alone", "palette_textencode", {});
    row("other version read as a key", "palette_textencode 1.9\nk:v", {{"1.9", ""}, {"k", "v"}});
}

void TestPaletteTextEncoder::parsesSettings()
{
    QFETCH(QString, text);
    QFETCH(PairList, expected);
    PairList got;
    for (const auto &[key, value] : SettingsText::parse(text, "palette_textencode"))
        got.append({key, value});
    QCOMPARE(got, expected);
}

void TestPaletteTextEncoder::rejectsOtherDialogs_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *tag, const QString &text, const QString &message) {
        QTest::newRow(tag) << text << message;
    };
    row("other dialog", "palette_render 2.0.0\nentry:x\n",
        "These settings belong to \"palette_render\", not to \"palette_textencode\".");
    row("longer name", "palette_textencode2 2.0.0\n",
        "These settings belong to \"palette_textencode2\", not to \"palette_textencode\".");
    row("case differs", "Palette_TextEncode 2.0.0\n",
        "These settings belong to \"Palette_TextEncode\", not to \"palette_textencode\".");
    row("key line first", "entry:x\n",
        "These settings belong to \"entry:x\", not to \"palette_textencode\".");
    row("empty", "", "The text holds no settings; settings for \"palette_textencode\" were expected.");
    row("blank", " \r\n\n", "The text holds no settings; settings for \"palette_textencode\" were expected.");
}

void TestPaletteTextEncoder::rejectsOtherDialogs()
{
    QFETCH(QString, text);
    QFETCH(QString, message);
    QCOMPARE(refusal([&] { SettingsText::parse(text, "palette_textencode"); }), "Invalid settings: " + message);
}

void TestPaletteTextEncoder::settingsRoundTrip()
{
    const auto t = tmpl("<a href=\"x\">", "%i: #%R%G%B\\n", ", ", "  ", "LATIN1");
    const QString text = SettingsText::format("palette_textencode",
                                              SettingsText::formatLines(PaletteTextEncoder::toSettings(t)));
    QVERIFY(text.startsWith("palette_textencode 2.0.0\nheader:<a href=\"x\">\n"));
    QCOMPARE(PaletteTextEncoder::fromSettings(SettingsText::parse(text, "palette_textencode")), t);
}

void TestPaletteTextEncoder::templateFromSettingsKeepsMissingKeys()
{
    const auto base = PaletteTextEncoder::clipboardTemplate();
    QCOMPARE(base, tmpl("", "#%R%G%B", ", ", "", "UTF-8"));
    const auto t = PaletteTextEncoder::fromSettings(
        SettingsText::parse("palette_textencode 2.0.0\ndivider:;\ndivider:|\n", "palette_textencode"), base);
    QCOMPARE(t, tmpl("", "#%R%G%B", "|", "", "UTF-8"));
}

QTEST_GUILESS_MAIN(TestPaletteTextEncoder)
#include "tst_palettetextencoder.moc"
