#include "qcombinedsliderspin.h"

#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>

QCombinedSliderSpin::QCombinedSliderSpin(QWidget *parent) : QWidget(parent)
{
    m_slider = new QSlider(Qt::Horizontal);
    m_slider->setObjectName(QStringLiteral("slider"));
    m_spin = new QSpinBox;
    m_spin->setObjectName(QStringLiteral("spin"));
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_slider, 1);
    layout->addWidget(m_spin);
    connect(m_slider, &QSlider::valueChanged, this, &QCombinedSliderSpin::sliderChanged);
    connect(m_spin, QOverload<int>::of(&QSpinBox::valueChanged), this, &QCombinedSliderSpin::spinChanged);
}

int QCombinedSliderSpin::value() const
{
    return m_spin->value();
}

void QCombinedSliderSpin::setValue(int value)
{
    const int old = m_spin->value();
    {
        const QSignalBlocker blockSlider(m_slider);
        const QSignalBlocker blockSpin(m_spin);
        m_slider->setValue(value);
        m_spin->setValue(value);
    }
    if (m_spin->value() != old)
        emit valueChanged(m_spin->value());
}

void QCombinedSliderSpin::setRange(int minimum, int maximum)
{
    const int old = m_spin->value();
    {
        const QSignalBlocker blockSlider(m_slider);
        const QSignalBlocker blockSpin(m_spin);
        m_slider->setRange(minimum, maximum);
        m_spin->setRange(minimum, maximum);
        m_slider->setValue(old);
        m_spin->setValue(old);
    }
    emit valueChanged(m_spin->value());
}

int QCombinedSliderSpin::minimum() const
{
    return m_spin->minimum();
}

int QCombinedSliderSpin::maximum() const
{
    return m_spin->maximum();
}

void QCombinedSliderSpin::setSingleStep(int step)
{
    m_slider->setSingleStep(step);
    m_spin->setSingleStep(step);
}

void QCombinedSliderSpin::setPageStep(int step)
{
    m_slider->setPageStep(step);
}

void QCombinedSliderSpin::setEnabled(bool enabled)
{
    m_slider->setEnabled(enabled);
    m_spin->setEnabled(enabled);
}

void QCombinedSliderSpin::sliderChanged(int value)
{
    const QSignalBlocker block(m_spin);
    m_spin->setValue(value);
    emit valueChanged(value);
}

void QCombinedSliderSpin::spinChanged(int value)
{
    const QSignalBlocker block(m_slider);
    m_slider->setValue(value);
    emit valueChanged(value);
}
