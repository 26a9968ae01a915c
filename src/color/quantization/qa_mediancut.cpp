#include "quantization/qa_mediancut.h"

#include <algorithm>

namespace {

inline int channelOf(uint32_t color, int axis)
{
    return int((color >> (16 - 8 * axis)) & 0xFF); // axis 0 red, 1 green, 2 blue
}

} // namespace

QA_MedianCut::QA_MedianCut(std::vector<Entry> entries) : m_entries(std::move(entries)) {}

int QA_MedianCut::addColor(uint rgb)
{
    m_entries.push_back({rgb & 0xFFFFFFu, 1});
    return 0;
}

QA_MedianCut::Box QA_MedianCut::makeBox(std::vector<Entry> entries)
{
    Box box;
    box.entries = std::move(entries);
    for (const Entry &e : box.entries)
        for (int axis = 0; axis < 3; ++axis) {
            const int c = channelOf(e.color, axis);
            box.min[axis] = uint8_t(std::min<int>(box.min[axis], c));
            box.max[axis] = uint8_t(std::max<int>(box.max[axis], c));
        }
    return box;
}

void QA_MedianCut::setColorCount(uint n)
{
    m_boxes.clear();
    if (m_entries.empty())
        return;
    m_boxes.push_back(makeBox(std::move(m_entries)));
    m_entries = {};
    size_t singlesInARow = 0;
    while (m_boxes.size() < n) {
        Box box = std::move(m_boxes.front());
        m_boxes.pop_front();
        if (box.entries.size() == 1) {
            m_boxes.push_back(std::move(box));
            if (++singlesInARow == m_boxes.size())
                break; // every box holds one colour: nothing is left to split
            continue;
        }
        const int dr = box.max[0] - box.min[0];
        const int dg = box.max[1] - box.min[1];
        const int db = box.max[2] - box.min[2];
        const int axis = (dr >= dg && dr >= db) ? 0 : (dg < db ? 2 : 1);
        std::vector<Entry> sorted = std::move(box.entries);
        std::stable_sort(sorted.begin(), sorted.end(), [axis](const Entry &a, const Entry &b) {
            return channelOf(a.color, axis) < channelOf(b.color, axis);
        });
        uint64_t total = 0;
        for (const Entry &e : sorted)
            total += e.count;
        const uint64_t half = total / 2;
        size_t split = 0;
        uint64_t running = 0;
        for (; split < sorted.size(); ++split) {
            running += sorted[split].count;
            if (running > half)
                break;
        }
        if (split == 0)
            split = 1; // the first half keeps exactly one entry
        std::vector<Entry> second(sorted.begin() + std::ptrdiff_t(split), sorted.end());
        sorted.resize(split);
        m_boxes.push_back(makeBox(std::move(sorted)));
        m_boxes.push_back(makeBox(std::move(second)));
        singlesInARow = 0;
    }
}

void QA_MedianCut::getPalette(Palette<uint> &out)
{
    for (const Box &box : m_boxes) {
        double sum[3] = {0, 0, 0};
        double weight = 0;
        for (const Entry &e : box.entries) {
            for (int axis = 0; axis < 3; ++axis)
                sum[axis] += double(channelOf(e.color, axis)) * double(e.count);
            weight += e.count;
        }
        if (weight <= 0)
            weight = 1;
        out.append(paletteColor(uint(sum[0] / weight), uint(sum[1] / weight), uint(sum[2] / weight)));
    }
}
