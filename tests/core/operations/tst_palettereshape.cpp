// Sharpening, resizing and the pattern commands: exact results on small palettes, the
// invariants each promises, their settings and built-in presets.
#include "operations/paletteblur.h"
#include "operations/paletteoperations.h"
#include "operations/palettepatterns.h"
#include "operations/paletteresize.h"
#include "operations/palettesharpen.h"
#include "operations/palettesort.h"
#include "operationtesting.h"
#include "palette/describedexception.h"
#include "spaces/colorspace.h"
#include "storage/settingsstore.h"

#include <QFile>

namespace {

const Colour A{1, 2, 3, 4}, B{10, 20, 30, 40}, C{100, 200, 300, 400}, D{1000, 2000, 3000, 4000},
    E{5, 6, 7, 8}, F{50, 60, 70, 80};

SharpenSettings sharpenOf(int mode, int method, int radius, int amount,
                          std::array<bool, 4> components = {true, true, true, true})
{
    SharpenSettings s;
    s.mode = mode;
    s.method = method;
    s.radius = radius;
    s.amount = amount;
    s.components = components;
    return s;
}

ResizeSettings resizeOf(int size, int mode, int method)
{
    ResizeSettings s;
    s.size = size;
    s.mode = mode;
    s.method = method;
    return s;
}

QString messageOf(const std::function<void()> &f)
{
    try {
        f();
    } catch (const DescribedException &e) {
        return e.title() + QStringLiteral(": ") + e.message();
    }
    return QString();
}

SettingsText::Pairs pairsOf(const QString &lines)
{
    SettingsText::Pairs pairs;
    for (const QString &line : lines.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const int colon = line.indexOf(QLatin1Char(':'));
        pairs.emplace_back(line.left(colon), line.mid(colon + 1));
    }
    return pairs;
}

} // namespace

Q_DECLARE_METATYPE(std::set<int>)

class TestPaletteReshape : public QObject
{
    Q_OBJECT
private slots:
    void sharpenSpike();
    void sharpenLeavesConstantPalettes();
    void sharpenSelectedAndComponents();
    void resizeExact_data();
    void resizeExact();
    void resizeSameLengthIsIdentity();
    void resizeThereAndBack();
    void resizeEdges();
    void repetitionPattern_data();
    void repetitionPattern();
    void persianRaster_data();
    void persianRaster();
    void patternsUseOnlyPaletteColours();
    void appendMirrored();
    void settingsRoundTrip();
    void clampedAndBadSettings();
    void presets_data();
    void presets();
};

void TestPaletteReshape::sharpenSpike()
{
    // Red 0, 0, 30000, 0, 0 with the running mean of radius 1: the spike gains its difference
    // from the mean of 0, 30000, 0 (30000 + 20000); its neighbours dip below 0, which the back
    // conversion clips, and the ends have nothing to differ from.
    Palette<uint> in;
    for (const uint r : {0u, 0u, 30000u, 0u, 0u})
        in.append({r, 1000, 1000, 5});
    const Palette<uint> mean =
        PaletteSharpen::sharpen(in, {}, sharpenOf(0, BlurSettings::RunningMean, 1, 100));
    QCOMPARE(mean.entries(), Entries({{0, 1000, 1000, 5},
                                      {0, 1000, 1000, 5},
                                      {50000, 1000, 1000, 5},
                                      {0, 1000, 1000, 5},
                                      {0, 1000, 1000, 5}}));
    // The Gauss kernel of radius 2 weighs the spike itself most, so less of it is averaged away.
    const Palette<uint> gauss = PaletteSharpen::sharpen(in, {}, sharpenOf(0, BlurSettings::Gauss, 2, 100));
    QCOMPARE(gauss[2], Colour(52458, 1000, 1000, 5));
    // Nothing is added at amount 0.
    QCOMPARE(PaletteSharpen::sharpen(in, {}, sharpenOf(0, 0, 3, 0)), in);
    // The registry runs the same.
    QCOMPARE(PaletteOperations::apply("sharpen", in, {}, sharpenOf(0, 0, 1, 100).toPairs()), mean);
}

void TestPaletteReshape::sharpenLeavesConstantPalettes()
{
    for (const quint32 seed : testSeeds()) {
        QRandomGenerator rng(seed);
        const Palette<uint> one = randomPalette(rng, 1);
        const Palette<uint> in = paletteOf(Entries(size_t(randomIn(rng, 1, 40)), one[0]));
        for (int mode = 0; mode < ColorSpaceCount; ++mode)
            for (const int method : {0, 1}) {
                const SharpenSettings s = sharpenOf(mode, method, randomIn(rng, 1, 9), randomIn(rng, 1, 500));
                QVERIFY2(PaletteSharpen::sharpen(in, {}, s) == in,
                         qPrintable(QStringLiteral("seed %1 mode %2").arg(seed).arg(mode)));
            }
    }
}

void TestPaletteReshape::sharpenSelectedAndComponents()
{
    QRandomGenerator rng(3);
    const Palette<uint> in = randomPalette(rng, 30);
    // Only the selected entries change, and they read their unsharpened neighbours.
    SharpenSettings s = sharpenOf(0, 1, 2, 120);
    s.selectedOnly = true;
    const Palette<uint> some = PaletteSharpen::sharpen(in, {10, 11, 12}, s);
    const Palette<uint> all = PaletteSharpen::sharpen(in, {}, sharpenOf(0, 1, 2, 120));
    for (int i = 0; i < in.size(); ++i)
        QCOMPARE(some[i], (i >= 10 && i <= 12) ? all[i] : in[i]);
    // Red alone: green and blue stay as they were, and so does every alpha word.
    const Palette<uint> red =
        PaletteSharpen::sharpen(in, {}, sharpenOf(0, 0, 1, 100, {true, false, false, false}));
    bool redChanged = false;
    for (int i = 0; i < in.size(); ++i) {
        QCOMPARE(red[i].g, in[i].g);
        QCOMPARE(red[i].b, in[i].b);
        QCOMPARE(red[i].a, in[i].a);
        redChanged = redChanged || red[i].r != in[i].r;
    }
    QVERIFY(redChanged);
    // No component chosen: nothing changes.
    QCOMPARE(PaletteSharpen::sharpen(in, {}, sharpenOf(3, 0, 4, 300, {false, false, false, false})), in);
}

void TestPaletteReshape::resizeExact_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("method");
    QTest::addColumn<Entries>("expected");
    const Colour black(0, 0, 0, 0), orange(65535, 30000, 0, 65535);
    QTest::newRow("linear") << 5 << int(ResizeSettings::Linear)
                            << Entries{black,
                                       {16383, 7500, 0, 16383},
                                       {32767, 15000, 0, 32767},
                                       {49151, 22500, 0, 49151},
                                       orange};
    // The quarter steps eased: 0.5 - 0.5 cos(pi / 4) is 0.1464...
    QTest::newRow("sigmoid")
        << 5 << int(ResizeSettings::Sigmoid)
        << Entries{black, {9597, 4393, 0, 9597}, {32767, 14999, 0, 32767}, {55937, 25606, 0, 55937}, orange};
    // Halves go up.
    QTest::newRow("nearest") << 5 << int(ResizeSettings::Nearest)
                             << Entries{black, black, orange, orange, orange};
    QTest::newRow("nearest 3") << 3 << int(ResizeSettings::Nearest) << Entries{black, orange, orange};
    QTest::newRow("already two") << 2 << int(ResizeSettings::Linear) << Entries{black, orange};
}

void TestPaletteReshape::resizeExact()
{
    QFETCH(int, size);
    QFETCH(int, method);
    QFETCH(Entries, expected);
    const Palette<uint> in = paletteOf({{0, 0, 0, 0}, {65535, 30000, 0, 65535}});
    const Palette<uint> out = PaletteResize::resize(in, resizeOf(size, 0, method));
    QCOMPARE(out.entries(), expected);
    QCOMPARE(
        PaletteOperations::apply(ResizeSettings::settingsName, in, {}, resizeOf(size, 0, method).toPairs()),
        out);
}

void TestPaletteReshape::resizeSameLengthIsIdentity()
{
    for (const quint32 seed : testSeeds()) {
        QRandomGenerator rng(seed);
        const Palette<uint> in = randomPalette(rng, randomIn(rng, 2, 300));
        for (int mode = 0; mode < ColorSpaceCount; ++mode)
            for (int method = 0; method < ResizeSettings::MethodCount; ++method)
                QVERIFY(PaletteResize::resize(in, resizeOf(in.size(), mode, method)) == in);
    }
}

void TestPaletteReshape::resizeThereAndBack()
{
    // 16 entries become 256 (every 17th of them one of the 16), and back to the same 16.
    QRandomGenerator rng(16);
    const Palette<uint> in = randomPalette(rng, 16);
    for (const int mode : {int(SpaceRGB), int(SpaceLab), int(SpaceHSV), ColorSpaceCount - 1})
        for (int method = 0; method < ResizeSettings::MethodCount; ++method) {
            const Palette<uint> big = PaletteResize::resize(in, resizeOf(256, mode, method));
            QCOMPARE(big.size(), 256);
            for (int i = 0; i < 16; ++i)
                QCOMPARE(big[17 * i], in[i]);
            QCOMPARE(PaletteResize::resize(big, resizeOf(16, mode, method)), in);
        }
    // A linear ramp in RGB stays a ramp: each red lies between its neighbours.
    const Palette<uint> ramp = PaletteResize::resize(paletteOf({{0, 0, 0, 65535}, {65535, 0, 0, 65535}}),
                                                     resizeOf(1000, 0, ResizeSettings::Linear));
    for (int i = 1; i < ramp.size(); ++i)
        QVERIFY(ramp[i].r >= ramp[i - 1].r);
}

void TestPaletteReshape::resizeEdges()
{
    // One entry becomes copies of it; the new size is clamped to 2..65536.
    const Palette<uint> one = paletteOf({C});
    QCOMPARE(PaletteResize::resize(one, resizeOf(4, 3, 1)).entries(), Entries(4, C));
    QCOMPARE(ResizeSettings::fromPairs(pairsOf("size:1")).size, 2);
    QCOMPARE(ResizeSettings::fromPairs(pairsOf("size:999999")).size, 65536);
    QCOMPARE(messageOf([] { PaletteResize::resize(Palette<uint>(), ResizeSettings()); }),
             QStringLiteral("Empty palette: An empty palette cannot be resized."));
    // Shrinking with "nearest" picks entries; 5 to 3 keeps the ends and the middle.
    QCOMPARE(PaletteResize::resize(paletteOf({A, B, C, D, E}), resizeOf(3, 0, 0)).entries(),
             Entries({A, C, E}));
}

void TestPaletteReshape::repetitionPattern_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<std::set<int>>("selection");
    QTest::addColumn<Entries>("expected");
    const std::set<int> bce{1, 2, 4}; // B, C and E are the motif
    QTest::newRow("repeat") << "" << bce << Entries{B, C, E, B, C, E};
    QTest::newRow("mirror") << "mirror:1" << bce << Entries{B, C, E, C, B, C};
    QTest::newRow("count 2") << "count:2" << bce << Entries{B, B, C, C, E, E};
    QTest::newRow("stride 2") << "stride:2" << bce << Entries{B, E, C, B, E, C};
    QTest::newRow("offset 1") << "offset:1" << bce << Entries{C, E, B, C, E, B};
    QTest::newRow("longer, mirrored") << "mirror:1\nsize:8" << bce << Entries{B, C, E, C, B, C, E, C};
    QTest::newRow("shorter, count 3") << "count:3\nsize:4" << bce << Entries{B, B, B, C};
    // The whole palette with a stride of 5 walks it backwards.
    QTest::newRow("palette, stride 5") << "stride:5" << std::set<int>() << Entries{A, F, E, D, C, B};
    QTest::newRow("box off") << "sel_only:0\nsize:3\noffset:4" << bce << Entries{E, F, A};
    // Two entries have nothing to turn round.
    QTest::newRow("two, mirrored") << "mirror:1" << std::set<int>{0, 5} << Entries{A, F, A, F, A, F};
}

void TestPaletteReshape::repetitionPattern()
{
    QFETCH(QString, lines);
    QFETCH(std::set<int>, selection);
    QFETCH(Entries, expected);
    Palette<uint> in = paletteOf({A, B, C, D, E, F});
    in.setProperty(PaletteComment, QStringLiteral("kept"));
    const Palette<uint> out =
        PaletteOperations::apply(RepetitionPatternSettings::settingsName, in, selection, pairsOf(lines));
    QCOMPARE(out.entries(), expected);
    QCOMPARE(out.property(PaletteComment), QStringLiteral("kept"));
    QCOMPARE(out, PalettePatterns::repetitionPattern(in, selection,
                                                     RepetitionPatternSettings::fromPairs(pairsOf(lines))));
}

void TestPaletteReshape::persianRaster_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<Entries>("expected");
    // Over A B C D: the first run shows colour i / period1, the second i / period2 (+ offset).
    QTest::newRow("plain weave") << "period1:2\nperiod2:1\nsize:8" << Entries{A, B, B, D, C, B, D, D};
    QTest::newRow("reversed, ahead") << "period1:2\nperiod2:2\noffset:1\nreverse:1\nsize:8"
                                     << Entries{A, C, B, B, C, A, D, D};
    // Threads of two, two over and one under: entries 0-3 and 6-7 show the first run.
    QTest::newRow("twill") << "period1:1\nperiod2:1\noffset:2\nthread:2\nover:2\nunder:1\nsize:8"
                           << Entries{A, B, C, D, C, D, C, D};
    QTest::newRow("palette length") << "period1:1\nperiod2:3" << Entries{A, A, C, B};
}

void TestPaletteReshape::persianRaster()
{
    QFETCH(QString, lines);
    QFETCH(Entries, expected);
    const Palette<uint> in = paletteOf({A, B, C, D});
    const Palette<uint> out =
        PaletteOperations::apply(PersianRasterSettings::settingsName, in, {}, pairsOf(lines));
    QCOMPARE(out.entries(), expected);
    // With a selection the motif is the selected entries.
    const Palette<uint> picked = PaletteOperations::apply(PersianRasterSettings::settingsName, in, {1, 3},
                                                          pairsOf(lines + "\nsize:4"));
    for (const Colour &c : picked.entries())
        QVERIFY(c == B || c == D);
}

void TestPaletteReshape::patternsUseOnlyPaletteColours()
{
    for (const quint32 seed : testSeeds()) {
        QRandomGenerator rng(seed);
        const Palette<uint> in = randomPalette(rng, randomIn(rng, 1, 40));
        const std::set<int> selection = randomSelection(rng, in.size());
        RepetitionPatternSettings p;
        p.count = randomIn(rng, 1, 5);
        p.stride = randomIn(rng, 1, 7);
        p.offset = randomIn(rng, 0, 100);
        p.mirror = rng.bounded(2);
        p.size = randomIn(rng, 0, 300);
        PersianRasterSettings r;
        r.period1 = randomIn(rng, 1, 9);
        r.period2 = randomIn(rng, 1, 9);
        r.offset = randomIn(rng, 0, 50);
        r.reverse = rng.bounded(2);
        r.thread = randomIn(rng, 1, 4);
        r.over = randomIn(rng, 1, 3);
        r.under = randomIn(rng, 1, 3);
        r.size = p.size;
        const int length = p.size > 0 ? p.size : in.size();
        for (const Palette<uint> &out : {PalettePatterns::repetitionPattern(in, selection, p),
                                         PalettePatterns::persianRaster(in, selection, r)}) {
            QCOMPARE(out.size(), length);
            for (const Colour &c : out.entries())
                QVERIFY(std::find(in.entries().begin(), in.entries().end(), c) != in.entries().end());
        }
    }
    QCOMPARE(messageOf([] {
                 PalettePatterns::repetitionPattern(Palette<uint>(), {}, RepetitionPatternSettings());
             }),
             QStringLiteral("Empty palette: An empty palette has no colours to make a pattern of."));
}

void TestPaletteReshape::appendMirrored()
{
    Palette<uint> in = paletteOf({A, B, C});
    in.setProperty(PaletteName, QStringLiteral("abc"));
    const Palette<uint> out = PaletteOperations::apply("palette_append_mirrored", in, {2});
    QCOMPARE(out.entries(), Entries({A, B, C, C, B, A}));
    QCOMPARE(out.property(PaletteName), QStringLiteral("abc"));
    // Symmetric: inverting its order gives it back.
    QCOMPARE(PaletteOperations::apply("palette_invert_order", out, {}), out);
    QCOMPARE(PalettePatterns::appendMirrored(paletteOf({D})).entries(), Entries({D, D}));
    QVERIFY(PalettePatterns::appendMirrored(Palette<uint>()).isEmpty());
    QCOMPARE(PalettePatterns::appendMirrored(paletteOf(Entries(32768, A))).size(), 65536);
    QCOMPARE(
        messageOf([] { PalettePatterns::appendMirrored(paletteOf(Entries(32769, A))); }),
        QStringLiteral("Palette too large: The mirrored palette would have 65538 entries; a palette holds at "
                       "most 65536."));
    QVERIFY(!PaletteOperations::isGenerator("palette_append_mirrored"));
}

void TestPaletteReshape::settingsRoundTrip()
{
    const auto roundTrip = [](const QString &name, const SettingsText::Pairs &pairs) {
        return SettingsText::parse(SettingsText::format(name, SettingsText::formatLines(pairs)), name);
    };
    for (const quint32 seed : testSeeds()) {
        QRandomGenerator rng(seed);
        SharpenSettings sh;
        sh.mode = randomIn(rng, 0, ColorSpaceCount - 1);
        sh.method = randomIn(rng, 0, 1);
        sh.radius = randomIn(rng, 1, SharpenSettings::maximumRadius);
        sh.amount = randomIn(rng, 0, SharpenSettings::maximumAmount);
        for (bool &c : sh.components)
            c = rng.bounded(2);
        sh.selectedOnly = rng.bounded(2);
        QCOMPARE(SharpenSettings::fromPairs(roundTrip(sh.settingsName, sh.toPairs())), sh);

        const ResizeSettings rs = resizeOf(randomIn(rng, 2, 65536), randomIn(rng, 0, ColorSpaceCount - 1),
                                           randomIn(rng, 0, ResizeSettings::MethodCount - 1));
        QCOMPARE(ResizeSettings::fromPairs(roundTrip(rs.settingsName, rs.toPairs())), rs);

        RepetitionPatternSettings p;
        p.count = randomIn(rng, 1, 1024);
        p.stride = randomIn(rng, 1, 1024);
        p.offset = randomIn(rng, 0, 65535);
        p.mirror = rng.bounded(2);
        p.size = randomIn(rng, 0, 65536);
        p.selectedOnly = rng.bounded(2);
        QCOMPARE(RepetitionPatternSettings::fromPairs(roundTrip(p.settingsName, p.toPairs())), p);

        PersianRasterSettings r;
        r.period1 = randomIn(rng, 1, 1024);
        r.period2 = randomIn(rng, 1, 1024);
        r.offset = randomIn(rng, 0, 65535);
        r.reverse = rng.bounded(2);
        r.thread = randomIn(rng, 1, 1024);
        r.over = randomIn(rng, 1, 64);
        r.under = randomIn(rng, 1, 64);
        r.size = randomIn(rng, 0, 65536);
        r.selectedOnly = rng.bounded(2);
        QCOMPARE(PersianRasterSettings::fromPairs(roundTrip(r.settingsName, r.toPairs())), r);
    }
}

void TestPaletteReshape::clampedAndBadSettings()
{
    QCOMPARE(SharpenSettings::fromPairs(pairsOf("radius:0\namount:900")).radius, 1);
    QCOMPARE(SharpenSettings::fromPairs(pairsOf("radius:0\namount:900")).amount, 500);
    QCOMPARE(RepetitionPatternSettings::fromPairs(pairsOf("count:0\nstride:5000")).count, 1);
    QCOMPARE(RepetitionPatternSettings::fromPairs(pairsOf("count:0\nstride:5000")).stride, 1024);
    QCOMPARE(PersianRasterSettings::fromPairs(pairsOf("over:0\nunder:99")).under, 64);
    const Palette<uint> in = paletteOf({A, B});
    const QString invalid = QStringLiteral("Invalid settings: ");
    QCOMPARE(messageOf([&] { PaletteOperations::apply("resize_palette", in, {}, pairsOf("method:3")); }),
             invalid + "The value \"3\" of \"method\" is not a list position 0..2.");
    QCOMPARE(messageOf([&] { PaletteOperations::apply("sharpen", in, {}, pairsOf("method:2")); }),
             invalid + "The value \"2\" of \"method\" is not a list position 0..1.");
    QCOMPARE(messageOf([&] { PaletteOperations::apply("sharpen", in, {}, pairsOf("amount:much")); }),
             invalid + "The value \"much\" of \"amount\" is not an integer.");
    QCOMPARE(messageOf([&] { PaletteOperations::apply("pattern_generation", in, {}, pairsOf("mirror:x")); }),
             invalid + "The value \"x\" of \"mirror\" is not 0 or 1.");
    QCOMPARE(messageOf([&] { PaletteOperations::apply("persian_raster", in, {}, pairsOf("size:-")); }),
             invalid + "The value \"-\" of \"size\" is not an integer.");
}

void TestPaletteReshape::presets_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("count");
    QTest::newRow("sort") << SortSettings::settingsName << 4;
    QTest::newRow("sharpen") << SharpenSettings::settingsName << 3;
    QTest::newRow("resize") << ResizeSettings::settingsName << 4;
    QTest::newRow("pattern") << RepetitionPatternSettings::settingsName << 4;
    QTest::newRow("persian raster") << PersianRasterSettings::settingsName << 4;
}

void TestPaletteReshape::presets()
{
    QFETCH(QString, name);
    QFETCH(int, count);
    QCOMPARE(SettingsStore::presetCount(name), count);
    QRandomGenerator rng(21);
    const Palette<uint> in = randomPalette(rng, 20);
    QStringList seen;
    for (int i = 1; i <= count; ++i) {
        QFile file(SettingsText::presetPath(name, i));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll());
        QVERIFY(text.startsWith(name + " 2.0.0\n"));
        QVERIFY(text.endsWith('\n') && !text.contains('\r'));
        const SettingsText::Pairs pairs = SettingsText::parse(text, name);
        // Every preset does something, and each something else.
        const Palette<uint> out = PaletteOperations::apply(name, in, {2, 3, 5, 7, 11}, pairs);
        QVERIFY2(out != in, qPrintable(SettingsText::presetPath(name, i)));
        const QString entries = SettingsText::formatLines(pairs);
        QVERIFY(!seen.contains(entries));
        seen << entries;
    }
}

QTEST_GUILESS_MAIN(TestPaletteReshape)
#include "tst_palettereshape.moc"
