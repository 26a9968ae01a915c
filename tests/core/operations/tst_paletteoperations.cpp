#include "operations/colorinterpolation.h"
#include "spaces/colorspace.h"
#include "operations/cosinepalette.h"
#include "palette/describedexception.h"
#include "operationtesting.h"
#include "refusal.h"
#include "operations/paletteblur.h"
#include "operations/paletteoperations.h"
#include "operations/palettetint.h"
#include "operations/selectionpattern.h"
#include "operations/tonemanipulation.h"

#include <QFile>

#include <functional>

namespace {

const QString invalidSettings = QStringLiteral("Invalid settings");

// The pairs of a complete settings text, as a dialog, a file or the database hands them over.
SettingsText::Pairs parsed(const QString &name, const SettingsText::Pairs &pairs)
{
    return SettingsText::parse(SettingsText::format(name, SettingsText::formatLines(pairs)), name);
}

SettingsText::Pairs pairsOf(const QString &lines)
{
    SettingsText::Pairs pairs;
    for (const QString &line : lines.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const int colon = line.indexOf(QLatin1Char(':'));
        pairs.emplace_back(colon < 0 ? line : line.left(colon), colon < 0 ? QString() : line.mid(colon + 1));
    }
    return pairs;
}

QString presetText(const QString &name, int number)
{
    QFile file(SettingsText::presetPath(name, number));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll());
}

SettingsText::Pairs presetPairs(const QString &name, int number)
{
    return SettingsText::parse(presetText(name, number), name);
}

QColor randomColour(QRandomGenerator &rng)
{
    return QColor::fromRgb(rng.generate() & 0xFFFFFFu);
}

} // namespace

class TestPaletteOperations : public QObject
{
    Q_OBJECT
private slots:
    void registry();
    void unknownOperation();
    void registryMatchesTypedFunctions_data();
    void registryMatchesTypedFunctions();
    void badSettings_data();
    void badSettings();
    void perceptualSpaces_data();
    void perceptualSpaces();
    void clampedSettings();
    void settingsRoundTrip();
    void blurMasterFollowsOrder();
    void interpolationSettings();
    void gradientRangeKeys();
    void presetFiles_data();
    void presetFiles();
    void presetValues();
    void interpolationPresets();
};

void TestPaletteOperations::registry()
{
    const QStringList names = PaletteOperations::names();
    for (const char *name : {"brightness_contrast", "hue_saturation_value", "component_manipulation", "blur",
                             "tint", "gradienttint", "interpolation", "cosini", "shift_order"})
        QVERIFY2(names.contains(QLatin1String(name)), name);
    QVERIFY(PaletteOperations::isGenerator("interpolation"));
    QVERIFY(PaletteOperations::isGenerator("cosini"));
    QVERIFY(!PaletteOperations::isGenerator("tint"));
    QVERIFY(!PaletteOperations::isGenerator("blur"));
    // The selection pattern selects; it changes no palette.
    QVERIFY(!PaletteOperations::exists("selectionpattern"));
}

void TestPaletteOperations::unknownOperation()
{
    QCOMPARE(refusal([] { PaletteOperations::apply("tinted", paletteOf({{1, 2, 3, 4}}), {}); }),
             QStringLiteral("Unknown operation: There is no palette operation named 'tinted'."));
}

void TestPaletteOperations::registryMatchesTypedFunctions_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("lines");
    const auto row = [](const char *name, const QString &lines) { QTest::newRow(name) << name << lines; };
    row("brightness_contrast", "brightness:30\ncontrast:-40\nsel_only:1");
    row("hue_saturation_value", "hue:-77\nsaturation:20\nvalue:-5\ncolorize:1");
    row("component_manipulation", "mode:2\ncomp1:10\ncomp2:-30\ncomp3:5\ncomp4:0\nwrap:1\nsel_only:0");
    row("blur", "mode:9\nmethod:1\nwrap:0\nvalue:3\ncomp2:1\nsel_only:1");
    row("tint", "color:#aa00ff\nopacity:40\nsel_only:1");
    row("gradienttint", "color1:#00007f\nopacity1:10\ncolor2:#6ed4ff\nopacity2:40\nmode:3\nbegin:2\nend:9");
    row("interpolation", "index:0\ncolor:4278190080\ncolorSpace:3\nfunction:1\ntickend\nindex:200\n"
                         "color:4294901760\ncolorSpace:0\nfunction:0\ntickend\nsize:300");
    row("cosini", "a_r:0.2\nb_g:-0.7\nc_b:2.5\nd_r:0.3\nsize:333\nkeep_aspect:1");
}

void TestPaletteOperations::registryMatchesTypedFunctions()
{
    QFETCH(QString, name);
    QFETCH(QString, lines);
    QRandomGenerator rng(11);
    const Palette<uint> in = randomPalette(rng, 40);
    const std::set<int> selection{3, 4, 5, 20};
    const SettingsText::Pairs pairs = SettingsText::parse(SettingsText::format(name, lines), name);
    const std::map<QString, std::function<Palette<uint>()>> typed{
        {"brightness_contrast",
         [&] {
             return ToneManipulation::brightnessContrast(in, selection,
                                                         BrightnessContrastSettings::fromPairs(pairs));
         }},
        {"hue_saturation_value",
         [&] {
             return ToneManipulation::hueSaturationValue(in, selection,
                                                         HueSaturationValueSettings::fromPairs(pairs));
         }},
        {"component_manipulation",
         [&] {
             return ToneManipulation::componentManipulation(in, selection,
                                                            ComponentManipulationSettings::fromPairs(pairs));
         }},
        {"blur", [&] { return PaletteBlur::blur(in, selection, BlurSettings::fromPairs(pairs)); }},
        {"tint", [&] { return PaletteTint::tint(in, selection, TintSettings::fromPairs(pairs)); }},
        {"gradienttint",
         [&] { return PaletteTint::gradientTint(in, selection, GradientTintSettings::fromPairs(pairs)); }},
        {"interpolation",
         [&] { return ColorInterpolation::generate(InterpolationSettings::fromPairs(pairs)); }},
        {"cosini", [&] { return CosinePalette::generate(CosinePaletteSettings::fromPairs(pairs)); }},
    };
    const Palette<uint> viaRegistry = PaletteOperations::apply(name, in, selection, pairs);
    QCOMPARE(viaRegistry, typed.at(name)());
    // The settings do something: the neutral defaults give another palette.
    QVERIFY(viaRegistry != PaletteOperations::apply(name, in, selection, {}));
}

void TestPaletteOperations::badSettings_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *tag, const QString &name, const QString &lines, const QString &message) {
        QTest::newRow(tag) << name << lines << message;
    };
    row("colour", "tint", "color:zzz", "The value \"zzz\" of \"color\" is not a colour like #aa00ff.");
    row("integer", "brightness_contrast", "contrast:12.5",
        "The value \"12.5\" of \"contrast\" is not an integer.");
    row("empty", "gradienttint", "opacity1:", "The value \"\" of \"opacity1\" is not an integer.");
    row("flag", "hue_saturation_value", "colorize:yes", "The value \"yes\" of \"colorize\" is not 0 or 1.");
    row("space 14", "component_manipulation", "mode:14",
        "The value \"14\" of \"mode\" is not a colour-space number 0..13.");
    row("space -1", "blur", "mode:-1", "The value \"-1\" of \"mode\" is not a colour-space number 0..13.");
    row("gradient space", "gradienttint", "mode:x",
        "The value \"x\" of \"mode\" is not a colour-space number 0..13.");
    row("method", "blur", "method:2",
        "The value \"2\" of \"method\" is not a method 0 (running mean) or 1 (normal).");
    row("not a number", "cosini", "d_g:nan", "The value \"nan\" of \"d_g\" is not a number.");
    row("size", "cosini", "size:1e3", "The value \"1e3\" of \"size\" is not an integer.");
    row("tick colour", "interpolation", "index:0\ncolor:-5\ntickend",
        "The value \"-5\" of \"color\" is not an unsigned 32-bit number.");
    row("open tick", "interpolation", "index:0\ncolor:4278190080\ntickend\nindex:255",
        "The last colour tick is not closed by a \"tickend\" line.");
}

void TestPaletteOperations::badSettings()
{
    QFETCH(QString, name);
    QFETCH(QString, lines);
    QFETCH(QString, message);
    QCOMPARE(refusal([&] { PaletteOperations::apply(name, paletteOf({{1, 2, 3, 4}}), {}, pairsOf(lines)); }),
             invalidSettings + ": " + message);
}

void TestPaletteOperations::perceptualSpaces_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("lines");
    for (const char *mode : {"12", "13"}) {
        QTest::addRow("blur %s", mode)
            << "blur" << QStringLiteral("mode:%1\ncomp1:2\ncomp2:2\ncomp3:2").arg(mode);
        QTest::addRow("components %s", mode)
            << "component_manipulation" << QStringLiteral("mode:%1\ncomp1:10\ncomp2:-5").arg(mode);
        QTest::addRow("gradient tint %s", mode)
            << "gradienttint"
            << QStringLiteral("mode:%1\ncolor1:#ff0000\nopacity1:60\ncolor2:#0000ff\nopacity2:60").arg(mode);
    }
}

void TestPaletteOperations::perceptualSpaces()
{
    // OKLab and OKLCH are accepted wherever a colour space is chosen, and they are really used.
    QFETCH(QString, name);
    QFETCH(QString, lines);
    const Palette<uint> in = paletteOf({{65535, 0, 0, 65535},
                                        {30000, 50000, 10000, 65535},
                                        {0, 0, 65535, 65535},
                                        {40000, 40000, 40000, 65535},
                                        {65535, 60000, 0, 65535}});
    const Palette<uint> out = PaletteOperations::apply(name, in, {}, pairsOf(lines));
    QCOMPARE(out.size(), in.size());
    QVERIFY(out != in);
    QVERIFY(out !=
            PaletteOperations::apply(
                name, in, {}, pairsOf(QString(lines).replace(QRegularExpression("mode:1."), "mode:0"))));
    QVERIFY(out !=
            PaletteOperations::apply(
                name, in, {}, pairsOf(QString(lines).replace(QRegularExpression("mode:1."), "mode:3"))));
}

void TestPaletteOperations::clampedSettings()
{
    // What a slider or spin box would show for a value beyond its range.
    QCOMPARE(BrightnessContrastSettings::fromPairs(pairsOf("brightness:999\ncontrast:-300")).brightness, 255);
    QCOMPARE(BrightnessContrastSettings::fromPairs(pairsOf("brightness:999\ncontrast:-300")).contrast, -255);
    QCOMPARE(HueSaturationValueSettings::fromPairs(pairsOf("hue:400")).hue, 180);
    QCOMPARE(TintSettings::fromPairs(pairsOf("opacity:150")).opacity, 100);
    QCOMPARE(BlurSettings::fromPairs(pairsOf("comp3:-3")).radii[2], 0);
    QCOMPARE(CosinePaletteSettings::fromPairs(pairsOf("size:0")).size, 1);
    QCOMPARE(CosinePaletteSettings::fromPairs(pairsOf("size:1000000")).size, 65536);
    QCOMPARE(CosinePaletteSettings::fromPairs(pairsOf("b_b:50")).channels[2].b, 10.0);
    QCOMPARE(InterpolationSettings::fromPairs(pairsOf("index:300\ntickend")).ticks[0].index, 255);
    // The clamped value computes what the range's end computes.
    const Palette<uint> in = paletteOf({{100, 20000, 60000, 65535}});
    QCOMPARE(PaletteOperations::apply("brightness_contrast", in, {}, pairsOf("brightness:999")),
             PaletteOperations::apply("brightness_contrast", in, {}, pairsOf("brightness:255")));
    // Colours as a colour button accepts them; the alpha is dropped.
    QCOMPARE(TintSettings::fromPairs(pairsOf("color:#80aa00ff")).color, QColor(0xaa, 0x00, 0xff));
    QCOMPARE(TintSettings::fromPairs(pairsOf("color: #AA00FF")).color, QColor(0xaa, 0x00, 0xff));
}

void TestPaletteOperations::settingsRoundTrip()
{
    for (const quint32 seed : testSeeds()) {
        QRandomGenerator rng(seed);
        BrightnessContrastSettings bc;
        bc.brightness = randomIn(rng, -255, 255);
        bc.contrast = randomIn(rng, -255, 255);
        bc.selectedOnly = rng.bounded(2);
        QCOMPARE(BrightnessContrastSettings::fromPairs(parsed(bc.settingsName, bc.toPairs())), bc);

        HueSaturationValueSettings hsv;
        hsv.hue = randomIn(rng, -180, 180);
        hsv.saturation = randomIn(rng, -100, 100);
        hsv.value = randomIn(rng, -100, 100);
        hsv.colorize = rng.bounded(2);
        hsv.selectedOnly = rng.bounded(2);
        QCOMPARE(HueSaturationValueSettings::fromPairs(parsed(hsv.settingsName, hsv.toPairs())), hsv);

        ComponentManipulationSettings cm;
        cm.mode = randomIn(rng, 0, 11);
        for (int &k : cm.components)
            k = randomIn(rng, -100, 100);
        cm.wrap = rng.bounded(2);
        cm.selectedOnly = rng.bounded(2);
        QCOMPARE(ComponentManipulationSettings::fromPairs(parsed(cm.settingsName, cm.toPairs())), cm);

        BlurSettings blur;
        blur.mode = randomIn(rng, 0, 11);
        blur.method = randomIn(rng, 0, 1);
        blur.wrap = rng.bounded(2);
        blur.master = randomIn(rng, 0, BlurSettings::maximumRadius);
        for (int &r : blur.radii)
            r = randomIn(rng, 0, BlurSettings::maximumRadius);
        blur.selectedOnly = rng.bounded(2);
        QCOMPARE(BlurSettings::fromPairs(parsed(blur.settingsName, blur.toPairs())), blur);

        TintSettings tint;
        tint.color = randomColour(rng);
        tint.opacity = randomIn(rng, 0, 100);
        tint.selectedOnly = rng.bounded(2);
        QCOMPARE(TintSettings::fromPairs(parsed(tint.settingsName, tint.toPairs())), tint);

        GradientTintSettings g;
        g.color1 = randomColour(rng);
        g.color2 = randomColour(rng);
        g.opacity1 = randomIn(rng, 0, 100);
        g.opacity2 = randomIn(rng, 0, 100);
        g.mode = randomIn(rng, 0, 11);
        g.selectedOnly = rng.bounded(2);
        QCOMPARE(GradientTintSettings::fromPairs(parsed(g.settingsName, g.toPairs())), g);

        InterpolationSettings in;
        in.ticks.clear();
        for (int k = randomIn(rng, 1, 6); k > 0; --k)
            in.ticks.push_back(
                {randomIn(rng, 0, 255), rng.generate(), randomIn(rng, 0, 11), randomIn(rng, 0, 1)});
        std::stable_sort(in.ticks.begin(), in.ticks.end(),
                         [](const ColorTick &a, const ColorTick &b) { return a.index < b.index; });
        in.size = randomIn(rng, 1, 65536);
        QCOMPARE(InterpolationSettings::fromPairs(parsed(in.settingsName, in.toPairs())), in);

        CosinePaletteSettings cos;
        for (auto &ch : cos.channels)
            ch = {randomIn(rng, -1000, 1000) / 100.0, randomIn(rng, -1000, 1000) / 100.0,
                  randomIn(rng, -1000, 1000) / 100.0, randomIn(rng, -10000, 10000) / 10000.0};
        cos.size = randomIn(rng, 1, 65536);
        cos.keepAspect = rng.bounded(2);
        QCOMPARE(CosinePaletteSettings::fromPairs(parsed(cos.settingsName, cos.toPairs())), cos);

        SelectionPatternSettings sp;
        sp.startIndex = randomIn(rng, 0, 65535);
        sp.endIndex = randomIn(rng, 0, 65535);
        sp.fullPalette = rng.bounded(2);
        sp.setNumber = randomIn(rng, 1, 65535);
        sp.skipNumber = randomIn(rng, 0, 65535);
        QCOMPARE(SelectionPatternSettings::fromPairs(parsed(sp.settingsName, sp.toPairs())), sp);
    }
    // Numbers are written as the dialogs show them; colours as # and six lower-case digits.
    CosinePaletteSettings cos;
    cos.channels[0].d = -1.3625;
    QCOMPARE(SettingsText::value(cos.toPairs(), "d_r"), QStringLiteral("-1.3625"));
    QCOMPARE(SettingsText::value(cos.toPairs(), "a_r"), QStringLiteral("0.5"));
    TintSettings tint;
    tint.color = QColor(0xAA, 0x00, 0xFF);
    QCOMPARE(SettingsText::value(tint.toPairs(), "color"), QStringLiteral("#aa00ff"));
    InterpolationSettings in;
    QCOMPARE(SettingsText::value(in.toPairs(), "color"), QStringLiteral("4294967295"));
}

void TestPaletteOperations::blurMasterFollowsOrder()
{
    // "Master size" sets all four radii when it is applied; later component keys override it.
    QCOMPARE(BlurSettings::fromPairs(pairsOf("comp1:3\nvalue:5")).radii, (std::array<int, 4>{5, 5, 5, 5}));
    QCOMPARE(BlurSettings::fromPairs(pairsOf("value:5\ncomp1:3")).radii, (std::array<int, 4>{3, 5, 5, 5}));
}

void TestPaletteOperations::interpolationSettings()
{
    // Ticks come back ordered by index; equal indexes keep their order.
    const InterpolationSettings s = InterpolationSettings::fromPairs(pairsOf(
        "index:200\ncolor:1\ntickend\nindex:10\ncolor:2\ntickend\nindex:200\ncolor:3\ntickend\nsize:64"));
    QCOMPARE(int(s.ticks.size()), 3);
    QCOMPARE(s.ticks[0].color, 2u);
    QCOMPARE(s.ticks[1].color, 1u);
    QCOMPARE(s.ticks[2].color, 3u);
    QCOMPARE(s.size, 64);
    // Without records the ticks of the base stay; the record ends with a line without a colon.
    InterpolationSettings base;
    base.ticks = {{5, 0xFF112233u, 9, 1}};
    const InterpolationSettings sized = InterpolationSettings::fromPairs(pairsOf("size:17"), base);
    QCOMPARE(sized.ticks, base.ticks);
    QCOMPARE(sized.size, 17);
    const SettingsText::Pairs pairs = base.toPairs();
    QCOMPARE(pairs[4], (std::pair<QString, QString>("tickend", QString())));
    QCOMPARE(ColorTick({0, 0x7F102030u, 0, 0}).keyColour(), Colour(0x1000, 0x2000, 0x3000, 65535));
}

void TestPaletteOperations::gradientRangeKeys()
{
    const GradientTintSettings g = GradientTintSettings::fromPairs(pairsOf("begin:3\nend:9\nmode:4"));
    QCOMPARE(g.begin, 3);
    QCOMPARE(g.end, 9);
    QCOMPARE(g.mode, 4);
    for (const auto &pair : g.toPairs())
        QVERIFY(pair.first != "begin" && pair.first != "end");
    // A text without "mode" leaves the mode where it was.
    QCOMPARE(GradientTintSettings::fromPairs(pairsOf("opacity1:5"), g).mode, 4);
}

void TestPaletteOperations::presetFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("count");
    QTest::newRow("tint") << "tint" << 2;
    QTest::newRow("gradienttint") << "gradienttint" << 3;
    QTest::newRow("interpolation") << "interpolation" << 9;
    QTest::newRow("cosini") << "cosini" << 11;
    QTest::newRow("selectionpattern") << "selectionpattern" << 7;
}

void TestPaletteOperations::presetFiles()
{
    QFETCH(QString, name);
    QFETCH(int, count);
    QRandomGenerator rng(8);
    const Palette<uint> in = randomPalette(rng, 64);
    for (int i = 1; i <= count; ++i) {
        const QString text = presetText(name, i);
        QVERIFY2(text.startsWith(name + " 2.0.0\n"), qPrintable(SettingsText::presetPath(name, i)));
        QVERIFY(!text.contains('\r'));
        QVERIFY(text.endsWith('\n'));
        const SettingsText::Pairs pairs = SettingsText::parse(text, name);
        if (name == SelectionPatternSettings::settingsName)
            QVERIFY(!SelectionPattern::select(in.size(), pairs).empty());
        else
            QVERIFY(PaletteOperations::apply(name, in, {}, pairs).size() > 0);
    }
    QVERIFY(!QFile::exists(SettingsText::presetPath(name, count + 1)));
}

void TestPaletteOperations::presetValues()
{
    for (const auto &[number, colour] : {std::pair<int, const char *>{1, "#aa00ff"}, {2, "#008800"}}) {
        const TintSettings tint = TintSettings::fromPairs(presetPairs("tint", number));
        QCOMPARE(tint.color, QColor(colour));
        QCOMPARE(tint.opacity, 40);
        QVERIFY(tint.selectedOnly);
    }

    struct Gradient
    {
        const char *c1;
        int o1;
        const char *c2;
        int o2;
        bool hasMode;
    };
    const Gradient gradients[] = {{"#00007f", 10, "#6ed4ff", 40, false},
                                  {"#00ffff", 40, "#ffff00", 40, false},
                                  {"#aa0000", 25, "#aaffff", 40, true}};
    for (int i = 0; i < 3; ++i) {
        const SettingsText::Pairs pairs = presetPairs("gradienttint", i + 1);
        GradientTintSettings base;
        base.mode = 7;
        const GradientTintSettings g = GradientTintSettings::fromPairs(pairs, base);
        QCOMPARE(g.color1, QColor(gradients[i].c1));
        QCOMPARE(g.opacity1, gradients[i].o1);
        QCOMPARE(g.color2, QColor(gradients[i].c2));
        QCOMPARE(g.opacity2, gradients[i].o2);
        QCOMPARE(g.mode, gradients[i].hasMode ? 0 : 7);
        QVERIFY(!g.selectedOnly);
    }

    const int patterns[7][3] = {{0, 2, 6},   {0, 1, 7}, {0, 1, 16}, {1, 1, 1},
                                {15, 1, 14}, {0, 1, 1}, {0, 2, 14}};
    for (int i = 0; i < 7; ++i) {
        const SelectionPatternSettings p =
            SelectionPatternSettings::fromPairs(presetPairs("selectionpattern", i + 1));
        QCOMPARE(p.startIndex, patterns[i][0]);
        QCOMPARE(p.setNumber, patterns[i][1]);
        QCOMPARE(p.skipNumber, patterns[i][2]);
        QCOMPARE(p.endIndex, 256);
        QVERIFY(p.fullPalette);
    }

    // The two classic cosine palettes lead the list.
    const CosinePaletteSettings warm = CosinePaletteSettings::fromPairs(presetPairs("cosini", 1));
    for (const auto &ch : warm.channels) {
        QCOMPARE(ch.a, 0.5);
        QCOMPARE(ch.b, 0.5);
        QCOMPARE(ch.c, 1.0);
    }
    QCOMPARE(warm.channels[0].d, 0.3);
    QCOMPARE(warm.channels[1].d, 0.2);
    QCOMPARE(warm.channels[2].d, 0.2);
    const CosinePaletteSettings wild = CosinePaletteSettings::fromPairs(presetPairs("cosini", 2));
    const double expected[3][4] = {{-0.2, 2, -0.2, -0.7}, {0.1, -0.6, 1.6, 2}, {0.5, 1.1, 1.1, -0.55}};
    for (size_t ch = 0; ch < 3; ++ch) {
        QCOMPARE(wild.channels[ch].a, expected[ch][0]);
        QCOMPARE(wild.channels[ch].b, expected[ch][1]);
        QCOMPARE(wild.channels[ch].c, expected[ch][2]);
        QCOMPARE(wild.channels[ch].d, expected[ch][3]);
    }
}

void TestPaletteOperations::interpolationPresets()
{
    int withHsv = 0;
    for (int i = 1; i <= 9; ++i) {
        const InterpolationSettings s = InterpolationSettings::fromPairs(presetPairs("interpolation", i));
        QVERIFY(s.ticks.size() >= 2);
        QCOMPARE(s.ticks.front().index, 0);
        QCOMPARE(s.ticks.front().color, 4278190080u);
        QCOMPARE(s.ticks.back().index, 255);
        QCOMPARE(s.size, 256);
        bool hsv = false;
        for (size_t k = 0; k + 1 < s.ticks.size(); ++k) {
            QVERIFY(s.ticks[k].colorSpace == SpaceRGB || s.ticks[k].colorSpace == SpaceHSV);
            hsv = hsv || s.ticks[k].colorSpace == SpaceHSV;
        }
        withHsv += hsv ? 1 : 0;
        QCOMPARE(ColorInterpolation::generate(s).size(), 256);
    }
    QCOMPARE(withHsv, 2);
}

QTEST_GUILESS_MAIN(TestPaletteOperations)
#include "tst_paletteoperations.moc"
