#include "imageconvertdialog.h"

#include "conversion/imageconverter.h"
#include "imageconvertsettingswidget.h"

#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QSettings>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
const char *const sourceFolderKey = "batch_apply_source_dir";
} // namespace

ImageConvertDialog::ImageConvertDialog(Purpose purpose, const Palette<uint> &given, bool lastPalette,
                                       const PaletteDatabase *database, const QString &connectionName,
                                       QWidget *parent)
    : ImageConversionDialog(connectionName, parent), m_purpose(purpose), m_given(given), m_database(database)
{
    setWindowTitle(purpose == BatchApply ? tr("Batch apply palette") : tr("Convert image"));
    auto *controls = new QWidget;
    auto *layout = new QVBoxLayout(controls);
    layout->setContentsMargins(0, 0, 0, 0);
    if (purpose == BatchApply) {
        m_sourceFolder = new QLineEdit(QSettings().value(sourceFolderKey).toString());
        m_sourceFolder->setObjectName(QStringLiteral("source_folder"));
        auto *choose = new QToolButton;
        choose->setObjectName(QStringLiteral("chooseSourceFolder"));
        choose->setText(tr("..."));
        choose->setToolTip(tr("Choose the folder of images"));
        connect(choose, &QToolButton::clicked, this, [this]() {
            const QString folder =
                QFileDialog::getExistingDirectory(this, tr("Folder of images"), m_sourceFolder->text());
            if (!folder.isEmpty())
                m_sourceFolder->setText(folder);
        });
        auto *row = new QHBoxLayout;
        row->addWidget(m_sourceFolder, 1);
        row->addWidget(choose);
        auto *form = new QFormLayout;
        form->addRow(tr("Source folder:"), row);
        layout->addLayout(form);
    }
    m_widget = new ImageConvertSettingsWidget(lastPalette, database);
    m_widget->setObjectName(QStringLiteral("settingsWidget"));
    m_widget->setBatchMode(purpose == BatchApply);
    connect(m_widget, &ImageConvertSettingsWidget::changed, this, &ImageConvertDialog::controlChanged);
    layout->addWidget(m_widget);
    setControls(controls);
    resize(460, sizeHint().height());
}

void ImageConvertDialog::setImage(const DocumentImage &image, const Palette<uint> &shownWith)
{
    m_image = image;
    m_shownWith = shownWith;
}

ImageConvertSettings ImageConvertDialog::settings() const
{
    return m_widget->settings();
}

QString ImageConvertDialog::sourceFolder() const
{
    return m_sourceFolder ? m_sourceFolder->text() : QString();
}

void ImageConvertDialog::setSourceFolder(const QString &folder)
{
    if (m_sourceFolder)
        m_sourceFolder->setText(folder);
}

QString ImageConvertDialog::dialogSettings() const
{
    // The destination belongs to the settings only where it means something.
    return SettingsText::formatLines(settings().toPairs(m_purpose == BatchApply));
}

QString ImageConvertDialog::settingsText() const
{
    return SettingsText::format(dialogName(), dialogSettings());
}

void ImageConvertDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    m_widget->setSettings(ImageConvertSettings::fromPairs(pairs, settings()));
}

bool ImageConvertDialog::run()
{
    if (m_purpose == BatchApply) {
        const QString source = sourceFolder();
        if (source.isEmpty() || !QDir(source).exists()) {
            QMessageBox::warning(
                this, windowTitle(),
                tr("The folder of images '%1' does not exist.\nPlease choose one.").arg(source));
            return false;
        }
        if (settings().folder.trimmed().isEmpty()) {
            QMessageBox::warning(this, windowTitle(), tr("Please choose a destination folder."));
            return false;
        }
        QSettings().setValue(sourceFolderKey, source);
        return true;
    }
    ImageConverter converter(m_database);
    settings().configure(converter, m_given);
    return runEngine(converter, [&]() { return converter.convert(m_image, m_shownWith); });
}
