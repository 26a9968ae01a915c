#pragma once

#include "palette/palette.h"

#include <QColor>
#include <QWidget>

#include <set>

// The palette as one strip: every entry a cell, the cells sharing the widget's width.
class PaletteBar : public QWidget
{
    Q_OBJECT
public:
    explicit PaletteBar(QWidget *parent = nullptr);
    explicit PaletteBar(const Palette<uint> &palette, QWidget *parent = nullptr);

    // Emits paletteChanged() when the entries differ from the shown ones.
    void setPalette(const Palette<uint> &palette);
    using QWidget::setPalette;
    const Palette<uint> &palette() const { return m_palette; }

    const std::set<int> &selection() const { return m_selection; }
    void setSelected(const std::set<int> &selected);

    // The cell of an entry in widget pixels; empty for an index outside the palette.
    QRect cellRect(int index) const;
    // The entry under a widget x, or -1.
    int indexAt(int x) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void paletteChanged();
    void currentColorChanged(const QColor &color);

public slots:
    void selectAll();
    void selectNone();
    void selectInvert();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    int cellStart(int index) const;

    Palette<uint> m_palette;
    std::set<int> m_selection;
};
