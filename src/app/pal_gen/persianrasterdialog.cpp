#include "persianrasterdialog.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QSpinBox>
#include <QVBoxLayout>

PersianRasterDialog::PersianRasterDialog(const Palette<uint> &palette, const std::set<int> &selection,
                                         const QString &connectionName, int maximumSize, QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent)
{
    setWindowTitle(tr("Persian raster"));
    using S = PersianRasterSettings;
    const S initial;
    m_period1 = makeSpinBox("period1", 1, S::maximumStep, initial.period1);
    m_period2 = makeSpinBox("period2", 1, S::maximumStep, initial.period2);
    m_offset = makeSpinBox("offset", 0, 65535, initial.offset);
    m_reverse = makeCheckBox(tr("Backwards"), "reverse");
    m_thread = makeSpinBox("thread", 1, S::maximumStep, initial.thread);
    m_over = makeSpinBox("over", 1, S::maximumFloat, initial.over);
    m_under = makeSpinBox("under", 1, S::maximumFloat, initial.under);
    m_size = makeSpinBox("size", 0, qMax(1, maximumSize), initial.size);
    m_size->setSpecialValueText(tr("as the palette"));
    m_selectedOnly = makeCheckBox(tr("Weave the selected entries only"), "sel_only");
    m_selectedOnly->setChecked(initial.selectedOnly);

    auto *first = new QGroupBox(tr("First run (warp)"));
    auto *firstForm = new QFormLayout(first);
    firstForm->addRow(tr("Entries per color:"), m_period1);
    auto *second = new QGroupBox(tr("Second run (weft)"));
    auto *secondForm = new QFormLayout(second);
    secondForm->addRow(tr("Entries per color:"), m_period2);
    secondForm->addRow(tr("Colors ahead:"), m_offset);
    secondForm->addRow(m_reverse);
    auto *weave = new QGroupBox(tr("Weave"));
    auto *weaveForm = new QFormLayout(weave);
    weaveForm->addRow(tr("Thread width:"), m_thread);
    weaveForm->addRow(tr("Threads of the first run:"), m_over);
    weaveForm->addRow(tr("Threads of the second run:"), m_under);

    auto *layout = new QVBoxLayout;
    layout->addWidget(first);
    layout->addWidget(second);
    layout->addWidget(weave);
    auto *form = new QFormLayout;
    form->addRow(tr("Palette size:"), m_size);
    form->addRow(m_selectedOnly);
    layout->addLayout(form);
    setControls(layout);
}

QString PersianRasterDialog::settingsName() const
{
    return PersianRasterSettings::settingsName;
}

QStringList PersianRasterDialog::presetNames() const
{
    return {tr("Plain weave"), tr("Twill"), tr("Counter-run"), tr("Wide bands")};
}

PersianRasterSettings PersianRasterDialog::settings() const
{
    PersianRasterSettings s;
    s.period1 = m_period1->value();
    s.period2 = m_period2->value();
    s.offset = m_offset->value();
    s.reverse = m_reverse->isChecked();
    s.thread = m_thread->value();
    s.over = m_over->value();
    s.under = m_under->value();
    s.size = m_size->value();
    s.selectedOnly = m_selectedOnly->isChecked();
    return s;
}

SettingsText::Pairs PersianRasterDialog::currentPairs() const
{
    return settings().toPairs();
}

void PersianRasterDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    const auto s = PersianRasterSettings::fromPairs(pairs, settings());
    m_period1->setValue(s.period1);
    m_period2->setValue(s.period2);
    m_offset->setValue(s.offset);
    m_reverse->setChecked(s.reverse);
    m_thread->setValue(s.thread);
    m_over->setValue(s.over);
    m_under->setValue(s.under);
    m_size->setValue(s.size);
    m_selectedOnly->setChecked(s.selectedOnly);
}
