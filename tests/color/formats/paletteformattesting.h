#pragma once

// Helpers shared by the palette file format tests.

#include "palette/describedexception.h"
#include "palette/palette.h"
#include "formats/paletteformats.h"

#include <QFile>
#include <QVector>
#include <QtTest>

using Colors = QVector<QVector<uint>>;
Q_DECLARE_METATYPE(Colors)

namespace PaletteFormatTesting {

// Components whose low byte is not 0, alphas below 65535, and a name with blanks.
inline Palette<uint> awkwardPalette()
{
    Palette<uint> p;
    p.append({0x12AB, 0xFF01, 0x00FF, 0x8000});
    p.append({0xFFFF, 0x0101, 0x7F80, 0});
    p.append({0x0A0A, 0x6464, 0xC8C8, 65535});
    p.setProperty(PaletteName, "My palette  with blanks");
    p.setProperty(PaletteFileExt, "ignored.gpl");
    return p;
}

inline Colors colorsOf(const Palette<uint> &p)
{
    Colors result;
    for (const auto &c : p.entries())
        result.append({c.r, c.g, c.b, c.a});
    return result;
}

inline QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<unreadable>");
}

inline void writeAll(const QString &path, const QByteArray &data)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    QCOMPARE(f.write(data), qint64(data.size()));
}

inline QString fixture(const QString &name)
{
    return QStringLiteral(CHROMAXIS_TEST_DATA "/palettes/") + name;
}

// Import and export that turn a DescribedException into a failed check with its text, instead of an
// exception that would end the whole test run.
inline bool importChecked(const QString &path, Palette<uint> &palette, int format)
{
    try {
        importPalette(path, palette, format);
        return true;
    } catch (const DescribedException &e) {
        qWarning("%s", e.what());
        return false;
    }
}

inline bool exportChecked(const QString &path, const Palette<uint> &palette, int format,
                          const ExportOptions &options = {})
{
    try {
        exportPalette(path, palette, format, options);
        return true;
    } catch (const DescribedException &e) {
        qWarning("%s", e.what());
        return false;
    }
}

} // namespace PaletteFormatTesting
