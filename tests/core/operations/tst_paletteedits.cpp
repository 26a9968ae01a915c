#include "operations/paletteedits.h"

#include <QtTest>

#include <vector>

using Entry = RGBAColor<uint>;
using Bytes = RGBAColor<uchar>;

Q_DECLARE_METATYPE(Entry)
Q_DECLARE_METATYPE(Bytes)
Q_DECLARE_METATYPE(std::set<int>)
Q_DECLARE_METATYPE(std::vector<Entry>)

namespace {

Palette<uint> paletteOf(const std::vector<Entry> &entries)
{
    Palette<uint> p;
    for (const Entry &e : entries)
        p.append(e);
    return p;
}

} // namespace

// The colour editor's arithmetic: what a dialog of 8 bits a channel gives back for 16-bit entries.
class TestPaletteEdits : public QObject
{
    Q_OBJECT
private slots:
    void editorShowsHighBytes_data();
    void editorShowsHighBytes();
    void everyByteValueWidensByShifting();
    void untouchedChannelsKeepTheirSixteenBits_data();
    void untouchedChannelsKeepTheirSixteenBits();
    void editSelected_data();
    void editSelected();
};

void TestPaletteEdits::editorShowsHighBytes_data()
{
    QTest::addColumn<Entry>("entry");
    QTest::addColumn<Bytes>("shown");
    QTest::newRow("white of a file") << Entry(65280, 65280, 65280, 65535) << Bytes(255, 255, 255, 255);
    QTest::newRow("full white") << Entry(65535, 65535, 65535, 65535) << Bytes(255, 255, 255, 255);
    QTest::newRow("low bytes dropped")
        << Entry(0x12FF, 0x3401, 0x0080, 0xFF00) << Bytes(0x12, 0x34, 0x00, 0xFF);
    // The rainbow generator leaves an alpha of 65535 * 65535; it is shown opaque, not as 0.
    QTest::newRow("word above 65535") << Entry(0, 256, 65535u * 2u, 65535u * 65535u) << Bytes(0, 1, 255, 255);
}

void TestPaletteEdits::editorShowsHighBytes()
{
    QFETCH(Entry, entry);
    QFETCH(Bytes, shown);
    QCOMPARE(PaletteEdits::editorBytes(entry), shown);
    // Confirming what is shown changes nothing.
    QCOMPARE(PaletteEdits::editedColour(entry, shown), entry);
}

void TestPaletteEdits::everyByteValueWidensByShifting()
{
    // Every value of every channel, picked over an entry that showed something else, enters as v << 8;
    // picked over an entry that showed it, the entry's own value stays.
    for (uint v = 0; v < 256; ++v) {
        const uchar byte = uchar(v);
        const uchar other = uchar(255 - v); // never v: 255 is odd
        const Entry entry((uint(other) << 8) | 0x7F, (uint(other) << 8) | 0x01, (uint(other) << 8) | 0xFF,
                          (uint(other) << 8) | 0x80);
        QCOMPARE(PaletteEdits::editedColour(entry, Bytes(byte, byte, byte, byte)),
                 Entry(v << 8, v << 8, v << 8, v << 8));
        const Entry own((v << 8) | 0x7F, (v << 8) | 0x01, (v << 8) | 0xFF, (v << 8) | 0x80);
        QCOMPARE(PaletteEdits::editedColour(own, Bytes(byte, byte, byte, byte)), own);
    }
}

void TestPaletteEdits::untouchedChannelsKeepTheirSixteenBits_data()
{
    QTest::addColumn<Entry>("entry");
    QTest::addColumn<Bytes>("picked");
    QTest::addColumn<Entry>("edited");
    const Entry e(12345, 65535, 777, 65535); // shown as 48, 255, 3, 255
    QTest::newRow("red only") << e << Bytes(200, 255, 3, 255) << Entry(200 << 8, 65535, 777, 65535);
    QTest::newRow("alpha only") << e << Bytes(48, 255, 3, 128) << Entry(12345, 65535, 777, 128 << 8);
    QTest::newRow("all") << e << Bytes(255, 128, 0, 0) << Entry(65280, 32768, 0, 0);
    QTest::newRow("back to 255 keeps 65535") << e << Bytes(0, 255, 3, 255) << Entry(0, 65535, 777, 65535);
}

void TestPaletteEdits::untouchedChannelsKeepTheirSixteenBits()
{
    QFETCH(Entry, entry);
    QFETCH(Bytes, picked);
    QFETCH(Entry, edited);
    QCOMPARE(PaletteEdits::editedColour(entry, picked), edited);
}

void TestPaletteEdits::editSelected_data()
{
    QTest::addColumn<std::set<int>>("selection");
    QTest::addColumn<Bytes>("picked");
    QTest::addColumn<int>("changed");
    QTest::addColumn<std::vector<Entry>>("expected");
    const Entry a(65280, 65280, 65280, 65535), b(1, 2, 3, 4), c(40000, 50000, 60000, 65535);
    const Entry aRed(0, 65280, 65280, 65535);
    QTest::newRow("shown colour, several different entries")
        << std::set<int>{0, 1, 2} << Bytes(255, 255, 255, 255) << 0 << std::vector<Entry>{a, b, c};
    QTest::newRow("changed colour goes to every selected entry")
        << std::set<int>{0, 2} << Bytes(0, 255, 255, 255) << 2 << std::vector<Entry>{aRed, b, aRed};
    QTest::newRow("the first existing entry is the one shown")
        << std::set<int>{-3, 1, 2} << Bytes(0, 0, 0, 0) << 0 << std::vector<Entry>{a, b, c};
    QTest::newRow("past the end is ignored") << std::set<int>{2, 9} << Bytes(0, 195, 234, 255) << 1
                                             << std::vector<Entry>{a, b, Entry(0, 50000, 60000, 65535)};
    QTest::newRow("nothing that exists")
        << std::set<int>{3, 9} << Bytes(9, 9, 9, 9) << 0 << std::vector<Entry>{a, b, c};
}

void TestPaletteEdits::editSelected()
{
    QFETCH(std::set<int>, selection);
    QFETCH(Bytes, picked);
    QFETCH(int, changed);
    QFETCH(std::vector<Entry>, expected);
    const Entry a(65280, 65280, 65280, 65535), b(1, 2, 3, 4), c(40000, 50000, 60000, 65535);
    Palette<uint> p = paletteOf({a, b, c});
    QCOMPARE(PaletteEdits::editSelected(p, selection, picked), changed);
    QCOMPARE(p.entries(), expected);
}

QTEST_GUILESS_MAIN(TestPaletteEdits)
#include "tst_paletteedits.moc"
