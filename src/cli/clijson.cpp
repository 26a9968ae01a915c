#include "clijson.h"

#include <QJsonDocument>

QJsonArray colourJson(const RGBAColor<uint> &c)
{
    return QJsonArray{double(c.r), double(c.g), double(c.b), double(c.a)};
}

QJsonArray entriesJson(const Palette<uint> &palette)
{
    QJsonArray entries;
    for (const auto &colour : palette.entries())
        entries.append(colourJson(colour));
    return entries;
}

QJsonObject paletteJson(const Palette<uint> &palette)
{
    QJsonObject properties;
    for (int key = PaletteName; key <= PaletteFile; ++key)
        properties.insert(palettePropertyName(key), palette.property(key));
    return QJsonObject{{QStringLiteral("properties"), properties}, {QStringLiteral("entries"), entriesJson(palette)}};
}

void writePaletteJson(QTextStream &out, const Palette<uint> &palette)
{
    QJsonObject properties;
    for (int key = PaletteName; key <= PaletteFile; ++key)
        properties.insert(palettePropertyName(key), palette.property(key));
    // The keys in the order QJsonObject keeps them: sorted. The entries go out in blocks of plain
    // digits, which is what the text stream would make of them at a fraction of the cost.
    QByteArray block = "{\"entries\":[";
    char digits[16];
    const auto number = [&](uint v) {
        int n = 0;
        do {
            digits[n++] = char('0' + v % 10);
            v /= 10;
        } while (v);
        while (n)
            block += digits[--n];
    };
    bool first = true;
    for (const auto &c : palette.entries()) {
        block += first ? "[" : ",[";
        first = false;
        number(c.r);
        block += ',';
        number(c.g);
        block += ',';
        number(c.b);
        block += ',';
        number(c.a);
        block += ']';
        if (block.size() > (1 << 16)) {
            out << QLatin1String(block);
            block.clear();
        }
    }
    out << QLatin1String(block) << "],\"properties\":"
        << QString::fromUtf8(QJsonDocument(properties).toJson(QJsonDocument::Compact)) << '}';
}
