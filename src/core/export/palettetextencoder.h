#pragma once

#include "palette/palette.h"
#include "storage/settingstext.h"

#include <QString>

#include <limits>
#include <set>
#include <vector>

class QTextStream;

// Turns a palette, or its selected part, into text through a user-defined template: a header,
// one entry per colour, a divider between entries and a footer. Serves the text export, the
// palette view's clipboard copy and the preview of the encoder dialog.
class PaletteTextEncoder
{
public:
    // The fields as the user typed them, escapes and placeholders unexpanded.
    struct Template
    {
        QString encoding; // "ASCII", "LATIN1", "UTF-8" or "UTF-16"; anything else keeps the stream's codec
        QString header;
        QString entry;
        QString divider;
        QString bottom; // shown to the user as "Footer:"

        bool operator==(const Template &o) const
        {
            return encoding == o.encoding && header == o.header && entry == o.entry && divider == o.divider &&
                   bottom == o.bottom;
        }
    };

    struct Preset
    {
        QString name;
        QString settingsText; // a complete settings text of the encoder dialog
    };

    // The number of entries the preview and the clipboard examine at most.
    static constexpr int previewLimit = 262140;
    static const QString settingsName; // "palette_textencode"

    // Control-character escapes, then "\%", then %f %n %c from the palette's properties.
    static QString prepare(const QString &field, const Palette<uint> &palette);

    // Expands %i, %r %g %b, %R %G %B and %h %s %v, in that order, for one colour.
    static QString formatColour(int index, const RGBAColor<uint> &colour, const QString &pattern);

    // Writes the encoded palette to stream after setting its codec. An empty selection means
    // every entry; at most limit entries are examined.
    static void encode(const Template &tmpl, const Palette<uint> &palette, const std::set<int> &selection,
                       QTextStream &stream, int limit = std::numeric_limits<int>::max());
    // The same into a string, where no codec applies (clipboard and preview).
    static QString encodeToString(const Template &tmpl, const Palette<uint> &palette,
                                  const std::set<int> &selection, int limit = previewLimit);

    // The template that the palette view copies to the clipboard until the user defines another.
    static Template clipboardTemplate();
    // The single-colour clipboard pattern: 0 "#%R%G%B", 1 "%R%G%B", any other "(%r, %g, %b)".
    static QString singleColourPattern(int format);

    // Settings of the encoder dialog: header, entry, divider, bottom and encoding. Keys missing
    // from pairs keep the values of base.
    static Template fromSettings(const SettingsText::Pairs &pairs, const Template &base = {});
    static SettingsText::Pairs toSettings(const Template &tmpl);

    // The built-in presets in the order of the preset box.
    static const std::vector<Preset> &presets();
};
