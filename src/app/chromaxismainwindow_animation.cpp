// "Export animation..." of the Image menu: the file, then the range and rate, then the frames with
// a progress dialog that can stop them. AnimationExport of the core renders and writes the movie,
// as it does for the command line; the window only asks and reports.
#include "chromaxismainwindow.h"

#include "dialogs/exportanimationdialog.h"
#include "export/animationexport.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QProgressDialog>
#include <QSettings>

namespace {

// A name typed without an extension takes the one of the chosen filter.
QString withSuffixOf(const QString &path, const QString &filter)
{
    if (!QFileInfo(path).suffix().isEmpty())
        return path;
    const int star = filter.indexOf("*.");
    if (star < 0)
        return path;
    return path + filter.mid(star + 1, filter.indexOf(')', star) - star - 1);
}

} // namespace

void ChromaxisMainWindow::imageExportAnimation()
{
    const DocumentImage &image = m_document.image();
    const Palette<uint> &palette = m_document.palette();
    if (!run([&] { AnimationExport::checkImage(image); }))
        return;

    QString filters = tr("AVI movies (*.avi)");
    if (image.mode() == DocumentImage::Indexed8)
        filters += tr(";;GIF files (*.gif)");
    // Beyond the classic pair, what is shared on the web today.
    filters += tr(";;MPEG-4 movies (*.mp4);;WebM movies (*.webm)");
    QSettings s;
    QString filter = s.value(QStringLiteral("default_animation_export_type")).toString();
    QString path = QFileDialog::getSaveFileName(this, tr("Export animation as"),
                                                dialogDirectory("default_animation_export_dir"), filters, &filter);
    if (path.isEmpty())
        return;
    path = withSuffixOf(path, filter);

    ExportAnimationDialog dialog(palette.size(), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const AnimationExport::Settings settings{dialog.startIndex(), dialog.endIndex(), dialog.framesPerSecond()};
    if (!run([&] { AnimationExport::check(path, image, palette, settings); }))
        return;
    const int frames = settings.end - settings.start;

    QProgressDialog progress(tr("Progress..."), tr("Cancel"), 0, frames, this);
    progress.setObjectName(QStringLiteral("animationProgress"));
    progress.setWindowTitle(tr("Exporting Animation..."));
    progress.setWindowFlags(progress.windowFlags() & ~Qt::WindowContextHelpButtonHint);
    progress.setWindowModality(Qt::WindowModal);
    progress.setFixedWidth(400);
    progress.setMinimumDuration(0);
    progress.show();
    progress.setAutoReset(false);
    progress.setAutoClose(false);
    AnimationExport::Result result;
    const bool ran = run([&] {
        result = AnimationExport::write(path, image, palette, settings, [&](int frame) {
            progress.setValue(frame);
            return !progress.wasCanceled();
        });
    });
    if (!ran)
        return;
    switch (result.outcome) {
    case AnimationExport::Outcome::Cancelled:
        QMessageBox::critical(this, tr("Animation export aborted."),
                              tr("Animation export aborted.\nThe file may be corrupt."));
        break;
    case AnimationExport::Outcome::Failed:
        QMessageBox::critical(this, tr("Animation export error"), result.error);
        break;
    case AnimationExport::Outcome::Written:
        rememberDirectory("default_animation_export_dir", path);
        s.setValue(QStringLiteral("default_animation_export_type"), filter);
        progress.setValue(frames);
        break;
    }
}
