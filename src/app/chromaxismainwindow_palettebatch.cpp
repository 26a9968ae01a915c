// "Batch convert palettes..." of the Palette menu: the dialog names the files, the format and the
// folder; PaletteBatchConvert of the core converts them while a progress dialog shows how far it
// is and lets the user stop; the failures come in one report at the end. The document is not
// touched.
#include "chromaxismainwindow.h"

#include "conversion/palettebatchconvert.h"
#include "dialogs/palettebatchconvertdialog.h"

#include <QMessageBox>
#include <QProgressDialog>
#include <QStatusBar>

#include <optional>

void ChromaxisMainWindow::paletteBatchConvert()
{
    PaletteBatchConvertDialog dialog(this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const QString title = tr("Batch convert palettes");
    QFileInfoList files;
    for (const QString &path : dialog.files())
        files << QFileInfo(path);
    std::optional<PaletteBatchConvert> batch;
    if (!run([&] { batch.emplace(dialog.folder(), dialog.target()); }))
        return;
    const int replaced = batch->existingTargets(files);
    if (replaced > 0 &&
        QMessageBox::question(
            this, title,
            tr("%n file(s) in the destination folder will be replaced.\nDo you want to continue?", nullptr,
               replaced),
            QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes)
        return;

    QProgressDialog progress(tr("Converting palettes..."), tr("Cancel"), 0, int(files.size()), this);
    progress.setObjectName(QStringLiteral("paletteBatchProgress"));
    progress.setWindowTitle(title);
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(400);
    PaletteBatchConvert::Report report;
    const bool ran = run([&] {
        report = batch->run(files, [&](int index, int count, const QString &name) {
            progress.setLabelText(tr("Converting %1 (%2 of %3)...").arg(name).arg(index + 1).arg(count));
            progress.setValue(index);
            return !progress.wasCanceled();
        });
    });
    progress.setValue(progress.maximum());
    if (!ran)
        return;
    if (report.complete())
        statusBar()->showMessage(
            tr("%n palette(s) written to %1", nullptr, report.written).arg(dialog.folder()), 5000);
    else
        QMessageBox::warning(this, title, report.text(dialog.folder()));
}
