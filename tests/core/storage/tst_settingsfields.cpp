// The settings texts the dialogs write: every struct's keys, their order and their value formats
// are what presets and macros already hold, and what is written reads back to the same settings.

#include "conversion/imageconvertsettings.h"
#include "conversion/imagequantisizesettings.h"
#include "export/palettetextencoder.h"
#include "operations/colorinterpolation.h"
#include "operations/cosinepalette.h"
#include "operations/paletteblur.h"
#include "operations/palettetint.h"
#include "operations/selectionpattern.h"
#include "operations/tonemanipulation.h"
#include "palette/describedexception.h"
#include "storage/settingsfields.h"

#include <QtTest>

#include <functional>
#include <map>

namespace {

struct Case
{
    // The lines a sample value writes, and the lines written again after reading them into
    // the default settings.
    std::function<QString()> write;
    std::function<QString(const SettingsText::Pairs &)> rewrite;
};

template <class S> Case caseOf(const S &sample)
{
    return {[sample] { return SettingsText::formatLines(sample.toPairs()); },
            [](const SettingsText::Pairs &pairs) {
                const S back = S::fromPairs(pairs);
                return SettingsText::formatLines(back.toPairs());
            }};
}

const std::map<QString, Case> &cases()
{
    static const std::map<QString, Case> all = [] {
        std::map<QString, Case> m;
        BrightnessContrastSettings bc;
        bc.brightness = -17;
        bc.contrast = 200;
        bc.selectedOnly = true;
        m["brightness_contrast"] = caseOf(bc);

        HueSaturationValueSettings hsv;
        hsv.hue = -180;
        hsv.saturation = 33;
        hsv.value = -1;
        hsv.colorize = true;
        m["hue_saturation_value"] = caseOf(hsv);

        ComponentManipulationSettings cm;
        cm.mode = 11;
        cm.components = {-100, 0, 7, 100};
        cm.wrap = true;
        cm.selectedOnly = true;
        m["component_manipulation"] = caseOf(cm);

        BlurSettings blur;
        blur.mode = 3;
        blur.method = BlurSettings::Gauss;
        blur.wrap = true;
        blur.master = 9;
        blur.radii = {1, 0, 128, 9};
        m["blur"] = caseOf(blur);

        TintSettings tint;
        tint.color = QColor(0xaa, 0x00, 0xff);
        tint.opacity = 45;
        tint.selectedOnly = true;
        m["tint"] = caseOf(tint);

        GradientTintSettings g;
        g.color1 = QColor(1, 2, 3);
        g.opacity1 = 100;
        g.color2 = QColor(255, 254, 253);
        g.opacity2 = 0;
        g.mode = 9;
        g.begin = 4; // not written: the dialog does not store the range
        g.end = 8;
        m["gradienttint"] = caseOf(g);

        InterpolationSettings in;
        in.ticks = {{0, 0xFF102030u, 2, ColorTick::Sigmoid}, {128, 0x80FFFFFFu, 0, ColorTick::Linear}};
        in.size = 1024;
        m["interpolation"] = caseOf(in);

        CosinePaletteSettings cos;
        cos.channels[0] = {0.25, -1.3625, 2.0, 0.0};
        cos.channels[2].d = 10.0;
        cos.size = 300;
        cos.keepAspect = true;
        m["cosini"] = caseOf(cos);

        SelectionPatternSettings sp;
        sp.startIndex = 3;
        sp.endIndex = 65535;
        sp.fullPalette = false;
        sp.setNumber = 2;
        sp.skipNumber = 5;
        m["selectionpattern"] = caseOf(sp);

        ImageConvertSettings ic;
        ic.mode = 1;
        ic.palette = 3;
        ic.interpolate = true;
        ic.dbPalette = "fractint/blues";
        ic.filePalette = "/tmp/a b.gpl";
        ic.extension = ".tif";
        ic.folder = "/out";
        m["image_format_convert"] = caseOf(ic);
        m["image_format_convert, batch"] = {[ic] { return SettingsText::formatLines(ic.toPairs(true)); },
                                            [](const SettingsText::Pairs &pairs) {
                                                return SettingsText::formatLines(
                                                    ImageConvertSettings::fromPairs(pairs).toPairs(true));
                                            }};

        ImageQuantisizeSettings iq;
        iq.format = 1;
        iq.palette = 7;
        iq.bwThreshold = 12;
        iq.dbPalette = "gimp/x";
        iq.filePalette = "p.pal";
        iq.dither = 12;
        iq.method = 2; // not written, like the palette size
        iq.colors = 16;
        m["image_quantisize"] = caseOf(iq);

        PaletteTextEncoder::Template t;
        t.encoding = "UTF-16";
        t.header = "<table>";
        t.entry = "%i: #%R%G%B";
        t.divider = ", ";
        t.bottom = "</table>";
        m["palette_textencode"] = {
            [t] { return SettingsText::formatLines(PaletteTextEncoder::toSettings(t)); },
            [](const SettingsText::Pairs &pairs) {
                return SettingsText::formatLines(
                    PaletteTextEncoder::toSettings(PaletteTextEncoder::fromSettings(pairs)));
            }};
        return m;
    }();
    return all;
}

// A settings struct of the test's own, to pin down the table's rules.
struct Sample
{
    int number = 1;
    bool on = false;
    QString name = "n";
    std::array<int, 2> pair{{0, 0}};
    int extra = 0;
};

const SettingsFields<Sample> &sampleFields()
{
    using F = SettingsFields<Sample>;
    static const F fields({
        F::integer("number", &Sample::number, 0, 10).thenApply([](Sample &s) { s.pair.fill(s.number); }),
        F::flag(SettingsKeys::selectedOnly, &Sample::on),
        F::text("name", &Sample::name),
        F::integer(
            "p1", [](auto &s) -> auto & { return s.pair[0]; }, -5, 5),
        F::integer(
            "p2", [](auto &s) -> auto & { return s.pair[1]; }, -5, 5),
        F::integer("extra", &Sample::extra, 0, 99).extraKey(),
    });
    return fields;
}

SettingsText::Pairs pairsOf(const QString &lines)
{
    SettingsText::Pairs pairs;
    for (const QString &line : lines.split('\n', Qt::SkipEmptyParts)) {
        const int colon = line.indexOf(':');
        pairs.emplace_back(colon < 0 ? line : line.left(colon), colon < 0 ? QString() : line.mid(colon + 1));
    }
    return pairs;
}

} // namespace

class TestSettingsFields : public QObject
{
    Q_OBJECT
private slots:
    void writtenText_data();
    void writtenText();
    void tableRules();
    void unreadableValue();
};

void TestSettingsFields::writtenText_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    auto row = [](const char *name, const char *text) {
        QTest::newRow(name) << QString(name) << QString(text);
    };
    row("brightness_contrast", "brightness:-17\ncontrast:200\nsel_only:1\n");
    row("hue_saturation_value", "hue:-180\nsaturation:33\nvalue:-1\ncolorize:1\nsel_only:0\n");
    row("component_manipulation", "mode:11\ncomp1:-100\ncomp2:0\ncomp3:7\ncomp4:100\nwrap:1\nsel_only:1\n");
    row("blur", "mode:3\nmethod:1\nwrap:1\nvalue:9\ncomp1:1\ncomp2:0\ncomp3:128\ncomp4:9\nsel_only:0\n");
    row("tint", "color:#aa00ff\nopacity:45\nsel_only:1\n");
    row("gradienttint", "color1:#010203\nopacity1:100\ncolor2:#fffefd\nopacity2:0\nmode:9\nsel_only:0\n");
    row("interpolation", "index:0\ncolor:4279246896\ncolorSpace:2\nfunction:1\ntickend:\n"
                         "index:128\ncolor:2164260863\ncolorSpace:0\nfunction:0\ntickend:\nsize:1024\n");
    row("cosini", "a_r:0.25\nb_r:-1.3625\nc_r:2\nd_r:0\na_g:0.5\nb_g:0.5\nc_g:1\nd_g:0\n"
                  "a_b:0.5\nb_b:0.5\nc_b:1\nd_b:10\nsize:300\nkeep_aspect:1\n");
    row("selectionpattern", "start_index:3\nend_index:65535\nfull_palette:0\nset_number:2\nskip_number:5\n");
    row("image_format_convert", "mode:1\npalette:3\ninterpolate:1\ndb_palette:fractint/blues\n"
                                "file_palette:/tmp/a b.gpl\n");
    row("image_format_convert, batch", "mode:1\npalette:3\ninterpolate:1\ndb_palette:fractint/blues\n"
                                       "file_palette:/tmp/a b.gpl\nextension:.tif\nfolder:/out\n");
    row("image_quantisize",
        "format:1\npalette:7\nbw_threshold:12\ndb_palette:gimp/x\nfile_palette:p.pal\ndither:12\n");
    row("palette_textencode",
        "header:<table>\nentry:%i: #%R%G%B\ndivider:, \nbottom:</table>\nencoding:UTF-16\n");
}

void TestSettingsFields::writtenText()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    const Case &c = cases().at(name);
    QCOMPARE(c.write(), text);
    // Read back through a complete settings text, as a preset or macro step gives it.
    const QString word = name.section(',', 0, 0);
    QCOMPARE(c.rewrite(SettingsText::parse(SettingsText::format(word, text), word)), text);
}

void TestSettingsFields::tableRules()
{
    const SettingsFields<Sample> &f = sampleFields();
    Sample s;
    s.number = 4;
    s.on = true;
    s.name = "x:y";
    s.pair = {-5, 3};
    s.extra = 7;
    // Table order; the extra key only when asked for.
    QCOMPARE(SettingsText::formatLines(f.write(s)), QString("number:4\nsel_only:1\nname:x:y\np1:-5\np2:3\n"));
    QCOMPARE(SettingsText::formatLines(f.write(s, true)),
             QString("number:4\nsel_only:1\nname:x:y\np1:-5\np2:3\nextra:7\n"));

    // Pairs apply in order: unknown keys are ignored, later pairs win, clamping as the controls do,
    // and an effect runs when its key is read.
    const Sample r = f.read(pairsOf("p1:2\nnumber:99\nbogus:1\nextra:5\np2:-9\nname:a\nname:b"), Sample());
    QCOMPARE(r.number, 10);
    QCOMPARE(r.pair, (std::array<int, 2>{10, -5}));
    QCOMPARE(r.extra, 5);
    QCOMPARE(r.name, QString("b"));
    QCOMPARE(r.on, false);
    // Keys not given keep the base's values.
    QCOMPARE(f.read(pairsOf("sel_only:1"), s).name, QString("x:y"));
    Sample one;
    QVERIFY(f.readOne(one, "sel_only", "1") && one.on);
    QVERIFY(!f.readOne(one, "Sel_only", "0"));
    QVERIFY(one.on);
}

void TestSettingsFields::unreadableValue()
{
    try {
        sampleFields().read(pairsOf("number:lots"), Sample());
        QFAIL("no exception");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), QString("Invalid settings"));
        QCOMPARE(e.message(), QString("The value \"lots\" of \"number\" is not an integer."));
    }
}

QTEST_GUILESS_MAIN(TestSettingsFields)
#include "tst_settingsfields.moc"
