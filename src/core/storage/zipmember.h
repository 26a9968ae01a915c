#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

// Zip archives through libzip, as the NumPy archives need them: one member found by its name and
// read as a stream, stored or deflated, and archives of one member written. The archive is read
// from its file member by member (or from bytes in memory); nothing holds it whole. Every failure
// throws DescribedException with the caller's title; path names the archive in messages.
class ZipMemberReader
{
public:
    // Opens the archive at path.
    static std::unique_ptr<ZipMemberReader> openFile(const QString &path, const QString &title);
    // Opens an archive held in memory; bytes must outlive the reader.
    static std::unique_ptr<ZipMemberReader> openBytes(const QByteArray &bytes, const QString &path,
                                                      const QString &title);
    ~ZipMemberReader();

    // Opens the first member, in directory order, whose name ends in suffix (any case); false when
    // there is none. Encrypted members and methods other than stored and deflated are refused, and
    // so is a member claiming more than deflate can expand its compressed bytes to.
    bool openMember(const QString &suffix);
    QString memberName() const { return m_memberName; }
    // The uncompressed size the directory gives for the open member.
    qint64 memberSize() const { return m_memberSize; }
    // Up to n bytes of the open member; fewer only at its end, where the checksum and size are
    // checked. Damaged data throws.
    qint64 read(char *buffer, qint64 n);
    // After the caller has read what it needs: reads the little that may be left of the member, so
    // that its checksum and size are checked. A member holding more than a small remainder past
    // what was needed is refused rather than inflated.
    void finishMember();

private:
    struct Handles;
    ZipMemberReader(std::unique_ptr<Handles> handles, const QString &path, const QString &title);
    [[noreturn]] void fail(const QString &message) const;
    [[noreturn]] void failMember(const QString &what) const;

    std::unique_ptr<Handles> m_handles;
    QString m_path;
    QString m_title;
    QString m_memberName;
    qint64 m_memberSize = 0;
    qint64 m_read = 0;
};

namespace ZipMember {

enum class Method
{
    Stored,
    Deflated
};

// An archive of one member with a fixed time stamp, so that equal contents give equal files.
QByteArray singleMember(const QByteArray &name, const QByteArray &contents, Method method, const QString &title);

} // namespace ZipMember
