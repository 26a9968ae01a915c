#pragma once

#include "operations/colortick.h"

#include <QColor>
#include <QImage>
#include <QLabel>
#include <QPoint>

#include <set>
#include <vector>

// The key editor of a colour gradient: a strip over the index range on which ticks (key colours
// at indexes) are added with a left click, dragged between their neighbours, removed with a right
// click and recoloured with a double click. The first and the last tick always stay.
class ColorTicksBar : public QLabel
{
    Q_OBJECT
public:
    using Tick = ColorTick;

    ColorTicksBar(int pixelsPerIndex, int height, int indexCount, int radius, int leftMargin, int rightMargin,
                  QWidget *parent = nullptr);

    const std::vector<Tick> &ticks() const { return m_ticks; }
    // Replaces every tick, redraws and emits ticksChanged.
    void setTicks(const std::vector<Tick> &ticks);

    // The position of the current tick in ticks(), -1 for none.
    int currentTick() const { return m_current; }
    const std::set<int> &selectedTicks() const { return m_selected; }
    // Makes a tick current and the only selected one (-1 for none), and emits tickSelected.
    void selectTick(int position);

    // The dialog's editors change the current tick through these; each redraws and emits
    // ticksChanged when the tick changed. The index stays between the neighbours' indexes.
    void setCurrentTickIndex(int index);
    void setCurrentTickColor(const QColor &color);
    void setCurrentTickFunction(int function);
    void setCurrentTickColorSpace(int colorSpace);

    // The colour space and function a tick added with the mouse starts with.
    void setDefaults(int colorSpace, int function);

    // The tick under (x, y): the nearest within the radius becomes current and selected. Without
    // one, create adds a tick of a random opaque colour there; otherwise the result is -1.
    int hitTest(int x, int y, bool create);

    const QImage &image() const { return m_image; }
    int highestIndex() const { return m_highestIndex; }

signals:
    void ticksChanged(const std::vector<ColorTicksBar::Tick> &t);
    void tickSelected(int index);
    void currentColorChanged(const QColor &color);

public slots:
    void selectAll();
    void selectNone();
    void selectInvert();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void redraw();
    bool isMovable(int position) const { return position > 0 && position < int(m_ticks.size()) - 1; }
    void changeCurrent(const Tick &tick);

    QImage m_image;
    QColor m_background = QColor(128, 128, 128);
    int m_pixelsPerIndex = 2;
    int m_leftMargin = 0;
    int m_rightMargin = 0;
    int m_height = 17;
    int m_indexCount = 256;
    int m_radius = 7;
    std::vector<Tick> m_ticks;
    std::set<int> m_selected;
    int m_current = -1;
    QPoint m_lastPosition;
    bool m_leftDown = false;
    int m_highestIndex = 256;
    int m_defaultColorSpace = 0;
    int m_defaultFunction = ColorTick::Linear;
};

// Lets the tick list travel through queued connections and signal spies.
Q_DECLARE_METATYPE(std::vector<ColorTicksBar::Tick>)
