#include "storage/numpyimage.h"

#include "formats/bytereader.h"
#include "palette/describedexception.h"
#include "formats/writefileatomically.h"
#include "storage/ziparchive.h"

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
    failRead(QStringLiteral("The NumPy header of\n'%1'\nis not valid: %2.").arg(path, why));
}

// --- the header dictionary --------------------------------------------------------------------------

struct ArrayHeader
{
    QByteArray descr;
    bool fortranOrder = false;
    std::vector<qint64> shape;
};

// A strict reader of the Python literal NumPy writes: {'descr': '<u4', 'fortran_order': False,
// 'shape': (480, 640), } with each key exactly once, padded with blanks.
class HeaderParser
{
public:
    HeaderParser(const QByteArray &text, const QString &path) : m_text(text), m_path(path) {}

    ArrayHeader parse()
    {
        ArrayHeader h;
        bool seenDescr = false, seenOrder = false, seenShape = false;
        expect('{');
        for (;;) {
            if (peek() == '}')
                break;
            const QByteArray key = string();
            expect(':');
            if (key == "descr") {
                once(seenDescr, key);
                if (peek() != '\'' && peek() != '"')
                    fail(QStringLiteral("only simple array types are supported, not records"));
                h.descr = string();
            } else if (key == "fortran_order") {
                once(seenOrder, key);
                h.fortranOrder = boolean();
            } else if (key == "shape") {
                once(seenShape, key);
                h.shape = tuple();
            } else {
                fail(QStringLiteral("unknown key '%1'").arg(QString::fromLatin1(key)));
            }
            if (peek() == ',') {
                ++m_pos;
                continue;
            }
            if (peek() != '}')
                fail(QStringLiteral("',' or '}' expected"));
        }
        ++m_pos;
        skipBlanks();
        if (m_pos != m_text.size())
            fail(QStringLiteral("text after the dictionary"));
        if (!seenDescr || !seenOrder || !seenShape)
            fail(QStringLiteral("'descr', 'fortran_order' and 'shape' are all required"));
        return h;
    }

private:
    [[noreturn]] void fail(const QString &why) const { failHeader(m_path, why); }

    void skipBlanks()
    {
        while (m_pos < m_text.size() && (m_text[m_pos] == ' ' || m_text[m_pos] == '\t' ||
                                         m_text[m_pos] == '\n' || m_text[m_pos] == '\r'))
            ++m_pos;
    }
    char peek()
    {
        skipBlanks();
        return m_pos < m_text.size() ? m_text[m_pos] : '\0';
    }
    void expect(char c)
    {
        if (peek() != c)
            fail(QStringLiteral("'%1' expected").arg(QLatin1Char(c)));
        ++m_pos;
    }
    void once(bool &seen, const QByteArray &key)
    {
        if (seen)
            fail(QStringLiteral("the key '%1' is repeated").arg(QString::fromLatin1(key)));
        seen = true;
    }
    QByteArray string()
    {
        const char quote = peek();
        if (quote != '\'' && quote != '"')
            fail(QStringLiteral("a quoted name expected"));
        const int end = m_text.indexOf(quote, m_pos + 1);
        if (end < 0)
            fail(QStringLiteral("unterminated string"));
        const QByteArray s = m_text.mid(m_pos + 1, end - m_pos - 1);
        if (s.contains('\\') || s.contains('\n'))
            fail(QStringLiteral("unsupported characters in a string"));
        m_pos = end + 1;
        return s;
    }
    bool boolean()
    {
        peek();
        if (m_text.mid(m_pos, 4) == "True") {
            m_pos += 4;
            return true;
        }
        if (m_text.mid(m_pos, 5) == "False") {
            m_pos += 5;
            return false;
        }
        fail(QStringLiteral("'fortran_order' must be True or False"));
    }
    std::vector<qint64> tuple()
    {
        std::vector<qint64> dims;
        expect('(');
        bool trailingComma = false;
        while (peek() != ')') {
            if (!dims.empty() && !trailingComma)
                fail(QStringLiteral("',' expected in the shape"));
            dims.push_back(integer());
            trailingComma = false;
            if (peek() == ',') {
                ++m_pos;
                trailingComma = true;
            }
            if (dims.size() > 32)
                fail(QStringLiteral("too many dimensions"));
        }
        ++m_pos;
        if (dims.size() == 1 && !trailingComma)
            fail(QStringLiteral("the shape is not a tuple"));
        return dims;
    }
    qint64 integer()
    {
        peek();
        const int start = m_pos;
        qint64 v = 0;
        while (m_pos < m_text.size() && m_text[m_pos] >= '0' && m_text[m_pos] <= '9') {
            v = v * 10 + (m_text[m_pos] - '0');
            if (v > INT_MAX)
                fail(QStringLiteral("a dimension is too large"));
            ++m_pos;
        }
        if (m_pos == start)
            fail(QStringLiteral("a dimension must be a non-negative whole number"));
        // Python 2 wrote long integers with a suffix.
        if (m_pos < m_text.size() && (m_text[m_pos] == 'L' || m_text[m_pos] == 'l'))
            ++m_pos;
        return v;
    }

    const QByteArray &m_text;
    const QString &m_path;
    int m_pos = 0;
};

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

[[noreturn]] void failUnsupported(const QString &path, const ArrayHeader &h)
{
    QStringList dims;
    for (qint64 d : h.shape)
        dims << QString::number(d);
    failRead(
        QStringLiteral("The array in\n'%1'\nhas the type '%2' and the shape (%3), which cannot be an "
                       "image.\n%4")
            .arg(path, QString::fromLatin1(h.descr), dims.join(QStringLiteral(", ")), supportedArrays()));
}

template <typename T> T loadValue(const uchar *p, bool bigEndian)
{
    return bigEndian ? qFromBigEndian<T>(p) : qFromLittleEndian<T>(p);
}

DocumentImage convert(const uchar *src, const ArrayHeader &h, Kind kind, bool bigEndian, const QString &path)
{
    const qint64 height = h.shape[0];
    const qint64 width = h.shape[1];
    const qint64 channels = h.shape.size() == 3 ? h.shape[2] : 1;
    // Where the element (y, x, c) lies, in elements from the start of the data.
    const bool f = h.fortranOrder;
    auto element = [&](qint64 y, qint64 x, qint64 c) -> size_t {
        return size_t(f ? (c * width + x) * height + y : (y * width + x) * channels + c);
    };
    const int w = int(width);
    const int hgt = int(height);
    if (channels > 1) {
        QImage picture(w, hgt, QImage::Format_ARGB32);
        if (picture.isNull())
            throw std::bad_alloc();
        for (int y = 0; y < hgt; ++y) {
            auto *row = reinterpret_cast<QRgb *>(picture.scanLine(y));
            for (int x = 0; x < w; ++x) {
                const int a = channels == 4 ? src[element(y, x, 3)] : 255;
                row[x] = qRgba(src[element(y, x, 0)], src[element(y, x, 1)], src[element(y, x, 2)], a);
            }
        }
        return DocumentImage::fromPicture(picture);
    }
    const size_t n = size_t(width) * size_t(height);
    switch (kind) {
    case Kind::U8: {
        std::vector<uint8_t> indexes(n);
        if (f) {
            for (int y = 0; y < hgt; ++y)
                for (int x = 0; x < w; ++x)
                    indexes[size_t(y) * size_t(w) + size_t(x)] = src[element(y, x, 0)];
        } else {
            std::memcpy(indexes.data(), src, n);
        }
        return DocumentImage::fromIndexes8(w, hgt, indexes);
    }
    case Kind::U32: {
        std::vector<uint32_t> cells(n);
        for (int y = 0; y < hgt; ++y)
            for (int x = 0; x < w; ++x)
                cells[size_t(y) * size_t(w) + size_t(x)] =
                    loadValue<quint32>(src + 4 * element(y, x, 0), bigEndian);
        return DocumentImage::fromIndexes32(w, hgt, std::move(cells));
    }
    case Kind::F32: {
        std::vector<float> cells(n);
        for (int y = 0; y < hgt; ++y)
            for (int x = 0; x < w; ++x) {
                const quint32 bits = loadValue<quint32>(src + 4 * element(y, x, 0), bigEndian);
                std::memcpy(&cells[size_t(y) * size_t(w) + size_t(x)], &bits, 4);
            }
        return DocumentImage::fromContinuous(w, hgt, std::move(cells));
    }
    }
    failRead(QStringLiteral("Unsupported array in\n'%1'.").arg(path));
}

DocumentImage readNpy(const QByteArray &data, const QString &path)
{
    ByteReader in(data, NumpyImage::readTitle(), path);
    if (data.size() < npyMagicSize + 2 || std::memcmp(data.constData(), npyMagic, npyMagicSize) != 0)
        failRead(QStringLiteral("'%1'\nis not a NumPy array file.").arg(path));
    const int major = uchar(data[6]);
    const int minor = uchar(data[7]);
    if (major < 1 || major > 3 || minor != 0)
        failRead(QStringLiteral(
                     "The NumPy format version %1.%2 of\n'%3'\nis not supported (1.0, 2.0 and 3.0 are).")
                     .arg(major)
                     .arg(minor)
                     .arg(path));
    in.skip(8);
    const quint32 headerLength = major == 1 ? in.u16le() : in.u32le();
    if (headerLength > maxHeaderLength)
        failHeader(path, QStringLiteral("the header is %1 bytes long").arg(headerLength));
    // Version 3 headers are UTF-8, the older ones Latin-1; the keys and values we accept are ASCII
    // either way, and anything else fails the strict parse.
    const QByteArray text = in.bytes(headerLength);
    const ArrayHeader h = HeaderParser(text, path).parse();

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
    // Each dimension is below 2^31, so the products below cannot overflow 64 bits.
    const qint64 pixels = h.shape[0] * h.shape[1];
    if (pixels > NumpyImage::maxPixels)
        failRead(QStringLiteral("The array in\n'%1'\nis too large for an image (%2 x %3).")
                     .arg(path)
                     .arg(h.shape[1])
                     .arg(h.shape[0]));
    const qint64 bytes = pixels * (rgbShape ? h.shape[2] : 1) * itemSize;
    // The data must be there in full before anything is allocated for it.
    if (bytes > in.remaining())
        in.failTruncated();
    const auto *src = reinterpret_cast<const uchar *>(data.constData()) + in.position();
    return convert(src, h, kind, bigEndian, path);
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
    if (f.size() > qint64(INT_MAX) - 1)
        failRead(QStringLiteral("The file\n'%1'\nis too large.").arg(path));
    const QByteArray data = f.readAll();
    if (qint64(data.size()) != f.size())
        failRead(QStringLiteral("Could not read file '%1'.").arg(path));
    return fromBytes(data, path);
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
    try {
        return readNpy(data, path);
    } catch (const std::bad_alloc &) {
        failRead(QStringLiteral("Not enough memory to read\n'%1'.").arg(path));
    }
}

DocumentImage NumpyImage::fromNpz(const QByteArray &data, const QString &path)
{
    try {
        const auto member = ZipArchive::findMember(data, QStringLiteral(".npy"), readTitle(), path);
        if (!member)
            failRead(
                QStringLiteral("The archive\n'%1'\nholds no NumPy array (no member named *.npy).").arg(path));
        const QByteArray npy = ZipArchive::memberData(data, *member, readTitle(), path);
        return readNpy(npy, path + QLatin1Char('/') + member->name);
    } catch (const std::bad_alloc &) {
        failRead(QStringLiteral("Not enough memory to read\n'%1'.").arg(path));
    }
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
    return ZipArchive::singleMember(memberName, toNpy(image),
                                    compression == Compression::Deflated ? ZipArchive::Method::Deflated
                                                                         : ZipArchive::Method::Stored,
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
