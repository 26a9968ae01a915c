#include "cosinepalettedialog.h"

#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace {
const char *const channelKeys[] = {"r", "g", "b"};
const char *const coefficientKeys[] = {"a", "b", "c", "d"};
// The built-in presets come in two numbered series; this many belong to the first.
constexpr int firstSeries = 6;
} // namespace

CosinePaletteDialog::CosinePaletteDialog(const Palette<uint> &palette, const std::set<int> &selection,
                                         const QString &connectionName, int maximumSize, QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent)
{
    setWindowTitle(tr("Generate cosinus palette"));
    using S = CosinePaletteSettings;
    const S initial;
    const QString channelTitles[] = {tr("Red"), tr("Green"), tr("Blue")};
    const QString coefficientLabels[] = {tr("Offset:"), tr("Amplitude:"), tr("Frequency:"), tr("Phase:")};
    auto *channels = new QHBoxLayout;
    for (int ch = 0; ch < 3; ++ch) {
        auto *group = new QGroupBox(channelTitles[ch]);
        auto *form = new QFormLayout(group);
        const S::Channel &start = initial.channels[size_t(ch)];
        const double values[] = {start.a, start.b, start.c, start.d};
        for (int k = 0; k < 4; ++k) {
            auto *spin = new QDoubleSpinBox;
            spin->setObjectName(QStringLiteral("%1_%2").arg(QLatin1String(coefficientKeys[k]),
                                                            QLatin1String(channelKeys[ch])));
            spin->setDecimals(2);
            spin->setSingleStep(0.05);
            spin->setRange(S::coefficientMinimum, S::coefficientMaximum);
            spin->setValue(values[k]);
            connect(spin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                    &CosinePaletteDialog::controlChanged);
            m_coefficients[size_t(ch)][size_t(k)] = spin;
            form->addRow(coefficientLabels[k], spin);
        }
        channels->addWidget(group);
    }
    m_size = makeSlider("size", 1, qMax(1, maximumSize), 32, qMin(initial.size, qMax(1, maximumSize)));
    m_keepAspect = makeCheckBox(tr("Keep aspect"), "keep_aspect");
    m_keepAspect->setChecked(initial.keepAspect);

    auto *layout = new QVBoxLayout;
    layout->addLayout(channels);
    auto *form = new QFormLayout;
    form->addRow(tr("Palette size:"), m_size);
    form->addRow(m_keepAspect);
    layout->addLayout(form);
    setControls(layout);
}

QString CosinePaletteDialog::settingsName() const
{
    return CosinePaletteSettings::settingsName;
}

QStringList CosinePaletteDialog::presetNames() const
{
    QStringList names;
    for (int i = 1; i <= firstSeries; ++i)
        names << tr("Predefined #%1").arg(i);
    // The second series is numbered the same way under its own title; the count follows the
    // resources, so names are given generously and only those with a preset are shown.
    for (int i = 1; i <= 32; ++i)
        names << tr("Banded #%1").arg(i);
    return names;
}

CosinePaletteSettings CosinePaletteDialog::settings() const
{
    CosinePaletteSettings s;
    for (int ch = 0; ch < 3; ++ch) {
        CosinePaletteSettings::Channel &c = s.channels[size_t(ch)];
        const auto &spins = m_coefficients[size_t(ch)];
        c.a = spins[0]->value();
        c.b = spins[1]->value();
        c.c = spins[2]->value();
        c.d = spins[3]->value();
    }
    s.size = m_size->value();
    s.keepAspect = m_keepAspect->isChecked();
    return s;
}

SettingsText::Pairs CosinePaletteDialog::currentPairs() const
{
    return settings().toPairs();
}

void CosinePaletteDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    // Settings without a size mean the size the dialog has always started with, not the current one.
    CosinePaletteSettings base = settings();
    base.size = CosinePaletteSettings().size;
    const auto s = CosinePaletteSettings::fromPairs(pairs, base);
    for (int ch = 0; ch < 3; ++ch) {
        const CosinePaletteSettings::Channel &c = s.channels[size_t(ch)];
        const double values[] = {c.a, c.b, c.c, c.d};
        for (int k = 0; k < 4; ++k)
            m_coefficients[size_t(ch)][size_t(k)]->setValue(values[k]);
    }
    m_size->setValue(s.size);
    m_keepAspect->setChecked(s.keepAspect);
}
