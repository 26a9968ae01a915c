#include "quantization/qa_distincthsb.h"
#include "quantization/qa_mediancut.h"
#include "quantization/qa_nquant.h"
#include "quantization/qa_octree.h"
#include "quantization/qa_wu.h"
#include "quantization/quantization_algorithmfixedsize.h"

#include <QImage>
#include <QtTest>

#include <algorithm>
#include <cstdlib>

namespace {

using Runs = QList<QPair<uint, int>>; // colour 0xRRGGBB, pixel count

// One row holding the runs in order.
QImage imageOf(const Runs &runs)
{
    int width = 0;
    for (const auto &r : runs)
        width += r.second;
    QImage image(width, 1, QImage::Format_ARGB32);
    int x = 0;
    for (const auto &r : runs)
        for (int i = 0; i < r.second; ++i)
            image.setPixel(x++, 0, 0xFF000000u | r.first);
    return image;
}

// The palette as 0xRRGGBB words; every entry must be a widened 8-bit colour, opaque.
QList<uint> colours(const Palette<uint> &p)
{
    QList<uint> out;
    for (const auto &c : p.entries()) {
        if ((c.r & 0xFF) || (c.g & 0xFF) || (c.b & 0xFF) || c.a != 65535 || c.r > 0xFF00 || c.g > 0xFF00 ||
            c.b > 0xFF00)
            return {0xBADBADu};
        out << ((c.r >> 8) << 16 | (c.g >> 8) << 8 | (c.b >> 8));
    }
    return out;
}

QList<uint> quantize(const Runs &runs, uint method, uint count)
{
    return colours(Quantization_AlgorithmFixedSize(count, method).quantize(imageOf(runs)));
}

QList<uint> sorted(QList<uint> l)
{
    std::sort(l.begin(), l.end());
    return l;
}

} // namespace

class TestQuantization : public QObject
{
    Q_OBJECT
private slots:
    void exactResults_data();
    void exactResults();
    void fewerColoursThanRequested_data();
    void fewerColoursThanRequested();
    void uniformGridNesting();
    void octreeKeepsBusyBranches();
    void distinctHsbKeepsMostFrequentFirst();
    void distinctHsbNarrowing();
    void networkRepeatsWithTheSameSeed();
    void indexedPictureFedThroughColourTable();
    void samePaletteWhateverThePixelFormat();
    void cancelledRunGivesNoPalette();
};

void TestQuantization::exactResults_data()
{
    QTest::addColumn<Runs>("runs");
    QTest::addColumn<uint>("method");
    QTest::addColumn<uint>("count");
    QTest::addColumn<QList<uint>>("expected");

    // Median cut.
    QTest::newRow("median cut, one box is the weighted mean, truncated")
        << Runs{{0x000000, 2}, {0x0A0A0A, 1}} << 0u << 1u << QList<uint>{0x030303};
    QTest::newRow("median cut, weighted mean of two colours")
        << Runs{{0x0A141E, 3}, {0x323C46, 1}} << 0u << 1u << QList<uint>{0x141E28};
    QTest::newRow("median cut, split where the running count passes half")
        << Runs{{0x000000, 1}, {0x640000, 1}, {0xC80000, 2}} << 0u << 2u << QList<uint>{0x320000, 0xC80000};
    QTest::newRow("median cut, a heavy first entry keeps a box of its own")
        << Runs{{0x000000, 5}, {0x640000, 1}, {0xC80000, 1}} << 0u << 2u << QList<uint>{0x000000, 0x960000};
    QTest::newRow("median cut, boxes split front first (breadth first)")
        << Runs{{0x000000, 1}, {0x500000, 1}, {0xA00000, 1}, {0xF00000, 1}} << 0u << 3u
        << QList<uint>{0xC80000, 0x000000, 0x500000};
    QTest::newRow("median cut, equal green and blue ranges cut green")
        << Runs{{0x000A00, 1}, {0x00000A, 1}} << 0u << 2u << QList<uint>{0x00000A, 0x000A00};
    QTest::newRow("median cut, equal ranges cut red")
        << Runs{{0x0A0000, 1}, {0x000A0A, 1}} << 0u << 2u << QList<uint>{0x000A0A, 0x0A0000};
    // Popularity: buckets of the top 6 bits, fullest first, each the integer mean of its pixels.
    QTest::newRow("popularity, colours of one bucket are averaged")
        << Runs{{0x000000, 2}, {0x030303, 1}, {0x040000, 1}} << 1u << 10u << QList<uint>{0x010101, 0x040000};
    QTest::newRow("popularity, only the fullest buckets")
        << Runs{{0x000000, 2}, {0x030303, 1}, {0x040000, 1}} << 1u << 1u << QList<uint>{0x010101};
    QTest::newRow("popularity, equal counts in key order")
        << Runs{{0x800000, 1}, {0x000080, 1}} << 1u << 2u << QList<uint>{0x000080, 0x800000};
    // Octree: with no more than two colours through the root, the sparse branch folds into one
    // leaf holding the rounded mean.
    QTest::newRow("octree folds a sparse branch")
        << Runs{{0x000000, 1}, {0x000001, 1}} << 4u << 1u << QList<uint>{0x000001};
    QTest::newRow("octree, two lone colours stay apart")
        << Runs{{0x000000, 1}, {0xFFFFFF, 1}} << 4u << 1u << QList<uint>{0x000000, 0xFFFFFF};
}

void TestQuantization::exactResults()
{
    QFETCH(Runs, runs);
    QFETCH(uint, method);
    QFETCH(uint, count);
    QFETCH(QList<uint>, expected);
    QCOMPARE(quantize(runs, method, count), expected);
}

void TestQuantization::fewerColoursThanRequested_data()
{
    QTest::addColumn<Runs>("runs");
    QTest::addColumn<uint>("method");
    QTest::addColumn<QList<uint>>("expected");
    const Runs five{{0x102030, 3}, {0x405060, 1}, {0xFF0000, 2}, {0x00FF00, 1}, {0x0000FF, 5}};
    const QList<uint> fiveColours{0x102030, 0x405060, 0xFF0000, 0x00FF00, 0x0000FF};
    QTest::newRow("median cut: one box per distinct colour") << five << 0u << fiveColours;
    QTest::newRow("Wu: one box per colour") << five << 2u << fiveColours;
    QTest::newRow("distinct HSB: all of them") << five << 3u << fiveColours;
    QTest::newRow("octree: all of them") << five << 4u << fiveColours;
    // 0x102030 and 0x112131 share a bucket, 0x405060 has its own.
    QTest::newRow("popularity: one per occupied bucket")
        << Runs{{0x102030, 1}, {0x112131, 1}, {0x405060, 3}} << 1u << QList<uint>{0x405060, 0x102030};
    QTest::newRow("Wu: two clusters, their means")
        << Runs{{0x0A0A0A, 2}, {0x0C0C0C, 2}, {0xC8C8C8, 1}, {0xCACACA, 3}} << 2u
        << QList<uint>{0x0B0B0B, 0xC9C9C9};
}

void TestQuantization::fewerColoursThanRequested()
{
    QFETCH(Runs, runs);
    QFETCH(uint, method);
    QFETCH(QList<uint>, expected);
    QCOMPARE(sorted(quantize(runs, method, 16)), sorted(expected));
}

void TestQuantization::uniformGridNesting()
{
    // One pixel: every step that stayed empty is 0, and the channels are independent.
    for (uint count : {1u, 4u, 256u, 1000u}) {
        const QList<uint> p = quantize({{0xC86432, 1}}, 6, count);
        QCOMPARE(p.size(), 256);
        QCOMPARE(p[6 * 32 + 3 * 4 + 0], 0xC86432u); // red step 6, green step 3, blue step 0
        QCOMPARE(p[0], 0x000032u);
        QCOMPARE(p[6 * 32 + 1], 0xC80000u);
        QCOMPARE(p[255], 0u);
    }
    // Values that share a step are averaged with integer division.
    const QList<uint> mixed = quantize({{0x0A0000, 1}, {0x150000, 1}, {0x000000, 1}}, 6, 8);
    QCOMPARE(mixed[0], 0x0A0000u); // (10 + 21 + 0) / 3 = 10
}

void TestQuantization::octreeKeepsBusyBranches()
{
    // More than two pixels pass the root, so nothing is folded and the count is exceeded.
    const Runs four{{0x000000, 2}, {0x0000FF, 2}, {0x00FF00, 2}, {0xFF0000, 2}};
    const QList<uint> p = quantize(four, 4, 2);
    QCOMPARE(p.size(), 4);
    QCOMPARE(p, (QList<uint>{0x000000, 0x0000FF, 0x00FF00, 0xFF0000})); // depth-first child order
}

void TestQuantization::distinctHsbKeepsMostFrequentFirst()
{
    const Runs runs{{0xFF0000, 1}, {0x00FF00, 2}, {0x0000FF, 7}, {0xFFFF00, 1}, {0x808080, 3}, {0x101010, 1}};
    for (uint n = 1; n <= 6; ++n) {
        const QList<uint> p = quantize(runs, 3, n);
        QCOMPARE(p.size(), int(n));
        QCOMPARE(p.first(), 0x0000FFu);
        QCOMPARE(QSet<uint>(p.begin(), p.end()).size(), p.size());
        for (uint c : p)
            QVERIFY(std::any_of(runs.begin(), runs.end(), [c](const auto &r) { return r.first == c; }));
    }
    // Equally frequent: the lowest colour value comes first.
    QCOMPARE(quantize({{0x00FF00, 2}, {0x0000FF, 2}, {0xFF0000, 1}}, 3, 1), QList<uint>{0x0000FF});
}

void TestQuantization::distinctHsbNarrowing()
{
    // Hue spread: of nine hues, three kept on the hue axis are the extremes and the middle.
    std::vector<QA_DistinctHSB::Record> records;
    for (int i = 0; i < 9; ++i) {
        QA_DistinctHSB::Record r;
        r.color = uint32_t(i);
        r.axis[0] = 40.0 * i;
        r.axis[1] = 100.0 - i; // saturation falls as hue rises
        r.axis[2] = 1.0;
        records.push_back(r);
    }
    std::vector<QA_DistinctHSB::Record> hueOnly = records;
    QVERIFY(QA_DistinctHSB::narrow(hueOnly, 3, 1));
    QCOMPARE(hueOnly.size(), size_t(5)); // half of nine, rounded up
    QCOMPARE(hueOnly.front().color, 0u);
    QCOMPARE(hueOnly.back().color, 8u);
    while (QA_DistinctHSB::narrow(hueOnly, 3, 1)) {
    }
    QCOMPARE(hueOnly.size(), size_t(3));
    QCOMPARE(hueOnly[1].color, 4u);
    QVERIFY(!QA_DistinctHSB::narrow(hueOnly, 3, 7)); // at the target nothing more goes
}

void TestQuantization::networkRepeatsWithTheSameSeed()
{
    Runs runs;
    for (uint i = 0; i < 64; ++i)
        runs.append({(i * 4) << 16 | (255 - i * 4) << 8 | (i * 37 % 256), 20});
    std::srand(7);
    const QList<uint> a = quantize(runs, 5, 16);
    std::srand(7);
    const QList<uint> b = quantize(runs, 5, 16);
    QCOMPARE(a.size(), 16);
    QCOMPARE(a, b);
    // The neurons start on the grey diagonal; learning moves some of them off it.
    QVERIFY(std::any_of(a.begin(), a.end(), [](uint c) { return (c >> 16) != (c & 0xFF); }));
}

void TestQuantization::indexedPictureFedThroughColourTable()
{
    QImage indexed(3, 2, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(200, 10, 10), qRgb(10, 200, 10), qRgb(16, 32, 48)});
    const uchar rows[2][3] = {{0, 1, 2}, {2, 2, 0}};
    for (int y = 0; y < 2; ++y)
        memcpy(indexed.scanLine(y), rows[y], 3);
    for (uint method : {0u, 1u, 2u, 3u, 4u, 6u}) {
        const Palette<uint> fromTable = Quantization_AlgorithmFixedSize(8, method).quantize(indexed);
        const Palette<uint> fromRgb = Quantization_AlgorithmFixedSize(8, method).quantize(
            indexed.convertToFormat(QImage::Format_RGB32));
        QCOMPARE(colours(fromTable), colours(fromRgb));
    }
}

void TestQuantization::samePaletteWhateverThePixelFormat()
{
    // Taller than a band of converted rows, and of few enough colours for an exact indexed copy.
    QVector<QRgb> table;
    for (int i = 0; i < 200; ++i)
        table << qRgb((i * 97) % 256, (i * 57 + 30) % 256, (i * 13) % 256);
    QImage argb(151, 133, QImage::Format_ARGB32), opaque(151, 133, QImage::Format_RGB32);
    for (int y = 0; y < argb.height(); ++y)
        for (int x = 0; x < argb.width(); ++x) {
            const QRgb c = table[(x / 7 + y * 3 + (x * y) % 11) % 200];
            argb.setPixel(x, y, c & 0x7FFFFFFFu); // alpha is ignored
            opaque.setPixel(x, y, c);
        }
    const QList<QImage> forms{opaque, opaque.convertToFormat(QImage::Format_RGB888),
                              opaque.convertToFormat(QImage::Format_Indexed8, table)};
    for (uint method : {0u, 1u, 2u, 3u, 4u, 6u}) {
        const QList<uint> expected = colours(Quantization_AlgorithmFixedSize(64, method).quantize(argb));
        for (const QImage &form : forms)
            QCOMPARE(colours(Quantization_AlgorithmFixedSize(64, method).quantize(form)), expected);
    }
}

void TestQuantization::cancelledRunGivesNoPalette()
{
    QImage big(16, 200, QImage::Format_RGB32);
    big.fill(qRgb(1, 2, 3));
    int calls = 0;
    const Palette<uint> p = Quantization_AlgorithmFixedSize(8, 2).quantize(big, [&calls](int) {
        ++calls;
        return false;
    });
    QCOMPARE(calls, 1);
    QVERIFY(p.isEmpty());
}

QTEST_APPLESS_MAIN(TestQuantization)
#include "tst_quantization.moc"
