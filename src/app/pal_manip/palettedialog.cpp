#include "palettedialog.h"

#include "spaces/colorspace.h"
#include "palette/describedexception.h"
#include "operations/paletteoperations.h"
#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QMessageBox>
#include <QSpinBox>
#include <QVBoxLayout>

PaletteDialog::PaletteDialog(const Palette<uint> &palette, const std::set<int> &selection,
                             const QString &connectionName, QWidget *parent)
    : QDialog(parent), m_palette(palette), m_selection(selection), m_connection(connectionName),
      m_result(palette)
{
}

void PaletteDialog::setControls(QLayout *controls)
{
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(controls);
    m_settingsIO = new DialogSettingsIO(this, m_connection, presetNames());
    m_settingsIO->setObjectName(QStringLiteral("settingsIO"));
    layout->addWidget(m_settingsIO);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->setObjectName(QStringLiteral("buttons"));
    connect(buttons, &QDialogButtonBox::accepted, this, &PaletteDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &PaletteDialog::reject);
    layout->addWidget(buttons);
}

QString PaletteDialog::settingsText() const
{
    return SettingsText::format(settingsName(), SettingsText::formatLines(operationPairs()));
}

void PaletteDialog::start()
{
    if (m_settingsIO)
        m_settingsIO->start();
    started();
    recomputeNow(true);
}

void PaletteDialog::applySettings(const SettingsText::Pairs &pairs)
{
    m_applying = true;
    try {
        applyPairs(pairs);
    } catch (const DescribedException &e) {
        m_applying = false;
        QMessageBox::warning(this, e.title(), e.message());
        schedule();
        return;
    }
    m_applying = false;
    schedule();
}

void PaletteDialog::controlChanged()
{
    if (m_applying)
        return;
    if (m_settingsIO)
        m_settingsIO->markModified();
    schedule();
}

void PaletteDialog::schedule()
{
    if (m_pending)
        return;
    m_pending = true;
    QMetaObject::invokeMethod(
        this, [this]() { recomputeNow(); }, Qt::QueuedConnection);
}

Palette<uint> PaletteDialog::compute(const SettingsText::Pairs &pairs) const
{
    return PaletteOperations::apply(settingsName(), m_palette, m_selection, pairs);
}

void PaletteDialog::recomputeNow(bool force)
{
    m_pending = false;
    const SettingsText::Pairs pairs = operationPairs();
    if (m_computed && !force && pairs == m_lastPairs)
        return;
    try {
        m_result = compute(pairs);
    } catch (const DescribedException &e) {
        QMessageBox::warning(this, e.title(), e.message());
        return;
    }
    m_lastPairs = pairs;
    m_computed = true;
    resultChanged();
    emit paletteChanged(m_result);
}

void PaletteDialog::accept()
{
    recomputeNow();
    if (m_settingsIO)
        m_settingsIO->recordLastUsed();
    QDialog::accept();
}

QCombinedSliderSpin *PaletteDialog::makeSlider(const char *key, int minimum, int maximum, int pageStep,
                                               int value)
{
    auto *slider = new QCombinedSliderSpin;
    slider->setObjectName(QString::fromLatin1(key));
    slider->setRange(minimum, maximum);
    slider->setSingleStep(1);
    slider->setPageStep(pageStep);
    slider->setValue(value);
    connect(slider, &QCombinedSliderSpin::valueChanged, this, &PaletteDialog::controlChanged);
    return slider;
}

QCheckBox *PaletteDialog::makeCheckBox(const QString &text, const char *key)
{
    auto *box = new QCheckBox(text);
    box->setObjectName(QString::fromLatin1(key));
    connect(box, &QCheckBox::toggled, this, &PaletteDialog::controlChanged);
    return box;
}

QSpinBox *PaletteDialog::makeSpinBox(const char *key, int minimum, int maximum, int value)
{
    auto *spin = new QSpinBox;
    spin->setObjectName(QString::fromLatin1(key));
    spin->setRange(minimum, maximum);
    spin->setValue(value);
    connect(spin, QOverload<int>::of(&QSpinBox::valueChanged), this, &PaletteDialog::controlChanged);
    return spin;
}

QComboBox *PaletteDialog::makeColourSpaceBox(const char *key)
{
    auto *box = new QComboBox;
    box->setObjectName(QString::fromLatin1(key));
    for (const ColorSpaceInfo &space : colorSpaceTable())
        box->addItem(space.name);
    connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &PaletteDialog::controlChanged);
    return box;
}

QStringList PaletteDialog::componentLabels(int space)
{
    QStringList labels;
    const QStringList names =
        colorSpaceTable().at(size_t(qBound(0, space, int(ColorSpaceCount) - 1))).components;
    for (int k = 0; k < 4; ++k) {
        QString name = names.value(k, QStringLiteral("-"));
        name[0] = name[0].toUpper();
        labels << name;
    }
    return labels;
}
