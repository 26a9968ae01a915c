#include "imagequantisizedialog.h"

#include "conversion/imagequantisizer.h"
#include "imagequantisizesettingswidget.h"
#include "storage/settingsvalues.h"

#include <QSettings>

namespace {
// The settings text does not keep the quantized source's method and size, yet users expect the
// dialog to come back with them; they live beside it.
const char *const methodKey = "quantisize_method";
const char *const colorsKey = "quantisize_colors";
} // namespace

ImageQuantisizeDialog::ImageQuantisizeDialog(const DocumentImage &image, const Palette<uint> &shownWith,
                                             const Palette<uint> &given, bool lastPalette,
                                             const PaletteDatabase *database, const QString &connectionName,
                                             int maximumColors, QWidget *parent)
    : ImageConversionDialog(connectionName, parent), m_image(image), m_shownWith(shownWith), m_given(given),
      m_database(database)
{
    setWindowTitle(tr("Quantisize image"));
    m_widget = new ImageQuantisizeSettingsWidget(lastPalette, database, maximumColors);
    m_widget->setObjectName(QStringLiteral("settingsWidget"));
    ImageQuantisizeSettings s = m_widget->settings();
    const QSettings stored;
    s.method = qBound(0, stored.value(methodKey, s.method).toInt(),
                      ImageQuantisizeSettings::methodTexts().size() - 1);
    s.colors = stored.value(colorsKey, s.colors).toInt();
    m_widget->setSettings(s);
    connect(m_widget, &ImageQuantisizeSettingsWidget::changed, this, &ImageQuantisizeDialog::controlChanged);
    setControls(m_widget);
    resize(420, sizeHint().height());
}

ImageQuantisizeSettings ImageQuantisizeDialog::settings() const
{
    return m_widget->settings();
}

QString ImageQuantisizeDialog::dialogSettings() const
{
    return SettingsText::formatLines(settings().toPairs());
}

QString ImageQuantisizeDialog::settingsText() const
{
    const ImageQuantisizeSettings s = settings();
    SettingsText::Pairs pairs = s.toPairs();
    pairs.emplace_back(QStringLiteral("method"), SettingsValues::text(s.method));
    pairs.emplace_back(QStringLiteral("colors"), SettingsValues::text(s.colors));
    return SettingsText::format(dialogName(), SettingsText::formatLines(pairs));
}

void ImageQuantisizeDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    m_widget->setSettings(ImageQuantisizeSettings::fromPairs(pairs, settings()));
}

bool ImageQuantisizeDialog::run()
{
    const ImageQuantisizeSettings s = settings();
    ImageQuantisizer quantisizer(m_database);
    s.configure(quantisizer, m_given);
    const bool done = runEngine(quantisizer, [&]() {
        return quantisizer.apply(m_image, quantisizer.colorsFor(m_image, m_shownWith), m_shownWith);
    });
    if (done) {
        QSettings stored;
        stored.setValue(methodKey, s.method);
        stored.setValue(colorsKey, s.colors);
    }
    return done;
}
