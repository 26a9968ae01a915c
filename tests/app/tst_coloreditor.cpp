// Edit... on the main window as a user meets it: select a cell, Ctrl+E, look at the colour, OK or
// Cancel. The dialog picks 8 bits a channel; the palette keeps 16.
#include "chromaxismainwindow.h"
#include "coloreditdialog.h"
#include "guitesting.h"
#include "paletteview.h"
#include "storage/palettedatabase.h"

#include <QAbstractSpinBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QStatusBar>

using Entry = RGBAColor<uint>;
Q_DECLARE_METATYPE(std::vector<Entry>)
Q_DECLARE_METATYPE(std::vector<int>)

namespace {

// The centre of a cell of the window's palette view (16 columns of 12-pixel cells, 2 apart).
QPoint cellCentre(int index)
{
    return QPoint(1 + (index % 16) * 14 + 6, 1 + (index / 16) * 14 + 6);
}

Palette<uint> paletteOf(const std::vector<Entry> &entries)
{
    Palette<uint> p;
    for (const Entry &e : entries)
        p.append(e);
    return p;
}

// Every value v << 8 in every channel: entry v has v in red and the other channels shifted round.
std::vector<Entry> everyByteValue()
{
    std::vector<Entry> entries;
    for (uint v = 0; v < 256; ++v)
        entries.emplace_back(v << 8, ((v + 85) & 255) << 8, ((v + 170) & 255) << 8, (255 - v) << 8);
    return entries;
}

// 16-bit values with low bytes the dialog cannot show, the extremes, and a word above 65535.
std::vector<Entry> sixteenBitValues()
{
    std::vector<Entry> entries = {
        {65535, 65535, 65535, 65535}, {65280, 65280, 65280, 65535}, {0, 0, 0, 0},
        {1, 255, 256, 257},           {32767, 32768, 32769, 65534}, {0, 0, 0, 65535u * 65535u}};
    quint32 seed = 12345;
    while (entries.size() < 48) {
        auto next = [&seed]() {
            seed = seed * 1103515245u + 12345u;
            return (seed >> 8) & 0xFFFF;
        };
        entries.emplace_back(next(), next(), next(), next());
    }
    return entries;
}

// The "HTML" field of the colour dialog: its one line edit that is not inside a spin box.
QLineEdit *htmlField(QColorDialog *d)
{
    for (QLineEdit *e : d->findChildren<QLineEdit *>())
        if (!qobject_cast<QAbstractSpinBox *>(e->parentWidget()))
            return e;
    return nullptr;
}

void press(QColorDialog *d, QDialogButtonBox::StandardButton which)
{
    QPushButton *button = d->findChild<QDialogButtonBox *>()->button(which);
    QVERIFY(button);
    QTest::mouseClick(button, Qt::LeftButton);
}

} // namespace

class TestColorEditor : public QObject
{
    Q_OBJECT
private slots:
    void init() { QSettings().clear(); }
    void untouchedEditKeepsEveryEntry_data();
    void untouchedEditKeepsEveryEntry();
    void pickedColourEntersShifted_data();
    void pickedColourEntersShifted();
    void nothingSelectedOpensNothing();

private:
    // A shown window holding entries, with a clean history and clean flags.
    void prepare(ChromaxisMainWindow &w, const std::vector<Entry> &entries);
    PaletteDatabase m_db;
};

void TestColorEditor::prepare(ChromaxisMainWindow &w, const std::vector<Entry> &entries)
{
    w.installPalette(paletteOf(entries), false);
    w.document().clearHistory();
    w.show();
    QVERIFY(QTest::qWaitForWindowExposed(&w));
    // Shortcuts go to the active window; without a window manager it is made active by hand.
    QApplication::setActiveWindow(&w);
    QTRY_COMPARE(QApplication::activeWindow(), &w);
}

void TestColorEditor::untouchedEditKeepsEveryEntry_data()
{
    QTest::addColumn<std::vector<Entry>>("entries");
    QTest::newRow("every value v << 8 in every channel") << everyByteValue();
    QTest::newRow("16-bit values") << sixteenBitValues();
}

void TestColorEditor::untouchedEditKeepsEveryEntry()
{
    QFETCH(std::vector<Entry>, entries);
    ChromaxisMainWindow w(&m_db);
    prepare(w, entries);
    for (int i = 0; i < int(entries.size()); ++i) {
        QTest::mouseClick(w.paletteView(), Qt::LeftButton, {}, cellCentre(i));
        QCOMPARE(w.document().selection(), std::set<int>{i});
        QColor shown;
        bool opened = false;
        handleNextDialog<ColorEditDialog>([&](ColorEditDialog *d) {
            opened = true;
            shown = d->currentColor();
            press(d, QDialogButtonBox::Ok);
        });
        QTest::keyClick(&w, Qt::Key_E, Qt::ControlModifier);
        QVERIFY2(opened, qPrintable(QString::number(i)));
        // The high byte of each channel is shown: white of a file (65280) is #ffffff, not #fefefe.
        const Entry &e = entries[size_t(i)];
        auto byte = [](uint v) { return int(std::min<uint>(v, 65535) >> 8); };
        QCOMPARE(shown.rgba(), qRgba(byte(e.r), byte(e.g), byte(e.b), byte(e.a)));
        QCOMPARE(w.document().palette().entries(), entries);
        QCOMPARE(w.document().displayedPalette().entries(), entries);
    }
    // OK on what was shown is no change at all: nothing to undo, nothing to save.
    QVERIFY(!w.document().history().canUndo());
    QVERIFY(!w.document().isPaletteModified());
    QVERIFY(!w.isWindowModified());
}

void TestColorEditor::pickedColourEntersShifted_data()
{
    QTest::addColumn<std::vector<int>>("clicks"); // the first a plain click, the others control-clicks
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<std::vector<Entry>>("preview");
    const std::vector<Entry> start = {{12345, 65535, 777, 65535}, {65280, 65280, 65280, 65535}, {1, 2, 3, 4}};
    QTest::newRow("every channel") << std::vector<int>{1} << "#123456" << true
                                   << std::vector<Entry>{start[0], {0x1200, 0x3400, 0x5600, 65535}, start[2]};
    // Green stays at the byte shown and keeps its 16 bits; red and blue enter as v << 8.
    QTest::newRow("channels left as shown keep 16 bits")
        << std::vector<int>{0} << "#ffff00" << true
        << std::vector<Entry>{{65280, 65535, 0, 65535}, start[1], start[2]};
    QTest::newRow("several entries take one colour")
        << std::vector<int>{1, 2} << "#010203" << true
        << std::vector<Entry>{start[0], {256, 512, 768, 65535}, {256, 512, 768, 65535}};
    // The lowest selected entry, 0, is shown; confirming it leaves 1 and 2 as they were, though
    // they look different.
    QTest::newRow("untouched several keep their own")
        << std::vector<int>{2, 0, 1} << "#30ff03" << true << start;
    QTest::newRow("cancel drops the preview")
        << std::vector<int>{0, 1} << "#000000" << false
        << std::vector<Entry>{{0, 0, 0, 65535}, {0, 0, 0, 65535}, start[2]};
}

void TestColorEditor::pickedColourEntersShifted()
{
    QFETCH(std::vector<int>, clicks);
    QFETCH(QString, typed);
    QFETCH(bool, ok);
    QFETCH(std::vector<Entry>, preview);
    const std::vector<Entry> start = {{12345, 65535, 777, 65535}, {65280, 65280, 65280, 65535}, {1, 2, 3, 4}};
    ChromaxisMainWindow w(&m_db);
    prepare(w, start);
    for (size_t k = 0; k < clicks.size(); ++k)
        QTest::mouseClick(w.paletteView(), Qt::LeftButton, k == 0 ? Qt::NoModifier : Qt::ControlModifier,
                          cellCentre(clicks[k]));
    bool opened = false;
    std::vector<Entry> previewed, viewShown;
    handleNextDialog<ColorEditDialog>([&](ColorEditDialog *d) {
        opened = true;
        QCOMPARE(d->windowTitle(), QString("Edit colour"));
        QLineEdit *html = htmlField(d);
        QVERIFY(html);
        html->selectAll();
        QTest::keyClicks(html, typed);
        // The preview shows while the dialog is open; the palette itself waits for OK.
        previewed = w.document().displayedPalette().entries();
        viewShown = w.paletteView()->palette().entries();
        QCOMPARE(w.document().palette().entries(), start);
        press(d, ok ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel);
    });
    QTest::keyClick(&w, Qt::Key_E, Qt::ControlModifier);
    QVERIFY(opened);
    const std::vector<Entry> expected = ok ? preview : start;
    const bool changes = expected != start;
    QCOMPARE(previewed, preview);
    QCOMPARE(viewShown, preview);
    QCOMPARE(w.document().palette().entries(), expected);
    QCOMPARE(w.document().displayedPalette().entries(), expected);
    QCOMPARE(w.paletteView()->palette().entries(), expected);
    QCOMPARE(w.document().isPaletteModified(), changes);
    QCOMPARE(w.isWindowModified(), changes);
    QCOMPARE(w.document().history().canUndo(), changes);
    if (changes) {
        // One step, which undo takes back whole.
        QVERIFY(w.document().undo());
        QCOMPARE(w.document().palette().entries(), start);
        QVERIFY(!w.document().history().canUndo());
    }
    w.document().setPaletteModified(false);
}

void TestColorEditor::nothingSelectedOpensNothing()
{
    ChromaxisMainWindow w(&m_db);
    prepare(w, {{1, 2, 3, 4}});
    // A click past the last entry selects an index that names no entry.
    QTest::mouseClick(w.paletteView(), Qt::LeftButton, {}, cellCentre(5));
    QCOMPARE(w.document().selection(), std::set<int>{5});
    QTest::keyClick(&w, Qt::Key_E, Qt::ControlModifier);
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(w.statusBar()->currentMessage(), QString("Select the entries to edit first"));
    QCOMPARE(w.document().palette().entries(), std::vector<Entry>({{1, 2, 3, 4}}));
}

CHROMAXIS_GUI_TEST_MAIN(TestColorEditor)
#include "tst_coloreditor.moc"
