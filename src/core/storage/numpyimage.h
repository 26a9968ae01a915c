#pragma once

#include "document/documentimage.h"

#include <QByteArray>
#include <QString>

// NumPy arrays as document images. A .npy file holds one array; a .npz file is a zip archive of
// them, of which the first member named "*.npy" is read. Type and shape choose the mode:
//   uint8   (H, W)                 indexed 8bit (the caller renders it with the current palette)
//   uint32  (H, W)                 indexed 32bit
//   float32 (H, W)                 continuous
//   uint8   (H, W, 3) or (H, W, 4) RGB, from RGB or RGBA channels
// Either byte order and both C and Fortran order are read; anything else, any damaged file and any
// array past ImageLimits throws DescribedException titled readTitle(), the last from the header,
// before anything is allocated. Cells are read as they come, straight into the image: neither a
// file nor an archive member is held whole. Read images are not rendered yet.
class NumpyImage
{
public:
    enum class Compression
    {
        Stored,
        Deflated
    };

    static QString readTitle();
    static QString writeTitle();

    // Reads a .npy or .npz file; which one is told by the contents, not the name.
    static DocumentImage read(const QString &path);
    // The same for data in memory; path only names it in messages.
    static DocumentImage fromBytes(const QByteArray &data, const QString &path);
    static DocumentImage fromNpy(const QByteArray &data, const QString &path);
    static DocumentImage fromNpz(const QByteArray &data, const QString &path);

    // Mode 2 as uint8 (H, W), mode 3 as little-endian uint32, mode 4 as little-endian float32 and
    // mode 1 as uint8 (H, W, 4) RGBA, in a version 1.0 header.
    static QByteArray toNpy(const DocumentImage &image);
    // An archive with the single member "image.npy".
    static QByteArray toNpz(const DocumentImage &image, Compression compression);
    // Writes an archive when path ends in ".npz" (any case), a plain array otherwise.
    static void write(const DocumentImage &image, const QString &path,
                      Compression compression = Compression::Deflated);

    // Whether a file name has the .npy or .npz suffix, for the image dialogs.
    static bool isNumpyFileName(const QString &path);
};
