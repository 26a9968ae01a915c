#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtTest>

#include "clirunner.h"

namespace {


const char fireGpl[] = "GIMP Palette\n"
                       "Name: Fire\n"
                       "#\n"
                       "255 128   0\tOrange\n"
                       "  0   0 255\tBlue\n"
                       " 18  52  86\tSome grey\n";

// UTF-16 in the machine's byte order, without byte order mark: what the codec writes by default.
QByteArray utf16(const QString &text)
{
    QByteArray out;
    for (const QChar c : text) {
        const char hi = char(c.unicode() >> 8), lo = char(c.unicode() & 0xff);
        if (QSysInfo::ByteOrder == QSysInfo::LittleEndian)
            out.append(lo).append(hi);
        else
            out.append(hi).append(lo);
    }
    return out;
}

const char fireEntries[] = "[[65280,32768,0,65535],[0,0,65280,65535],[4608,13312,22016,65535]]";

} // namespace

class TestCliPalette : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void show_data();
    void show();
    void convertRoundTrip();
    void convertWrites_data();
    void convertWrites();
    void text_data();
    void text();
    void failures_data();
    void failures();
    void failedWriteKeepsOldFile_data();
    void failedWriteKeepsOldFile();
    void badUsage_data();
    void badUsage();
    void batch();

private:
    QString path(const QString &name) const { return m_dir->filePath(name); }
    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile f(path(name));
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }
    QByteArray read(const QString &name) const
    {
        QFile f(path(name));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
    }
    QStringList inDir(const QStringList &args) const { return inFolder(args, *m_dir); }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestCliPalette::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    write("fire.gpl", fireGpl);
    write("fire.txt", fireGpl);
    QByteArray big = "GIMP Palette\n";
    for (int i = 0; i < 300; ++i)
        big += QByteArray::number(i % 256) + " " + QByteArray::number(i / 256) + " 7\tx\n";
    write("big.gpl", big);
    write("broken.gpl", "GIMP Palette\n1 2\n");
    write("settings.txt", "palette_textencode 2.0.0\r\n"
                          "header:%n (%f.gpl): \r\n"
                          "entry:%i=(%r, %g, %b)\r\n"
                          "divider:;\\n\r\n"
                          "bottom:.\r\n"
                          "encoding:LATIN1\r\n");
    write("render.txt", "palette_render 2.0.0\nentry:%i\n");
    write("utf16.txt", "palette_textencode 2.0.0\nheader:\xc3\xa9\xe2\x82\xac:\nencoding:UTF-16\n");
}

void TestCliPalette::show_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("properties");
    QTest::newRow("recorded like the window")
        << QStringList{"@fire.gpl"} << R"({"comment":"","file":"fire","file.ext":"fire.gpl","name":"fire"})";
    QTest::newRow("raw") << QStringList{"@fire.gpl", "--raw"}
                         << R"({"comment":"","file":"","file.ext":"","name":"Fire"})";
    QTest::newRow("format word beats the extension")
        << QStringList{"--from", "gimp", "@fire.txt"}
        << R"({"comment":"","file":"fire","file.ext":"fire.txt","name":"fire"})";
    QTest::newRow("format word with equals sign, raw")
        << QStringList{"@fire.txt", "--raw", "--from=GPL"}
        << R"({"comment":"","file":"","file.ext":"","name":"Fire"})";
}

void TestCliPalette::show()
{
    QFETCH(QStringList, args);
    QFETCH(QString, properties);
    const CliRun r = runCli(QStringList{"palette", "show"} + inDir(args));
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    const QString expected = QString(R"({"entries":%1,"properties":%2})").arg(fireEntries, properties);
    // Compared as parsed JSON, and the numbers must be plain integers, never exponents.
    QCOMPARE(QJsonDocument::fromJson(r.out), QJsonDocument::fromJson(expected.toUtf8()));
    QVERIFY2(r.out.contains(fireEntries), r.out.constData());
}

void TestCliPalette::convertRoundTrip()
{
    CliRun r = runCli({"palette", "convert", path("fire.gpl"), path("fire.hex")});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    QCOMPARE(read("fire.hex"), QByteArray("ff80000000ff123456\n"));
    r = runCli({"palette", "convert", path("fire.hex"), path("back.gpl")});
    QCOMPARE(r.code, 0);
    r = runCli({"palette", "show", path("back.gpl")});
    QCOMPARE(r.code, 0);
    QVERIFY2(r.out.contains(QByteArray("\"entries\":") + fireEntries), r.out.constData());
    QVERIFY(read("back.gpl").startsWith("GIMP Palette\nName: fire\n#\n255 128   0\tUntitled\n"));
}

void TestCliPalette::convertWrites_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("--to over the extension") << QStringList{"@fire.gpl", "@out.dat", "--to", "hextxt"}
                                             << "out.dat" << QByteArray("ff8000\n0000ff\n123456\n");
    QTest::newRow("--from and --to") << QStringList{"--from", "gimp", "@fire.txt", "@o.txt", "--to", "hex"}
                                     << "o.txt" << QByteArray("ff80000000ff123456\n");
    QTest::newRow("options") << QStringList{"@fire.gpl",    "@out.js",  "--option",
                                            "js.name=fire", "--option", "js.type=hex"}
                             << "out.js"
                             << QByteArray("var fire = [\"#ff8000\", \"#0000ff\", \"#123456\"];\n");
    QTest::newRow("later option wins")
        << QStringList{"@fire.gpl", "@out.css", "--option=css.name=.a", "--option", "css.name=.b"}
        << "out.css"
        << QByteArray(".b0 { background-color: #ff8000; }\n"
                      ".b1 { background-color: #0000ff; }\n"
                      ".b2 { background-color: #123456; }\n");
}

void TestCliPalette::convertWrites()
{
    QFETCH(QStringList, args);
    QFETCH(QString, out);
    QFETCH(QByteArray, expected);
    const CliRun r = runCli(QStringList{"palette", "convert"} + inDir(args));
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    QCOMPARE(read(out), expected);
}

void TestCliPalette::text_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("clipboard template")
        << QStringList{"@fire.gpl", "-"} << QByteArray("#ff8000, #0000ff, #123456");
    QTest::newRow("selection") << QStringList{"@fire.gpl", "-", "--select", "0,2"}
                               << QByteArray("#ff8000, #123456");
    QTest::newRow("selection range") << QStringList{"@fire.gpl", "-", "--select", "1-2"}
                                     << QByteArray("#0000ff, #123456");
    QTest::newRow("settings file")
        << QStringList{"@fire.gpl", "-", "--settings", "@settings.txt"}
        << QByteArray("fire (fire.gpl): 0=(255, 128, 0);\n1=(0, 0, 255);\n2=(18, 52, 86).");
    QTest::newRow("settings, selection, set")
        << QStringList{"@fire.gpl", "-",     "--settings", "@settings.txt", "--select",
                       "2,0",       "--set", "divider=|",  "--set",         "bottom=%n"}
        << QByteArray("fire (fire.gpl): 0=(255, 128, 0)|2=(18, 52, 86)fire");
    QTest::newRow("encoding") << QStringList{"@fire.gpl", "-", "--settings", "@utf16.txt", "--select", "1"}
                              << utf16(QString::fromUtf8("\xc3\xa9\xe2\x82\xac:#0000ff"));
}

void TestCliPalette::text()
{
    QFETCH(QStringList, args);
    QFETCH(QByteArray, expected);
    CliRun r = runCli(QStringList{"palette", "text"} + inDir(args));
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    QCOMPARE(r.out.toHex(), expected.toHex());

    // The same bytes into a file.
    QStringList toFile = inDir(args);
    toFile[1] = path("out.txt");
    r = runCli(QStringList{"palette", "text"} + toFile);
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    QVERIFY(r.out.isEmpty());
    QCOMPARE(read("out.txt").toHex(), expected.toHex());
}

void TestCliPalette::failures_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("err");
    QTest::newRow("missing input") << QStringList{"show", "@none.gpl"}
                                   << "Error on parsing GIMP palette: Could not open file\n'@none.gpl'.\n";
    QTest::newRow("unknown extension")
        << QStringList{"show", "@fire.xyz"}
        << "Could not load: Unable to load palette @fire.xyz.\nUnrecognized format.\n";
    QTest::newRow("settings for another dialog")
        << QStringList{"text", "@fire.gpl", "-", "--settings", "@render.txt"}
        << "Invalid settings: These settings belong to \"palette_render\", not to \"palette_textencode\".\n";
    QTest::newRow("missing settings file")
        << QStringList{"text", "@fire.gpl", "-", "--settings", "@none.txt"}
        << "Error on reading settings: Could not open file\n'@none.txt'.\n";
    QTest::newRow("selection past the end")
        << QStringList{"text", "@fire.gpl", "-", "--select", "1-3"}
        << "Invalid selection: The selection names index 3, but the palette "
           "has 3 entries.\n";
    QTest::newRow("huge selection checked first")
        << QStringList{"text", "@fire.gpl", "-", "--select", "0-2000000000"}
        << "Invalid selection: The selection names index 2000000000, but the palette has 3 entries.\n";
    QTest::newRow("text into a missing folder")
        << QStringList{"text", "@fire.gpl", "@no/such/dir/out.txt"}
        << "Could not save: Unable to save palette under\n@no/such/dir/out.txt.\nCould not open file.\nNo such file "
           "or directory\n";
}

void TestCliPalette::failures()
{
    QFETCH(QStringList, args);
    QFETCH(QString, err);
    const CliRun r = runCli(QStringList{"palette"} + inDir(args));
    QCOMPARE(r.err, err.replace('@', m_dir->path() + '/'));
    QCOMPARE(r.code, 1);
    QVERIFY(r.out.isEmpty());
}

void TestCliPalette::failedWriteKeepsOldFile_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("err");
    QTest::newRow("unreadable input") << QStringList{"convert", "@broken.gpl", "@old.gpl"} << "old.gpl"
                                      << "Error on parsing GIMP palette";
    QTest::newRow("too many colours for GIF") << QStringList{"convert", "@big.gpl", "@old.gif"} << "old.gif"
                                              << "Error on writing GIF image: Too many colors.\n";
    QTest::newRow("unknown output format")
        << QStringList{"convert", "@fire.gpl", "@old.xyz"} << "old.xyz"
        << "Error on palette export: The format to export into is not known "
           "or supported.\n";
    QTest::newRow("text with a bad selection")
        << QStringList{"text", "@fire.gpl", "@old.txt", "--select", "5"} << "old.txt"
        << "Invalid selection";
}

void TestCliPalette::failedWriteKeepsOldFile()
{
    QFETCH(QStringList, args);
    QFETCH(QString, out);
    QFETCH(QString, err);
    write(out, "precious");
    CliRun r = runCli(QStringList{"palette"} + inDir(args));
    QCOMPARE(r.code, 1);
    QVERIFY2(r.err.startsWith(err), qPrintable(r.err));
    QCOMPARE(read(out), QByteArray("precious"));

    // Nor is a new file created.
    QVERIFY(QFile::remove(path(out)));
    r = runCli(QStringList{"palette"} + inDir(args));
    QCOMPARE(r.code, 1);
    QVERIFY(!QFile::exists(path(out)));
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden).size(), 7);
}

void TestCliPalette::badUsage_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::newRow("show without file") << QStringList{"show"};
    QTest::newRow("show two files") << QStringList{"show", "@fire.gpl", "@fire.txt"};
    QTest::newRow("unknown option") << QStringList{"show", "@fire.gpl", "--rw"};
    QTest::newRow("flag with value") << QStringList{"show", "@fire.gpl", "--raw=1"};
    QTest::newRow("unknown format word") << QStringList{"show", "@fire.gpl", "--from", "gimpy"};
    QTest::newRow("option without value") << QStringList{"show", "@fire.gpl", "--from"};
    QTest::newRow("single option twice")
        << QStringList{"show", "@fire.gpl", "--from", "gpl", "--from", "gpl"};
    QTest::newRow("convert unknown --to") << QStringList{"convert", "@fire.gpl", "@x.gpl", "--to", "png"};
    QTest::newRow("convert unknown option key")
        << QStringList{"convert", "@fire.gpl", "@x.js", "--option", "js.nom=a"};
    QTest::newRow("convert option without =")
        << QStringList{"convert", "@fire.gpl", "@x.js", "--option", "js.name"};
    QTest::newRow("convert bad option value")
        << QStringList{"convert", "@fire.gpl", "@x.js", "--option", "js.type=hsl"};
    QTest::newRow("text without output") << QStringList{"text", "@fire.gpl"};
    QTest::newRow("set without =") << QStringList{"text", "@fire.gpl", "-", "--set", "header"};
    QTest::newRow("batch without --to") << QStringList{"batch", "@out", "@fire.gpl"};
    QTest::newRow("batch to an image format") << QStringList{"batch", "@out", "@fire.gpl", "--to", "png"};
    QTest::newRow("batch without files") << QStringList{"batch", "@out", "--to", "jasc"};
    QTest::newRow("batch project with options")
        << QStringList{"batch", "@out", "@fire.gpl", "--to", "cxw", "--option", "columns=4"};
    for (const char *list : {"", "a", "3-", "-3", "5-2", "1,,2", "1;2", "+1", "0x1", "99999999999", "1-2-3"})
        QTest::newRow(qPrintable(QString("select '%1'").arg(list)))
            << QStringList{"text", "@fire.gpl", "-", "--select", list};
}

void TestCliPalette::badUsage()
{
    QFETCH(QStringList, args);
    const CliRun r = runCli(QStringList{"palette"} + inDir(args));
    QCOMPARE(r.code, 2);
    QVERIFY(r.out.isEmpty());
    QVERIFY2(r.err.contains("Usage: chromaxis-cli"), qPrintable(r.err));
    QVERIFY(!QFile::exists(path("x.gpl")) && !QFile::exists(path("x.js")) && !QFile::exists(path("out")));
}

// Every file becomes OUTDIR/<base name>.<format's extension>; the bad ones are reported after all
// the others are done.
void TestCliPalette::batch()
{
    write("sea.hex", "0000800080ff\n");
    write("notes.txt", fireGpl);
    const QString out = path("out");
    CliRun r = runCli({"palette", "batch", out, path("fire.gpl"), path("broken.gpl"), path("sea.hex"),
                       path("notes.txt"), "--to", "jasc"});
    QCOMPARE(r.code, 1);
    QVERIFY(r.out.isEmpty());
    QVERIFY2(
        r.err.startsWith(
            QString("2 of 4 palettes were written to %1.\n\nThese palettes failed:\nbroken.gpl: ").arg(out)),
        qPrintable(r.err));
    QVERIFY2(r.err.endsWith("\nnotes.txt: Unable to load palette notes.txt. Unrecognized format.\n"),
             qPrintable(r.err));
    QCOMPARE(QDir(out).entryList(QDir::Files), QStringList({"fire.jasc", "sea.jasc"}));
    QVERIFY(read("out/fire.jasc").startsWith("JASC-PAL\r\n"));
    r = runCli({"palette", "show", path("out/fire.jasc")});
    QCOMPARE(r.code, 0);
    QVERIFY2(r.out.contains(QByteArray("\"entries\":") + fireEntries), r.out.constData());
    r = runCli({"palette", "show", path("out/sea.jasc")});
    QVERIFY2(r.out.contains(R"("entries":[[0,0,32768,65535],[0,32768,65280,65535]])"), r.out.constData());

    // Projects keep the palette whole; a clean run says nothing and succeeds.
    r = runCli({"palette", "batch", out, path("fire.gpl"), "--to", "cxw"});
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    r = runCli({"palette", "show", path("out/fire.cxw")});
    QVERIFY2(r.out.contains(QByteArray("\"entries\":") + fireEntries), r.out.constData());
    // The exporter's options reach the writer.
    r = runCli({"palette", "batch", out, path("fire.gpl"), "--to", "js", "--option", "js.name=flames"});
    QCOMPARE(r.code, 0);
    QVERIFY2(read("out/fire.js").contains("flames"), read("out/fire.js").constData());
}

QTEST_GUILESS_MAIN(TestCliPalette)
#include "tst_cli_palette.moc"
