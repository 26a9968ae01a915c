#include "export/palettetextencoder.h"

#include <QFile>

#include "spaces/colorconversion.h"
#include "storage/settingsfields.h"

#include <QTextCodec>
#include <QTextStream>

#include <algorithm>

const QString PaletteTextEncoder::settingsName = QStringLiteral("palette_textencode");

namespace {

// The four names a template offers, spelled as Qt knows them; any other name is handed to Qt as
// it is, and one that Qt does not know leaves the stream's codec alone.
QTextCodec *codecFor(const QString &encoding)
{
    static const std::pair<const char *, const char *> names[] = {
        {"ASCII", "US-ASCII"}, {"LATIN1", "ISO-8859-1"}, {"UTF-8", "UTF-8"}, {"UTF-16", "UTF-16"}};
    for (const auto &[name, qtName] : names)
        if (encoding.compare(QLatin1String(name), Qt::CaseInsensitive) == 0)
            if (QTextCodec *codec = QTextCodec::codecForName(qtName))
                return codec;
    return encoding.isEmpty() ? nullptr : QTextCodec::codecForName(encoding.toLatin1());
}

QString twoHexDigits(uint value)
{
    return QStringLiteral("%1").arg(value, 2, 16, QLatin1Char('0'));
}

// The general floating format with six significant digits, independent of the locale.
QString general(double value)
{
    return QString::number(value, 'g', 6);
}

const SettingsFields<PaletteTextEncoder::Template> &templateFields()
{
    using T = PaletteTextEncoder::Template;
    using F = SettingsFields<T>;
    static const F fields({
        F::text(QStringLiteral("header"), &T::header),
        F::text(QStringLiteral("entry"), &T::entry),
        F::text(QStringLiteral("divider"), &T::divider),
        F::text(QStringLiteral("bottom"), &T::bottom),
        F::text(QStringLiteral("encoding"), &T::encoding),
    });
    return fields;
}

} // namespace

QString PaletteTextEncoder::prepare(const QString &field, const Palette<uint> &palette)
{
    // Escapes are replaced as plain text, so "\\n" becomes a backslash and a line break.
    static const std::pair<const char *, char> escapes[] = {
        {"\\a", '\a'}, {"\\b", '\b'}, {"\\f", '\f'}, {"\\n", '\n'},
        {"\\r", '\r'}, {"\\t", '\t'}, {"\\v", '\v'},
    };
    QString text = field;
    for (const auto &[escape, control] : escapes)
        text.replace(QLatin1String(escape), QString(QLatin1Char(control)));
    // An escaped percent sign becomes a plain one before any placeholder is expanded, so it
    // does not protect what follows it; templates written for the program rely on that.
    text.replace(QLatin1String("\\%"), QLatin1String("%"));
    text.replace(QLatin1String("%f"), palette.property(PaletteFile));
    text.replace(QLatin1String("%n"), palette.property(PaletteName));
    text.replace(QLatin1String("%c"), palette.property(PaletteComment));
    return text;
}

QString PaletteTextEncoder::formatColour(int index, const RGBAColor<uint> &colour, const QString &pattern)
{
    const RGBAColor<uchar> bytes = toByteColor(colour);
    QString text = pattern;
    text.replace(QLatin1String("%i"), QString::number(index));
    text.replace(QLatin1String("%r"), QString::number(bytes.r));
    text.replace(QLatin1String("%g"), QString::number(bytes.g));
    text.replace(QLatin1String("%b"), QString::number(bytes.b));
    text.replace(QLatin1String("%R"), twoHexDigits(bytes.r));
    text.replace(QLatin1String("%G"), twoHexDigits(bytes.g));
    text.replace(QLatin1String("%B"), twoHexDigits(bytes.b));
    const HSVAColor<double> hsva = toHSVA(colour);
    text.replace(QLatin1String("%h"), general(hsva.h));
    text.replace(QLatin1String("%s"), general(hsva.s));
    text.replace(QLatin1String("%v"), general(hsva.v));
    return text;
}

void PaletteTextEncoder::encode(const Template &tmpl, const Palette<uint> &palette,
                                const std::set<int> &selection, QTextStream &stream, int limit)
{
    if (QTextCodec *codec = codecFor(tmpl.encoding))
        stream.setCodec(codec);

    const QString entry = prepare(tmpl.entry, palette);
    const QString divider = prepare(tmpl.divider, palette);
    stream << prepare(tmpl.header, palette);
    const int end = std::min(palette.size(), limit);
    bool first = true;
    for (int i = 0; i < end; ++i) {
        if (!selection.empty() && selection.count(i) == 0)
            continue;
        // The divider takes the colour of the entry after it.
        if (!first)
            stream << formatColour(i, palette[i], divider);
        stream << formatColour(i, palette[i], entry);
        first = false;
    }
    stream << prepare(tmpl.bottom, palette);
    stream.flush();
}

QString PaletteTextEncoder::encodeToString(const Template &tmpl, const Palette<uint> &palette,
                                           const std::set<int> &selection, int limit)
{
    QString text;
    QTextStream stream(&text);
    encode(tmpl, palette, selection, stream, limit);
    return text;
}

PaletteTextEncoder::Template PaletteTextEncoder::clipboardTemplate()
{
    Template t;
    t.encoding = QStringLiteral("UTF-8");
    t.entry = QStringLiteral("#%R%G%B");
    t.divider = QStringLiteral(", ");
    return t;
}

QString PaletteTextEncoder::singleColourPattern(int format)
{
    switch (format) {
    case 0:
        return QStringLiteral("#%R%G%B");
    case 1:
        return QStringLiteral("%R%G%B");
    default:
        return QStringLiteral("(%r, %g, %b)");
    }
}

PaletteTextEncoder::Template PaletteTextEncoder::fromSettings(const SettingsText::Pairs &pairs,
                                                              const Template &base)
{
    return templateFields().read(pairs, base);
}

SettingsText::Pairs PaletteTextEncoder::toSettings(const Template &tmpl)
{
    return templateFields().write(tmpl);
}

const std::vector<PaletteTextEncoder::Preset> &PaletteTextEncoder::presets()
{
    // The settings live in the preset resources, like every dialog's; only the names the preset
    // box shows are kept here. The spelling "hext text compact" is how users know that preset.
    static const char *const names[] = {"html table",    "css #1",           "css #2",
                                        "JavaScript #1", "JavaScript #2",    "hex text",
                                        "hext text compact", "json #1",      "json #2"};
    static const std::vector<Preset> list = [] {
        std::vector<Preset> presets;
        int number = 1;
        for (const char *name : names) {
            QFile file(SettingsText::presetPath(settingsName, number++));
            const QString text = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
            presets.push_back({QString::fromLatin1(name), text});
        }
        return presets;
    }();
    return list;
}
