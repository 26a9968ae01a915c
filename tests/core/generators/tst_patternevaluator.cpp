// The pattern generators on the processor: the noise functions' defining properties (classic
// noise vanishes on the lattice, cellular noise vanishes at its feature points), the values the
// generators make of them (ranges, the limit at 1, what zoff and each moire setting move), the
// radial gradient's exact values, the presets, and the one-pixel and whole-picture paths agreeing.

#include "generators/generatorgl.h"
#include "generators/generatoroutput.h"
#include "generators/patternevaluator.h"
#include "palette/describedexception.h"
#include "storage/settingsstore.h"

#include <QtTest>

#include <cmath>
#include <limits>

namespace {

GeneratorSettings patternSettings(const QString &name, int method, double xoff, double yoff, double zoff,
                                  double xadd, double yadd)
{
    GeneratorSettings s = GeneratorSettings::defaults(name);
    s.method = method;
    s.xoff = xoff;
    s.yoff = yoff;
    s.zoff = zoff;
    s.xadd = xadd;
    s.yadd = yadd;
    return s;
}

std::vector<float> picture(const GeneratorSettings &s, int width, int height)
{
    std::vector<float> out;
    PatternEvaluator::values(s, GeneratorGrid{width, height}, out);
    return out;
}

// The hash of the textureless noises in exact integers: ((34 x + 10) x) mod 289.
long long permuteExact(long long x)
{
    return (((34 * x + 10) * x) % 289 + 289) % 289;
}

long long mod289Exact(long long x)
{
    return (x % 289 + 289) % 289;
}

float noiseAt(int method, float x, float y, float z)
{
    switch (method) {
    case 2: return PatternEvaluator::classicNoise2D(x, y);
    case 3: return PatternEvaluator::classicNoise3D(x, y, z);
    case 4: return PatternEvaluator::simplexNoise2D(x, y);
    default: return PatternEvaluator::simplexNoise3D(x, y, z);
    }
}

} // namespace

class TestPatternEvaluator : public QObject
{
    Q_OBJECT

private slots:
    void classicNoiseVanishesOnTheLattice_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("y");
        QTest::addColumn<int>("z");
        QTest::newRow("origin") << 0 << 0 << 0;
        QTest::newRow("small") << 3 << 7 << 2;
        QTest::newRow("negative") << -5 << -12 << -1;
        QTest::newRow("around the hash period") << 288 << 289 << 290;
        QTest::newRow("far out") << 100003 << -70001 << 4099;
    }
    void classicNoiseVanishesOnTheLattice()
    {
        QFETCH(int, x);
        QFETCH(int, y);
        QFETCH(int, z);
        QCOMPARE(PatternEvaluator::classicNoise2D(float(x), float(y)), 0.0f);
        QCOMPARE(PatternEvaluator::classicNoise3D(float(x), float(y), float(z)), 0.0f);
        // Through the generator: P = (u xadd + xoff, v yadd + yoff) lands on the lattice at the
        // picture's centre, and the value is the noise's 0 moved to the middle of the palette.
        for (int method : {2, 3}) {
            const GeneratorSettings s = patternSettings("noise", method, x - 2.0, y - 3.0, z, 4, 6);
            QCOMPARE(PatternEvaluator::valueAt(s, 0.5f, 0.5f), 0.5f);
        }
        // Off the lattice it does not vanish everywhere.
        bool moves = false;
        for (float d : {0.25f, 0.5f, 0.75f})
            moves = moves || PatternEvaluator::classicNoise2D(x + d, y + 0.5f) != 0.0f;
        QVERIFY(moves);
    }

    // Simplex noise vanishes at the corners of its skewed lattice: every corner's falloff has
    // ended at the distance of its neighbours. The corner of lattice point i is i minus the
    // unskew of i's component sum.
    void simplexNoiseVanishesAtItsCorners_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("y");
        QTest::addColumn<int>("z");
        QTest::newRow("origin") << 0 << 0 << 0;
        QTest::newRow("small") << 3 << 7 << 2;
        QTest::newRow("negative") << -5 << -12 << -1;
        QTest::newRow("around the hash period") << 288 << 289 << 290;
    }
    void simplexNoiseVanishesAtItsCorners()
    {
        QFETCH(int, x);
        QFETCH(int, y);
        QFETCH(int, z);
        const double unskew2 = (3 - std::sqrt(3.0)) / 6;
        const double s2 = (x + y) * unskew2;
        const float n2 = PatternEvaluator::simplexNoise2D(float(x - s2), float(y - s2));
        // The corner itself is rounded to float; the noise's slope is a few units at most.
        const float tolerance = 1e-5f * std::max(1.0f, float(std::abs(x) + std::abs(y) + std::abs(z)));
        QVERIFY2(std::fabs(n2) <= tolerance, qPrintable(QString::number(n2)));
        // In 3D the corner itself is where all three of x0's components tie, and the ordering of
        // the published formulation picks no middle corners there; a step of 1e-4 off the
        // diagonal leaves only the corner's own falloff, of slope at most about 7.
        const double s3 = (x + y + z) / 6.0;
        const float n3 = PatternEvaluator::simplexNoise3D(float(x - s3 + 1e-4), float(y - s3), float(z - s3 - 1e-4));
        QVERIFY2(std::fabs(n3) <= 1e-3f, qPrintable(QString::number(n3)));
        // Halfway to the next corner it does not vanish in general.
        QVERIFY(PatternEvaluator::simplexNoise2D(float(x - s2) + 0.31f, float(y - s2) + 0.17f) != 0.0f);
    }

    // Classic and simplex noise stay within about -1..1 and use most of that range.
    void noiseRange_data()
    {
        QTest::addColumn<int>("method");
        QTest::newRow("classic 2D") << 2;
        QTest::newRow("classic 3D") << 3;
        QTest::newRow("simplex 2D") << 4;
        QTest::newRow("simplex 3D") << 5;
    }
    void noiseRange()
    {
        QFETCH(int, method);
        float lo = 0, hi = 0;
        for (int i = 0; i < 400; ++i)
            for (int j = 0; j < 400; ++j) {
                const float x = i * 0.0731f - 9.3f, y = j * 0.0617f + 3.1f, z = (i - j) * 0.0213f;
                const float n = noiseAt(method, x, y, z);
                QVERIFY2(std::isfinite(n), qPrintable(QStringLiteral("at %1 %2").arg(x).arg(y)));
                lo = std::min(lo, n);
                hi = std::max(hi, n);
            }
        QVERIFY2(lo >= -1.05f && hi <= 1.05f, qPrintable(QStringLiteral("%1..%2").arg(lo).arg(hi)));
        QVERIFY2(lo < -0.7f && hi > 0.7f, qPrintable(QStringLiteral("%1..%2").arg(lo).arg(hi)));
    }

    // zoff is the third coordinate: it moves the 3D methods and leaves every pixel of the 2D ones.
    void zoffMovesOnlyThe3DMethods_data()
    {
        QTest::addColumn<int>("method");
        QTest::addColumn<bool>("threeD");
        QTest::newRow("Worley 2D") << 0 << false;
        QTest::newRow("Worley 3D") << 1 << true;
        QTest::newRow("classic 2D") << 2 << false;
        QTest::newRow("classic 3D") << 3 << true;
        QTest::newRow("simplex 2D") << 4 << false;
        QTest::newRow("simplex 3D") << 5 << true;
    }
    void zoffMovesOnlyThe3DMethods()
    {
        QFETCH(int, method);
        QFETCH(bool, threeD);
        const std::vector<float> a = picture(patternSettings("noise", method, 1.5, 2.25, -5.8, 6, 4), 40, 30);
        const std::vector<float> b = picture(patternSettings("noise", method, 1.5, 2.25, 0.35, 6, 4), 40, 30);
        int changed = 0;
        for (size_t i = 0; i < a.size(); ++i)
            changed += a[i] != b[i];
        if (threeD)
            QVERIFY2(changed > int(a.size()) * 9 / 10, qPrintable(QString::number(changed)));
        else
            QCOMPARE(changed, 0);
    }

    // F1 is a distance: never negative, and limited to 1 where the nearest feature point is
    // farther away.
    void cellularIsADistanceLimitedToOne_data()
    {
        QTest::addColumn<int>("method");
        QTest::addColumn<float>("x");
        QTest::addColumn<float>("y");
        QTest::addColumn<float>("z");
        // Points found far from their feature points, F1 > 1 before the limit.
        QTest::newRow("2D") << 0 << 15.9225f << 6.9184f << 0.0f;
        QTest::newRow("3D") << 1 << 11.857f << 25.8274f << 1.85f;
    }
    void cellularIsADistanceLimitedToOne()
    {
        QFETCH(int, method);
        QFETCH(float, x);
        QFETCH(float, y);
        QFETCH(float, z);
        const float raw = method == 0 ? PatternEvaluator::cellular2D(x, y) : PatternEvaluator::cellular3D(x, y, z);
        QVERIFY2(raw > 1.0f, qPrintable(QString::number(raw)));
        // xadd = yadd = 0 samples the offset point everywhere.
        const GeneratorSettings far = patternSettings("noise", method, x, y, z, 0, 0);
        QCOMPARE(PatternEvaluator::valueAt(far, 0.3f, 0.8f), 1.0f);

        const std::vector<float> v = picture(patternSettings("noise", method, -3.7, 8.2, z, 9.5, 7.25), 64, 48);
        const auto [lo, hi] = std::minmax_element(v.begin(), v.end());
        QVERIFY(*lo >= 0.0f);
        QVERIFY(*hi <= 1.0f);
        QVERIFY(*lo < 0.1f && *hi > 0.6f);
    }

    // Every cell's feature point lies at the cell's centre moved by its hash's jitter (in
    // sevenths, the z jitter of 3D in sixths); F1 vanishes there.
    void cellularVanishesAtFeaturePoints_data()
    {
        QTest::addColumn<int>("cx");
        QTest::addColumn<int>("cy");
        QTest::addColumn<int>("cz");
        QTest::newRow("origin cell") << 0 << 0 << 1;
        QTest::newRow("positive") << 5 << 11 << 3;
        QTest::newRow("negative") << -4 << -9 << -2;
        QTest::newRow("past the hash period") << 300 << 17 << 292;
        QTest::newRow("mixed") << 42 << -6 << 13;
    }
    void cellularVanishesAtFeaturePoints()
    {
        QFETCH(int, cx);
        QFETCH(int, cy);
        QFETCH(int, cz);
        const long long p2 = permuteExact(permuteExact(mod289Exact(cx)) + mod289Exact(cy));
        const float fx = cx + 0.5f - ((p2 % 7) / 7.0f - 3.0f / 7.0f);
        const float fy = cy + 0.5f - (((p2 / 7) % 7) / 7.0f - 3.0f / 7.0f);
        // Within the rounding of the point's own coordinates.
        const auto near = [](std::initializer_list<float> point) {
            float largest = 1;
            for (float c : point)
                largest = std::max(largest, std::fabs(c));
            return 4 * largest * std::numeric_limits<float>::epsilon();
        };
        QVERIFY2(PatternEvaluator::cellular2D(fx, fy) <= near({fx, fy}),
                 qPrintable(QString::number(PatternEvaluator::cellular2D(fx, fy))));
        // Elsewhere in the cell it does not vanish.
        QVERIFY(PatternEvaluator::cellular2D(fx + 0.3f, fy - 0.2f) > 0.1f);

        const long long p3 = permuteExact(p2 + mod289Exact(cz));
        const long long p3full = permuteExact(permuteExact(permuteExact(mod289Exact(cx)) + mod289Exact(cy)) + mod289Exact(cz));
        QCOMPARE(p3, p3full);
        // The rows avoid hashes at multiples of 7, where the float division may round either way.
        QVERIFY(p3 % 7 != 0);
        const float gx = cx + 0.5f - ((p3 % 7) / 7.0f - 3.0f / 7.0f);
        const float gy = cy + 0.5f - (((p3 / 7) % 7) / 7.0f - 3.0f / 7.0f);
        const float gz = cz + 0.5f - ((p3 / 49) / 6.0f - 5.0f / 12.0f);
        QVERIFY2(PatternEvaluator::cellular3D(gx, gy, gz) <= near({gx, gy, gz}),
                 qPrintable(QString::number(PatternEvaluator::cellular3D(gx, gy, gz))));
        QVERIFY(PatternEvaluator::cellular3D(gx + 0.3f, gy, gz - 0.2f) > 0.1f);
    }

    // 1 at the centre (0.5, 0.5) moved by the offset, falling by 1 per unit; negative further out,
    // which the read-back wraps.
    void radialGradient_data()
    {
        QTest::addColumn<float>("u");
        QTest::addColumn<float>("v");
        QTest::addColumn<double>("xoff");
        QTest::addColumn<double>("yoff");
        QTest::addColumn<float>("value");
        QTest::addColumn<float>("readBack");
        QTest::addColumn<bool>("exact");
        QTest::newRow("centre") << 0.5f << 0.5f << 0.0 << 0.0 << 1.0f << 1.0f << true;
        QTest::newRow("quarter right") << 0.75f << 0.5f << 0.0 << 0.0 << 0.75f << 0.75f << true;
        QTest::newRow("bottom edge") << 0.5f << 0.0f << 0.0 << 0.0 << 0.5f << 0.5f << true;
        QTest::newRow("3-4-5") << 0.875f << 0.0f << 0.0 << 0.0 << 0.375f << 0.375f << true;
        QTest::newRow("offset centre") << 0.25f << 0.75f << -0.25 << 0.25 << 1.0f << 1.0f << true;
        QTest::newRow("offset moves away") << 0.5f << 0.5f << -0.25 << 0.0 << 0.75f << 0.75f << true;
        QTest::newRow("negative wraps") << 0.5f << 0.5f << 1.25 << 0.0 << -0.25f << 0.75f << true;
        QTest::newRow("farther negative") << 0.5f << 0.5f << 0.0 << 1.5 << -0.5f << 0.5f << true;
        QTest::newRow("diagonal") << 0.0f << 0.0f << 0.0 << 0.0 << float(1 - std::sqrt(0.5))
                                  << float(19195.0 / 65536) << false;
    }
    void radialGradient()
    {
        QFETCH(float, u);
        QFETCH(float, v);
        QFETCH(double, xoff);
        QFETCH(double, yoff);
        QFETCH(float, value);
        QFETCH(float, readBack);
        QFETCH(bool, exact);
        // The steps and zoff belong to the other shapes.
        for (double step : {1.0, 3.5}) {
            const GeneratorSettings s = patternSettings("gradient", 0, xoff, yoff, 7, step, -step);
            const float got = PatternEvaluator::valueAt(s, u, v);
            if (exact) {
                QCOMPARE(got, value);
                QCOMPARE(GeneratorOutput::readBack(got), readBack);
            } else {
                QVERIFY2(std::fabs(got - value) < 1e-6f, qPrintable(QString::number(got)));
                QVERIFY(std::fabs(GeneratorOutput::readBack(got) - readBack) <= 1.0f / 65536);
            }
        }
    }

    // The linear ramp spans one palette cycle along (xadd, yadd); the rectangle falls from 1 at the
    // centre to 0 at the picture's edges, faster along the larger step.
    void linearAndRectangle_data()
    {
        QTest::addColumn<int>("shape");
        QTest::addColumn<double>("xadd");
        QTest::addColumn<double>("yadd");
        QTest::addColumn<double>("xoff");
        QTest::addColumn<float>("u");
        QTest::addColumn<float>("v");
        QTest::addColumn<float>("value");
        QTest::newRow("linear diagonal") << 1 << 1.0 << 1.0 << 0.0 << 0.25f << 0.5f << 0.375f;
        QTest::newRow("linear top right") << 1 << 1.0 << 1.0 << 0.0 << 1.0f << 1.0f << 1.0f;
        QTest::newRow("linear horizontal") << 1 << 2.0 << 0.0 << 0.0 << 0.75f << 0.1f << 0.75f;
        QTest::newRow("linear vertical") << 1 << 0.0 << -3.0 << 0.0 << 0.2f << 0.25f << -0.25f;
        QTest::newRow("linear offset") << 1 << 1.0 << 0.0 << 0.5 << 0.75f << 0.9f << 0.25f;
        QTest::newRow("linear no direction") << 1 << 0.0 << 0.0 << 0.0 << 0.75f << 0.9f << 0.0f;
        QTest::newRow("rectangle centre") << 2 << 1.0 << 1.0 << 0.0 << 0.5f << 0.5f << 1.0f;
        QTest::newRow("rectangle edge") << 2 << 1.0 << 1.0 << 0.0 << 1.0f << 0.75f << 0.0f;
        QTest::newRow("rectangle inner") << 2 << 1.0 << 1.0 << 0.0 << 0.625f << 0.25f << 0.5f;
        QTest::newRow("rectangle narrow") << 2 << 2.0 << 1.0 << 0.0 << 0.75f << 0.5f << 0.0f;
        QTest::newRow("rectangle offset") << 2 << 1.0 << 1.0 << 0.25 << 0.75f << 0.5f << 1.0f;
        QTest::newRow("rectangle beyond") << 2 << 1.0 << 4.0 << 0.0 << 0.5f << 0.6875f << -0.5f;
    }
    void linearAndRectangle()
    {
        QFETCH(int, shape);
        QFETCH(double, xadd);
        QFETCH(double, yadd);
        QFETCH(double, xoff);
        QFETCH(float, u);
        QFETCH(float, v);
        QFETCH(float, value);
        QCOMPARE(PatternEvaluator::valueAt(patternSettings("gradient", shape, xoff, 0, 0, xadd, yadd), u, v), value);
    }

    // Rings of both sets at distances k / norm from their centres; each profile is 1 on a ring and
    // 0 halfway between two rings, and the picture is their product.
    void moireeRings_data()
    {
        QTest::addColumn<double>("xadd");
        QTest::addColumn<double>("zoom");
        QTest::addColumn<double>("norm");
        QTest::addColumn<float>("u");
        QTest::addColumn<float>("v");
        QTest::addColumn<float>("value");
        QTest::newRow("common centre") << 0.0 << 1.0 << 4.0 << 0.5f << 0.5f << 1.0f;
        QTest::newRow("on a ring") << 0.0 << 1.0 << 4.0 << 0.75f << 0.5f << 1.0f;
        QTest::newRow("between rings") << 0.0 << 1.0 << 4.0 << 0.625f << 0.5f << 0.0f;
        QTest::newRow("an eighth of the way") << 0.0 << 1.0 << 4.0 << 0.53125f << 0.5f << 0.7119140625f;
        QTest::newRow("zoomed onto a ring") << 0.0 << 2.0 << 4.0 << 1.0f << 0.5f << 1.0f;
        // Centres at x = +-0.25: the centre of the view is a quarter from both.
        QTest::newRow("apart, both on a ring") << 5.0 << 1.0 << 8.0 << 0.5f << 0.5f << 1.0f;
        QTest::newRow("apart, one between") << 5.0 << 1.0 << 2.0 << 0.5f << 0.5f << 0.0f;
    }
    void moireeRings()
    {
        QFETCH(double, xadd);
        QFETCH(double, zoom);
        QFETCH(double, norm);
        QFETCH(float, u);
        QFETCH(float, v);
        QFETCH(float, value);
        GeneratorSettings s = patternSettings("moiree", 0, 0, 0, 0, xadd, 0);
        s.zoom = zoom;
        s.norm = norm;
        QCOMPARE(PatternEvaluator::valueAt(s, u, v), value);
    }

    // The moire follows its six settings and nothing else.
    void moireeSettings_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("moves");
        for (const char *key : {"xoff", "yoff", "zoom", "norm", "xadd", "yadd"})
            QTest::newRow(key) << QString(key) << true;
        for (const char *key : {"zoff", "method", "iterations", "c_r"})
            QTest::newRow(key) << QString(key) << false;
    }
    void moireeSettings()
    {
        QFETCH(QString, key);
        QFETCH(bool, moves);
        GeneratorSettings base = GeneratorSettings::defaults("moiree");
        GeneratorSettings changed = base;
        const std::map<QString, std::function<void(GeneratorSettings &)>> change{
            {"xoff", [](GeneratorSettings &s) { s.xoff = 0.013; }},
            {"yoff", [](GeneratorSettings &s) { s.yoff = -0.021; }},
            {"zoom", [](GeneratorSettings &s) { s.zoom = 1.7; }},
            {"norm", [](GeneratorSettings &s) { s.norm = 47; }},
            {"xadd", [](GeneratorSettings &s) { s.xadd = 2.3; }},
            {"yadd", [](GeneratorSettings &s) { s.yadd = -0.6; }},
            {"zoff", [](GeneratorSettings &s) { s.zoff = 4; }},
            {"method", [](GeneratorSettings &s) { s.method = 2; }},
            {"iterations", [](GeneratorSettings &s) { s.iterations = 9; }},
            {"c_r", [](GeneratorSettings &s) { s.cr = 0.3; }},
        };
        change.at(key)(changed);
        const std::vector<float> a = picture(base, 48, 48), b = picture(changed, 48, 48);
        int differ = 0;
        for (size_t i = 0; i < a.size(); ++i) {
            QVERIFY(a[i] >= 0.0f && a[i] <= 1.0f);
            differ += a[i] != b[i];
        }
        if (moves)
            QVERIFY2(differ > int(a.size()) / 2, qPrintable(QString::number(differ)));
        else
            QCOMPARE(differ, 0);
    }

    // Every built-in preset of the pattern generators makes a finite picture within the values
    // its read-back can carry, and not a flat one.
    void presets_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("number");
        for (const QString name : {"noise", "gradient", "moiree"}) {
            const int count = SettingsStore::presetCount(name);
            QVERIFY(count > 0);
            for (int n = 1; n <= count; ++n)
                QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(name).arg(n))) << name << n;
        }
    }
    void presets()
    {
        QFETCH(QString, name);
        QFETCH(int, number);
        const GeneratorSettings s = GeneratorSettings::fromPairs(
            name, SettingsText::parse(SettingsStore::presetText(name, number), name));
        const std::vector<float> v = picture(s, 96, 64);
        for (float x : v) {
            QVERIFY(std::isfinite(x));
            QVERIFY(x <= 1.0f && x > -1.0f);
        }
        const auto [lo, hi] = std::minmax_element(v.begin(), v.end());
        QVERIFY(*hi - *lo > 0.2f);
    }

    // The settings' extremes still give values the read-back can encode, never a NaN.
    void extremeSettingsStayFinite_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("method");
        QTest::addColumn<double>("offset");
        QTest::addColumn<double>("step");
        QTest::addColumn<double>("scale"); // zoom and norm
        const QList<QList<double>> extremes{{1e9, 1e9, 1e12}, {-1e9, -1e9, 1e-9}, {0, 0, 1e-9}, {-1e9, 1e-9, 1e12}};
        for (const auto &e : extremes) {
            for (int m = 0; m < 6; ++m)
                QTest::addRow("noise %d %g %g", m, e[0], e[1]) << "noise" << m << e[0] << e[1] << e[2];
            for (int m = 0; m < 3; ++m)
                QTest::addRow("gradient %d %g %g", m, e[0], e[1]) << "gradient" << m << e[0] << e[1] << e[2];
            QTest::addRow("moiree %g %g %g", e[0], e[1], e[2]) << "moiree" << 0 << e[0] << e[1] << e[2];
        }
    }
    void extremeSettingsStayFinite()
    {
        QFETCH(QString, name);
        QFETCH(int, method);
        QFETCH(double, offset);
        QFETCH(double, step);
        QFETCH(double, scale);
        GeneratorSettings s = patternSettings(name, method, offset, -offset, offset, step, -step);
        s.zoom = scale;
        s.norm = scale;
        for (float x : picture(s, 16, 9)) {
            QVERIFY(std::isfinite(x));
            QVERIFY(x <= 1.0f);
        }
    }

    // The whole picture is the one-pixel formula at every pixel's texture coordinate, for square,
    // wide and tall pictures.
    void valueAtMatchesValues_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("method");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        const QList<QPair<int, int>> sizes{{37, 37}, {61, 23}, {19, 50}};
        for (const auto &size : sizes) {
            for (int m = 0; m < 6; ++m)
                QTest::addRow("noise %d %dx%d", m, size.first, size.second)
                    << "noise" << m << size.first << size.second;
            for (int m = 0; m < 3; ++m)
                QTest::addRow("gradient %d %dx%d", m, size.first, size.second)
                    << "gradient" << m << size.first << size.second;
            QTest::addRow("moiree %dx%d", size.first, size.second) << "moiree" << 0 << size.first << size.second;
        }
    }
    void valueAtMatchesValues()
    {
        QFETCH(QString, name);
        QFETCH(int, method);
        QFETCH(int, width);
        QFETCH(int, height);
        GeneratorSettings s = patternSettings(name, method, 3.25, -1.5, 0.75, 5.5, -4.25);
        if (name == "gradient")
            s = patternSettings(name, method, 0.1, -0.2, 0, 1.5, 0.75);
        const GeneratorGrid grid{width, height};
        const std::vector<float> v = picture(s, width, height);
        QCOMPARE(int(v.size()), width * height);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                float u, t;
                grid.texCoord(x, y, u, t);
                QCOMPARE(v[size_t(y * width + x)], PatternEvaluator::valueAt(s, u, t));
            }
    }

    // A method beyond the list takes the shader the renderer picks for it.
    void methodsBeyondTheListFollowTheShader_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("method");
        QTest::addColumn<int>("sameAs");
        QTest::newRow("noise below") << "noise" << -3 << 0;
        QTest::newRow("noise above") << "noise" << 6 << 5;
        QTest::newRow("gradient below") << "gradient" << -1 << 0;
        QTest::newRow("gradient above") << "gradient" << 17 << 2;
    }
    void methodsBeyondTheListFollowTheShader()
    {
        QFETCH(QString, name);
        QFETCH(int, method);
        QFETCH(int, sameAs);
        const GeneratorSettings beyond = patternSettings(name, method, 0.3, 0.2, 0.1, 2.5, 1.5);
        const GeneratorSettings listed = patternSettings(name, sameAs, 0.3, 0.2, 0.1, 2.5, 1.5);
        QCOMPARE(GeneratorGL::fragmentShader(beyond), GeneratorGL::fragmentShader(listed));
        QCOMPARE(picture(beyond, 20, 20), picture(listed, 20, 20));
    }

    void otherGeneratorsAreRefused()
    {
        GeneratorSettings s = GeneratorSettings::defaults("mandelbrot");
        std::vector<float> out;
        QVERIFY_EXCEPTION_THROWN(PatternEvaluator::values(s, GeneratorGrid{4, 4}, out), DescribedException);
        QVERIFY_EXCEPTION_THROWN(PatternEvaluator::valueAt(s, 0.5f, 0.5f), DescribedException);
    }

    void emptyPicture()
    {
        std::vector<float> out{1, 2, 3};
        PatternEvaluator::values(GeneratorSettings::defaults("noise"), GeneratorGrid{0, 5}, out);
        QVERIFY(out.empty());
    }
};

QTEST_GUILESS_MAIN(TestPatternEvaluator)
#include "tst_patternevaluator.moc"
