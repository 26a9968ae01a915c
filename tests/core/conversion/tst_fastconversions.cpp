#include "document/chromaxisdocument.h"
#include "palette/describedexception.h"
#include "conversion/fastconversions.h"
#include "conversion/imageconversionengine.h"
#include "document/macroplayer.h"

#include <QtTest>

namespace {

DocumentImage rgbRow()
{
    QImage picture(3, 1, QImage::Format_ARGB32);
    picture.setPixel(0, 0, qRgb(10, 20, 31));
    picture.setPixel(1, 0, qRgb(255, 255, 255));
    picture.setPixel(2, 0, qRgb(1, 2, 3));
    return DocumentImage::fromPicture(picture);
}

Palette<uint> greys(int n)
{
    Palette<uint> p;
    for (int i = 0; i < n; ++i)
        p.append({uint(i * 40) << 8, uint(i * 40) << 8, uint(i * 40) << 8, 65535});
    return p;
}

QList<double> cells(const DocumentImage &image)
{
    QList<double> out;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const size_t i = size_t(y) * size_t(image.width()) + size_t(x);
            out << (image.mode() == 2   ? double(image.indexRow(y)[x])
                    : image.mode() == 3 ? double(image.indexCells()[i])
                                        : double(image.continuousCells()[i]));
        }
    return out;
}

} // namespace

class TestFastConversions : public QObject
{
    Q_OBJECT
private slots:
    void fromRgb_data();
    void fromRgb();
    void betweenModes_data();
    void betweenModes();
    void refusals();
    void macroStepsAreOneUndoStep_data();
    void macroStepsAreOneUndoStep();
    void macroStepNeedsAnImage();
};

void TestFastConversions::fromRgb_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("paletteSize"); // current palette 5 entries, last palette 3
    QTest::addColumn<QList<double>>("values");
    const float k = 85.666664f;
    QTest::newRow("grayscale") << "image_convert_grayscale" << 2 << 256 << QList<double>{20, 255, 2};
    QTest::newRow("extended") << "image_convert_extended_grayscale" << 3 << 766 << QList<double>{61, 765, 6};
    QTest::newRow("continuous grayscale")
        << "image_convert_continuous_grayscale" << 4 << 256 << QList<double>{61 * k, 765 * k, 6 * k};
    QTest::newRow("indexed, last palette")
        << "image_convert_indexed8bit_lastpalette" << 2 << 3 << QList<double>{20, 255, 2};
    QTest::newRow("continuous, last palette")
        << "image_convert_continuous_lastpalette" << 4 << 3 << QList<double>{61 * k, 765 * k, 6 * k};
    QTest::newRow("indexed 8 bit") << "image_convert_indexed8bit" << 2 << 5 << QList<double>{20, 255, 2};
    QTest::newRow("32 bit as ints") << "image_convert_indexed32bitint" << 3 << 5
                                    << QList<double>{0x0A141F, 0xFFFFFF, 0x010203};
    QTest::newRow("continuous") << "image_convert_real" << 4 << 5 << QList<double>{61 * k, 765 * k, 6 * k};
}

void TestFastConversions::fromRgb()
{
    QFETCH(QString, name);
    QFETCH(int, mode);
    QFETCH(int, paletteSize);
    QFETCH(QList<double>, values);
    QVERIFY(FastConversions::exists(name));
    const FastConversions::Result r = FastConversions::apply(name, rgbRow(), greys(5), greys(3));
    QCOMPARE(r.image.mode(), mode);
    QCOMPARE(r.palette.size(), paletteSize);
    QCOMPARE(cells(r.image), values);
}

void TestFastConversions::betweenModes_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QList<double>>("values");
    // The source cells: mode 2 {0, 1, 2}, mode 3 {0, 300, 7}, mode 4 {0, 40000, 65535}; 4 entries.
    QTest::newRow("32 bit to 8 bit: at most 255")
        << 3 << "image_convert_indexed8bit" << 2 << QList<double>{0, 255, 7};
    QTest::newRow("continuous to 8 bit: the entry shown")
        << 4 << "image_convert_indexed8bit" << 2 << QList<double>{0, 2, 3};
    QTest::newRow("8 bit to 32 bit") << 2 << "image_convert_indexed32bitint" << 3 << QList<double>{0, 1, 2};
    QTest::newRow("continuous to 32 bit: the value as an integer")
        << 4 << "image_convert_indexed32bitint" << 3 << QList<double>{0, 40000, 65535};
    QTest::newRow("8 bit to continuous")
        << 2 << "image_convert_real" << 4 << QList<double>{0, 16383.75, 32767.5};
    QTest::newRow("32 bit to continuous")
        << 3 << "image_convert_real" << 4 << QList<double>{0, double(float(300 * 65535.0 / 4)), 114686.25};
    QTest::newRow("32 bit unchanged")
        << 3 << "image_convert_indexed32bitint" << 3 << QList<double>{0, 300, 7};
    // The grayscale conversions read the picture the image shows: entry 1 is (40, 40, 40).
    QTest::newRow("8 bit to grayscale") << 2 << "image_convert_grayscale" << 2 << QList<double>{0, 40, 80};
}

void TestFastConversions::betweenModes()
{
    QFETCH(int, from);
    QFETCH(QString, name);
    QFETCH(int, mode);
    QFETCH(QList<double>, values);
    DocumentImage source;
    if (from == 2)
        source = DocumentImage::fromIndexes8(3, 1, {0, 1, 2});
    else if (from == 3)
        source = DocumentImage::fromIndexes32(3, 1, {0, 300, 7});
    else
        source = DocumentImage::fromContinuous(3, 1, {0.0f, 40000.0f, 65535.0f});
    const FastConversions::Result r = FastConversions::apply(name, source, greys(4), {});
    QCOMPARE(r.image.mode(), mode);
    QCOMPARE(cells(r.image), values);
}

void TestFastConversions::refusals()
{
    QVERIFY_EXCEPTION_THROWN(FastConversions::apply("image_convert_sepia", rgbRow(), greys(2), {}),
                             DescribedException);
    QVERIFY_EXCEPTION_THROWN(FastConversions::apply("image_convert_grayscale", DocumentImage(), greys(2), {}),
                             DescribedException);
    QCOMPARE(FastConversions::names().size(), 8);
}

void TestFastConversions::macroStepsAreOneUndoStep_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QString>("parameters");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("paletteSize");
    QTest::newRow("fast") << "image_convert_extended_grayscale"
                          << "" << 3 << 766;
    QTest::newRow("convert") << "image_convert"
                             << "image_format_convert 2.0.0\nmode:1\npalette:1\ninterpolate:1\n"
                             << 4 << 766;
    QTest::newRow("quantise") << "image_quantisize"
                              << "image_quantisize 2.0.0\nformat:0\npalette:3\ndither:3\nmethod:2\ncolors:2\n"
                              << 2 << 2;
    QTest::newRow("quantise, black and white") << "image_quantisize"
                                               << "palette:7\ndither:9\n"
                                               << 2 << 2;
}

void TestFastConversions::macroStepsAreOneUndoStep()
{
    QFETCH(QString, step);
    QFETCH(QString, parameters);
    QFETCH(int, mode);
    QFETCH(int, paletteSize);
    ChromaxisDocument doc;
    doc.setImageState({rgbRow(), "row.png", false});
    doc.setPalette(greys(5));
    const Palette<uint> before = doc.palette();
    MacroPlayer player;
    QVERIFY(MacroPlayer::knows(step));
    const MacroPlayer::Report report = player.play(doc, {{step, parameters}});
    QCOMPARE(report.played, 1);
    QCOMPARE(doc.imageMode(), mode);
    QCOMPARE(doc.palette().size(), paletteSize);
    QCOMPARE(doc.imageFileName(), QString("row.png"));
    QVERIFY(doc.isImageModified());
    QVERIFY(doc.undo());
    QCOMPARE(doc.imageMode(), 1);
    QCOMPARE(doc.palette(), before);
    QVERIFY(doc.redo());
    QCOMPARE(doc.imageMode(), mode);
}

void TestFastConversions::macroStepNeedsAnImage()
{
    ChromaxisDocument doc;
    MacroPlayer player;
    for (const QString &step : QStringList{"image_convert_grayscale", "image_convert", "image_quantisize"}) {
        try {
            player.play(doc, {{step, ""}});
            QFAIL("played without an image");
        } catch (const DescribedException &e) {
            QVERIFY(e.message().contains(step));
        }
    }
}

QTEST_GUILESS_MAIN(TestFastConversions)
#include "tst_fastconversions.moc"
