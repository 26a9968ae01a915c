// The Image menu: the fast conversions, "Convert...", "Quantisize...", "Interpolate colors", the
// transforms and "Batch apply palette...". The engines of the core compute every image and the document
// commands install it as one history step with its macro step; the window asks for settings
// and shows progress and reports.
#include "chromaxismainwindow.h"

#include "conversion/batchapply.h"
#include "img_manip/imageconvertdialog.h"
#include "img_manip/imageconvertsettingswidget.h"
#include "img_manip/imagequantisizedialog.h"
#include "palette/describedexception.h"

#include <QAction>
#include <QMessageBox>
#include <QProgressDialog>
#include <QSignalBlocker>
#include <QStatusBar>

namespace {

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

} // namespace

// ---- Fast conversions ----------------------------------------------------------------------------

void ChromaxisMainWindow::imageFastConvert(const QString &step)
{
    if (!m_document.hasImage())
        return;
    if (m_commands.fastConversionChangesNothing(step)) {
        statusBar()->showMessage(
            tr("The image is already %1").arg(ChromaxisDocument::modeText(m_document.imageMode(), false)), 3000);
        return;
    }
    run([&] { m_commands.fastConvert(step); });
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

// ---- Transforms ----------------------------------------------------------------------------------

void ChromaxisMainWindow::imageTransform(const QString &step)
{
    if (!m_document.hasImage())
        return;
    run([&] { m_commands.transformImage(step); });
}

void ChromaxisMainWindow::imageMirrorHorizontally()
{
    imageTransform(QStringLiteral("image_mirror_h"));
}

void ChromaxisMainWindow::imageMirrorVertically()
{
    imageTransform(QStringLiteral("image_mirror_v"));
}

void ChromaxisMainWindow::imageRotateCW()
{
    imageTransform(QStringLiteral("image_rotate_cw"));
}

void ChromaxisMainWindow::imageRotateCCW()
{
    imageTransform(QStringLiteral("image_rotate_ccw"));
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
    m_commands.installConversion(dialog.resultImage(), dialog.resultPalette(), QStringLiteral("image_convert"),
                                 dialog.settingsText());
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
    m_commands.installConversion(dialog.resultImage(), dialog.resultPalette(), QStringLiteral("image_quantisize"),
                                 dialog.settingsText());
    reportMissing(this, dialog.missingPalettes());
}

// ---- Batch application ---------------------------------------------------------------------------

// Every image of a folder is converted with the conversion settings, the current palette being
// the one the command applies, and written to the destination folder with the chosen extension.
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
    const BatchApply batch(settings, m_document.palette(), m_builtinPalettes);
    const QFileInfoList files = BatchApply::imageFiles(dialog.sourceFolder());
    if (files.isEmpty()) {
        QMessageBox::information(this, title, tr("There are no images in '%1'.").arg(dialog.sourceFolder()));
        return;
    }
    const int replaced = batch.existingTargets(files);
    if (replaced > 0 &&
        QMessageBox::question(
            this, title,
            tr("%n file(s) in the destination folder will be replaced.\nDo you want to continue?", nullptr,
               replaced),
            QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes)
        return;

    QProgressDialog progress(tr("Applying the palette..."), tr("Cancel"), 0, 100 * int(files.size()), this);
    progress.setObjectName(QStringLiteral("batchProgress"));
    progress.setWindowTitle(title);
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(400);
    BatchApply::Report report;
    const bool ran = run([&] {
        report = batch.run(files, [&](int index, int count, const QString &name, int percent) {
            if (percent == 0)
                progress.setLabelText(
                    tr("Applying the palette to %1 (%2 of %3)...").arg(name).arg(index + 1).arg(count));
            progress.setValue(100 * index + percent);
            return !progress.wasCanceled();
        });
    });
    progress.setValue(progress.maximum());
    if (!ran)
        return;
    if (report.complete())
        statusBar()->showMessage(tr("%n image(s) written to %1", nullptr, report.written).arg(settings.folder), 5000);
    else
        QMessageBox::warning(this, title, report.text(settings.folder));
}

// ---- Interpolation -------------------------------------------------------------------------------

void ChromaxisMainWindow::imageInterpolateEntries()
{
    QAction *a = action("imageInterpolateEntries");
    if (!m_document.hasImage())
        return;
    if (a->isChecked()) {
        const auto answer = QMessageBox::question(
            this, tr("Performance warning"),
            tr("Please note that interpolating indices slows \ndown image processing.\nApplication of new "
               "palettes will be previewed \nwith a delay."),
            QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok);
        if (answer != QMessageBox::Ok) {
            const QSignalBlocker block(a);
            a->setChecked(false);
            return;
        }
    }
    m_commands.setInterpolate(a->isChecked());
}
