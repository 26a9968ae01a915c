// GIF pictures read as 8-bit indexed images in their own colours, and 8-bit indexed images written
// as GIF. The files are made with GIFLIB's encoder in the tests themselves.

#include "palette/describedexception.h"
#include "storage/gifimage.h"

#include "gifbuilder.h"

#include <QtTest>

namespace {

RGBAColor<uint> entry(QRgb c, uint alpha = 65535)
{
    return {uint(qRed(c)) << 8, uint(qGreen(c)) << 8, uint(qBlue(c)) << 8, alpha};
}

Palette<uint> entriesOf(const QVector<QRgb> &table, int transparent = -1)
{
    Palette<uint> out;
    for (int i = 0; i < table.size(); ++i)
        out.append(entry(table[i], i == transparent ? 0 : 65535));
    return out;
}

QByteArray indexesOf(const DocumentImage &image)
{
    QByteArray out;
    for (int y = 0; y < image.height(); ++y)
        out += QByteArray(reinterpret_cast<const char *>(image.indexRow(y)), image.width());
    return out;
}

QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray out;
    for (int v : values)
        out += char(v);
    return out;
}

const QVector<QRgb> four{qRgb(200, 10, 10), qRgb(10, 200, 10), qRgb(10, 10, 200), qRgb(250, 250, 250)};
const QVector<QRgb> otherFour{qRgb(1, 2, 3), qRgb(40, 50, 60), qRgb(70, 80, 90), qRgb(100, 110, 120)};

GifFrame frame(int left, int top, int width, int height, std::vector<uint8_t> pixels)
{
    GifFrame f;
    f.left = left;
    f.top = top;
    f.width = width;
    f.height = height;
    f.pixels = std::move(pixels);
    return f;
}

// A 3 x 2 GIF with a global table only.
QByteArray plainGif()
{
    return buildGif(3, 2, four, {frame(0, 0, 3, 2, {0, 1, 2, 3, 2, 1})});
}

QString loadMessage(const QByteArray &data)
{
    try {
        GifImage::fromBytes(data, QStringLiteral("t.gif"));
    } catch (const DescribedException &e) {
        return e.title() + QStringLiteral(": ") + e.message();
    }
    return QStringLiteral("loaded");
}

} // namespace

class TestGifImage : public QObject
{
    Q_OBJECT
private slots:
    void readsFirstFrameInItsColours_data();
    void readsFirstFrameInItsColours();
    void refusesMalformedFiles_data();
    void refusesMalformedFiles();
    void everyCutIsRefusedOrRead();
    void writesIndexedImages_data();
    void writesIndexedImages();
    void writesNothingElse();
};

void TestGifImage::readsFirstFrameInItsColours_data()
{
    QTest::addColumn<QByteArray>("gif");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<QByteArray>("indexes");
    QTest::addColumn<Palette<uint>>("palette");

    QTest::newRow("global table") << plainGif() << 3 << 2 << bytes({0, 1, 2, 3, 2, 1}) << entriesOf(four);

    GifFrame local = frame(0, 0, 2, 2, {3, 2, 1, 0});
    local.localTable = otherFour;
    local.transparent = 2;
    QTest::newRow("local table over global, transparent index")
        << buildGif(2, 2, four, {local}) << 2 << 2 << bytes({3, 2, 1, 0}) << entriesOf(otherFour, 2);

    // Ten rows reach all four passes; each pixel holds its row number.
    std::vector<uint8_t> rows;
    for (int y = 0; y < 10; ++y)
        rows.insert(rows.end(), {uint8_t(y), uint8_t(y)});
    GifFrame interlaced = frame(0, 0, 2, 10, rows);
    interlaced.interlace = true;
    QVector<QRgb> sixteen;
    for (int i = 0; i < 16; ++i)
        sixteen << qRgb(i * 16, 255 - i * 16, i);
    QTest::newRow("interlaced") << buildGif(2, 10, sixteen, {interlaced}) << 2 << 10
                                << QByteArray(reinterpret_cast<const char *>(rows.data()), int(rows.size()))
                                << entriesOf(sixteen);

    QTest::newRow("frame inside the screen: background around it")
        << buildGif(4, 3, four, {frame(1, 1, 2, 2, {0, 1, 1, 0})}, 3) << 4 << 3
        << bytes({3, 3, 3, 3, 3, 0, 1, 3, 3, 1, 0, 3}) << entriesOf(four);

    GifFrame seeThrough = frame(1, 0, 1, 2, {1, 2});
    seeThrough.transparent = 0;
    QTest::newRow("frame inside the screen: transparent around it")
        << buildGif(3, 2, four, {seeThrough}, 3) << 3 << 2 << bytes({0, 1, 0, 0, 2, 0}) << entriesOf(four, 0);

    QTest::newRow("frame past the screen widens the picture")
        << buildGif(2, 1, four, {frame(1, 0, 2, 1, {2, 1})}) << 3 << 1 << bytes({0, 2, 1}) << entriesOf(four);

    GifFrame second = frame(0, 0, 2, 1, {0, 0});
    second.localTable = otherFour;
    QTest::newRow("first frame of two") << buildGif(2, 1, four, {frame(0, 0, 2, 1, {1, 3}), second}) << 2 << 1
                                        << bytes({1, 3}) << entriesOf(four);

    QVector<QRgb> pair{qRgb(0, 0, 0), qRgb(255, 255, 255)};
    QTest::newRow("two colours") << buildGif(3, 1, pair, {frame(0, 0, 3, 1, {1, 0, 1})}) << 3 << 1
                                 << bytes({1, 0, 1}) << entriesOf(pair);
}

void TestGifImage::readsFirstFrameInItsColours()
{
    QFETCH(QByteArray, gif);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(QByteArray, indexes);
    QFETCH(Palette<uint>, palette);
    QVERIFY(!gif.isEmpty());
    QVERIFY(GifImage::isGif(gif));
    const DocumentImage image = GifImage::fromBytes(gif, QStringLiteral("t.gif"));
    QCOMPARE(image.mode(), int(DocumentImage::Indexed8));
    QCOMPARE(image.width(), width);
    QCOMPARE(image.height(), height);
    QCOMPARE(indexesOf(image), indexes);
    QCOMPARE(image.imagePalette(), palette);
    // The picture shows the image's own colours, opaque as every rendered picture.
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const RGBAColor<uint> c = palette[uchar(indexes[y * width + x])];
            QCOMPARE(image.picture().pixel(x, y), qRgb(int(c.r >> 8), int(c.g >> 8), int(c.b >> 8)));
        }
}

void TestGifImage::refusesMalformedFiles_data()
{
    QTest::addColumn<QByteArray>("gif");
    QTest::addColumn<QString>("message");
    const QString damaged =
        QStringLiteral("Could not load: Cannot load t.gif.\nThe GIF file is damaged or cut short.");
    const QByteArray plain = plainGif();
    // Header 6, screen 7, global table 12, then the image separator.
    const int separator = 6 + 7 + 12;
    QCOMPARE(plain.at(separator), ',');

    QTest::newRow("signature only") << QByteArray("GIF89a") << damaged;
    QTest::newRow("no image") << plain.left(separator) + ';'
                              << "Could not load: Cannot load t.gif.\nThe GIF file holds no image.";
    QByteArray noTable = plain;
    noTable[10] = char(uchar(noTable[10]) & 0x7F);
    noTable.remove(13, 12);
    QTest::newRow("no colour table")
        << noTable << "Could not load: Cannot load t.gif.\nThe GIF image has no colour table.";
    QByteArray unknownBlock = plain;
    unknownBlock[separator] = 'x';
    QTest::newRow("unknown block") << unknownBlock << damaged;
    QByteArray zeroWidth = plain;
    zeroWidth[separator + 5] = 0;
    QTest::newRow("frame without width")
        << zeroWidth << "Could not load: Cannot load t.gif.\nThe image size 0 x 2 is not supported.";
    QByteArray hugeScreen = plain;
    hugeScreen[6] = hugeScreen[7] = hugeScreen[8] = hugeScreen[9] = char(0xFF);
    QTest::newRow("screen beyond any picture")
        << hugeScreen << "Could not load: Cannot load t.gif.\nThe image is 65535 x 65535 pixels; at most 134217728 pixels, "
                       "262144 a side, can be opened.";
    // 16000 x 16000 fits a picture, but a few bytes cannot hold that many pixels: refused before
    // anything is allocated for them.
    QByteArray bigClaim = plain;
    bigClaim[separator + 5] = bigClaim[separator + 7] = char(10000 & 0xFF);
    bigClaim[separator + 6] = bigClaim[separator + 8] = char(10000 >> 8);
    QTest::newRow("frame larger than its data") << bigClaim << damaged;
    QByteArray offScreen = plain;
    offScreen[separator + 3] = offScreen[separator + 4] = char(0xFF);
    QTest::newRow("frame below what a GIF can describe")
        << offScreen << "Could not load: Cannot load t.gif.\nThe image size 3 x 65537 is not supported.";
    QTest::newRow("pixels cut short") << plain.left(plain.size() - 4) << damaged;
    QByteArray badCodeSize = plain;
    badCodeSize[separator + 10] = 12;
    QTest::newRow("code size beyond LZW") << badCodeSize << damaged;
}

void TestGifImage::refusesMalformedFiles()
{
    QFETCH(QByteArray, gif);
    QFETCH(QString, message);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(loadMessage(gif), message);
    QVERIFY(timer.elapsed() < 2000);
}

// Whatever is missing, a file either reads (the trailer is not needed) or is refused by message.
void TestGifImage::everyCutIsRefusedOrRead()
{
    GifFrame local = frame(0, 0, 5, 4, std::vector<uint8_t>(20, 1));
    local.localTable = otherFour;
    local.transparent = 1;
    const QByteArray gif = buildGif(5, 4, four, {local, frame(0, 0, 1, 1, {2})});
    for (int cut = 0; cut < gif.size(); ++cut) {
        const QString message = loadMessage(gif.left(cut));
        QVERIFY2(message == "loaded" || message.startsWith("Could not load: Cannot load t.gif.\n"),
                 qPrintable(QString::number(cut) + ": " + message));
    }
}

void TestGifImage::writesIndexedImages_data()
{
    QTest::addColumn<int>("highest");
    QTest::addColumn<int>("tableSize");
    QTest::newRow("one index, two entries") << 0 << 2;
    QTest::newRow("two entries") << 1 << 2;
    QTest::newRow("three indexes, four entries") << 2 << 4;
    QTest::newRow("five indexes, eight entries") << 4 << 8;
    QTest::newRow("all of them") << 255 << 256;
}

// Written and read again, the pixels are the same and the table is the picture's, cut to the
// smallest power of two that holds every index used.
void TestGifImage::writesIndexedImages()
{
    QFETCH(int, highest);
    QFETCH(int, tableSize);
    const int width = 17, height = 9;
    std::vector<uint8_t> pixels(size_t(width * height));
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = uint8_t((i * 7) % size_t(highest + 1));
    DocumentImage image = DocumentImage::fromIndexes8(width, height, pixels);
    Palette<uint> palette;
    for (int i = 0; i < 300; ++i)
        palette.append({uint(i % 256) << 8, uint(255 - i % 256) << 8, uint(i * 3 % 256) << 8, 65535});
    image.render(palette);

    const QByteArray gif = GifImage::toBytes(image);
    QVERIFY(GifImage::isGif(gif));
    const DocumentImage back = GifImage::fromBytes(gif, QStringLiteral("back.gif"));
    QCOMPARE(back.width(), width);
    QCOMPARE(back.height(), height);
    QCOMPARE(indexesOf(back), QByteArray(reinterpret_cast<const char *>(pixels.data()), int(pixels.size())));
    QCOMPARE(back.imagePalette().size(), tableSize);
    for (int i = 0; i < tableSize; ++i)
        QCOMPARE(back.imagePalette()[i], (RGBAColor<uint>{palette[i].r, palette[i].g, palette[i].b, 65535}));
}

void TestGifImage::writesNothingElse()
{
    QImage rgb(2, 2, QImage::Format_RGB32);
    rgb.fill(qRgb(1, 2, 3));
    QVERIFY(GifImage::toBytes(DocumentImage::fromPicture(rgb)).isEmpty());
    QVERIFY(GifImage::toBytes(DocumentImage::fromIndexes32(2, 1, {0, 1})).isEmpty());
    QVERIFY(GifImage::toBytes(DocumentImage::fromContinuous(2, 1, {0.0f, 1.0f})).isEmpty());
    QVERIFY(GifImage::toBytes(DocumentImage()).isEmpty());
    // GIF sizes are 16-bit.
    QVERIFY(
        GifImage::toBytes(DocumentImage::fromIndexes8(65536, 1, std::vector<uint8_t>(65536, 0))).isEmpty());
    QVERIFY(
        !GifImage::toBytes(DocumentImage::fromIndexes8(65535, 1, std::vector<uint8_t>(65535, 0))).isEmpty());
}

QTEST_GUILESS_MAIN(TestGifImage)
#include "tst_gifimage.moc"
