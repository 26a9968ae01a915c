#include "export/palettepicture.h"
#include "export/pictureprint.h"
#include "palette/describedexception.h"
#include "storage/settingstext.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {

using Colour = RGBAColor<uint>;

Colour rgb8(uint r, uint g, uint b, uint a = 255)
{
    return fromByteColor(RGBAColor<uchar>(uchar(r), uchar(g), uchar(b), uchar(a)));
}

// Entry i is (i, 255 - i, 7 * i mod 256): every entry of 256 differs from its neighbours.
Palette<uint> paletteOf(int n)
{
    Palette<uint> p;
    for (int i = 0; i < n; ++i)
        p.append(rgb8(uint(i) & 0xFF, 255 - (uint(i) & 0xFF), (7 * uint(i)) & 0xFF));
    return p;
}

QRgb drawn(int i)
{
    return qRgb(i & 0xFF, 255 - (i & 0xFF), (7 * i) & 0xFF);
}

} // namespace

class TestPalettePicture : public QObject
{
    Q_OBJECT
private slots:
    void presets_data();
    void presets();
    void secondRowShowsBackground();
    void cellsAreOpaqueAndSelectionFramed();
    void settingsText_data();
    void settingsText();
    void badSettings_data();
    void badSettings();
    void unknownPreset();
    void saveRefusesWithoutHarm_data();
    void saveRefusesWithoutHarm();
    void saveWritesThePicture();
    void fittedViewport_data();
    void fittedViewport();
    void printFillsPageWithAspectKept_data();
    void printFillsPageWithAspectKept();
    void printRefusesEmptyPictureAndKeepsFile();
};

void TestPalettePicture::presets_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("cell");
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("padding");
    QTest::addColumn<int>("spacing");
    QTest::addColumn<QRgb>("background");
    QTest::addColumn<QSize>("size256");

    const QRgb white = 0xFFFFFFFFu, black = 0xFF000000u;
    QTest::newRow("1") << 1 << "square small (1x1)" << QSize(1, 1) << 16 << 0 << 0 << white << QSize(16, 16);
    QTest::newRow("2") << 2 << "square middle (8x8)" << QSize(8, 8) << 16 << 0 << 0 << white << QSize(128, 128);
    QTest::newRow("3") << 3 << "square big (16x16)" << QSize(16, 16) << 16 << 0 << 0 << white << QSize(256, 256);
    QTest::newRow("4") << 4 << "square middle (8x8) with offset" << QSize(8, 8) << 16 << 2 << 2 << black
                       << QSize(162, 162);
    // 16 x 16 + 15 x 4 + 8
    QTest::newRow("5") << 5 << "square big (16x16) with offset" << QSize(16, 16) << 16 << 4 << 4 << white
                       << QSize(324, 324);
    QTest::newRow("6") << 6 << "line small (1)" << QSize(1, 1) << 256 << 0 << 0 << white << QSize(256, 1);
    QTest::newRow("7") << 7 << "line middle (8)" << QSize(1, 8) << 256 << 0 << 0 << white << QSize(256, 8);
    QTest::newRow("8") << 8 << "line big (16)" << QSize(1, 16) << 256 << 0 << 0 << white << QSize(256, 16);
    QTest::newRow("9") << 9 << "line big (1) with offset" << QSize(1, 16) << 256 << 4 << 0 << white
                       << QSize(264, 24);
}

// Each preset in its place in the box, with its geometry, drawn over a 256-entry palette.
void TestPalettePicture::presets()
{
    QFETCH(int, number);
    QFETCH(QString, name);
    QFETCH(QSize, cell);
    QFETCH(int, columns);
    QFETCH(int, padding);
    QFETCH(int, spacing);
    QFETCH(QRgb, background);
    QFETCH(QSize, size256);

    QCOMPARE(int(PalettePicture::presets().size()), 9);
    QCOMPARE(PalettePicture::presets()[size_t(number - 1)].name, name);
    const PalettePicture::Settings s = PalettePicture::preset(name);
    const PalettePicture::Geometry &g = s.geometry;
    QCOMPARE(QSize(g.cellWidth, g.cellHeight), cell);
    QCOMPARE(g.columns, columns);
    QCOMPARE(QList<int>({g.padTop, g.padRight, g.padBottom, g.padLeft}), QList<int>({padding, padding, padding, padding}));
    QCOMPARE(QList<int>({g.vspacing, g.hspacing}), QList<int>({spacing, spacing}));
    QCOMPARE(s.background.rgba(), background);

    const QImage image = PalettePicture::paint(paletteOf(256), s);
    QCOMPARE(image.size(), size256);
    QCOMPARE(g.pictureSize(256), size256);
    // The corner is background wherever there is padding, else the first cell.
    QCOMPARE(image.pixel(0, 0), padding > 0 ? background : drawn(0));
    for (int i : {0, 1, 17, 100, 255}) {
        const int x = padding + (i % columns) * (cell.width() + spacing);
        const int y = padding + (i / columns) * (cell.height() + spacing);
        QCOMPARE(image.pixel(x, y), drawn(i));
        QCOMPARE(image.pixel(x + cell.width() - 1, y + cell.height() - 1), drawn(i));
        if (spacing > 0 && i % columns != columns - 1)
            QCOMPARE(image.pixel(x + cell.width(), y), background);
    }
}

// With 16 columns and 20 entries the second row holds 4 cells; the rest is background.
void TestPalettePicture::secondRowShowsBackground()
{
    PalettePicture::Settings s = PalettePicture::preset(QStringLiteral("square big (16x16) with offset"));
    s.background = QColor(10, 20, 30);
    const QImage image = PalettePicture::paint(paletteOf(20), s);
    QCOMPARE(image.size(), QSize(324, 4 + 16 + 4 + 16 + 4));
    const int row2 = 4 + 16 + 4;
    for (int column = 0; column < 16; ++column) {
        const int x = 4 + column * 20;
        const QRgb expected = column < 4 ? drawn(16 + column) : qRgb(10, 20, 30);
        QCOMPARE(image.pixel(x, row2), expected);
        QCOMPARE(image.pixel(x + 15, row2 + 15), expected);
    }
}

void TestPalettePicture::cellsAreOpaqueAndSelectionFramed()
{
    Palette<uint> p;
    p.append(rgb8(200, 100, 50, 0)); // fully transparent
    p.append(rgb8(1, 2, 3, 128));
    PalettePicture::Geometry g;
    g.cellWidth = 4;
    g.cellHeight = 3;
    g.columns = 2;
    const QImage image = PalettePicture::paint(p, g, QColor(0, 0, 0, 0), {1, 7});
    QCOMPARE(image.size(), QSize(8, 3));
    QCOMPARE(image.pixel(1, 1), qRgb(200, 100, 50));
    // Entry 1 is selected: a yellow frame on its own outermost pixels, its colour inside.
    for (const QPoint &edge : {QPoint(4, 0), QPoint(7, 2), QPoint(4, 1), QPoint(5, 0)})
        QCOMPARE(image.pixel(edge), 0xFFFFFF00u);
    QCOMPARE(image.pixel(5, 1), qRgb(1, 2, 3));
    // No entries: no rows, a picture of no height.
    QVERIFY(PalettePicture::paint(Palette<uint>(), g, Qt::white).isNull());
    QCOMPARE(g.pictureSize(0), QSize(8, 0));
}

void TestPalettePicture::settingsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("written");
    QTest::newRow("a preset's text") << "palette_render 2.0.0\npad_top:2\npad_right:2\npad_bottom:2\npad_left:2\n"
                                        "spc_v:2\nspc_h:2\ncell_width:8\ncell_height:8\ncolumns:16\nbgcolor:#ff000000\n"
                                     << "pad_top:2\npad_right:2\npad_bottom:2\npad_left:2\nspc_v:2\nspc_h:2\n"
                                        "cell_width:8\ncell_height:8\ncolumns:16\nbgcolor:#ff000000\n";
    QTest::newRow("missing keys keep the initial values, alpha stays")
        << "palette_render 2.0.0\ncolumns:3\nbgcolor:#80112233\n"
        << "pad_top:0\npad_right:0\npad_bottom:0\npad_left:0\nspc_v:0\nspc_h:0\ncell_width:16\ncell_height:16\n"
           "columns:3\nbgcolor:#80112233\n";
    QTest::newRow("out of range values take the nearest end")
        << "palette_render 2.0.0\npad_top:5000\nspc_h:-3\ncell_width:0\ncolumns:1001\nbgcolor:#abc\n"
        << "pad_top:1000\npad_right:0\npad_bottom:0\npad_left:0\nspc_v:0\nspc_h:0\ncell_width:1\ncell_height:16\n"
           "columns:1000\nbgcolor:#ffaabbcc\n";
}

void TestPalettePicture::settingsText()
{
    QFETCH(QString, text);
    QFETCH(QString, written);
    const auto settings = PalettePicture::fromSettings(SettingsText::parse(text, PalettePicture::settingsName));
    QCOMPARE(SettingsText::formatLines(PalettePicture::toSettings(settings)), written);
    // And back: the written lines give the same settings.
    QVERIFY(PalettePicture::fromSettings(PalettePicture::toSettings(settings)) == settings);
}

void TestPalettePicture::badSettings_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("not a number") << "cell_width:wide";
    QTest::newRow("not a colour") << "bgcolor:#12345";
    QTest::newRow("empty colour") << "bgcolor:";
}

void TestPalettePicture::badSettings()
{
    QFETCH(QString, line);
    const int colon = line.indexOf(':');
    try {
        PalettePicture::fromSettings({{line.left(colon), line.mid(colon + 1)}});
        QFAIL("accepted");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), QString("Invalid settings"));
        QVERIFY2(e.message().contains(line.left(colon)), qPrintable(e.message()));
    }
}

void TestPalettePicture::unknownPreset()
{
    try {
        PalettePicture::preset(QStringLiteral("line big (1)"));
        QFAIL("accepted");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), QString("Invalid settings"));
        QVERIFY(e.message().startsWith("There is no palette picture preset \"line big (1)\". The presets are "
                                       "\"square small (1x1)\", "));
    }
}

void TestPalettePicture::saveRefusesWithoutHarm_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("entries");
    QTest::addColumn<QString>("message");
    QTest::newRow("empty palette") << "old.png" << 0 << "Unable to save old.png.\nThe palette is empty.";
    QTest::newRow("no such format") << "old.xyz" << 3 << "Unable to save old.xyz.\nUnsupported image format";
}

void TestPalettePicture::saveRefusesWithoutHarm()
{
    QFETCH(QString, file);
    QFETCH(int, entries);
    QFETCH(QString, message);
    QTemporaryDir dir;
    const QString path = dir.filePath(file);
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write("old contents");
    f.close();
    try {
        PalettePicture::save(path, paletteOf(entries), PalettePicture::Settings());
        QFAIL("saved");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), QString("Could not save"));
        QCOMPARE(e.message(), message);
    }
    QVERIFY(f.open(QIODevice::ReadOnly));
    QCOMPARE(f.readAll(), QByteArray("old contents"));
}

void TestPalettePicture::saveWritesThePicture()
{
    QTemporaryDir dir;
    const PalettePicture::Settings s = PalettePicture::preset(QStringLiteral("square middle (8x8) with offset"));
    PalettePicture::save(dir.filePath("p.png"), paletteOf(40), s);
    const QImage back = QImage(dir.filePath("p.png")).convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(back, PalettePicture::paint(paletteOf(40), s));
}

void TestPalettePicture::fittedViewport_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QRect>("viewport");
    QTest::addColumn<QRect>("fitted");
    QTest::newRow("wide picture, tall page") << QSize(256, 16) << QRect(0, 0, 1000, 1400) << QRect(0, 0, 1000, 62);
    QTest::newRow("square on tall page") << QSize(324, 324) << QRect(0, 0, 1000, 1400) << QRect(0, 0, 1000, 1000);
    QTest::newRow("tall picture") << QSize(10, 40) << QRect(5, 7, 1000, 1400) << QRect(5, 7, 350, 1400);
    QTest::newRow("enlarged exactly") << QSize(2, 1) << QRect(0, 0, 600, 800) << QRect(0, 0, 600, 300);
    QTest::newRow("no picture") << QSize(0, 0) << QRect(0, 0, 600, 800) << QRect(0, 0, 0, 0);
}

void TestPalettePicture::fittedViewport()
{
    QFETCH(QSize, picture);
    QFETCH(QRect, viewport);
    QFETCH(QRect, fitted);
    QCOMPARE(PicturePrint::fittedViewport(picture, viewport), fitted);
}

void TestPalettePicture::printFillsPageWithAspectKept_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::newRow("wide strip") << QSize(64, 4);
    QTest::newRow("square") << QSize(10, 10);
    QTest::newRow("tall") << QSize(4, 16);
}

// The PDF page, rasterised again: the picture spans the printable width or height, whichever
// it reaches first, starting at the page's printable corner, with its proportions.
void TestPalettePicture::printFillsPageWithAspectKept()
{
    QFETCH(QSize, picture);
    const QString pdftoppm = QStandardPaths::findExecutable(QStringLiteral("pdftoppm"));
    if (pdftoppm.isEmpty())
        QSKIP("pdftoppm (poppler-utils) is not installed");
    // Left half red, right half blue: the page shows where the picture went and which way round.
    QImage image(picture, QImage::Format_ARGB32);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            image.setPixel(x, y, x < picture.width() / 2 ? qRgb(255, 0, 0) : qRgb(0, 0, 255));

    QTemporaryDir dir;
    const QString pdf = dir.filePath("page.pdf");
    PicturePrint::printToPdf(image, pdf);
    QVERIFY(QFile::exists(pdf));
    QProcess p;
    p.start(pdftoppm, {"-r", "36", "-png", "-singlefile", pdf, dir.filePath("page")});
    QVERIFY(p.waitForFinished(30000));
    QCOMPARE(p.exitCode(), 0);
    const QImage page(dir.filePath("page.png"));
    QVERIFY(!page.isNull());
    // A4 at 36 dpi: 298 x 421.
    QVERIFY2(qAbs(page.width() - 298) <= 1 && qAbs(page.height() - 421) <= 1,
             qPrintable(QString("%1x%2").arg(page.width()).arg(page.height())));

    // The bounding box of everything that is not white.
    QRect box;
    for (int y = 0; y < page.height(); ++y)
        for (int x = 0; x < page.width(); ++x)
            if ((page.pixel(x, y) & 0xFFFFFF) != 0xFFFFFF)
                box |= QRect(x, y, 1, 1);
    QVERIFY(!box.isEmpty());
    // The printable area leaves a margin of at most about an inch on each side.
    QVERIFY2(box.left() < 40 && box.top() < 40, qPrintable(QString("%1,%2").arg(box.left()).arg(box.top())));
    const double aspect = double(picture.width()) / picture.height();
    QVERIFY2(qAbs(double(box.width()) / box.height() - aspect) < aspect * 0.06 + 0.02,
             qPrintable(QString("%1x%2").arg(box.width()).arg(box.height())));
    // It fills the printable width or height: the margins on the far side match the near one.
    const int rightMargin = page.width() - 1 - box.right();
    const int bottomMargin = page.height() - 1 - box.bottom();
    QVERIFY2(qAbs(rightMargin - box.left()) <= 2 || qAbs(bottomMargin - box.top()) <= 2,
             qPrintable(QString("box %1,%2 %3x%4").arg(box.left()).arg(box.top()).arg(box.width()).arg(box.height())));
    // Red on the left, blue on the right, no smoothing between.
    const QRgb left = page.pixel(box.left() + box.width() / 4, box.center().y());
    const QRgb right = page.pixel(box.right() - box.width() / 4, box.center().y());
    QVERIFY(qRed(left) > 200 && qBlue(left) < 60);
    QVERIFY(qBlue(right) > 200 && qRed(right) < 60);
}

void TestPalettePicture::printRefusesEmptyPictureAndKeepsFile()
{
    QTemporaryDir dir;
    const QString pdf = dir.filePath("old.pdf");
    QFile f(pdf);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write("old contents");
    f.close();
    try {
        PicturePrint::printToPdf(QImage(), pdf);
        QFAIL("printed nothing");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), QString("Could not print"));
        QCOMPARE(e.message(), QString("There is nothing to print: the picture is empty."));
    }
    QVERIFY(f.open(QIODevice::ReadOnly));
    QCOMPARE(f.readAll(), QByteArray("old contents"));
}

QTEST_MAIN(TestPalettePicture)
#include "tst_palettepicture.moc"
