#include "shiftorderdialog.h"

#include "storage/settingsvalues.h"
#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QFormLayout>

ShiftOrderDialog::ShiftOrderDialog(const Palette<uint> &palette, const std::set<int> &selection,
                                   const QString &connectionName, QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent)
{
    setWindowTitle(tr("Shift order"));
    m_offset = new QCombinedSliderSpin;
    m_offset->setObjectName(QStringLiteral("offset"));
    // One turn either way reaches every arrangement.
    const int turn = qMax(1, palette.size());
    m_offset->setRange(-turn, turn);
    m_offset->setValue(0);
    m_offset->setSingleStep(1);
    m_offset->setPageStep(qMax(1, turn / 16));
    connect(m_offset, &QCombinedSliderSpin::valueChanged, this, &ShiftOrderDialog::controlChanged);
    auto *form = new QFormLayout;
    form->addRow(tr("Offset"), m_offset);
    setControls(form);
}

SettingsText::Pairs ShiftOrderDialog::currentPairs() const
{
    return {{QStringLiteral("offset"), SettingsValues::text(m_offset->value())}};
}

void ShiftOrderDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    for (const auto &[key, value] : pairs)
        if (key == QLatin1String("offset"))
            m_offset->setValue(
                SettingsValues::clampedInteger(key, value, m_offset->minimum(), m_offset->maximum()));
}
