#include "operations/paletteoperations.h"
#include "operations/palettesort.h"
#include "operationtesting.h"
#include "palette/describedexception.h"
#include "spaces/colorspace.h"
#include "spaces/luminance.h"

#include <cmath>

#include <QVector>

namespace {

// Red, black, a translucent grey, green, blue, a second black that differs only in alpha, white.
const Entries seven = {{65535, 0, 0, 65535},        {0, 0, 0, 65535},     {30000, 30000, 30000, 100},
                       {0, 65535, 0, 65535},        {0, 0, 65535, 65535}, {0, 0, 0, 7},
                       {65535, 65535, 65535, 65535}};

SortSettings sortOf(int mode, int key, bool descending, bool selectedOnly = false)
{
    SortSettings s;
    s.mode = mode;
    s.key = key;
    s.descending = descending;
    s.selectedOnly = selectedOnly;
    return s;
}

} // namespace

Q_DECLARE_METATYPE(std::set<int>)

class TestPaletteSort : public QObject
{
    Q_OBJECT
private slots:
    void order_data();
    void order();
    void stableBothWays();
    void permutationHelpers();
    void luminanceReference();
    void settings();
    void badSettings_data();
    void badSettings();
};

void TestPaletteSort::order_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("descending");
    QTest::addColumn<bool>("selectedOnly");
    QTest::addColumn<std::set<int>>("selection");
    QTest::addColumn<QVector<int>>("order"); // entry j of the result is entry order[j]

    // Luminance: black (twice), blue 0.072, the grey 0.177, red 0.213, green 0.715, white.
    QTest::newRow("luminance") << 0 << 4 << false << false << std::set<int>()
                               << QVector<int>{1, 5, 4, 2, 0, 3, 6};
    // Descending keeps the two blacks in their order rather than turning them round.
    QTest::newRow("luminance descending")
        << 0 << 4 << true << false << std::set<int>() << QVector<int>{6, 3, 0, 2, 4, 1, 5};
    // Greys first by lightness, then red (0), green (120) and blue (240).
    QTest::newRow("hue then lightness")
        << 0 << 5 << false << false << std::set<int>() << QVector<int>{1, 5, 2, 6, 0, 3, 4};
    QTest::newRow("hue then lightness descending")
        << 0 << 5 << true << false << std::set<int>() << QVector<int>{4, 3, 0, 6, 2, 1, 5};
    QTest::newRow("red") << 0 << 0 << false << false << std::set<int>() << QVector<int>{1, 3, 4, 5, 2, 0, 6};
    QTest::newRow("red descending") << 0 << 0 << true << false << std::set<int>()
                                    << QVector<int>{0, 6, 2, 1, 3, 4, 5};
    // RGB's fourth component is the alpha.
    QTest::newRow("alpha") << 0 << 3 << false << false << std::set<int>()
                           << QVector<int>{5, 2, 0, 1, 3, 4, 6};
    QTest::newRow("HSV value") << int(SpaceHSV) << 2 << false << false << std::set<int>()
                               << QVector<int>{1, 5, 2, 0, 3, 4, 6};
    // A three-component space has nothing in its fourth place: nothing moves.
    QTest::newRow("Lab fourth") << int(SpaceLab) << 3 << true << false << std::set<int>()
                                << QVector<int>{0, 1, 2, 3, 4, 5, 6};
    // Only the selected entries move, among their own places 0, 2, 4 and 6.
    QTest::newRow("selected only") << 0 << 0 << true << true << std::set<int>{0, 2, 4, 6}
                                   << QVector<int>{0, 1, 6, 3, 2, 5, 4};
    // A selection without the box, or the box without a selection, sorts everything.
    QTest::newRow("selection, box off")
        << 0 << 0 << true << false << std::set<int>{0, 2, 4, 6} << QVector<int>{0, 6, 2, 1, 3, 4, 5};
    QTest::newRow("box, no selection")
        << 0 << 0 << true << true << std::set<int>() << QVector<int>{0, 6, 2, 1, 3, 4, 5};
}

void TestPaletteSort::order()
{
    QFETCH(int, mode);
    QFETCH(int, key);
    QFETCH(bool, descending);
    QFETCH(bool, selectedOnly);
    QFETCH(std::set<int>, selection);
    QFETCH(QVector<int>, order);

    Palette<uint> in = paletteOf(seven);
    in.setProperty(PaletteName, QStringLiteral("seven"));
    const SortSettings s = sortOf(mode, key, descending, selectedOnly);
    const std::vector<int> got = PaletteSort::order(in, selection, s);
    QCOMPARE(QVector<int>(got.begin(), got.end()), order);

    Entries expected;
    for (const int i : order)
        expected.push_back(seven[size_t(i)]);
    const Palette<uint> sorted = PaletteSort::sort(in, selection, s);
    QCOMPARE(sorted.entries(), expected);
    QCOMPARE(sorted.property(PaletteName), QStringLiteral("seven"));
    // The registered operation is the same sort, settings read from their text.
    QCOMPARE(PaletteOperations::apply(SortSettings::settingsName, in, selection, s.toPairs()), sorted);
}

void TestPaletteSort::stableBothWays()
{
    // Few distinct colours, many duplicates: equal entries must keep the order they had,
    // ascending and descending alike, in every space and by every key.
    const Entries colours = {
        {0, 0, 0, 65535}, {65535, 0, 0, 65535}, {0, 40000, 9000, 3}, {30000, 30000, 30000, 0}};
    for (const quint32 seed : testSeeds()) {
        QRandomGenerator rng(seed);
        Palette<uint> in;
        for (int i = 0; i < 60; ++i)
            in.append(colours[rng.bounded(quint32(colours.size()))]);
        const int mode = randomIn(rng, 0, ColorSpaceCount - 1);
        for (int key = 0; key < SortSettings::KeyCount; ++key)
            for (const bool descending : {false, true}) {
                const SortSettings s = sortOf(mode, key, descending);
                const std::vector<int> order = PaletteSort::order(in, {}, s);
                QCOMPARE(int(order.size()), in.size());
                for (size_t j = 1; j < order.size(); ++j)
                    if (in[order[j - 1]] == in[order[j]])
                        QVERIFY2(order[j - 1] < order[j],
                                 qPrintable(QStringLiteral("seed %1 key %2").arg(seed).arg(key)));
                // Sorting what is sorted changes nothing.
                const Palette<uint> out = PaletteSort::reordered(in, order);
                QCOMPARE(PaletteSort::sort(out, {}, s), out);
            }
    }
}

void TestPaletteSort::permutationHelpers()
{
    const Palette<uint> in = paletteOf(seven);
    const std::vector<int> order = PaletteSort::order(in, {}, sortOf(0, 4, false));
    const std::vector<int> places = PaletteSort::newPlaces(order);
    const Palette<uint> sorted = PaletteSort::reordered(in, order);
    for (int i = 0; i < in.size(); ++i)
        QCOMPARE(sorted[places[size_t(i)]], in[i]);
    QVERIFY(PaletteSort::order(Palette<uint>(), {}, SortSettings()).empty());
}

void TestPaletteSort::luminanceReference()
{
    // The sRGB primaries' luminances and the curve's linear foot.
    QCOMPARE(relativeLuminance({65535, 65535, 65535, 0}), 0.2126729 + 0.7151522 + 0.0721750);
    QCOMPARE(relativeLuminance({0, 65535, 0, 0}), 0.7151522);
    QCOMPARE(relativeLuminance({0, 0, 0, 65535}), 0.0);
    // Greys: 13107 is 0.2 on the curve's power segment, 257 is 1/255 on its linear foot.
    const double weights = 0.2126729 + 0.7151522 + 0.0721750;
    QVERIFY(qAbs(relativeLuminance({13107, 13107, 13107, 0}) - weights * std::pow(0.255 / 1.055, 2.4)) < 1e-15);
    QVERIFY(qAbs(relativeLuminance({257, 257, 257, 0}) - weights / 255.0 / 12.92) < 1e-15);
    // Words beyond 65535 count as full.
    QCOMPARE(relativeLuminance({70000, 0, 0, 0}), relativeLuminance({65535, 0, 0, 0}));
}

void TestPaletteSort::settings()
{
    for (const quint32 seed : testSeeds()) {
        QRandomGenerator rng(seed);
        SortSettings s;
        s.mode = randomIn(rng, 0, ColorSpaceCount - 1);
        s.key = randomIn(rng, 0, SortSettings::KeyCount - 1);
        s.descending = rng.bounded(2);
        s.selectedOnly = rng.bounded(2);
        s.remap = rng.bounded(2);
        const QString text = SettingsText::format(s.settingsName, SettingsText::formatLines(s.toPairs()));
        QCOMPARE(SortSettings::fromPairs(SettingsText::parse(text, s.settingsName)), s);
    }
    const SortSettings defaults;
    QCOMPARE(SettingsText::formatLines(defaults.toPairs()),
             QStringLiteral("mode:0\nkey:4\ndescending:0\nsel_only:0\nremap:1\n"));
}

void TestPaletteSort::badSettings_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("message");
    QTest::newRow("key 6") << "key"
                           << "6"
                           << "The value \"6\" of \"key\" is not a list position 0..5.";
    QTest::newRow("key -1") << "key"
                            << "-1"
                            << "The value \"-1\" of \"key\" is not a list position 0..5.";
    QTest::newRow("mode") << "mode"
                          << "x"
                          << QStringLiteral("The value \"x\" of \"mode\" is not a colour-space number 0..%1.")
                                 .arg(ColorSpaceCount - 1);
    QTest::newRow("descending") << "descending"
                                << "yes"
                                << "The value \"yes\" of \"descending\" is not 0 or 1.";
}

void TestPaletteSort::badSettings()
{
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(QString, message);
    const Palette<uint> in = paletteOf(seven);
    try {
        PaletteOperations::apply(SortSettings::settingsName, in, {}, {{key, value}});
        QFAIL("no exception");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), QStringLiteral("Invalid settings"));
        QCOMPARE(e.message(), message);
    }
}

QTEST_GUILESS_MAIN(TestPaletteSort)
#include "tst_palettesort.moc"
