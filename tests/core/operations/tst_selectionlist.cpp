#include "operations/selectionlist.h"
#include "palette/describedexception.h"

#include <QRandomGenerator>
#include <QtTest>

Q_DECLARE_METATYPE(std::set<int>)

namespace {

std::set<int> range(int first, int last)
{
    std::set<int> s;
    for (int i = first; i <= last; ++i)
        s.insert(s.end(), i);
    return s;
}

// "first-last" runs of width indexes from 0 on, count of them, joined by commas.
QString runs(int count, int width)
{
    QStringList parts;
    for (int i = 0; i < count; ++i)
        parts << QStringLiteral("%1-%2").arg(i * width).arg(i * width + width - 1);
    return parts.join(',');
}

// "0,1,...,count - 1".
QString singles(int count)
{
    QStringList parts;
    for (int i = 0; i < count; ++i)
        parts << QString::number(i);
    return parts.join(',');
}

const int noPalette = -1;

std::set<int> parsed(const QString &text, int paletteSize)
{
    return paletteSize == noPalette ? SelectionList::parse(text) : SelectionList::parse(text, paletteSize);
}

} // namespace

class TestSelectionList : public QObject
{
    Q_OBJECT
private slots:
    void parse_data();
    void parse();
    void refused_data();
    void refused();
    void ranges();
    void format_data();
    void format();
    void randomRoundTrip();
    void parameterLine();
};

void TestSelectionList::parse_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("paletteSize");
    QTest::addColumn<std::set<int>>("expected");

    QTest::newRow("empty") << "" << noPalette << std::set<int>{};
    QTest::newRow("empty in an empty palette") << "" << 0 << std::set<int>{};
    QTest::newRow("single") << "4" << noPalette << std::set<int>{4};
    QTest::newRow("zero") << "0" << 1 << std::set<int>{0};
    QTest::newRow("runs") << "0-2,5,7-8" << noPalette << std::set<int>{0, 1, 2, 5, 7, 8};
    QTest::newRow("one-entry range") << "3-3" << 4 << std::set<int>{3};
    QTest::newRow("blanks around indexes") << " 3 , 5 - 7\t" << noPalette << std::set<int>{3, 5, 6, 7};
    QTest::newRow("unordered and overlapping") << "7-9,3,8,1-2,2-3" << 10 << std::set<int>{1, 2, 3, 7, 8, 9};
    QTest::newRow("leading zeros") << "007,010" << noPalette << std::set<int>{7, 10};
    QTest::newRow("whole palette") << "0-2" << 3 << std::set<int>{0, 1, 2};
    QTest::newRow("largest index") << "2147483647" << noPalette << std::set<int>{2147483647};
    QTest::newRow("adjacent at the top")
        << "2147483646,2147483647" << noPalette << std::set<int>{2147483646, 2147483647};
    QTest::newRow("exactly the limit")
        << "0-1048575" << noPalette << range(0, SelectionList::maximumCount - 1);
    // The limit counts distinct indexes: the same range given a thousand times is one range.
    QTest::newRow("repeated range at the limit") << QString("0-1048575,").repeated(999) + "0-1048575"
                                                 << noPalette << range(0, SelectionList::maximumCount - 1);
    QTest::newRow("many single indexes at the limit")
        << singles(SelectionList::maximumCount) << noPalette << range(0, SelectionList::maximumCount - 1);
    QTest::newRow("many runs at the limit")
        << runs(1024, 1024) << noPalette << range(0, SelectionList::maximumCount - 1);
}

void TestSelectionList::parse()
{
    QFETCH(QString, text);
    QFETCH(int, paletteSize);
    QFETCH(std::set<int>, expected);
    QCOMPARE(parsed(text, paletteSize), expected);
}

void TestSelectionList::refused_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("paletteSize");
    QTest::addColumn<QString>("message");

    for (const char *list :
         {"a", "3-", "-3", "1,,2", ",", "1,", " ", "1;2", "+1", "0x1", "1-2-3", "3 4", "4-a"})
        QTest::newRow(qPrintable(QStringLiteral("malformed '%1'").arg(list)))
            << list << noPalette
            << QStringLiteral("The selection '%1' is not an index list like 0,3,5-9.").arg(list);
    QTest::newRow("malformed, with a palette")
        << "1-" << 10 << "The selection '1-' is not an index list like 0,3,5-9.";
    QTest::newRow("reversed") << "1,5-2" << noPalette
                              << "The range '5-2' in the selection '1,5-2' runs backwards.";
    QTest::newRow("reversed, with blanks")
        << "3 - 1" << 10 << "The range '3-1' in the selection '3 - 1' runs backwards.";
    QTest::newRow("index beyond int")
        << "99999999999" << noPalette
        << "The index '99999999999' in the selection '99999999999' is larger than 2147483647.";
    QTest::newRow("range end beyond int")
        << "0-4000000000" << noPalette
        << "The index '4000000000' in the selection '0-4000000000' is larger than 2147483647.";
    QTest::newRow("one huge range")
        << "0-2000000000" << noPalette
        << "The selection '0-2000000000' names 2000000001 indexes; a selection holds at most 1048576.";
    QTest::newRow("one past the limit")
        << "0-1048576" << noPalette
        << "The selection '0-1048576' names 1048577 indexes; a selection holds at most 1048576.";
    QTest::newRow("many small ranges")
        << runs(1049, 1000) << noPalette
        << "The selection '0-999,1000-1999,2000-2999,3000-3999,4000-4999,5000-5999,6000-6999,7000-7999,8000...' "
           "names 1049000 indexes; a selection "
           "holds at most 1048576.";
    QTest::newRow("many single indexes")
        << singles(SelectionList::maximumCount + 1) << noPalette
        << "The selection '0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,...' "
           "names 1048577 indexes; a selection "
           "holds at most 1048576.";
    QTest::newRow("a percent sign is no marker")
        << "%1-%2" << noPalette << "The selection '%1-%2' is not an index list like 0,3,5-9.";
    QTest::newRow("past the palette")
        << "1-3" << 3 << "The selection names index 3, but the palette has 3 entries.";
    QTest::newRow("first range past the palette as written")
        << "2,6,0-9" << 6 << "The selection names index 6, but the palette has 6 entries.";
    QTest::newRow("empty palette") << "0" << 0
                                   << "The selection names index 0, but the palette has 0 entries.";
    // The palette is checked before the count, so a huge range names the palette's size.
    QTest::newRow("huge range past the palette")
        << "0-2000000000" << 3 << "The selection names index 2000000000, but the palette has 3 entries.";
}

void TestSelectionList::refused()
{
    QFETCH(QString, text);
    QFETCH(int, paletteSize);
    QFETCH(QString, message);
    try {
        parsed(text, paletteSize);
        QFAIL("no exception");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), QString("Invalid selection"));
        QCOMPARE(e.message(), message);
    }
}

void TestSelectionList::ranges()
{
    // The form alone: as written, in order, with nothing merged and no limit applied.
    const std::vector<SelectionList::Range> r = SelectionList::ranges("9, 0-2000000000 ,3-4,3");
    QCOMPARE(int(r.size()), 4);
    const int expected[4][2] = {{9, 9}, {0, 2000000000}, {3, 4}, {3, 3}};
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(r[size_t(i)].first, expected[i][0]);
        QCOMPARE(r[size_t(i)].last, expected[i][1]);
    }
    QVERIFY(SelectionList::ranges("").empty());
    QVERIFY_EXCEPTION_THROWN(SelectionList::ranges("3-1"), DescribedException);
}

void TestSelectionList::format_data()
{
    QTest::addColumn<QList<int>>("indexes");
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QList<int>{} << "";
    QTest::newRow("single") << QList<int>{4} << "4";
    QTest::newRow("runs") << QList<int>{0, 1, 2, 5, 7, 8} << "0-2,5,7-8";
    QTest::newRow("pair is a range") << QList<int>{3, 4} << "3-4";
    QTest::newRow("gaps of one") << QList<int>{1, 3, 5} << "1,3,5";
    QTest::newRow("top of int") << QList<int>{2147483645, 2147483646, 2147483647} << "2147483645-2147483647";
}

void TestSelectionList::format()
{
    QFETCH(QList<int>, indexes);
    QFETCH(QString, text);
    const std::set<int> set(indexes.begin(), indexes.end());
    QCOMPARE(SelectionList::format(set), text);
    QCOMPARE(SelectionList::parse(text), set);
}

void TestSelectionList::randomRoundTrip()
{
    QRandomGenerator random(20240611);
    for (int round = 0; round < 200; ++round) {
        std::set<int> set;
        const int count = int(random.bounded(60));
        for (int i = 0; i < count; ++i)
            set.insert(int(random.bounded(100)));
        const QString text = SelectionList::format(set);
        QCOMPARE(SelectionList::parse(text, 100), set);
        QCOMPARE(SelectionList::format(SelectionList::parse(text)), text);
    }
}

void TestSelectionList::parameterLine()
{
    QCOMPARE(SelectionList::parameterLine({2, 3, 4, 5, 9}), QString("selection:2-5,9\n"));
    QCOMPARE(SelectionList::parameterLine({}), QString("selection:\n"));
    QCOMPARE(SelectionList::parameterKey, QString("selection"));
}

QTEST_GUILESS_MAIN(TestSelectionList)
#include "tst_selectionlist.moc"
