#include "formats/paletteformats.h"

#include "palette/describedexception.h"
#include "formats/writefileatomically.h"
#include "formats/paletteformatio.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QTextCodec>
#include <QTextDecoder>

#include <cstdio>

namespace PaletteFormatIO {

namespace {
const QString importTitle = QStringLiteral("Error on palette import");
const QString exportTitle = QStringLiteral("Error on palette export");
} // namespace

QString readerTitle(int format)
{
    switch (format) {
    case FormatGimp:
        return QStringLiteral("Error on parsing GIMP palette");
    case FormatPhotoshop:
        return QStringLiteral("Error on parsing Photoshop palette");
    case FormatFractint:
        return QStringLiteral("Error on parsing Fractint palette");
    case FormatMicrosoft:
        return QStringLiteral("Error on parsing Microsoft palette");
    case FormatGif:
        return QStringLiteral("Error on parsing GIF image");
    case FormatHexLines:
    case FormatHexOneLine:
        return QStringLiteral("Error on parsing HexText palette");
    case FormatJasc:
        return QStringLiteral("Error on parsing JASC palette");
    case FormatAse:
        return QStringLiteral("Error on parsing ASE palette");
    case FormatAct:
        return QStringLiteral("Error on parsing ACT palette");
    default:
        return importTitle;
    }
}

namespace {

[[noreturn]] void failTooLarge(int format, const QString &path)
{
    throw DescribedException(readerTitle(format), QStringLiteral("The file\n'") + path +
                                                      QStringLiteral("'\nis too large for a palette."));
}

bool isTextFormat(int format)
{
    return format == FormatGimp || format == FormatFractint || format == FormatHexLines ||
           format == FormatHexOneLine || format == FormatJasc;
}

void readText(int format, QIODevice &device, const QString &path, Palette<uint> &palette)
{
    TextLines lines(device);
    switch (format) {
    case FormatGimp:
        readGimp(lines, path, palette);
        break;
    case FormatFractint:
        readFractint(lines, path, palette);
        break;
    case FormatHexLines:
        readHexLines(lines, path, palette);
        break;
    case FormatHexOneLine:
        readHexOneLine(lines, path, palette);
        break;
    default:
        readJasc(lines, path, palette);
        break;
    }
    if (lines.bytesRead() > maxFileSize)
        failTooLarge(format, path);
}

} // namespace

bool looksLikeJasc(const QByteArray &lead)
{
    QTextCodec *codec = QTextCodec::codecForUtfText(lead, QTextCodec::codecForMib(106));
    return codec->toUnicode(lead).startsWith(QLatin1String("JASC-PAL"));
}

namespace {

// The formats that are neither text nor binary palettes fail here, before anything is read.
void refuseUnreadable(int format)
{
    switch (format) {
    case FormatHtml:
    case FormatCss:
    case FormatJavaScript:
        throw DescribedException(importTitle, QStringLiteral("Reading this format is not supported."));
    case FormatUnknown:
        throw DescribedException(importTitle,
                                 QStringLiteral("The format to import from is not known or supported."));
    default:
        if (format < FormatGimp || format > FormatLast)
            throw DescribedException(
                importTitle, QStringLiteral("The format to import from is either not known or not supported."));
    }
}

void readBinary(int format, const QByteArray &data, const QString &path, Palette<uint> &palette)
{
    switch (format) {
    case FormatPhotoshop:
        return readPhotoshop(data, path, palette);
    case FormatMicrosoft:
        return readMicrosoft(data, path, palette);
    case FormatGif:
        return readGif(data, path, palette);
    case FormatAse:
        return readAse(data, path, palette);
    default:
        return readAct(data, path, palette);
    }
}

} // namespace

void readPaletteBytes(int format, const QByteArray &data, const QString &path, Palette<uint> &palette)
{
    refuseUnreadable(format);
    if (format == FormatMicrosoft && looksLikeJasc(data.left(64)))
        format = FormatJasc;
    if (!isTextFormat(format))
        return readBinary(format, data, path, palette);
    QBuffer device;
    device.setData(data);
    device.open(QIODevice::ReadOnly);
    readText(format, device, path, palette);
}

void readPaletteDevice(int format, QIODevice &device, const QString &path, Palette<uint> &palette)
{
    refuseUnreadable(format);
    if (format == FormatMicrosoft && looksLikeJasc(device.peek(64)))
        format = FormatJasc;
    if (isTextFormat(format))
        return readText(format, device, path, palette);
    // The binary formats are small by nature and read whole, within the bound on palette files,
    // in blocks: a device without a size gets no buffer of the whole bound.
    QByteArray data;
    char block[1 << 16];
    for (;;) {
        const qint64 got = device.read(block, sizeof block);
        if (got <= 0)
            break;
        if (qint64(data.size()) + got > maxFileSize)
            failTooLarge(format, path);
        data.append(block, int(got));
    }
    readBinary(format, data, path, palette);
}

QByteArray paletteBytes(int format, const Palette<uint> &palette, const QString &path,
                        const ExportOptions &options)
{
    switch (format) {
    case FormatGimp:
        return writeGimp(palette);
    case FormatPhotoshop:
        return writePhotoshop(palette);
    case FormatFractint:
        return writeFractint(palette);
    case FormatMicrosoft:
        return writeMicrosoft(palette);
    case FormatGif:
        return writeGif(palette, options);
    case FormatHtml:
        return writeHtml(palette, path);
    case FormatCss:
        return writeCss(palette, options);
    case FormatJavaScript:
        return writeJavaScript(palette, options);
    case FormatHexLines:
        return writeHexLines(palette);
    case FormatHexOneLine:
        return writeHexOneLine(palette);
    case FormatJasc:
        return writeJasc(palette);
    case FormatAse:
        return writeAse(palette);
    case FormatAct:
        return writeAct(palette);
    default:
        failExport(QStringLiteral("The format to export into is not known or supported."));
    }
}

TextLines::TextLines(QIODevice &device) : m_device(device)
{
    // The byte order mark, if any, is among the first four bytes.
    QTextCodec *codec = QTextCodec::codecForUtfText(device.peek(4), QTextCodec::codecForMib(106));
    m_decoder.reset(codec->makeDecoder());
}

TextLines::~TextLines() = default;

bool TextLines::fill()
{
    char block[1 << 16];
    // Past the bound on palette files (only a device without a size gets there) reading stops.
    const qint64 got = m_device.read(block, qMin<qint64>(sizeof block, maxFileSize + 1 - m_total));
    if (got <= 0)
        return false;
    m_total += got;
    m_text = m_text.mid(m_pos) + m_decoder->toUnicode(block, int(got));
    m_pos = 0;
    return true;
}

bool TextLines::next(QString &line)
{
    for (;;) {
        const int end = m_text.indexOf(QLatin1Char('\n'), m_pos);
        if (end >= 0) {
            line = m_text.mid(m_pos, end - m_pos);
            m_pos = end + 1;
            break;
        }
        if (!fill()) {
            if (m_pos >= m_text.size())
                return false;
            line = m_text.mid(m_pos);
            m_pos = m_text.size();
            break;
        }
    }
    if (line.endsWith(QLatin1Char('\r')))
        line.chop(1);
    return true;
}

bool isWhite(QChar c)
{
    switch (c.unicode()) {
    case ' ':
    case '\t':
    case '\r':
    case '\n':
    case '\v':
    case '\f':
        return true;
    default:
        return false;
    }
}

QString trimLineBreaksAndBlanks(const QString &text)
{
    auto trimmable = [](QChar c) {
        return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\r') ||
               c == QLatin1Char('\n');
    };
    int begin = 0;
    int end = text.size();
    while (begin < end && trimmable(text.at(begin)))
        ++begin;
    while (end > begin && trimmable(text.at(end - 1)))
        --end;
    return text.mid(begin, end - begin);
}

int firstTokens(QStringView line, QStringView *tokens, int max)
{
    int count = 0;
    int start = -1;
    for (int i = 0; i <= line.size() && count < max; ++i) {
        const bool white = i == line.size() || isWhite(line.at(i));
        if (white && start >= 0) {
            tokens[count++] = line.mid(start, i - start);
            start = -1;
        } else if (!white && start < 0) {
            start = i;
        }
    }
    return count;
}

bool parseDecimal(QStringView token, long long &value)
{
    int i = 0;
    bool negative = false;
    if (i < token.size() && (token.at(i) == QLatin1Char('+') || token.at(i) == QLatin1Char('-'))) {
        negative = token.at(i) == QLatin1Char('-');
        ++i;
    }
    if (i == token.size())
        return false;
    long long v = 0;
    for (; i < token.size(); ++i) {
        const ushort c = token.at(i).unicode();
        if (c < '0' || c > '9')
            return false;
        if (v < 1000000000LL)
            v = v * 10 + (c - '0');
    }
    value = negative ? -v : v;
    return true;
}

void clampComponents(long long &r, long long &g, long long &b)
{
    bool outside = false;
    for (long long *c : {&r, &g, &b}) {
        if (*c < 0 || *c > 255) {
            outside = true;
            *c = *c < 0 ? 0 : 255;
        }
    }
    if (outside) {
        std::fputs("Warning: a component is outside the range of 0-255.\n", stderr);
        std::fflush(stderr);
    }
}

QString hexByte(uint byte)
{
    return QStringLiteral("%1").arg(byte & 0xFF, 2, 16, QLatin1Char('0'));
}

QString hexColor(const RGBAColor<uint> &c)
{
    return hexByte(byteOf(c.r)) + hexByte(byteOf(c.g)) + hexByte(byteOf(c.b));
}

void appendU16BE(QByteArray &out, uint value)
{
    out.append(char((value >> 8) & 0xFF));
    out.append(char(value & 0xFF));
}

void appendU16LE(QByteArray &out, uint value)
{
    out.append(char(value & 0xFF));
    out.append(char((value >> 8) & 0xFF));
}

void appendU32BE(QByteArray &out, uint32_t value)
{
    appendU16BE(out, value >> 16);
    appendU16BE(out, value & 0xFFFF);
}

void appendU32LE(QByteArray &out, uint32_t value)
{
    appendU16LE(out, value & 0xFFFF);
    appendU16LE(out, value >> 16);
}

void failExport(const QString &message)
{
    throw DescribedException(exportTitle, message);
}

} // namespace PaletteFormatIO

using namespace PaletteFormatIO;

int formatFromWord(const QString &word)
{
    static const struct
    {
        const char *word;
        int format;
    } words[] = {
        {"gimp", FormatGimp},       {"gpl", FormatGimp},
        {"adobe", FormatPhotoshop}, {"photoshop", FormatPhotoshop},
        {"aco", FormatPhotoshop},   {"fractint", FormatFractint},
        {"map", FormatFractint},    {"microsoft", FormatMicrosoft},
        {"pal", FormatMicrosoft},   {"gif", FormatGif},
        {"html", FormatHtml},       {"css", FormatCss},
        {"js", FormatJavaScript},   {"hextxt", FormatHexLines},
        {"hex", FormatHexOneLine},  {"jasc", FormatJasc},
        {"ase", FormatAse},         {"act", FormatAct},
    };
    const QString lower = word.toLower();
    for (const auto &w : words)
        if (lower == QLatin1String(w.word))
            return w.format;
    return FormatUnknown;
}

QString extensionOfFormat(int format)
{
    static const char *const extensions[] = {"",    "gpl", "aco",    "map", "pal",  "gif", "html",
                                             "css", "js",  "hextxt", "hex", "jasc", "ase", "act"};
    static_assert(sizeof extensions / sizeof *extensions == FormatLast + 1, "one extension a format");
    if (format <= FormatUnknown || format > FormatLast)
        return QString();
    return QString::fromLatin1(extensions[format]);
}

void importPalette(const QString &path, Palette<uint> &palette, int format)
{
    // An unusable format number is reported before the file is touched.
    if (format < FormatGimp || format > FormatLast || format == FormatHtml || format == FormatCss ||
        format == FormatJavaScript) {
        readPaletteBytes(format, QByteArray(), path, palette);
        return;
    }
    // The RIFF reader has always reported an unopenable file under the Photoshop title.
    const QString openTitle = readerTitle(format == FormatMicrosoft ? FormatPhotoshop : format);
    QFile file(path);
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly))
        throw DescribedException(openTitle,
                                 QStringLiteral("Could not open file\n'") + path + QStringLiteral("'."));
    if (!file.isSequential() && file.size() > maxFileSize)
        failTooLarge(format, path);
    readPaletteDevice(format, file, path, palette);
}

Palette<uint> openPaletteFile(const QString &path)
{
    const int format = formatFromWord(QFileInfo(path).suffix());
    if (format == FormatUnknown)
        throw DescribedException(QStringLiteral("Could not load"),
                                 QStringLiteral("Unable to load palette %1.\nUnrecognized format.")
                                     .arg(QFileInfo(path).fileName()));
    Palette<uint> palette;
    importPalette(path, palette, format);
    recordPaletteFileName(palette, path);
    return palette;
}

void exportPalette(const QString &path, const Palette<uint> &palette, int format,
                   const ExportOptions &options)
{
    // Everything that can fail before the destination is opened does so here, so a refused export
    // never touches an existing file.
    const QByteArray bytes = paletteBytes(format, palette, path, options);
    const FileWriteResult written = writeFileAtomically(path, bytes);
    if (written.stage == FileWriteResult::NotOpened)
        failExport(QStringLiteral("The destination file\n'") + path + QStringLiteral("'\ncould not be built.\n") +
                   written.error);
    // The file was there to write, and the disk or the commit failed: the old file is kept.
    if (!written.ok())
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Unable to save palette under\n") + path + QStringLiteral(".\n") +
                                     written.error);
}

void recordPaletteFileName(Palette<uint> &palette, const QString &path)
{
    QString name = path;
    name.replace(QLatin1Char('\\'), QLatin1Char('/'));
    name = name.mid(name.lastIndexOf(QLatin1Char('/')) + 1);
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    const QString base = dot >= 0 ? name.left(dot) : name;
    palette.setProperty(PaletteFileExt, name);
    palette.setProperty(PaletteFile, base);
    palette.setProperty(PaletteName, base);
}

QStringList paletteOpenFilters()
{
    // The long-standing list comes first and in its order; one filter for every extension that is
    // read joins it before "All files", and the formats added later follow.
    return {
        QStringLiteral("All palette files (*.gimp *.gpl *.aco *.map *.fractint *.pal)"),
        QStringLiteral("GIMP palettes (*.gimp *.gpl)"),
        QStringLiteral("Adobe palettes (*.aco)"),
        QStringLiteral("Fractint palettes (*.map *.fractint)"),
        QStringLiteral("Microsoft palettes (*.pal)"),
        QStringLiteral("All readable formats (*.gimp *.gpl *.aco *.map *.fractint *.pal *.jasc *.ase *.act *.gif "
                       "*.hex *.hextxt)"),
        QStringLiteral("All files (* *.*)"),
        QStringLiteral("JASC palettes (*.pal)"),
        QStringLiteral("Adobe swatch exchange (*.ase)"),
        QStringLiteral("Adobe color tables (*.act)"),
    };
}
