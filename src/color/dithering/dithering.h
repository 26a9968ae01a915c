#pragma once

#include "quantization/colorindex.h"
#include "palette/palette.h"

#include <QImage>

#include <cstdint>
#include <functional>
#include <vector>

// What a dithering run produces, in one of the image kinds of the document:
//   2 indexed 8bit (palettes of at most 256 entries), 3 indexed 32bit, 4 continuous
// kind 0 means the run was cancelled. Rows are width apart, top row first.
struct DitherResult
{
    int kind = 0;
    int width = 0;
    int height = 0;
    std::vector<uint8_t> indexes8;
    std::vector<uint32_t> indexes32;
    std::vector<float> values;
};

// Maps every pixel of an RGB picture to an index of a palette through a shared ColorIndex (not
// owned), producing an indexed or a continuous image.
class Dithering
{
public:
    enum Target : int
    {
        Indexed = 2,
        Continuous = 4
    };
    // Told the percentage done now and then; returning false cancels the run.
    using Progress = std::function<bool(int percent)>;

    explicit Dithering(ColorIndex *index) : m_index(index) {}
    virtual ~Dithering() = default;

    // image: 32-bit RGB pixels (other formats are converted first), alpha ignored.
    // target 4 makes a continuous image, anything else an indexed one.
    virtual DitherResult dither(const QImage &image, const Palette<uint> &palette, int target,
                                const Progress &progress = {}) = 0;

protected:
    // Collects one palette index a pixel into the result's form. An indexed result of a palette
    // of at most 256 entries is stored as the 8-bit picture that converting the 32-bit index
    // picture to an 8-bit one with the palette as colour table (no dithering) yields: each index
    // becomes the first entry of the same colour.
    class Output
    {
    public:
        Output(const Palette<uint> &palette, int target, int width, int height);
        void set(size_t pixel, uint32_t index)
        {
            if (m_kind == 2)
                m_result.indexes8[pixel] = m_remap[index];
            else if (m_kind == 3)
                m_result.indexes32[pixel] = index;
            else
                m_result.values[pixel] = float(double(index) * 65535.0 / m_paletteSize);
        }
        DitherResult take() { return std::move(m_result); }

    private:
        int m_kind = 3;
        double m_paletteSize = 1;
        std::vector<uint8_t> m_remap;
        DitherResult m_result;
    };

    static QImage rgbPicture(const QImage &image);
    // Reports every so many rows; false when cancelled.
    static bool report(const Progress &progress, int row, int rows);

    ColorIndex *m_index = nullptr;
};
