#include "storage/documentimageio.h"

#include "document/imagelimits.h"
#include "palette/describedexception.h"
#include "formats/writefileatomically.h"
#include "storage/gifimage.h"
#include "storage/numpyimage.h"

#include <QFile>
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

bool beginsAsPng(const QString &path)
{
    static const QByteArray signature("\x89PNG\r\n\x1a\n", 8);
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.read(signature.size()) == signature;
}

} // namespace

DocumentImage load(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    if (NumpyImage::isNumpyFileName(path))
        return NumpyImage::read(path);
    if (GifImage::isGifFile(path))
        return GifImage::read(path);

    // A wrong extension should not stop a readable file, so the reader decides by the content.
    // Deciding means loading every image plugin into memory (megabytes beside a photograph), so
    // a file that begins as a PNG goes straight to the built-in PNG reader, which no plugin
    // replaces.
    QImageReader reader(path);
    if (beginsAsPng(path)) {
        reader.setFormat("png");
        reader.setAutoDetectImageFormat(false);
    } else {
        reader.setDecideFormatFromContent(true);
    }
    // A few hundred bytes of header can declare gigapixels: the size is weighed before decoding.
    const QSize declared = reader.size();
    if (declared.isValid() && !ImageLimits::fits(declared.width(), declared.height()))
        throw DescribedException(QStringLiteral("Could not load"),
                                 QStringLiteral("Cannot load %1.\n").arg(name) +
                                     ImageLimits::tooLarge(declared.width(), declared.height()));
    QImage picture = reader.read();
    if (picture.isNull()) {
        const bool unknownFormat = reader.error() == QImageReader::UnsupportedFormatError;
        throw DescribedException(QStringLiteral("Could not load"),
                                 unknownFormat ? QStringLiteral("Cannot load %1.\nUnknown image format.").arg(name)
                                               : QStringLiteral("Cannot load %1.\nUnknown error.").arg(name));
    }
    // Formats that cannot tell their size up front are held to the same limit once decoded.
    if (!ImageLimits::fits(picture.width(), picture.height()))
        throw DescribedException(QStringLiteral("Could not load"),
                                 QStringLiteral("Cannot load %1.\n").arg(name) +
                                     ImageLimits::tooLarge(picture.width(), picture.height()));
    const DocumentImage image = DocumentImage::fromPicture(std::move(picture));
    if (image.isNull())
        throw DescribedException(QStringLiteral("Could not load"),
                                 QStringLiteral("Cannot load %1.\nThere is not enough memory.").arg(name));
    return image;
}

void savePicture(const QString &path, const QImage &picture, const QSize &size, const QByteArray &format)
{
    const QString name = QFileInfo(path).fileName();
    const auto fail = [&name](const QString &reason) {
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Unable to save %1.\n%2").arg(name, reason));
    };
    // A picture too large for memory comes out null; that, not the file, is what failed.
    if (picture.isNull())
        fail(QStringLiteral("The picture of %1 x %2 pixels could not be built: there is not enough memory for it.")
                 .arg(size.width())
                 .arg(size.height()));
    QString writerError;
    const FileWriteResult written = writeFileAtomically(path, [&](QIODevice &device) {
        QImageWriter writer(&device, format);
        if (writer.write(picture))
            return true;
        writerError = writer.errorString();
        return false;
    });
    // When a write failed, the file's reason is the real one; the image writer only saw it fail.
    if (!written.ok())
        fail(written.stage == FileWriteResult::NotProduced ? writerError : written.error);
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
    if (suffix == QLatin1String("gif")) {
        // Only 8-bit indexed pixels are GIF pixels; the toolkit has no GIF writer of its own.
        const QByteArray gif = GifImage::toBytes(image);
        if (gif.isEmpty())
            throw DescribedException(QStringLiteral("Could not save"), QStringLiteral("Unable to save %1.").arg(name));
        const FileWriteResult written = writeFileAtomically(path, gif);
        if (!written.ok())
            throw DescribedException(QStringLiteral("Could not save"),
                                     QStringLiteral("Unable to save %1.\n%2").arg(name, written.error));
        return;
    }
    savePicture(path, image.picture(), QSize(image.width(), image.height()), suffix.toLatin1());
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
