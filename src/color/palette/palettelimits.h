#pragma once

#include "palette/describedexception.h"

#include <QtGlobal>

// The hard limit on a document's palette, far above any real palette (the window's own maximum
// palette size stops at 65536) and low enough that no command can make the program run out of
// memory by growing a palette: a macro of copy and paste doubles a palette with every pair.
// A selection names palette entries, so it holds at most as many indexes. Every command that
// would pass the limit is refused before it changes anything.
namespace PaletteLimits {

constexpr int maximumLength = 1 << 20;          // 1,048,576 entries
constexpr int maximumSelection = maximumLength; // indexes in one selection

// The message of a command that would make a palette of length entries.
inline DescribedException tooLong(qint64 length)
{
    return DescribedException(QStringLiteral("Palette too large"),
                              QStringLiteral("The palette would hold %1 entries; a palette holds at most %2 "
                                             "entries.\nThe command changed nothing.")
                                  .arg(length)
                                  .arg(maximumLength));
}

// Throws tooLong(length) when length passes the limit.
inline void checkLength(qint64 length)
{
    if (length > maximumLength)
        throw tooLong(length);
}

} // namespace PaletteLimits
