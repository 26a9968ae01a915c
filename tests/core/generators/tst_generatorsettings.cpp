// The generators' settings: the built-in presets hold exactly the views they were made for, every
// generator reads and writes only its own keys in their order, and a value that cannot be read is
// refused with a message naming it.

#include "generators/generatorsettings.h"
#include "palette/describedexception.h"

#include <QtTest>

Q_DECLARE_METATYPE(SettingsText::Pairs)

namespace {

SettingsText::Pairs pairs(const QStringList &keys, const QString &values)
{
    const QStringList v = values.split(' ', Qt::SkipEmptyParts);
    SettingsText::Pairs p;
    for (int i = 0; i < keys.size(); ++i)
        p.emplace_back(keys[i], v[i]);
    return p;
}

} // namespace

class TestGeneratorSettings : public QObject
{
    Q_OBJECT

private slots:
    void presetsHoldTheirViews_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("number");
        QTest::addColumn<SettingsText::Pairs>("expected");
        const QStringList escape{"iterations", "norm", "xoff", "yoff", "zoom"};
        const QStringList julia = escape + QStringList{"c_r", "c_i"};
        const QStringList noise{"method", "xoff", "yoff", "zoff", "xadd", "yadd"};
        const QStringList mandelbrots{"5000 1000 -0.37216 -0.842 6000",   "5000 500 -0.92613 -0.34133 750",
                                      "1000 500 -0.39741 -0.94409 2000",  "5000 5000 0.90113 0 30000",
                                      "1000 500 0.94754 0 1000",          "5000 1000 -0.29516 -0.64878 1000",
                                      "5000 1000 -0.35765 -0.84021 1500"};
        const QStringList julias{"5000 100 0 0 0.9 -1.275 0.19375",
                                 "1000 100 -0.11568 -0.20234 1102.22 0.0125 0.76875",
                                 "1000 100 0.14446 -0.20605 85.85 -0.95 0.30625",
                                 "1000 100 -0.16454 -0.47344 3.87 0.375 0.30625",
                                 "100 100 -0.50626 0.09335 6.69 -0.775 0.1875",
                                 "5000 100 0 0 0.9 -0.225 0.68125",
                                 "100 100 0 0 0.75 0.375 0.30625",
                                 "1000 200 0 0 13.87 -0.8 0.1625",
                                 "100 100 0 0 0.9 -0.75 0.1125",
                                 "10 10 0 0 0.75 -1.3625 0",
                                 "10 10 0 0 0.9 -1.625 0",
                                 "100 10 0 0 0.9 -2 0"};
        const QStringList noises{"5 15.9541 10.2715 -5.8 18.1193 14.2693", "3 24.8477 22.1102 -1.4 6.06815 4.77878",
                                 "4 10.9975 12.563 -5.8 13.4818 12.5068",  "5 8.33074 13.1996 -5.8 1.3318 1.8318",
                                 "2 15.9541 10.2715 -5.8 7.4818 7.1193",   "0 8.82844 13.6388 -5.8 9.3693 9.3693",
                                 "1 10.9975 12.563 -5.8 5.8193 5.7568"};
        for (int i = 0; i < mandelbrots.size(); ++i)
            QTest::addRow("mandelbrot%d", i + 1) << "mandelbrot" << i + 1 << pairs(escape, mandelbrots[i]);
        for (int i = 0; i < julias.size(); ++i) {
            SettingsText::Pairs p = pairs(julia, julias[i]);
            // Only the first Julia preset asks for a larger picture.
            p.emplace_back("xsize", i == 0 ? "1024" : "512");
            p.emplace_back("ysize", i == 0 ? "1024" : "512");
            QTest::addRow("julia%d", i + 1) << "julia" << i + 1 << p;
        }
        for (int i = 0; i < noises.size(); ++i)
            QTest::addRow("noise%d", i + 1) << "noise" << i + 1 << pairs(noise, noises[i]);
    }
    void presetsHoldTheirViews()
    {
        QFETCH(QString, name);
        QFETCH(int, number);
        QFETCH(SettingsText::Pairs, expected);
        const SettingsText::Pairs read = SettingsText::readFile(SettingsText::presetPath(name, number), name);
        const GeneratorSettings s = GeneratorSettings::fromPairs(name, read);
        const SettingsText::Pairs written = s.toPairs();
        for (const auto &[key, value] : expected) {
            const QString got = SettingsText::value(written, key, QStringLiteral("<missing>"));
            QVERIFY2(got == value, qPrintable(QStringLiteral("%1: %2 instead of %3").arg(key, got, value)));
        }
        QCOMPARE(s.name, name);
        QCOMPARE(s.target, int(GeneratorSettings::Continuous));
        QCOMPARE(s.precision, int(GeneratorSettings::Single));
        QCOMPARE(s.smooth, false);
    }

    // Our own presets load as well, for every generator that has some.
    void everyGeneratorHasLoadablePresets()
    {
        for (const QString &name : GeneratorSettings::names()) {
            int count = 0;
            for (int n = 1; QFile::exists(SettingsText::presetPath(name, n)); ++n) {
                const auto read = SettingsText::readFile(SettingsText::presetPath(name, n), name);
                const GeneratorSettings s = GeneratorSettings::fromPairs(name, read);
                // Every key the preset names is one of the generator's own.
                const SettingsText::Pairs own = s.toPairs();
                for (const auto &pair : read)
                    if (!pair.first.startsWith(QLatin1String("2.0.0")) && !pair.first.isEmpty())
                        QVERIFY2(SettingsText::value(own, pair.first, "<none>") == pair.second,
                                 qPrintable(name + ": " + pair.first));
                ++count;
            }
            QVERIFY2(count >= 3, qPrintable(name));
        }
    }

    void keysInTableOrder_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("keys");
        const QString juliaKeys = "iterations norm xoff yoff zoom c_r c_i xsize ysize target precision smooth";
        QTest::newRow("mandelbrot") << "mandelbrot"
                                    << "iterations norm xoff yoff zoom xsize ysize target precision smooth";
        QTest::newRow("julia") << "julia" << juliaKeys;
        QTest::newRow("ifs") << "ifs" << juliaKeys;
        QTest::newRow("plasma") << "plasma" << juliaKeys;
        QTest::newRow("apollonian") << "apollonian" << "iterations norm xoff yoff zoom xsize ysize target";
        QTest::newRow("noise") << "noise" << "method xoff yoff zoff xadd yadd xsize ysize target";
        QTest::newRow("gradient") << "gradient" << "method xoff yoff zoff xadd yadd xsize ysize target";
        QTest::newRow("moiree") << "moiree" << "xoff yoff zoom norm xadd yadd xsize ysize target";
    }
    void keysInTableOrder()
    {
        QFETCH(QString, name);
        QFETCH(QString, keys);
        QStringList written;
        for (const auto &pair : GeneratorSettings::defaults(name).toPairs())
            written << pair.first;
        QCOMPARE(written.join(' '), keys);
    }

    void defaults()
    {
        const GeneratorSettings m = GeneratorSettings::defaults("mandelbrot");
        QCOMPARE(m.settingsText(), QString("iterations:70\nnorm:60\nxoff:0\nyoff:0\nzoom:1\nxsize:512\nysize:512\n"
                                           "target:1\nprecision:0\nsmooth:0\n"));
        const GeneratorSettings j = GeneratorSettings::defaults("julia");
        QCOMPARE(j.settingsText(), QString("iterations:60\nnorm:60\nxoff:0\nyoff:0\nzoom:1\nc_r:-0.6\nc_i:0.6\n"
                                           "xsize:512\nysize:512\ntarget:1\nprecision:0\nsmooth:0\n"));
        QCOMPARE(GeneratorSettings::defaults("noise").settingsText(),
                 QString("method:0\nxoff:0\nyoff:0\nzoff:0\nxadd:1\nyadd:1\nxsize:512\nysize:512\ntarget:1\n"));
        QCOMPARE(GeneratorSettings::names().size(), 8);
        for (const QString &name : GeneratorSettings::names()) {
            QVERIFY(GeneratorSettings::exists(name));
            QCOMPARE(GeneratorSettings::defaults(name).name, name);
            QCOMPARE(GeneratorSettings::defaults(name).macroStep(), "image_generate_" + name);
        }
        QVERIFY(!GeneratorSettings::exists("spiral"));
        QVERIFY(GeneratorSettings::defaults("plasma").isEscapeTime());
        QVERIFY(!GeneratorSettings::defaults("apollonian").isEscapeTime());
        QVERIFY(!GeneratorSettings::defaults("apollonian").usesPalette());
        QVERIFY(GeneratorSettings::defaults("moiree").usesPalette());
    }

    // A key of another generator is no key of this one: it neither changes nor appears.
    void foreignKeysAreIgnored()
    {
        const GeneratorSettings m = GeneratorSettings::fromPairs("mandelbrot", {{"c_r", "0.25"}, {"method", "4"}});
        QCOMPARE(m.cr, GeneratorSettings().cr);
        QCOMPARE(m.method, 0);
        const GeneratorSettings n = GeneratorSettings::fromPairs("noise", {{"iterations", "9"}, {"zoom", "3"}});
        QCOMPARE(n.iterations, GeneratorSettings::defaults("noise").iterations);
        QCOMPARE(n.zoom, 1.0);
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("message");
        QTest::newRow("unknown generator") << "spiral" << "zoom" << "1"
                                           << "There is no image generator named \"spiral\".";
        QTest::newRow("iterations") << "mandelbrot" << "iterations" << "many"
                                    << "The value \"many\" of \"iterations\" is not an integer.";
        QTest::newRow("zoom") << "julia" << "zoom" << "1,5" << "The value \"1,5\" of \"zoom\" is not a number.";
        QTest::newRow("target") << "noise" << "target" << "3"
                                << "The value \"3\" of \"target\" is not a list position 0..2.";
        QTest::newRow("method") << "gradient" << "method" << "3"
                                << "The value \"3\" of \"method\" is not a list position 0..2.";
        QTest::newRow("noise method") << "noise" << "method" << "6"
                                      << "The value \"6\" of \"method\" is not a list position 0..5.";
        QTest::newRow("precision") << "ifs" << "precision" << "2"
                                   << "The value \"2\" of \"precision\" is not a list position 0..1.";
        QTest::newRow("smooth") << "plasma" << "smooth" << "yes" << "The value \"yes\" of \"smooth\" is not 0 or 1.";
        QTest::newRow("size") << "moiree" << "xsize" << "" << "The value \"\" of \"xsize\" is not an integer.";
    }
    void refusals()
    {
        QFETCH(QString, name);
        QFETCH(QString, key);
        QFETCH(QString, value);
        QFETCH(QString, message);
        try {
            GeneratorSettings::fromPairs(name, {{key, value}});
            QFAIL("accepted");
        } catch (const DescribedException &e) {
            QCOMPARE(e.title(), QString("Invalid settings"));
            QCOMPARE(e.message(), message);
        }
    }

    // What a dialog's spin box cannot hold is brought into its range, never refused: a zoom or a
    // norm of zero would divide by zero.
    void outOfRangeValuesAreLimited()
    {
        const GeneratorSettings s = GeneratorSettings::fromPairs(
            "julia", {{"zoom", "0"}, {"norm", "-3"}, {"iterations", "0"}, {"xsize", "0"}, {"ysize", "9999999"}});
        QVERIFY(s.zoom > 0);
        QVERIFY(s.norm > 0);
        QCOMPARE(s.iterations, 1);
        QCOMPARE(s.xsize, 1);
        QCOMPARE(s.ysize, 262144);
    }

    void pairsRoundTrip_data()
    {
        QTest::addColumn<QString>("name");
        for (const QString &name : GeneratorSettings::names())
            QTest::newRow(qPrintable(name)) << name;
    }
    void pairsRoundTrip()
    {
        QFETCH(QString, name);
        GeneratorSettings s = GeneratorSettings::defaults(name);
        s.iterations = 1234;
        s.norm = 77.25;
        s.xoff = -0.123456789012345;
        s.yoff = 0.5;
        s.zoom = 12345.678;
        s.cr = -1.3625;
        s.ci = 0.19375;
        s.method = 2;
        s.zoff = -5.8;
        s.xadd = 18.1193;
        s.yadd = 14.2693;
        s.xsize = 640;
        s.ysize = 200;
        s.target = GeneratorSettings::Rgb;
        s.precision = s.isEscapeTime() ? GeneratorSettings::Double : GeneratorSettings::Single;
        s.smooth = s.isEscapeTime();
        const GeneratorSettings back = GeneratorSettings::fromPairs(name, s.toPairs());
        QCOMPARE(back.settingsText(), s.settingsText());
        QVERIFY(back.settingsText() != GeneratorSettings::defaults(name).settingsText());
        // Read through the settings text as a file holds it.
        const auto parsed = SettingsText::parse(SettingsText::format(name, s.settingsText()), name);
        QCOMPARE(GeneratorSettings::fromPairs(name, parsed).settingsText(), s.settingsText());
    }
};

QTEST_GUILESS_MAIN(TestGeneratorSettings)
#include "tst_generatorsettings.moc"
