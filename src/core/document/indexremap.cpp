#include "document/indexremap.h"

#include <algorithm>

DocumentImage remapIndexes(const DocumentImage &image, const std::vector<int> &newPlaces)
{
    const bool indexed = image.mode() == DocumentImage::Indexed8 || image.mode() == DocumentImage::Indexed32;
    if (!indexed || newPlaces.empty())
        return image;
    const uint32_t count = uint32_t(newPlaces.size());
    const auto place = [&](uint32_t v) { return uint32_t(newPlaces[std::min(v, count - 1)]); };
    const int width = image.width(), height = image.height();
    std::vector<uint32_t> cells;
    cells.reserve(size_t(width) * size_t(height));
    if (image.mode() == DocumentImage::Indexed8) {
        for (int y = 0; y < height; ++y) {
            const uint8_t *row = image.indexRow(y);
            for (int x = 0; x < width; ++x)
                cells.push_back(place(row[x]));
        }
    } else {
        for (const uint32_t v : image.indexCells())
            cells.push_back(place(v));
    }

    DocumentImage out;
    if (image.mode() == DocumentImage::Indexed8 &&
        std::all_of(cells.begin(), cells.end(), [](uint32_t v) { return v <= 255; }))
        out = DocumentImage::fromIndexes8(width, height, std::vector<uint8_t>(cells.begin(), cells.end()));
    else
        out = DocumentImage::fromIndexes32(width, height, std::move(cells));
    out.setInterpolate(image.interpolate());
    // A colour table of the file travels with the pixels when it is the palette that was sorted.
    Palette<uint> table = image.imagePalette();
    if (table.size() == int(count))
        for (uint32_t v = 0; v < count; ++v)
            table[newPlaces[v]] = image.imagePalette()[int(v)];
    out.setImagePalette(table);
    return out;
}
