#pragma once

// Internal to the palette file formats: the reader and writer of every format on bytes in memory, and
// the helpers they share. importPalette() and exportPalette() do the file work around them; the fuzz
// targets call the byte readers directly.

#include "formats/exportoptions.h"
#include "palette/palette.h"

#include <QByteArray>
#include <QIODevice>
#include <QString>
#include <QStringList>

#include <memory>

class QTextDecoder;

namespace PaletteFormatIO {

// Files larger than this are refused before they are read: no palette comes near it, and it bounds
// what a hostile file can make a reader hold.
constexpr qint64 maxFileSize = 64 * 1024 * 1024;

// The title of the failures of a reader.
QString readerTitle(int format);

// The lines of a text palette as they are read: UTF-8 unless a byte order mark says otherwise, the
// mark dropped; split at "\n" with one "\r" before it dropped, and no empty last line after a final
// "\n". Only the line at hand and one block of the file are held, never the whole text.
class TextLines
{
public:
    explicit TextLines(QIODevice &device);
    ~TextLines();
    // The next line; false at the end. Reading stops past maxFileSize bytes.
    bool next(QString &line);
    qint64 bytesRead() const { return m_total; }

private:
    bool fill();

    QIODevice &m_device;
    std::unique_ptr<QTextDecoder> m_decoder;
    QString m_text;
    int m_pos = 0;
    qint64 m_total = 0;
};

// Whether the text starting with these bytes (in any encoding with a byte order mark) starts with
// "JASC-PAL": such a file is a JASC palette whatever its name says.
bool looksLikeJasc(const QByteArray &lead);

// Reads data, the contents of the file at path (used in messages only), in the given format and
// appends to palette. Throws DescribedException; colours appended before a failure stay.
void readPaletteBytes(int format, const QByteArray &data, const QString &path, Palette<uint> &palette);
// The same from a device opened for reading: text formats are read line by line as they come.
void readPaletteDevice(int format, QIODevice &device, const QString &path, Palette<uint> &palette);
// The bytes of palette in the given format; path gives the file name the HTML table shows.
QByteArray paletteBytes(int format, const Palette<uint> &palette, const QString &path,
                        const ExportOptions &options);

void readGimp(TextLines &lines, const QString &path, Palette<uint> &palette);
void readPhotoshop(const QByteArray &data, const QString &path, Palette<uint> &palette);
void readFractint(TextLines &lines, const QString &path, Palette<uint> &palette);
void readMicrosoft(const QByteArray &data, const QString &path, Palette<uint> &palette);
void readGif(const QByteArray &data, const QString &path, Palette<uint> &palette);
void readHexLines(TextLines &lines, const QString &path, Palette<uint> &palette);
void readHexOneLine(TextLines &lines, const QString &path, Palette<uint> &palette);
void readJasc(TextLines &lines, const QString &path, Palette<uint> &palette);
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

// Blank, tab, carriage return, newline, vertical tab, form feed.
bool isWhite(QChar c);
// The first tokens of line between runs of white, at most max of them, as views into line: a
// reader of millions of lines allocates nothing per line for them. Returns their count.
int firstTokens(QStringView line, QStringView *tokens, int max);
// Trims blanks, tabs, carriage returns and newlines only.
QString trimLineBreaksAndBlanks(const QString &text);
// An optional "+" or "-", then one or more ASCII digits; huge values saturate, they only need to
// compare as out of range.
bool parseDecimal(QStringView token, long long &value);
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
