#include "quantization/qa_distincthsb.h"

#include "spaces/colorconversion.h"

#include <algorithm>

namespace {

constexpr double axisScale = 5000000.0;

} // namespace

int QA_DistinctHSB::addColor(uint rgb)
{
    m_fed.push_back(rgb & 0xFFFFFFu);
    return 0;
}

bool QA_DistinctHSB::narrow(std::vector<Record> &candidates, size_t target, int mask)
{
    bool progress = false;
    for (int axis = 0; axis < 3; ++axis) {
        if (!(mask & (1 << axis)) || candidates.size() <= target)
            continue;
        std::stable_sort(candidates.begin(), candidates.end(), [axis](const Record &a, const Record &b) {
            return a.axis[axis] < b.axis[axis] || (a.axis[axis] == b.axis[axis] && a.color < b.color);
        });
        const size_t size = candidates.size();
        const size_t keep = std::max(target, (size + 1) / 2);
        if (keep >= size)
            continue;
        std::vector<Record> kept;
        kept.reserve(keep);
        if (keep == 1) {
            kept.push_back(candidates[size / 2]);
        } else {
            for (size_t i = 0; i < keep; ++i)
                kept.push_back(candidates[(i * (size - 1) + (keep - 1) / 2) / (keep - 1)]);
        }
        candidates.swap(kept);
        progress = true;
    }
    return progress;
}

void QA_DistinctHSB::getPalette(Palette<uint> &out)
{
    std::sort(m_fed.begin(), m_fed.end());
    std::vector<Record> records;
    for (size_t i = 0; i < m_fed.size();) {
        size_t j = i;
        while (j < m_fed.size() && m_fed[j] == m_fed[i])
            ++j;
        Record rec;
        rec.color = m_fed[i];
        rec.count = uint32_t(j - i);
        const HSVAColor<double> hsv =
            toHSVA(paletteColor(rec.color >> 16, (rec.color >> 8) & 0xFF, rec.color & 0xFF));
        rec.axis[0] = hsv.h * axisScale;
        rec.axis[1] = hsv.s * axisScale;
        rec.axis[2] = hsv.v * axisScale;
        records.push_back(rec);
        i = j;
    }
    m_fed = {};
    const auto appendRecord = [&out](const Record &r) {
        out.append(paletteColor(r.color >> 16, (r.color >> 8) & 0xFF, r.color & 0xFF));
    };
    if (records.size() < m_count) {
        for (const Record &r : records)
            appendRecord(r);
        return;
    }
    if (m_count == 0)
        return;
    // The first of the most frequent in colour order.
    const auto first = std::max_element(records.begin(), records.end(),
                                        [](const Record &a, const Record &b) { return a.count < b.count; });
    appendRecord(*first);
    records.erase(first);
    uint emitted = 1;
    const size_t target = m_count - 1;
    while (narrow(records, target, 7)) {
    }
    std::stable_sort(records.begin(), records.end(), [](const Record &a, const Record &b) {
        return a.count > b.count || (a.count == b.count && a.color < b.color);
    });
    for (const Record &r : records) {
        if (emitted >= m_count)
            break;
        appendRecord(r);
        ++emitted;
    }
}
