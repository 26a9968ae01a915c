#include "palette/palette.h"
#include "spaces/rgbacolor.h"
#include "palette/standardpalettes.h"

#include <QMetaType>
#include <QVariant>
#include <QtTest>

class TestPalette : public QObject
{
    Q_OBJECT
private slots:
    void copyIsIndependent();
    void absentPropertyIsEmpty();
    void propertyNames_data();
    void propertyNames();
    void resizeTruncatesOrFills_data();
    void resizeTruncatesOrFills();
    void insertRemoveClearKeepProperties();
    void metaTypeName();
    void widthConversions_data();
    void widthConversions();
    void grayscale();
};

void TestPalette::copyIsIndependent()
{
    Palette<uint> a;
    a.append({1, 2, 3, 4});
    a.setProperty(PaletteName, "original");
    Palette<uint> b = a;
    b[0].r = 999;
    b.append({5, 6, 7, 8});
    b.setProperty(PaletteName, "changed");
    b.setProperty(PaletteComment, "new");
    QCOMPARE(a.size(), 1);
    QCOMPARE(a[0].r, 1u);
    QCOMPARE(a.property(PaletteName), QString("original"));
    QVERIFY(a.property(PaletteComment).isEmpty());

    Palette<uint> c;
    c = b;
    b.setProperty(PaletteName, "again");
    QCOMPARE(c.property(PaletteName), QString("changed"));
    QCOMPARE(c.size(), 2);
}

void TestPalette::absentPropertyIsEmpty()
{
    const Palette<uint> p;
    for (int key : {int(PaletteName), int(PaletteComment), int(PaletteFileExt), int(PaletteFile), 17, -3})
        QVERIFY(p.property(key).isEmpty());
    QCOMPARE(p.size(), 0);
    QVERIFY(p.isEmpty());
}

void TestPalette::propertyNames_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("name");
    QTest::newRow("name") << 0 << "name";
    QTest::newRow("comment") << 1 << "comment";
    QTest::newRow("file.ext") << 2 << "file.ext";
    QTest::newRow("file") << 3 << "file";
}

void TestPalette::propertyNames()
{
    QFETCH(int, key);
    QFETCH(QString, name);
    QCOMPARE(palettePropertyName(key), name);
    QCOMPARE(palettePropertyKey(name), key);
}

void TestPalette::resizeTruncatesOrFills_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("grow") << 3 << 7;
    QTest::newRow("shrink") << 5 << 2;
    QTest::newRow("same") << 4 << 4;
    QTest::newRow("to empty") << 4 << 0;
    QTest::newRow("negative") << 4 << -1;
    QTest::newRow("from empty") << 0 << 3;
}

void TestPalette::resizeTruncatesOrFills()
{
    QFETCH(int, from);
    QFETCH(int, to);
    Palette<uint> p;
    for (int i = 0; i < from; ++i)
        p.append({uint(i), uint(i), uint(i), 65535});
    const RGBAColor<uint> fill(10, 20, 30, 40);
    p.resize(to, fill);
    QCOMPARE(p.size(), qMax(0, to));
    for (int i = 0; i < p.size(); ++i) {
        if (i < from)
            QCOMPARE(p[i], RGBAColor<uint>(uint(i), uint(i), uint(i), 65535));
        else
            QCOMPARE(p[i], fill);
    }
}

void TestPalette::insertRemoveClearKeepProperties()
{
    Palette<uint> p;
    p.setProperty(PaletteFile, "fire");
    p.append({1, 1, 1, 1});
    p.append({3, 3, 3, 3});
    p.insert(1, {2, 2, 2, 2});
    QCOMPARE(p.size(), 3);
    QCOMPARE(p[1].r, 2u);
    p.remove(0);
    QCOMPARE(p[0].r, 2u);
    p.clear();
    QCOMPARE(p.size(), 0);
    QCOMPARE(p.property(PaletteFile), QString("fire"));
}

void TestPalette::metaTypeName()
{
    registerPaletteMetaType();
    const int id = QMetaType::type("Palette<uint>");
    QVERIFY(id != QMetaType::UnknownType);
    QCOMPARE(id, qMetaTypeId<Palette<uint>>());
    Palette<uint> p;
    p.append({7, 8, 9, 10});
    p.setProperty(PaletteComment, "through a variant");
    const QVariant v = QVariant::fromValue(p);
    QCOMPARE(v.value<Palette<uint>>(), p);
}

void TestPalette::widthConversions_data()
{
    QTest::addColumn<uint>("value");
    QTest::addColumn<int>("high");
    QTest::newRow("zero") << 0u << 0;
    QTest::newRow("low byte only") << 255u << 0;
    QTest::newRow("256") << 256u << 1;
    QTest::newRow("65280") << 65280u << 255;
    QTest::newRow("max") << 65535u << 255;
    QTest::newRow("awkward") << 0x12ABu << 0x12;
}

void TestPalette::widthConversions()
{
    QFETCH(uint, value);
    QFETCH(int, high);
    const RGBAColor<uint> c(value, value, value, value);
    const RGBAColor<uchar> b = toByteColor(c);
    QCOMPARE(int(b.r), high);
    QCOMPARE(int(b.a), high);
    QCOMPARE(fromByteColor(b).g, uint(high) << 8);
    const RGBAColor<double> d = toDoubleColor(c);
    QCOMPARE(d.b, value / 65535.0);
    QCOMPARE(fromDoubleColor(d), c);
}

void TestPalette::grayscale()
{
    const Palette<uint> p = grayscalePalette();
    QCOMPARE(p.size(), 256);
    QCOMPARE(p[0], RGBAColor<uint>(0, 0, 0, 65535));
    QCOMPARE(p[1], RGBAColor<uint>(256, 256, 256, 65535));
    QCOMPARE(p[255], RGBAColor<uint>(65280, 65280, 65280, 65535));
}

QTEST_APPLESS_MAIN(TestPalette)
#include "tst_palette.moc"
