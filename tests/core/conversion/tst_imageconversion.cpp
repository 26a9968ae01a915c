#include "quantization/colorindex.h"
#include "palette/describedexception.h"
#include "dithering/dithering_errordiffusion.h"
#include "conversion/imageconverter.h"
#include "conversion/imageconvertsettings.h"
#include "conversion/imagequantisizer.h"
#include "conversion/imagequantisizesettings.h"
#include "storage/palettedatabase.h"
#include "operations/palettegenerators.h"
#include "refusal.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {

DocumentImage rgbImage(const QList<QRgb> &pixels, int width)
{
    QImage picture(width, pixels.size() / width, QImage::Format_ARGB32);
    for (int i = 0; i < pixels.size(); ++i)
        picture.setPixel(i % width, i / width, pixels[i]);
    return DocumentImage::fromPicture(picture);
}

// A picture with many colours, for comparing dithering methods.
DocumentImage gradientImage()
{
    QImage picture(23, 17, QImage::Format_RGB32);
    for (int y = 0; y < 17; ++y)
        for (int x = 0; x < 23; ++x)
            picture.setPixel(x, y, qRgb(x * 11, y * 15, (x * y * 3) % 256));
    return DocumentImage::fromPicture(picture);
}

Palette<uint> sized(int n)
{
    Palette<uint> p;
    for (int i = 0; i < n; ++i)
        p.append({uint(i % 256) << 8, uint(i / 256) << 8, 0, 65535});
    return p;
}

std::vector<uint8_t> indexes8(const DocumentImage &image)
{
    std::vector<uint8_t> out;
    for (int y = 0; y < image.height(); ++y)
        out.insert(out.end(), image.indexRow(y), image.indexRow(y) + image.width());
    return out;
}

} // namespace

class TestImageConversion : public QObject
{
    Q_OBJECT
private slots:
    void builtinPalettes();
    void converterPaths_data();
    void converterPaths();
    void converterReadsColourTable();
    void converterSignals();
    void nearestGrayscaleIsTheConverter_data();
    void nearestGrayscaleIsTheConverter();
    void sourceListMapping_data();
    void sourceListMapping();
    void ditherListPassesThrough_data();
    void ditherListPassesThrough();
    void missingDatabaseNames();
    void unreadablePaletteFiles();
    void quantizedSource();
    void fromImageAndBlackAndWhite();
    void colourListOnlyForTheImageSource_data();
    void colourListOnlyForTheImageSource();
    void largePaletteStays32Bit();
    void cancelStopsTheRun();
    void settingsRoundTrip();
    void badSettings_data();
    void badSettings();
};

void TestImageConversion::builtinPalettes()
{
    const Palette<uint> gray = ImageConversionEngine::grayscale();
    QCOMPARE(gray.size(), 256);
    for (int i = 0; i < 256; ++i)
        QCOMPARE(gray[i], RGBAColor<uint>(uint(i) << 8, uint(i) << 8, uint(i) << 8, 65535));

    // Built from its definition: (i, i, i), (i + 1, i, i), (i + 1, i + 1, i), then white.
    Palette<uint> defined;
    for (uint i = 0; i < 255; ++i) {
        defined.append({i << 8, i << 8, i << 8, 65280});
        defined.append({(i + 1) << 8, i << 8, i << 8, 65280});
        defined.append({(i + 1) << 8, (i + 1) << 8, i << 8, 65280});
    }
    defined.append({255u << 8, 255u << 8, 255u << 8, 65280});
    const Palette<uint> extended = ImageConversionEngine::extendedGrayscale();
    QCOMPARE(extended.size(), 766);
    QVERIFY(extended.entries() == defined.entries());
    for (int k = 0; k < 766; ++k)
        QCOMPARE(int((extended[k].r + extended[k].g + extended[k].b) >> 8), k);
    // The generator of the same name must keep agreeing with the converter's palette.
    QVERIFY(PaletteGenerators::extendedGrayscale().entries() == defined.entries());

    const Palette<uint> bw = ImageConversionEngine::blackAndWhite();
    QCOMPARE(bw.size(), 2);
    QCOMPARE(bw[0], RGBAColor<uint>(0, 0, 0, 65535));
    QCOMPARE(bw[1], RGBAColor<uint>(65280, 65280, 65280, 65535));
}

void TestImageConversion::converterPaths_data()
{
    QTest::addColumn<int>("source"); // 0 grayscale, 1 extended, or a palette size given
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QList<double>>("cells"); // of the pixels (10, 20, 31), white, (1, 2, 3)
    QTest::newRow("continuous: sum times 85.666664")
        << 0 << 4 << 4 << QList<double>{61 * 85.666664f, 765 * 85.666664f, 6 * 85.666664f};
    QTest::newRow("indexed, 256 entries: the average") << 0 << 2 << 2 << QList<double>{20, 255, 2};
    QTest::newRow("indexed, 2 entries: the average all the same")
        << -2 << 2 << 2 << QList<double>{20, 255, 2};
    QTest::newRow("indexed, extended: the sum") << 1 << 2 << 3 << QList<double>{61, 765, 6};
    QTest::newRow("indexed, 300 entries: the sum past the end")
        << -300 << 2 << 3 << QList<double>{61, 765, 6};
}

void TestImageConversion::converterPaths()
{
    QFETCH(int, source);
    QFETCH(int, format);
    QFETCH(int, mode);
    QFETCH(QList<double>, cells);
    ImageConverter converter;
    if (source == 0)
        converter.setGrayscale();
    else if (source == 1)
        converter.setExtendedGrayscale();
    else
        converter.setGivenPalette(sized(-source));
    QCOMPARE(converter.paletteSource(), source < 0 ? 2 : source);
    converter.setFormat(format, true);
    const DocumentImage result =
        converter.convert(rgbImage({qRgb(10, 20, 31), qRgb(255, 255, 255), qRgb(1, 2, 3)}, 3));
    QCOMPARE(result.mode(), mode);
    QCOMPARE(result.width(), 3);
    QCOMPARE(result.imagePalette(), converter.destinationPalette());
    QList<double> actual;
    for (int x = 0; x < 3; ++x)
        actual << (mode == 2   ? double(result.indexRow(0)[x])
                   : mode == 3 ? double(result.indexCells()[size_t(x)])
                               : double(result.continuousCells()[size_t(x)]));
    QCOMPARE(actual, cells);
    QCOMPARE(result.interpolate(), mode == 4);
}

void TestImageConversion::converterReadsColourTable()
{
    QImage indexed(2, 1, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(30, 60, 90), qRgb(255, 0, 3)});
    indexed.scanLine(0)[0] = 1;
    indexed.scanLine(0)[1] = 0;
    const DocumentImage image = DocumentImage::fromPicture(indexed);
    ImageConverter converter;
    converter.setExtendedGrayscale();
    DocumentImage result = converter.convert(image);
    QCOMPARE(result.indexCells(), (std::vector<uint32_t>{258, 180}));
    // Shown through another palette, that palette's colours are read.
    Palette<uint> shown;
    shown.append({0x0100, 0x0200, 0x03FF, 65535});
    shown.append({0x0A00, 0x0000, 0x0000, 0});
    result = converter.convert(image, shown);
    QCOMPARE(result.indexCells(), (std::vector<uint32_t>{10, 6}));
}

void TestImageConversion::converterSignals()
{
    ImageConverter converter;
    converter.setExtendedGrayscale();
    QSignalSpy palettes(&converter, &ImageConversionEngine::paletteChanged);
    QSignalSpy progress(&converter, &ImageConversionEngine::progressChanged);
    converter.convert(gradientImage());
    QCOMPARE(palettes.size(), 1);
    QCOMPARE(palettes[0][0].value<Palette<uint>>().size(), 766);
    QVERIFY(!progress.isEmpty());
    QCOMPARE(progress.last()[1].toInt(), 100);
}

void TestImageConversion::nearestGrayscaleIsTheConverter_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("paletteSize");
    QTest::newRow("grayscale indexed") << 0 << 2 << 256;
    QTest::newRow("grayscale continuous, extended palette") << 0 << 4 << 766;
    QTest::newRow("extended indexed") << 1 << 2 << 766;
    QTest::newRow("extended continuous") << 1 << 4 << 766;
}

void TestImageConversion::nearestGrayscaleIsTheConverter()
{
    QFETCH(int, source);
    QFETCH(int, format);
    QFETCH(int, paletteSize);
    const DocumentImage image = gradientImage();
    ImageConverter converter;
    ImageQuantisizer quantisizer;
    if (source == 0) {
        converter.setGrayscale();
        quantisizer.setGrayscale();
    } else {
        converter.setExtendedGrayscale();
        quantisizer.setExtendedGrayscale();
    }
    converter.setFormat(format, false);
    quantisizer.setFormat(format, false);
    quantisizer.setDitherMethod(0);
    QSignalSpy palettes(&quantisizer, &ImageConversionEngine::paletteChanged);
    const DocumentImage expected = converter.convert(image);
    const DocumentImage actual = quantisizer.apply(image, {});
    QCOMPARE(actual.mode(), expected.mode());
    QCOMPARE(quantisizer.destinationPalette().size(), paletteSize);
    QCOMPARE(palettes.size(), 1);
    QCOMPARE(palettes[0][0].value<Palette<uint>>(), quantisizer.destinationPalette());
    if (actual.mode() == 2)
        QCOMPARE(indexes8(actual), indexes8(expected));
    else if (actual.mode() == 3)
        QCOMPARE(actual.indexCells(), expected.indexCells());
    else
        QCOMPARE(actual.continuousCells(), expected.continuousCells());
}

void TestImageConversion::sourceListMapping_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("paletteSize");
    QTest::newRow("0") << 0 << "Grayscale" << 0 << 256;
    QTest::newRow("1") << 1 << "Extended grayscale" << 1 << 766;
    QTest::newRow("2") << 2 << "Current palette" << 3 << 5;
    QTest::newRow("3") << 3 << "Quantized" << 2 << 256;
    QTest::newRow("4") << 4 << "From DB" << 3 << 2;
    QTest::newRow("5") << 5 << "From file" << 3 << 3;
    QTest::newRow("6") << 6 << "From image" << 4 << 256;
    QTest::newRow("7") << 7 << "B/W" << 5 << 2;
}

void TestImageConversion::sourceListMapping()
{
    QFETCH(int, position);
    QFETCH(QString, text);
    QFETCH(int, source);
    QFETCH(int, paletteSize);
    QCOMPARE(ImageQuantisizeSettings::paletteTexts(false).at(position), text);
    QCOMPARE(ImageQuantisizeSettings::paletteTexts(true).at(2), QString("Last palette"));
    QTemporaryDir dir;
    const QString gpl = dir.filePath("three.gpl");
    QFile f(gpl);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write("GIMP Palette\nName: Three\n#\n1 2 3\n4 5 6\n7 8 9\n");
    f.close();
    PaletteDatabase db;
    db.loadFromText("test/duo;ff000000ff00;\n");
    ImageQuantisizeSettings s;
    s.palette = position;
    s.dbPalette = "test/duo";
    s.filePalette = gpl;
    ImageQuantisizer engine(&db);
    s.configure(engine, sized(5));
    QCOMPARE(engine.paletteSource(), source);
    QCOMPARE(engine.destinationPalette().size(), paletteSize);
    QVERIFY(engine.missingPalettes().isEmpty());

    // The convert dialog's list: the same palettes at its own positions.
    const int convertPosition = QList<int>{0, 1, 2, -1, 3, 4, -1, -1}.at(position);
    if (convertPosition < 0)
        return;
    QCOMPARE(ImageConvertSettings::paletteTexts(false).at(convertPosition), text);
    ImageConvertSettings cs;
    cs.palette = convertPosition;
    cs.dbPalette = s.dbPalette;
    cs.filePalette = gpl;
    ImageConverter converter(&db);
    cs.configure(converter, sized(5));
    QCOMPARE(converter.paletteSource(), source == 3 ? 2 : source);
    QCOMPARE(converter.destinationPalette().size(), paletteSize);
}

void TestImageConversion::ditherListPassesThrough_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("kernel");
    QTest::addColumn<QList<int>>("firstRow"); // of the kernel that runs
    QTest::newRow("Floyd-Steinberg runs Atkinson") << "Floyd-Steinberg" << 1 << QList<int>{0, 0, 1, 1};
    QTest::newRow("Burkes") << "Burkes" << 2 << QList<int>{0, 0, 0, 8, 4};
    QTest::newRow("Jarvis runs Floyd-Steinberg") << "Jarvis, Judice & Ninke" << 3 << QList<int>{0, 0, 7};
    QTest::newRow("Stucki runs Jarvis") << "Stucki" << 4 << QList<int>{0, 0, 0, 7, 5};
    QTest::newRow("Sierra runs two-row Sierra") << "Sierra" << 5 << QList<int>{0, 0, 0, 4, 3};
    QTest::newRow("Two Row Sierra runs Sierra") << "Two Row Sierra" << 6 << QList<int>{0, 0, 0, 5, 3};
    QTest::newRow("Sierra Lite") << "Sierra Lite" << 7 << QList<int>{0, 0, 2};
    QTest::newRow("Atkinson runs Stucki") << "Atkinson" << 8 << QList<int>{0, 0, 0, 8, 4};
}

void TestImageConversion::ditherListPassesThrough()
{
    QFETCH(QString, text);
    QFETCH(int, kernel);
    QFETCH(QList<int>, firstRow);
    QCOMPARE(ImageQuantisizeSettings::ditherTexts().indexOf(text), kernel);
    Dithering_ErrorDiffusion direct(nullptr, kernel);
    QList<int> row;
    for (int x = 0; x < direct.kernelWidth(); ++x)
        row << direct.weight(0, x);
    QCOMPARE(row, firstRow);

    // The engine with that list position gives that kernel's picture.
    const DocumentImage image = gradientImage();
    ImageQuantisizeSettings s;
    s.palette = 7; // black and white shows the kernels apart
    s.dither = kernel;
    ImageQuantisizer engine;
    s.configure(engine, {});
    const DocumentImage result = engine.apply(image, {});
    ColorIndex index(ImageConversionEngine::blackAndWhite());
    Dithering_ErrorDiffusion d(&index, kernel);
    const DitherResult expected = d.dither(image.picture(), ImageConversionEngine::blackAndWhite(), 2);
    QCOMPARE(indexes8(result), expected.indexes8);
}

void TestImageConversion::missingDatabaseNames()
{
    PaletteDatabase db;
    db.loadFromText("a/one;102030;\nb/two o'clock;405060708090;\n");
    ImageQuantisizer engine(&db);
    engine.setDatabasePalette("b/two o'clock");
    QCOMPARE(engine.destinationPalette().size(), 2);
    engine.setDatabasePalette("b/two");
    engine.setDatabasePalette("");
    QCOMPARE(engine.destinationPalette(), ImageConversionEngine::grayscale());
    engine.setDatabasePalette("A/one"); // names are exact
    QCOMPARE(engine.missingPalettes(), (QStringList{"b/two", "A/one"}));
    QCOMPARE(engine.destinationPalette(), ImageConversionEngine::grayscale());
    ImageConverter noDatabase;
    noDatabase.setDatabasePalette("a/one");
    QCOMPARE(noDatabase.missingPalettes(), QStringList{"a/one"});
    engine.clearMissingPalettes();
    QVERIFY(engine.missingPalettes().isEmpty());
}

void TestImageConversion::unreadablePaletteFiles()
{
    QTemporaryDir dir;
    const QString broken = dir.filePath("broken.gpl");
    QFile f(broken);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write("this is not a palette\n");
    f.close();
    ImageConverter engine;
    engine.setGivenPalette(sized(9));
    for (const QString &path :
         {dir.filePath("absent.gpl"), broken, dir.filePath("x.unknownformat"), dir.path()}) {
        engine.setFilePalette(path);
        QCOMPARE(engine.destinationPalette(), ImageConversionEngine::grayscale());
        QCOMPARE(engine.paletteSource(), 2);
    }
    engine.setFilePalette(QString());
    QCOMPARE(engine.missingPalettes(),
             (QStringList{dir.filePath("absent.gpl"), broken, dir.filePath("x.unknownformat"), dir.path()}));
    // The run goes on with grayscale.
    engine.setFilePalette(broken);
    QCOMPARE(engine.convert(gradientImage()).mode(), 2);
}

void TestImageConversion::quantizedSource()
{
    const QList<QRgb> four{qRgb(250, 0, 0), qRgb(0, 250, 0), qRgb(0, 0, 250), qRgb(9, 9, 9)};
    QList<QRgb> pixels;
    for (int i = 0; i < 24; ++i)
        pixels << four[i % 4];
    const DocumentImage image = rgbImage(pixels, 6);
    for (uint method : {0u, 1u, 2u, 3u}) {
        ImageQuantisizer engine;
        engine.setQuantized(method, 8);
        engine.setFormat(ImageConversionEngine::Indexed, false);
        engine.setDitherMethod(0);
        const DocumentImage result = engine.apply(image, ImageQuantisizer::imageColors(image));
        QCOMPARE(result.mode(), 2);
        const Palette<uint> &p = engine.destinationPalette();
        QCOMPARE(p.size(), 4);
        // Every pixel shows its own colour again.
        for (int i = 0; i < 24; ++i) {
            const RGBAColor<uint> &c = p[result.indexRow(i / 6)[i % 6]];
            QCOMPARE(qRgb(int(c.r >> 8), int(c.g >> 8), int(c.b >> 8)), four[i % 4]);
        }
    }
}

void TestImageConversion::fromImageAndBlackAndWhite()
{
    const DocumentImage image =
        rgbImage({qRgb(1, 2, 3), qRgb(200, 200, 150), qRgb(1, 2, 3), qRgb(90, 90, 90)}, 2);
    const Palette<uint> colours = ImageQuantisizer::imageColors(image);
    QCOMPARE(colours.size(), 3);
    ImageQuantisizer engine;
    engine.setFromImage();
    engine.setFormat(ImageConversionEngine::Continuous, true);
    const DocumentImage result = engine.apply(image, colours);
    QCOMPARE(engine.paletteSource(), 4);
    QCOMPARE(engine.destinationPalette(), colours);
    QCOMPARE(result.mode(), 4);
    QVERIFY(result.interpolate());
    for (float v : result.continuousCells())
        QVERIFY(v == 0.0f || v == 21845.0f || v == 43690.0f); // index * 65535 / 3

    engine.setBlackAndWhite(77);
    QCOMPARE(engine.paletteSource(), 5);
    engine.setFormat(ImageConversionEngine::Indexed, false);
    const DocumentImage bw = engine.apply(image, colours);
    QCOMPARE(engine.destinationPalette(), ImageConversionEngine::blackAndWhite());
    QCOMPARE(indexes8(bw), (std::vector<uint8_t>{0, 1, 0, 0}));
}

void TestImageConversion::colourListOnlyForTheImageSource_data()
{
    QTest::addColumn<int>("source"); // the dialog's list position
    QTest::addColumn<bool>("listed");
    QTest::newRow("grayscale") << 0 << false;
    QTest::newRow("quantized") << 3 << false;
    QTest::newRow("from image") << 6 << true;
    QTest::newRow("black and white") << 7 << false;
}

void TestImageConversion::colourListOnlyForTheImageSource()
{
    QFETCH(int, source);
    QFETCH(bool, listed);
    QList<QRgb> pixels;
    for (int i = 0; i < 60; ++i)
        pixels << qRgb((i * 53) % 256, (i * 29) % 200, (i * i) % 256);
    const DocumentImage image = rgbImage(pixels, 10);
    ImageQuantisizeSettings settings;
    settings.palette = source;
    settings.method = 2;
    settings.colors = 6;
    settings.dither = 3;
    ImageQuantisizer engine;
    settings.configure(engine, {});
    const Palette<uint> all = ImageQuantisizer::imageColors(image);
    QCOMPARE(engine.colorsFor(image), listed ? all : Palette<uint>());
    // The list warms the colour search and nothing more: the result is the same without it.
    const DocumentImage handed = engine.apply(image, engine.colorsFor(image));
    const Palette<uint> handedPalette = engine.destinationPalette();
    ImageQuantisizer warmed;
    settings.configure(warmed, {});
    QCOMPARE(indexes8(handed), indexes8(warmed.apply(image, all)));
    QCOMPARE(handedPalette, warmed.destinationPalette());
}

void TestImageConversion::largePaletteStays32Bit()
{
    ImageQuantisizer engine;
    engine.setGivenPalette(sized(300));
    QCOMPARE(engine.paletteSource(), 3);
    engine.setDitherMethod(3);
    const DocumentImage result = engine.apply(gradientImage(), {});
    QCOMPARE(result.mode(), 3);
    QCOMPARE(result.imagePalette().size(), 300);
}

void TestImageConversion::cancelStopsTheRun()
{
    ImageQuantisizer engine;
    engine.setQuantized(2, 16);
    engine.setDitherMethod(1);
    QImage big(64, 600, QImage::Format_RGB32);
    big.fill(qRgb(5, 6, 7));
    QObject::connect(&engine, &ImageConversionEngine::progressChanged, [&engine](int step, int) {
        if (step == 1)
            engine.cancel();
    });
    QSignalSpy palettes(&engine, &ImageConversionEngine::paletteChanged);
    QVERIFY(engine.apply(DocumentImage::fromPicture(big), {}).isNull());
    QVERIFY(engine.wasCancelled());
    QCOMPARE(palettes.size(), 1);
}

void TestImageConversion::settingsRoundTrip()
{
    ImageQuantisizeSettings q;
    q.format = 1;
    q.palette = 4;
    q.bwThreshold = 99;
    q.dbPalette = "author/palette";
    q.filePalette = "/tmp/a:b.gpl";
    q.dither = 12;
    const SettingsText::Pairs pairs = q.toPairs();
    QStringList keys;
    for (const auto &p : pairs)
        keys << p.first;
    QCOMPARE(keys,
             (QStringList{"format", "palette", "bw_threshold", "db_palette", "file_palette", "dither"}));
    const QString text =
        SettingsText::format(ImageQuantisizeSettings::settingsName, SettingsText::formatLines(pairs));
    QVERIFY(text.startsWith("image_quantisize 2.0.0\n"));
    ImageQuantisizeSettings back =
        ImageQuantisizeSettings::fromPairs(SettingsText::parse(text, "image_quantisize"));
    QCOMPARE(back.toPairs(), pairs);
    back =
        ImageQuantisizeSettings::fromPairs({{"method", "5"}, {"colors", "100000"}, {"bw_threshold", "300"}});
    QCOMPARE(back.method, 5);
    QCOMPARE(back.colors, 65536);
    QCOMPARE(back.bwThreshold, 255);

    ImageConvertSettings c;
    c.mode = 1;
    c.palette = 3;
    c.interpolate = true;
    c.dbPalette = "x/y";
    c.folder = "/out";
    c.extension = ".bmp";
    QStringList convertKeys;
    for (const auto &p : c.toPairs(true))
        convertKeys << p.first;
    QCOMPARE(convertKeys, (QStringList{"mode", "palette", "interpolate", "db_palette", "file_palette",
                                       "extension", "folder"}));
    QCOMPARE(c.toPairs().size(), size_t(5));
    const ImageConvertSettings cb = ImageConvertSettings::fromPairs(c.toPairs(true));
    QCOMPARE(cb.toPairs(true), c.toPairs(true));
    QCOMPARE(ImageConvertSettings::extensions().size(), 20);
}

void TestImageConversion::badSettings_data()
{
    QTest::addColumn<bool>("quantise");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    const auto row = [](const char *tag, bool quantise, const QString &key, const QString &value) {
        QTest::newRow(tag) << quantise << key << value;
    };
    row("quantise palette 8", true, "palette", "8");
    row("quantise dither 13", true, "dither", "13");
    row("quantise dither -1", true, "dither", "-1");
    row("quantise format 2", true, "format", "2");
    row("quantise method 7", true, "method", "7");
    row("quantise colors text", true, "colors", "many");
    row("convert palette 5", false, "palette", "5");
    row("convert mode x", false, "mode", "x");
    row("convert interpolate x", false, "interpolate", "yes");
}

void TestImageConversion::badSettings()
{
    QFETCH(bool, quantise);
    QFETCH(QString, key);
    QFETCH(QString, value);
    const QString got = refusal([&] {
        if (quantise)
            ImageQuantisizeSettings::fromPairs({{key, value}});
        else
            ImageConvertSettings::fromPairs({{key, value}});
    });
    QVERIFY2(got.startsWith("Invalid settings: ") && got.mid(18).contains(key), qPrintable(got));
}

QTEST_GUILESS_MAIN(TestImageConversion)
#include "tst_imageconversion.moc"
