#pragma once

#include "palette/palette.h"

#include <QColorDialog>

#include <set>

// The colour editor of the selected entries: the toolkit's colour dialog, which picks 8 bits a
// channel, showing the first selected entry. Confirming the colour as shown gives every entry back
// unchanged; a picked value v becomes v << 8 (PaletteEdits::editedColour). While the user picks,
// paletteChanged() announces the palette the edit would give, so the owner can preview it.
class ColorEditDialog : public QColorDialog
{
    Q_OBJECT
public:
    ColorEditDialog(const Palette<uint> &palette, const std::set<int> &selection, QWidget *parent = nullptr);

    // False when no selected index names an entry: there is nothing to edit.
    bool hasEntry() const { return m_entry >= 0; }
    // The colour the dialog holds now, 8 bits a channel.
    RGBAColor<uchar> picked() const;
    // Whether the user moved away from the colour shown.
    bool isChanged() const;
    // What every selected entry becomes when the colour is changed.
    RGBAColor<uint> colour() const;
    // The palette with the edit applied; the palette as given while nothing is changed.
    Palette<uint> result() const;

signals:
    void paletteChanged(const Palette<uint> &palette);

private:
    Palette<uint> m_palette;
    std::set<int> m_selection;
    int m_entry = -1;
};
