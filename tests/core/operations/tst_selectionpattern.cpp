#include "operations/selectionpattern.h"

#include <QRandomGenerator>
#include <QtTest>

Q_DECLARE_METATYPE(std::set<int>)
Q_DECLARE_METATYPE(SelectionPatternSettings)

namespace {

SelectionPatternSettings pattern(int start, int set, int skip, bool full = true, int end = 256)
{
    SelectionPatternSettings s;
    s.startIndex = start;
    s.setNumber = set;
    s.skipNumber = skip;
    s.fullPalette = full;
    s.endIndex = end;
    return s;
}

std::set<int> range(int first, int last)
{
    std::set<int> s;
    for (int i = first; i <= last; ++i)
        s.insert(i);
    return s;
}

} // namespace

class TestSelectionPattern : public QObject
{
    Q_OBJECT
private slots:
    void select_data();
    void select();
    void fromSettingsText();
    void randomisedPeriodicity();
};

void TestSelectionPattern::select_data()
{
    QTest::addColumn<int>("paletteSize");
    QTest::addColumn<SelectionPatternSettings>("settings");
    QTest::addColumn<std::set<int>>("expected");

    // The palette's length itself is the last index with "Full palette".
    QTest::newRow("every other of 6") << 6 << pattern(0, 1, 1) << std::set<int>{0, 2, 4, 6};
    QTest::newRow("set 3, skip 0") << 6 << pattern(2, 3, 0) << range(2, 6);
    QTest::newRow("start beyond the last") << 6 << pattern(7, 1, 0) << std::set<int>{};
    QTest::newRow("start at the length") << 6 << pattern(6, 2, 3) << std::set<int>{6};
    QTest::newRow("run cut at the last") << 5 << pattern(0, 2, 2) << std::set<int>{0, 1, 4, 5};
    QTest::newRow("end index instead") << 100 << pattern(1, 1, 3, false, 9) << std::set<int>{1, 5, 9};
    QTest::newRow("end index below start") << 100 << pattern(10, 1, 0, false, 9) << std::set<int>{};
    QTest::newRow("preset 2 on 32") << 32 << pattern(0, 1, 7) << std::set<int>{0, 8, 16, 24, 32};
    QTest::newRow("preset 5 on 64") << 64 << pattern(15, 1, 14) << std::set<int>{15, 30, 45, 60};
    QTest::newRow("empty palette") << 0 << pattern(0, 1, 0) << std::set<int>{0};
}

void TestSelectionPattern::select()
{
    QFETCH(int, paletteSize);
    QFETCH(SelectionPatternSettings, settings);
    QFETCH(std::set<int>, expected);
    QCOMPARE(SelectionPattern::select(paletteSize, settings), expected);
}

void TestSelectionPattern::fromSettingsText()
{
    const SettingsText::Pairs pairs = SettingsText::parse(
        "selectionpattern 2.0.0\nstart_index:1\nend_index:20\nfull_palette:0\nset_number:2\nskip_number:3\n",
        SelectionPatternSettings::settingsName);
    QCOMPARE(SelectionPattern::select(10, pairs), (std::set<int>{1, 2, 6, 7, 11, 12, 16, 17}));
    // The spin boxes' ranges: a set of 0 becomes 1, negatives become 0.
    const SelectionPatternSettings clamped = SelectionPatternSettings::fromPairs(
        {{"set_number", "0"}, {"skip_number", "-4"}, {"start_index", "99999"}, {"end_index", "-1"}});
    QCOMPARE(clamped.setNumber, 1);
    QCOMPARE(clamped.skipNumber, 0);
    QCOMPARE(clamped.startIndex, 65535);
    QCOMPARE(clamped.endIndex, 0);
    const SelectionPatternSettings s = pattern(3, 4, 5, false, 77);
    QCOMPARE(SelectionPatternSettings::fromPairs(s.toPairs()), s);
}

void TestSelectionPattern::randomisedPeriodicity()
{
    for (const quint32 seed : {3u, 17u, 4242u}) {
        QRandomGenerator rng(seed);
        for (int round = 0; round < 200; ++round) {
            const int size = int(rng.bounded(400));
            const SelectionPatternSettings s =
                pattern(int(rng.bounded(300)), int(rng.bounded(20)) + 1, int(rng.bounded(20)),
                        rng.bounded(2) == 1, int(rng.bounded(400)));
            const int last = s.fullPalette ? size : s.endIndex;
            const std::set<int> got = SelectionPattern::select(size, s);
            // Index i is chosen exactly when it lies in start..last and its place in the period of
            // set + skip falls within the run.
            for (int i = 0; i <= 450; ++i) {
                const bool want = i >= s.startIndex && i <= last &&
                                  (i - s.startIndex) % (s.setNumber + s.skipNumber) < s.setNumber;
                QCOMPARE(got.count(i) == 1, want);
            }
            QVERIFY(got.empty() || *got.rbegin() <= last);
        }
    }
}

QTEST_GUILESS_MAIN(TestSelectionPattern)
#include "tst_selectionpattern.moc"
