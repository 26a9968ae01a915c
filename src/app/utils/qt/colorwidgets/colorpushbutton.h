#pragma once

#include <QColor>
#include <QPushButton>

// A button that shows a colour as its background; what a click does is up to its owner.
class ColorPushButton : public QPushButton
{
    Q_OBJECT
public:
    explicit ColorPushButton(QWidget *parent = nullptr);

    const QColor &color() const { return m_color; }

public slots:
    void setColor(const QColor &color);

private:
    QColor m_color = Qt::black;
};
