#include "operations/paletteedits.h"

#include "palette/palettelimits.h"

#include <algorithm>

namespace PaletteEdits {

void removeSelected(Palette<uint> &palette, const std::set<int> &selection, bool fixedSize,
                    const RGBAColor<uint> &fill)
{
    const int oldLength = palette.size();
    Colours kept;
    kept.reserve(size_t(oldLength));
    for (int i = 0; i < oldLength; ++i)
        if (selection.count(i) == 0)
            kept.push_back(palette[i]);
    if (fixedSize)
        kept.resize(size_t(oldLength), fill);
    palette.entries() = std::move(kept);
}

void fillSelected(Palette<uint> &palette, const std::set<int> &selection, const RGBAColor<uint> &fill)
{
    for (int i : selection)
        if (i >= 0 && i < palette.size())
            palette[i] = fill;
}

void paste(Palette<uint> &palette, const std::set<int> &selection, const Colours &colours, bool single, int limitIn,
           bool fixedSize, const RGBAColor<uint> &fill)
{
    if (colours.empty())
        return;
    const int oldLength = palette.size();
    // Whatever the window's maximum says, no palette grows past the hard limit.
    const size_t limit = size_t(qBound(0, limitIn, PaletteLimits::maximumLength));
    const Colours &old = palette.entries();
    Colours out;
    if (selection.empty()) {
        if (!single && fixedSize)
            return; // the whole list would be appended past the end and trimmed away again
        // A pasted palette without a selection is appended whole, without the window's limit; a
        // paste that would pass the hard limit is refused before it allocates anything.
        if (!single)
            PaletteLimits::checkLength(qint64(old.size()) + qint64(colours.size()));
        out = old;
        if (!single)
            out.insert(out.end(), colours.begin(), colours.end());
        else if (out.size() < limit)
            out.push_back(colours.front());
    } else {
        for (int i = 0; i < oldLength && out.size() < limit; ++i) {
            const bool selected = selection.count(i) > 0;
            if (single) {
                out.push_back(old[size_t(i)]);
                if (selected && out.size() < limit)
                    out.push_back(colours.front());
            } else if (selected) {
                for (size_t k = 0; k < colours.size() && out.size() < limit; ++k)
                    out.push_back(colours[k]);
            } else {
                out.push_back(old[size_t(i)]);
            }
        }
    }
    palette.entries() = std::move(out);
    if (fixedSize)
        palette.resize(oldLength, fill);
}

int replaceSelected(Palette<uint> &palette, const std::set<int> &selection, const Colours &colours)
{
    if (colours.empty())
        return 0;
    size_t k = 0;
    for (int i : selection) {
        if (i < 0 || i >= palette.size())
            continue;
        palette[i] = colours[k % colours.size()];
        ++k;
    }
    return int(k);
}

int setSelected(Palette<uint> &palette, const std::set<int> &selection, const RGBAColor<uint> &colour)
{
    int changed = 0;
    for (int i : selection)
        if (i >= 0 && i < palette.size()) {
            palette[i] = colour;
            ++changed;
        }
    return changed;
}

RGBAColor<uchar> editorBytes(const RGBAColor<uint> &entry)
{
    auto byte = [](uint v) { return uchar(std::min<uint>(v, 65535) >> 8); };
    return {byte(entry.r), byte(entry.g), byte(entry.b), byte(entry.a)};
}

RGBAColor<uint> editedColour(const RGBAColor<uint> &shown, const RGBAColor<uchar> &picked)
{
    const RGBAColor<uchar> before = editorBytes(shown);
    auto channel = [](uint original, uchar was, uchar now) { return now == was ? original : uint(now) << 8; };
    return {channel(shown.r, before.r, picked.r), channel(shown.g, before.g, picked.g),
            channel(shown.b, before.b, picked.b), channel(shown.a, before.a, picked.a)};
}

int firstEditableEntry(const Palette<uint> &palette, const std::set<int> &selection)
{
    for (int i : selection)
        if (i >= 0 && i < palette.size())
            return i;
    return -1;
}

int editSelected(Palette<uint> &palette, const std::set<int> &selection, const RGBAColor<uchar> &picked)
{
    const int first = firstEditableEntry(palette, selection);
    if (first < 0 || picked == editorBytes(palette[first]))
        return 0;
    return setSelected(palette, selection, editedColour(palette[first], picked));
}

RGBAColor<uint> throughClipboard(const RGBAColor<uint> &c)
{
    return {c.r & 0xFF00u, c.g & 0xFF00u, c.b & 0xFF00u, 0xFF00u};
}

} // namespace PaletteEdits
