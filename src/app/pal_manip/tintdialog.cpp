#include "tintdialog.h"

#include "utils/qt/colorwidgets/selectcolorbutton.h"
#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QCheckBox>
#include <QFormLayout>

TintDialog::TintDialog(const Palette<uint> &palette, const std::set<int> &selection,
                       const QString &connectionName, QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent)
{
    setWindowTitle(tr("Tint"));
    m_color = new SelectColorButton;
    m_color->setObjectName(QStringLiteral("color"));
    m_color->setColor(TintSettings().color);
    connect(m_color, &SelectColorButton::colorChanged, this, &TintDialog::controlChanged);
    m_opacity = makeSlider("opacity", 0, 100, 10, 0);
    m_selectedOnly = makeCheckBox(tr("Selected only"), "sel_only");
    auto *form = new QFormLayout;
    form->addRow(tr("Tint color:"), m_color);
    form->addRow(tr("Opacity"), m_opacity);
    form->addRow(m_selectedOnly);
    setControls(form);
    resize(420, sizeHint().height());
}

QString TintDialog::settingsName() const
{
    return TintSettings::settingsName;
}

TintSettings TintDialog::settings() const
{
    TintSettings s;
    s.color = m_color->color();
    s.opacity = m_opacity->value();
    s.selectedOnly = m_selectedOnly->isChecked();
    return s;
}

SettingsText::Pairs TintDialog::currentPairs() const
{
    return settings().toPairs();
}

void TintDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    const auto s = TintSettings::fromPairs(pairs, settings());
    m_color->setColor(s.color);
    m_opacity->setValue(s.opacity);
    m_selectedOnly->setChecked(s.selectedOnly);
}
