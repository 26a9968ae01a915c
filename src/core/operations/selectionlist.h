#pragma once

#include "palette/palettelimits.h"

#include <QString>

#include <set>
#include <vector>

// The text form of a selection of palette entries: decimal indexes and inclusive ranges separated
// by commas, "0,3,5-9". Blanks around an index are allowed; an empty text is the empty selection.
// The command line's --select and the macro steps' "selection:" parameter both speak it.
//
// Every failure is a DescribedException titled "Invalid selection". Reading is linear in the text
// and the result: a range is never expanded before the whole list has passed its checks, so a
// short text cannot make the reader allocate more than maximumCount indexes.
namespace SelectionList {

// The most indexes one selection may hold: as many as the largest palette a document may hold, and
// small enough that a hostile macro line costs little memory.
constexpr int maximumCount = PaletteLimits::maximumSelection;

struct Range
{
    int first = 0;
    int last = 0; // included; never below first
};

// The ranges of text as written, in order, checked for form only: digits, at most one dash per
// item, no empty item, no range running backwards and no index above the largest int.
std::vector<Range> ranges(const QString &text);

// The indexes of text. Beyond the checks of ranges(), a selection of more than maximumCount
// distinct indexes is refused.
std::set<int> parse(const QString &text);

// As parse(text), and every index must name an entry of a palette of paletteSize entries: the
// first range (in the order written) reaching beyond it is reported as "The selection names index
// N, but the palette has M entries." That check comes before the count's.
std::set<int> parse(const QString &text, int paletteSize);

// The shortest text of selection: ascending, runs of consecutive indexes as ranges, "3,5-7";
// the empty selection gives "". parse(format(s)) gives s back.
QString format(const std::set<int> &selection);

// The macro parameter a step records the selection it acted on under.
extern const QString parameterKey; // "selection"
// "selection:3,5-7\n": the parameter line of selection, as the macro steps record it.
QString parameterLine(const std::set<int> &selection);

} // namespace SelectionList
