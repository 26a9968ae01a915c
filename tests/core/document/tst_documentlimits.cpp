// The hard limit on a document's palette and selection: a command that would pass it is refused
// with a clear message and changes nothing, whichever face (window, macro, command line) runs it.
// Long selection lists are read and applied in time proportional to their size.

#include "document/chromaxisdocument.h"
#include "document/documentcommands.h"
#include "document/documentproject.h"
#include "document/macroplayer.h"
#include "operations/paletteoperations.h"
#include "operations/selectionlist.h"
#include "palette/describedexception.h"
#include "palette/palettelimits.h"
#include "storage/projectfile.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>

namespace {

constexpr int limit = PaletteLimits::maximumLength;

Palette<uint> paletteOf(int size)
{
    Palette<uint> p;
    p.entries().resize(size_t(size), {0x1200, 0x3400, 0x5600, 65535});
    for (int i = 0; i < size; i += 97)
        p[i] = {uint(i) & 0xFFFF, 0, 0, 65535};
    return p;
}

QString tooLong(qint64 length)
{
    return QStringLiteral(
               "Palette too large: The palette would hold %1 entries; a palette holds at most 1048576 "
               "entries.\nThe command changed nothing.")
        .arg(length);
}

QString messageOf(const std::function<void()> &f)
{
    try {
        f();
    } catch (const DescribedException &e) {
        return e.title() + QStringLiteral(": ") + e.message();
    }
    return QString();
}

std::vector<MacroFile::Step> macroOf(const QString &text)
{
    return MacroFile::decode(text.toUtf8(), QStringLiteral("test.cxm"));
}

} // namespace

class TestDocumentLimits : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void commandsPastTheLimitChangeNothing_data();
    void commandsPastTheLimitChangeNothing();
    void pasteReachesTheLimitExactly();
    void doublingMacroStopsAtTheLimit();
    void longSelectionListsTakeLinearTime();

private:
    QTemporaryDir m_dir;
};

void TestDocumentLimits::initTestCase()
{
    QVERIFY(m_dir.isValid());
    PaletteOperations::registerOperation("test_grow",
                                         {[](const Palette<uint> &p, const std::set<int> &,
                                             const SettingsText::Pairs &) { return paletteOf(p.size() + 2); },
                                          false});
}

// Each row starts from a document at the limit less one entry, with an image, a selection, a
// history step and a recorded macro step, and names a command that would pass the limit.
void TestDocumentLimits::commandsPastTheLimitChangeNothing_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("message");
    QTest::newRow("paste a list without a selection") << "paste" << tooLong(limit + 1);
    QTest::newRow("palette size 1e8") << "size" << tooLong(100000000);
    QTest::newRow("palette size one past the limit") << "size+1" << tooLong(limit + 1);
    QTest::newRow("maximum palette size past the limit")
        << "maximum"
        << "Invalid settings: The maximum palette size can be at most 1048576 entries.";
    QTest::newRow("palette operation") << "operation" << tooLong(limit + 1);
    QTest::newRow("dialog result") << "install" << tooLong(limit + 1);
    QTest::newRow("conversion result") << "conversion" << tooLong(limit + 1);
    QTest::newRow("project") << "project" << tooLong(limit + 1);
    QTest::newRow("palette file") << "palette file" << tooLong(limit + 1);
    QTest::newRow("selection file")
        << "selection file"
        << "Could not load: The selection in '%1' names more than 1048576 entries.";
    QTest::newRow("macro paste") << "macro" << tooLong(limit + 1);
}

void TestDocumentLimits::commandsPastTheLimitChangeNothing()
{
    QFETCH(QString, command);
    QFETCH(QString, message);
    ChromaxisDocument doc;
    DocumentCommands commands(doc, nullptr);
    doc.setPaletteState({paletteOf(limit - 1), 0, QString(), false, false}, true);
    doc.setImageState({DocumentImage::fromIndexes8(2, 1, {0, 1}), QStringLiteral("image.png"), false}, true);
    doc.setRecording(true);
    commands.setFillColor({0, 0, 65535, 65535});
    commands.selectPattern({{"start_index", "3"}, {"full_palette", "0"}, {"end_index", "5"}});
    PaletteViewSettings settings = doc.paletteViewSettings();
    settings.maximumSize = limit;
    doc.setPaletteViewSettings(settings, true);

    const Palette<uint> palette = doc.palette();
    const DocumentImage image = doc.image();
    const std::set<int> selection = doc.selection();
    const int history = doc.history().count();
    const int steps = doc.macros().count();
    const QString file = m_dir.filePath("big");
    QString expected = message;

    const QString got = messageOf([&] {
        if (command == "paste") {
            commands.paste({}, {{1, 2, 3, 4}, {5, 6, 7, 8}}, false);
        } else if (command == "size") {
            commands.setPaletteSize(100000000);
        } else if (command == "size+1") {
            commands.setPaletteSize(limit + 1);
        } else if (command == "maximum") {
            commands.setMaximumPaletteSize(limit + 1);
        } else if (command == "operation") {
            commands.applyPaletteOperation("test_grow", {});
        } else if (command == "install") {
            commands.installPalette(paletteOf(limit + 1), "test_grow", QString());
        } else if (command == "conversion") {
            commands.installConversion(DocumentImage::fromIndexes8(1, 1, {0}), paletteOf(limit + 1),
                                       "image_convert");
        } else if (command == "project") {
            ProjectData data;
            data.palette = paletteOf(limit + 1);
            data.image = DocumentImage::fromIndexes8(1, 1, {0});
            ProjectFile::write(file + ".cxw", data);
            commands.openProject(file + ".cxw");
        } else if (command == "palette file") {
            QFile f(file + ".gpl");
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write("GIMP Palette\n");
            const QByteArray line = "1 2 3\n";
            f.write(line.repeated(limit + 1));
            f.close();
            commands.loadPalette(file + ".gpl");
        } else if (command == "selection file") {
            QFile f(file + ".txt");
            QVERIFY(f.open(QIODevice::WriteOnly));
            QByteArray text;
            for (int i = 0; i <= limit; ++i)
                text += QByteArray::number(i) + '\n';
            f.write(text);
            f.close();
            expected = message.arg(file + ".txt");
            commands.loadSelection(file + ".txt");
        } else if (command == "macro") {
            MacroPlayer player(nullptr);
            player.play(doc,
                        macroOf("chromaxis-macro 1\n%step copy\nselection:0,1\n%step paste\nselection:\n"));
        }
    });
    QCOMPARE(got, expected);
    QVERIFY(doc.palette() == palette);
    QCOMPARE(doc.image().indexCells(), image.indexCells());
    QCOMPARE(doc.imageFileName(), QString("image.png"));
    QCOMPARE(doc.selection(), selection);
    QCOMPARE(doc.history().count(), history);
    QCOMPARE(doc.macros().count(), steps);
    QCOMPARE(doc.paletteViewSettings().maximumSize, limit);
    // Nothing was left half done: the next command and its undo work as ever.
    commands.remove({0});
    QCOMPARE(doc.palette().size(), limit - 2);
    QVERIFY(doc.undo());
    QVERIFY(doc.palette() == palette);
}

// The limit itself is a length a palette may have.
void TestDocumentLimits::pasteReachesTheLimitExactly()
{
    ChromaxisDocument doc;
    DocumentCommands commands(doc, nullptr);
    doc.setPaletteState({paletteOf(limit - 2), 0, QString(), false, false}, true);
    commands.paste({}, {{1, 2, 3, 4}, {5, 6, 7, 8}}, false);
    QCOMPARE(doc.palette().size(), limit);
    QCOMPARE(doc.palette()[limit - 1], (RGBAColor<uint>{5, 6, 7, 8}));
    QCOMPARE(messageOf([&] { commands.paste({}, {{1, 2, 3, 4}}, false); }), tooLong(limit + 1));
    // A single colour is not appended past the limit, as it is not past the window's maximum.
    PaletteViewSettings settings = doc.paletteViewSettings();
    settings.maximumSize = limit;
    doc.setPaletteViewSettings(settings, true);
    commands.paste({}, {{1, 2, 3, 4}}, true);
    QCOMPARE(doc.palette().size(), limit);
}

// Each copy and paste of the whole palette doubles it: a few hundred bytes of macro used to take
// gigabytes. The step that would pass the limit is refused; the steps before it stay played.
void TestDocumentLimits::doublingMacroStopsAtTheLimit()
{
    ChromaxisDocument doc;
    doc.setPaletteState({paletteOf(2), 0, QString(), false, false}, true);
    QString text = QStringLiteral("chromaxis-macro 1\n");
    for (int i = 0; i < 40; ++i)
        text += QStringLiteral("%step copy\nselection:\n%step paste\nselection:\n");
    MacroPlayer player(nullptr);
    QCOMPARE(messageOf([&] { player.play(doc, macroOf(text)); }), tooLong(2 * limit));
    QCOMPARE(doc.palette().size(), limit);
}

// 15,000 ranges on a 65,536-entry palette, through every step that reads a selection; a reader or
// an edit that went through the ranges once for every entry took minutes.
void TestDocumentLimits::longSelectionListsTakeLinearTime()
{
    ChromaxisDocument doc;
    doc.setPaletteState({paletteOf(65536), 0, QString(), false, false}, true);
    QStringList ranges;
    for (int i = 0; i < 15000; ++i)
        ranges << QStringLiteral("%1-%2").arg(4 * i).arg(4 * i + 1);
    const QString list = ranges.join(QLatin1Char(','));
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(SelectionList::parse(list, 65536).size(), size_t(30000));
    QString text = QStringLiteral("chromaxis-macro 1\n");
    for (const char *step : {"copy", "replace", "edit\ncolor:1,2,3,4", "tint", "brightness_contrast",
                             "interpolate_selected", "palette_invert_order", "paste", "delete"})
        text += QStringLiteral("%step %1\nselection:%2\n").arg(QLatin1String(step), list);
    MacroPlayer player(nullptr);
    const MacroPlayer::Report report = player.play(doc, macroOf(text));
    QCOMPARE(report.played, 9);
    // The paste put the 30,000 copied colours in place of each selected entry up to the
    // window's maximum; the delete then took the selected entries of what was left.
    QVERIFY(doc.palette().size() > 0);
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
}

QTEST_GUILESS_MAIN(TestDocumentLimits)
#include "tst_documentlimits.moc"
