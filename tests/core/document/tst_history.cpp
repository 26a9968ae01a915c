#include "document/chromaxisdocument.h"
#include "palette/describedexception.h"
#include "document/macroplayer.h"
#include "operations/paletteedits.h"
#include "operations/palettegenerators.h"
#include "refusal.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

Palette<uint> paletteOf(std::initializer_list<uint> values)
{
    Palette<uint> p;
    for (uint v : values)
        p.append({v, v, v, 65535});
    return p;
}

// A step that only counts what was asked of it.
class CountingAction : public ChromaxisUndoAction
{
public:
    CountingAction(QStringList &log, QString name, bool succeed = true)
        : ChromaxisUndoAction(nullptr), m_log(log), m_name(std::move(name)), m_succeed(succeed)
    {
    }
    ~CountingAction() override { m_log << "delete " + m_name; }
    bool undo() override
    {
        m_log << "undo " + m_name;
        return m_succeed;
    }
    bool redo() override
    {
        m_log << "redo " + m_name;
        return m_succeed;
    }

private:
    QStringList &m_log;
    QString m_name;
    bool m_succeed;
};

} // namespace

class TestHistory : public QObject
{
    Q_OBJECT
private slots:
    void undoSystem_data();
    void undoSystem();
    void documentPaletteUndoRedo();
    void documentImageAndGroupedChange();
    void documentSettingsUndo();
    void macroMirrorsHistory_data();
    void macroMirrorsHistory();
    void macroRecordingOff();
    void macroKeepsCommandsWithoutStep_data();
    void macroKeepsCommandsWithoutStep();
    void macroFileRoundTrip();
    void macroFileErrors_data();
    void macroFileErrors();
    void playerReplaysSteps();
    void playerReportsUnknownSteps();
};

// A script drives the history step by step: "+a" adds a step named a ("+a!" one whose undo and
// redo fail), "(" opens a group and ")" closes it, "u" and "r" undo and redo ("u-" and "r-" find
// nothing to do), "#n" and "@n" check the count and the position, "U", "!U", "R" and "!R" whether
// there is something to undo or redo, and "~" destroys the history. The log lists what the steps
// were asked to do, in order.
void TestHistory::undoSystem_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QStringList>("log");
    QString limit;
    QStringList limitLog;
    for (int i = 0; i < 25; ++i)
        limit += QString("+%1 ").arg(i);
    limit += "#19 @19";
    for (int i = 0; i <= 5; ++i) // the oldest steps go as the newest arrive
        limitLog << QString("delete %1").arg(i);
    for (int i = 24; i >= 6; --i) {
        limit += " u";
        limitLog << QString("undo %1").arg(i);
    }
    QTest::newRow("the limit leaves nineteen") << limit + " !U" << limitLog;
    QTest::newRow("undo and redo at the ends")
        << "u- r- !U +a U !R r- u u- R r" << QStringList{"undo a", "redo a"};
    QTest::newRow("a new step drops the redo, from the end backwards")
        << "+a +b +c u u +d #2 !R" << QStringList{"undo c", "undo b", "delete c", "delete b"};
    QTest::newRow("an empty group is a step") << "( ) #1 u @0 r @1" << QStringList{};
    QTest::newRow("a group undoes in reverse")
        << "( +1 +2 #0 ) #1 u r ~"
        << QStringList{"undo 2", "undo 1", "redo 1", "redo 2", "delete 2", "delete 1"};
    // The undo reports that it ran and the position stays; every member was asked.
    QTest::newRow("a failing undo keeps the position")
        << "( +ok +fails! ) u @1" << QStringList{"undo fails", "undo ok"};
}

void TestHistory::undoSystem()
{
    QFETCH(QString, script);
    QFETCH(QStringList, log);
    QStringList got;
    auto h = std::make_unique<ChromaxisUndoSystem>(nullptr);
    for (const QString &token : script.split(' ', Qt::SkipEmptyParts)) {
        const QString arg = token.mid(1);
        if (token.startsWith('+'))
            h->addUndoAction(
                new CountingAction(got, arg.chopped(arg.endsWith('!') ? 1 : 0), !arg.endsWith('!')));
        else if (token == "(") {
            h->beginGroup();
            QVERIFY(h->isGroupOpen());
        } else if (token == ")")
            h->endGroup();
        else if (token.startsWith('u') || token.startsWith('r'))
            QVERIFY2((token[0] == 'u' ? h->undo() : h->redo()) == (arg != "-"), qPrintable(token));
        else if (token.startsWith('#'))
            QCOMPARE(h->count(), arg.toInt());
        else if (token.startsWith('@'))
            QCOMPARE(h->position(), arg.toInt());
        else if (token.endsWith('U'))
            QVERIFY2(h->canUndo() == !token.startsWith('!'), qPrintable(token));
        else if (token.endsWith('R'))
            QVERIFY2(h->canRedo() == !token.startsWith('!'), qPrintable(token));
        else if (token == "~")
            h.reset();
        else
            QFAIL(qPrintable("unknown step " + token));
    }
    QCOMPARE(got, log);
}

void TestHistory::documentPaletteUndoRedo()
{
    ChromaxisDocument doc;
    const Palette<uint> gray = doc.palette();
    doc.setPalette(paletteOf({1, 2, 3}));
    QVERIFY(doc.isPaletteModified());
    PaletteState loaded = doc.paletteState();
    loaded.palette = paletteOf({9});
    loaded.fileName = "nine.gpl";
    loaded.paletteModified = false;
    loaded.builtinIndex = 7;
    doc.setPaletteState(loaded);
    QCOMPARE(doc.history().count(), 2);

    QSignalSpy changed(&doc, &ChromaxisDocument::paletteChanged);
    QVERIFY(doc.undo());
    QCOMPARE(doc.palette(), paletteOf({1, 2, 3}));
    QCOMPARE(doc.paletteFileName(), QString());
    QCOMPARE(doc.builtinIndex(), 0);
    QVERIFY(doc.isPaletteModified());
    QVERIFY(doc.undo());
    QCOMPARE(doc.palette(), gray);
    QVERIFY(!doc.isPaletteModified());
    QVERIFY(!doc.undo());
    QCOMPARE(changed.count(), 2);
    // Restoring records nothing new.
    QCOMPARE(doc.history().count(), 2);
    QVERIFY(doc.redo());
    QVERIFY(doc.redo());
    QCOMPARE(doc.palette(), paletteOf({9}));
    QCOMPARE(doc.paletteFileName(), QString("nine.gpl"));
    QCOMPARE(doc.builtinIndex(), 7);
    QVERIFY(!doc.isPaletteModified());
}

void TestHistory::documentImageAndGroupedChange()
{
    ChromaxisDocument doc;
    doc.setImageState({DocumentImage::fromIndexes32(2, 1, {0, 1}), "cells.npy", false});
    QCOMPARE(doc.image().picture().pixel(1, 0), qRgb(1, 1, 1));
    // One command reorders the palette and re-indexes the image: one step.
    doc.beginGroup();
    doc.setPalette(PaletteGenerators::invertOrder(doc.palette()));
    doc.setImage(DocumentImage::fromIndexes32(2, 1, {255, 254}));
    doc.endGroup();
    QCOMPARE(doc.history().count(), 2);
    QCOMPARE(doc.image().picture().pixel(1, 0), qRgb(1, 1, 1));
    QVERIFY(doc.isImageModified());
    QVERIFY(doc.undo());
    QCOMPARE(doc.image().indexCells(), std::vector<uint32_t>({0, 1}));
    QCOMPARE(doc.palette()[1].r, 256u);
    QCOMPARE(doc.image().picture().pixel(1, 0), qRgb(1, 1, 1));
    QVERIFY(!doc.isImageModified());
    QCOMPARE(doc.imageFileName(), QString("cells.npy"));
    QVERIFY(doc.undo());
    QVERIFY(!doc.hasImage());
    QVERIFY(doc.redo());
    QVERIFY(doc.redo());
    QCOMPARE(doc.image().indexCells(), std::vector<uint32_t>({255, 254}));
    QCOMPARE(doc.palette()[0].r, 65280u);
}

void TestHistory::documentSettingsUndo()
{
    ChromaxisDocument doc;
    PaletteViewSettings s = doc.paletteViewSettings();
    s.fixedSize = true;
    s.fillColor = {1, 2, 3, 4};
    doc.setPaletteViewSettings(s);
    doc.setPaletteViewSettings(s); // no change, no step
    QCOMPARE(doc.history().count(), 1);
    QVERIFY(doc.undo());
    QVERIFY(!doc.paletteViewSettings().fixedSize);
    QCOMPARE(doc.paletteViewSettings().fillColor, RGBAColor<uint>(0, 0, 0, 65535));
    QVERIFY(doc.redo());
    QCOMPARE(doc.paletteViewSettings(), s);
}

void TestHistory::macroMirrorsHistory_data()
{
    QTest::addColumn<QStringList>("recorded");
    QTest::addColumn<QStringList>("effective");
    QTest::newRow("undo drops a step") << QStringList{"a", "b", "undo", "c"} << QStringList{"a", "c"};
    QTest::newRow("redo brings it back") << QStringList{"a", "b", "undo", "redo"} << QStringList{"a", "b"};
    QTest::newRow("redo after a new step does nothing") << QStringList{"a", "undo", "c", "redo"} << QStringList{"c"};
    QTest::newRow("undo past the start") << QStringList{"undo", "undo", "a"} << QStringList{"a"};
}

void TestHistory::macroMirrorsHistory()
{
    QFETCH(QStringList, recorded);
    QFETCH(QStringList, effective);
    ChromaxisMacroSystem m;
    for (const QString &name : recorded)
        m.addMacroAction(new ChromaxisMacroAction(name));
    QStringList names;
    for (const ChromaxisMacroAction *a : m.effectiveSteps())
        names << a->name();
    QCOMPARE(names, effective);
}

void TestHistory::macroRecordingOff()
{
    ChromaxisDocument doc;
    doc.recordMacroStep("palette_invert_order");
    QCOMPARE(doc.macros().count(), 0);
    doc.setRecording(true);
    doc.setPalette(paletteOf({1}));
    doc.recordMacroStep("palette_invert_order");
    doc.recordMacroStep("copy"); // no history step of its own
    doc.setPalette(paletteOf({2}));
    doc.recordMacroStep("paste");
    QCOMPARE(doc.macros().position(), 3);
    // An undo while recording takes exactly the undone command out of the macro.
    doc.undo();
    QCOMPARE(doc.macros().position(), 2);
    doc.undo();
    QCOMPARE(doc.macros().position(), 0);
    doc.redo(); // the copy made after the command comes back with it
    QCOMPARE(doc.macros().position(), 2);
    doc.redo();
    QCOMPARE(doc.macros().position(), 3);
    // A grouped command counts once.
    doc.beginGroup();
    doc.setPalette(paletteOf({3}));
    doc.setImage(DocumentImage::fromIndexes32(1, 1, {0}));
    doc.endGroup();
    doc.recordMacroStep("image_convert_grayscale");
    doc.undo();
    QCOMPARE(doc.macros().position(), 3);
    doc.clearHistory();
    doc.recordMacroStep("zoom_in"); // nothing pending after a cleared history
    QCOMPARE(doc.macros().position(), 4);
}

// Commands that make no history step of their own (a copy, a zoom) around undos and redos: the
// effective macro is what a replay needs to reach the state the user sees. In a script,
// "edit NAME" changes the palette and records NAME, "view NAME" only records NAME.
void TestHistory::macroKeepsCommandsWithoutStep_data()
{
    QTest::addColumn<QStringList>("script");
    QTest::addColumn<QStringList>("effective");
    QTest::newRow("a copy after an edit comes back with its redo")
        << QStringList{"edit a", "view copy", "undo", "redo"} << QStringList{"a", "copy"};
    QTest::newRow("undo everything, redo everything")
        << QStringList{"edit a", "view copy", "edit b", "view zoom_in", "undo", "undo", "redo", "redo"}
        << QStringList{"a", "copy", "b", "zoom_in"};
    QTest::newRow("a copy after an undo keeps the redo")
        << QStringList{"edit a", "undo", "view copy", "redo"} << QStringList{"copy", "a"};
    QTest::newRow("a zoom between two undos")
        << QStringList{"edit a", "edit b", "undo", "view zoom_in", "undo", "redo", "redo"}
        << QStringList{"a", "zoom_in", "b"};
    QTest::newRow("a new edit after the copy ends the redo")
        << QStringList{"edit a", "undo", "view copy", "edit b", "nothing to redo"} << QStringList{"copy", "b"};
    QTest::newRow("an undo takes a later copy out with the edit")
        << QStringList{"edit a", "view copy", "undo"} << QStringList{};
}

void TestHistory::macroKeepsCommandsWithoutStep()
{
    QFETCH(QStringList, script);
    QFETCH(QStringList, effective);
    ChromaxisDocument doc;
    doc.setRecording(true);
    uint value = 1;
    for (const QString &line : script) {
        const QString name = line.section(' ', 1);
        if (line.startsWith("edit ")) {
            doc.setPalette(paletteOf({value++}));
            doc.recordMacroStep(name);
        } else if (line.startsWith("view ")) {
            doc.recordMacroStep(name);
        } else if (line == "undo") {
            QVERIFY(doc.undo());
        } else if (line == "redo") {
            QVERIFY(doc.redo());
        } else {
            QVERIFY(!doc.redo());
        }
    }
    QStringList names;
    for (const ChromaxisMacroAction *a : doc.macros().effectiveSteps())
        names << a->name();
    QCOMPARE(names, effective);
}

void TestHistory::macroFileRoundTrip()
{
    const std::vector<MacroFile::Step> steps = {
        {"load_image", "filename:/tmp/a b.png\n"},
        {"palette_invert_order", ""},
        {"tint", "tint 2.0.0\ncolor:4278190080\n%odd:value\n\nlast:x\n"},
    };
    QTemporaryDir dir;
    MacroFile::write(dir.filePath("m.cxm"), steps);
    const auto back = MacroFile::read(dir.filePath("m.cxm"));
    QCOMPARE(int(back.size()), 3);
    for (size_t i = 0; i < steps.size(); ++i) {
        QCOMPARE(back[i].name, steps[i].name);
        QCOMPARE(back[i].parameters, steps[i].parameters);
    }
}

void TestHistory::macroFileErrors_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("no header") << QByteArray("%step load_image\n");
    QTest::newRow("parameters first") << QByteArray("chromaxis-macro 1\nfilename:x\n");
    QTest::newRow("nameless step") << QByteArray("chromaxis-macro 1\n%step \n");
    QTest::newRow("unknown directive") << QByteArray("chromaxis-macro 1\n%stop x\n");
    QTest::newRow("empty") << QByteArray();
}

void TestHistory::macroFileErrors()
{
    QFETCH(QByteArray, text);
    const QString got = refusal([&] { MacroFile::decode(text, "m.cxm"); });
    QVERIFY2(got.startsWith("Error on reading macro: ") && got.contains("m.cxm"), qPrintable(got));
}

void TestHistory::playerReplaysSteps()
{
    ChromaxisDocument doc;
    doc.setPalette(paletteOf({10, 20, 30, 40, 50}));
    MacroPlayer player;
    const auto report = player.play(doc, {{"palette_invert_order", ""},
                                          {"copy", "selection:0\n"},
                                          {"paste", "selection:2\n"},
                                          {"delete", "selection:0-1\n"},
                                          {"edit", "selection:0\ncolor:1,2,3,4\n"},
                                          {"zoom_in", ""},
                                          {"palette_fix_size", "fixed:1\n"},
                                          {"palette_set_default_size", "size:2\n"}});
    QCOMPARE(report.played, 8);
    QVERIFY(report.skipped.isEmpty());
    // 50 40 30 20 10 -> copy 50 -> paste after 30 -> 50 40 30 50 20 10 -> delete 0-1 -> 30 50 20 10
    // -> edit 0; the size stays fixed. The pasted colour went through the clipboard's 8 bits.
    Palette<uint> expected = paletteOf({30, 50, 20, 10});
    expected[0] = {1, 2, 3, 4};
    expected[1] = PaletteEdits::throughClipboard(expected[1]);
    QCOMPARE(expected[1], RGBAColor<uint>(0, 0, 0, 65280));
    QCOMPARE(doc.palette().entries(), expected.entries());
    QVERIFY(doc.paletteViewSettings().fixedSize);
}

void TestHistory::playerReportsUnknownSteps()
{
    ChromaxisDocument doc;
    MacroPlayer player;
    const auto report = player.play(doc, {{"image_quantisize_someday", ""}, {"palette_generate_huerot256", ""}});
    QCOMPARE(report.played, 1);
    QCOMPARE(report.skipped, QStringList({"image_quantisize_someday"}));
    QCOMPARE(doc.palette().size(), 256);
    QCOMPARE(doc.palette()[0].a, 4294836225u);
    QVERIFY_EXCEPTION_THROWN(player.play(doc, {{"load_image", ""}}), DescribedException);
    QVERIFY_EXCEPTION_THROWN(player.play(doc, {{"edit", "color:1,2\n"}}), DescribedException);
    // A selection that cannot be read stops the replay, for the built-in steps and the dialogs' alike.
    const std::vector<std::pair<MacroFile::Step, QString>> refused{
        {{"delete", "selection:3-1\n"}, "The range '3-1' in the selection '3-1' runs backwards."},
        {{"tint", "opacity:50\nselection:0-2000000000\n"},
         "The selection '0-2000000000' names 2000000001 indexes; a selection holds at most 1048576."}};
    for (const auto &[step, message] : refused)
        QCOMPARE(refusal([&, &step = step] { player.play(doc, {step}); }), "Error on playing macro: " + message);
    QCOMPARE(doc.palette().size(), 256);
}

QTEST_GUILESS_MAIN(TestHistory)
#include "tst_history.moc"
