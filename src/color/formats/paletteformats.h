#pragma once

#include "formats/exportoptions.h"
#include "palette/palette.h"

#include <QString>
#include <QStringList>

// Palette file formats by number. The words that select them are file extensions or names.
enum PaletteFormat : int {
    FormatUnknown = 0,
    FormatGimp = 1,
    FormatPhotoshop = 2,
    FormatFractint = 3,
    FormatMicrosoft = 4,
    FormatGif = 5,
    FormatHtml = 6,
    FormatCss = 7,
    FormatJavaScript = 8,
    FormatHexLines = 9,
    FormatHexOneLine = 10,
    FormatJasc = 11,
    FormatAse = 12,
    FormatAct = 13,
    FormatLast = FormatAct
};

// The format number of a word (compared in lower case); FormatUnknown for anything else.
int formatFromWord(const QString &word);
// The file extension, without the dot, that "Save palette as..." gives a format ("gpl", "jasc",
// ...); formatFromWord of it is the format again. Empty for FormatUnknown and unknown numbers.
QString extensionOfFormat(int format);

// Appends the colours read from path to palette. Throws DescribedException on failure; colours
// appended before the failure stay. A ".pal" file whose first bytes are "JASC-PAL" is read as
// JASC even when the RIFF format was asked for.
void importPalette(const QString &path, Palette<uint> &palette, int format);

// Reads a palette file as "Open palette..." does: the format comes from the extension (one that
// names no format is refused: "Could not load", "Unable to load palette NAME.\nUnrecognized
// format."), and the file name is recorded in the properties.
Palette<uint> openPaletteFile(const QString &path);

// Writes palette to path through QSaveFile, so a failure leaves an existing file untouched.
void exportPalette(const QString &path, const Palette<uint> &palette, int format,
                   const ExportOptions &options = {});

// Records where a palette came from after an import from path: "file.ext" = the name with
// extension, "file" and "name" = that name without its last extension.
void recordPaletteFileName(Palette<uint> &palette, const QString &path);

// The filters of the palette open dialog, in order.
QStringList paletteOpenFilters();
