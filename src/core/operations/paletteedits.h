#pragma once

#include "palette/palette.h"

#include <set>
#include <vector>

// The palette view's editing commands as pure functions, so that the view, the macro player
// and the command line share one algorithm each. Indexes at or past the palette's length are
// ignored; a fixed size keeps the length, padding with the fill colour.
namespace PaletteEdits {

using Colours = std::vector<RGBAColor<uint>>;

// Cut and delete: the unselected entries move down over the removed ones.
void removeSelected(Palette<uint> &palette, const std::set<int> &selection, bool fixedSize,
                    const RGBAColor<uint> &fill);
// Cut to background: every selected entry becomes the fill colour.
void fillSelected(Palette<uint> &palette, const std::set<int> &selection, const RGBAColor<uint> &fill);
// Paste. A single colour goes in after each selected entry (appended when nothing is selected
// and there is room); a list takes each selected entry's place (appended whole when nothing is
// selected). The new list stops at limit, and never passes PaletteLimits::maximumLength; a fixed
// size then restores the old length. A list appended past the hard limit throws
// PaletteLimits::tooLong and leaves the palette as it was.
void paste(Palette<uint> &palette, const std::set<int> &selection, const Colours &colours, bool single, int limit,
           bool fixedSize, const RGBAColor<uint> &fill);
// Replace: the selected entries in index order take the colours in order, starting over when
// the colours run out. Returns how many entries changed.
int replaceSelected(Palette<uint> &palette, const std::set<int> &selection, const Colours &colours);
// Edit: every selected entry becomes colour. Returns how many entries changed.
int setSelected(Palette<uint> &palette, const std::set<int> &selection, const RGBAColor<uint> &colour);

// The colour editor picks 8 bits a channel; entries hold 16. It shows an entry as the high byte
// of each channel (words above 65535 shown as 255), and what comes back must be exact: a channel
// left at the byte shown keeps the entry's own 16 bits, a channel set to v becomes v << 8 like
// every 8-bit colour that enters a palette.
RGBAColor<uchar> editorBytes(const RGBAColor<uint> &entry);
RGBAColor<uint> editedColour(const RGBAColor<uint> &shown, const RGBAColor<uchar> &picked);
// The entry the editor shows for a selection: the first selected index below the length, or -1.
int firstEditableEntry(const Palette<uint> &palette, const std::set<int> &selection);
// Edit through the colour editor: while picked is what the editor shows, no entry changes (each
// keeps its own value, whatever the first one looks like); otherwise every selected entry takes
// editedColour of the shown entry. Returns how many entries changed.
int editSelected(Palette<uint> &palette, const std::set<int> &selection, const RGBAColor<uchar> &picked);

// A colour as it comes back from the clipboard: the clipboard holds 8-bit opaque colours
// ("#ffrrggbb"), which widen back as byte << 8, so the alpha returns as 65280.
RGBAColor<uint> throughClipboard(const RGBAColor<uint> &colour);

} // namespace PaletteEdits
