#include "paletteview.h"

#include <QApplication>
#include <QClipboard>
#include <QColorDialog>
#include <QMimeData>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <memory>

using Entry = RGBAColor<uint>;

namespace {

// Entry i of the test palettes: distinct 16-bit channels with low bytes set, opaque.
Entry entryAt(int i)
{
    return Entry(uint(i * 2971 + 0x11) & 0xFFFF, uint(60000 + i * 1237) & 0xFFFF,
                 uint(i * 1500 + 0x80) & 0xFFFF, 65535);
}

Palette<uint> makePalette(int n)
{
    Palette<uint> p;
    for (int i = 0; i < n; ++i)
        p.append(entryAt(i));
    return p;
}

const Entry fill(0x0100, 0x0200, 0x0300, 0x0400);

// The clipboard colours of the paste cases, as the palette holds them after a paste.
Entry pasted(char name)
{
    switch (name) {
    case 'C':
        return fromByteColor(RGBAColor<uchar>(200, 100, 50, 255));
    case 'A':
        return fromByteColor(RGBAColor<uchar>(10, 20, 30, 255));
    case 'B':
        return fromByteColor(RGBAColor<uchar>(40, 50, 60, 255));
    default:
        return fill; // 'F'
    }
}

// "0,1,C,2,F": original entries by number, clipboard colours and the fill colour by letter.
std::vector<Entry> entries(const QString &text)
{
    std::vector<Entry> out;
    for (const QString &item : text.split(',', Qt::SkipEmptyParts)) {
        bool number = false;
        const int i = item.toInt(&number);
        out.push_back(number ? entryAt(i) : pasted(item.at(0).toLatin1()));
    }
    return out;
}

std::set<int> indexes(const QString &text)
{
    std::set<int> out;
    for (const QString &item : text.split(',', Qt::SkipEmptyParts))
        out.insert(item.toInt());
    return out;
}

// The view of the main window: 16 columns, 12 by 12 cells, spacing 2, padding 1.
std::unique_ptr<PaletteView> windowView(int length)
{
    return std::make_unique<PaletteView>(makePalette(length), 16, 12, 12, 2, 2, 1, 1, 1, 1,
                                         QColor(Qt::black));
}

// The centre of the drawn cell of an index; with the window's geometry the hit test finds it there.
QPoint cellCentre(int index)
{
    return QPoint(1 + (index % 16) * 14 + 6, 1 + (index / 16) * 14 + 6);
}

void putOnClipboard(const QString &kind)
{
    auto *data = new QMimeData;
    if (kind == "colour") {
        data->setColorData(QColor(200, 100, 50));
    } else if (kind.startsWith("list:")) {
        data->setData(PaletteView::PaletteMimeType, kind.mid(5).toLatin1());
    } else {
        data->setText(kind);
    }
    QGuiApplication::clipboard()->setMimeData(data);
}

} // namespace

class TestPaletteView : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void geometry_data();
    void geometry();
    void drawing();
    void hitTest_data();
    void hitTest();
    void clickSelection_data();
    void clickSelection();
    void otherButtonsSelectNothing();
    void doubleClickEmitsColour();
    void paste_data();
    void paste();
    void pasteWithoutColoursFails();
    void copySingle_data();
    void copySingle();
    void copySeveral_data();
    void copySeveral();
    void copyRoundTrip();
    void cutAndDelete_data();
    void cutAndDelete();
    void emptySelectionCommands();
    void selectCommands();
    void replace_data();
    void replace();
    void edit_data();
    void edit();
};

void TestPaletteView::initTestCase()
{
    qRegisterMetaType<size_t>("size_t");
}

void TestPaletteView::geometry_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QList<int>>("layout"); // columns, cw, ch, vspacing, hspacing, top, right, bottom, left
    QTest::addColumn<QSize>("size");
    const QList<int> window{16, 12, 12, 2, 2, 1, 1, 1, 1};
    QTest::newRow("window, one row") << 10 << window << QSize(224, 14);
    QTest::newRow("window, full row") << 16 << window << QSize(224, 14);
    QTest::newRow("window, three rows") << 33 << window << QSize(224, 42);
    QTest::newRow("window, empty") << 0 << window << QSize(224, 2);
    QTest::newRow("uneven") << 7 << QList<int>{5, 10, 8, 3, 4, 1, 2, 3, 4} << QSize(72, 23);
}

void TestPaletteView::geometry()
{
    QFETCH(int, length);
    QFETCH(QList<int>, layout);
    QFETCH(QSize, size);
    PaletteView view(makePalette(length), layout[0], layout[1], layout[2], layout[3], layout[4], layout[5],
                     layout[6], layout[7], layout[8], QColor(Qt::black));
    QCOMPARE(view.image().size(), size);
    QVERIFY(!view.pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(view.pixmap(Qt::ReturnByValue).size(), size);
    QCOMPARE(view.size(), size);
    QCOMPARE(view.sizePolicy().horizontalPolicy(), QSizePolicy::Fixed);

    // The widget follows a longer palette.
    Palette<uint> longer = makePalette(length + layout[0]);
    view.setPalette(longer);
    QCOMPARE(view.size().height(), size.height() + layout[2] + (length > 0 ? layout[3] : 0));
}

void TestPaletteView::drawing()
{
    Palette<uint> p = makePalette(20);
    p[4].a = 0x2000; // translucent entries are drawn opaque
    PaletteView view(p, 5, 10, 8, 3, 4, 1, 2, 3, 4, QColor(0x20, 0x40, 0x60));
    view.setSelected({6, 25});
    const QImage img = view.image();
    auto cellPixel = [&](int index, int dx, int dy) {
        return img.pixel(4 + (index % 5) * 14 + dx, 1 + (index / 5) * 11 + dy);
    };
    auto expected = [&](int index) {
        return qRgb(int(p[index].r >> 8), int(p[index].g >> 8), int(p[index].b >> 8));
    };
    QCOMPARE(cellPixel(4, 5, 4), expected(4));
    QCOMPARE(cellPixel(4, 0, 0), expected(4));
    QCOMPARE(cellPixel(19, 9, 7), expected(19));
    // The selected cell: yellow on its outermost columns and rows, its colour inside.
    QCOMPARE(cellPixel(6, 0, 0), 0xFFFFFF00u);
    QCOMPARE(cellPixel(6, 9, 3), 0xFFFFFF00u);
    QCOMPARE(cellPixel(6, 4, 7), 0xFFFFFF00u);
    QCOMPARE(cellPixel(6, 1, 1), expected(6));
    QCOMPARE(cellPixel(6, 8, 6), expected(6));
    // Spacing and padding show the background; index 25 is past the end and draws nothing.
    QCOMPARE(cellPixel(0, 10, 0), qRgb(0x20, 0x40, 0x60));
    QCOMPARE(cellPixel(0, 0, 8), qRgb(0x20, 0x40, 0x60));
    QCOMPARE(img.pixel(0, 0), qRgb(0x20, 0x40, 0x60));
    QCOMPARE(img.pixel(img.width() - 1, img.height() - 1), qRgb(0x20, 0x40, 0x60));
    QCOMPARE(view.pixmap(Qt::ReturnByValue).toImage().convertToFormat(QImage::Format_ARGB32), img);
}

void TestPaletteView::hitTest_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<QPoint>("pos");
    QTest::addColumn<int>("index");
    QTest::newRow("corner") << 16 << QPoint(0, 1) << 0; // QTest takes (0, 0) for the centre
    QTest::newRow("padding and spacing belong to the cell before") << 16 << QPoint(13, 13) << 0;
    QTest::newRow("second cell") << 16 << QPoint(14, 0) << 1;
    QTest::newRow("second row") << 16 << QPoint(0, 14) << 16;
    QTest::newRow("last of first row") << 16 << QPoint(223, 5) << 15;
    // Rows count 16 cells in the hit test whatever the drawing's column count.
    QTest::newRow("five columns, second row") << 5 << QPoint(20, 20) << 17;
    QTest::newRow("five columns, third row") << 5 << QPoint(6, 30) << 32;
}

void TestPaletteView::hitTest()
{
    QFETCH(int, columns);
    QFETCH(QPoint, pos);
    QFETCH(int, index);
    PaletteView view(makePalette(40), columns, 12, 12, 2, 2, 1, 1, 1, 1, QColor());
    QCOMPARE(view.indexAt(pos), index);
    QTest::mouseClick(&view, Qt::LeftButton, Qt::NoModifier, pos);
    QCOMPARE(view.selection(), std::set<int>{index});
}

void TestPaletteView::clickSelection_data()
{
    // Clicks: an index, prefixed by s (shift), c (control) or sc; S and C come with the event alone,
    // unseen by the window. The palette has 10 entries.
    QTest::addColumn<QString>("preset");
    QTest::addColumn<QString>("clicks");
    QTest::addColumn<QString>("selection");
    QTest::addColumn<int>("anchor");
    const auto row = [](const char *tag, const QString &preset, const QString &clicks, const QString &selection,
                        int anchor) {
        QTest::newRow(tag) << preset << clicks << selection << anchor;
    };
    row("plain", "", "3", "3", 3);
    row("plain moves", "", "3,5", "5", 5);
    row("plain on selected clears", "", "3,3", "", -1);
    row("plain on one of several clears all", "", "c3,c5,c7,5", "", -1);
    row("plain on unselected replaces several", "", "c3,c5,8", "8", 8);
    row("control toggles", "", "c3,c5,c3", "5", 3);
    row("shift range", "", "2,s6", "2,3,4,5,6", 6);
    row("shift range backwards", "", "6,s2", "2,3,4,5,6", 2);
    row("shift adds to selection", "", "c0,c8,s9", "0,8,9", 9);
    row("shift on selected removes range", "", "2,s6,c9,s4", "2,3", 4);
    row("shift without anchor is plain", "1,2", "s5", "5", 5);
    row("shift after clearing click", "", "3,3,s7", "7", 7);
    row("shift and control without anchor toggles", "1", "sc5", "1,5", 5);
    row("shift and control with anchor", "", "1,sc4", "1,2,3,4", 4);
    row("past the end", "", "12", "12", 12);
    row("range past the end", "", "8,s13", "8,9,10,11,12,13", 13);
    row("control past the end", "", "c4,c15", "4,15", 15);
    row("modifiers of the event alone", "", "2,S4,C7", "2,3,4,7", 7);
}

void TestPaletteView::clickSelection()
{
    QFETCH(QString, preset);
    QFETCH(QString, clicks);
    QFETCH(QString, selection);
    QFETCH(int, anchor);
    auto view = windowView(10);
    view->show();
    QVERIFY(QTest::qWaitForWindowExposed(view.get()));
    view->setSelected(indexes(preset));
    QSignalSpy selectionSpy(view.get(), &PaletteView::selectionChanged);
    QSignalSpy paletteSpy(view.get(), &PaletteView::paletteChanged);
    const QStringList list = clicks.split(',');
    for (QString click : list) {
        view->setModifiers(click.contains('s'), click.contains('c'));
        Qt::KeyboardModifiers event;
        event.setFlag(Qt::ShiftModifier, click.contains('S'));
        event.setFlag(Qt::ControlModifier, click.contains('C'));
        click.remove(QRegularExpression("[scSC]"));
        QTest::mouseClick(view.get(), Qt::LeftButton, event, cellCentre(click.toInt()));
    }
    QCOMPARE(view->selection(), indexes(selection));
    QCOMPARE(view->anchor(), anchor);
    QCOMPARE(selectionSpy.count(), list.size());
    QCOMPARE(paletteSpy.count(), 0);
    QCOMPARE(view->palette().entries(), makePalette(10).entries());
}

void TestPaletteView::otherButtonsSelectNothing()
{
    auto view = windowView(10);
    QSignalSpy spy(view.get(), &PaletteView::selectionChanged);
    QTest::mouseClick(view.get(), Qt::RightButton, Qt::NoModifier, cellCentre(3));
    QTest::mouseClick(view.get(), Qt::MiddleButton, Qt::NoModifier, cellCentre(3));
    QVERIFY(view->selection().empty());
    QCOMPARE(spy.count(), 0);
}

void TestPaletteView::doubleClickEmitsColour()
{
    Palette<uint> p = makePalette(10);
    p[6] = Entry(0x1234, 0x5678, 0x9abc, 0x4000);
    PaletteView view(p, 16, 12, 12, 2, 2, 1, 1, 1, 1, QColor());
    QSignalSpy spy(&view, &PaletteView::currentColorChanged);
    QTest::mouseDClick(&view, Qt::LeftButton, Qt::NoModifier, cellCentre(6));
    QCOMPARE(spy.count(), 1);
    const QColor c = spy.at(0).at(0).value<QColor>();
    QCOMPARE(c.rgba64(), QRgba64::fromRgba64(0x1234, 0x5678, 0x9abc, 0x4000));
    QTest::mouseDClick(&view, Qt::LeftButton, Qt::NoModifier, cellCentre(13));
    QCOMPARE(spy.count(), 1);
}

void TestPaletteView::paste_data()
{
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<QString>("selection");
    QTest::addColumn<bool>("fixed");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<QString>("result");
    const auto row = [](const char *tag, const QString &clipboard, const QString &selection, bool fixed,
                        int maximum, const QString &result) {
        QTest::newRow(tag) << clipboard << selection << fixed << maximum << result;
    };
    const QString ab = "list:#ff0a141e#ff28323c";
    row("colour after each selected", "colour", "3,5", false, 1024, "0,1,2,3,C,4,5,C,6,7,8,9");
    row("colour, fixed size", "colour", "3,5", true, 1024, "0,1,2,3,C,4,5,C,6,7");
    row("colour, no selection", "colour", "", false, 1024, "0,1,2,3,4,5,6,7,8,9,C");
    row("colour, no selection, fixed", "colour", "", true, 1024, "0,1,2,3,4,5,6,7,8,9");
    row("colour, no selection, at maximum", "colour", "", false, 10, "0,1,2,3,4,5,6,7,8,9");
    row("colour, stops at maximum", "colour", "3,5", false, 11, "0,1,2,3,C,4,5,C,6,7,8");
    row("colour, selection past the end", "colour", "9,12", false, 1024, "0,1,2,3,4,5,6,7,8,9,C");
    row("list replaces each selected", ab, "3,5", false, 1024, "0,1,2,A,B,4,A,B,6,7,8,9");
    row("list, fixed size", ab, "3,5", true, 1024, "0,1,2,A,B,4,A,B,6,7");
    row("list, no selection", ab, "", false, 1024, "0,1,2,3,4,5,6,7,8,9,A,B");
    row("list, no selection, no limit", ab, "", false, 10, "0,1,2,3,4,5,6,7,8,9,A,B");
    row("list, no selection, fixed", ab, "", true, 1024, "0,1,2,3,4,5,6,7,8,9");
    row("list, stops at maximum", ab, "0,9", false, 11, "A,B,1,2,3,4,5,6,7,8,A");
    row("list, bad groups skipped", "list:#ff0a141e#zzzzzzzz#ff28", "1", false, 1024, "0,A,2,3,4,5,6,7,8,9");
}

void TestPaletteView::paste()
{
    QFETCH(QString, clipboard);
    QFETCH(QString, selection);
    QFETCH(bool, fixed);
    QFETCH(int, maximum);
    QFETCH(QString, result);
    auto view = windowView(10);
    view->setFixedPaletteSize(fixed);
    view->setMaximumPaletteSize(maximum);
    view->setFillColor(fill);
    view->setSelected(indexes(selection));
    putOnClipboard(clipboard);
    QSignalSpy paletteSpy(view.get(), &PaletteView::paletteChanged);
    QSignalSpy selectionSpy(view.get(), &PaletteView::selectionChanged);
    QSignalSpy sizeSpy(view.get(), &PaletteView::setPaletteSize);

    QVERIFY(view->paste());
    const std::vector<Entry> expected = entries(result);
    QCOMPARE(view->palette().entries(), expected);
    QVERIFY(view->selection().empty());
    QCOMPARE(view->anchor(), -1);
    QCOMPARE(paletteSpy.count(), 1);
    QCOMPARE(selectionSpy.count(), selection.isEmpty() ? 0 : 1);
    QCOMPARE(sizeSpy.count(), expected.size() != 10 ? 1 : 0);
    if (!sizeSpy.isEmpty())
        QCOMPARE(sizeSpy.at(0).at(0).value<size_t>(), expected.size());
    QCOMPARE(view->image().height(), expected.size() > 16 ? 28 : 14);
}

void TestPaletteView::pasteWithoutColoursFails()
{
    auto view = windowView(10);
    view->setSelected({2});
    QSignalSpy paletteSpy(view.get(), &PaletteView::paletteChanged);
    for (const QString &clip : {QString("just text"), QString("list:"), QString("list:#zzzzzzzz")}) {
        putOnClipboard(clip);
        QVERIFY2(!view->paste(), qPrintable(clip));
    }
    QCOMPARE(paletteSpy.count(), 0);
    QCOMPARE(view->palette().entries(), makePalette(10).entries());
    QCOMPARE(view->selection(), indexes("2"));
}

void TestPaletteView::copySingle_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("text");
    QTest::newRow("0") << 0 << "#ff8000";
    QTest::newRow("1") << 1 << "ff8000";
    QTest::newRow("other") << 7 << "(255, 128, 0)";
}

void TestPaletteView::copySingle()
{
    QFETCH(int, format);
    QFETCH(QString, text);
    Palette<uint> p = makePalette(6);
    p[4] = Entry(0xFF12, 0x80FF, 0x0034, 0x3000); // translucent
    PaletteView view(p, 16, 12, 12, 2, 2, 1, 1, 1, 1, QColor());
    view.setColorFormat(format);
    view.setClipboardEntry("unused %i"); // the template serves several entries only
    view.setSelected({4});
    QVERIFY(view.copy());
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    QCOMPARE(data->text(), text);
    QVERIFY(data->hasColor());
    const QColor c = qvariant_cast<QColor>(data->colorData());
    QCOMPARE(c.rgba(), qRgba(255, 128, 0, 255));
    QVERIFY(!data->hasFormat(PaletteView::PaletteMimeType));
}

void TestPaletteView::copySeveral_data()
{
    QTest::addColumn<QString>("selection");
    QTest::addColumn<QStringList>("layout"); // header, entry, divider, bottom; empty for the defaults
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("groups");
    QTest::newRow("two selected") << "1,3" << QStringList() << "#0f0000, #aa0000"
                                  << "#ff0f0000#ffaa0000";
    QTest::newRow("none selected is all") << "" << QStringList() << "#000000, #0f0000, #ff8000, #aa0000"
                                          << "#ff000000#ff0f0000#ffff8000#ffaa0000";
    QTest::newRow("past the end ignored") << "0,3,9" << QStringList() << "#000000, #aa0000"
                                          << "#ff000000#ffaa0000";
    QTest::newRow("own template") << "1,3" << QStringList{"[", "%i", "-", "]"} << "[1-3]"
                                  << "#ff0f0000#ffaa0000";
    QTest::newRow("escapes") << "" << QStringList{"", "%r", "\\t", "\\n"} << "0\t15\t255\t170\n"
                             << "#ff000000#ff0f0000#ffff8000#ffaa0000";
}

void TestPaletteView::copySeveral()
{
    QFETCH(QString, selection);
    QFETCH(QStringList, layout);
    QFETCH(QString, text);
    QFETCH(QString, groups);
    Palette<uint> p;
    p.append(Entry(0x0000, 0, 0, 65535));
    p.append(Entry(0x0F00, 0, 0, 0));
    p.append(Entry(0xFFFF, 0x8000, 0, 0x1000));
    p.append(Entry(0xAA00, 0, 0, 65535));
    PaletteView view(p, 16, 12, 12, 2, 2, 1, 1, 1, 1, QColor());
    if (!layout.isEmpty()) {
        view.setClipboardHeader(layout[0]);
        view.setClipboardEntry(layout[1]);
        view.setClipboardDivider(layout[2]);
        view.setClipboardBottom(layout[3]);
    }
    view.setSelected(indexes(selection));
    QVERIFY(view.copy());
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    QCOMPARE(data->text(), text);
    QCOMPARE(QString::fromLatin1(data->data(PaletteView::PaletteMimeType)), groups);
    QVERIFY(!data->hasColor());
}

void TestPaletteView::copyRoundTrip()
{
    // Nothing to copy: one index past the end leaves the clipboard alone.
    auto view = windowView(10);
    putOnClipboard("before");
    view->setSelected({10});
    QVERIFY(!view->copy());
    QCOMPARE(QGuiApplication::clipboard()->text(), QString("before"));

    // Copied entries paste into another view as their 8-bit colours, opaque.
    view->setSelected({2, 7});
    QVERIFY(view->copy());
    PaletteView target(Palette<uint>(), 16, 12, 12, 2, 2, 1, 1, 1, 1, QColor());
    QVERIFY(target.paste());
    QCOMPARE(target.palette().size(), 2);
    for (int k = 0; k < 2; ++k) {
        const Entry e = entryAt(k == 0 ? 2 : 7);
        QCOMPARE(target.palette()[k], Entry(e.r & 0xFF00, e.g & 0xFF00, e.b & 0xFF00, 0xFF00));
    }
}

void TestPaletteView::cutAndDelete_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("selection");
    QTest::addColumn<bool>("fixed");
    QTest::addColumn<QString>("result");
    QTest::addColumn<QString>("clipboard"); // the palette groups copied, or "untouched"
    QTest::addColumn<int>("emissions");     // of each of paletteChanged and selectionChanged
    const auto row = [](const char *tag, const QString &command, const QString &selection, bool fixed,
                        const QString &result, const QString &clipboard, int emissions) {
        QTest::newRow(tag) << command << selection << fixed << result << clipboard << emissions;
    };
    const QString groups13 =
        QString(QColor(int(entryAt(1).r >> 8), int(entryAt(1).g >> 8), int(entryAt(1).b >> 8))
                    .name(QColor::HexArgb)) +
        QColor(int(entryAt(3).r >> 8), int(entryAt(3).g >> 8), int(entryAt(3).b >> 8)).name(QColor::HexArgb);
    row("cut", "cut", "1,3", false, "0,2,4,5,6,7,8,9", groups13, 1);
    row("cut, fixed size", "cut", "1,3", true, "0,2,4,5,6,7,8,9,F,F", groups13, 1);
    row("cut, past the end", "cut", "1,3,14", false, "0,2,4,5,6,7,8,9", groups13, 1);
    row("cut, all, fixed", "cut", "0,1,2,3,4,5,6,7,8,9", true, "F,F,F,F,F,F,F,F,F,F", "", 1);
    row("delete", "delete", "1,3", false, "0,2,4,5,6,7,8,9", "untouched", 2);
    row("delete, fixed size", "delete", "1,3", true, "0,2,4,5,6,7,8,9,F,F", "untouched", 2);
    row("to background", "background", "1,3", false, "0,F,2,F,4,5,6,7,8,9", groups13, 1);
    row("to background, fixed", "background", "1,3", true, "0,F,2,F,4,5,6,7,8,9", groups13, 1);
    row("to background, past the end", "background", "3,1,12", false, "0,F,2,F,4,5,6,7,8,9", groups13, 1);
}

void TestPaletteView::cutAndDelete()
{
    QFETCH(QString, command);
    QFETCH(QString, selection);
    QFETCH(bool, fixed);
    QFETCH(QString, result);
    QFETCH(QString, clipboard);
    QFETCH(int, emissions);
    auto view = windowView(10);
    view->setFixedPaletteSize(fixed);
    view->setFillColor(fill);
    view->setSelected(indexes(selection));
    putOnClipboard("before");
    QSignalSpy paletteSpy(view.get(), &PaletteView::paletteChanged);
    QSignalSpy selectionSpy(view.get(), &PaletteView::selectionChanged);
    QSignalSpy sizeSpy(view.get(), &PaletteView::setPaletteSize);

    if (command == "cut")
        QVERIFY(view->cut_remove(true));
    else if (command == "delete")
        QVERIFY(view->deleteA());
    else
        QVERIFY(view->cut_toBackground());

    const std::vector<Entry> expected = entries(result);
    QCOMPARE(view->palette().entries(), expected);
    QVERIFY(view->selection().empty());
    QCOMPARE(view->anchor(), -1);
    QCOMPARE(paletteSpy.count(), emissions);
    QCOMPARE(selectionSpy.count(), emissions);
    QCOMPARE(sizeSpy.count(), expected.size() != 10 ? 1 : 0);
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    if (clipboard == "untouched") {
        QCOMPARE(data->text(), QString("before"));
    } else if (!clipboard.isEmpty()) {
        QCOMPARE(QString::fromLatin1(data->data(PaletteView::PaletteMimeType)), clipboard);
    }
}

void TestPaletteView::emptySelectionCommands()
{
    auto view = windowView(10);
    QSignalSpy paletteSpy(view.get(), &PaletteView::paletteChanged);
    QSignalSpy selectionSpy(view.get(), &PaletteView::selectionChanged);
    QVERIFY(!view->cut_remove(true));
    QVERIFY(!view->cut_toBackground());
    QCOMPARE(paletteSpy.count(), 0);
    QCOMPARE(selectionSpy.count(), 0);
    // Delete still clears and tells, so the window's state follows.
    QVERIFY(!view->deleteA());
    QCOMPARE(paletteSpy.count(), 1);
    QCOMPARE(selectionSpy.count(), 1);
    QCOMPARE(view->palette().entries(), makePalette(10).entries());
}

void TestPaletteView::selectCommands()
{
    auto view = windowView(5);
    QSignalSpy spy(view.get(), &PaletteView::selectionChanged);
    QSignalSpy paletteSpy(view.get(), &PaletteView::paletteChanged);
    view->setSelected({1, 7});
    view->selectInvert();
    QCOMPARE(view->selection(), indexes("0,2,3,4"));
    view->selectAll();
    QCOMPARE(view->selection(), indexes("0,1,2,3,4"));
    QTest::mouseClick(view.get(), Qt::LeftButton, Qt::NoModifier, cellCentre(2));
    QCOMPARE(view->anchor(), -1); // a plain click on a selected entry
    QTest::mouseClick(view.get(), Qt::LeftButton, Qt::NoModifier, cellCentre(3));
    QCOMPARE(view->anchor(), 3);
    view->selectNone();
    QVERIFY(view->selection().empty());
    QCOMPARE(view->anchor(), -1);
    QCOMPARE(spy.count(), 6);
    QCOMPARE(paletteSpy.count(), 0);
}

void TestPaletteView::replace_data()
{
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<QString>("selection");
    QTest::addColumn<QString>("result"); // empty: replace() fails and nothing changes
    const auto row = [](const char *tag, const QString &clipboard, const QString &selection,
                        const QString &result) { QTest::newRow(tag) << clipboard << selection << result; };
    const QString ab = "list:#ff0a141e#ff28323c";
    row("colour fills selection", "colour", "1,4", "0,C,2,3,C,5");
    row("list in order", ab, "1,4", "0,A,2,3,B,5");
    row("list starts over", ab, "0,2,3,5", "A,1,B,A,4,B");
    row("list longer than selection", ab, "5", "0,1,2,3,4,A");
    row("past the end skipped", ab, "2,9,10", "0,1,A,3,4,5");
    row("no selection", ab, "", "");
    row("only past the end", "colour", "7", "");
    row("no colours", "text", "1", "");
}

void TestPaletteView::replace()
{
    QFETCH(QString, clipboard);
    QFETCH(QString, selection);
    QFETCH(QString, result);
    auto view = windowView(6);
    view->setSelected(indexes(selection));
    putOnClipboard(clipboard);
    QSignalSpy spy(view.get(), &PaletteView::paletteChanged);
    QCOMPARE(view->replace(), !result.isEmpty());
    QCOMPARE(view->palette().entries(), entries(result.isEmpty() ? "0,1,2,3,4,5" : result));
    QCOMPARE(spy.count(), result.isEmpty() ? 0 : 1);
    QCOMPARE(view->selection(), indexes(selection));
}

void TestPaletteView::edit_data()
{
    QTest::addColumn<QString>("selection");
    QTest::addColumn<bool>("accept");
    QTest::addColumn<bool>("opens");
    QTest::newRow("accepted") << "2,4,11" << true << true;
    QTest::newRow("cancelled") << "2,4" << false << true;
    QTest::newRow("nothing selected") << "" << true << false;
    QTest::newRow("only past the end") << "8" << true << false;
}

void TestPaletteView::edit()
{
    QFETCH(QString, selection);
    QFETCH(bool, accept);
    QFETCH(bool, opens);
    auto view = windowView(6);
    view->setSelected(indexes(selection));
    QSignalSpy spy(view.get(), &PaletteView::paletteChanged);

    QColor initial;
    bool seen = false;
    QTimer timer;
    timer.setInterval(20);
    QObject::connect(&timer, &QTimer::timeout, [&]() {
        auto *dialog = qobject_cast<QColorDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        timer.stop();
        seen = true;
        initial = dialog->currentColor();
        QVERIFY(dialog->testOption(QColorDialog::ShowAlphaChannel));
        dialog->setCurrentColor(QColor(18, 86, 154, 222));
        if (accept)
            dialog->accept();
        else
            dialog->reject();
    });
    timer.start();
    const bool changed = view->edit();
    timer.stop();

    QCOMPARE(seen, opens);
    QCOMPARE(changed, opens && accept);
    QCOMPARE(spy.count(), changed ? 1 : 0);
    std::vector<Entry> expected = makePalette(6).entries();
    // The dialog shows the high byte of each channel of the first selected entry.
    if (opens)
        QCOMPARE(initial.rgba(), qRgba(int(entryAt(2).r >> 8), int(entryAt(2).g >> 8), int(entryAt(2).b >> 8),
                                       int(entryAt(2).a >> 8)));
    if (changed) {
        // A picked 8-bit value enters like every 8-bit colour: 18 becomes 18 << 8.
        expected[2] = expected[4] = Entry(18 << 8, 86 << 8, 154 << 8, 222 << 8);
    }
    QCOMPARE(view->palette().entries(), expected);
}

QTEST_MAIN(TestPaletteView)

#include "tst_paletteview.moc"
