#include "exportanimationdialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QSettings>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

QSpinBox *spinBox(const char *name, int maximum, int value)
{
    auto *box = new QSpinBox;
    box->setObjectName(QLatin1String(name));
    box->setRange(0, maximum);
    box->setValue(value);
    box->setMaximumWidth(100);
    return box;
}

} // namespace

ExportAnimationDialog::ExportAnimationDialog(int paletteLength, QWidget *parent) : QDialog(parent)
{
    setWindowTitle(tr("Export Animation"));
    const QSettings s;
    const int last = std::max(paletteLength - 1, 0);
    m_start = spinBox("startIndex", 255, s.value(QStringLiteral("animation_start"), 0).toInt());
    m_end = spinBox("endIndex", last, s.value(QStringLiteral("animation_end"), last).toInt());
    m_fps = spinBox("framesPerSecond", 60, s.value(QStringLiteral("animation_speed"), 10).toInt());

    auto *layout = new QVBoxLayout(this);
    auto *form = new QFormLayout;
    form->addRow(tr("Start index:"), m_start);
    form->addRow(tr("End index:"), m_end);
    form->addRow(tr("Frames per second:"), m_fps);
    layout->addLayout(form);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

int ExportAnimationDialog::startIndex() const
{
    return m_start->value();
}

int ExportAnimationDialog::endIndex() const
{
    return m_end->value();
}

int ExportAnimationDialog::framesPerSecond() const
{
    return m_fps->value();
}

void ExportAnimationDialog::accept()
{
    QSettings s;
    s.setValue(QStringLiteral("animation_start"), startIndex());
    s.setValue(QStringLiteral("animation_end"), endIndex());
    s.setValue(QStringLiteral("animation_speed"), framesPerSecond());
    QDialog::accept();
}
