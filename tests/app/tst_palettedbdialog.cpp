#include "dialogs/palettedbdialog.h"
#include "storage/palettedatabase.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>

namespace {

// Two palettes in fractint and drabet, one in each other subset, and one outside every subset.
const QByteArray sampleText = "fractint/1;000000ffffff;\r\n"
                              "gimp/bears;080808;\r\n"
                              "drabet/navy-gold;102050ecb428;\r\n"
                              "orvane/rainbow;ff000000ff000000ff;\r\n"
                              "kestil96/game-boy;0f380f3062308bac0f9bbc0f;\r\n"
                              "plimsy/spectrum;ff0000;\r\n"
                              "fractint/2;123456;\r\n"
                              "drabet/ink-cream;141824faf0d2;\r\n"
                              "other/thing;ffffff;\r\n";

QComboBox *subsetBox(QDialog &dialog)
{
    return dialog.findChild<QComboBox *>("subset");
}

QTableWidget *table(QDialog &dialog)
{
    return dialog.findChild<QTableWidget *>("palettes");
}

QPushButton *okButton(QDialog &dialog)
{
    return dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
}

QStringList shownNames(QTableWidget *t)
{
    QStringList names;
    for (int row = 0; row < t->rowCount(); ++row)
        names << t->item(row, 1)->text();
    return names;
}

void clickRow(QTableWidget *t, int row)
{
    const QRect rect = t->visualItemRect(t->item(row, 1));
    QVERIFY(rect.isValid());
    QTest::mouseClick(t->viewport(), Qt::LeftButton, {}, rect.center());
}

} // namespace

class TestPaletteDBDialog : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void offersSubsetsInOrder();
    void subsetsFillTheTable_data();
    void subsetsFillTheTable();
    void clickingChoosesAndOkReturnsName();
    void keyboardDrivesComboAndTable();
    void preselectsCurrentName_data();
    void preselectsCurrentName();
    void stripShowsColours();
    void shippedCollection();

private:
    PaletteDatabase m_db;
};

void TestPaletteDBDialog::initTestCase()
{
    m_db.loadFromText(sampleText);
    QCOMPARE(m_db.size(), 9);
}

void TestPaletteDBDialog::offersSubsetsInOrder()
{
    PaletteDBDialog dialog(m_db);
    QCOMPARE(dialog.windowTitle(), QString("Browse the DB"));
    QComboBox *box = subsetBox(dialog);
    QStringList items;
    for (int i = 0; i < box->count(); ++i)
        items << box->itemText(i);
    QCOMPARE(items, QStringList({"fractint", "gimp", "orvane", "kestil96", "plimsy", "drabet"}));
    QCOMPARE(PaletteDBDialog::settingsName(), QString("palette_db"));
    QTableWidget *t = table(dialog);
    QCOMPARE(t->columnCount(), 2);
    QCOMPARE(t->horizontalHeaderItem(0)->text(), QString("Palette"));
    QCOMPARE(t->horizontalHeaderItem(1)->text(), QString("Name"));
    // Nothing is chosen yet, so there is nothing to return.
    QCOMPARE(dialog.selectedName(), QString());
    QVERIFY(!okButton(dialog)->isEnabled());
}

void TestPaletteDBDialog::subsetsFillTheTable_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("fractint") << 0 << QStringList({"1", "2"});
    QTest::newRow("gimp") << 1 << QStringList({"bears"});
    QTest::newRow("orvane") << 2 << QStringList({"rainbow"});
    QTest::newRow("kestil96") << 3 << QStringList({"game-boy"});
    QTest::newRow("plimsy") << 4 << QStringList({"spectrum"});
    QTest::newRow("drabet") << 5 << QStringList({"navy-gold", "ink-cream"});
}

void TestPaletteDBDialog::subsetsFillTheTable()
{
    QFETCH(int, index);
    QFETCH(QStringList, names);
    PaletteDBDialog dialog(m_db);
    // Through the slot and through the combo box alike.
    dialog.setSetSelection(index);
    QCOMPARE(subsetBox(dialog)->currentIndex(), index);
    QCOMPARE(shownNames(table(dialog)), names);
    subsetBox(dialog)->setCurrentIndex(index == 0 ? 5 : 0);
    subsetBox(dialog)->setCurrentIndex(index);
    QCOMPARE(shownNames(table(dialog)), names);
    QCOMPARE(table(dialog)->rowCount(), names.size());
}

void TestPaletteDBDialog::clickingChoosesAndOkReturnsName()
{
    PaletteDBDialog dialog(m_db);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    dialog.setSetSelection(5);
    QTableWidget *t = table(dialog);
    clickRow(t, 1);
    QCOMPARE(t->currentRow(), 1);
    QCOMPARE(dialog.selectedName(), QString("drabet/ink-cream"));
    clickRow(t, 0);
    QCOMPARE(dialog.selectedName(), QString("drabet/navy-gold"));
    // Another subset drops a choice it does not show.
    dialog.setSetSelection(0);
    QCOMPARE(dialog.selectedName(), QString());
    QVERIFY(!okButton(dialog)->isEnabled());
    clickRow(t, 1);
    QCOMPARE(dialog.selectedName(), QString("fractint/2"));
    QVERIFY(okButton(dialog)->isEnabled());
    QTest::mouseClick(okButton(dialog), Qt::LeftButton);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(dialog.selectedName(), QString("fractint/2"));
}

void TestPaletteDBDialog::keyboardDrivesComboAndTable()
{
    PaletteDBDialog dialog(m_db);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QComboBox *box = subsetBox(dialog);
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Down); // gimp
    QTest::keyClick(box, Qt::Key_Down); // orvane
    QTest::keyClick(box, Qt::Key_Down); // kestil96
    QCOMPARE(box->currentText(), QString("kestil96"));
    QCOMPARE(shownNames(table(dialog)), QStringList({"game-boy"}));
    QTableWidget *t = table(dialog);
    t->setFocus();
    QTest::keyClick(t, Qt::Key_Down);
    QCOMPARE(dialog.selectedName(), QString("kestil96/game-boy"));
    QTest::keyClick(t, Qt::Key_Escape);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
}

void TestPaletteDBDialog::preselectsCurrentName_data()
{
    QTest::addColumn<QString>("current");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("selected");
    QTest::newRow("second of drabet") << "drabet/ink-cream" << 5 << 1 << "drabet/ink-cream";
    QTest::newRow("first subset") << "fractint/2" << 0 << 1 << "fractint/2";
    QTest::newRow("game boy") << "kestil96/game-boy" << 3 << 0 << "kestil96/game-boy";
    QTest::newRow("unknown name") << "orvane/nothing" << 0 << -1 << "";
    QTest::newRow("outside the subsets") << "other/thing" << 0 << -1 << "";
    QTest::newRow("empty") << "" << 0 << -1 << "";
}

void TestPaletteDBDialog::preselectsCurrentName()
{
    QFETCH(QString, current);
    QFETCH(int, index);
    QFETCH(int, row);
    QFETCH(QString, selected);
    PaletteDBDialog dialog(m_db, current);
    QCOMPARE(subsetBox(dialog)->currentIndex(), index);
    QCOMPARE(table(dialog)->currentRow(), row);
    QCOMPARE(dialog.selectedName(), selected);
    QCOMPARE(okButton(dialog)->isEnabled(), !selected.isEmpty());
}

void TestPaletteDBDialog::stripShowsColours()
{
    PaletteDBDialog dialog(m_db, "kestil96/game-boy");
    const QPixmap strip = table(dialog)->item(0, 0)->data(Qt::DecorationRole).value<QPixmap>();
    QVERIFY(!strip.isNull());
    const QImage image = strip.toImage();
    const int w = image.width();
    // Four colours, four bands of equal width, darkest first.
    QCOMPARE(image.pixel(0, 0), qRgb(0x0f, 0x38, 0x0f));
    QCOMPARE(image.pixel(w / 4, image.height() - 1), qRgb(0x30, 0x62, 0x30));
    QCOMPARE(image.pixel(w / 2, 0), qRgb(0x8b, 0xac, 0x0f));
    QCOMPARE(image.pixel(w - 1, 0), qRgb(0x9b, 0xbc, 0x0f));
    QCOMPARE(image.pixel(w / 4 - 1, 0), qRgb(0x0f, 0x38, 0x0f));
}

void TestPaletteDBDialog::shippedCollection()
{
    PaletteDatabase db;
    QVERIFY(db.loadFromFile(":res/texts/db.txt"));
    QVERIFY2(db.size() >= 200, qPrintable(QString::number(db.size())));
    QMap<QString, int> perSubset;
    for (const QString &name : db.names())
        ++perSubset[PaletteDatabase::subsetOf(name)];
    for (const QString &subset : PaletteDBDialog::subsetNames())
        QVERIFY2(perSubset.value(subset) > 0, qPrintable(subset));
    QCOMPARE(perSubset.size(), 6);

    const auto gb = db.lookup("kestil96/game-boy");
    QVERIFY(gb.has_value());
    QCOMPARE(gb->size(), 4);
    const RGBAColor<uint> greens[4] = {{0x0f00, 0x3800, 0x0f00, 65535},
                                       {0x3000, 0x6200, 0x3000, 65535},
                                       {0x8b00, 0xac00, 0x0f00, 65535},
                                       {0x9b00, 0xbc00, 0x0f00, 65535}};
    for (int i = 0; i < 4; ++i)
        QCOMPARE((*gb)[i], greens[i]);
    const auto rainbow = db.lookup("orvane/rainbow");
    QVERIFY(rainbow.has_value());
    QCOMPARE(rainbow->size(), 256);
    QCOMPARE((*rainbow)[0], RGBAColor<uint>(0xff00, 0, 0, 65535));

    // The dialog lists every palette of the collection under its subset.
    PaletteDBDialog dialog(db);
    for (int i = 0; i < PaletteDBDialog::subsetNames().size(); ++i) {
        dialog.setSetSelection(i);
        QCOMPARE(table(dialog)->rowCount(), perSubset.value(PaletteDBDialog::subsetNames()[i]));
    }
}

QTEST_MAIN(TestPaletteDBDialog)
#include "tst_palettedbdialog.moc"
