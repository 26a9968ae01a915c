// The nearest-colour answers given through blocks of colours: the kept candidates of a block
// always hold the first nearest colour, and the palette index answers exactly what the tree
// search answers, for small, large, clustered and repeated palettes.

#include "quantization/colorindex.h"
#include "quantization/nearestsearch.h"

#include <QtTest>

#include <random>
#include <vector>

namespace {

struct Colours
{
    std::vector<int32_t> r, g, b;
    void add(uint rgb)
    {
        r.push_back(int32_t(rgb >> 16));
        g.push_back(int32_t((rgb >> 8) & 0xFF));
        b.push_back(int32_t(rgb & 0xFF));
    }
};

QList<uint> randomColours(int n, unsigned seed, uint mask = 0xFFFFFFu)
{
    std::mt19937 rng(seed);
    QList<uint> out;
    for (int i = 0; i < n; ++i)
        out << (rng() & mask);
    return out;
}

Palette<uint> paletteOf(const QList<uint> &colours)
{
    Palette<uint> p;
    for (uint c : colours)
        p.append({((c >> 16) & 0xFF) << 8, ((c >> 8) & 0xFF) << 8, (c & 0xFF) << 8, 65535});
    return p;
}

} // namespace

class TestColorIndex : public QObject
{
    Q_OBJECT
private slots:
    void candidatesKeepTheFirstNearest_data();
    void candidatesKeepTheFirstNearest();
    void blockNearestIsNearest();
    void lookupAnswersAsTheSearch_data();
    void lookupAnswersAsTheSearch();
};

void TestColorIndex::candidatesKeepTheFirstNearest_data()
{
    QTest::addColumn<QList<uint>>("colours");
    QTest::addColumn<uint>("corner"); // the box's lowest colour
    QTest::addColumn<int>("side");
    QTest::newRow("one colour") << QList<uint>{0x102030} << 0xF0F0F0u << 8;
    // Equally near to much of the box: ties go to the first, which must be kept.
    QTest::newRow("mirror images across the box")
        << QList<uint>{0x60707C, 0x607084, 0x607080} << 0x60707Cu << 8;
    // The first colour is as near to the far corner as the second is to its own far corner: a
    // tie at that corner that the first must win.
    QTest::newRow("a tie at the far corner") << QList<uint>{0x0E0E0E, 0x000000} << 0x000000u << 8;
    QTest::newRow("repeated colours")
        << QList<uint>{0x405060, 0x405060, 0x405061, 0x405060} << 0x405858u << 8;
    QTest::newRow("256 random around a box") << randomColours(256, 3) << 0x808080u << 8;
    QTest::newRow("256 random, box in a corner") << randomColours(256, 4) << 0xF8F8F8u << 8;
    QTest::newRow("a cluster far from the box") << randomColours(60, 5, 0x1F1F1Fu) << 0xC0A0E0u << 8;
    QTest::newRow("a larger box") << randomColours(100, 6) << 0x203040u << 24;
    QTest::newRow("a single colour box") << randomColours(100, 7) << 0x7F7F7Fu << 1;
}

void TestColorIndex::candidatesKeepTheFirstNearest()
{
    QFETCH(QList<uint>, colours);
    QFETCH(uint, corner);
    QFETCH(int, side);
    Colours c;
    for (uint rgb : colours)
        c.add(rgb);
    const int32_t lo[3] = {int32_t(corner >> 16), int32_t((corner >> 8) & 0xFF), int32_t(corner & 0xFF)};
    const int32_t hi[3] = {std::min(lo[0] + side - 1, 255), std::min(lo[1] + side - 1, 255),
                           std::min(lo[2] + side - 1, 255)};
    std::vector<uint32_t> kept;
    boxCandidates(c.r.data(), c.g.data(), c.b.data(), c.r.size(), lo, hi, kept);
    QVERIFY(!kept.empty());
    QVERIFY(std::is_sorted(kept.begin(), kept.end()));
    for (int32_t r = lo[0]; r <= hi[0]; ++r)
        for (int32_t g = lo[1]; g <= hi[1]; ++g)
            for (int32_t b = lo[2]; b <= hi[2]; ++b) {
                const size_t all = nearestColor(c.r.data(), c.g.data(), c.b.data(), c.r.size(), r, g, b);
                const uint32_t among =
                    nearestAmong(c.r.data(), c.g.data(), c.b.data(), kept.data(), kept.size(), r, g, b);
                if (among != all)
                    QFAIL(qPrintable(QStringLiteral("(%1, %2, %3): %4 among the kept, %5 among all")
                                         .arg(r)
                                         .arg(g)
                                         .arg(b)
                                         .arg(among)
                                         .arg(all)));
            }
}

void TestColorIndex::blockNearestIsNearest()
{
    Colours c;
    for (uint rgb : randomColours(200, 8))
        c.add(rgb);
    for (uint rgb : {0x000000u, 0xFFFFFFu, 0x000000u}) // repeated: the first one answers
        c.add(rgb);
    BlockNearest nearest(c.r.data(), c.g.data(), c.b.data(), c.r.size());
    for (uint rgb : randomColours(20000, 9)) {
        const int32_t r = int32_t(rgb >> 16), g = int32_t((rgb >> 8) & 0xFF), b = int32_t(rgb & 0xFF);
        QCOMPARE(size_t(nearest.nearest(r, g, b)),
                 nearestColor(c.r.data(), c.g.data(), c.b.data(), c.r.size(), r, g, b));
        QCOMPARE(size_t(nearest.nearest(r, g, b)),
                 nearestColor(c.r.data(), c.g.data(), c.b.data(), c.r.size(), r, g, b));
    }
    QCOMPARE(nearest.nearest(0, 0, 0), 200u);
}

void TestColorIndex::lookupAnswersAsTheSearch_data()
{
    QTest::addColumn<QList<uint>>("palette");
    QTest::newRow("empty") << QList<uint>{};
    QTest::newRow("one colour") << QList<uint>{0x336699};
    QTest::newRow("black and white") << QList<uint>{0x000000, 0xFFFFFF};
    QTest::newRow("16 random") << randomColours(16, 10);
    QTest::newRow("256 random") << randomColours(256, 11);
    // Far from the cluster, every leaf is nearly as near as the nearest: too many to compare.
    QTest::newRow("256 in a dark cluster") << randomColours(256, 12, 0x3F3F3Fu);
    // Dense enough that paths run below the fifth level with many leaves around them.
    QTest::newRow("4000 random") << randomColours(4000, 13);
    QList<uint> repeated = randomColours(40, 14);
    repeated << repeated.mid(0, 20) << 0x808080u << 0x808080u;
    QTest::newRow("repeated entries") << repeated;
}

void TestColorIndex::lookupAnswersAsTheSearch()
{
    QFETCH(QList<uint>, palette);
    ColorIndex index(paletteOf(palette));
    const ColorIndex cold(paletteOf(palette));
    // Every block once, at a colour of its own, then whole blocks around palette colours and at
    // random, each colour twice (the second time from what the block learned).
    QList<uint> colours = randomColours(1 << 15, 15, 0x070707u);
    for (int i = 0; i < colours.size(); ++i)
        colours[i] |= uint((i >> 10) << 19 | ((i >> 5) & 31) << 11 | (i & 31) << 3);
    QList<uint> blocks = randomColours(12, 16);
    for (int i = 0; i < palette.size() && i < 40; ++i)
        blocks << palette[i] << (palette[i] ^ 0x080808u);
    for (uint block : blocks)
        for (uint slot = 0; slot < 512; ++slot)
            colours << ((block & 0xF8F8F8u) | (slot >> 6) << 16 | ((slot >> 3) & 7) << 8 | (slot & 7));
    for (int pass = 0; pass < 2; ++pass)
        for (uint rgb : colours)
            if (index.lookup(rgb) != cold.search(rgb))
                QFAIL(qPrintable(QStringLiteral("#%1: lookup %2, search %3")
                                     .arg(rgb, 6, 16, QLatin1Char('0'))
                                     .arg(index.lookup(rgb))
                                     .arg(cold.search(rgb))));
}

QTEST_APPLESS_MAIN(TestColorIndex)
#include "tst_colorindex.moc"
