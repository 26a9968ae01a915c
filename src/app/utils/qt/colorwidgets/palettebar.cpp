#include "palettebar.h"

#include "paletteview.h"

#include <QMouseEvent>
#include <QPainter>

PaletteBar::PaletteBar(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

PaletteBar::PaletteBar(const Palette<uint> &palette, QWidget *parent) : PaletteBar(parent)
{
    m_palette = palette;
}

void PaletteBar::setPalette(const Palette<uint> &palette)
{
    if (palette.entries() == m_palette.entries()) {
        m_palette = palette;
        return;
    }
    m_palette = palette;
    update();
    emit paletteChanged();
}

void PaletteBar::setSelected(const std::set<int> &selected)
{
    m_selection = selected;
    update();
}

QSize PaletteBar::sizeHint() const
{
    return QSize(256, 16);
}

QSize PaletteBar::minimumSizeHint() const
{
    return QSize(16, 8);
}

int PaletteBar::cellStart(int index) const
{
    // 64-bit product: a wide widget times a long palette may pass the range of int.
    return int(qint64(index) * width() / std::max(1, m_palette.size()));
}

QRect PaletteBar::cellRect(int index) const
{
    if (index < 0 || index >= m_palette.size())
        return QRect();
    const int x0 = cellStart(index);
    return QRect(x0, 0, cellStart(index + 1) - x0, height());
}

int PaletteBar::indexAt(int x) const
{
    const int n = m_palette.size();
    if (n == 0 || x < 0 || x >= width())
        return -1;
    int i = int(std::min<qint64>(n - 1, qint64(x) * n / std::max(1, width())));
    // Rounding of the cell borders can put the estimate one cell off.
    while (i + 1 < n && cellStart(i + 1) <= x)
        ++i;
    while (i > 0 && cellStart(i) > x)
        --i;
    return i;
}

void PaletteBar::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.fillRect(rect(), QWidget::palette().color(backgroundRole()));
    for (int i = 0; i < m_palette.size(); ++i) {
        const QRect cell = cellRect(i);
        if (cell.isEmpty())
            continue;
        const RGBAColor<uint> &c = m_palette[i];
        // Shown without alpha, as in the grid view.
        p.fillRect(cell, QColor(int((c.r >> 8) & 0xFF), int((c.g >> 8) & 0xFF), int((c.b >> 8) & 0xFF)));
        if (m_selection.count(i)) {
            p.setPen(QColor(0xFF, 0xFF, 0x00));
            p.drawRect(cell.adjusted(0, 0, -1, -1));
        }
    }
}

void PaletteBar::mousePressEvent(QMouseEvent *event)
{
    const int index = event->button() == Qt::LeftButton ? indexAt(event->pos().x()) : -1;
    if (index < 0) {
        QWidget::mousePressEvent(event);
        return;
    }
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        if (!m_selection.erase(index))
            m_selection.insert(index);
    } else {
        const bool only = m_selection.size() == 1 && m_selection.count(index);
        m_selection.clear();
        if (!only)
            m_selection.insert(index);
    }
    update();
}

void PaletteBar::mouseDoubleClickEvent(QMouseEvent *event)
{
    const int index = event->button() == Qt::LeftButton ? indexAt(event->pos().x()) : -1;
    if (index < 0) {
        QWidget::mouseDoubleClickEvent(event);
        return;
    }
    emit currentColorChanged(PaletteView::colorFromEntry(m_palette[index]));
}

void PaletteBar::selectAll()
{
    m_selection.clear();
    for (int i = 0; i < m_palette.size(); ++i)
        m_selection.insert(m_selection.end(), i);
    update();
}

void PaletteBar::selectNone()
{
    m_selection.clear();
    update();
}

void PaletteBar::selectInvert()
{
    std::set<int> inverted;
    for (int i = 0; i < m_palette.size(); ++i)
        if (!m_selection.count(i))
            inverted.insert(inverted.end(), i);
    m_selection = std::move(inverted);
    update();
}
