#include "storage/documentimageio.h"

#include "palette/describedexception.h"
#include "formats/writefileatomically.h"
#include "storage/numpyimage.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>

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
    QImage picture = reader.read();
    if (picture.isNull()) {
        const bool unknownFormat = reader.error() == QImageReader::UnsupportedFormatError;
        throw DescribedException(QStringLiteral("Could not load"),
                                 unknownFormat ? QStringLiteral("Cannot load %1.\nUnknown image format.").arg(name)
                                               : QStringLiteral("Cannot load %1.\nUnknown error.").arg(name));
    }
    return DocumentImage::fromPicture(std::move(picture));
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

    const FileWriteResult written = writeFileAtomically(path, [&](QIODevice &device) {
        QImageWriter writer(&device, suffix.toLatin1());
        return writer.write(image.picture());
    });
    if (!written.ok())
        throw DescribedException(QStringLiteral("Could not save"), QStringLiteral("Unable to save %1.").arg(name));
}

QStringList openFilters()
{
    return {QStringLiteral("Images (%1 *.npy *.npz)").arg(wildcards(QImageReader::supportedImageFormats())),
            QStringLiteral("NumPy arrays (*.npy *.npz)"), QStringLiteral("All files (* *.*)")};
}

QStringList saveFilters()
{
    QStringList filters;
    for (const QByteArray &f : QImageWriter::supportedImageFormats())
        filters << QStringLiteral("%1 images (*.%2)").arg(QString::fromLatin1(f).toUpper(), QString::fromLatin1(f));
    filters << QStringLiteral("NumPy arrays (*.npy)") << QStringLiteral("Zipped NumPy arrays (*.npz)");
    return filters;
}

} // namespace DocumentImageIO
