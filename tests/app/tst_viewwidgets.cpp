#include "imagelabel.h"
#include "palettebar.h"
#include "paletteview.h"

#include <QSignalSpy>
#include <QWheelEvent>
#include <QtTest>

namespace {

Palette<uint> makePalette(int n)
{
    Palette<uint> p;
    for (int i = 0; i < n; ++i)
        p.append(
            RGBAColor<uint>(uint(i * 9001) & 0xFFFF, uint(60000 - i * 97), uint(i * 1500 + 0x80), 65535));
    return p;
}

QRgb shown(const Palette<uint> &p, int i)
{
    return qRgb(int(p[i].r >> 8), int(p[i].g >> 8), int(p[i].b >> 8));
}

} // namespace

// The image label's wheel and the one-row palette strip.
class TestViewWidgets : public QObject
{
    Q_OBJECT
private slots:
    void imageLabelWheel_data();
    void imageLabelWheel();
    void paletteBar_data();
    void paletteBar();
    void paletteBarClicks();
};

void TestViewWidgets::imageLabelWheel_data()
{
    QTest::addColumn<QPoint>("pixels");
    QTest::addColumn<QPoint>("degrees");
    QTest::addColumn<bool>("emits");
    QTest::addColumn<double>("value");
    QTest::newRow("pixel delta wins") << QPoint(0, 30) << QPoint(0, 120) << true << 30.0;
    QTest::newRow("pixel delta, horizontal only") << QPoint(5, 0) << QPoint(0, 120) << true << 0.0;
    QTest::newRow("one notch") << QPoint() << QPoint(0, 120) << true << 1.0;
    QTest::newRow("two notches back") << QPoint() << QPoint(0, -240) << true << -2.0;
    QTest::newRow("half notch") << QPoint() << QPoint(0, 60) << true << 0.5;
    QTest::newRow("sideways notch") << QPoint() << QPoint(120, 0) << true << 0.0;
    QTest::newRow("nothing") << QPoint() << QPoint() << false << 0.0;
}

void TestViewWidgets::imageLabelWheel()
{
    QFETCH(QPoint, pixels);
    QFETCH(QPoint, degrees);
    QFETCH(bool, emits);
    QFETCH(double, value);
    ImageLabel label;
    QSignalSpy spy(&label, &ImageLabel::zoomChanged);
    QWheelEvent event(QPointF(5, 5), QPointF(5, 5), pixels, degrees, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    event.ignore();
    QApplication::sendEvent(&label, &event);
    QVERIFY(event.isAccepted());
    QCOMPARE(spy.count(), emits ? 1 : 0);
    if (emits)
        QCOMPARE(spy.at(0).at(0).toDouble(), value);
}

void TestViewWidgets::paletteBar_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("index");
    QTest::newRow("first") << 4 << 0 << 0;
    QTest::newRow("border") << 4 << 25 << 1;
    QTest::newRow("last pixel") << 4 << 99 << 3;
    QTest::newRow("outside") << 4 << 100 << -1;
    QTest::newRow("uneven, before border") << 3 << 32 << 0;
    QTest::newRow("uneven, border") << 3 << 33 << 1;
    QTest::newRow("uneven, second border") << 3 << 66 << 2;
    // Cells 150 and 151 are zero pixels wide; 152 starts at x 50.
    QTest::newRow("more entries than pixels") << 300 << 50 << 152;
    QTest::newRow("empty") << 0 << 10 << -1;
}

void TestViewWidgets::paletteBar()
{
    QFETCH(int, length);
    QFETCH(int, x);
    QFETCH(int, index);
    PaletteBar bar(makePalette(length));
    bar.resize(100, 16);
    QCOMPARE(bar.indexAt(x), index);
    if (index >= 0) {
        QVERIFY(bar.cellRect(index).contains(x, 8));
        // The cells share the width without gaps.
        QCOMPARE(bar.cellRect(0).left(), 0);
        QCOMPARE(bar.cellRect(length - 1).right(), 99);
    }
}

void TestViewWidgets::paletteBarClicks()
{
    const Palette<uint> p = makePalette(4);
    PaletteBar bar(p);
    bar.resize(100, 16);
    bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&bar));
    const QImage shot = bar.grab().toImage();
    QCOMPARE(shot.pixel(37, 8), shown(p, 1));

    QTest::mouseClick(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(60, 8));
    QCOMPARE(bar.selection(), std::set<int>{2});
    QTest::mouseClick(&bar, Qt::LeftButton, Qt::ControlModifier, QPoint(10, 8));
    QCOMPARE(bar.selection(), (std::set<int>{0, 2}));
    bar.selectInvert();
    QCOMPARE(bar.selection(), (std::set<int>{1, 3}));
    QCOMPARE(bar.grab().toImage().pixel(25, 0), qRgb(0xFF, 0xFF, 0x00));
    bar.selectAll();
    QCOMPARE(bar.selection(), (std::set<int>{0, 1, 2, 3}));
    bar.selectNone();
    QVERIFY(bar.selection().empty());

    QSignalSpy colourSpy(&bar, &PaletteBar::currentColorChanged);
    QTest::mouseDClick(&bar, Qt::LeftButton, Qt::NoModifier, QPoint(80, 8));
    QCOMPARE(colourSpy.count(), 1);
    QCOMPARE(colourSpy.at(0).at(0).value<QColor>(), PaletteView::colorFromEntry(p[3]));

    QSignalSpy paletteSpy(&bar, &PaletteBar::paletteChanged);
    bar.setPalette(makePalette(4));
    QCOMPARE(paletteSpy.count(), 0);
    bar.setPalette(makePalette(5));
    QCOMPARE(paletteSpy.count(), 1);
}

QTEST_MAIN(TestViewWidgets)

#include "tst_viewwidgets.moc"
