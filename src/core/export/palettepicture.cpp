#include "export/palettepicture.h"

#include "palette/describedexception.h"
#include "storage/documentimageio.h"
#include "storage/settingsfields.h"
#include "storage/settingsvalues.h"

#include <QFile>
#include <QFileInfo>

#include <QStringList>

#include <algorithm>
#include <limits>

const QString PalettePicture::settingsName = QStringLiteral("palette_render");

namespace {

// One-pixel frame of a selected cell.
constexpr QRgb SelectionFrame = 0xFFFFFF00u;

QRgb opaqueRgb(const RGBAColor<uint> &c)
{
    return qRgb(int((c.r >> 8) & 0xFF), int((c.g >> 8) & 0xFF), int((c.b >> 8) & 0xFF));
}

// The values a grid can be drawn with, whatever a caller hands in.
PalettePicture::Geometry sane(PalettePicture::Geometry g)
{
    g.columns = std::max(1, g.columns);
    for (int *v : {&g.cellWidth, &g.cellHeight, &g.vspacing, &g.hspacing, &g.padTop, &g.padRight, &g.padBottom,
                   &g.padLeft})
        *v = std::max(0, *v);
    return g;
}

// The background keeps its alpha, unlike the colours of the other dialogs' colour buttons, so it
// is read and written as "#aarrggbb".
SettingsFields<PalettePicture::Settings>::Field backgroundField()
{
    using S = PalettePicture::Settings;
    return {QStringLiteral("bgcolor"),
            [](S &s, const QString &key, const QString &value) {
                const QColor c(value.trimmed());
                if (!c.isValid())
                    SettingsValues::invalid(key, value, QStringLiteral("a colour"));
                s.background = c;
            },
            [](const S &s) { return s.background.name(QColor::HexArgb); }};
}

const SettingsFields<PalettePicture::Settings> &fields()
{
    using S = PalettePicture::Settings;
    using F = SettingsFields<S>;
    constexpr int top = PalettePicture::maximumValue;
    auto g = [](int PalettePicture::Geometry::*member) {
        return [member](auto &s) -> auto & { return s.geometry.*member; };
    };
    using G = PalettePicture::Geometry;
    static const F table({
        F::integer(QStringLiteral("pad_top"), g(&G::padTop), 0, top),
        F::integer(QStringLiteral("pad_right"), g(&G::padRight), 0, top),
        F::integer(QStringLiteral("pad_bottom"), g(&G::padBottom), 0, top),
        F::integer(QStringLiteral("pad_left"), g(&G::padLeft), 0, top),
        F::integer(QStringLiteral("spc_v"), g(&G::vspacing), 0, top),
        F::integer(QStringLiteral("spc_h"), g(&G::hspacing), 0, top),
        F::integer(QStringLiteral("cell_width"), g(&G::cellWidth), 1, top),
        F::integer(QStringLiteral("cell_height"), g(&G::cellHeight), 1, top),
        F::integer(QStringLiteral("columns"), g(&G::columns), 1, top),
        backgroundField(),
    });
    return table;
}

} // namespace

QSize PalettePicture::Geometry::pictureSize(int length) const
{
    const Geometry g = sane(*this);
    const int rows = (std::max(0, length) + g.columns - 1) / g.columns;
    const qint64 width = qint64(g.columns - 1) * g.hspacing + qint64(g.columns) * g.cellWidth + g.padRight + g.padLeft;
    const qint64 height =
        qint64(std::max(0, rows - 1)) * g.vspacing + qint64(rows) * g.cellHeight + g.padBottom + g.padTop;
    // Beyond what an int holds there is no picture to make; QImage refuses it as null.
    const auto fit = [](qint64 v) { return int(std::min<qint64>(v, std::numeric_limits<int>::max())); };
    return QSize(fit(width), fit(height));
}

QRect PalettePicture::Geometry::cellRect(int index) const
{
    const Geometry g = sane(*this);
    return QRect(g.padLeft + (index % g.columns) * (g.cellWidth + g.hspacing),
                 g.padTop + (index / g.columns) * (g.cellHeight + g.vspacing), g.cellWidth, g.cellHeight);
}

bool PalettePicture::Geometry::operator==(const Geometry &o) const
{
    return columns == o.columns && cellWidth == o.cellWidth && cellHeight == o.cellHeight &&
           vspacing == o.vspacing && hspacing == o.hspacing && padTop == o.padTop && padRight == o.padRight &&
           padBottom == o.padBottom && padLeft == o.padLeft;
}

QImage PalettePicture::paint(const Palette<uint> &palette, const Geometry &geometry, const QColor &background,
                             const std::set<int> &selected)
{
    const Geometry g = sane(geometry);
    const int length = palette.size();
    const QSize size = g.pictureSize(length);
    QImage image(size, QImage::Format_ARGB32);
    if (image.isNull())
        return image;
    image.fill(background);
    for (int i = 0; i < length; ++i) {
        const QRect cell = g.cellRect(i);
        const int x0 = cell.left(), x1 = cell.right(), y0 = cell.top(), y1 = cell.bottom();
        const QRgb fill = opaqueRgb(palette[i]);
        const bool framed = selected.count(i) > 0;
        for (int y = y0; y <= y1; ++y) {
            auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
            const bool edgeRow = y == y0 || y == y1;
            for (int x = x0; x <= x1; ++x)
                line[x] = framed && (edgeRow || x == x0 || x == x1) ? SelectionFrame : fill;
        }
    }
    return image;
}

void PalettePicture::save(const QString &path, const Palette<uint> &palette, const Settings &settings)
{
    if (palette.isEmpty())
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Unable to save %1.\nThe palette is empty.").arg(QFileInfo(path).fileName()));
    DocumentImageIO::savePicture(path, paint(palette, settings), settings.geometry.pictureSize(palette.size()),
                                 QFileInfo(path).suffix().toLower().toLatin1());
}

PalettePicture::Settings PalettePicture::fromSettings(const SettingsText::Pairs &pairs, const Settings &base)
{
    return fields().read(pairs, base);
}

SettingsText::Pairs PalettePicture::toSettings(const Settings &settings)
{
    return fields().write(settings);
}

const std::vector<PalettePicture::Preset> &PalettePicture::presets()
{
    // The settings live in the preset resources; only the names of the preset box are kept here.
    // The last name says "(1)" although its cells are 16 high: users know the preset by it.
    static const char *const names[] = {"square small (1x1)",
                                        "square middle (8x8)",
                                        "square big (16x16)",
                                        "square middle (8x8) with offset",
                                        "square big (16x16) with offset",
                                        "line small (1)",
                                        "line middle (8)",
                                        "line big (16)",
                                        "line big (1) with offset"};
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

PalettePicture::Settings PalettePicture::preset(const QString &name)
{
    for (const Preset &p : presets())
        if (p.name == name)
            return fromSettings(SettingsText::parse(p.settingsText, settingsName));
    QStringList known;
    for (const Preset &p : presets())
        known << QLatin1Char('"') + p.name + QLatin1Char('"');
    throw DescribedException(QStringLiteral("Invalid settings"),
                             QStringLiteral("There is no palette picture preset \"%1\". The presets are %2.")
                                 .arg(name, known.join(QStringLiteral(", "))));
}
