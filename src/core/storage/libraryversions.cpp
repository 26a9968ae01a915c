#include "storage/libraryversions.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
#include <libswscale/swscale.h>
}
#include <gif_lib.h>
#include <zip.h>
#include <zlib.h>

namespace {

// FFmpeg packs major, minor and micro into one number.
QString ffmpegVersion(unsigned v)
{
    return QStringLiteral("%1.%2.%3").arg(v >> 16).arg((v >> 8) & 0xff).arg(v & 0xff);
}

QString sqliteVersion()
{
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QSQLITE")))
        return QStringLiteral("not available");
    const QString name = QStringLiteral("chromaxis-version-") + QUuid::createUuid().toString(QUuid::Id128);
    QString version;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(QStringLiteral(":memory:"));
        if (db.open()) {
            QSqlQuery query(db);
            if (query.exec(QStringLiteral("select sqlite_version()")) && query.next())
                version = query.value(0).toString();
            db.close();
        }
    }
    QSqlDatabase::removeDatabase(name);
    return version.isEmpty() ? QStringLiteral("unknown") : version;
}

} // namespace

std::vector<std::pair<QString, QString>> libraryVersions()
{
    return {
        {QStringLiteral("Qt"), QString::fromLatin1(qVersion())},
        {QStringLiteral("zlib"), QString::fromLatin1(zlibVersion())},
        {QStringLiteral("GIFLIB"), QStringLiteral("%1.%2.%3").arg(GIFLIB_MAJOR).arg(GIFLIB_MINOR).arg(GIFLIB_RELEASE)},
        {QStringLiteral("libzip"), QString::fromLatin1(zip_libzip_version())},
        {QStringLiteral("libavcodec"), ffmpegVersion(avcodec_version())},
        {QStringLiteral("libavformat"), ffmpegVersion(avformat_version())},
        {QStringLiteral("libavutil"), ffmpegVersion(avutil_version())},
        {QStringLiteral("libswscale"), ffmpegVersion(swscale_version())},
        {QStringLiteral("SQLite"), sqliteVersion()},
    };
}
