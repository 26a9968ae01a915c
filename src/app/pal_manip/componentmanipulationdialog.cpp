#include "componentmanipulationdialog.h"

#include "spaces/colorspace.h"
#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>

ComponentManipulationDialog::ComponentManipulationDialog(const Palette<uint> &palette,
                                                         const std::set<int> &selection,
                                                         const QString &connectionName, QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent)
{
    setWindowTitle(tr("Component manipulation"));
    using S = ComponentManipulationSettings;
    m_mode = makeColourSpaceBox("mode");
    auto *form = new QFormLayout;
    form->addRow(tr("Mode:"), m_mode);
    for (int k = 0; k < 4; ++k) {
        const QByteArray key = "comp" + QByteArray::number(k + 1);
        m_components[size_t(k)] = makeSlider(key.constData(), S::minimum, S::maximum, 20, 0);
        m_labels[size_t(k)] = new QLabel;
        form->addRow(m_labels[size_t(k)], m_components[size_t(k)]);
    }
    m_wrap = makeCheckBox(tr("Wrap"), "wrap");
    m_selectedOnly = makeCheckBox(tr("Selected only"), "sel_only");
    form->addRow(m_wrap);
    form->addRow(m_selectedOnly);
    connect(m_mode, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &ComponentManipulationDialog::modeChanged);
    modeChanged(0);
    setControls(form);
    resize(420, sizeHint().height());
}

void ComponentManipulationDialog::modeChanged(int mode)
{
    const QStringList labels = componentLabels(mode);
    const int used =
        colorSpaceTable().at(size_t(qBound(0, mode, int(ColorSpaceCount) - 1))).components.size();
    for (int k = 0; k < 4; ++k) {
        m_labels[size_t(k)]->setText(labels[k]);
        m_components[size_t(k)]->setEnabled(k < used);
    }
}

QString ComponentManipulationDialog::settingsName() const
{
    return ComponentManipulationSettings::settingsName;
}

ComponentManipulationSettings ComponentManipulationDialog::settings() const
{
    ComponentManipulationSettings s;
    s.mode = m_mode->currentIndex();
    for (int k = 0; k < 4; ++k)
        s.components[size_t(k)] = m_components[size_t(k)]->value();
    s.wrap = m_wrap->isChecked();
    s.selectedOnly = m_selectedOnly->isChecked();
    return s;
}

SettingsText::Pairs ComponentManipulationDialog::currentPairs() const
{
    return settings().toPairs();
}

void ComponentManipulationDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    const auto s = ComponentManipulationSettings::fromPairs(pairs, settings());
    m_mode->setCurrentIndex(s.mode);
    for (int k = 0; k < 4; ++k)
        m_components[size_t(k)]->setValue(s.components[size_t(k)]);
    m_wrap->setChecked(s.wrap);
    m_selectedOnly->setChecked(s.selectedOnly);
}
