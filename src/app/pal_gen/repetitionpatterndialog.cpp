#include "repetitionpatterndialog.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QSpinBox>

RepetitionPatternDialog::RepetitionPatternDialog(const Palette<uint> &palette, const std::set<int> &selection,
                                                 const QString &connectionName, int maximumSize,
                                                 QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent)
{
    setWindowTitle(tr("Repetition pattern"));
    using S = RepetitionPatternSettings;
    const S initial;
    m_count = makeSpinBox("count", 1, S::maximumStep, initial.count);
    m_stride = makeSpinBox("stride", 1, S::maximumStep, initial.stride);
    m_offset = makeSpinBox("offset", 0, 65535, initial.offset);
    m_mirror = makeCheckBox(tr("Mirror: run there and back"), "mirror");
    m_size = makeSpinBox("size", 0, qMax(1, maximumSize), initial.size);
    m_size->setSpecialValueText(tr("as the palette"));
    m_selectedOnly = makeCheckBox(tr("Repeat the selected entries only"), "sel_only");
    m_selectedOnly->setChecked(initial.selectedOnly);

    auto *form = new QFormLayout;
    form->addRow(tr("Each color repeats:"), m_count);
    form->addRow(tr("Stride:"), m_stride);
    form->addRow(tr("Offset:"), m_offset);
    form->addRow(m_mirror);
    form->addRow(tr("Palette size:"), m_size);
    form->addRow(m_selectedOnly);
    setControls(form);
    resize(400, sizeHint().height());
}

QString RepetitionPatternDialog::settingsName() const
{
    return RepetitionPatternSettings::settingsName;
}

QStringList RepetitionPatternDialog::presetNames() const
{
    return {tr("Repeat"), tr("There and back"), tr("Doubled colors"), tr("Every second color")};
}

RepetitionPatternSettings RepetitionPatternDialog::settings() const
{
    RepetitionPatternSettings s;
    s.count = m_count->value();
    s.stride = m_stride->value();
    s.offset = m_offset->value();
    s.mirror = m_mirror->isChecked();
    s.size = m_size->value();
    s.selectedOnly = m_selectedOnly->isChecked();
    return s;
}

SettingsText::Pairs RepetitionPatternDialog::currentPairs() const
{
    return settings().toPairs();
}

void RepetitionPatternDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    const auto s = RepetitionPatternSettings::fromPairs(pairs, settings());
    m_count->setValue(s.count);
    m_stride->setValue(s.stride);
    m_offset->setValue(s.offset);
    m_mirror->setChecked(s.mirror);
    m_size->setValue(s.size);
    m_selectedOnly->setChecked(s.selectedOnly);
}
