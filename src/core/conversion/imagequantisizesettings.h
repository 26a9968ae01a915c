#pragma once

#include "palette/palette.h"
#include "storage/settingstext.h"

#include <QString>
#include <QStringList>

class ImageQuantisizer;

// The settings of the quantise dialog, "image_quantisize". The list positions go to the engine
// as they stand.
struct ImageQuantisizeSettings
{
    static const QString settingsName; // "image_quantisize"

    int format = 0;  // "format": 0 "Indexed", 1 "Continuous"
    int palette = 0; // "palette": position in paletteTexts()
    int bwThreshold = 128;
    QString dbPalette;
    QString filePalette;
    int dither = 0; // "dither": position in ditherTexts(), the engine's dither number
    // The quantised source's method and palette size. The dialog does not store them; they are
    // read from the keys "method" and "colors" when present (the command line gives them so).
    int method = 0; // 0..6; the dialog offers 0..3
    int colors = 256;

    // Keys missing from pairs keep the values of base. A list position or method the lists do not
    // have, or a value that is no number, throws "Invalid settings"; the threshold is clamped to
    // 0..255 and the palette size to 1..65536, as their spin boxes would.
    static ImageQuantisizeSettings fromPairs(const SettingsText::Pairs &pairs,
                                             const ImageQuantisizeSettings &base);
    static ImageQuantisizeSettings fromPairs(const SettingsText::Pairs &pairs);
    // The stored keys only; with extra, "method" and "colors" follow them, as a macro step needs
    // them to quantise alike.
    SettingsText::Pairs toPairs(bool extra = false) const;

    // Sets the engine's palette source, format and dither method. given is what position 2
    // ("Current palette" or "Last palette") stands for.
    void configure(ImageQuantisizer &engine, const Palette<uint> &given) const;

    static QStringList paletteTexts(bool lastPalette);
    static QStringList methodTexts();
    static QStringList ditherTexts();
    static QStringList formatTexts();
};
