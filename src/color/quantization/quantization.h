#pragma once

#include "palette/palette.h"

#include <QImage>

#include <functional>

// A way of computing a palette for an image.
class Quantization
{
public:
    // Told the percentage done now and then; returning false cancels the run.
    using Progress = std::function<bool(int percent)>;

    virtual ~Quantization() = default;
    // The image is an 8-bit indexed picture (fed through its colour table) or any other picture,
    // fed as 32-bit RGB. An empty palette comes back when the run was cancelled.
    virtual Palette<uint> quantize(const QImage &image, const Progress &progress = {}) = 0;
};
