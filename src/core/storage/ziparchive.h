#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Just enough of the zip format for NumPy archives: finding a member in an archive held in memory
// and reading it whole, stored or deflated, and writing an archive of one member. Zip64 sizes are
// read; encryption, other compression methods and multi-volume archives are refused. Every failure
// throws DescribedException with the caller's title; path names the archive in messages.
class ZipArchive
{
public:
    struct Member
    {
        QString name;
        quint16 flags = 0;
        quint16 method = 0;
        quint32 crc = 0;
        quint64 compressedSize = 0;
        quint64 size = 0;
        quint64 localOffset = 0;
    };

    enum class Method
    {
        Stored,
        Deflated
    };

    // The first member, in central-directory order, whose name ends in suffix (any case).
    static std::optional<Member> findMember(const QByteArray &archive, const QString &suffix,
                                            const QString &title, const QString &path);
    // The member's contents, checked against its size and checksum. A stored member is returned
    // without a copy, so it lives only as long as archive.
    static QByteArray memberData(const QByteArray &archive, const Member &member, const QString &title,
                                 const QString &path);
    // An archive of one member with a fixed time stamp, so that equal contents give equal files.
    static QByteArray singleMember(const QByteArray &name, const QByteArray &contents, Method method,
                                   const QString &title);
};
