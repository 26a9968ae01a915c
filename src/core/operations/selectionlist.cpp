#include "operations/selectionlist.h"

#include "palette/describedexception.h"

#include <QStringList>

#include <algorithm>
#include <climits>

namespace SelectionList {

const QString parameterKey = QStringLiteral("selection");

namespace {

// A message quotes the list it refuses; a list long enough to be an attack is cut short there.
QString quoted(const QString &text)
{
    return QLatin1Char('\'') + elidedValue(text) + QLatin1Char('\'');
}

[[noreturn]] void refuse(const QString &message)
{
    throw DescribedException(QStringLiteral("Invalid selection"), message);
}

[[noreturn]] void malformed(const QString &text)
{
    refuse(QStringLiteral("The selection %1 is not an index list like 0,3,5-9.").arg(quoted(text)));
}

class Reader
{
public:
    explicit Reader(const QString &text) : m_text(text) {}

    bool atEnd() const { return m_pos >= m_text.size(); }
    bool take(QChar c)
    {
        if (atEnd() || m_text[m_pos] != c)
            return false;
        ++m_pos;
        return true;
    }
    void skipBlanks()
    {
        while (!atEnd() && m_text[m_pos].isSpace())
            ++m_pos;
    }
    // Digits only: "+3", "0x3" and "-3" are no indexes.
    int index()
    {
        const int start = m_pos;
        qint64 value = 0;
        while (atDigit()) {
            value = value * 10 + (m_text[m_pos].unicode() - '0');
            ++m_pos;
            if (value > INT_MAX) {
                while (atDigit())
                    ++m_pos;
                // The quoted texts go in last, so that a "%" in them is never taken for a marker.
                refuse(QStringLiteral("The index %2 in the selection %3 is larger than %1.")
                           .arg(INT_MAX)
                           .arg(quoted(m_text.mid(start, m_pos - start)), quoted(m_text)));
            }
        }
        if (m_pos == start)
            malformed(m_text);
        return int(value);
    }

private:
    bool atDigit() const
    {
        return !atEnd() && m_text[m_pos] >= QLatin1Char('0') && m_text[m_pos] <= QLatin1Char('9');
    }

    const QString &m_text;
    int m_pos = 0;
};

// The distinct indexes of the ranges as ascending, disjoint, non-adjacent ranges.
std::vector<Range> merged(std::vector<Range> list)
{
    std::sort(list.begin(), list.end(), [](const Range &a, const Range &b) { return a.first < b.first; });
    std::vector<Range> out;
    for (const Range &r : list) {
        if (!out.empty() && qint64(r.first) <= qint64(out.back().last) + 1)
            out.back().last = std::max(out.back().last, r.last);
        else
            out.push_back(r);
    }
    return out;
}

std::set<int> expanded(const QString &text, const std::vector<Range> &list)
{
    const std::vector<Range> distinct = merged(list);
    qint64 count = 0;
    for (const Range &r : distinct)
        count += qint64(r.last) - r.first + 1;
    if (count > maximumCount)
        refuse(QStringLiteral("The selection %3 names %1 indexes; a selection holds at most %2.")
                   .arg(count)
                   .arg(maximumCount)
                   .arg(quoted(text)));
    std::set<int> out;
    // Ascending inserts at the end cost constant time each.
    for (const Range &r : distinct)
        for (qint64 i = r.first; i <= r.last; ++i)
            out.insert(out.end(), int(i));
    return out;
}

} // namespace

std::vector<Range> ranges(const QString &text)
{
    std::vector<Range> list;
    if (text.isEmpty())
        return list;
    Reader in(text);
    do {
        in.skipBlanks();
        Range r;
        r.first = r.last = in.index();
        in.skipBlanks();
        if (in.take(QLatin1Char('-'))) {
            in.skipBlanks();
            r.last = in.index();
            in.skipBlanks();
            if (r.last < r.first)
                refuse(QStringLiteral("The range '%1-%2' in the selection %3 runs backwards.")
                           .arg(r.first)
                           .arg(r.last)
                           .arg(quoted(text)));
        }
        list.push_back(r);
    } while (in.take(QLatin1Char(',')));
    if (!in.atEnd())
        malformed(text);
    return list;
}

std::set<int> parse(const QString &text)
{
    return expanded(text, ranges(text));
}

std::set<int> parse(const QString &text, int paletteSize)
{
    const std::vector<Range> list = ranges(text);
    for (const Range &r : list)
        if (r.last >= paletteSize)
            refuse(QStringLiteral("The selection names index %1, but the palette has %2 entries.")
                       .arg(r.last)
                       .arg(paletteSize));
    return expanded(text, list);
}

QString format(const std::set<int> &selection)
{
    QStringList parts;
    auto it = selection.begin();
    while (it != selection.end()) {
        const int first = *it;
        int last = first;
        auto next = std::next(it);
        while (next != selection.end() && qint64(*next) == qint64(last) + 1) {
            last = *next;
            ++next;
        }
        parts << (first == last ? QString::number(first) : QStringLiteral("%1-%2").arg(first).arg(last));
        it = next;
    }
    return parts.join(QLatin1Char(','));
}

QString parameterLine(const std::set<int> &selection)
{
    return parameterKey + QLatin1Char(':') + format(selection) + QLatin1Char('\n');
}

} // namespace SelectionList
