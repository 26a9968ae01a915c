#include "storage/numpyheader.h"

#include "palette/describedexception.h"

#include <climits>

namespace {

class HeaderParser
{
public:
    HeaderParser(const QByteArray &text, const QString &path, const QString &title)
        : m_text(text), m_path(path), m_title(title)
    {
    }

    NumpyArrayHeader parse()
    {
        NumpyArrayHeader h;
        bool seenDescr = false, seenOrder = false, seenShape = false;
        expect('{');
        for (;;) {
            if (peek() == '}')
                break;
            const QByteArray key = string();
            expect(':');
            if (key == "descr") {
                once(seenDescr, key);
                if (peek() != '\'' && peek() != '"')
                    fail(QStringLiteral("only simple array types are supported, not records"));
                h.descr = string();
            } else if (key == "fortran_order") {
                once(seenOrder, key);
                h.fortranOrder = boolean();
            } else if (key == "shape") {
                once(seenShape, key);
                h.shape = tuple();
            } else {
                fail(QStringLiteral("unknown key '%1'").arg(QString::fromLatin1(key)));
            }
            if (peek() == ',') {
                ++m_pos;
                continue;
            }
            if (peek() != '}')
                fail(QStringLiteral("',' or '}' expected"));
        }
        ++m_pos;
        skipBlanks();
        if (m_pos != m_text.size())
            fail(QStringLiteral("text after the dictionary"));
        if (!seenDescr || !seenOrder || !seenShape)
            fail(QStringLiteral("'descr', 'fortran_order' and 'shape' are all required"));
        return h;
    }

private:
    [[noreturn]] void fail(const QString &why) const { NumpyHeader::fail(m_path, why, m_title); }

    void skipBlanks()
    {
        while (m_pos < m_text.size() && (m_text[m_pos] == ' ' || m_text[m_pos] == '\t' ||
                                         m_text[m_pos] == '\n' || m_text[m_pos] == '\r'))
            ++m_pos;
    }
    char peek()
    {
        skipBlanks();
        return m_pos < m_text.size() ? m_text[m_pos] : '\0';
    }
    void expect(char c)
    {
        if (peek() != c)
            fail(QStringLiteral("'%1' expected").arg(QLatin1Char(c)));
        ++m_pos;
    }
    void once(bool &seen, const QByteArray &key)
    {
        if (seen)
            fail(QStringLiteral("the key '%1' is repeated").arg(QString::fromLatin1(key)));
        seen = true;
    }
    QByteArray string()
    {
        const char quote = peek();
        if (quote != '\'' && quote != '"')
            fail(QStringLiteral("a quoted name expected"));
        const int end = m_text.indexOf(quote, m_pos + 1);
        if (end < 0)
            fail(QStringLiteral("unterminated string"));
        const QByteArray s = m_text.mid(m_pos + 1, end - m_pos - 1);
        if (s.contains('\\') || s.contains('\n'))
            fail(QStringLiteral("unsupported characters in a string"));
        m_pos = end + 1;
        return s;
    }
    bool boolean()
    {
        peek();
        if (m_text.mid(m_pos, 4) == "True") {
            m_pos += 4;
            return true;
        }
        if (m_text.mid(m_pos, 5) == "False") {
            m_pos += 5;
            return false;
        }
        fail(QStringLiteral("'fortran_order' must be True or False"));
    }
    std::vector<qint64> tuple()
    {
        std::vector<qint64> dims;
        expect('(');
        bool trailingComma = false;
        while (peek() != ')') {
            if (!dims.empty() && !trailingComma)
                fail(QStringLiteral("',' expected in the shape"));
            dims.push_back(integer());
            trailingComma = false;
            if (peek() == ',') {
                ++m_pos;
                trailingComma = true;
            }
            if (dims.size() > 32)
                fail(QStringLiteral("too many dimensions"));
        }
        ++m_pos;
        if (dims.size() == 1 && !trailingComma)
            fail(QStringLiteral("the shape is not a tuple"));
        return dims;
    }
    qint64 integer()
    {
        peek();
        const int start = m_pos;
        qint64 v = 0;
        while (m_pos < m_text.size() && m_text[m_pos] >= '0' && m_text[m_pos] <= '9') {
            v = v * 10 + (m_text[m_pos] - '0');
            if (v > INT_MAX)
                fail(QStringLiteral("a dimension is too large"));
            ++m_pos;
        }
        if (m_pos == start)
            fail(QStringLiteral("a dimension must be a non-negative whole number"));
        // Python 2 wrote long integers with a suffix.
        if (m_pos < m_text.size() && (m_text[m_pos] == 'L' || m_text[m_pos] == 'l'))
            ++m_pos;
        return v;
    }

    const QByteArray &m_text;
    const QString &m_path;
    const QString &m_title;
    int m_pos = 0;
};

} // namespace

namespace NumpyHeader {

NumpyArrayHeader parse(const QByteArray &text, const QString &path, const QString &title)
{
    return HeaderParser(text, path, title).parse();
}

void fail(const QString &path, const QString &why, const QString &title)
{
    throw DescribedException(title, QStringLiteral("The NumPy header of\n'%1'\nis not valid: %2.").arg(path, why));
}

} // namespace NumpyHeader
