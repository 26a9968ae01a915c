#pragma once

#include "quantization/quantizationalgorithm.h"

#include <cstdint>
#include <deque>
#include <vector>

// Median cut over a list of (colour, count) entries. The boxes wait in a first-in first-out list
// and are split in the order they were made, so the cut proceeds breadth-first: one round over
// the list doubles the number of boxes. There is deliberately no "largest box first" rule; with a
// count that is not a power of two the boxes at the front end up finer.
class QA_MedianCut : public QuantizationAlgorithm
{
public:
    struct Entry
    {
        uint32_t color = 0; // 0xRRGGBB
        uint32_t count = 0;
    };

    QA_MedianCut() = default;
    explicit QA_MedianCut(std::vector<Entry> entries);

    // Adds one pixel as an entry of its own (the histogram driver passes whole entries instead).
    int addColor(uint rgb) override;
    void setColorCount(uint n) override;
    // One colour per box, front to back: the count-weighted mean of its entries, truncated.
    void getPalette(Palette<uint> &out) override;

    int boxCount() const { return int(m_boxes.size()); }

private:
    struct Box
    {
        std::vector<Entry> entries;
        uint8_t min[3] = {255, 255, 255};
        uint8_t max[3] = {0, 0, 0};
    };
    static Box makeBox(std::vector<Entry> entries);

    std::vector<Entry> m_entries;
    std::deque<Box> m_boxes;
};
