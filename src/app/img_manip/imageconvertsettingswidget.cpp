#include "imageconvertsettingswidget.h"

#include "batchdestinationwidget.h"
#include "palettesourceedit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QVBoxLayout>

ImageConvertSettingsWidget::ImageConvertSettingsWidget(bool lastPalette, const PaletteDatabase *database,
                                                       QWidget *parent)
    : QWidget(parent)
{
    m_palette = new QComboBox;
    m_palette->setObjectName(QStringLiteral("palette"));
    m_palette->addItems(ImageConvertSettings::paletteTexts(lastPalette));
    m_dbPalette = new PaletteSourceEdit(PaletteSourceEdit::Database, database);
    m_filePalette = new PaletteSourceEdit(PaletteSourceEdit::File, database);
    m_mode = new QComboBox;
    m_mode->setObjectName(QStringLiteral("mode"));
    m_mode->addItems(ImageConvertSettings::modeTexts());
    m_interpolate = new QCheckBox(tr("Interpolate colors"));
    m_interpolate->setObjectName(QStringLiteral("interpolate"));
    m_destination = new BatchDestinationWidget;
    m_destination->setVisible(false);

    auto *form = new QFormLayout;
    form->addRow(tr("Destination palette:"), m_palette);
    form->addRow(tr("Palette name:"), m_dbPalette);
    form->addRow(tr("Palette file:"), m_filePalette);
    form->addRow(tr("Destination mode:"), m_mode);
    form->addRow(m_interpolate);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(form);
    layout->addWidget(m_destination);

    connect(m_palette, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &ImageConvertSettingsWidget::updateEnabled);
    for (QComboBox *box : {m_palette, m_mode})
        connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                &ImageConvertSettingsWidget::changed);
    connect(m_interpolate, &QCheckBox::toggled, this, &ImageConvertSettingsWidget::changed);
    connect(m_dbPalette, &PaletteSourceEdit::textChanged, this, &ImageConvertSettingsWidget::changed);
    connect(m_filePalette, &PaletteSourceEdit::textChanged, this, &ImageConvertSettingsWidget::changed);
    connect(m_destination, &BatchDestinationWidget::changed, this, &ImageConvertSettingsWidget::changed);
    setSettings(ImageConvertSettings());
}

ImageConvertSettings ImageConvertSettingsWidget::settings() const
{
    ImageConvertSettings s;
    s.mode = m_mode->currentIndex();
    s.palette = m_palette->currentIndex();
    s.interpolate = m_interpolate->isChecked();
    s.dbPalette = m_dbPalette->text();
    s.filePalette = m_filePalette->text();
    s.extension = m_destination->extension();
    s.folder = m_destination->folder();
    return s;
}

void ImageConvertSettingsWidget::setSettings(const ImageConvertSettings &s)
{
    m_mode->setCurrentIndex(s.mode);
    m_palette->setCurrentIndex(s.palette);
    m_interpolate->setChecked(s.interpolate);
    m_dbPalette->setText(s.dbPalette);
    m_filePalette->setText(s.filePalette);
    m_destination->setExtension(s.extension);
    m_destination->setFolder(s.folder);
    updateEnabled();
}

void ImageConvertSettingsWidget::setBatchMode(bool batch)
{
    m_batch = batch;
    m_destination->setVisible(batch);
}

void ImageConvertSettingsWidget::updateEnabled()
{
    m_dbPalette->setEnabled(m_palette->currentIndex() == 3);
    m_filePalette->setEnabled(m_palette->currentIndex() == 4);
}
