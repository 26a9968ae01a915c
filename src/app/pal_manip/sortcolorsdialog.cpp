#include "sortcolorsdialog.h"

#include "document/documentimage.h"
#include "spaces/colorspace.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QStandardItemModel>

SortColorsDialog::SortColorsDialog(const Palette<uint> &palette, const std::set<int> &selection,
                                   const QString &connectionName, int imageMode, QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent), m_imageMode(imageMode)
{
    setWindowTitle(tr("Sort colors"));
    const SortSettings initial;
    m_key = new QComboBox;
    m_key->setObjectName(QStringLiteral("key"));
    for (int k = 0; k < SortSettings::KeyCount; ++k)
        m_key->addItem(QString());
    m_key->setCurrentIndex(initial.key);
    connect(m_key, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &SortColorsDialog::controlChanged);
    m_mode = makeColourSpaceBox("mode");
    m_descending = makeCheckBox(tr("Descending"), "descending");
    m_selectedOnly = makeCheckBox(tr("Selected only"), "sel_only");
    m_remap = makeCheckBox(tr("Keep the picture: the image's pixels follow their colors"), "remap");
    m_remap->setChecked(initial.remap);
    m_note = new QLabel;
    m_note->setObjectName(QStringLiteral("note"));
    m_note->setWordWrap(true);

    auto *form = new QFormLayout;
    form->addRow(tr("Sort by:"), m_key);
    form->addRow(tr("Color space:"), m_mode);
    form->addRow(m_descending);
    form->addRow(m_selectedOnly);
    form->addRow(m_remap);
    form->addRow(m_note);
    for (QComboBox *box : {m_key, m_mode})
        connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                &SortColorsDialog::updateControls);
    connect(m_remap, &QCheckBox::toggled, this, &SortColorsDialog::updateControls);
    updateControls();
    setControls(form);
    resize(440, sizeHint().height());
}

void SortColorsDialog::updateControls()
{
    // The component keys are named after the chosen space; a component it lacks is no key.
    const int mode = m_mode->currentIndex();
    const QStringList labels = componentLabels(mode);
    const int used =
        colorSpaceTable().at(size_t(qBound(0, mode, int(ColorSpaceCount) - 1))).components.size();
    auto *items = qobject_cast<QStandardItemModel *>(m_key->model());
    for (int k = 0; k < 4; ++k) {
        m_key->setItemText(k, labels[k]);
        if (items)
            items->item(k)->setEnabled(k < used);
    }
    m_key->setItemText(SortSettings::Luminance, tr("Luminance"));
    m_key->setItemText(SortSettings::HueThenLightness, tr("Hue, then lightness"));
    m_mode->setEnabled(m_key->currentIndex() < SortSettings::Luminance);

    const bool indexed = m_imageMode == DocumentImage::Indexed8 || m_imageMode == DocumentImage::Indexed32;
    m_remap->setEnabled(indexed);
    if (indexed)
        m_note->setText(m_remap->isChecked()
                            ? tr("The image's pixels move with their colors: the picture stays as it is.")
                            : tr("The image's pixels keep their indexes: the picture will show the sorted "
                                 "colors."));
    else if (m_imageMode == DocumentImage::Continuous)
        m_note->setText(
            tr("The image is continuous: its pixels are positions along the palette and cannot "
               "follow their colors. Sorting will change the picture; press OK to sort anyway, or "
               "Cancel to keep it."));
    else
        m_note->clear();
    m_note->setVisible(!m_note->text().isEmpty());
}

QString SortColorsDialog::settingsName() const
{
    return SortSettings::settingsName;
}

QStringList SortColorsDialog::presetNames() const
{
    return {tr("Luminance, dark to light"), tr("Hue, then lightness"), tr("Lab lightness, light to dark"),
            tr("HSV saturation, selected entries")};
}

SortSettings SortColorsDialog::settings() const
{
    SortSettings s;
    s.mode = m_mode->currentIndex();
    s.key = m_key->currentIndex();
    s.descending = m_descending->isChecked();
    s.selectedOnly = m_selectedOnly->isChecked();
    s.remap = m_remap->isChecked();
    return s;
}

SettingsText::Pairs SortColorsDialog::currentPairs() const
{
    return settings().toPairs();
}

void SortColorsDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    const auto s = SortSettings::fromPairs(pairs, settings());
    m_mode->setCurrentIndex(s.mode);
    m_key->setCurrentIndex(s.key);
    m_descending->setChecked(s.descending);
    m_selectedOnly->setChecked(s.selectedOnly);
    m_remap->setChecked(s.remap);
}
