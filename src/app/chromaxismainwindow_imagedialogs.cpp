// The main window's image conversions: the fast conversions, "Convert...", "Quantisize..." and
// "Batch apply palette...". The engines of the core compute every image; the window asks for the
// settings, installs the result as one history step and records the macro step.
#include "chromaxismainwindow.h"

#include "palette/describedexception.h"
#include "storage/documentimageio.h"
#include "conversion/fastconversions.h"
#include "conversion/imageconverter.h"
#include "img_manip/imageconvertdialog.h"
#include "img_manip/imageconvertsettingswidget.h"
#include "img_manip/imagequantisizedialog.h"

#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QMessageBox>
#include <QProgressDialog>
#include <QStatusBar>

namespace {

// The image and the palette it is shown with change together, as one step to undo. The palette
// goes first so that only the new image is rendered through it.
void installConversion(ChromaxisDocument &document, const DocumentImage &image, const Palette<uint> &palette)
{
    document.beginGroup();
    if (palette != document.palette())
        document.setPalette(palette);
    document.setImage(image);
    document.endGroup();
}

void reportMissing(QWidget *parent, const QStringList &missing)
{
    if (missing.isEmpty())
        return;
    QMessageBox::warning(
        parent, ChromaxisMainWindow::tr("Missing palettes"),
        ChromaxisMainWindow::tr("These palettes could not be found:\n%1\nThe grayscale palette "
                                "was used instead.")
            .arg(missing.join('\n')));
}

// The image mode a conversion that keeps the palette leads to; 0 for the others, which always
// convert.
int targetMode(const QString &step)
{
    if (step == QLatin1String("image_convert_indexed8bit"))
        return DocumentImage::Indexed8;
    if (step == QLatin1String("image_convert_indexed32bitint"))
        return DocumentImage::Indexed32;
    if (step == QLatin1String("image_convert_real"))
        return DocumentImage::Continuous;
    return 0;
}

// The files of folder that look like images, by name.
QFileInfoList imageFiles(const QString &folder)
{
    QStringList patterns{QStringLiteral("*.npy"), QStringLiteral("*.npz")};
    for (const QByteArray &format : QImageReader::supportedImageFormats())
        patterns << QStringLiteral("*.") + QString::fromLatin1(format);
    patterns.removeDuplicates();
    return QDir(folder).entryInfoList(patterns, QDir::Files, QDir::Name);
}

// One line of the batch report; messages span lines in boxes, a report line does not.
QString failureLine(const QFileInfo &file, const QString &message)
{
    return QStringLiteral("%1: %2").arg(file.fileName(), QString(message).replace('\n', ' '));
}

} // namespace

// ---- Fast conversions ----------------------------------------------------------------------------

void ChromaxisMainWindow::imageFastConvert(const QString &step)
{
    if (!m_document.hasImage())
        return;
    const int target = targetMode(step);
    if (target != 0 && m_document.imageMode() == target) {
        statusBar()->showMessage(
            tr("The image is already %1").arg(ChromaxisDocument::modeText(target, false)), 3000);
        return;
    }
    FastConversions::Result result;
    try {
        // Until the palette changes for the first time there is no earlier one; the palette shown
        // so far is the last one the user saw.
        const Palette<uint> &last =
            m_document.lastPalette().isEmpty() ? m_document.palette() : m_document.lastPalette();
        result = FastConversions::apply(step, m_document.image(), m_document.palette(), last);
    } catch (const DescribedException &e) {
        QMessageBox::warning(this, e.title(), e.message());
        return;
    }
    installConversion(m_document, result.image, result.palette);
    recordStep(step);
}

void ChromaxisMainWindow::imageModeGrayscale()
{
    imageFastConvert(QStringLiteral("image_convert_grayscale"));
}

void ChromaxisMainWindow::imageModeExtendedGrayscale()
{
    imageFastConvert(QStringLiteral("image_convert_extended_grayscale"));
}

void ChromaxisMainWindow::imageModeContinuousGrayscale()
{
    imageFastConvert(QStringLiteral("image_convert_continuous_grayscale"));
}

void ChromaxisMainWindow::imageModeIndexedLastPalette()
{
    imageFastConvert(QStringLiteral("image_convert_indexed8bit_lastpalette"));
}

void ChromaxisMainWindow::imageModeContinuousLastPalette()
{
    imageFastConvert(QStringLiteral("image_convert_continuous_lastpalette"));
}

void ChromaxisMainWindow::imageModeIndexed8bit()
{
    imageFastConvert(QStringLiteral("image_convert_indexed8bit"));
}

void ChromaxisMainWindow::imageModeIndexed32bitInt()
{
    imageFastConvert(QStringLiteral("image_convert_indexed32bitint"));
}

void ChromaxisMainWindow::imageModeContinuous()
{
    imageFastConvert(QStringLiteral("image_convert_real"));
}

// ---- Conversion dialogs --------------------------------------------------------------------------

// Position 2 of the palette lists is the current palette: the macro player hands the current
// palette to a replayed step, and the dialog must mean what the replay does.
void ChromaxisMainWindow::imageModeConvert()
{
    if (!m_document.hasImage())
        return;
    ImageConvertDialog dialog(ImageConvertDialog::ConvertImage, m_document.palette(), false,
                              m_builtinPalettes, m_presets.connectionName(), this);
    dialog.setImage(m_document.image(), m_document.palette());
    dialog.start();
    if (dialog.exec() != QDialog::Accepted)
        return;
    installConversion(m_document, dialog.resultImage(), dialog.resultPalette());
    recordStep(QStringLiteral("image_convert"), dialog.settingsText());
    reportMissing(this, dialog.missingPalettes());
}

void ChromaxisMainWindow::imageQuantisize()
{
    if (!m_document.hasImage())
        return;
    ImageQuantisizeDialog dialog(m_document.image(), m_document.palette(), m_document.palette(), false,
                                 m_builtinPalettes, m_presets.connectionName(), m_maximumPaletteSize, this);
    dialog.start();
    if (dialog.exec() != QDialog::Accepted)
        return;
    installConversion(m_document, dialog.resultImage(), dialog.resultPalette());
    recordStep(QStringLiteral("image_quantisize"), dialog.settingsText());
    reportMissing(this, dialog.missingPalettes());
}

// ---- Batch application ---------------------------------------------------------------------------

// Every image of a folder is converted by brightness with the conversion settings, the current
// palette being the one the command applies, and written to the destination folder with the
// chosen extension. Failures do not stop the run; they are reported together at its end.
void ChromaxisMainWindow::imageBatchApply()
{
    ImageConvertDialog dialog(ImageConvertDialog::BatchApply, m_document.palette(), false, m_builtinPalettes,
                              m_presets.connectionName(), this);
    dialog.start();
    // The command applies the current palette; the other sources stay one choice away.
    ImageConvertSettings start = dialog.settings();
    start.palette = 2;
    dialog.settingsWidget()->setSettings(start);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const ImageConvertSettings settings = dialog.settings();
    const QString title = tr("Batch apply palette");

    const QDir destination(settings.folder);
    if (!QDir().mkpath(settings.folder)) {
        QMessageBox::warning(this, title,
                             tr("Could not create the destination folder '%1'.").arg(settings.folder));
        return;
    }
    const QFileInfoList files = imageFiles(dialog.sourceFolder());
    if (files.isEmpty()) {
        QMessageBox::information(this, title, tr("There are no images in '%1'.").arg(dialog.sourceFolder()));
        return;
    }
    QStringList targets;
    int replaced = 0;
    for (const QFileInfo &file : files) {
        targets << destination.absoluteFilePath(file.completeBaseName() + settings.extension);
        if (QFileInfo::exists(targets.last()))
            ++replaced;
    }
    if (replaced > 0 &&
        QMessageBox::question(
            this, title,
            tr("%n file(s) in the destination folder will be replaced.\nDo you want to continue?", nullptr,
               replaced),
            QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes)
        return;

    ImageConverter converter(m_builtinPalettes);
    settings.configure(converter, m_document.palette());
    QProgressDialog progress(tr("Applying the palette..."), tr("Cancel"), 0, 100 * files.size(), this);
    progress.setObjectName(QStringLiteral("batchProgress"));
    progress.setWindowTitle(title);
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(400);
    int current = 0;
    connect(&converter, &ImageConversionEngine::progressChanged, &progress,
            [&progress, &current](int, int percent) {
                progress.setValue(100 * current + qBound(0, percent, 99));
            });
    connect(&progress, &QProgressDialog::canceled, &converter, [&converter]() { converter.cancel(); });

    QStringList failures;
    int written = 0;
    bool cancelled = false;
    for (current = 0; current < files.size() && !cancelled; ++current) {
        const QFileInfo &file = files[current];
        progress.setLabelText(tr("Applying the palette to %1 (%2 of %3)...")
                                  .arg(file.fileName())
                                  .arg(current + 1)
                                  .arg(files.size()));
        progress.setValue(100 * current);
        if (progress.wasCanceled()) {
            cancelled = true;
            break;
        }
        // Never let a result take the place of the image it came from.
        if (QFileInfo(targets[current]).absoluteFilePath() == file.absoluteFilePath()) {
            failures << failureLine(file, tr("The result would replace the image itself."));
            continue;
        }
        try {
            const DocumentImage image = DocumentImageIO::load(file.absoluteFilePath());
            // A file's indexed picture shows its own colour table; cells are shown through the palette.
            const Palette<uint> shownWith =
                image.mode() == DocumentImage::Indexed8 ? Palette<uint>() : m_document.palette();
            DocumentImage result = converter.convert(image, shownWith);
            if (result.isNull()) {
                cancelled = converter.wasCancelled();
                if (!cancelled)
                    failures << failureLine(file, tr("The image is empty."));
                continue;
            }
            result.render(converter.destinationPalette());
            DocumentImageIO::save(targets[current], result);
            ++written;
        } catch (const DescribedException &e) {
            failures << failureLine(file, e.message());
        }
    }
    progress.setValue(progress.maximum());

    if (failures.isEmpty() && !cancelled && converter.missingPalettes().isEmpty()) {
        statusBar()->showMessage(tr("%n image(s) written to %1", nullptr, written).arg(settings.folder),
                                 5000);
        return;
    }
    QString report =
        tr("%1 of %2 images were written to %3.").arg(written).arg(files.size()).arg(settings.folder);
    if (cancelled)
        report += QLatin1Char('\n') + tr("The run was cancelled.");
    if (!failures.isEmpty())
        report +=
            QStringLiteral("\n\n") + tr("These images failed:") + QLatin1Char('\n') + failures.join('\n');
    if (!converter.missingPalettes().isEmpty())
        report += QStringLiteral("\n\n") +
                  tr("These palettes could not be found; the grayscale palette was used:") +
                  QLatin1Char('\n') + converter.missingPalettes().join('\n');
    QMessageBox::warning(this, title, report);
}
