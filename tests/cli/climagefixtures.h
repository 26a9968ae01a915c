#pragma once

#include "storage/numpyimage.h"

#include <QImage>
#include <QTemporaryDir>

#include <cstring>

// The small pictures the image and project commands are tried on: "indexed.png" (3 x 2, three
// colours), "rgb.png" (4 x 5, one colour) and "cont.npy" (2 x 1 continuous cells 0 and 16384).
inline bool writeImageFixtures(const QTemporaryDir &folder)
{
    QImage indexed(3, 2, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(9, 9, 9), qRgb(200, 100, 50), qRgb(1, 2, 3)});
    const uchar rows[2][3] = {{0, 1, 2}, {2, 1, 0}};
    for (int y = 0; y < 2; ++y)
        std::memcpy(indexed.scanLine(y), rows[y], 3);
    QImage rgb(4, 5, QImage::Format_RGB32);
    rgb.fill(qRgb(10, 20, 30));
    NumpyImage::write(DocumentImage::fromContinuous(2, 1, {0.0f, 16384.0f}), folder.filePath("cont.npy"));
    return indexed.save(folder.filePath("indexed.png")) && rgb.save(folder.filePath("rgb.png"));
}
