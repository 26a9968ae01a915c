#pragma once

#include <QWidget>

class QSlider;
class QSpinBox;

// A slider and a spin box that show one integer parameter; moving either moves the other. The
// owner sets the range and steps.
class QCombinedSliderSpin : public QWidget
{
    Q_OBJECT
public:
    explicit QCombinedSliderSpin(QWidget *parent = nullptr);

    int value() const;
    // Sets both controls; valueChanged is emitted when the value changes.
    void setValue(int value);
    // Sets the range on both, puts the previous value back (clamped by the controls) and emits
    // valueChanged with the spin box's value.
    void setRange(int minimum, int maximum);
    int minimum() const;
    int maximum() const;
    void setSingleStep(int step);
    void setPageStep(int step);

    QSlider *slider() const { return m_slider; }
    QSpinBox *spinBox() const { return m_spin; }

signals:
    void valueChanged(int value);

public slots:
    void setEnabled(bool enabled);
    void sliderChanged(int value);
    void spinChanged(int value);

private:
    QSlider *m_slider = nullptr;
    QSpinBox *m_spin = nullptr;
};
