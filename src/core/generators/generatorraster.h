#pragma once

#include <QImage>

#include <vector>

// What a render of a generator gives before it becomes a document image: one value a pixel as the
// framebuffer holds it after the shader's encoding (row 0 at the top). The Apollonian gasket
// colours its pixels by itself: it also keeps those colours, and its values are its colours
// decoded as any read-back is decoded.
struct GeneratorRaster
{
    int width = 0;
    int height = 0;
    std::vector<float> values; // width x height read-back values
    QImage colours;            // ARGB32, null unless the generator colours itself
};
