#pragma once

#include "palette/describedexception.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

// Bounds-checked reading of a binary palette file held in memory. Every read past the end throws the
// reader's own title with "Unexpected end of file in\n'PATH'.", so a truncated file is an error and
// never a read beyond the data.
class ByteReader
{
public:
    ByteReader(const QByteArray &data, QString title, QString path)
        : m_data(data), m_title(std::move(title)), m_path(std::move(path))
    {
    }

    qint64 position() const { return m_pos; }
    qint64 remaining() const { return qint64(m_data.size()) - m_pos; }
    bool atEnd() const { return remaining() <= 0; }

    // Up to n bytes, fewer at the end of the data; for magic words, whose mismatch has its own message.
    QByteArray peekUpTo(int n) const { return m_data.mid(int(m_pos), n); }
    QByteArray readUpTo(int n)
    {
        const QByteArray result = peekUpTo(n);
        m_pos += result.size();
        return result;
    }

    QByteArray bytes(qint64 n)
    {
        need(n);
        const QByteArray result = m_data.mid(int(m_pos), int(n));
        m_pos += n;
        return result;
    }
    void skip(qint64 n)
    {
        need(n);
        m_pos += n;
    }

    uint8_t u8()
    {
        need(1);
        return uint8_t(m_data.at(int(m_pos++)));
    }
    uint16_t u16be()
    {
        const uint16_t hi = u8();
        return uint16_t((hi << 8) | u8());
    }
    uint16_t u16le()
    {
        const uint16_t lo = u8();
        return uint16_t(lo | (u8() << 8));
    }
    uint32_t u32be()
    {
        const uint32_t hi = u16be();
        return (hi << 16) | u16be();
    }
    uint32_t u32le()
    {
        const uint32_t lo = u16le();
        return lo | (uint32_t(u16le()) << 16);
    }

    [[noreturn]] void fail(const QString &message) const { throw DescribedException(m_title, message); }
    [[noreturn]] void failTruncated() const
    {
        fail(QStringLiteral("Unexpected end of file in\n'") + m_path + QStringLiteral("'."));
    }

private:
    void need(qint64 n) const
    {
        if (n < 0 || n > remaining())
            failTruncated();
    }

    const QByteArray &m_data;
    QString m_title;
    QString m_path;
    qint64 m_pos = 0;
};
