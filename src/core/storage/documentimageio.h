#pragma once

#include "document/documentimage.h"

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>
#include <QStringList>

// Opening and saving document images: the toolkit's image formats, GIF through GIFLIB, and NumPy arrays.
namespace DocumentImageIO {

// Reads path into a document image (not yet rendered); a GIF, told by its contents, becomes an
// 8-bit indexed image in its own colours. Throws DescribedException titled
// "Could not load" with "Cannot load NAME.\nUnknown image format." when no reader knows the file,
// "Cannot load NAME.\nUnknown error." for other failures; NumPy and GIF files give their own messages.
DocumentImage load(const QString &path);

// Writes image to path through QSaveFile: NumPy files keep the cells; other formats get the
// picture (indexed where the image is mode 2; GIF only for mode 2). Throws DescribedException
// titled "Could not save".
void save(const QString &path, const DocumentImage &image);

// Writes picture in format (a writer's name such as "png") through QSaveFile. A failure says why:
// a null picture is one that could not be built at size (it names the size), then the image
// writer's reason, then the file's ("No space left on device").
void savePicture(const QString &path, const QImage &picture, const QSize &size, const QByteArray &format);

// The open and save dialogs' filters: every readable / writable format, then NumPy, then all files.
// What can be written depends on the image's mode: GIF is offered for 8-bit indexed images.
QStringList openFilters();
QStringList saveFilters(int mode = DocumentImage::None);

} // namespace DocumentImageIO
