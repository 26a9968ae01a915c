#include "colorpushbutton.h"

ColorPushButton::ColorPushButton(QWidget *parent) : QPushButton(parent)
{
    setColor(m_color);
}

void ColorPushButton::setColor(const QColor &color)
{
    m_color = color;
    setStyleSheet(QStringLiteral("background-color: ") + m_color.name());
}
