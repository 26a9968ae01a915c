#pragma once

#include "storage/settingstext.h"

#include <QString>
#include <QStringList>

// The settings of one image generator, by its settings name ("mandelbrot", "julia", "apollonian",
// "ifs", "plasma", "noise", "gradient", "moiree"). One struct serves every generator: each name
// reads and writes only its own keys (its SettingsFields table), the rest keep their defaults.
// The same values drive the preview, the off-screen render, the processor's evaluation, the
// command line and the macro step, so a picture never depends on which face made it.
struct GeneratorSettings
{
    // What the result of a render becomes in the document.
    enum Target : int { Indexed = 0, Continuous = 1, Rgb = 2 };
    // Arithmetic of the escape-time generators; Single is what the shaders define.
    enum Precision : int { Single = 0, Double = 1 };

    QString name = QStringLiteral("mandelbrot");

    // Escape-time generators ("Computation" and "View" groups, the Julia page's constant).
    int iterations = 70;   // "iterations" (uniform iter)
    double norm = 60;      // "norm": iterations per palette cycle (uniform norm)
    double xoff = 0;       // "xoff", "yoff": uniform off (vec2; the x and y of vec4 off for patterns)
    double yoff = 0;
    double zoom = 1;       // "zoom"
    double cr = -0.6;      // "c_r", "c_i": the Julia constant (uniform c)
    double ci = 0.6;

    // Pattern generators ("Offset" and "Steps" groups).
    int method = 0;        // "method": noise method, gradient shape
    double zoff = 0;       // "zoff": z of uniform off
    double xadd = 1;       // "xadd", "yadd": uniform scale (x, y)
    double yadd = 1;

    // Every generator: the output ("xsize", "ysize", "target").
    int xsize = 512;
    int ysize = 512;
    int target = Continuous;

    // Beyond the shaders, for the escape-time generators; both off by default, and with both off
    // the picture is exactly the shaders' ("precision", "smooth").
    int precision = Single;
    bool smooth = false;

    // The eight settings names in menu order.
    static const QStringList &names();
    static bool exists(const QString &name);
    // The initial values of a generator's dialog before any preset is applied: the shaders'
    // defaults (70 iterations for the Mandelbrot set, 60 for the Julia family).
    static GeneratorSettings defaults(const QString &name);
    // base with the pairs of name's table applied in order; keys of no field are ignored, a
    // value that cannot be read throws DescribedException "Invalid settings". Throws for an
    // unknown name.
    static GeneratorSettings fromPairs(const QString &name, const SettingsText::Pairs &pairs,
                                       const GeneratorSettings &base);
    static GeneratorSettings fromPairs(const QString &name, const SettingsText::Pairs &pairs)
    {
        return fromPairs(name, pairs, defaults(name));
    }
    // name's keys in table order, as presets, settings files and macro steps keep them.
    SettingsText::Pairs toPairs() const;
    QString settingsText() const { return SettingsText::formatLines(toPairs()); }

    // The generators of the escape-time family: Mandelbrot and the Julia-page dialogs.
    bool isEscapeTime() const;
    // False for the Apollonian gasket, which colours its pixels by itself.
    bool usesPalette() const;
    // The macro step of the generator's OK: "image_generate_" + name.
    QString macroStep() const { return QStringLiteral("image_generate_") + name; }
};
