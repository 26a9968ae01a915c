#include "selectionpatterndialog.h"

#include "palette/describedexception.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QMessageBox>
#include <QSpinBox>
#include <QVBoxLayout>

SelectionPatternDialog::SelectionPatternDialog(int paletteSize, const QString &connectionName,
                                               QWidget *parent)
    : QDialog(parent), m_paletteSize(paletteSize)
{
    setWindowTitle(tr("Selection pattern"));
    using S = SelectionPatternSettings;
    auto makeSpin = [this](const char *key, int minimum, int value) {
        auto *spin = new QSpinBox;
        spin->setObjectName(QString::fromLatin1(key));
        spin->setRange(minimum, S::maximum);
        spin->setValue(value);
        spin->setMaximumWidth(100);
        connect(spin, QOverload<int>::of(&QSpinBox::valueChanged), this,
                &SelectionPatternDialog::controlChanged);
        return spin;
    };
    m_start = makeSpin("start_index", 0, 0);
    m_end = makeSpin("end_index", 0, qBound(0, paletteSize, int(S::maximum)));
    m_set = makeSpin("set_number", 1, 1);
    m_skip = makeSpin("skip_number", 0, 0);
    m_fullPalette = new QCheckBox(tr("Full palette"));
    m_fullPalette->setObjectName(QStringLiteral("full_palette"));
    connect(m_fullPalette, &QCheckBox::toggled, m_end, &QSpinBox::setDisabled);
    connect(m_fullPalette, &QCheckBox::toggled, this, &SelectionPatternDialog::controlChanged);
    m_fullPalette->setChecked(true);

    auto *layout = new QVBoxLayout(this);
    auto *limits = new QGroupBox(tr("Limits"));
    auto *limitsForm = new QFormLayout(limits);
    limitsForm->addRow(tr("Begin index:"), m_start);
    limitsForm->addRow(m_fullPalette);
    limitsForm->addRow(tr("End index:"), m_end);
    layout->addWidget(limits);
    auto *pattern = new QGroupBox(tr("Pattern"));
    auto *patternForm = new QFormLayout(pattern);
    patternForm->addRow(tr("Set number:"), m_set);
    patternForm->addRow(tr("Skip number:"), m_skip);
    layout->addWidget(pattern);

    m_settingsIO = new DialogSettingsIO(this, connectionName);
    m_settingsIO->setObjectName(QStringLiteral("settingsIO"));
    layout->addWidget(m_settingsIO);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->setObjectName(QStringLiteral("buttons"));
    connect(buttons, &QDialogButtonBox::accepted, this, &SelectionPatternDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &SelectionPatternDialog::reject);
    layout->addWidget(buttons);
}

void SelectionPatternDialog::start()
{
    m_settingsIO->start();
    reselect();
}

SelectionPatternSettings SelectionPatternDialog::settings() const
{
    SelectionPatternSettings s;
    s.startIndex = m_start->value();
    s.endIndex = m_end->value();
    s.fullPalette = m_fullPalette->isChecked();
    s.setNumber = m_set->value();
    s.skipNumber = m_skip->value();
    return s;
}

QString SelectionPatternDialog::dialogSettings() const
{
    return SettingsText::formatLines(settings().toPairs());
}

QString SelectionPatternDialog::settingsText() const
{
    return SettingsText::format(dialogName(), dialogSettings());
}

void SelectionPatternDialog::applySettings(const SettingsText::Pairs &pairs)
{
    m_applying = true;
    try {
        const auto s = SelectionPatternSettings::fromPairs(pairs, settings());
        m_start->setValue(s.startIndex);
        m_end->setValue(s.endIndex);
        m_fullPalette->setChecked(s.fullPalette);
        m_set->setValue(s.setNumber);
        m_skip->setValue(s.skipNumber);
    } catch (const DescribedException &e) {
        QMessageBox::warning(this, e.title(), e.message());
    }
    m_applying = false;
    reselect();
}

void SelectionPatternDialog::controlChanged()
{
    // The controls announce their first values while the dialog is still being built.
    if (m_applying || !m_settingsIO)
        return;
    m_settingsIO->markModified();
    reselect();
}

void SelectionPatternDialog::reselect()
{
    // Cheap even for the largest palette: a set of at most 65536 indexes.
    std::set<int> selection = SelectionPattern::select(m_paletteSize, settings());
    if (m_announced && selection == m_result)
        return;
    m_result = std::move(selection);
    m_announced = true;
    emit selectionChanged(m_result);
}

void SelectionPatternDialog::accept()
{
    m_settingsIO->recordLastUsed();
    QDialog::accept();
}
