// The gradient-key editor, the colour buttons and the slider-with-spin-box, driven with the mouse
// and the keyboard as a user would.
#include "guitesting.h"
#include "pal_gen/colorinterpolationdialog.h"
#include "storage/presetdatabase.h"
#include "utils/qt/colorwidgets/colorpushbutton.h"
#include "utils/qt/colorwidgets/colorticksbar.h"
#include "utils/qt/colorwidgets/selectcolorbutton.h"
#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QColorDialog>
#include <QComboBox>
#include <QSettings>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>

Q_DECLARE_METATYPE(std::vector<int>)

namespace {

using Tick = ColorTicksBar::Tick;

Tick tick(int index, uint color, int space = 0, int function = 0)
{
    Tick t;
    t.index = index;
    t.color = color;
    t.colorSpace = space;
    t.function = function;
    return t;
}

std::vector<int> indexes(const std::vector<Tick> &ticks)
{
    std::vector<int> out;
    for (const Tick &t : ticks)
        out.push_back(t.index);
    return out;
}

// The bar of the interpolation dialog: 2 pixels an index, 17 high, 256 indexes, radius 7.
std::unique_ptr<ColorTicksBar> makeBar(const std::vector<int> &at)
{
    auto bar = std::make_unique<ColorTicksBar>(2, 17, 256, 7, 0, 0);
    std::vector<Tick> ticks;
    for (int i : at)
        ticks.push_back(tick(i, 0xFF000000u | uint(i)));
    bar->setTicks(ticks);
    bar->show();
    return bar;
}

} // namespace

class TestColorWidgets : public QObject
{
    Q_OBJECT
private slots:
    void init() { QSettings().clear(); }
    void barDrawing();
    void leftClickFarAddsTick();
    void rightClick_data();
    void rightClick();
    void nearestTickIsHit();
    void dragStopsAtNeighbours();
    void endsDoNotMove();
    void selectionSlots();
    void sliderSpin();
    void selectColorButton();
    void colorPushButton();
    void interpolationEditors();
};

void TestColorWidgets::barDrawing()
{
    auto bar = makeBar({0, 255});
    const QImage &image = bar->image();
    QCOMPARE(image.size(), QSize(512, 17));
    // Background grey with white 4x4 squares where (x / 4 + y / 4) is odd.
    QCOMPARE(image.pixel(296, 0), 0xFF808080u);
    QCOMPARE(image.pixel(300, 0), 0xFFFFFFFFu);
    QCOMPARE(image.pixel(300, 4), 0xFF808080u);
    QCOMPARE(image.pixel(296, 4), 0xFFFFFFFFu);

    std::vector<Tick> ticks = bar->ticks();
    ticks.insert(ticks.begin() + 1, tick(100, 0xFFFF0000u));
    bar->setTicks(ticks);
    const QImage &drawn = bar->image();
    // Rows 1..7 above the middle row and 9..15 below it; the widest rows, next to the middle, reach 6.
    QCOMPARE(drawn.pixel(200, 1), 0xFFFF0000u);
    QVERIFY(drawn.pixel(199, 1) != 0xFFFF0000u);
    QCOMPARE(drawn.pixel(194, 7), 0xFFFF0000u);
    QCOMPARE(drawn.pixel(206, 9), 0xFFFF0000u);
    QVERIFY(drawn.pixel(193, 7) != 0xFFFF0000u);
    QCOMPARE(drawn.pixel(200, 15), 0xFFFF0000u);
    QVERIFY(drawn.pixel(200, 8) != 0xFFFF0000u);
    QVERIFY(drawn.pixel(200, 0) != 0xFFFF0000u && drawn.pixel(200, 16) != 0xFFFF0000u);

    // A selected tick is outlined in black at both ends of every row.
    bar->selectTick(1);
    QCOMPARE(bar->image().pixel(194, 7), 0xFF000000u);
    QCOMPARE(bar->image().pixel(206, 7), 0xFF000000u);
    QCOMPARE(bar->image().pixel(200, 7), 0xFFFF0000u);
    QCOMPARE(bar->image().pixel(200, 1), 0xFF000000u);
}

void TestColorWidgets::leftClickFarAddsTick()
{
    auto bar = makeBar({0, 255});
    bar->setDefaults(9, 1);
    QSignalSpy changed(bar.get(), &ColorTicksBar::ticksChanged);
    QSignalSpy selected(bar.get(), &ColorTicksBar::tickSelected);
    QTest::mouseClick(bar.get(), Qt::LeftButton, {}, QPoint(257, 8));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(indexes(bar->ticks()), std::vector<int>({0, 128, 255}));
    const Tick &added = bar->ticks()[1];
    QCOMPARE(added.color >> 24, 0xFFu);
    QCOMPARE(added.colorSpace, 9);
    QCOMPARE(added.function, 1);
    QCOMPARE(selected.count(), 1);
    QCOMPARE(selected.at(0).at(0).toInt(), 1);
    QCOMPARE(bar->currentTick(), 1);
    QCOMPARE(bar->selectedTicks(), std::set<int>({1}));

    // Clicking the new tick selects it and adds nothing.
    QTest::mouseClick(bar.get(), Qt::LeftButton, {}, QPoint(262, 10));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(selected.last().at(0).toInt(), 1);
}

void TestColorWidgets::rightClick_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<std::vector<int>>("left");
    QTest::newRow("far from any tick") << 300 << std::vector<int>({0, 100, 255});
    QTest::newRow("inner tick") << 203 << std::vector<int>({0, 255});
    QTest::newRow("first tick") << 2 << std::vector<int>({0, 100, 255});
    QTest::newRow("last tick") << 508 << std::vector<int>({0, 100, 255});
}

void TestColorWidgets::rightClick()
{
    QFETCH(int, x);
    QFETCH(std::vector<int>, left);
    auto bar = makeBar({0, 100, 255});
    QSignalSpy changed(bar.get(), &ColorTicksBar::ticksChanged);
    QSignalSpy selected(bar.get(), &ColorTicksBar::tickSelected);
    QTest::mouseClick(bar.get(), Qt::RightButton, {}, QPoint(x, 8));
    QCOMPARE(indexes(bar->ticks()), left);
    QCOMPARE(changed.count(), left.size() == 3 ? 0 : 1);
    QCOMPARE(selected.count(), 1);
    QCOMPARE(selected.at(0).at(0).toInt(), -1);
}

void TestColorWidgets::nearestTickIsHit()
{
    // Index 12 lies 2 from ticks 10 and 14 and 5 from tick 17: one of the two nearest is hit.
    auto bar = makeBar({0, 10, 14, 17, 255});
    const int hit = bar->hitTest(24, 8, false);
    QVERIFY(hit == 1 || hit == 2);
    QCOMPARE(bar->currentTick(), hit);
    // The row counts too: 7 rows off the middle still hits, 8 do not.
    QCOMPARE(bar->hitTest(34, 1, false), 3);
    QCOMPARE(bar->hitTest(34, 0, false), -1);
    QCOMPARE(bar->currentTick(), -1);
}

void TestColorWidgets::dragStopsAtNeighbours()
{
    auto bar = makeBar({0, 100, 150, 255});
    QSignalSpy changed(bar.get(), &ColorTicksBar::ticksChanged);
    QTest::mousePress(bar.get(), Qt::LeftButton, {}, QPoint(200, 8));
    QCOMPARE(bar->currentTick(), 1);
    QMouseEvent towards(QEvent::MouseMove, QPoint(260, 8), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(bar.get(), &towards);
    QCOMPARE(indexes(bar->ticks()), std::vector<int>({0, 130, 150, 255}));
    QMouseEvent past(QEvent::MouseMove, QPoint(450, 8), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(bar.get(), &past);
    QCOMPARE(indexes(bar->ticks()), std::vector<int>({0, 150, 150, 255}));
    QMouseEvent back(QEvent::MouseMove, QPoint(-40, 8), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(bar.get(), &back);
    QCOMPARE(indexes(bar->ticks()), std::vector<int>({0, 0, 150, 255}));
    QCOMPARE(changed.count(), 3);
    QTest::mouseRelease(bar.get(), Qt::LeftButton, {}, QPoint(0, 8));
    // Moving without the button moves nothing.
    QMouseEvent free(QEvent::MouseMove, QPoint(200, 8), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(bar.get(), &free);
    QCOMPARE(indexes(bar->ticks()), std::vector<int>({0, 0, 150, 255}));
}

void TestColorWidgets::endsDoNotMove()
{
    auto bar = makeBar({0, 100, 255});
    QSignalSpy changed(bar.get(), &ColorTicksBar::ticksChanged);
    for (const QPoint &from : {QPoint(0, 8), QPoint(510, 8)}) {
        QTest::mousePress(bar.get(), Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, QPoint(300, 8), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(bar.get(), &move);
        QTest::mouseRelease(bar.get(), Qt::LeftButton, {}, QPoint(300, 8));
    }
    QCOMPARE(indexes(bar->ticks()), std::vector<int>({0, 100, 255}));
    QCOMPARE(changed.count(), 0);
}

void TestColorWidgets::selectionSlots()
{
    auto bar = makeBar({0, 100, 255});
    bar->selectAll();
    QCOMPARE(bar->selectedTicks(), std::set<int>({0, 1, 2}));
    bar->selectTick(1);
    bar->selectInvert();
    QCOMPARE(bar->selectedTicks(), std::set<int>({0, 2}));
    bar->selectNone();
    QVERIFY(bar->selectedTicks().empty());
}

void TestColorWidgets::sliderSpin()
{
    QCombinedSliderSpin c;
    QSignalSpy spy(&c, &QCombinedSliderSpin::valueChanged);
    c.setRange(-100, 100);
    QCOMPARE(spy.count(), 1);
    c.slider()->setValue(40);
    QCOMPARE(c.spinBox()->value(), 40);
    QCOMPARE(spy.last().at(0).toInt(), 40);
    c.spinBox()->setValue(-7);
    QCOMPARE(c.slider()->value(), -7);
    QCOMPARE(spy.last().at(0).toInt(), -7);
    c.setValue(90);
    QCOMPARE(c.slider()->value(), 90);
    QCOMPARE(c.value(), 90);
    // A narrower range keeps the value as far as it can, and says what it became.
    const int before = spy.count();
    c.setRange(0, 50);
    QCOMPARE(c.value(), 50);
    QCOMPARE(c.slider()->value(), 50);
    QCOMPARE(spy.count(), before + 1);
    QCOMPARE(spy.last().at(0).toInt(), 50);
    c.setRange(0, 500);
    QCOMPARE(c.value(), 50);
    QCOMPARE(spy.last().at(0).toInt(), 50);
    c.setEnabled(false);
    QVERIFY(!c.slider()->isEnabled() && !c.spinBox()->isEnabled());
}

void TestColorWidgets::selectColorButton()
{
    QWidget owner;
    auto *button = new SelectColorButton(&owner);
    button->setColor(QColor(10, 20, 30));
    QCOMPARE(button->styleSheet(), QString("background-color: #0a141e"));
    QSignalSpy spy(button, &SelectColorButton::colorChanged);
    // While the dialog is up each colour pointed at is announced; Cancel announces the old one again.
    bool parented = false;
    handleNextDialog<QColorDialog>([&](QColorDialog *d) {
        parented = d->parentWidget() == &owner;
        d->setCurrentColor(QColor(255, 0, 0));
        d->reject();
    });
    button->click();
    QVERIFY(parented);
    QVERIFY(spy.count() >= 2);
    QCOMPARE(spy.at(spy.count() - 2).at(0).value<QColor>(), QColor(255, 0, 0));
    QCOMPARE(spy.last().at(0).value<QColor>(), QColor(10, 20, 30));
    QCOMPARE(button->color(), QColor(10, 20, 30));

    handleNextDialog<QColorDialog>([](QColorDialog *d) {
        d->setCurrentColor(QColor(0, 0, 255));
        d->accept();
    });
    button->click();
    QCOMPARE(button->color(), QColor(0, 0, 255));
    QCOMPARE(spy.last().at(0).value<QColor>(), QColor(0, 0, 255));
    QCOMPARE(button->styleSheet(), QString("background-color: #0000ff"));
}

void TestColorWidgets::colorPushButton()
{
    ColorPushButton button;
    button.setColor(QColor("#aa00ff"));
    QCOMPARE(button.color(), QColor("#aa00ff"));
    QCOMPARE(button.styleSheet(), QString("background-color: #aa00ff"));
}

void TestColorWidgets::interpolationEditors()
{
    PresetDatabase db; // not opened: the dialog works from its presets alone
    ColorInterpolationDialog d(Palette<uint>(), {}, db.connectionName(), 1024);
    d.start();
    auto *bar = d.findChild<ColorTicksBar *>("ticks");
    auto *index = d.findChild<QSpinBox *>("index");
    auto *space = d.findChild<QComboBox *>("colorSpace");
    auto *color = d.findChild<SelectColorButton *>("color");
    QVERIFY(!index->isEnabled());
    bar->setTicks(
        {tick(0, 0xFF000000u), tick(60, 0xFF112233u, 9, 1), tick(200, 0xFF00FF00u), tick(255, 0xFFFFFFFFu)});
    QTest::mouseClick(bar, Qt::LeftButton, {}, QPoint(120, 8));
    QVERIFY(index->isEnabled());
    QCOMPARE(index->value(), 60);
    QCOMPARE(space->currentIndex(), 9);
    QCOMPARE(d.findChild<QComboBox *>("function")->currentIndex(), 1);
    QCOMPARE(color->color(), QColor(0x11, 0x22, 0x33));

    // The editors write into the selected tick; an index past a neighbour stops at it.
    index->setValue(230);
    QCOMPARE(bar->ticks()[1].index, 200);
    QCOMPARE(index->value(), 200);
    index->setValue(90);
    QCOMPARE(bar->ticks()[1].index, 90);
    space->setCurrentIndex(3);
    QCOMPARE(bar->ticks()[1].colorSpace, 3);
    color->updateColor(QColor(1, 2, 3));
    QCOMPARE(bar->ticks()[1].color, 0xFF010203u);
    QCoreApplication::processEvents();
    // The strip and the result follow the ticks; the result has 256 entries at size 256.
    QCOMPARE(d.strip().size(), 256);
    QCOMPARE(d.result().size(), 256);
    QCOMPARE(d.strip(), ColorInterpolation::generate(bar->ticks(), 256));
    QCOMPARE(d.result(), ColorInterpolation::generate(bar->ticks(), 256));
    QTest::mouseClick(bar, Qt::RightButton, {}, QPoint(180, 8));
    QVERIFY(!index->isEnabled());
    QCOMPARE(indexes(bar->ticks()), std::vector<int>({0, 200, 255}));
}

CHROMAXIS_GUI_TEST_MAIN(TestColorWidgets)
#include "tst_colorwidgets.moc"
