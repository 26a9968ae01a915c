#pragma once

#include "palette/palette.h"
#include "storage/settingstext.h"

#include <QColor>
#include <QImage>
#include <QRect>
#include <QSize>
#include <QString>

#include <set>
#include <vector>

// The one drawing rule of a palette as a grid of coloured cells: the window's palette view, the
// render dialog, "Export palette as image...", "Print palette" and the command line all paint
// through it.
class PalettePicture
{
public:
    // The grid's shape in pixels; the values the render dialog's controls hold.
    struct Geometry
    {
        int columns = 16;
        int cellWidth = 16;
        int cellHeight = 16;
        int vspacing = 0;
        int hspacing = 0;
        int padTop = 0;
        int padRight = 0;
        int padBottom = 0;
        int padLeft = 0;

        // The picture's size for a palette of length entries. An empty palette has no rows and so
        // no spacing between them.
        QSize pictureSize(int length) const;
        // The cell of entry index: its top left corner and its size.
        QRect cellRect(int index) const;

        bool operator==(const Geometry &o) const;
    };

    // The render dialog's settings: the geometry and the colour behind the cells.
    struct Settings
    {
        Geometry geometry;
        QColor background = QColor(255, 255, 255, 255);

        bool operator==(const Settings &o) const
        {
            return geometry == o.geometry && background.rgba() == o.background.rgba();
        }
    };

    struct Preset
    {
        QString name;
        QString settingsText; // a complete settings text of the render dialog
    };

    static const QString settingsName; // "palette_render"
    // The range of every spacing and padding control; sizes and columns start at 1.
    static constexpr int maximumValue = 1000;

    // Paints palette into a 32-bit ARGB image filled with background. Cells are opaque: an
    // entry's alpha is not shown. Selected entries get a one-pixel yellow frame on the cell's own
    // outermost pixels; indexes at or beyond the palette's length are ignored. Values below
    // their range (negative paddings, no columns) are brought to the nearest valid one.
    static QImage paint(const Palette<uint> &palette, const Geometry &geometry, const QColor &background,
                        const std::set<int> &selected = {});
    static QImage paint(const Palette<uint> &palette, const Settings &settings)
    {
        return paint(palette, settings.geometry, settings.background);
    }

    // Writes the picture of palette to path in the format its extension names (any format the
    // image writers know), whole or not at all. An empty palette has no picture and is refused;
    // failures throw DescribedException "Could not save".
    static void save(const QString &path, const Palette<uint> &palette, const Settings &settings);

    // Keys missing from pairs keep the values of base; numbers are clamped into the controls'
    // ranges, a value that is no number or no colour throws DescribedException "Invalid settings".
    static Settings fromSettings(const SettingsText::Pairs &pairs, const Settings &base);
    static Settings fromSettings(const SettingsText::Pairs &pairs) { return fromSettings(pairs, Settings()); }
    static SettingsText::Pairs toSettings(const Settings &settings);

    // The built-in presets in the order of the preset box.
    static const std::vector<Preset> &presets();
    // The settings of the preset called name; DescribedException "Invalid settings" when there is
    // no such preset.
    static Settings preset(const QString &name);
};
