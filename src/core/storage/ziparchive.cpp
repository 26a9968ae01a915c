#include "storage/ziparchive.h"

#include "palette/describedexception.h"

#include <QtEndian>

#include <zlib.h>

#include <climits>
#include <cstring>

namespace {

// Deflate cannot expand data by more than about 1032 : 1, so a member claiming more is damaged;
// the bound also keeps a few hostile bytes from asking for gigabytes.
const qint64 maxDeflateRatio = 1032;

// Little-endian fields at an offset, bounds-checked against the whole archive.
struct Fields
{
    const QByteArray &data;
    const QString &title;
    const QString &path;

    [[noreturn]] void fail(const QString &message) const { throw DescribedException(title, message); }
    [[noreturn]] void failTruncated() const
    {
        fail(QStringLiteral("Unexpected end of file in\n'%1'.").arg(path));
    }
    [[noreturn]] void failDamaged(const QString &part) const
    {
        fail(QStringLiteral("The %1 of\n'%2'\nis damaged.").arg(part, path));
    }
    void need(qint64 pos, qint64 n) const
    {
        if (pos < 0 || n < 0 || pos > qint64(data.size()) - n)
            failTruncated();
    }
    const uchar *at(qint64 pos, qint64 n) const
    {
        need(pos, n);
        return reinterpret_cast<const uchar *>(data.constData()) + pos;
    }
    bool signature(qint64 pos, const char *sig) const { return std::memcmp(at(pos, 4), sig, 4) == 0; }
    quint16 u16(qint64 pos) const { return qFromLittleEndian<quint16>(at(pos, 2)); }
    quint32 u32(qint64 pos) const { return qFromLittleEndian<quint32>(at(pos, 4)); }
    quint64 u64(qint64 pos) const { return qFromLittleEndian<quint64>(at(pos, 8)); }
};

qint64 findEndRecord(const QByteArray &data)
{
    // The end record is 22 bytes and may be followed by a comment of up to 65535 bytes.
    const qint64 last = qint64(data.size()) - 22;
    const qint64 first = qMax<qint64>(0, last - 65535);
    for (qint64 pos = last; pos >= first; --pos)
        if (std::memcmp(data.constData() + pos, "PK\x05\x06", 4) == 0)
            return pos;
    return -1;
}

// Reads the zip64 extra field of a central-directory entry: the saturated values follow in this order.
void readZip64Extra(const Fields &in, qint64 pos, qint64 end, ZipArchive::Member &m)
{
    while (pos + 4 <= end) {
        const quint16 id = in.u16(pos);
        const qint64 fieldEnd = pos + 4 + in.u16(pos + 2);
        if (fieldEnd > end)
            in.failDamaged(QStringLiteral("central directory"));
        if (id == 1) {
            qint64 q = pos + 4;
            for (quint64 *v : {&m.size, &m.compressedSize, &m.localOffset}) {
                if (*v != 0xFFFFFFFF)
                    continue;
                if (q + 8 > fieldEnd)
                    in.failDamaged(QStringLiteral("central directory"));
                *v = in.u64(q);
                q += 8;
            }
        }
        pos = fieldEnd;
    }
}

void appendLe16(QByteArray &out, quint16 v)
{
    uchar b[2];
    qToLittleEndian(v, b);
    out.append(reinterpret_cast<const char *>(b), 2);
}

void appendLe32(QByteArray &out, quint32 v)
{
    uchar b[4];
    qToLittleEndian(v, b);
    out.append(reinterpret_cast<const char *>(b), 4);
}

} // namespace

std::optional<ZipArchive::Member> ZipArchive::findMember(const QByteArray &archive, const QString &suffix,
                                                         const QString &title, const QString &path)
{
    const Fields in{archive, title, path};
    const qint64 end = findEndRecord(archive);
    if (end < 0)
        in.fail(QStringLiteral("'%1'\nis not a zip archive (no central directory found).").arg(path));
    if (in.u16(end + 4) != 0 || in.u16(end + 6) != 0)
        in.fail(QStringLiteral("'%1'\nis part of a multi-volume archive, which is not supported.").arg(path));
    quint64 entries = in.u16(end + 10);
    quint64 directorySize = in.u32(end + 12);
    quint64 directoryOffset = in.u32(end + 16);
    if (entries == 0xFFFF || directorySize == 0xFFFFFFFF || directoryOffset == 0xFFFFFFFF) {
        // Zip64: the locator just before the end record points at the larger record.
        const qint64 locator = end - 20;
        if (locator < 0 || !in.signature(locator, "PK\x06\x07"))
            in.failDamaged(QStringLiteral("zip64 directory"));
        const quint64 record = in.u64(locator + 8);
        if (record > quint64(archive.size()) || !in.signature(qint64(record), "PK\x06\x06"))
            in.failDamaged(QStringLiteral("zip64 directory"));
        entries = in.u64(qint64(record) + 32);
        directorySize = in.u64(qint64(record) + 40);
        directoryOffset = in.u64(qint64(record) + 48);
    }
    if (directoryOffset > quint64(archive.size()) ||
        directorySize > quint64(archive.size()) - directoryOffset)
        in.failTruncated();

    qint64 pos = qint64(directoryOffset);
    const qint64 directoryEnd = pos + qint64(directorySize);
    for (quint64 i = 0; i < entries; ++i) {
        if (pos + 46 > directoryEnd || !in.signature(pos, "PK\x01\x02"))
            in.failDamaged(QStringLiteral("central directory"));
        Member m;
        m.flags = in.u16(pos + 8);
        m.method = in.u16(pos + 10);
        m.crc = in.u32(pos + 16);
        m.compressedSize = in.u32(pos + 20);
        m.size = in.u32(pos + 24);
        const qint64 nameLength = in.u16(pos + 28);
        const qint64 extraLength = in.u16(pos + 30);
        m.localOffset = in.u32(pos + 42);
        const qint64 next = pos + 46 + nameLength + extraLength + in.u16(pos + 32);
        if (next > directoryEnd)
            in.failDamaged(QStringLiteral("central directory"));
        m.name =
            QString::fromUtf8(reinterpret_cast<const char *>(in.at(pos + 46, nameLength)), int(nameLength));
        readZip64Extra(in, pos + 46 + nameLength, pos + 46 + nameLength + extraLength, m);
        if (m.name.endsWith(suffix, Qt::CaseInsensitive))
            return m;
        pos = next;
    }
    return std::nullopt;
}

QByteArray ZipArchive::memberData(const QByteArray &archive, const Member &m, const QString &title,
                                  const QString &path)
{
    const Fields in{archive, title, path};
    const QString where = QStringLiteral("The member '%1' of\n'%2'").arg(m.name, path);
    if (m.flags & 1)
        in.fail(QStringLiteral("%1 is encrypted, which is not supported.").arg(where));
    if (m.method != 0 && m.method != 8)
        in.fail(QStringLiteral("%1 is compressed with method %2; only stored and deflated members are read.")
                    .arg(where)
                    .arg(m.method));
    if (m.localOffset > quint64(archive.size()))
        in.failTruncated();
    const qint64 local = qint64(m.localOffset);
    if (!in.signature(local, "PK\x03\x04"))
        in.fail(QStringLiteral("%1 has no valid local header.").arg(where));
    const qint64 start = local + 30 + in.u16(local + 26) + in.u16(local + 28);
    if (m.compressedSize > quint64(INT_MAX) || m.size > quint64(INT_MAX))
        in.fail(QStringLiteral("%1 is too large.").arg(where));
    const uchar *packed = in.at(start, qint64(m.compressedSize));

    QByteArray out;
    if (m.method == 0) {
        if (m.size != m.compressedSize)
            in.fail(QStringLiteral("%1 is damaged (its sizes differ).").arg(where));
        out = QByteArray::fromRawData(reinterpret_cast<const char *>(packed), int(m.size));
    } else {
        if (qint64(m.size) > qint64(m.compressedSize) * maxDeflateRatio + 64)
            in.fail(QStringLiteral("%1 is damaged (it claims more data than it can hold).").arg(where));
        out = QByteArray(int(m.size), Qt::Uninitialized);
        z_stream z{};
        if (inflateInit2(&z, -MAX_WBITS) != Z_OK)
            in.fail(QStringLiteral("%1 cannot be decompressed.").arg(where));
        z.next_in = const_cast<Bytef *>(packed);
        z.avail_in = uInt(m.compressedSize);
        z.next_out = reinterpret_cast<Bytef *>(out.data());
        z.avail_out = uInt(m.size);
        const int result = inflate(&z, Z_FINISH);
        const uLong produced = z.total_out;
        inflateEnd(&z);
        if (result != Z_STREAM_END || produced != m.size)
            in.fail(QStringLiteral("%1 is damaged (its compressed data does not decompress to its size).")
                        .arg(where));
    }
    const uLong crc = crc32(0L, reinterpret_cast<const Bytef *>(out.constData()), uInt(out.size()));
    if (crc != m.crc)
        in.fail(QStringLiteral("%1 is damaged (checksum mismatch).").arg(where));
    return out;
}

QByteArray ZipArchive::singleMember(const QByteArray &name, const QByteArray &contents, Method method,
                                    const QString &title)
{
    const quint32 crc =
        quint32(crc32(0L, reinterpret_cast<const Bytef *>(contents.constData()), uInt(contents.size())));
    QByteArray packed;
    if (method == Method::Deflated) {
        z_stream z{};
        if (deflateInit2(&z, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK)
            throw DescribedException(title, QStringLiteral("The data could not be compressed."));
        const uLong bound = deflateBound(&z, uLong(contents.size()));
        if (bound > uLong(INT_MAX) - 256) {
            deflateEnd(&z);
            throw DescribedException(title, QStringLiteral("The data is too large for an archive."));
        }
        packed = QByteArray(int(bound), Qt::Uninitialized);
        z.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(contents.constData()));
        z.avail_in = uInt(contents.size());
        z.next_out = reinterpret_cast<Bytef *>(packed.data());
        z.avail_out = uInt(packed.size());
        const int result = deflate(&z, Z_FINISH);
        const uLong produced = z.total_out;
        deflateEnd(&z);
        if (result != Z_STREAM_END)
            throw DescribedException(title, QStringLiteral("The data could not be compressed."));
        packed.resize(int(produced));
    } else {
        packed = contents;
    }
    if (qint64(packed.size()) > qint64(INT_MAX) - 256 - 2 * name.size())
        throw DescribedException(title, QStringLiteral("The data is too large for an archive."));
    const quint16 methodId = method == Method::Deflated ? 8 : 0;
    const quint16 dosTime = 0;            // 00:00:00
    const quint16 dosDate = (1 << 5) | 1; // 1980-01-01
    auto common = [&](QByteArray &out) {
        appendLe16(out, 20); // version needed: 2.0, for deflate
        appendLe16(out, 0);  // flags
        appendLe16(out, methodId);
        appendLe16(out, dosTime);
        appendLe16(out, dosDate);
        appendLe32(out, crc);
        appendLe32(out, quint32(packed.size()));
        appendLe32(out, quint32(contents.size()));
        appendLe16(out, quint16(name.size()));
        appendLe16(out, 0); // extra field length
    };
    QByteArray out;
    out.reserve(packed.size() + 2 * name.size() + 128);
    out.append("PK\x03\x04", 4);
    common(out);
    out.append(name);
    out.append(packed);
    const quint32 directoryOffset = quint32(out.size());
    out.append("PK\x01\x02", 4);
    appendLe16(out, 20); // made by: version 2.0
    common(out);
    appendLe16(out, 0); // comment length
    appendLe16(out, 0); // disk number
    appendLe16(out, 0); // internal attributes
    appendLe32(out, 0); // external attributes
    appendLe32(out, 0); // local header offset
    out.append(name);
    const quint32 directorySize = quint32(out.size()) - directoryOffset;
    out.append("PK\x05\x06", 4);
    appendLe16(out, 0); // this disk
    appendLe16(out, 0); // directory's disk
    appendLe16(out, 1); // entries here
    appendLe16(out, 1); // entries in all
    appendLe32(out, directorySize);
    appendLe32(out, directoryOffset);
    appendLe16(out, 0); // comment length
    return out;
}
