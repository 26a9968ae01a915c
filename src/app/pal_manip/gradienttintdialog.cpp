#include "gradienttintdialog.h"

#include "storage/settingsvalues.h"
#include "utils/qt/colorwidgets/selectcolorbutton.h"
#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QVBoxLayout>

GradientTintDialog::GradientTintDialog(const Palette<uint> &palette, const std::set<int> &selection,
                                       const QString &connectionName, QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent)
{
    setWindowTitle(tr("Gradient tint"));
    const GradientTintSettings initial;
    const int last = qMax(1, palette.size() - 1);
    auto makeColour = [this](const char *key, const QColor &colour) {
        auto *button = new SelectColorButton;
        button->setObjectName(QString::fromLatin1(key));
        button->setColor(colour);
        connect(button, &SelectColorButton::colorChanged, this, &GradientTintDialog::controlChanged);
        return button;
    };
    m_color1 = makeColour("color1", initial.color1);
    m_opacity1 = makeSlider("opacity1", 0, 100, 10, initial.opacity1);
    m_begin = makeSlider("begin", 0, last - 1, 32, 0);
    m_color2 = makeColour("color2", initial.color2);
    m_opacity2 = makeSlider("opacity2", 0, 100, 10, initial.opacity2);
    m_end = makeSlider("end", 1, last, 32, last);
    m_mode = makeColourSpaceBox("mode");
    m_selectedOnly = makeCheckBox(tr("Selected only"), "sel_only");

    auto makeGroup = [](const QString &title, QWidget *colour, QWidget *opacity, QWidget *index) {
        auto *group = new QGroupBox(title);
        auto *form = new QFormLayout(group);
        form->addRow(tr("Tint color"), colour);
        form->addRow(tr("Opacity"), opacity);
        form->addRow(tr("Index"), index);
        return group;
    };
    auto *layout = new QVBoxLayout;
    layout->addWidget(makeGroup(tr("Begin"), m_color1, m_opacity1, m_begin));
    layout->addWidget(makeGroup(tr("End"), m_color2, m_opacity2, m_end));
    auto *form = new QFormLayout;
    form->addRow(tr("Tint color interpolation mode:"), m_mode);
    form->addRow(m_selectedOnly);
    layout->addLayout(form);
    setControls(layout);
    resize(440, sizeHint().height());
}

QString GradientTintDialog::settingsName() const
{
    return GradientTintSettings::settingsName;
}

GradientTintSettings GradientTintDialog::settings() const
{
    GradientTintSettings s;
    s.color1 = m_color1->color();
    s.opacity1 = m_opacity1->value();
    s.color2 = m_color2->color();
    s.opacity2 = m_opacity2->value();
    s.mode = m_mode->currentIndex();
    s.selectedOnly = m_selectedOnly->isChecked();
    s.begin = m_begin->value();
    s.end = m_end->value();
    return s;
}

SettingsText::Pairs GradientTintDialog::currentPairs() const
{
    return settings().toPairs();
}

SettingsText::Pairs GradientTintDialog::operationPairs() const
{
    SettingsText::Pairs pairs = currentPairs();
    pairs.emplace_back(QStringLiteral("begin"), SettingsValues::text(m_begin->value()));
    pairs.emplace_back(QStringLiteral("end"), SettingsValues::text(m_end->value()));
    return pairs;
}

void GradientTintDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    const auto s = GradientTintSettings::fromPairs(pairs, settings());
    m_color1->setColor(s.color1);
    m_opacity1->setValue(s.opacity1);
    m_color2->setColor(s.color2);
    m_opacity2->setValue(s.opacity2);
    m_mode->setCurrentIndex(s.mode);
    m_selectedOnly->setChecked(s.selectedOnly);
}
