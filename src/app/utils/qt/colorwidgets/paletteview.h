#pragma once

#include "palette/palette.h"

#include <QColor>
#include <QImage>
#include <QLabel>
#include <QString>

#include <set>
#include <vector>

class QMimeData;

// The palette as a grid of coloured cells, with the selection and the clipboard commands that act on it.
// The view works on its own copy of the palette: the owner pushes the palette in with setPalette() and
// reads it back with palette() when paletteChanged() is emitted.
class PaletteView : public QLabel
{
    Q_OBJECT
public:
    // The private clipboard type: a run of "#aarrggbb" groups, one per entry.
    static const char *const PaletteMimeType;
    // Growing commands never make the palette longer than this unless told otherwise.
    static constexpr int DefaultMaximumPaletteSize = 1024;

    // An invalid background colour means the colour of the widget's own background role.
    PaletteView(const Palette<uint> &palette, int columns, int cellWidth, int cellHeight, int vspacing,
                int hspacing, int padTop, int padRight, int padBottom, int padLeft,
                const QColor &background = QColor(), QWidget *parent = nullptr);

    // Replaces the shown palette without emitting paletteChanged(); the selection stays.
    void setPalette(const Palette<uint> &palette);
    using QLabel::setPalette;
    // Hides QWidget::palette(); the widget's colour roles stay reachable through QWidget::palette().
    const Palette<uint> &palette() const { return m_palette; }

    const std::set<int> &selection() const { return m_selection; }
    int selectionCount() const { return int(m_selection.size()); }
    int anchor() const { return m_anchor; }

    // The key flags are handed in by the window, which sees the keyboard.
    void setModifiers(bool shift, bool control);
    bool isShiftHeld() const { return m_shift; }
    bool isControlHeld() const { return m_control; }

    // When set, commands never change the palette's length.
    void setFixedPaletteSize(bool fixed) { m_fixedSize = fixed; }
    bool isFixedPaletteSize() const { return m_fixedSize; }
    void setMaximumPaletteSize(int size) { m_maximumSize = qMax(0, size); }
    int maximumPaletteSize() const { return m_maximumSize; }

    // Written into entries cut to the background and into entries that pad a fixed-size palette.
    void setFillColor(const RGBAColor<uint> &color) { m_fillColor = color; }
    RGBAColor<uint> fillColor() const { return m_fillColor; }

    // The template of the clipboard text of several entries (escapes and placeholders unexpanded).
    void setClipboardHeader(const QString &text) { m_header = text; }
    void setClipboardEntry(const QString &text) { m_entry = text; }
    void setClipboardDivider(const QString &text) { m_divider = text; }
    void setClipboardBottom(const QString &text) { m_bottom = text; }
    QString clipboardHeader() const { return m_header; }
    QString clipboardEntry() const { return m_entry; }
    QString clipboardDivider() const { return m_divider; }
    QString clipboardBottom() const { return m_bottom; }
    // The text of a single copied colour: 0 "#%R%G%B", 1 "%R%G%B", anything else "(%r, %g, %b)".
    void setColorFormat(int format) { m_colorFormat = format; }
    int colorFormat() const { return m_colorFormat; }

    // The drawing that the label shows.
    const QImage &image() const { return m_image; }
    // The palette index under a point in widget pixels, or -1 when the point is left of or above the grid.
    int indexAt(const QPoint &pos) const;

    // The colour a clipboard or colour dialog colour becomes in the palette.
    static RGBAColor<uint> entryFromColor(const QColor &color);
    // An entry as a QColor with its 16-bit channels.
    static QColor colorFromEntry(const RGBAColor<uint> &entry);
    // The tool tip of a cell: its index, the colour drawn as hex and the entry's 16-bit values.
    static QString entryToolTip(int index, const RGBAColor<uint> &entry);

signals:
    void paletteChanged();
    void selectionChanged();
    // The palette's length after a command that changed it.
    void setPaletteSize(size_t size);
    void currentColorChanged(const QColor &color);

public slots:
    bool cut_remove(bool copy2clipboard);
    bool cut_toBackground();
    bool copy();
    bool paste();
    bool replace();
    bool deleteA();
    bool edit();
    void selectAll();
    void selectNone();
    void selectInvert();
    void setSelected(std::set<int> selected);

protected:
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    bool isSelected(int index) const { return m_selection.count(index) > 0; }
    QColor backgroundColor() const;
    void rebuild();
    // Rebuilds, then emits in the order every command keeps.
    void finishCommand(bool selectionChanged, bool paletteChanged, int oldLength);
    // The colours on the clipboard: one colour, a pasted palette, or nothing. single tells which.
    static std::vector<RGBAColor<uint>> clipboardColors(const QMimeData *data, bool *single);

    Palette<uint> m_palette;
    int m_columns = 16;
    int m_cellWidth = 12;
    int m_cellHeight = 12;
    int m_vspacing = 2;
    int m_hspacing = 2;
    int m_padTop = 1;
    int m_padRight = 1;
    int m_padBottom = 1;
    int m_padLeft = 1;
    std::set<int> m_selection;
    int m_anchor = -1;
    bool m_shift = false;
    bool m_control = false;
    bool m_fixedSize = false;
    RGBAColor<uint> m_fillColor{0, 0, 0, 65535};
    QColor m_background;
    QString m_header;
    QString m_entry = QStringLiteral("#%R%G%B");
    QString m_divider = QStringLiteral(", ");
    QString m_bottom;
    int m_colorFormat = 0;
    int m_maximumSize = DefaultMaximumPaletteSize;
    QImage m_image;
};
