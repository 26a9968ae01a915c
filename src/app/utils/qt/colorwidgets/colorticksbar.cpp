#include "colorticksbar.h"

#include <QColorDialog>
#include <QMouseEvent>

#include <algorithm>
#include <cstdlib>

ColorTicksBar::ColorTicksBar(int pixelsPerIndex, int height, int indexCount, int radius, int leftMargin,
                             int rightMargin, QWidget *parent)
    : QLabel(parent), m_pixelsPerIndex(qMax(1, pixelsPerIndex)), m_leftMargin(leftMargin),
      m_rightMargin(rightMargin), m_height(height), m_indexCount(indexCount), m_radius(radius)
{
    qRegisterMetaType<std::vector<Tick>>("std::vector<ColorTicksBar::Tick>");
    m_image = QImage(m_pixelsPerIndex * m_indexCount + m_leftMargin + m_rightMargin, m_height,
                     QImage::Format_ARGB32);
    setFixedSize(m_image.size());
    redraw();
}

void ColorTicksBar::setTicks(const std::vector<Tick> &ticks)
{
    m_ticks = ticks;
    std::stable_sort(m_ticks.begin(), m_ticks.end(),
                     [](const Tick &a, const Tick &b) { return a.index < b.index; });
    m_selected.clear();
    m_current = -1;
    redraw();
    emit ticksChanged(m_ticks);
}

void ColorTicksBar::selectTick(int position)
{
    m_selected.clear();
    m_current = position >= 0 && position < int(m_ticks.size()) ? position : -1;
    if (m_current >= 0)
        m_selected.insert(m_current);
    redraw();
    emit tickSelected(m_current);
}

void ColorTicksBar::setDefaults(int colorSpace, int function)
{
    m_defaultColorSpace = colorSpace;
    m_defaultFunction = function;
}

void ColorTicksBar::changeCurrent(const Tick &tick)
{
    if (m_current < 0 || m_current >= int(m_ticks.size()) || m_ticks[size_t(m_current)] == tick)
        return;
    m_ticks[size_t(m_current)] = tick;
    redraw();
    emit ticksChanged(m_ticks);
}

void ColorTicksBar::setCurrentTickIndex(int index)
{
    if (m_current < 0 || m_current >= int(m_ticks.size()))
        return;
    const int low = m_current > 0 ? m_ticks[size_t(m_current - 1)].index : 0;
    const int high =
        m_current + 1 < int(m_ticks.size()) ? m_ticks[size_t(m_current + 1)].index : m_highestIndex - 1;
    Tick tick = m_ticks[size_t(m_current)];
    tick.index = qBound(low, index, high);
    changeCurrent(tick);
}

void ColorTicksBar::setCurrentTickColor(const QColor &color)
{
    if (m_current < 0 || m_current >= int(m_ticks.size()))
        return;
    Tick tick = m_ticks[size_t(m_current)];
    tick.color = color.rgb(); // opaque: the alpha byte of a key plays no part
    changeCurrent(tick);
}

void ColorTicksBar::setCurrentTickFunction(int function)
{
    if (m_current < 0 || m_current >= int(m_ticks.size()))
        return;
    Tick tick = m_ticks[size_t(m_current)];
    tick.function = function;
    changeCurrent(tick);
}

void ColorTicksBar::setCurrentTickColorSpace(int colorSpace)
{
    if (m_current < 0 || m_current >= int(m_ticks.size()))
        return;
    Tick tick = m_ticks[size_t(m_current)];
    tick.colorSpace = colorSpace;
    changeCurrent(tick);
}

int ColorTicksBar::hitTest(int x, int y, bool create)
{
    // The left margin is not subtracted here, unlike while dragging; both are kept as users know them.
    const int i = x / m_pixelsPerIndex;
    std::vector<std::pair<int, int>> candidates; // distance, position
    for (int k = 0; k < int(m_ticks.size()); ++k) {
        const int distance = std::abs(i - m_ticks[size_t(k)].index) + std::abs(y - m_height / 2);
        if (distance <= m_radius)
            candidates.emplace_back(distance, k);
    }
    if (!candidates.empty()) {
        std::sort(
            candidates.begin(), candidates.end(),
            [](const std::pair<int, int> &a, const std::pair<int, int> &b) { return a.first < b.first; });
        m_selected.clear();
        m_current = candidates.front().second;
    } else if (!create) {
        m_current = -1;
        return -1;
    } else {
        auto channel = []() { return uint((std::rand() & 0x7FFF) / 32767.0 * 255); };
        const uint r = channel();
        const uint g = channel();
        const uint b = channel();
        Tick tick;
        tick.index = i;
        tick.color = 0xFF000000u | (r << 16) | (g << 8) | b;
        tick.colorSpace = m_defaultColorSpace;
        tick.function = m_defaultFunction;
        const auto at =
            std::find_if(m_ticks.begin(), m_ticks.end(), [i](const Tick &t) { return t.index > i; });
        m_current = int(at - m_ticks.begin());
        m_ticks.insert(at, tick);
        m_selected.clear();
    }
    m_selected.insert(m_current);
    return m_current;
}

void ColorTicksBar::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_leftDown = true;
        m_lastPosition = event->pos();
        const std::vector<Tick> before = m_ticks;
        const int hit = hitTest(event->pos().x(), event->pos().y(), true);
        redraw();
        repaint();
        if (m_ticks != before)
            emit ticksChanged(m_ticks);
        emit tickSelected(hit);
    } else if (event->button() == Qt::RightButton) {
        const int hit = hitTest(event->pos().x(), event->pos().y(), false);
        if (isMovable(hit)) {
            m_ticks.erase(m_ticks.begin() + hit);
            m_selected.clear();
            m_current = -1;
            redraw();
            emit ticksChanged(m_ticks);
        }
        emit tickSelected(-1);
    }
}

void ColorTicksBar::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_leftDown || !isMovable(m_current))
        return;
    m_lastPosition = event->pos();
    const int index =
        qBound(m_ticks[size_t(m_current - 1)].index, (event->pos().x() - m_leftMargin) / m_pixelsPerIndex,
               m_ticks[size_t(m_current + 1)].index);
    m_ticks[size_t(m_current)].index = index;
    redraw();
    repaint();
    emit tickSelected(m_current);
    emit ticksChanged(m_ticks);
}

void ColorTicksBar::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_leftDown = false;
}

void ColorTicksBar::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const int hit = hitTest(event->pos().x(), event->pos().y(), false);
    redraw();
    if (hit < 0)
        return;
    const QColor chosen = QColorDialog::getColor(QColor::fromRgb(m_ticks[size_t(hit)].color), this);
    if (!chosen.isValid())
        return;
    setCurrentTickColor(chosen);
    emit currentColorChanged(chosen);
}

void ColorTicksBar::selectAll()
{
    m_selected.clear();
    for (int k = 0; k < int(m_ticks.size()); ++k)
        m_selected.insert(k);
    redraw();
}

void ColorTicksBar::selectNone()
{
    m_selected.clear();
    redraw();
}

void ColorTicksBar::selectInvert()
{
    std::set<int> inverted;
    for (int k = 0; k < int(m_ticks.size()); ++k)
        if (!m_selected.count(k))
            inverted.insert(k);
    m_selected = inverted;
    redraw();
}

void ColorTicksBar::redraw()
{
    const int w = m_image.width();
    const int h = m_image.height();
    m_image.fill(m_background);
    for (int y = 0; y < h; ++y) {
        auto *line = reinterpret_cast<QRgb *>(m_image.scanLine(y));
        for (int x = 0; x < w; ++x)
            if ((x / 4 + y / 4) % 2 == 1)
                line[x] = 0xFFFFFFFFu;
    }
    auto put = [this, w, h](int x, int y, QRgb colour) {
        if (x >= 0 && x < w && y >= 0 && y < h)
            reinterpret_cast<QRgb *>(m_image.scanLine(y))[x] = colour;
    };
    const int cy = m_height / 2;
    for (int k = 0; k < int(m_ticks.size()); ++k) {
        const Tick &tick = m_ticks[size_t(k)];
        const int cx = tick.index * m_pixelsPerIndex;
        const QRgb colour = tick.color | 0xFF000000u;
        const bool selected = m_selected.count(k) > 0;
        for (int r = 0; r < m_radius; ++r) {
            for (int y : {cy - (m_radius - r), cy + (m_radius - r)}) {
                for (int x = cx - r; x <= cx + r; ++x)
                    put(x, y, colour);
                if (selected) {
                    put(cx - r, y, 0xFF000000u);
                    put(cx + r, y, 0xFF000000u);
                }
            }
        }
    }
    setPixmap(QPixmap::fromImage(m_image));
}
