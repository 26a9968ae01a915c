#include "storage/projectfile.h"

#include "palette/describedexception.h"
#include "formats/writefileatomically.h"
#include "operations/selectionlist.h"

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

QString loadTitle()
{
    return QStringLiteral("Could not load");
}

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
    return DescribedException(loadTitle(),
                              QStringLiteral("Cannot load project %1.\n").arg(fileName) + reason);
}

DescribedException tagMismatch(const QString &fileName, const char *tag)
{
    return loadFailure(
        fileName,
        QStringLiteral("The file does not match the format.\nExpected '%1'.").arg(QLatin1String(tag)));
}

DescribedException tooLargeToLoad(const QString &fileName, qint64 limit)
{
    return loadFailure(fileName,
                       QStringLiteral("The uncompressed project is larger than %1 bytes.").arg(limit));
}

// Reads the uncompressed project. Running into the end of the data is not an error by itself:
// from there on every string reads as empty and every number as zero, so the next section tag
// fails its comparison, and the caller never has to handle half a value.
class ProjectReader
{
public:
    explicit ProjectReader(const QByteArray &data) : m_data(data) {}

    qint64 remaining() const { return qint64(m_data.size()) - m_pos; }
    bool ranOut() const { return m_ranOut; }

    QByteArray string()
    {
        const int end = m_ranOut ? -1 : m_data.indexOf('\0', int(m_pos));
        if (end < 0) {
            runOut();
            return {};
        }
        const QByteArray text = m_data.mid(int(m_pos), end - int(m_pos));
        m_pos = qint64(end) + 1;
        return text;
    }

    quint8 u8()
    {
        const uchar *p = take(1);
        return p ? *p : 0;
    }

    quint32 u32()
    {
        const uchar *p = take(4);
        return p ? qFromBigEndian<quint32>(p) : 0;
    }

    // n bytes the caller has checked against remaining().
    const uchar *take(qint64 n)
    {
        if (m_ranOut || n > remaining()) {
            runOut();
            return nullptr;
        }
        const uchar *p = reinterpret_cast<const uchar *>(m_data.constData()) + m_pos;
        m_pos += n;
        return p;
    }

private:
    void runOut()
    {
        m_pos = m_data.size();
        m_ranOut = true;
    }

    const QByteArray &m_data;
    qint64 m_pos = 0;
    bool m_ranOut = false;
};

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

// Whether a picture of this size can exist: the image view and the renderers need one for every mode,
// and the 8-bit pixels are kept with rows padded to four bytes.
bool fitsPicture(quint64 width, quint64 height, int mode)
{
    if (width == 0 || height == 0 || width > quint64(INT_MAX - 31) / 32 || height > quint64(INT_MAX))
        return false;
    const quint64 stride = mode == DocumentImage::Indexed8 ? (width + 3) & ~quint64(3) : width * 4;
    return stride * height <= quint64(INT_MAX);
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

DocumentImage buildImage(int mode, int width, int height, bool interpolate, const uchar *src)
{
    const size_t cells = size_t(width) * size_t(height);
    DocumentImage image;
    switch (mode) {
    case DocumentImage::RGB: {
        QImage picture(width, height, QImage::Format_ARGB32);
        if (picture.isNull())
            throw std::bad_alloc();
        for (int y = 0; y < height; ++y) {
            QRgb *row = reinterpret_cast<QRgb *>(picture.scanLine(y));
            for (int x = 0; x < width; ++x, src += 4)
                row[x] = qFromLittleEndian<quint32>(src);
        }
        image = DocumentImage::fromPicture(picture);
        image.setInterpolate(interpolate);
        break;
    }
    case DocumentImage::Indexed8:
        image = DocumentImage::fromIndexes8(width, height, std::vector<uint8_t>(src, src + cells));
        image.setInterpolate(interpolate);
        break;
    case DocumentImage::Indexed32: {
        std::vector<uint32_t> values(cells);
        for (uint32_t &v : values) {
            v = qFromLittleEndian<quint32>(src);
            src += 4;
        }
        image = DocumentImage::fromIndexes32(width, height, std::move(values));
        image.setInterpolate(interpolate);
        break;
    }
    case DocumentImage::Continuous: {
        std::vector<float> values(cells);
        for (float &v : values) {
            const quint32 bits = qFromLittleEndian<quint32>(src);
            std::memcpy(&v, &bits, 4);
            src += 4;
        }
        image = DocumentImage::fromContinuous(width, height, std::move(values), interpolate);
        break;
    }
    default:
        break;
    }
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
    // Pixels the data cannot hold mean the file ends inside them: everything after reads as empty,
    // which fails at the selection tag. Deciding that up front costs no allocation.
    const int bpp = bytesPerPixel(mode);
    if (width != 0 && height != 0 && quint64(width) * height > quint64(in.remaining()) / quint64(bpp))
        throw tagMismatch(fileName, selectionTag);
    if (!fitsPicture(width, height, mode))
        throw loadFailure(fileName,
                          QStringLiteral("The image size %1 x %2 is not supported.").arg(width).arg(height));
    const uchar *pixels = in.take(qint64(width) * height * bpp);
    data.image = buildImage(mode, int(width), int(height), interpolate, pixels);
    data.imageFileName = QString::fromLocal8Bit(in.string());
    data.imageModified = in.u8() != 0;
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
    // Pixels dominate the size; a few megabytes cover every string and the palette of any real project.
    const qint64 fixedPart =
        qint64(palette.size()) * 16 + qint64(data.selection.size()) * 4 + (qint64(1) << 24);
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
    ProjectReader in(uncompressed);
    const auto expectTag = [&](const char *tag) {
        if (in.string() != tag)
            throw tagMismatch(fileName, tag);
    };

    ProjectData data;
    try {
        expectTag(magic);
        data.version = QString::fromLocal8Bit(in.string());

        expectTag(settingsTag);
        in.u32(); // reserved
        data.builtinIndex = in.u32();

        expectTag(paletteTag);
        const quint32 count = in.u32();
        // More entries than the data holds: the file ends among them and fails at the image tag.
        if (count > quint64(in.remaining()) / 16)
            throw tagMismatch(fileName, imageTag);
        std::vector<RGBAColor<uint>> entries(count);
        for (auto &c : entries) {
            c.r = in.u32();
            c.g = in.u32();
            c.b = in.u32();
            c.a = in.u32();
        }
        data.palette = Palette<uint>(std::move(entries));
        data.palette.setProperty(PaletteName, QString::fromLocal8Bit(in.string()));
        data.palette.setProperty(PaletteFile, QString::fromLocal8Bit(in.string()));
        data.palette.setProperty(PaletteComment, QString::fromLocal8Bit(in.string()));
        data.paletteFileName = QString::fromLocal8Bit(in.string());
        data.paletteModified = in.u8() != 0;
        data.fixedPaletteSize = in.u8() != 0;
        const quint32 fill = in.u32();
        data.fillColor = {((fill >> 16) & 0xFF) << 8, ((fill >> 8) & 0xFF) << 8, (fill & 0xFF) << 8, 65535};

        expectTag(imageTag);
        readImageSection(in, data, fileName);

        expectTag(selectionTag);
        const quint32 selected = in.u32();
        // No tag follows the selection to catch a cut, so its end is checked here.
        if (in.ranOut() || selected > quint64(in.remaining()) / 4)
            throw loadFailure(fileName, QStringLiteral("The file ends inside the selection."));
        if (selected > quint32(SelectionList::maximumCount))
            throw loadFailure(fileName, tooManySelected(selected));
        // Indexes at or past the palette's end are kept: the palette view ignores them, and a
        // "Full palette" selection pattern names one.
        for (quint32 i = 0; i < selected; ++i) {
            const quint32 index = in.u32();
            if (index > quint32(INT_MAX))
                throw loadFailure(fileName, noEntry(index));
            data.selection.insert(data.selection.end(), int(index));
        }
    } catch (const std::bad_alloc &) {
        throw loadFailure(fileName, QStringLiteral("There is not enough memory."));
    }
    return data;
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
    const auto isGzip = [](const Bytef *p, uInt n) { return n >= 2 && p[0] == 0x1f && p[1] == 0x8b; };
    const Bytef *start = reinterpret_cast<const Bytef *>(bytes.constData());
    if (!isGzip(start, uInt(bytes.size()))) {
        if (bytes.size() > limit)
            throw tooLargeToLoad(fileName, limit);
        return bytes;
    }

    z_stream z{};
    if (inflateInit2(&z, MAX_WBITS + 32) != Z_OK)
        throw loadFailure(fileName, QStringLiteral("The decompressor could not be started."));
    z.next_in = const_cast<Bytef *>(start);
    z.avail_in = uInt(bytes.size());
    QByteArray out;
    std::vector<char> chunk(1 << 16);
    try {
        for (;;) {
            z.next_out = reinterpret_cast<Bytef *>(chunk.data());
            z.avail_out = uInt(chunk.size());
            const int result = inflate(&z, Z_NO_FLUSH);
            const int produced = int(chunk.size() - z.avail_out);
            if (qint64(out.size()) + produced > limit)
                throw tooLargeToLoad(fileName, limit);
            out.append(chunk.data(), produced);
            if (result == Z_STREAM_END) {
                // Another member continues the stream; anything else after a member is ignored.
                if (!isGzip(z.next_in, z.avail_in) || inflateReset(&z) != Z_OK)
                    break;
                continue;
            }
            // A damaged or cut stream keeps what came before the damage: the data then ends early.
            if (result != Z_OK)
                break;
        }
    } catch (...) {
        inflateEnd(&z);
        throw;
    }
    inflateEnd(&z);
    return out;
}

void ProjectFile::write(const QString &path, const ProjectData &data)
{
    const QByteArray packed = gzip(encode(data));
    const QString name = QFileInfo(path).fileName();
    const FileWriteResult written = writeFileAtomically(path, packed);
    if (written.stage == FileWriteResult::NotOpened)
        throw DescribedException(
            saveTitle(),
            QStringLiteral("Cannot save project %1.\nCould not open the file for writing.").arg(name));
    if (!written.ok())
        throw DescribedException(
            saveTitle(), QStringLiteral("Cannot save project %1.\nCould not write the file.").arg(name));
}

ProjectData ProjectFile::read(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    QByteArray raw;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        // Sequential files report no size, so the bound is kept while reading as well.
        if (file.size() > maxUncompressedSize)
            throw tooLargeToLoad(name, maxUncompressedSize);
        for (;;) {
            const QByteArray chunk = file.read(1 << 20);
            if (chunk.isEmpty())
                break;
            if (qint64(raw.size()) + chunk.size() > maxUncompressedSize)
                throw tooLargeToLoad(name, maxUncompressedSize);
            raw += chunk;
        }
    }
    return decode(gunzip(raw, name), name);
}
