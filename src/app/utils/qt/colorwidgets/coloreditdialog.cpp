#include "coloreditdialog.h"

#include "operations/paletteedits.h"

ColorEditDialog::ColorEditDialog(const Palette<uint> &palette, const std::set<int> &selection,
                                 QWidget *parent)
    : QColorDialog(parent), m_palette(palette), m_selection(selection),
      m_entry(PaletteEdits::firstEditableEntry(palette, selection))
{
    setWindowTitle(tr("Edit colour"));
    // Native dialogs of some desktops ignore the alpha channel.
    setOptions(QColorDialog::ShowAlphaChannel | QColorDialog::DontUseNativeDialog);
    if (m_entry >= 0) {
        const RGBAColor<uchar> shown = PaletteEdits::editorBytes(m_palette[m_entry]);
        setCurrentColor(QColor(shown.r, shown.g, shown.b, shown.a));
    }
    connect(this, &QColorDialog::currentColorChanged, this, [this]() { emit paletteChanged(result()); });
}

RGBAColor<uchar> ColorEditDialog::picked() const
{
    const QColor c = currentColor();
    return {uchar(c.red()), uchar(c.green()), uchar(c.blue()), uchar(c.alpha())};
}

bool ColorEditDialog::isChanged() const
{
    return m_entry >= 0 && picked() != PaletteEdits::editorBytes(m_palette[m_entry]);
}

RGBAColor<uint> ColorEditDialog::colour() const
{
    return m_entry >= 0 ? PaletteEdits::editedColour(m_palette[m_entry], picked()) : RGBAColor<uint>();
}

Palette<uint> ColorEditDialog::result() const
{
    Palette<uint> edited = m_palette;
    PaletteEdits::editSelected(edited, m_selection, picked());
    return edited;
}
