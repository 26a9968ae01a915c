#pragma once

#include "document/documentimage.h"
#include "palette/palette.h"
#include "storage/projectfile.h"

#include <QString>

// The image a file becomes when the window opens it: a project's image and palette, or an image
// file shown in its own colours or else through the start-up palette. A fresh window has no last
// palette until an image in its own colours replaces the start-up palette.
struct CliDocument
{
    DocumentImage image;
    Palette<uint> palette;
    Palette<uint> lastPalette;
    QString imageFileName;
};

// Throws DescribedException "No image" for a project without one, and the readers' errors.
CliDocument openCliDocument(const QString &path);

// A command's picture at path: a project (project holds whatever else it should keep: file names,
// flags) with the image and the palette, or the image file rendered through the palette (indexed
// where the result is and the format allows it; .npy keeps the cells).
void writeImageResult(const QString &path, DocumentImage image, const Palette<uint> &palette,
                      ProjectData project = {});
