#include "document/chromaxisdocument.h"
#include "palette/describedexception.h"
#include "document/documentimage.h"
#include "document/imagelimits.h"
#include "document/imagerender.h"
#include "refusal.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <cstring>
#include <random>
#include <limits>

namespace {

Palette<uint> fourColours()
{
    Palette<uint> p;
    p.append({0x1000, 0x2000, 0x3000, 65535});
    p.append({0xFF00, 0x0000, 0x0000, 0});    // translucent: shown opaque
    p.append({0x00FF, 0xFFFF, 0x0101, 65535}); // low bytes only matter to the mix
    p.append({0x4000, 0x8000, 0xC000, 12});
    return p;
}

QRgb opaque(const RGBAColor<uint> &c)
{
    return qRgb(int(c.r >> 8), int(c.g >> 8), int(c.b >> 8));
}

QRgb mix(const RGBAColor<uint> &a, const RGBAColor<uint> &b, double w)
{
    const auto ch = [w](uint x, uint y) { return int(uint(x * (1.0 - w) + y * w) >> 8); };
    return qRgb(ch(a.r, b.r), ch(a.g, b.g), ch(a.b, b.b));
}

} // namespace

class TestDocumentImage : public QObject
{
    Q_OBJECT
private slots:
    void indexed32PastPaletteShowsLast();
    void continuousBands_data();
    void continuousBands();
    void continuousOneEntry();
    void renderMatchesTheFormula_data();
    void renderMatchesTheFormula();
    void emptyPaletteRendersBlack();
    void indexed8RenderTouchesNoPixel();
    void pictureLoadsIntoModes_data();
    void pictureLoadsIntoModes();
    void handedOverPictureIsTheSame();
    void indexBytesTakenOver_data();
    void indexBytesTakenOver();
    void copiesAreIndependent();
    void sizesPastTheLimit_data();
    void sizesPastTheLimit();
    void unbuildablePictureIsNotDrawn();
    void distinctColoursOrder();
    void builtinListWalk_data();
    void builtinListWalk();
    void selectionFiles();
    void selectionFileErrors_data();
    void selectionFileErrors();
    void documentPaletteHistory();
};

void TestDocumentImage::indexed32PastPaletteShowsLast()
{
    const Palette<uint> p = fourColours();
    DocumentImage img = DocumentImage::fromIndexes32(3, 2, {0, 1, 2, 3, 4, 0xFFFFFFFFu});
    img.render(p);
    const QImage &pic = img.picture();
    QCOMPARE(pic.size(), QSize(3, 2));
    // The entry of alpha 0 is still opaque on screen.
    const int shown[] = {0, 1, 2, 3, 3, 3};
    for (int i = 0; i < 6; ++i)
        QCOMPARE(pic.pixel(i % 3, i / 3), opaque(p[shown[i]]));
}

void TestDocumentImage::continuousBands_data()
{
    QTest::addColumn<float>("value");
    QTest::addColumn<bool>("interpolate");
    QTest::addColumn<int>("entry");    // >= 0: exactly this entry
    QTest::addColumn<double>("weight"); // when entry < 0: mix of floor(p) and the next by this weight
    const Palette<uint> p = fourColours();
    // N = 4: p = v * 4 / 65535 in single precision, limited to 3.
    QTest::newRow("zero") << 0.0f << false << 0 << 0.0;
    QTest::newRow("just below first boundary") << 16383.0f << false << 0 << 0.0;
    QTest::newRow("just above first boundary") << 16384.0f << false << 1 << 0.0;
    QTest::newRow("top") << 65535.0f << false << 3 << 0.0;
    QTest::newRow("last band starts at 3N/4") << 49152.0f << false << 3 << 0.0;
    QTest::newRow("just below last band") << 49151.0f << false << 2 << 0.0;
    QTest::newRow("negative shows first") << -500.0f << false << 0 << 0.0;
    QTest::newRow("above range shows last") << 1e9f << false << 3 << 0.0;
    QTest::newRow("nan shows first") << std::numeric_limits<float>::quiet_NaN() << false << 0 << 0.0;
    QTest::newRow("last band never blends") << 60000.0f << true << 3 << 0.0;
    QTest::newRow("exact entry no blend") << 32767.5f << true << 2 << 0.0;
    const float v = 10000.0f;
    const float pf = v * 4.0f / 65535.0f;
    QTest::newRow("blend in first band") << v << true << -1 << double(pf - std::floor(pf));
    const float v2 = 40000.0f;
    const float pf2 = v2 * 4.0f / 65535.0f;
    QTest::newRow("blend in third band") << v2 << true << -1 << double(pf2 - std::floor(pf2));
}

void TestDocumentImage::continuousBands()
{
    QFETCH(float, value);
    QFETCH(bool, interpolate);
    QFETCH(int, entry);
    QFETCH(double, weight);
    const Palette<uint> p = fourColours();
    DocumentImage img = DocumentImage::fromContinuous(1, 1, {value}, interpolate);
    img.render(p);
    if (entry >= 0) {
        QCOMPARE(img.picture().pixel(0, 0), opaque(p[entry]));
    } else {
        const int i = int(value * 4.0f / 65535.0f);
        QCOMPARE(img.picture().pixel(0, 0), mix(p[i], p[i + 1], weight));
    }
}

void TestDocumentImage::renderMatchesTheFormula_data()
{
    QTest::addColumn<int>("entries");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("interpolate");
    QTest::addColumn<uint>("channelMask"); // wider than 16 bits takes the plain path
    for (int n : {1, 2, 3, 17, 256, 4096})
        for (bool interpolate : {false, true}) {
            // Odd widths leave tails behind the eight-pixel kernels; the large one is split among threads.
            QTest::addRow("%d entries, %s, small", n, interpolate ? "blended" : "plain")
                << n << 37 << 5 << interpolate << 0xFFFFu;
            QTest::addRow("%d entries, %s, large", n, interpolate ? "blended" : "plain")
                << n << 1023 << 700 << interpolate << 0xFFFFu;
        }
    QTest::addRow("17 entries, blended, wide channels") << 17 << 301 << 40 << true << 0x3FFFFu;
}

// Every pixel against the written definition, computed here the plain way: the fast paths
// (vector kernels, the exact shortcut of the mix, threads) must not change a single pixel.
void TestDocumentImage::renderMatchesTheFormula()
{
    QFETCH(int, entries);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(bool, interpolate);
    QFETCH(uint, channelMask);
    std::mt19937 rng(uint32_t(entries * 7919 + width));
    Palette<uint> p;
    for (int i = 0; i < entries; ++i)
        p.append({uint(rng() & channelMask), uint(rng() & channelMask), uint(rng() & channelMask),
                  uint(rng() & 0xFFFFu)});
    std::vector<float> cells(size_t(width) * size_t(height));
    std::uniform_real_distribution<float> any(0.0f, 65535.0f);
    std::uniform_real_distribution<float> low(0.0f, 65535.0f / float(entries)); // the first entry's band
    // Exact band edges and their neighbours, tiny and subnormal values, and any bit pattern at
    // all (negatives, infinities, NaNs).
    const auto edge = [&]() {
        const float e = float(rng() % uint(entries + 1)) * 65535.0f / float(entries);
        const int step = int(rng() % 3) - 1;
        return step == 0 ? e : std::nextafter(e, step * std::numeric_limits<float>::infinity());
    };
    const auto tiny = [&]() { return std::ldexp(float(rng() % 1000), -int(rng() % 150)); };
    const auto bits = [&]() {
        const uint32_t b = uint32_t(rng());
        float f;
        std::memcpy(&f, &b, sizeof f);
        return f;
    };
    for (size_t k = 0; k < cells.size(); ++k)
        cells[k] = k % 5 == 0    ? low(rng)
                   : k % 97 == 0 ? float(int(any(rng)))
                   : k % 11 == 0 ? edge()
                   : k % 13 == 0 ? tiny()
                   : k % 17 == 0 ? bits()
                                 : any(rng);
    DocumentImage img = DocumentImage::fromContinuous(width, height, cells, interpolate);
    img.render(p);
    const QImage &pic = img.picture();
    int mismatches = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const float v = cells[size_t(y) * size_t(width) + size_t(x)];
            float pos = v * float(entries) / 65535.0f;
            pos = std::isnan(pos) || pos < 0.0f ? 0.0f : std::min(pos, float(entries - 1)); // NaN shows the first
            const int i = int(pos);
            const QRgb expected =
                !interpolate || pos == float(i) ? opaque(p[i]) : mix(p[i], p[i + 1], double(pos - float(i)));
            if (pic.pixel(x, y) != expected && ++mismatches < 5)
                qWarning() << "pixel" << x << y << "value" << v;
        }
    QCOMPARE(mismatches, 0);
}

void TestDocumentImage::continuousOneEntry()
{
    Palette<uint> p;
    p.append({0x1234, 0x5678, 0x9ABC, 65535});
    DocumentImage img = DocumentImage::fromContinuous(4, 1, {0.0f, 100.0f, 40000.0f, 65535.0f}, true);
    img.render(p);
    for (int x = 0; x < 4; ++x)
        QCOMPARE(img.picture().pixel(x, 0), opaque(p[0]));
}

void TestDocumentImage::emptyPaletteRendersBlack()
{
    for (DocumentImage img : {DocumentImage::fromIndexes32(2, 1, {0, 7}),
                              DocumentImage::fromContinuous(2, 1, {0.0f, 65535.0f}),
                              DocumentImage::fromIndexes8(2, 1, {0, 200})}) {
        img.render(Palette<uint>());
        QCOMPARE(img.picture().pixel(1, 0), qRgb(0, 0, 0));
    }
}

void TestDocumentImage::indexed8RenderTouchesNoPixel()
{
    DocumentImage img = DocumentImage::fromIndexes8(5, 3, {0, 1, 2, 3, 9, 3, 2, 1, 0, 0, 1, 1, 1, 1, 1});
    const Palette<uint> p = fourColours();
    img.render(p);
    const DocumentImage copy = img; // as an undo record would keep it
    const uchar *before = img.picture().constBits();
    Palette<uint> other = p;
    other[1] = {0, 0xFF00, 0, 65535};
    img.render(other);
    QCOMPARE(img.picture().constBits(), before);
    QCOMPARE(copy.picture().constBits(), before);
    QCOMPARE(img.picture().pixel(1, 0), qRgb(0, 255, 0));
    QCOMPARE(copy.picture().pixel(1, 0), opaque(p[1]));
    QCOMPARE(img.picture().pixel(4, 0), opaque(other[3])); // index 9 past the palette
    // The picture outlives the document image it came from.
    QImage detached;
    {
        DocumentImage temp = DocumentImage::fromIndexes8(2, 1, {1, 0});
        temp.render(p);
        detached = temp.picture();
    }
    QCOMPARE(detached.pixel(0, 0), opaque(p[1]));
}

void TestDocumentImage::pictureLoadsIntoModes_data()
{
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<int>("mode");
    QImage indexed(3, 2, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(10, 20, 30), qRgb(200, 100, 0)});
    indexed.fill(1);
    QImage rgb(3, 2, QImage::Format_RGB888);
    rgb.fill(Qt::red);
    QImage mono(8, 2, QImage::Format_Mono);
    mono.fill(1);
    QTest::newRow("indexed") << indexed << 2;
    QTest::newRow("rgb888") << rgb << 1;
    QTest::newRow("mono is not 8-bit indexed") << mono << 1;
    QImage grey(3, 2, QImage::Format_Grayscale8);
    grey.fill(7);
    QTest::newRow("8-bit grey is indexed") << grey << 2;
}

void TestDocumentImage::pictureLoadsIntoModes()
{
    QFETCH(QImage, picture);
    QFETCH(int, mode);
    const DocumentImage img = DocumentImage::fromPicture(picture);
    QCOMPARE(img.mode(), mode);
    QCOMPARE(img.width(), picture.width());
    QCOMPARE(img.height(), picture.height());
    if (mode == 2 && picture.format() == QImage::Format_Grayscale8) {
        QCOMPARE(img.imagePalette().size(), 256);
        QCOMPARE(int(img.indexRow(1)[2]), 7);
    } else if (mode == 2) {
        QCOMPARE(img.imagePalette().size(), 2);
        QCOMPARE(img.imagePalette()[1], RGBAColor<uint>(200 << 8, 100 << 8, 0, 65535));
        QCOMPARE(int(img.indexRow(1)[2]), 1);
    } else {
        QCOMPARE(img.picture().format(), QImage::Format_ARGB32);
        QVERIFY(img.imagePalette().isEmpty());
        QCOMPARE(img.picture().pixel(0, 0), picture.pixel(0, 0));
    }
}

void TestDocumentImage::handedOverPictureIsTheSame()
{
    QImage picture(5, 3, QImage::Format_RGB32);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x)
            picture.setPixel(x, y, qRgb(x * 50, y * 90, 7));
    const QImage before = picture.copy();
    const DocumentImage kept = DocumentImage::fromPicture(picture);
    // The caller's picture is shared, so it stays as it was while the image gets its own.
    QCOMPARE(picture.format(), QImage::Format_RGB32);
    QCOMPARE(picture, before);
    const DocumentImage taken = DocumentImage::fromPicture(std::move(picture));
    for (const DocumentImage *img : {&kept, &taken}) {
        QCOMPARE(img->mode(), 1);
        QCOMPARE(img->picture().format(), QImage::Format_ARGB32);
        QCOMPARE(img->picture(), before.convertToFormat(QImage::Format_ARGB32));
    }
}

void TestDocumentImage::indexBytesTakenOver_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    for (int w : {1, 2, 3, 4, 5, 7, 8, 9})
        for (int h : {1, 2, 5})
            QTest::addRow("%dx%d", w, h) << w << h;
}

void TestDocumentImage::indexBytesTakenOver()
{
    QFETCH(int, width);
    QFETCH(int, height);
    std::vector<uint8_t> bytes(size_t(width) * size_t(height));
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = uint8_t(i * 37 + 1);
    const DocumentImage copied = DocumentImage::fromIndexes8(width, height, bytes);
    std::vector<uint8_t> handed = bytes;
    const DocumentImage taken = DocumentImage::fromIndexes8(width, height, std::move(handed));
    QCOMPARE(taken.mode(), 2);
    QCOMPARE(taken.indexStride(), copied.indexStride());
    for (int y = 0; y < height; ++y) {
        // The whole stride, padding included, is what the copy holds.
        const QByteArray row(reinterpret_cast<const char *>(taken.indexRow(y)), taken.indexStride());
        QCOMPARE(row, QByteArray(reinterpret_cast<const char *>(copied.indexRow(y)), copied.indexStride()));
        for (int x = 0; x < width; ++x)
            QCOMPARE(taken.indexRow(y)[x], bytes[size_t(y) * size_t(width) + size_t(x)]);
    }
    QCOMPARE(DocumentImage::fromIndexes8(width, height + 1, std::vector<uint8_t>(bytes)).mode(), 0);
}

void TestDocumentImage::copiesAreIndependent()
{
    DocumentImage a = DocumentImage::fromContinuous(2, 1, {0.0f, 65535.0f});
    DocumentImage b = a;
    b.setInterpolate(true);
    QVERIFY(!a.interpolate());
    QCOMPARE(b.continuousCells(), a.continuousCells());
    QCOMPARE(b.mode(), 4);
}

void TestDocumentImage::sizesPastTheLimit_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("fits");
    QTest::newRow("largest") << (1 << 14) << (1 << 13) << true;
    QTest::newRow("one row more") << (1 << 14) << (1 << 13) + 1 << false;
    QTest::newRow("widest") << (1 << 18) << 512 << true;
    QTest::newRow("one column wider") << (1 << 18) + 1 << 1 << false;
    QTest::newRow("tallest") << 1 << (1 << 18) << true;
    QTest::newRow("one row taller") << 1 << (1 << 18) + 1 << false;
}

// A picture past the one image limit becomes no image, however it came: the window and every
// command then say why instead of showing nothing. Mono pictures keep the test's memory small.
void TestDocumentImage::sizesPastTheLimit()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(bool, fits);
    QCOMPARE(ImageLimits::fits(width, height), fits);
    if (fits)
        return;
    QImage picture(width, height, QImage::Format_Mono);
    QVERIFY(!picture.isNull());
    QVERIFY(DocumentImage::fromPicture(picture).isNull());
    QCOMPARE(ImageLimits::tooLarge(width, height),
             QString("The image is %1 x %2 pixels; at most 134217728 pixels, 262144 a side, can be opened.")
                 .arg(width)
                 .arg(height));
}

// The renderers leave a picture that cannot exist null and write nothing: the cells past the first
// row are never looked at, so a single cell stands for the row.
void TestDocumentImage::unbuildablePictureIsNotDrawn()
{
    const Palette<uint> palette(std::vector<RGBAColor<uint>>{{65535, 0, 0, 65535}, {0, 0, 65535, 65535}});
    const uint32_t index = 1;
    const float value = 40000.0f;
    QImage out(2, 2, QImage::Format_ARGB32);
    renderIndexed32(&index, 1 << 26, 1, palette, out);
    QVERIFY(out.isNull());
    out = QImage(2, 2, QImage::Format_ARGB32);
    renderContinuous(&value, 1 << 26, 1, palette, true, out);
    QVERIFY(out.isNull());
    // The same calls at a size that exists draw as ever.
    renderIndexed32(&index, 1, 1, palette, out);
    QCOMPARE(out.pixel(0, 0), qRgb(0, 0, 255));
}

void TestDocumentImage::distinctColoursOrder()
{
    QImage pic(4, 2, QImage::Format_ARGB32);
    const QRgb colours[] = {qRgb(255, 255, 255), qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255),
                            qRgb(0, 0, 0),       qRgb(255, 0, 0), qRgb(128, 0, 0), qRgba(0, 0, 255, 10)};
    for (int i = 0; i < 8; ++i)
        pic.setPixel(i % 4, i / 4, colours[i]);
    const Palette<uint> p = distinctColours(pic);
    // Interleaved bits, red most significant: black, blue, green, (128,0,0), red, white.
    const QVector<QRgb> expected = {qRgb(0, 0, 0),   qRgb(0, 0, 255), qRgb(0, 255, 0),
                                    qRgb(128, 0, 0), qRgb(255, 0, 0), qRgb(255, 255, 255)};
    QCOMPARE(p.size(), expected.size());
    for (int i = 0; i < p.size(); ++i) {
        QCOMPARE(opaque(p[i]), expected[i]);
        QCOMPARE(p[i].a, 65535u);
        QCOMPARE(p[i].r & 0xFF, 0u);
    }
    // Interleaving is not numeric order: 0x010000 sorts before 0x00ffff, whose top bits are set.
    QImage two(2, 1, QImage::Format_ARGB32);
    two.setPixel(0, 0, qRgb(1, 0, 0));
    two.setPixel(1, 0, qRgb(0, 255, 255));
    const Palette<uint> q = distinctColours(two);
    QCOMPARE(opaque(q[0]), qRgb(1, 0, 0));
    QCOMPARE(opaque(q[1]), qRgb(0, 255, 255));
}

void TestDocumentImage::builtinListWalk_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("next");
    QTest::addColumn<int>("prior");
    QTest::newRow("middle") << 5 << 10 << 6 << 4;
    QTest::newRow("last wraps") << 9 << 10 << 0 << 8;
    QTest::newRow("first wraps back") << 0 << 10 << 1 << 9;
    QTest::newRow("single") << 0 << 1 << 0 << 0;
}

void TestDocumentImage::builtinListWalk()
{
    QFETCH(int, index);
    QFETCH(int, count);
    QFETCH(int, next);
    QFETCH(int, prior);
    QCOMPARE(BuiltinList::next(index, count), next);
    QCOMPARE(BuiltinList::prior(index, count), prior);
    QCOMPARE(BuiltinList::random(0, count), 0);
    QCOMPARE(BuiltinList::random(32767, count), count - 1);
    QCOMPARE(BuiltinList::random(16384, 693), 346);
}

void TestDocumentImage::selectionFiles()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("sel.txt");
    writeSelectionFile(path, {7, 0, 3});
    QFile f(path);
    QVERIFY(f.open(QIODevice::ReadOnly));
    QCOMPARE(f.readAll(), QByteArray("0\n3\n7\n"));
    QCOMPARE(readSelectionFile(path), std::set<int>({0, 3, 7}));
}

void TestDocumentImage::selectionFileErrors_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");
    QTest::newRow("word") << QByteArray("1\nfive\n") << "Could not parse file '%1'.\nA non-integer value occured.";
    QTest::newRow("fraction") << QByteArray("1.5\n") << "Could not parse file '%1'.\nA non-integer value occured.";
    QTest::newRow("missing") << QByteArray() << "Could not open file '%1'.";
}

void TestDocumentImage::selectionFileErrors()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    QTemporaryDir dir;
    const QString path = dir.filePath("sel.txt");
    if (!content.isEmpty()) {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(content);
    }
    QCOMPARE(refusal([&] { readSelectionFile(path); }), "Could not load: " + message.arg(path));
}

void TestDocumentImage::documentPaletteHistory()
{
    ChromaxisDocument doc;
    const Palette<uint> gray = doc.palette();
    doc.setImage(DocumentImage::fromIndexes32(1, 1, {1}));
    QCOMPARE(doc.image().picture().pixel(0, 0), qRgb(1, 1, 1));
    const Palette<uint> p = fourColours();
    doc.setPalette(p);
    QCOMPARE(doc.lastPalette(), gray);
    QCOMPARE(doc.image().picture().pixel(0, 0), opaque(p[1]));
    Palette<uint> preview = p;
    preview[1] = {0, 0, 0xFF00, 65535};
    doc.setPreviewPalette(preview);
    QCOMPARE(doc.lastPalette(), gray);
    QCOMPARE(doc.displayedPicture().pixel(0, 0), qRgb(0, 0, 255));
    QCOMPARE(doc.image().picture().pixel(0, 0), opaque(p[1])); // the image itself is not touched
    doc.closeImage();
    QVERIFY(!doc.hasImage());
    QCOMPARE(doc.imageMode(), 0);
}

QTEST_GUILESS_MAIN(TestDocumentImage)
#include "tst_documentimage.moc"
