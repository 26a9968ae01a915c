#pragma once

#include "palette/palette.h"
#include "operations/paletteoperations.h"
#include "storage/settingstext.h"

#include <QColor>

#include <set>

// "Tint": settings name "tint".
struct TintSettings
{
    static const QString settingsName;

    QColor color = QColor(0, 0, 0); // "color": "#rrggbb"
    int opacity = 0;                // percent, 0..100
    bool selectedOnly = false;

    // Keys missing from pairs keep the values of base. An opacity outside 0..100 is clamped as
    // the slider would; a text that is no number or no colour throws "Invalid settings".
    static TintSettings fromPairs(const SettingsText::Pairs &pairs, const TintSettings &base);
    static TintSettings fromPairs(const SettingsText::Pairs &pairs);
    SettingsText::Pairs toPairs() const;
    bool operator==(const TintSettings &o) const
    {
        return color.rgb() == o.color.rgb() && opacity == o.opacity && selectedOnly == o.selectedOnly;
    }
};

// "Gradient tint": settings name "gradienttint".
struct GradientTintSettings
{
    static const QString settingsName;

    QColor color1 = QColor(0, 0, 0); // "color1"
    int opacity1 = 0;                // "opacity1", percent
    QColor color2 = QColor(0, 0, 0); // "color2"
    int opacity2 = 0;                // "opacity2", percent
    int mode = 0;                    // "mode": the colour space the tint colour runs through
    bool selectedOnly = false;
    // The index range, both ends included. The dialog does not store them; they are read from
    // the keys "begin" and "end" when present (the command line gives them so). end < 0 stands
    // for the palette's last entry, and so does an end beyond it.
    int begin = 0;
    int end = -1;

    // As TintSettings::fromPairs; an unknown mode is refused, since the combo box has no such
    // entry, and a preset without "mode" leaves the mode where it was.
    static GradientTintSettings fromPairs(const SettingsText::Pairs &pairs, const GradientTintSettings &base);
    static GradientTintSettings fromPairs(const SettingsText::Pairs &pairs);
    // The stored keys only: begin and end are not part of the dialog's settings.
    SettingsText::Pairs toPairs() const;
    bool operator==(const GradientTintSettings &o) const
    {
        return color1.rgb() == o.color1.rgb() && opacity1 == o.opacity1 && color2.rgb() == o.color2.rgb() &&
               opacity2 == o.opacity2 && mode == o.mode && selectedOnly == o.selectedOnly &&
               begin == o.begin && end == o.end;
    }
};

namespace PaletteTint {

// A colour button's colour as a palette colour: (red << 8, green << 8, blue << 8, 65535).
RGBAColor<uint> dialogColour(const QColor &colour);

// Every eligible entry becomes the shared linear mix of itself and the tint colour at
// opacity / 100, alpha included.
Palette<uint> tint(const Palette<uint> &palette, const std::set<int> &selection,
                   const TintSettings &settings);

// Within begin..end, entry i is mixed with the tint colour interpolated between the two colours
// in the chosen space (straight, with no special treatment of hues) at an opacity interpolated
// likewise; u = (i - begin) / (end - begin), taken as 0 when begin equals end. Entries outside
// the range, or excluded by "Selected only", are copied unchanged.
Palette<uint> gradientTint(const Palette<uint> &palette, const std::set<int> &selection,
                           const GradientTintSettings &settings);

// "tint" and "gradienttint".
void registerOperations(const PaletteOperations::Registrar &add);

} // namespace PaletteTint
