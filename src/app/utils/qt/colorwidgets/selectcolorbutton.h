#pragma once

#include <QColor>
#include <QPushButton>

// A button that shows a colour as its background and lets the user pick another. While the colour
// dialog is open, every colour the user points at is announced too, so the owner can preview it;
// Cancel announces the colour from before again.
class SelectColorButton : public QPushButton
{
    Q_OBJECT
public:
    explicit SelectColorButton(QWidget *parent = nullptr);

    const QColor &color() const { return m_color; }
    // Shows the colour without announcing it (for controls that are being loaded).
    void setColor(const QColor &color);

signals:
    void colorChanged(const QColor &color);

public slots:
    void updateColor(const QColor &color);
    void changeColor();
    void colorChanged2(const QColor &color);

private:
    void showColor();

    QColor m_color = Qt::black;
};
