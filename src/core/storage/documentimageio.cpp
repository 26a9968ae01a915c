#include "storage/documentimageio.h"

#include "palette/describedexception.h"
#include "formats/writefileatomically.h"
#include "storage/gifimage.h"
#include "storage/numpyimage.h"

#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>

#include <algorithm>

namespace DocumentImageIO {

namespace {

QString wildcards(const QList<QByteArray> &formats)
{
    QStringList patterns;
    for (const QByteArray &f : formats)
        patterns << QStringLiteral("*.") + QString::fromLatin1(f).toLower();
    patterns.removeDuplicates();
    return patterns.join(' ');
}

} // namespace

DocumentImage load(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    if (NumpyImage::isNumpyFileName(path))
        return NumpyImage::read(path);
    if (GifImage::isGifFile(path))
        return GifImage::read(path);

    QImageReader reader(path);
    // A wrong extension should not stop a readable file.
    reader.setDecideFormatFromContent(true);
    const QImage picture = reader.read();
    if (picture.isNull()) {
        const bool unknownFormat = reader.error() == QImageReader::UnsupportedFormatError;
        throw DescribedException(QStringLiteral("Could not load"),
                                 unknownFormat ? QStringLiteral("Cannot load %1.\nUnknown image format.").arg(name)
                                               : QStringLiteral("Cannot load %1.\nUnknown error.").arg(name));
    }
    return DocumentImage::fromPicture(picture);
}

void save(const QString &path, const DocumentImage &image)
{
    const QString name = QFileInfo(path).fileName();
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (image.isNull())
        throw DescribedException(QStringLiteral("Could not save"), QStringLiteral("Unable to save %1.").arg(name));
    if (NumpyImage::isNumpyFileName(path)) {
        NumpyImage::write(image, path);
        return;
    }
    if (image.mode() == DocumentImage::RGB && suffix == QLatin1String("gif"))
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Unable to save RGB image as .gif."));

    FileWriteResult written;
    if (suffix == QLatin1String("gif")) {
        const QByteArray gif = GifImage::toBytes(image);
        written = gif.isEmpty() ? FileWriteResult{FileWriteResult::NotWritten, QString()}
                                : writeFileAtomically(path, gif);
    } else {
        written = writeFileAtomically(path, [&](QIODevice &device) {
            QImageWriter writer(&device, suffix.toLatin1());
            return writer.write(image.picture());
        });
    }
    if (!written.ok())
        throw DescribedException(QStringLiteral("Could not save"), QStringLiteral("Unable to save %1.").arg(name));
}

QStringList openFilters()
{
    // GIF is read here whether or not the toolkit has a reader for it.
    const QString readable = wildcards(QImageReader::supportedImageFormats() << "gif");
    return {QStringLiteral("Images (%1 *.npy *.npz)").arg(readable),
            QStringLiteral("NumPy arrays (*.npy *.npz)"), QStringLiteral("All files (* *.*)")};
}

QStringList saveFilters(int mode)
{
    QList<QByteArray> formats = QImageWriter::supportedImageFormats();
    // Only 8-bit indexed pixels are GIF pixels; the toolkit writes no GIF itself.
    if (mode == DocumentImage::Indexed8 && !formats.contains("gif")) {
        formats << "gif";
        std::sort(formats.begin(), formats.end());
    }
    QStringList filters;
    for (const QByteArray &f : formats)
        filters << QStringLiteral("%1 images (*.%2)").arg(QString::fromLatin1(f).toUpper(), QString::fromLatin1(f));
    filters << QStringLiteral("NumPy arrays (*.npy)") << QStringLiteral("Zipped NumPy arrays (*.npz)");
    return filters;
}

} // namespace DocumentImageIO
