// Image > Transform: mirrors and quarter turns in every image mode, as the engine, as document
// commands with undo and redo, as recorded and replayed macro steps.
#include "conversion/imagetransforms.h"
#include "document/chromaxisdocument.h"
#include "document/documentcommands.h"
#include "document/macroplayer.h"
#include "palette/describedexception.h"

#include <QtTest>

#include <random>

namespace {

// The mode's value for cell number v, distinct for every v and beyond 8 bits where the mode allows.
double valueOf(int mode, int v)
{
    switch (mode) {
    case DocumentImage::RGB:
        return double(qRgba(v * 40, 255 - v, v * 7 % 256, 200 + v));
    case DocumentImage::Indexed8:
        return v;
    case DocumentImage::Indexed32:
        return v * 100003.0;
    default:
        return v * 1000.5;
    }
}

DocumentImage imageOf(int mode, int width, int height, const std::vector<int> &v)
{
    std::vector<uint8_t> bytes;
    std::vector<uint32_t> words;
    std::vector<float> reals;
    QImage picture(width, height, QImage::Format_ARGB32);
    for (size_t i = 0; i < v.size(); ++i) {
        const double value = valueOf(mode, v[i]);
        bytes.push_back(uint8_t(value));
        words.push_back(uint32_t(value));
        reals.push_back(float(value));
        picture.setPixel(int(i) % width, int(i) / width, QRgb(value));
    }
    DocumentImage image;
    switch (mode) {
    case DocumentImage::RGB:
        return DocumentImage::fromPicture(picture);
    case DocumentImage::Indexed8:
        image = DocumentImage::fromIndexes8(width, height, bytes);
        break;
    case DocumentImage::Indexed32:
        image = DocumentImage::fromIndexes32(width, height, words);
        break;
    default:
        image = DocumentImage::fromContinuous(width, height, reals, true);
        break;
    }
    Palette<uint> own;
    own.append({1, 2, 3, 4});
    image.setImagePalette(own);
    return image;
}

QList<double> cellsOf(const DocumentImage &image)
{
    QList<double> out;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const size_t i = size_t(y) * size_t(image.width()) + size_t(x);
            switch (image.mode()) {
            case DocumentImage::RGB:
                out << double(image.picture().pixel(x, y));
                break;
            case DocumentImage::Indexed8:
                out << double(image.indexRow(y)[x]);
                break;
            case DocumentImage::Indexed32:
                out << double(image.indexCells()[i]);
                break;
            default:
                out << double(image.continuousCells()[i]);
                break;
            }
        }
    return out;
}

bool sameImage(const DocumentImage &a, const DocumentImage &b)
{
    return a.mode() == b.mode() && a.width() == b.width() && a.height() == b.height() &&
           a.interpolate() == b.interpolate() && cellsOf(a) == cellsOf(b);
}

const int modes[] = {DocumentImage::RGB, DocumentImage::Indexed8, DocumentImage::Indexed32,
                     DocumentImage::Continuous};

QString modeName(int mode)
{
    return ChromaxisDocument::modeText(mode, false);
}

} // namespace

class TestImageTransforms : public QObject
{
    Q_OBJECT
private slots:
    void eachModeAndTransform_data();
    void eachModeAndTransform();
    void turnsAndMirrorsUndoEachOther_data();
    void turnsAndMirrorsUndoEachOther();
    void refusals();
    void commandIsOneHistoryStep_data();
    void commandIsOneHistoryStep();
    void recordedStepsReplay();
};

void TestImageTransforms::eachModeAndTransform_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("step");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<std::vector<int>>("order"); // the source cell of each result cell, row by row
    // The source is 3 x 2:   0 1 2
    //                        3 4 5
    const struct
    {
        const char *step;
        int width, height;
        std::vector<int> order;
    } cases[] = {
        {"image_mirror_h", 3, 2, {2, 1, 0, 5, 4, 3}},
        {"image_mirror_v", 3, 2, {3, 4, 5, 0, 1, 2}},
        {"image_rotate_cw", 2, 3, {3, 0, 4, 1, 5, 2}},
        {"image_rotate_ccw", 2, 3, {2, 5, 1, 4, 0, 3}},
    };
    for (int mode : modes)
        for (const auto &c : cases)
            QTest::addRow("%s, %s", qPrintable(modeName(mode)), c.step)
                << mode << QString(c.step) << c.width << c.height << c.order;
}

void TestImageTransforms::eachModeAndTransform()
{
    QFETCH(int, mode);
    QFETCH(QString, step);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(std::vector<int>, order);
    const DocumentImage source = imageOf(mode, 3, 2, {0, 1, 2, 3, 4, 5});
    const DocumentImage result = ImageTransforms::apply(step, source);
    QCOMPARE(result.mode(), mode);
    QCOMPARE(result.width(), width);
    QCOMPARE(result.height(), height);
    QList<double> expected;
    for (int v : order)
        expected << valueOf(mode, v);
    QCOMPARE(cellsOf(result), expected);
    // Only the pixels move.
    QCOMPARE(result.interpolate(), source.interpolate());
    QCOMPARE(result.imagePalette(), source.imagePalette());
    QCOMPARE(cellsOf(source), cellsOf(imageOf(mode, 3, 2, {0, 1, 2, 3, 4, 5})));
}

void TestImageTransforms::turnsAndMirrorsUndoEachOther_data()
{
    QTest::addColumn<int>("mode");
    for (int mode : modes)
        QTest::newRow(qPrintable(modeName(mode))) << mode;
}

void TestImageTransforms::turnsAndMirrorsUndoEachOther()
{
    QFETCH(int, mode);
    // An odd size, neither square nor a multiple of four bytes a row.
    std::mt19937 rng(7);
    std::vector<int> values(7 * 5);
    for (int &v : values)
        v = int(rng() % 6);
    const DocumentImage image = imageOf(mode, 7, 5, values);
    auto apply = [](const QStringList &steps, DocumentImage img) {
        for (const QString &step : steps)
            img = ImageTransforms::apply(step, img);
        return img;
    };
    const QString cw = "image_rotate_cw", ccw = "image_rotate_ccw", h = "image_mirror_h",
                  v = "image_mirror_v";
    QVERIFY(sameImage(apply({cw, cw, cw, cw}, image), image));
    QVERIFY(sameImage(apply({ccw, ccw, ccw, ccw}, image), image));
    QVERIFY(sameImage(apply({cw, ccw}, image), image));
    QVERIFY(sameImage(apply({h, h}, image), image));
    QVERIFY(sameImage(apply({v, v}, image), image));
    // A half turn is both mirrors; three turns one way are one turn the other way.
    QVERIFY(sameImage(apply({cw, cw}, image), apply({h, v}, image)));
    QVERIFY(sameImage(apply({cw, cw, cw}, image), apply({ccw}, image)));
    QVERIFY(!sameImage(apply({cw}, image), image));
    QCOMPARE(apply({cw}, image).width(), 5);
}

void TestImageTransforms::refusals()
{
    QVERIFY(ImageTransforms::apply("image_rotate_cw", DocumentImage()).isNull());
    QVERIFY_EXCEPTION_THROWN(ImageTransforms::apply("image_rotate_180", imageOf(2, 1, 1, {0})),
                             DescribedException);
    ChromaxisDocument doc;
    DocumentCommands commands(doc, nullptr);
    try {
        commands.transformImage("image_mirror_h");
        QFAIL("transformed without an image");
    } catch (const DescribedException &e) {
        QCOMPARE(e.message(), QString("The command 'image_mirror_h' needs an image."));
    }
    try {
        commands.transformImage("image_spin");
        QFAIL("an unknown transform ran");
    } catch (const DescribedException &e) {
        QCOMPARE(e.message(), QString("There is no image transform named 'image_spin'."));
    }
    QVERIFY(!doc.history().canUndo());
}

void TestImageTransforms::commandIsOneHistoryStep_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("step");
    for (int mode : modes)
        for (const QString &step : ImageTransforms::names())
            QTest::addRow("%s, %s", qPrintable(modeName(mode)), qPrintable(step)) << mode << step;
}

void TestImageTransforms::commandIsOneHistoryStep()
{
    QFETCH(int, mode);
    QFETCH(QString, step);
    ChromaxisDocument doc;
    doc.setRecording(true);
    const DocumentImage original = imageOf(mode, 3, 2, {0, 1, 2, 3, 4, 5});
    doc.setImageState({original, "six.png", false});
    doc.clearHistory();
    const Palette<uint> palette = doc.palette();
    DocumentCommands commands(doc, nullptr);
    commands.transformImage(step);

    const DocumentImage expected = ImageTransforms::apply(step, original);
    QVERIFY(sameImage(doc.image(), expected));
    QCOMPARE(doc.displayedPicture().size(), QSize(expected.width(), expected.height()));
    QVERIFY(doc.isImageModified());
    QCOMPARE(doc.imageFileName(), QString("six.png"));
    QCOMPARE(doc.palette(), palette);
    QCOMPARE(doc.history().count(), 1);
    QCOMPARE(MacroFile::stepsOf(doc.macros()).back().name, step);

    QVERIFY(doc.undo());
    QVERIFY(sameImage(doc.image(), original));
    QVERIFY(!doc.isImageModified());
    QCOMPARE(doc.displayedPicture().size(), QSize(3, 2));
    QVERIFY(MacroFile::stepsOf(doc.macros()).empty());
    QVERIFY(doc.redo());
    QVERIFY(sameImage(doc.image(), expected));
    QCOMPARE(MacroFile::stepsOf(doc.macros()).size(), size_t(1));
}

void TestImageTransforms::recordedStepsReplay()
{
    // What the window records is what the player plays, on another document with the same image.
    ChromaxisDocument recorded;
    recorded.setRecording(true);
    const DocumentImage original = imageOf(DocumentImage::Indexed32, 3, 2, {0, 1, 2, 3, 4, 5});
    recorded.setImageState({original, QString(), false});
    DocumentCommands commands(recorded, nullptr);
    for (const char *step : {"image_rotate_cw", "image_mirror_h", "image_rotate_cw", "image_mirror_h"})
        commands.transformImage(step);
    const std::vector<MacroFile::Step> steps = MacroFile::stepsOf(recorded.macros());
    QCOMPARE(int(steps.size()), 4);

    ChromaxisDocument replayed;
    replayed.setImageState({original, QString(), false});
    MacroPlayer player(nullptr);
    const MacroPlayer::Report report =
        player.play(replayed, MacroFile::decode(MacroFile::encode(steps), "m.cxm"));
    QCOMPARE(report.played, 4);
    QVERIFY(report.skipped.isEmpty());
    QVERIFY(sameImage(replayed.image(), recorded.image()));
    // A quarter turn and a mirror make a mirror along a diagonal; twice, the picture is back.
    QVERIFY(sameImage(replayed.image(), original));
    QCOMPARE(replayed.history().count(), 5);
}

QTEST_GUILESS_MAIN(TestImageTransforms)
#include "tst_imagetransforms.moc"
