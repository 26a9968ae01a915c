#include "selectcolorbutton.h"

#include <QColorDialog>

SelectColorButton::SelectColorButton(QWidget *parent) : QPushButton(parent)
{
    connect(this, &QPushButton::clicked, this, &SelectColorButton::changeColor);
    showColor();
}

void SelectColorButton::setColor(const QColor &color)
{
    m_color = color;
    showColor();
}

void SelectColorButton::showColor()
{
    setStyleSheet(QStringLiteral("background-color: ") + m_color.name());
}

void SelectColorButton::updateColor(const QColor &color)
{
    m_color = color;
    showColor();
    emit colorChanged(m_color);
}

void SelectColorButton::colorChanged2(const QColor &color)
{
    updateColor(color);
}

void SelectColorButton::changeColor()
{
    const QColor before = m_color;
    QColorDialog dialog(before, parentWidget());
    connect(&dialog, &QColorDialog::currentColorChanged, this, &SelectColorButton::colorChanged2);
    if (dialog.exec() == QDialog::Accepted)
        updateColor(dialog.selectedColor());
    else
        updateColor(before);
}
