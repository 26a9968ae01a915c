#include "imagequantisizesettingswidget.h"

#include "batchdestinationwidget.h"
#include "palettesourceedit.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QSpinBox>
#include <QVBoxLayout>

ImageQuantisizeSettingsWidget::ImageQuantisizeSettingsWidget(bool lastPalette,
                                                             const PaletteDatabase *database,
                                                             int maximumColors, QWidget *parent)
    : QWidget(parent)
{
    auto makeBox = [this](const char *name, const QStringList &texts) {
        auto *box = new QComboBox;
        box->setObjectName(QString::fromLatin1(name));
        box->addItems(texts);
        connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                &ImageQuantisizeSettingsWidget::changed);
        return box;
    };
    m_palette = makeBox("palette", ImageQuantisizeSettings::paletteTexts(lastPalette));
    m_method = makeBox("method", ImageQuantisizeSettings::methodTexts());
    m_dither = makeBox("dither", ImageQuantisizeSettings::ditherTexts());
    m_format = makeBox("format", ImageQuantisizeSettings::formatTexts());
    m_colors = new QSpinBox;
    m_colors->setObjectName(QStringLiteral("colors"));
    m_colors->setRange(1, qMax(1, maximumColors));
    connect(m_colors, QOverload<int>::of(&QSpinBox::valueChanged), this,
            &ImageQuantisizeSettingsWidget::changed);
    m_dbPalette = new PaletteSourceEdit(PaletteSourceEdit::Database, database);
    m_filePalette = new PaletteSourceEdit(PaletteSourceEdit::File, database);
    connect(m_dbPalette, &PaletteSourceEdit::textChanged, this, &ImageQuantisizeSettingsWidget::changed);
    connect(m_filePalette, &PaletteSourceEdit::textChanged, this, &ImageQuantisizeSettingsWidget::changed);
    m_destination = new BatchDestinationWidget;
    m_destination->setVisible(false);
    connect(m_destination, &BatchDestinationWidget::changed, this, &ImageQuantisizeSettingsWidget::changed);

    auto *paletteGroup = new QGroupBox(tr("Destination palette"));
    auto *paletteForm = new QFormLayout(paletteGroup);
    paletteForm->addRow(m_palette);
    paletteForm->addRow(tr("Method:"), m_method);
    paletteForm->addRow(tr("Palette size:"), m_colors);
    paletteForm->addRow(tr("Palette name:"), m_dbPalette);
    paletteForm->addRow(tr("Palette file:"), m_filePalette);
    auto *ditherGroup = new QGroupBox(tr("Dithering"));
    (new QVBoxLayout(ditherGroup))->addWidget(m_dither);
    auto *formatGroup = new QGroupBox(tr("Destination format"));
    (new QVBoxLayout(formatGroup))->addWidget(m_format);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(paletteGroup);
    layout->addWidget(ditherGroup);
    layout->addWidget(formatGroup);
    layout->addWidget(m_destination);

    connect(m_palette, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &ImageQuantisizeSettingsWidget::updateEnabled);
    ImageQuantisizeSettings start;
    start.colors = qMin(start.colors, m_colors->maximum());
    setSettings(start);
}

ImageQuantisizeSettings ImageQuantisizeSettingsWidget::settings() const
{
    ImageQuantisizeSettings s;
    s.format = m_format->currentIndex();
    s.palette = m_palette->currentIndex();
    s.bwThreshold = m_bwThreshold;
    s.dbPalette = m_dbPalette->text();
    s.filePalette = m_filePalette->text();
    s.dither = m_dither->currentIndex();
    s.method = m_method->currentIndex();
    s.colors = m_colors->value();
    return s;
}

void ImageQuantisizeSettingsWidget::setSettings(const ImageQuantisizeSettings &s)
{
    m_format->setCurrentIndex(s.format);
    m_palette->setCurrentIndex(s.palette);
    m_bwThreshold = s.bwThreshold;
    m_dbPalette->setText(s.dbPalette);
    m_filePalette->setText(s.filePalette);
    m_dither->setCurrentIndex(s.dither);
    // The settings know methods the list does not offer (the command line reaches them); the list
    // keeps its choice then rather than showing an empty entry.
    if (s.method >= 0 && s.method < m_method->count())
        m_method->setCurrentIndex(s.method);
    m_colors->setValue(s.colors);
    updateEnabled();
}

void ImageQuantisizeSettingsWidget::setBatchMode(bool batch)
{
    m_batch = batch;
    m_destination->setVisible(batch);
}

void ImageQuantisizeSettingsWidget::updateEnabled()
{
    const int source = m_palette->currentIndex();
    m_method->setEnabled(source == 3);
    m_colors->setEnabled(source == 3);
    m_dbPalette->setEnabled(source == 4);
    m_filePalette->setEnabled(source == 5);
}
