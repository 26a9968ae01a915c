#pragma once

// Internal to the palette file formats: the reader and writer of every format on bytes in memory, and
// the helpers they share. importPalette() and exportPalette() do the file work around them; the fuzz
// targets call the byte readers directly.

#include "formats/exportoptions.h"
#include "palette/palette.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace PaletteFormatIO {

// Files larger than this are refused before they are read: no palette comes near it, and it bounds
// what a hostile file can make a reader hold.
constexpr qint64 maxFileSize = 64 * 1024 * 1024;

// The title of the failures of a reader.
QString readerTitle(int format);

// Reads data, the contents of the file at path (used in messages only), in the given format and
// appends to palette. Throws DescribedException; colours appended before a failure stay.
void readPaletteBytes(int format, const QByteArray &data, const QString &path, Palette<uint> &palette);
// The bytes of palette in the given format; path gives the file name the HTML table shows.
QByteArray paletteBytes(int format, const Palette<uint> &palette, const QString &path,
                        const ExportOptions &options);

void readGimp(const QByteArray &data, const QString &path, Palette<uint> &palette);
void readPhotoshop(const QByteArray &data, const QString &path, Palette<uint> &palette);
void readFractint(const QByteArray &data, const QString &path, Palette<uint> &palette);
void readMicrosoft(const QByteArray &data, const QString &path, Palette<uint> &palette);
void readGif(const QByteArray &data, const QString &path, Palette<uint> &palette);
void readHexLines(const QByteArray &data, const QString &path, Palette<uint> &palette);
void readHexOneLine(const QByteArray &data, const QString &path, Palette<uint> &palette);
void readJasc(const QByteArray &data, const QString &path, Palette<uint> &palette);
void readAse(const QByteArray &data, const QString &path, Palette<uint> &palette);
void readAct(const QByteArray &data, const QString &path, Palette<uint> &palette);

QByteArray writeGimp(const Palette<uint> &palette);
QByteArray writePhotoshop(const Palette<uint> &palette);
QByteArray writeFractint(const Palette<uint> &palette);
QByteArray writeMicrosoft(const Palette<uint> &palette);
QByteArray writeGif(const Palette<uint> &palette, const ExportOptions &options);
QByteArray writeHtml(const Palette<uint> &palette, const QString &path);
QByteArray writeCss(const Palette<uint> &palette, const ExportOptions &options);
QByteArray writeJavaScript(const Palette<uint> &palette, const ExportOptions &options);
QByteArray writeHexLines(const Palette<uint> &palette);
QByteArray writeHexOneLine(const Palette<uint> &palette);
QByteArray writeJasc(const Palette<uint> &palette);
QByteArray writeAse(const Palette<uint> &palette);
QByteArray writeAct(const Palette<uint> &palette);

// --- shared helpers ---

// The text of a text palette: UTF-8 unless a byte order mark says otherwise, the mark dropped.
QString decodeText(const QByteArray &data);
// The lines of text as a line-reading text stream gives them: split at "\n", one "\r" before it
// dropped, and no empty last line after a final "\n".
QStringList textLines(const QString &text);
// Blank, tab, carriage return, newline, vertical tab, form feed.
bool isWhite(QChar c);
QStringList splitAtWhite(const QString &line);
// Trims blanks, tabs, carriage returns and newlines only.
QString trimLineBreaksAndBlanks(const QString &text);
// An optional "+" or "-", then one or more ASCII digits; huge values saturate, they only need to
// compare as out of range.
bool parseDecimal(const QString &token, long long &value);
// Clamps r, g, b into 0..255 and writes the range warning to stderr once when any was outside.
void clampComponents(long long &r, long long &g, long long &b);

// The 8-bit component a file gets: the 16-bit component shifted right by 8 (components above 65535
// count as 65535).
inline uint byteOf(uint component)
{
    return (component > 65535u ? 65535u : component) >> 8;
}
inline uint wordOf(uint component)
{
    return component > 65535u ? 65535u : component;
}
inline RGBAColor<uint> colorFromBytes(uint r, uint g, uint b, uint a = 65535)
{
    return {r << 8, g << 8, b << 8, a};
}
QString hexByte(uint byte);
// "rrggbb" of the 8-bit components, lower case.
QString hexColor(const RGBAColor<uint> &c);

void appendU16BE(QByteArray &out, uint value);
void appendU16LE(QByteArray &out, uint value);
void appendU32BE(QByteArray &out, uint32_t value);
void appendU32LE(QByteArray &out, uint32_t value);

[[noreturn]] void failExport(const QString &message);

} // namespace PaletteFormatIO
