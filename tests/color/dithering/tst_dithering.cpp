#include "quantization/colorindex.h"
#include "dithering/dithering_errordiffusion.h"
#include "dithering/dithering_nearest.h"
#include "dithering/dithering_ordered.h"

#include <QImage>
#include <QtTest>

#include <memory>
#include <random>

namespace {

RGBAColor<uint> entry(uint rgb)
{
    return {((rgb >> 16) & 0xFF) << 8, ((rgb >> 8) & 0xFF) << 8, (rgb & 0xFF) << 8, 65535};
}

Palette<uint> paletteOf(const QList<uint> &colours)
{
    Palette<uint> p;
    for (uint c : colours)
        p.append(entry(c));
    return p;
}

Palette<uint> greys()
{
    Palette<uint> p;
    for (uint i = 0; i < 256; ++i)
        p.append(entry(i * 0x010101u));
    return p;
}

QImage greyRow(const QList<int> &values)
{
    QImage image(values.size(), 1, QImage::Format_RGB32);
    for (int x = 0; x < values.size(); ++x)
        image.setPixel(x, 0, qRgb(values[x], values[x], values[x]));
    return image;
}

QList<uint> indexesOf(const DitherResult &r)
{
    QList<uint> out;
    if (r.kind == 2)
        for (uint8_t v : r.indexes8)
            out << v;
    else
        for (uint32_t v : r.indexes32)
            out << v;
    return out;
}

std::unique_ptr<Dithering> method(ColorIndex *index, int number, int paletteSize)
{
    if (number == 0)
        return std::make_unique<Dithering_Nearest>(index);
    if (number <= 8)
        return std::make_unique<Dithering_ErrorDiffusion>(index, number);
    return std::make_unique<Dithering_Ordered>(index, number, paletteSize);
}

// Error diffusion written as plainly as it is described: one error entry for every pixel of the
// picture, every tap checked against the picture's edges, the tree search for every colour.
QList<uint> diffusedByReference(const QImage &image, const Palette<uint> &palette, int number)
{
    ColorIndex index(palette);
    const Dithering_ErrorDiffusion kernel(&index, number);
    const int w = image.width(), h = image.height();
    std::vector<int> error(size_t(w) * size_t(h) * 3, 0);
    QList<uint> out;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            int *here = &error[(size_t(y) * size_t(w) + size_t(x)) * 3];
            const QRgb p = image.pixel(x, y);
            const int v[3] = {qRed(p) + here[0], qGreen(p) + here[1], qBlue(p) + here[2]};
            const uint i = index.search(uint(qBound(0, v[0], 255)) << 16 | uint(qBound(0, v[1], 255)) << 8 |
                                        uint(qBound(0, v[2], 255)));
            out << i;
            const uint pc = index.colorOf(i);
            const int e[3] = {v[0] - int(pc >> 16), v[1] - int((pc >> 8) & 0xFF), v[2] - int(pc & 0xFF)};
            for (int dy = 0; dy < kernel.kernelHeight(); ++dy)
                for (int dx = 0; dx < kernel.kernelWidth(); ++dx) {
                    const int weight = kernel.weight(dy, dx);
                    const int tx = x + dx - kernel.currentColumn(), ty = y + dy;
                    if (weight == 0 || tx < 0 || tx >= w || ty >= h)
                        continue;
                    int *target = &error[(size_t(ty) * size_t(w) + size_t(tx)) * 3];
                    for (int k = 0; k < 3; ++k)
                        target[k] = qBound(0, target[k] + kernel.share(weight, e[k]), 255);
                }
        }
    return out;
}

// n distinct colours drawn from seed.
Palette<uint> randomPalette(int n, unsigned seed)
{
    std::mt19937 rng(seed);
    QList<uint> colours;
    while (colours.size() < n) {
        const uint c = rng() & 0xFFFFFFu;
        if (!colours.contains(c))
            colours << c;
    }
    return paletteOf(colours);
}

QImage noise(int w, int h, unsigned seed)
{
    std::mt19937 rng(seed);
    QImage image(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) // smooth ramps with noise, so errors run both ways
            image.setPixel(x, y,
                           qRgb(qBound(0, x * 255 / w + int(rng() % 61) - 30, 255),
                                qBound(0, y * 255 / h + int(rng() % 61) - 30, 255), int(rng() % 256)));
    return image;
}

} // namespace

class TestDithering : public QObject
{
    Q_OBJECT
private slots:
    void approximateSearch_data();
    void approximateSearch();
    void cacheAgreesWithSearch();
    void bayerThresholds_data();
    void bayerThresholds();
    void orderedBrightens();
    void kernels_data();
    void kernels();
    void sharesShiftOrDivide();
    void errorDiffusionRows_data();
    void errorDiffusionRows();
    void diffusionMatchesWholePictureBuffer_data();
    void diffusionMatchesWholePictureBuffer();
    void darkImageDiffusesNothing();
    void oneColourPalette();
    void continuousValues();
    void indexedOutputForms();
    void cancelled();
};

void TestDithering::approximateSearch_data()
{
    QTest::addColumn<QList<uint>>("palette");
    QTest::addColumn<uint>("colour");
    QTest::addColumn<uint>("index");
    // 128 follows 135's path to level 5, so the level-3 subtree is searched: 127, though nearer,
    // lies in another branch.
    QTest::newRow("nearby branch wins") << QList<uint>{0x870000, 0x7F0000} << 0x800000u << 0u;
    QTest::newRow("level-1 subtree searched") << QList<uint>{0x900000, 0x7F0000} << 0x810000u << 0u;
    QTest::newRow("break near the root searches all") << QList<uint>{0x000000, 0xFFFFFF} << 0x646464u << 0u;
    QTest::newRow("whole tree, the nearer one") << QList<uint>{0x000000, 0xFFFFFF} << 0x8F8F8Fu << 1u;
    QTest::newRow("equal distance, first in child order")
        << QList<uint>{0x0000FE, 0x000002} << 0x000080u << 1u;
    QTest::newRow("exact colour") << QList<uint>{0x102030, 0x405060} << 0x405060u << 1u;
    QTest::newRow("shared colour: the later entry")
        << QList<uint>{0x0A141E, 0xC80000, 0x0A141E} << 0x0A141Eu << 2u;
}

void TestDithering::approximateSearch()
{
    QFETCH(QList<uint>, palette);
    QFETCH(uint, colour);
    QFETCH(uint, index);
    ColorIndex ci(paletteOf(palette));
    QCOMPARE(ci.search(colour), index);
    QVERIFY(!ci.isPrepared(colour));
    QCOMPARE(ci.lookup(colour), index);
    QVERIFY(ci.isPrepared(colour));
    QCOMPARE(ci.lookup(colour), index);
}

void TestDithering::cacheAgreesWithSearch()
{
    QList<uint> colours;
    uint x = 12345;
    for (int i = 0; i < 64; ++i) {
        x = x * 1103515245u + 12345u;
        colours << ((x >> 8) & 0xFFFFFF);
    }
    ColorIndex warm(paletteOf(colours));
    for (int i = 0; i < 1500; ++i) {
        x = x * 1103515245u + 12345u;
        const uint c = (x >> 4) & 0xFFFFFF;
        const uint first = warm.lookup(c);
        QCOMPARE(ColorIndex(paletteOf(colours)).search(c), first);
        QCOMPARE(warm.lookup(c), first);
    }
}

void TestDithering::bayerThresholds_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<int>("paletteSize");
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");
    QTest::addColumn<float>("threshold");
    // t = (m / n^2) * 255 / max(2, sqrt(palette size))
    QTest::newRow("Bayer2 m=0") << 9 << 256 << 0 << 0 << 0.0f;
    QTest::newRow("Bayer2 m=2") << 9 << 256 << 0 << 1 << 7.96875f;
    QTest::newRow("Bayer2 m=3") << 9 << 256 << 1 << 0 << 11.953125f;
    QTest::newRow("Bayer2, 4 colours use s=2") << 9 << 4 << 1 << 1 << 31.875f;
    QTest::newRow("Bayer2, 1 colour uses s=2") << 9 << 1 << 0 << 1 << 63.75f;
    QTest::newRow("Bayer3 m=8") << 10 << 9 << 2 << 2 << float(8.0 / 9.0 * 255.0 / 3.0);
    QTest::newRow("Bayer3 m=6") << 10 << 9 << 1 << 0 << float(6.0 / 9.0 * 255.0 / 3.0);
    QTest::newRow("Bayer4 m=15") << 11 << 16 << 3 << 0 << 59.765625f;
    QTest::newRow("Bayer4 m=9") << 11 << 16 << 2 << 3 << float(9.0 / 16.0 * 63.75);
    QTest::newRow("Bayer8 m=63") << 12 << 65536 << 0 << 7 << float(63.0 / 64.0 * 255.0 / 256.0);
    QTest::newRow("Bayer8 m=21") << 12 << 100 << 7 << 7 << 8.3671875f;
    QTest::newRow("Bayer8 m=32") << 12 << 100 << 1 << 0 << 12.75f;
}

void TestDithering::bayerThresholds()
{
    QFETCH(int, method);
    QFETCH(int, paletteSize);
    QFETCH(int, row);
    QFETCH(int, column);
    QFETCH(float, threshold);
    Dithering_Ordered d(nullptr, method, paletteSize);
    const int n = method == 9 ? 2 : method == 10 ? 3 : method == 11 ? 4 : 8;
    QCOMPARE(d.matrixWidth(), n);
    QCOMPARE(d.matrixHeight(), n);
    QCOMPARE(d.threshold(row, column), threshold);
}

void TestDithering::orderedBrightens()
{
    // Every grey has its own entry, so each pixel shows 100 + t, truncated.
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(qRgb(100, 100, 100));
    ColorIndex index(greys());
    const DitherResult r = Dithering_Ordered(&index, 11, 256).dither(image, greys(), 2);
    QCOMPARE(r.kind, 2);
    const auto at = [&r](int x, int y) { return int(r.indexes8[size_t(y * 8 + x)]); };
    QCOMPARE(at(0, 0), 100);
    QCOMPARE(at(1, 0), 107); // m = 8:  7.97
    QCOMPARE(at(0, 1), 111); // m = 12: 11.95
    QCOMPARE(at(3, 3), 104); // m = 5:  4.98
    QCOMPARE(at(4, 4), 100); // the matrix repeats
    QCOMPARE(at(7, 6), 108); // row 2, column 3: m = 9
    int sum = 0;
    for (uint8_t v : r.indexes8)
        sum += v;
    QVERIFY(sum > 100 * 64 + 5 * 64); // on average about 7 brighter, never darker
}

void TestDithering::kernels_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<QList<int>>("weights");
    QTest::addColumn<int>("divisor");
    QTest::addColumn<bool>("shift");
    QTest::addColumn<int>("column");
    QTest::newRow("1 Atkinson") << 1 << 4 << 3 << QList<int>{0, 0, 1, 1, 1, 1, 1, 0, 0, 1, 0, 0} << 8 << true
                                << 1;
    QTest::newRow("2 Burkes") << 2 << 5 << 2 << QList<int>{0, 0, 0, 8, 4, 2, 4, 8, 4, 2} << 32 << true << 2;
    QTest::newRow("3 Floyd-Steinberg") << 3 << 3 << 2 << QList<int>{0, 0, 7, 3, 5, 1} << 16 << true << 1;
    QTest::newRow("4 Jarvis, Judice and Ninke")
        << 4 << 5 << 3 << QList<int>{0, 0, 0, 7, 5, 3, 5, 7, 5, 3, 1, 3, 5, 3, 1} << 48 << false << 2;
    QTest::newRow("5 two-row Sierra")
        << 5 << 5 << 2 << QList<int>{0, 0, 0, 4, 3, 1, 2, 3, 2, 1} << 16 << true << 2;
    QTest::newRow("6 Sierra") << 6 << 5 << 3 << QList<int>{0, 0, 0, 5, 3, 2, 4, 5, 4, 2, 0, 2, 3, 2, 0} << 32
                              << true << 2;
    QTest::newRow("7 Sierra Lite") << 7 << 3 << 2 << QList<int>{0, 0, 2, 1, 1, 0} << 4 << true << 1;
    QTest::newRow("8 Stucki") << 8 << 5 << 3 << QList<int>{0, 0, 0, 8, 4, 2, 4, 8, 4, 2, 1, 2, 4, 2, 1} << 42
                              << false << 2;
}

void TestDithering::kernels()
{
    QFETCH(int, method);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(QList<int>, weights);
    QFETCH(int, divisor);
    QFETCH(bool, shift);
    QFETCH(int, column);
    Dithering_ErrorDiffusion d(nullptr, method);
    QCOMPARE(d.method(), method);
    QCOMPARE(d.kernelWidth(), width);
    QCOMPARE(d.kernelHeight(), height);
    QList<int> table;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            table << d.weight(y, x);
    QCOMPARE(table, weights);
    QCOMPARE(d.divisor(), divisor);
    QCOMPARE(d.divisorIsShift(), shift);
    QCOMPARE(d.currentColumn(), column);
}

void TestDithering::sharesShiftOrDivide()
{
    // A shift rounds toward minus infinity, a division toward zero.
    QCOMPARE(Dithering_ErrorDiffusion(nullptr, 3).share(7, -1), -1);
    QCOMPARE(Dithering_ErrorDiffusion(nullptr, 3).share(7, 100), 43);
    QCOMPARE(Dithering_ErrorDiffusion(nullptr, 4).share(7, -1), 0);
    QCOMPARE(Dithering_ErrorDiffusion(nullptr, 4).share(7, -48), -7);
    QCOMPARE(Dithering_ErrorDiffusion(nullptr, 8).share(8, 100), 19);
    QCOMPARE(Dithering_ErrorDiffusion(nullptr, 8).share(8, -100), -19);
    QCOMPARE(Dithering_ErrorDiffusion(nullptr, 7).share(1, -3), -1);
}

void TestDithering::errorDiffusionRows_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<QList<int>>("greys");
    QTest::addColumn<QList<uint>>("indexes");
    // Floyd-Steinberg: 100 -> black passes 43 on; 143 -> white passes -49, clamped to 0 in the
    // buffer, so 140 stays 140 and turns white (unclamped it would be 91 and black).
    QTest::newRow("negative error is clamped away") << 3 << QList<int>{100, 100, 140} << QList<uint>{0, 1, 1};
    // Atkinson passes an eighth to the next two pixels: 100, 112, 126 stay black, then 129.
    QTest::newRow("Atkinson reaches two ahead")
        << 1 << QList<int>{100, 100, 100, 100} << QList<uint>{0, 0, 0, 1};
    QTest::newRow("Sierra Lite passes half") << 7 << QList<int>{100, 100, 100} << QList<uint>{0, 1, 0};
}

void TestDithering::errorDiffusionRows()
{
    QFETCH(int, method);
    QFETCH(QList<int>, greys);
    QFETCH(QList<uint>, indexes);
    const Palette<uint> bw = paletteOf({0x000000, 0xFFFFFF});
    ColorIndex index(bw);
    QCOMPARE(indexesOf(Dithering_ErrorDiffusion(&index, method).dither(greyRow(greys), bw, 2)), indexes);
}

void TestDithering::diffusionMatchesWholePictureBuffer_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<Palette<uint>>("palette");
    const char *names[] = {"",       "Atkinson",    "Burkes", "Floyd-Steinberg", "Jarvis", "two-row Sierra",
                           "Sierra", "Sierra Lite", "Stucki"};
    // Pictures shorter and narrower than the kernels, as tall as they are and taller; palettes
    // stored as 8-bit and as 32-bit indexes.
    const QList<QSize> sizes{{1, 1}, {1, 6}, {6, 1}, {2, 2}, {3, 3}, {7, 4}, {13, 11}, {64, 9}};
    const QList<QPair<QString, Palette<uint>>> palettes{
        {"16 colours", randomPalette(16, 1)}, {"greys", greys()}, {"300 colours", randomPalette(300, 2)}};
    for (int m = 1; m <= 8; ++m)
        for (const QSize &size : sizes)
            for (const auto &palette : palettes)
                QTest::addRow("%s %dx%d %s", names[m], size.width(), size.height(), qPrintable(palette.first))
                    << m << size << palette.second;
}

void TestDithering::diffusionMatchesWholePictureBuffer()
{
    QFETCH(int, method);
    QFETCH(QSize, size);
    QFETCH(Palette<uint>, palette);
    const QImage image =
        noise(size.width(), size.height(), uint(method * 1000 + size.width() * 31 + size.height()));
    ColorIndex index(palette);
    const DitherResult r = Dithering_ErrorDiffusion(&index, method).dither(image, palette, 2);
    QCOMPARE(r.kind, palette.size() <= 256 ? 2 : 3);
    QCOMPARE(indexesOf(r), diffusedByReference(image, palette, method));
}

void TestDithering::darkImageDiffusesNothing()
{
    const Palette<uint> palette = paletteOf({0x646464, 0xC8C8C8, 0x906030});
    QImage image(9, 7, QImage::Format_RGB32);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x)
            image.setPixel(x, y, qRgb((x * 11 + y * 3) % 96, (x * 5 + y * 13) % 40, (x * y * 7) % 48));
    ColorIndex index(palette);
    const QList<uint> nearest = indexesOf(Dithering_Nearest(&index).dither(image, palette, 2));
    for (int m = 1; m <= 8; ++m)
        QCOMPARE(indexesOf(Dithering_ErrorDiffusion(&index, m).dither(image, palette, 2)), nearest);
}

void TestDithering::oneColourPalette()
{
    const Palette<uint> one = paletteOf({0x336699});
    QImage image(5, 4, QImage::Format_ARGB32);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 5; ++x)
            image.setPixel(x, y, qRgba(x * 60, y * 80, 255 - x * 50, x * 10));
    for (int m = 0; m <= 12; ++m) {
        ColorIndex index(one);
        const DitherResult indexed = method(&index, m, 1)->dither(image, one, 2);
        QCOMPARE(indexed.kind, 2);
        QCOMPARE(indexed.indexes8, std::vector<uint8_t>(20, 0));
        const DitherResult cont = method(&index, m, 1)->dither(image, one, 4);
        QCOMPARE(cont.kind, 4);
        QCOMPARE(cont.values, std::vector<float>(20, 0.0f));
    }
}

void TestDithering::continuousValues()
{
    const Palette<uint> four = paletteOf({0x000000, 0x555555, 0xAAAAAA, 0xFFFFFF});
    ColorIndex index(four);
    const DitherResult r = Dithering_Nearest(&index).dither(greyRow({0, 85, 170, 255}), four, 4);
    QCOMPARE(r.kind, 4);
    QCOMPARE(r.width, 4);
    QCOMPARE(r.values, (std::vector<float>{0.0f, 16383.75f, 32767.5f, 49151.25f})); // i * 65535 / 4
}

void TestDithering::indexedOutputForms()
{
    // A colour shared by entries 0 and 2: the index finds entry 2, and the 8-bit picture, whose
    // table holds that colour first at 0, stores 0.
    const Palette<uint> shared = paletteOf({0x0A141E, 0xC80000, 0x0A141E});
    QImage image(3, 1, QImage::Format_RGB32);
    image.fill(qRgb(10, 20, 30));
    image.setPixel(1, 0, qRgb(200, 0, 0));
    ColorIndex index(shared);
    const DitherResult small = Dithering_Nearest(&index).dither(image, shared, 2);
    QCOMPARE(small.kind, 2);
    QCOMPARE(indexesOf(small), (QList<uint>{0, 1, 0}));

    // 257 entries stay a 32-bit index picture with the index as found.
    Palette<uint> large = paletteOf({0x0A141E});
    for (uint i = 1; i < 256; ++i)
        large.append(entry(i * 0x010101u));
    large.append(entry(0x0A141E));
    image.setPixel(1, 0, qRgb(200, 200, 200));
    ColorIndex largeIndex(large);
    const DitherResult wide = Dithering_Nearest(&largeIndex).dither(image, large, 2);
    QCOMPARE(wide.kind, 3);
    QCOMPARE(indexesOf(wide), (QList<uint>{256, 200, 256}));
}

void TestDithering::cancelled()
{
    QImage image(4, 300, QImage::Format_RGB32);
    image.fill(qRgb(9, 9, 9));
    ColorIndex index(greys());
    for (int m : {0, 3, 12})
        QCOMPARE(method(&index, m, 256)->dither(image, greys(), 2, [](int) { return false; }).kind, 0);
}

QTEST_APPLESS_MAIN(TestDithering)
#include "tst_dithering.moc"
