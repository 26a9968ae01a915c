#include "storage/numpyimage.h"

#include "document/imagelimits.h"
#include "formats/writefileatomically.h"
#include "palette/describedexception.h"
#include "storage/numpyheader.h"
#include "storage/zipmember.h"

#include <QFile>
#include <QtEndian>

#include <climits>
#include <cstring>
#include <new>
#include <vector>

namespace {

const char npyMagic[] = "\x93NUMPY";
const int npyMagicSize = 6;
// The size headers of real arrays need is a few hundred bytes; the bound keeps a hostile length
// from making us scan megabytes of "header".
const quint32 maxHeaderLength = 65536;
const char memberName[] = "image.npy";

[[noreturn]] void failRead(const QString &message)
{
    throw DescribedException(NumpyImage::readTitle(), message);
}

[[noreturn]] void failWrite(const QString &message)
{
    throw DescribedException(NumpyImage::writeTitle(), message);
}

[[noreturn]] void failHeader(const QString &path, const QString &why)
{
    NumpyHeader::fail(path, why, NumpyImage::readTitle());
}

// --- reading ---------------------------------------------------------------------------------------

enum class Kind
{
    U8,
    U32,
    F32
};

QString supportedArrays()
{
    return QStringLiteral("Supported are uint8, uint32 and float32 arrays of shape (height, width) and uint8 "
                          "arrays of shape (height, width, 3) or (height, width, 4).");
}

[[noreturn]] void failUnsupported(const QString &path, const NumpyArrayHeader &h)
{
    QStringList dims;
    for (qint64 d : h.shape)
        dims << QString::number(d);
    failRead(
        QStringLiteral("The array in\n'%1'\nhas the type '%2' and the shape (%3), which cannot be an "
                       "image.\n%4")
            .arg(path, QString::fromLatin1(h.descr), dims.join(QStringLiteral(", ")), supportedArrays()));
}

[[noreturn]] void failTruncated(const QString &path)
{
    failRead(QStringLiteral("Unexpected end of file in\n'%1'.").arg(path));
}

// Where the bytes of an array come from: a file, a member of an archive or bytes in memory. They are
// read as they come, straight into the image, so nothing holds the file or the member whole.
class ArraySource
{
public:
    virtual ~ArraySource() = default;
    // Up to n bytes; fewer only at the end.
    virtual qint64 read(char *buffer, qint64 n) = 0;
    // The bytes left to read, or -1 when the source cannot tell.
    virtual qint64 remaining() const = 0;

    void readExactly(char *buffer, qint64 n, const QString &path)
    {
        if (read(buffer, n) != n)
            failTruncated(path);
    }
};

class MemorySource : public ArraySource
{
public:
    explicit MemorySource(const QByteArray &data) : m_data(data) {}
    qint64 read(char *buffer, qint64 n) override
    {
        const qint64 count = qMin(n, remaining());
        std::memcpy(buffer, m_data.constData() + m_pos, size_t(count));
        m_pos += count;
        return count;
    }
    qint64 remaining() const override { return qint64(m_data.size()) - m_pos; }

private:
    const QByteArray &m_data;
    qint64 m_pos = 0;
};

class FileSource : public ArraySource
{
public:
    FileSource(QFile &file, const QString &path) : m_file(file), m_path(path) {}
    qint64 read(char *buffer, qint64 n) override
    {
        qint64 total = 0;
        while (total < n) {
            const qint64 got = m_file.read(buffer + total, n - total);
            if (got < 0)
                failRead(QStringLiteral("Could not read file '%1'.").arg(m_path));
            if (got == 0)
                break;
            total += got;
        }
        return total;
    }
    qint64 remaining() const override
    {
        return m_file.isSequential() ? -1 : qMax<qint64>(0, m_file.size() - m_file.pos());
    }

private:
    QFile &m_file;
    const QString &m_path;
};

class MemberSource : public ArraySource
{
public:
    explicit MemberSource(ZipMemberReader &zip) : m_zip(zip) {}
    qint64 read(char *buffer, qint64 n) override
    {
        const qint64 got = m_zip.read(buffer, n);
        m_pos += got;
        return got;
    }
    qint64 remaining() const override { return qMax<qint64>(0, m_zip.memberSize() - m_pos); }

private:
    ZipMemberReader &m_zip;
    qint64 m_pos = 0;
};

template <typename T> T loadValue(const uchar *p, bool bigEndian)
{
    return bigEndian ? qFromBigEndian<T>(p) : qFromLittleEndian<T>(p);
}

// Reads the cells of a checked header from in, element by element in file order, and puts each
// where it belongs in the image. Only the image is allocated, plus one block for reading.
class CellReader
{
public:
    CellReader(const NumpyArrayHeader &h, Kind kind, bool bigEndian, const QString &path)
        : m_kind(kind), m_bigEndian(bigEndian), m_fortran(h.fortranOrder), m_height(h.shape[0]),
          m_width(h.shape[1]), m_channels(h.shape.size() == 3 ? h.shape[2] : 1),
          m_itemSize(kind == Kind::U8 ? 1 : 4), m_path(path)
    {
    }

    DocumentImage read(ArraySource &in)
    {
        const int w = int(m_width);
        const int hgt = int(m_height);
        const size_t pixels = size_t(m_width) * size_t(m_height);
        if (m_channels > 1) {
            m_picture = QImage(w, hgt, QImage::Format_ARGB32);
            if (m_picture.isNull())
                throw std::bad_alloc();
            // Without an alpha channel every pixel is opaque; with one, alpha comes from the file.
            m_picture.fill(m_channels == 4 ? 0u : 0xFF000000u);
            m_cells = m_picture.bits();
        } else if (m_kind == Kind::U8) {
            m_bytes.resize(pixels);
            m_cells = m_bytes.data();
        } else if (m_kind == Kind::U32) {
            m_words.resize(pixels);
            m_cells = reinterpret_cast<uchar *>(m_words.data());
        } else {
            m_floats.resize(pixels);
            m_cells = reinterpret_cast<uchar *>(m_floats.data());
        }
        stream(in);
        if (m_channels > 1)
            return DocumentImage::fromPicture(m_picture);
        switch (m_kind) {
        case Kind::U8:
            return DocumentImage::fromIndexes8(w, hgt, m_bytes);
        case Kind::U32:
            return DocumentImage::fromIndexes32(w, hgt, std::move(m_words));
        case Kind::F32:
            return DocumentImage::fromContinuous(w, hgt, std::move(m_floats));
        }
        return DocumentImage();
    }

private:
    void stream(ArraySource &in)
    {
        const qint64 total = m_width * m_height * m_channels;
        // Row-major cells in the machine's byte order are the image's own layout: copied as they are.
        const bool asStored = !m_fortran && m_channels == 1 &&
                              (m_kind == Kind::U8 || m_bigEndian == (QSysInfo::ByteOrder == QSysInfo::BigEndian));
        const qint64 block = qint64(1) << 20;
        std::vector<uchar> buffer(asStored ? 0 : size_t(block));
        // The position of the next element: a, b, c are (y, x, channel) in C order and
        // (y, x, channel) counted in the order (channel, x, y) slowest first in Fortran order.
        qint64 y = 0, x = 0, c = 0;
        for (qint64 done = 0; done < total;) {
            const qint64 n = qMin(block / m_itemSize, total - done);
            if (asStored) {
                in.readExactly(reinterpret_cast<char *>(m_cells) + done * m_itemSize, n * m_itemSize, m_path);
                done += n;
                continue;
            }
            in.readExactly(reinterpret_cast<char *>(buffer.data()), n * m_itemSize, m_path);
            const uchar *p = buffer.data();
            for (qint64 i = 0; i < n; ++i, p += m_itemSize) {
                place(y, x, c, p);
                if (m_fortran) {
                    if (++y == m_height) {
                        y = 0;
                        if (++x == m_width) {
                            x = 0;
                            ++c;
                        }
                    }
                } else if (++c == m_channels) {
                    c = 0;
                    if (++x == m_width) {
                        x = 0;
                        ++y;
                    }
                }
            }
            done += n;
        }
    }

    void place(qint64 y, qint64 x, qint64 c, const uchar *p)
    {
        const size_t at = size_t(y) * size_t(m_width) + size_t(x);
        if (m_channels > 1) {
            static const int shifts[4] = {16, 8, 0, 24}; // red, green, blue, alpha in an ARGB word
            QRgb &pixel = reinterpret_cast<QRgb *>(m_picture.scanLine(int(y)))[x];
            pixel = (pixel & ~(0xFFu << shifts[c])) | (QRgb(*p) << shifts[c]);
        } else if (m_kind == Kind::U8) {
            m_cells[at] = *p;
        } else {
            const quint32 v = loadValue<quint32>(p, m_bigEndian);
            std::memcpy(m_cells + 4 * at, &v, 4);
        }
    }

    Kind m_kind;
    bool m_bigEndian;
    bool m_fortran;
    qint64 m_height;
    qint64 m_width;
    qint64 m_channels;
    qint64 m_itemSize;
    const QString &m_path;
    QImage m_picture;
    std::vector<uint8_t> m_bytes;
    std::vector<uint32_t> m_words;
    std::vector<float> m_floats;
    uchar *m_cells = nullptr;
};

DocumentImage readNpy(ArraySource &in, const QString &path)
{
    char lead[8];
    if (in.read(lead, 8) != 8 || std::memcmp(lead, npyMagic, npyMagicSize) != 0)
        failRead(QStringLiteral("'%1'\nis not a NumPy array file.").arg(path));
    const int major = uchar(lead[6]);
    const int minor = uchar(lead[7]);
    if (major < 1 || major > 3 || minor != 0)
        failRead(QStringLiteral(
                     "The NumPy format version %1.%2 of\n'%3'\nis not supported (1.0, 2.0 and 3.0 are).")
                     .arg(major)
                     .arg(minor)
                     .arg(path));
    uchar length[4];
    in.readExactly(reinterpret_cast<char *>(length), major == 1 ? 2 : 4, path);
    const quint32 headerLength = major == 1 ? qFromLittleEndian<quint16>(length) : qFromLittleEndian<quint32>(length);
    if (headerLength > maxHeaderLength)
        failHeader(path, QStringLiteral("the header is %1 bytes long").arg(headerLength));
    // Version 3 headers are UTF-8, the older ones Latin-1; the keys and values we accept are ASCII
    // either way, and anything else fails the strict parse.
    QByteArray text(int(headerLength), '\0');
    in.readExactly(text.data(), headerLength, path);
    const NumpyArrayHeader h = NumpyHeader::parse(text, path, NumpyImage::readTitle());

    const QByteArray &d = h.descr;
    if (d.size() != 3 || !QByteArray("<>|=").contains(d[0]))
        failUnsupported(path, h);
    const QByteArray type = d.mid(1);
    Kind kind = Kind::U8;
    int itemSize = 1;
    if (type == "u1") {
        kind = Kind::U8;
        itemSize = 1;
    } else if (type == "u4" && d[0] != '|') {
        kind = Kind::U32;
        itemSize = 4;
    } else if (type == "f4" && d[0] != '|') {
        kind = Kind::F32;
        itemSize = 4;
    } else {
        failUnsupported(path, h);
    }
    const bool bigEndian = d[0] == '>' || (d[0] == '=' && QSysInfo::ByteOrder == QSysInfo::BigEndian);
    const bool planeShape = h.shape.size() == 2;
    const bool rgbShape = h.shape.size() == 3 && kind == Kind::U8 && (h.shape[2] == 3 || h.shape[2] == 4);
    if (!planeShape && !rgbShape)
        failUnsupported(path, h);
    if (h.shape[0] == 0 || h.shape[1] == 0)
        failRead(QStringLiteral("The array in\n'%1'\nis empty.").arg(path));
    if (!ImageLimits::fits(h.shape[1], h.shape[0]))
        failRead(QStringLiteral("The array in\n'%1'\nis too large for an image.\n%2")
                     .arg(path, ImageLimits::tooLarge(h.shape[1], h.shape[0])));
    // Within the limits the products below stay far inside 64 bits.
    const qint64 bytes = h.shape[0] * h.shape[1] * (rgbShape ? h.shape[2] : 1) * itemSize;
    // Where the source knows its size, the data must be there in full before anything is allocated.
    const qint64 left = in.remaining();
    if (left >= 0 && bytes > left)
        failTruncated(path);
    return CellReader(h, kind, bigEndian, path).read(in);
}

DocumentImage readNpz(ZipMemberReader &zip, const QString &path)
{
    if (!zip.openMember(QStringLiteral(".npy")))
        failRead(QStringLiteral("The archive\n'%1'\nholds no NumPy array (no member named *.npy).").arg(path));
    MemberSource member(zip);
    DocumentImage image = readNpy(member, path + QLatin1Char('/') + zip.memberName());
    zip.finishMember();
    return image;
}

template <typename Read> DocumentImage guardMemory(const QString &path, Read read)
{
    try {
        return read();
    } catch (const std::bad_alloc &) {
        failRead(QStringLiteral("Not enough memory to read\n'%1'.").arg(path));
    }
}

// --- writing ---------------------------------------------------------------------------------------

void appendLe16(QByteArray &out, quint16 v)
{
    uchar b[2];
    qToLittleEndian(v, b);
    out.append(reinterpret_cast<const char *>(b), 2);
}

QByteArray npyHeader(const char *descr, const QString &shape)
{
    QByteArray dict = QStringLiteral("{'descr': '%1', 'fortran_order': False, 'shape': %2, }")
                          .arg(QString::fromLatin1(descr), shape)
                          .toLatin1();
    // NumPy aligns the data to 64 bytes: the dictionary is padded with blanks and ends in a newline.
    const int unpadded = npyMagicSize + 2 + 2 + dict.size() + 1;
    dict.append(QByteArray((64 - unpadded % 64) % 64, ' '));
    dict.append('\n');
    QByteArray out(npyMagic, npyMagicSize);
    out.append(char(1));
    out.append(char(0));
    appendLe16(out, quint16(dict.size()));
    return out + dict;
}

void reserveChecked(QByteArray &out, qint64 bytes)
{
    if (bytes > qint64(INT_MAX) - 1024)
        failWrite(QStringLiteral("The image is too large to be written as a NumPy array."));
    out.reserve(int(bytes));
}

} // namespace

QString NumpyImage::readTitle()
{
    return QStringLiteral("Error on reading NumPy array");
}

QString NumpyImage::writeTitle()
{
    return QStringLiteral("Error on writing NumPy array");
}

DocumentImage NumpyImage::read(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        failRead(QStringLiteral("Could not open file '%1'.").arg(path));
    const QByteArray lead = f.peek(npyMagicSize);
    if (lead.startsWith(QByteArray(npyMagic, npyMagicSize))) {
        FileSource source(f, path);
        return guardMemory(path, [&]() { return readNpy(source, path); });
    }
    if (lead.startsWith("PK")) {
        f.close();
        return guardMemory(path, [&]() {
            const auto zip = ZipMemberReader::openFile(path, readTitle());
            return readNpz(*zip, path);
        });
    }
    failRead(QStringLiteral("'%1'\nis neither a NumPy array (.npy) nor a NumPy archive (.npz).").arg(path));
}

DocumentImage NumpyImage::fromBytes(const QByteArray &data, const QString &path)
{
    if (data.startsWith(QByteArray(npyMagic, npyMagicSize)))
        return fromNpy(data, path);
    if (data.startsWith("PK"))
        return fromNpz(data, path);
    failRead(QStringLiteral("'%1'\nis neither a NumPy array (.npy) nor a NumPy archive (.npz).").arg(path));
}

DocumentImage NumpyImage::fromNpy(const QByteArray &data, const QString &path)
{
    MemorySource source(data);
    return guardMemory(path, [&]() { return readNpy(source, path); });
}

DocumentImage NumpyImage::fromNpz(const QByteArray &data, const QString &path)
{
    return guardMemory(path, [&]() {
        const auto zip = ZipMemberReader::openBytes(data, path, readTitle());
        return readNpz(*zip, path);
    });
}

QByteArray NumpyImage::toNpy(const DocumentImage &image)
{
    const int w = image.width();
    const int h = image.height();
    const QString plane = QStringLiteral("(%1, %2)").arg(h).arg(w);
    const qint64 pixels = qint64(w) * qint64(h);
    QByteArray out;
    switch (image.mode()) {
    case DocumentImage::Indexed8:
        out = npyHeader("|u1", plane);
        reserveChecked(out, out.size() + pixels);
        for (int y = 0; y < h; ++y)
            out.append(reinterpret_cast<const char *>(image.indexRow(y)), w);
        return out;
    case DocumentImage::Indexed32:
    case DocumentImage::Continuous: {
        const bool indexed = image.mode() == DocumentImage::Indexed32;
        out = npyHeader(indexed ? "<u4" : "<f4", plane);
        reserveChecked(out, out.size() + 4 * pixels);
        const int start = out.size();
        out.resize(start + int(4 * pixels));
        auto *dst = reinterpret_cast<uchar *>(out.data()) + start;
        if (indexed) {
            for (uint32_t v : image.indexCells()) {
                qToLittleEndian<quint32>(v, dst);
                dst += 4;
            }
        } else {
            for (float v : image.continuousCells()) {
                quint32 bits;
                std::memcpy(&bits, &v, 4);
                qToLittleEndian<quint32>(bits, dst);
                dst += 4;
            }
        }
        return out;
    }
    case DocumentImage::RGB: {
        const QImage picture = image.picture().convertToFormat(QImage::Format_ARGB32);
        out = npyHeader("|u1", QStringLiteral("(%1, %2, 4)").arg(h).arg(w));
        reserveChecked(out, out.size() + 4 * pixels);
        const int start = out.size();
        out.resize(start + int(4 * pixels));
        auto *dst = reinterpret_cast<uchar *>(out.data()) + start;
        for (int y = 0; y < h; ++y) {
            const auto *row = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
            for (int x = 0; x < w; ++x, dst += 4) {
                dst[0] = uchar(qRed(row[x]));
                dst[1] = uchar(qGreen(row[x]));
                dst[2] = uchar(qBlue(row[x]));
                dst[3] = uchar(qAlpha(row[x]));
            }
        }
        return out;
    }
    default:
        failWrite(QStringLiteral("There is no image to write."));
    }
}

QByteArray NumpyImage::toNpz(const DocumentImage &image, Compression compression)
{
    return ZipMember::singleMember(memberName, toNpy(image),
                                   compression == Compression::Deflated ? ZipMember::Method::Deflated
                                                                        : ZipMember::Method::Stored,
                                   writeTitle());
}

void NumpyImage::write(const DocumentImage &image, const QString &path, Compression compression)
{
    const QByteArray bytes =
        path.endsWith(QLatin1String(".npz"), Qt::CaseInsensitive) ? toNpz(image, compression) : toNpy(image);
    const FileWriteResult written = writeFileAtomically(path, bytes);
    if (written.stage == FileWriteResult::NotOpened)
        failWrite(QStringLiteral("Could not open file '%1' for writing.\n%2").arg(path, written.error));
    if (!written.ok())
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Could not write file '%1'.\n%2").arg(path, written.error));
}

bool NumpyImage::isNumpyFileName(const QString &path)
{
    return path.endsWith(QLatin1String(".npy"), Qt::CaseInsensitive) ||
           path.endsWith(QLatin1String(".npz"), Qt::CaseInsensitive);
}
