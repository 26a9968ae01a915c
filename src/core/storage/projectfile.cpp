#include "storage/projectfile.h"

#include "document/imagelimits.h"
#include "formats/writefileatomically.h"
#include "operations/selectionlist.h"
#include "palette/describedexception.h"
#include "storage/projectstream.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <zlib.h>

#include <climits>
#include <cstring>
#include <new>
#include <vector>

namespace {

const char *const magic = "Chromaxis";
const char *const settingsTag = "settings";
const char *const paletteTag = "palette";
const char *const imageTag = "image";
const char *const selectionTag = "selection";

QString noEntry(qint64 index)
{
    return QStringLiteral("The selection names entry %1, which no palette holds.").arg(index);
}

QString tooManySelected(qint64 count)
{
    return QStringLiteral("The selection holds %1 indexes; a selection holds at most %2.")
        .arg(count)
        .arg(SelectionList::maximumCount);
}

QString saveTitle()
{
    return QStringLiteral("Could not save");
}

DescribedException loadFailure(const QString &fileName, const QString &reason)
{
    return projectLoadFailure(fileName, reason);
}

DescribedException tagMismatch(const QString &fileName, const char *tag)
{
    return loadFailure(
        fileName,
        QStringLiteral("The file does not match the format.\nExpected '%1'.").arg(QLatin1String(tag)));
}

class ProjectWriter
{
public:
    explicit ProjectWriter(QByteArray &out) : m_out(out) {}

    void string(const QString &text)
    {
        QByteArray bytes = text.toLocal8Bit();
        // The terminator ends the string on reading, so a stray NUL must not stay inside it.
        const int nul = bytes.indexOf('\0');
        if (nul >= 0)
            bytes.truncate(nul);
        // What the reader would refuse is not written.
        if (bytes.size() > ProjectFile::maxTextBytes)
            throw DescribedException(saveTitle(), QStringLiteral("A text of the project is longer than %1 bytes.")
                                                      .arg(ProjectFile::maxTextBytes));
        m_out += bytes;
        m_out += '\0';
    }
    void string(const char *text) { string(QString::fromLatin1(text)); }

    void u8(quint8 v) { m_out += char(v); }
    void flag(bool v) { u8(v ? 1 : 0); }
    void u32(quint32 v)
    {
        uchar b[4];
        qToBigEndian(v, b);
        m_out.append(reinterpret_cast<const char *>(b), 4);
    }

private:
    QByteArray &m_out;
};

int bytesPerPixel(int mode)
{
    return mode == DocumentImage::Indexed8 ? 1 : 4;
}

void appendPixels(QByteArray &out, const DocumentImage &image)
{
    const int width = image.width();
    const int height = image.height();
    const qint64 count = qint64(width) * height * bytesPerPixel(image.mode());
    const int start = out.size();
    out.resize(start + int(count));
    uchar *dst = reinterpret_cast<uchar *>(out.data()) + start;
    switch (image.mode()) {
    case DocumentImage::RGB: {
        const QImage picture = image.picture().format() == QImage::Format_ARGB32
                                   ? image.picture()
                                   : image.picture().convertToFormat(QImage::Format_ARGB32);
        for (int y = 0; y < height; ++y) {
            const QRgb *row = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
            for (int x = 0; x < width; ++x, dst += 4)
                qToLittleEndian<quint32>(row[x], dst);
        }
        break;
    }
    case DocumentImage::Indexed8:
        for (int y = 0; y < height; ++y, dst += width)
            std::memcpy(dst, image.indexRow(y), size_t(width));
        break;
    case DocumentImage::Indexed32:
        for (const uint32_t cell : image.indexCells()) {
            qToLittleEndian<quint32>(cell, dst);
            dst += 4;
        }
        break;
    case DocumentImage::Continuous:
        for (const float cell : image.continuousCells()) {
            quint32 bits = 0;
            std::memcpy(&bits, &cell, 4);
            qToLittleEndian<quint32>(bits, dst);
            dst += 4;
        }
        break;
    default:
        break;
    }
}

QByteArray readText(ProjectReader &in, const QString &fileName)
{
    bool tooLong = false;
    const QByteArray text = in.string(ProjectFile::maxTextBytes, &tooLong);
    if (tooLong)
        throw loadFailure(fileName,
                          QStringLiteral("A text in the file is longer than %1 bytes.").arg(ProjectFile::maxTextBytes));
    return text;
}

// Reads count items of type T as the data comes: the vector grows with what is there, so a file
// that claims more than it holds costs no more than what it holds. Fewer items mean the data ran out.
template <typename T> std::vector<T> readItems(ProjectReader &in, quint64 count, qint64 itemBytes,
                                               void (*decode)(const uchar *, T &))
{
    std::vector<T> items;
    std::vector<uchar> block(size_t(itemBytes) << 14);
    const quint64 perBlock = quint64(1) << 14;
    while (items.size() < count) {
        const quint64 n = qMin<quint64>(perBlock, count - items.size());
        const qint64 got = in.bytes(reinterpret_cast<char *>(block.data()), qint64(n) * itemBytes);
        const size_t whole = size_t(got / itemBytes);
        if (items.size() + whole > items.capacity())
            items.reserve(size_t(qMin<quint64>(count, qMax<quint64>(2 * items.capacity(), quint64(1) << 20))));
        const uchar *p = block.data();
        for (size_t i = 0; i < whole; ++i, p += itemBytes) {
            items.emplace_back();
            decode(p, items.back());
        }
        if (got < qint64(n) * itemBytes)
            break;
    }
    return items;
}

void decodeByte(const uchar *p, uint8_t &v)
{
    v = *p;
}
void decodeWord(const uchar *p, uint32_t &v)
{
    v = qFromLittleEndian<quint32>(p);
}
void decodeFloat(const uchar *p, float &v)
{
    const quint32 bits = qFromLittleEndian<quint32>(p);
    std::memcpy(&v, &bits, 4);
}
void decodeEntry(const uchar *p, RGBAColor<uint> &c)
{
    c.r = qFromBigEndian<quint32>(p);
    c.g = qFromBigEndian<quint32>(p + 4);
    c.b = qFromBigEndian<quint32>(p + 8);
    c.a = qFromBigEndian<quint32>(p + 12);
}

// The image of the stored pixels, or a null image when the data ran out among them.
DocumentImage readPixels(ProjectReader &in, int mode, int width, int height, bool interpolate)
{
    const quint64 cells = quint64(width) * quint64(height);
    DocumentImage image;
    switch (mode) {
    case DocumentImage::RGB: {
        std::vector<uint32_t> argb = readItems<uint32_t>(in, cells, 4, decodeWord);
        if (argb.size() < cells)
            return image;
        QImage picture(width, height, QImage::Format_ARGB32);
        if (picture.isNull())
            throw std::bad_alloc();
        for (int y = 0; y < height; ++y)
            std::memcpy(picture.scanLine(y), argb.data() + size_t(y) * size_t(width), size_t(width) * 4);
        argb = {};
        image = DocumentImage::fromPicture(picture);
        break;
    }
    case DocumentImage::Indexed8: {
        const std::vector<uint8_t> indexes = readItems<uint8_t>(in, cells, 1, decodeByte);
        if (indexes.size() == cells)
            image = DocumentImage::fromIndexes8(width, height, indexes);
        break;
    }
    case DocumentImage::Indexed32: {
        std::vector<uint32_t> values = readItems<uint32_t>(in, cells, 4, decodeWord);
        if (values.size() == cells)
            image = DocumentImage::fromIndexes32(width, height, std::move(values));
        break;
    }
    case DocumentImage::Continuous: {
        std::vector<float> values = readItems<float>(in, cells, 4, decodeFloat);
        if (values.size() == cells)
            image = DocumentImage::fromContinuous(width, height, std::move(values), interpolate);
        return image;
    }
    default:
        break;
    }
    image.setInterpolate(interpolate);
    return image;
}

void readImageSection(ProjectReader &in, ProjectData &data, const QString &fileName)
{
    const int mode = in.u8();
    if (mode == DocumentImage::None)
        return;
    if (mode > DocumentImage::Continuous)
        throw loadFailure(fileName, QStringLiteral("Unknown image mode %1.").arg(mode));
    const quint32 width = in.u32();
    const quint32 height = in.u32();
    const bool interpolate = in.u8() != 0;
    if (in.ranOut())
        throw tagMismatch(fileName, selectionTag);
    if (width == 0 || height == 0)
        throw loadFailure(fileName,
                          QStringLiteral("The image size %1 x %2 is not supported.").arg(width).arg(height));
    // The size is weighed before a single pixel is read.
    if (!ImageLimits::fits(width, height))
        throw loadFailure(fileName, ImageLimits::tooLarge(width, height));
    data.image = readPixels(in, mode, int(width), int(height), interpolate);
    // Pixels the data does not hold mean the file ends inside them: everything after reads as
    // empty, which fails at the selection tag.
    if (data.image.isNull())
        throw tagMismatch(fileName, selectionTag);
    data.imageFileName = QString::fromLocal8Bit(readText(in, fileName));
    data.imageModified = in.u8() != 0;
}

ProjectData decodeFrom(ProjectReader &in, const QString &fileName)
{
    const auto expectTag = [&](const char *tag) {
        if (!in.tag(tag))
            throw tagMismatch(fileName, tag);
    };

    ProjectData data;
    expectTag(magic);
    data.version = QString::fromLocal8Bit(readText(in, fileName));

    expectTag(settingsTag);
    in.u32(); // reserved
    data.builtinIndex = in.u32();

    expectTag(paletteTag);
    const quint32 count = in.u32();
    if (count > quint32(ProjectFile::maxPaletteEntries))
        throw loadFailure(fileName, QStringLiteral("The palette has %1 entries; a project holds at most %2.")
                                        .arg(count)
                                        .arg(ProjectFile::maxPaletteEntries));
    std::vector<RGBAColor<uint>> entries = readItems<RGBAColor<uint>>(in, count, 16, decodeEntry);
    // Fewer entries than claimed: the file ends among them and fails at the image tag.
    if (entries.size() < count)
        throw tagMismatch(fileName, imageTag);
    data.palette = Palette<uint>(std::move(entries));
    data.palette.setProperty(PaletteName, QString::fromLocal8Bit(readText(in, fileName)));
    data.palette.setProperty(PaletteFile, QString::fromLocal8Bit(readText(in, fileName)));
    data.palette.setProperty(PaletteComment, QString::fromLocal8Bit(readText(in, fileName)));
    data.paletteFileName = QString::fromLocal8Bit(readText(in, fileName));
    data.paletteModified = in.u8() != 0;
    data.fixedPaletteSize = in.u8() != 0;
    const quint32 fill = in.u32();
    data.fillColor = {((fill >> 16) & 0xFF) << 8, ((fill >> 8) & 0xFF) << 8, (fill & 0xFF) << 8, 65535};

    expectTag(imageTag);
    readImageSection(in, data, fileName);

    expectTag(selectionTag);
    const quint32 selected = in.u32();
    // No tag follows the selection to catch a cut, so its end is checked here.
    if (in.ranOut())
        throw loadFailure(fileName, QStringLiteral("The file ends inside the selection."));
    if (selected > quint32(SelectionList::maximumCount))
        throw loadFailure(fileName, tooManySelected(selected));
    // Indexes at or past the palette's end are kept: the palette view ignores them, and a
    // "Full palette" selection pattern names one.
    for (quint32 i = 0; i < selected; ++i) {
        const quint32 index = in.u32();
        if (in.ranOut())
            throw loadFailure(fileName, QStringLiteral("The file ends inside the selection."));
        if (index > quint32(INT_MAX))
            throw loadFailure(fileName, noEntry(index));
        data.selection.insert(data.selection.end(), int(index));
    }
    return data;
}

template <typename Decode> ProjectData guardMemory(const QString &fileName, Decode decode)
{
    try {
        return decode();
    } catch (const std::bad_alloc &) {
        throw loadFailure(fileName, QStringLiteral("There is not enough memory."));
    }
}

} // namespace

QString ProjectFile::currentVersion()
{
    return QStringLiteral("2.0.0");
}

QByteArray ProjectFile::pixelBytes(const DocumentImage &image)
{
    QByteArray out;
    if (!image.isNull()) {
        if (qint64(image.width()) * image.height() * bytesPerPixel(image.mode()) > maxUncompressedSize)
            throw DescribedException(saveTitle(),
                                     QStringLiteral("The image is too large for a project file."));
        appendPixels(out, image);
    }
    return out;
}

QByteArray ProjectFile::encode(const ProjectData &data)
{
    const Palette<uint> &palette = data.palette;
    // Indexes at or past the palette's end are written as they are; what is written must read back.
    if (!data.selection.empty() && *data.selection.begin() < 0)
        throw DescribedException(saveTitle(), noEntry(*data.selection.begin()));
    if (data.selection.size() > size_t(SelectionList::maximumCount))
        throw DescribedException(saveTitle(), tooManySelected(qint64(data.selection.size())));
    const DocumentImage &image = data.image;
    // Whatever is written must read back: the limits of the reader hold for the writer too.
    if (!image.isNull() && !ImageLimits::fits(image.width(), image.height()))
        throw DescribedException(saveTitle(), ImageLimits::tooLarge(image.width(), image.height()));
    if (palette.size() > maxPaletteEntries)
        throw DescribedException(saveTitle(), QStringLiteral("The palette has %1 entries; a project holds at most %2.")
                                                  .arg(palette.size())
                                                  .arg(maxPaletteEntries));
    const qint64 fixedPart = qint64(palette.size()) * 16 + qint64(data.selection.size()) * 4 + 6 * maxTextBytes;
    const qint64 pixelSize =
        image.isNull() ? 0 : qint64(image.width()) * image.height() * bytesPerPixel(image.mode());
    if (fixedPart + pixelSize > maxUncompressedSize)
        throw DescribedException(saveTitle(), QStringLiteral("The project is too large for a project file."));

    QByteArray out;
    out.reserve(int(qint64(palette.size()) * 16 + pixelSize + 1024));
    ProjectWriter w(out);
    w.string(magic);
    w.string(currentVersion());
    w.string(settingsTag);
    w.u32(0);
    w.u32(data.builtinIndex);

    w.string(paletteTag);
    w.u32(quint32(palette.size()));
    for (const auto &c : palette.entries()) {
        w.u32(c.r);
        w.u32(c.g);
        w.u32(c.b);
        w.u32(c.a);
    }
    w.string(palette.property(PaletteName));
    w.string(palette.property(PaletteFile));
    w.string(palette.property(PaletteComment));
    w.string(data.paletteFileName);
    w.flag(data.paletteModified);
    w.flag(data.fixedPaletteSize);
    const RGBAColor<uint> &fill = data.fillColor;
    w.u32((((fill.r >> 8) & 0xFF) << 16) | (((fill.g >> 8) & 0xFF) << 8) | ((fill.b >> 8) & 0xFF));

    w.string(imageTag);
    w.u8(quint8(image.mode()));
    if (!image.isNull()) {
        w.u32(quint32(image.width()));
        w.u32(quint32(image.height()));
        w.flag(image.interpolate());
        appendPixels(out, image);
        w.string(data.imageFileName);
        w.flag(data.imageModified);
    }

    w.string(selectionTag);
    w.u32(quint32(data.selection.size()));
    for (const int index : data.selection)
        w.u32(quint32(index));
    return out;
}

ProjectData ProjectFile::decode(const QByteArray &uncompressed, const QString &fileName)
{
    MemoryInput input(uncompressed);
    ProjectReader in(input);
    return guardMemory(fileName, [&]() { return decodeFrom(in, fileName); });
}

QByteArray ProjectFile::gzip(const QByteArray &bytes)
{
    z_stream z{};
    if (deflateInit2(&z, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        throw DescribedException(saveTitle(), QStringLiteral("The compressor could not be started."));
    z.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(bytes.constData()));
    z.avail_in = uInt(bytes.size());
    QByteArray out;
    std::vector<char> chunk(1 << 18);
    int result = Z_OK;
    try {
        while (result != Z_STREAM_END) {
            z.next_out = reinterpret_cast<Bytef *>(chunk.data());
            z.avail_out = uInt(chunk.size());
            result = deflate(&z, Z_FINISH);
            if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
                break;
            out.append(chunk.data(), int(chunk.size() - z.avail_out));
        }
    } catch (const std::bad_alloc &) {
        result = Z_MEM_ERROR;
    }
    deflateEnd(&z);
    if (result != Z_STREAM_END)
        throw DescribedException(saveTitle(), QStringLiteral("The project could not be compressed."));
    return out;
}

QByteArray ProjectFile::gunzip(const QByteArray &bytes, const QString &fileName, qint64 limit)
{
    QBuffer device;
    device.setData(bytes);
    device.open(QIODevice::ReadOnly);
    GzipInput input(device, fileName, limit);
    QByteArray out;
    std::vector<char> chunk(1 << 16);
    for (;;) {
        const qint64 got = input.read(chunk.data(), qint64(chunk.size()));
        if (got <= 0)
            break;
        out.append(chunk.data(), int(got));
    }
    return out;
}

void ProjectFile::write(const QString &path, const ProjectData &data)
{
    const QByteArray packed = gzip(encode(data));
    const QString name = QFileInfo(path).fileName();
    const FileWriteResult written = writeFileAtomically(path, packed);
    if (written.stage == FileWriteResult::NotOpened)
        throw DescribedException(
            saveTitle(), QStringLiteral("Cannot save project %1.\nCould not open the file for writing.\n%2")
                             .arg(name, written.error));
    if (!written.ok())
        throw DescribedException(saveTitle(),
                                 QStringLiteral("Cannot save project %1.\nCould not write the file.\n%2")
                                     .arg(name, written.error));
}

ProjectData ProjectFile::read(const QString &path)
{
    QFile file(path);
    // A file that cannot be opened reads as empty.
    QBuffer empty;
    if (file.open(QIODevice::ReadOnly))
        return read(file, QFileInfo(path).fileName());
    empty.open(QIODevice::ReadOnly);
    return read(empty, QFileInfo(path).fileName());
}

ProjectData ProjectFile::read(QIODevice &device, const QString &fileName)
{
    GzipInput input(device, fileName, maxUncompressedSize);
    ProjectReader in(input);
    return guardMemory(fileName, [&]() {
        ProjectData data = decodeFrom(in, fileName);
        // What follows the selection is not read, but a damaged member is refused all the same.
        input.finish();
        return data;
    });
}
