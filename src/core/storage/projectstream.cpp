#include "storage/projectstream.h"

#include <zlib.h>

#include <cstring>

DescribedException projectLoadFailure(const QString &fileName, const QString &reason)
{
    return DescribedException(QStringLiteral("Could not load"),
                              QStringLiteral("Cannot load project %1.\n").arg(fileName) + reason);
}

// ---- GzipInput -------------------------------------------------------------------------------------

struct GzipInput::Inflater
{
    z_stream z{};
    bool active = false;
    ~Inflater()
    {
        if (active)
            inflateEnd(&z);
    }
};

GzipInput::GzipInput(QIODevice &device, const QString &fileName, qint64 limit)
    : m_device(device), m_fileName(fileName), m_limit(limit), m_input(1 << 16), m_inflater(new Inflater)
{
}

GzipInput::~GzipInput() = default;

void GzipInput::fail(const QString &reason) const
{
    throw projectLoadFailure(m_fileName, reason);
}

// Makes sure at least one byte of compressed input is waiting; false at the end of the file.
bool GzipInput::fillInput()
{
    z_stream &z = m_inflater->z;
    if (z.avail_in > 0)
        return true;
    const qint64 got = m_device.read(m_input.data(), qint64(m_input.size()));
    if (got <= 0)
        return false;
    z.next_in = reinterpret_cast<Bytef *>(m_input.data());
    z.avail_in = uInt(got);
    return true;
}

namespace {

bool startsGzip(const QByteArray &lead)
{
    return lead.size() >= 2 && uchar(lead[0]) == 0x1f && uchar(lead[1]) == 0x8b;
}

} // namespace

qint64 GzipInput::read(char *buffer, qint64 n)
{
    if (!m_started) {
        m_started = true;
        m_compressed = startsGzip(m_device.peek(2));
        if (m_compressed) {
            // Gzip members only: their trailer carries the checksum and the length that are checked.
            if (inflateInit2(&m_inflater->z, MAX_WBITS + 16) != Z_OK)
                fail(QStringLiteral("The decompressor could not be started."));
            m_inflater->active = true;
        }
    }
    if (m_done || n <= 0)
        return 0;
    // Never more than one byte past the limit, however much the stream would give.
    n = qMin(n, m_limit - m_produced + 1);
    qint64 produced = 0;
    if (!m_compressed) {
        while (produced < n) {
            const qint64 got = m_device.read(buffer + produced, n - produced);
            if (got <= 0) {
                m_done = true;
                break;
            }
            produced += got;
        }
    } else {
        z_stream &z = m_inflater->z;
        z.next_out = reinterpret_cast<Bytef *>(buffer);
        z.avail_out = uInt(qMin<qint64>(n, 1 << 30));
        while (z.avail_out > 0) {
            if (!fillInput())
                fail(QStringLiteral("The file is cut short: its compressed data ends early."));
            const int result = inflate(&z, Z_NO_FLUSH);
            if (result == Z_STREAM_END) {
                // The member's checksum and length matched. Another member continues the stream;
                // anything else after it is ignored.
                if (z.avail_in < 2) {
                    std::memmove(m_input.data(), z.next_in, z.avail_in);
                    const qint64 got = m_device.read(m_input.data() + z.avail_in,
                                                     qint64(m_input.size()) - qint64(z.avail_in));
                    z.next_in = reinterpret_cast<Bytef *>(m_input.data());
                    z.avail_in += uInt(qMax<qint64>(0, got));
                }
                if (z.avail_in >= 2 && z.next_in[0] == 0x1f && z.next_in[1] == 0x8b && inflateReset(&z) == Z_OK)
                    continue;
                m_done = true;
                break;
            }
            if (result == Z_OK || result == Z_BUF_ERROR)
                continue;
            if (result == Z_MEM_ERROR)
                fail(QStringLiteral("There is not enough memory."));
            const QString why = z.msg ? QString::fromLatin1(z.msg) : QString();
            if (why == QLatin1String("incorrect data check"))
                fail(QStringLiteral("The file is damaged: its checksum does not match its contents."));
            if (why == QLatin1String("incorrect length check"))
                fail(QStringLiteral("The file is damaged: its recorded length does not match its contents."));
            fail(QStringLiteral("The file is damaged: its compressed data is invalid (%1).").arg(why));
        }
        produced = qint64(reinterpret_cast<char *>(z.next_out) - buffer);
    }
    m_produced += produced;
    if (m_produced > m_limit)
        fail(QStringLiteral("The uncompressed project is larger than %1 bytes.").arg(m_limit));
    return produced;
}

void GzipInput::finish()
{
    std::vector<char> sink(1 << 16);
    while (read(sink.data(), qint64(sink.size())) > 0) {
    }
}

// ---- MemoryInput -----------------------------------------------------------------------------------

qint64 MemoryInput::read(char *buffer, qint64 n)
{
    const qint64 count = qMax<qint64>(0, qMin(n, qint64(m_data.size()) - m_pos));
    std::memcpy(buffer, m_data.constData() + m_pos, size_t(count));
    m_pos += count;
    return count;
}

// ---- ProjectReader ---------------------------------------------------------------------------------

bool ProjectReader::refill()
{
    if (m_ranOut)
        return false;
    m_pos = 0;
    m_end = m_input.read(m_buffer.data(), qint64(m_buffer.size()));
    if (m_end <= 0) {
        m_end = 0;
        runOut();
        return false;
    }
    return true;
}

QByteArray ProjectReader::string(int maxLength, bool *tooLong)
{
    if (tooLong)
        *tooLong = false;
    QByteArray text;
    for (;;) {
        if (m_pos == m_end && !refill())
            return {};
        const char *start = m_buffer.data() + m_pos;
        const auto *nul = static_cast<const char *>(std::memchr(start, 0, size_t(m_end - m_pos)));
        const qint64 length = nul ? nul - start : m_end - m_pos;
        if (qint64(text.size()) + length > maxLength) {
            if (tooLong)
                *tooLong = true;
            return {};
        }
        text.append(start, int(length));
        m_pos += length;
        if (nul) {
            ++m_pos;
            return text;
        }
    }
}

bool ProjectReader::tag(const char *expected)
{
    const int length = int(std::strlen(expected));
    bool tooLong = false;
    return string(length, &tooLong) == expected && !tooLong;
}

qint64 ProjectReader::bytes(char *buffer, qint64 n)
{
    qint64 done = 0;
    while (done < n) {
        if (m_pos == m_end && !refill())
            break;
        const qint64 count = qMin(n - done, m_end - m_pos);
        std::memcpy(buffer + done, m_buffer.data() + m_pos, size_t(count));
        m_pos += count;
        done += count;
    }
    if (done < n)
        runOut();
    return done;
}

quint8 ProjectReader::u8()
{
    char c = 0;
    return bytes(&c, 1) == 1 ? quint8(c) : 0;
}

quint32 ProjectReader::u32()
{
    uchar b[4];
    if (bytes(reinterpret_cast<char *>(b), 4) != 4)
        return 0;
    return (quint32(b[0]) << 24) | (quint32(b[1]) << 16) | (quint32(b[2]) << 8) | quint32(b[3]);
}
