#include "storage/settingsvalues.h"

#include "spaces/colorspace.h"
#include "palette/describedexception.h"

#include <cmath>

namespace SettingsValues {

void invalid(const QString &key, const QString &value, const QString &expected)
{
    throw DescribedException(
        QStringLiteral("Invalid settings"),
        QStringLiteral("The value \"%1\" of \"%2\" is not %3.").arg(elidedValue(value), elidedValue(key), expected));
}

int integer(const QString &key, const QString &value)
{
    bool ok = false;
    const int v = value.trimmed().toInt(&ok);
    if (!ok)
        invalid(key, value, QStringLiteral("an integer"));
    return v;
}

int clampedInteger(const QString &key, const QString &value, int min, int max)
{
    return qBound(min, integer(key, value), max);
}

uint unsignedWord(const QString &key, const QString &value)
{
    bool ok = false;
    const uint v = value.trimmed().toUInt(&ok);
    if (!ok)
        invalid(key, value, QStringLiteral("an unsigned 32-bit number"));
    return v;
}

double number(const QString &key, const QString &value)
{
    bool ok = false;
    const double v = value.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(v))
        invalid(key, value, QStringLiteral("a number"));
    return v;
}

double clampedNumber(const QString &key, const QString &value, double min, double max)
{
    return qBound(min, number(key, value), max);
}

bool flag(const QString &key, const QString &value)
{
    bool ok = false;
    const int v = value.trimmed().toInt(&ok);
    if (!ok)
        invalid(key, value, QStringLiteral("0 or 1"));
    return v != 0;
}

QColor colour(const QString &key, const QString &value)
{
    const QString trimmed = value.trimmed();
    if (!QColor::isValidColor(trimmed))
        invalid(key, value, QStringLiteral("a colour like #aa00ff"));
    QColor c(trimmed);
    c.setAlpha(255);
    return c;
}

int colourSpace(const QString &key, const QString &value)
{
    bool ok = false;
    const int v = value.trimmed().toInt(&ok);
    if (!ok || v < 0 || v >= ColorSpaceCount)
        invalid(key, value, QStringLiteral("a colour-space number 0..%1").arg(ColorSpaceCount - 1));
    return v;
}

QString text(int value)
{
    return QString::number(value);
}

QString text(uint value)
{
    return QString::number(value);
}

QString text(bool value)
{
    return value ? QStringLiteral("1") : QStringLiteral("0");
}

QString text(double value)
{
    return QString::number(value, 'g', 15);
}

QString text(const QColor &value)
{
    return value.name(QColor::HexRgb);
}

QString text(const QString &value)
{
    return value;
}

int listPosition(const QString &key, const QString &value, int count)
{
    const int v = integer(key, value);
    if (v < 0 || v >= count)
        invalid(key, value, QStringLiteral("a list position 0..%1").arg(count - 1));
    return v;
}

} // namespace SettingsValues
