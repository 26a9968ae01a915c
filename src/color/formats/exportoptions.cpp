#include "formats/exportoptions.h"

#include "palette/describedexception.h"

#include <QRegularExpression>

namespace {

enum class Kind
{
    Integer,
    Text,
    Choice
};

struct Definition
{
    const char *key;
    Kind kind;
    const char *defaultValue;
    int minimum;         // Integer
    int maximum;         // Integer
    const char *choices; // Choice: blank-separated; Text: a pattern the value must match
    const char *help;
};

// The cell sizes stop at 255 so that 256 columns of the widest cells still fit the 16-bit width of a
// GIF image (256 * 255 = 65280).
const Definition definitions[] = {
    {"columns", Kind::Integer, "", 1, 256, nullptr,
     "a whole number from 1 to 256 (default: one column per colour, at most 256)"},
    {"cell-width", Kind::Integer, "16", 1, 255, nullptr, "a whole number from 1 to 255 (default 16)"},
    {"cell-height", Kind::Integer, "16", 1, 255, nullptr, "a whole number from 1 to 255 (default 16)"},
    {"css.name", Kind::Text, ".pal", 0, 0, "^[^\\s{};,]+$",
     "a selector prefix without blanks, braces, commas or semicolons (default \".pal\")"},
    {"css.attribute", Kind::Text, "background-color", 0, 0, "^[A-Za-z-][A-Za-z0-9-]*$",
     "a CSS property name (default \"background-color\")"},
    {"js.name", Kind::Text, "palette", 0, 0, "^[A-Za-z_$][A-Za-z0-9_$]*$",
     "a JavaScript identifier (default \"palette\")"},
    {"js.type", Kind::Choice, "triplet", 0, 0, "triplet hex rgb",
     "one of triplet ([r, g, b]), hex (\"#rrggbb\"), rgb (\"rgb(r, g, b)\") (default triplet)"},
};

const QString errorTitle = QStringLiteral("Invalid export option");

const Definition *find(const QString &key)
{
    for (const Definition &d : definitions)
        if (key == QLatin1String(d.key))
            return &d;
    return nullptr;
}

const Definition &require(const QString &key)
{
    if (const Definition *d = find(key))
        return *d;
    throw DescribedException(errorTitle, QStringLiteral("Unknown option '%1'.\nKnown options: %2.")
                                             .arg(elidedValue(key), ExportOptions::keys().join(QStringLiteral(", "))));
}

// Whole numbers in plain decimal only: no blanks, no hexadecimal, no exponent.
bool parseInteger(const QString &text, int &value)
{
    static const QRegularExpression pattern(QStringLiteral("^[+-]?[0-9]{1,9}$"));
    if (!pattern.match(text).hasMatch())
        return false;
    value = text.toInt();
    return true;
}

void check(const Definition &d, const QString &value)
{
    bool ok = false;
    switch (d.kind) {
    case Kind::Integer: {
        int n = 0;
        ok = parseInteger(value, n) && n >= d.minimum && n <= d.maximum;
        break;
    }
    case Kind::Text:
        ok = QRegularExpression(QLatin1String(d.choices)).match(value).hasMatch();
        break;
    case Kind::Choice:
        ok = QString::fromLatin1(d.choices).split(QLatin1Char(' ')).contains(value);
        break;
    }
    if (!ok)
        throw DescribedException(errorTitle, QStringLiteral("'%1' is not a valid value for the option '%2'.\n"
                                                            "Allowed: %3.")
                                                 .arg(elidedValue(value), QLatin1String(d.key), QLatin1String(d.help)));
}

} // namespace

QStringList ExportOptions::keys()
{
    QStringList result;
    for (const Definition &d : definitions)
        result << QLatin1String(d.key);
    return result;
}

QString ExportOptions::describe(const QString &key)
{
    return QLatin1String(require(key).help);
}

void ExportOptions::set(const QString &key, const QString &value)
{
    check(require(key), value);
    m_values.insert(key, value);
}

void ExportOptions::setFromText(const QString &assignment)
{
    const int eq = assignment.indexOf(QLatin1Char('='));
    if (eq < 0)
        throw DescribedException(errorTitle,
                                 QStringLiteral("'%1' is not of the form KEY=VALUE.").arg(elidedValue(assignment)));
    set(assignment.left(eq), assignment.mid(eq + 1));
}

void ExportOptions::setUnchecked(const QString &key, const QString &value)
{
    require(key);
    m_values.insert(key, value);
}

void ExportOptions::unset(const QString &key)
{
    require(key);
    m_values.remove(key);
}

bool ExportOptions::isSet(const QString &key) const
{
    require(key);
    return m_values.contains(key);
}

QString ExportOptions::text(const QString &key) const
{
    const Definition &d = require(key);
    const auto it = m_values.constFind(key);
    return it != m_values.constEnd() ? *it : QString::fromLatin1(d.defaultValue);
}

int ExportOptions::integer(const QString &key) const
{
    const Definition &d = require(key);
    if (d.kind != Kind::Integer)
        throw DescribedException(errorTitle, QStringLiteral("The option '%1' is not a number.").arg(key));
    const QString value = text(key);
    if (value.isEmpty())
        return 0;
    int n = 0;
    if (!parseInteger(value, n))
        throw DescribedException(
            errorTitle, QStringLiteral("'%1' is not a valid value for the option '%2'.").arg(elidedValue(value), key));
    return n;
}

QString ExportOptions::string(const QString &key) const
{
    const Definition &d = require(key);
    if (d.kind == Kind::Integer)
        throw DescribedException(errorTitle, QStringLiteral("The option '%1' is a number.").arg(key));
    return text(key);
}
