#pragma once

#include "palette/palette.h"
#include "storage/settingstext.h"

#include <QString>
#include <QStringList>

class ImageConverter;

// The settings of the image conversion dialog, "image_format_convert". Every value is a position
// in the dialog's lists, which the engine takes as they stand.
struct ImageConvertSettings
{
    static const QString settingsName; // "image_format_convert"

    int mode = 0;    // "mode": 0 "Indexed", 1 "Continuous"
    int palette = 0; // "palette": 0 grayscale, 1 extended grayscale, 2 current or last, 3 DB, 4 file
    bool interpolate = false;
    QString dbPalette;   // "db_palette": full name "author/palette"
    QString filePalette; // "file_palette": path
    // Batch application only.
    QString extension = QStringLiteral(".png");
    QString folder;

    // Keys missing from pairs keep the values of base. A list position the list does not have is
    // refused with "Invalid settings", as is a value that is no number.
    static ImageConvertSettings fromPairs(const SettingsText::Pairs &pairs, const ImageConvertSettings &base);
    static ImageConvertSettings fromPairs(const SettingsText::Pairs &pairs);
    // The dialog's keys; the batch keys only when batch is set.
    SettingsText::Pairs toPairs(bool batch = false) const;

    // Chooses the engine's palette source and format. given is what position 2 stands for.
    void configure(ImageConverter &engine, const Palette<uint> &given) const;

    // The texts of the dialog's lists, in the order of their positions.
    static QStringList paletteTexts(bool lastPalette);
    static QStringList modeTexts();
    // The file extensions of batch application.
    static QStringList extensions();
};
