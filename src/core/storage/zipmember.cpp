#include "storage/zipmember.h"

#include "palette/describedexception.h"

#include <QFile>

#include <zip.h>

#include <climits>

namespace {

// Deflate cannot expand data by more than about 1032 : 1, so a member claiming more is damaged;
// the bound also keeps a few hostile bytes from asking for gigabytes.
const qint64 maxDeflateRatio = 1032;

QString zipErrorText(int code)
{
    zip_error_t error;
    zip_error_init_with_code(&error, code);
    const QString text = QString::fromUtf8(zip_error_strerror(&error));
    zip_error_fini(&error);
    return text;
}

} // namespace

struct ZipMemberReader::Handles
{
    zip_t *archive = nullptr;
    zip_file_t *member = nullptr;

    ~Handles()
    {
        if (member)
            zip_fclose(member);
        if (archive)
            zip_discard(archive);
    }
};

ZipMemberReader::ZipMemberReader(std::unique_ptr<Handles> handles, const QString &path, const QString &title)
    : m_handles(std::move(handles)), m_path(path), m_title(title)
{
}

ZipMemberReader::~ZipMemberReader() = default;

void ZipMemberReader::fail(const QString &message) const
{
    throw DescribedException(m_title, message);
}

void ZipMemberReader::failMember(const QString &what) const
{
    fail(QStringLiteral("The member '%1' of\n'%2'\n%3").arg(m_memberName, m_path, what));
}

namespace {

[[noreturn]] void failOpen(int code, const QString &path, const QString &title)
{
    QString message;
    switch (code) {
    case ZIP_ER_NOZIP:
    case ZIP_ER_INCONS:
        message = QStringLiteral("'%1'\nis not a zip archive, or its directory is damaged.").arg(path);
        break;
    case ZIP_ER_MULTIDISK:
        message = QStringLiteral("'%1'\nis part of a multi-volume archive, which is not supported.").arg(path);
        break;
    case ZIP_ER_NOENT:
    case ZIP_ER_OPEN:
        message = QStringLiteral("Could not open file '%1'.").arg(path);
        break;
    case ZIP_ER_MEMORY:
        message = QStringLiteral("Not enough memory to read\n'%1'.").arg(path);
        break;
    default:
        message = QStringLiteral("'%1'\ncould not be read as a zip archive: %2.").arg(path, zipErrorText(code));
        break;
    }
    throw DescribedException(title, message);
}

} // namespace

std::unique_ptr<ZipMemberReader> ZipMemberReader::openFile(const QString &path, const QString &title)
{
    auto handles = std::make_unique<Handles>();
    int code = 0;
    handles->archive = zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY | ZIP_CHECKCONS, &code);
    if (!handles->archive)
        failOpen(code, path, title);
    return std::unique_ptr<ZipMemberReader>(new ZipMemberReader(std::move(handles), path, title));
}

std::unique_ptr<ZipMemberReader> ZipMemberReader::openBytes(const QByteArray &bytes, const QString &path,
                                                            const QString &title)
{
    auto handles = std::make_unique<Handles>();
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t *source = zip_source_buffer_create(bytes.constData(), zip_uint64_t(bytes.size()), 0, &error);
    if (source)
        handles->archive = zip_open_from_source(source, ZIP_RDONLY | ZIP_CHECKCONS, &error);
    const int code = zip_error_code_zip(&error);
    zip_error_fini(&error);
    if (!handles->archive) {
        if (source)
            zip_source_free(source);
        failOpen(code, path, title);
    }
    return std::unique_ptr<ZipMemberReader>(new ZipMemberReader(std::move(handles), path, title));
}

bool ZipMemberReader::openMember(const QString &suffix)
{
    zip_t *archive = m_handles->archive;
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const char *name = zip_get_name(archive, zip_uint64_t(i), 0);
        if (!name || !QString::fromUtf8(name).endsWith(suffix, Qt::CaseInsensitive))
            continue;
        m_memberName = QString::fromUtf8(name);
        zip_stat_t stat;
        zip_stat_init(&stat);
        if (zip_stat_index(archive, zip_uint64_t(i), 0, &stat) != 0)
            failMember(QStringLiteral("cannot be read."));
        if ((stat.valid & ZIP_STAT_ENCRYPTION_METHOD) && stat.encryption_method != ZIP_EM_NONE)
            failMember(QStringLiteral("is encrypted, which is not supported."));
        if (stat.comp_method != ZIP_CM_STORE && stat.comp_method != ZIP_CM_DEFLATE)
            failMember(QStringLiteral("is compressed with method %1; only stored and deflated members are read.")
                           .arg(stat.comp_method));
        if (stat.size > zip_uint64_t(LLONG_MAX) / 2 ||
            (stat.comp_method == ZIP_CM_DEFLATE && qint64(stat.size) > qint64(stat.comp_size) * maxDeflateRatio + 64))
            failMember(QStringLiteral("is damaged (it claims more data than it can hold)."));
        if (stat.comp_method == ZIP_CM_STORE && stat.size != stat.comp_size)
            failMember(QStringLiteral("is damaged (its sizes differ)."));
        m_memberSize = qint64(stat.size);
        m_handles->member = zip_fopen_index(archive, zip_uint64_t(i), 0);
        if (!m_handles->member) {
            const int code = zip_error_code_zip(zip_get_error(archive));
            failMember(code == ZIP_ER_MEMORY ? QStringLiteral("cannot be read: there is not enough memory.")
                                             : QStringLiteral("cannot be read: %1.").arg(zipErrorText(code)));
        }
        return true;
    }
    return false;
}

qint64 ZipMemberReader::read(char *buffer, qint64 n)
{
    qint64 total = 0;
    while (total < n) {
        const zip_int64_t got = zip_fread(m_handles->member, buffer + total, zip_uint64_t(n - total));
        if (got < 0) {
            const int code = zip_error_code_zip(zip_file_get_error(m_handles->member));
            switch (code) {
            case ZIP_ER_CRC:
                failMember(QStringLiteral("is damaged (checksum mismatch)."));
            case ZIP_ER_ZLIB:
            case ZIP_ER_COMPRESSED_DATA:
            case ZIP_ER_INCONS:
                failMember(QStringLiteral("is damaged (its compressed data does not decompress to its size)."));
            case ZIP_ER_READ:
            case ZIP_ER_EOF:
                fail(QStringLiteral("Unexpected end of file in\n'%1'.").arg(m_path));
            default:
                failMember(QStringLiteral("cannot be read: %1.").arg(zipErrorText(code)));
            }
        }
        if (got == 0)
            break;
        total += got;
        m_read += got;
        if (m_read > m_memberSize)
            failMember(QStringLiteral("is damaged (its compressed data does not decompress to its size)."));
    }
    // The end of the data must be where the directory says it is.
    if (total < n && m_read != m_memberSize)
        failMember(QStringLiteral("is damaged (its compressed data does not decompress to its size)."));
    return total;
}

void ZipMemberReader::finishMember()
{
    const qint64 maxRemainder = qint64(1) << 20;
    if (m_memberSize - m_read > maxRemainder)
        failMember(QStringLiteral("holds %1 bytes past its contents.").arg(m_memberSize - m_read));
    char sink[1 << 16];
    while (read(sink, sizeof sink) == qint64(sizeof sink)) {
    }
}

namespace ZipMember {

QByteArray singleMember(const QByteArray &name, const QByteArray &contents, Method method, const QString &title)
{
    const auto fail = [&](const QString &why) { throw DescribedException(title, why); };
    zip_error_t error;
    zip_error_init(&error);
    // The archive is built in memory and committed by the caller, who writes files whole or not at all.
    zip_source_t *target = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_error_fini(&error);
    if (!target)
        fail(QStringLiteral("The archive could not be started."));
    zip_source_keep(target);
    const auto release = [&]() { zip_source_free(target); };
    zip_error_init(&error);
    zip_t *archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
    zip_error_fini(&error);
    if (!archive) {
        release();
        release();
        fail(QStringLiteral("The archive could not be started."));
    }
    zip_source_t *member = zip_source_buffer(archive, contents.constData(), zip_uint64_t(contents.size()), 0);
    const zip_int64_t index = member ? zip_file_add(archive, name.constData(), member, ZIP_FL_ENC_UTF_8) : -1;
    bool ok = index >= 0;
    if (!ok && member)
        zip_source_free(member);
    // 1980-01-01 00:00, the first time a zip can hold: no clock in the file.
    ok = ok &&
         zip_set_file_compression(archive, zip_uint64_t(index),
                                  method == Method::Deflated ? ZIP_CM_DEFLATE : ZIP_CM_STORE, 0) == 0 &&
         zip_file_set_dostime(archive, zip_uint64_t(index), 0, (1 << 5) | 1, 0) == 0;
    if (!ok) {
        zip_discard(archive);
        release();
        fail(QStringLiteral("The data could not be compressed."));
    }
    if (zip_close(archive) != 0) {
        const int code = zip_error_code_zip(zip_get_error(archive));
        zip_discard(archive);
        release();
        fail(code == ZIP_ER_MEMORY ? QStringLiteral("There is not enough memory to write the archive.")
                                   : QStringLiteral("The data could not be compressed."));
    }
    QByteArray out;
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_source_stat(target, &stat) == 0 && (stat.valid & ZIP_STAT_SIZE) && stat.size < zip_uint64_t(INT_MAX) &&
        zip_source_open(target) == 0) {
        out.resize(int(stat.size));
        const zip_int64_t got = zip_source_read(target, out.data(), stat.size);
        zip_source_close(target);
        if (got != zip_int64_t(stat.size))
            out.clear();
    }
    release();
    if (out.isEmpty())
        fail(QStringLiteral("The data is too large for an archive."));
    return out;
}

} // namespace ZipMember
