#pragma once

#include "palette/describedexception.h"

#include <QByteArray>
#include <QIODevice>
#include <QString>

#include <memory>
#include <vector>

// The uncompressed bytes of a project as they come, so that a reader checks each field as soon as
// it is there and never holds more than what it builds: a damaged or hostile file is refused after
// inflating its first bytes, not after inflating it whole.

// "Cannot load project NAME.\nREASON", titled "Could not load".
DescribedException projectLoadFailure(const QString &fileName, const QString &reason);

// Where the bytes come from.
class ProjectInput
{
public:
    virtual ~ProjectInput() = default;
    // Up to n bytes; fewer only at the end.
    virtual qint64 read(char *buffer, qint64 n) = 0;
};

// A file as the project reader sees it: gzip members are inflated as they are read and joined,
// anything after the last member is ignored, and data that is not gzip-compressed passes through
// unchanged. Each member's checksum and length are checked at its end, and a stream that is damaged
// or cut short fails with the reason. More than limit bytes of output fail as well.
class GzipInput : public ProjectInput
{
public:
    GzipInput(QIODevice &device, const QString &fileName, qint64 limit);
    ~GzipInput() override;
    qint64 read(char *buffer, qint64 n) override;
    // Reads on to the end, so that the checksum and length of every member are checked.
    void finish();

private:
    struct Inflater;
    bool fillInput();
    [[noreturn]] void fail(const QString &reason) const;

    QIODevice &m_device;
    QString m_fileName;
    qint64 m_limit;
    qint64 m_produced = 0;
    bool m_started = false;
    bool m_compressed = false;
    bool m_done = false;
    std::vector<char> m_input;
    std::unique_ptr<Inflater> m_inflater;
};

// Bytes already in memory, uncompressed.
class MemoryInput : public ProjectInput
{
public:
    explicit MemoryInput(const QByteArray &data) : m_data(data) {}
    qint64 read(char *buffer, qint64 n) override;

private:
    const QByteArray &m_data;
    qint64 m_pos = 0;
};

// The fields of a project from an input. Running into the end is not an error by itself: from there
// on every string reads as empty and every number as zero, so the next section tag fails its
// comparison, and the caller never has to handle half a value.
class ProjectReader
{
public:
    explicit ProjectReader(ProjectInput &input) : m_input(input), m_buffer(1 << 16) {}

    bool ranOut() const { return m_ranOut; }

    // A string of at most maxLength bytes; tooLong is set (and the rest of it left unread) for a
    // longer one.
    QByteArray string(int maxLength, bool *tooLong = nullptr);
    // Whether the next string is exactly tag; reads no more than the tag and its terminator.
    bool tag(const char *tag);
    quint8 u8();
    quint32 u32();
    // Up to n bytes into buffer; fewer means the data ran out.
    qint64 bytes(char *buffer, qint64 n);

private:
    bool refill();
    void runOut() { m_ranOut = true; }

    ProjectInput &m_input;
    std::vector<char> m_buffer;
    qint64 m_pos = 0;
    qint64 m_end = 0;
    bool m_ranOut = false;
};
