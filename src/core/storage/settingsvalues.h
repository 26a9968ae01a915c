#pragma once

#include <QColor>
#include <QString>

// Reading and writing the values of the palette operations' settings texts. Every reader throws
// DescribedException titled "Invalid settings" for a text that is not a value of the expected
// kind, naming the key and the value; the clamping readers bring a number into the range that
// the dialog's control would enforce, since a slider or spin box set to an out-of-range value
// shows the nearest end of its range.
namespace SettingsValues {

// The largest palette the window lets a palette grow to; the generators' sizes stop there.
constexpr int maximumPaletteSize = 65536;

[[noreturn]] void invalid(const QString &key, const QString &value, const QString &expected);

// A decimal integer, surrounding blanks allowed.
int integer(const QString &key, const QString &value);
int clampedInteger(const QString &key, const QString &value, int min, int max);
// A combo box's position, 0..count - 1; anything else names no entry and is refused.
int listPosition(const QString &key, const QString &value, int count);
// A 32-bit unsigned decimal, as palette colours are stored ("4278190080").
uint unsignedWord(const QString &key, const QString &value);
// A finite decimal number.
double number(const QString &key, const QString &value);
double clampedNumber(const QString &key, const QString &value, double min, double max);
// A check box: any integer, 0 meaning unchecked.
bool flag(const QString &key, const QString &value);
// A colour as a colour button stores it ("#aa00ff"); the other forms a colour button accepts
// ("#rgb", "#aarrggbb", colour names) are read too. The alpha is dropped.
QColor colour(const QString &key, const QString &value);
// A colour-space number of colorSpaceTable(). A combo box ignores an index it does not have, so an unknown
// space is refused rather than clamped.
int colourSpace(const QString &key, const QString &value);

QString text(int value);
QString text(uint value);
QString text(bool value);
// Plain decimal with up to 15 significant digits: "0.5", "-1.3625".
QString text(double value);
// "#" and six lower-case hexadecimal digits.
QString text(const QColor &value);
// Names and paths as they stand.
QString text(const QString &value);

} // namespace SettingsValues
