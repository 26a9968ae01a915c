// The File menu: projects, images and palettes to open, save and close, the text export, the
// recent files and files dropped on the window. Each slot asks for what it needs and calls the
// document commands; errors are shown and leave the document as it was.
#include "chromaxismainwindow.h"

#include "dialogs/palettetextencoderdialog.h"
#include "dialogs/rgbimagedialog.h"
#include "formats/paletteformats.h"
#include "palette/describedexception.h"
#include "storage/documentimageio.h"

#include <QAction>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QSettings>
#include <QStatusBar>
#include <QUrl>

namespace {

// A name typed without an extension takes the one of the chosen filter ("PNG images (*.png)"),
// as users of other editors expect.
QString withFilterSuffix(const QString &path, const QString &filter)
{
    if (!QFileInfo(path).suffix().isEmpty())
        return path;
    const int star = filter.indexOf("*.");
    if (star < 0)
        return path;
    return path + filter.mid(star + 1, filter.indexOf(')', star) - star - 1);
}

} // namespace

bool ChromaxisMainWindow::maybeSaveImage()
{
    if (!m_document.hasUnsavedImage())
        return true;
    const auto answer = QMessageBox::warning(
        this, QStringLiteral("Chromaxis"), tr("The image has been modified.\nDo you want to save your changes?"),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::NoButton);
    if (answer == QMessageBox::Save)
        return saveImage();
    if (answer == QMessageBox::Cancel)
        return false;
    m_document.setImageModified(false);
    return true;
}

bool ChromaxisMainWindow::maybeSavePalette()
{
    if (!m_document.hasUnsavedPalette())
        return true;
    const auto answer = QMessageBox::warning(
        this, QStringLiteral("Chromaxis"), tr("The palette has been modified.\nDo you want to save your changes?"),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::NoButton);
    if (answer == QMessageBox::Save)
        return savePalette();
    if (answer == QMessageBox::Cancel)
        return false;
    m_document.setPaletteModified(false);
    return true;
}

// ---- Projects ------------------------------------------------------------------------------------

void ChromaxisMainWindow::newProject()
{
    if (!maybeSaveImage() || !maybeSavePalette())
        return;
    m_commands.newProject();
    setScale(1.0);
    updateHistoryActions();
}

bool ChromaxisMainWindow::loadProjectFile(const QString &path)
{
    try {
        m_commands.openProject(path);
    } catch (const DescribedException &e) {
        QMessageBox::critical(this, tr("Could not load project"), e.message(), QMessageBox::Ok);
        return false;
    }
    setScale(1.0);
    updateHistoryActions();
    rememberRecentFile(path);
    statusBar()->showMessage(tr("Project %1 loaded").arg(QFileInfo(path).fileName()), 3000);
    return true;
}

void ChromaxisMainWindow::openProject()
{
    if (!maybeSaveImage() || !maybeSavePalette())
        return;
    const QString path = QFileDialog::getOpenFileName(this, tr("Open project"), dialogDirectory("default_project_dir"),
                                                      tr("Chromaxis project files (*.cxw)"));
    if (path.isEmpty())
        return;
    rememberDirectory("default_project_dir", path);
    loadProjectFile(path);
}

bool ChromaxisMainWindow::saveProjectFile(const QString &path)
{
    if (!run([&] { m_commands.saveProject(path); }))
        return false;
    rememberRecentFile(path);
    statusBar()->showMessage(tr("Project saved"), 2000);
    return true;
}

bool ChromaxisMainWindow::saveProject()
{
    if (m_document.projectFileName().isEmpty())
        return saveProjectAs();
    return saveProjectFile(m_document.projectFileName());
}

bool ChromaxisMainWindow::saveProjectAs()
{
    // The dialog shares its title with the palette's save dialog; users know it by that name.
    QFileDialog dialog(this, tr("Save palette as"), dialogDirectory("default_project_dir"),
                       tr("Chromaxis project files (*.cxw)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix("cxw");
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return false;
    const QString path = dialog.selectedFiles().first();
    rememberDirectory("default_project_dir", path);
    return saveProjectFile(path);
}

// ---- Images --------------------------------------------------------------------------------------

bool ChromaxisMainWindow::loadImageFile(const QString &path)
{
    int pending = DocumentCommands::RgbKeep;
    if (!run([&] { pending = m_commands.loadImage(path, m_rgbOnLoadAction); }))
        return false;
    setScale(1.0);
    rememberRecentFile(path);
    applyRgbOnLoadAction(pending);
    return true;
}

void ChromaxisMainWindow::openImage()
{
    if (!maybeSaveImage())
        return;
    QSettings s;
    QString filter = s.value("default_image_load_type").toString();
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Open image"), dialogDirectory("default_image_dir"),
                                     DocumentImageIO::openFilters().join(";;"), &filter);
    if (path.isEmpty())
        return;
    rememberDirectory("default_image_dir", path);
    s.setValue("default_image_load_type", filter);
    loadImageFile(path);
}

bool ChromaxisMainWindow::saveImageFile(const QString &path)
{
    if (!run([&] { m_commands.saveImage(path); }))
        return false;
    updateProperties();
    rememberRecentFile(path);
    statusBar()->showMessage(tr("Image saved"), 2000);
    return true;
}

bool ChromaxisMainWindow::saveImage()
{
    if (!m_document.hasImage())
        return false;
    if (m_document.imageFileName().isEmpty())
        return saveImageAs();
    return saveImageFile(m_document.imageFileName());
}

bool ChromaxisMainWindow::saveImageAs()
{
    if (!m_document.hasImage())
        return false;
    QSettings s;
    QString filter = s.value("default_image_save_type").toString();
    QString path = QFileDialog::getSaveFileName(
        this, tr("Save image as"), dialogDirectory("default_image_dir"),
        DocumentImageIO::saveFilters(m_document.imageMode()).join(";;"), &filter);
    if (path.isEmpty())
        return false;
    path = withFilterSuffix(path, filter);
    rememberDirectory("default_image_dir", path);
    s.setValue("default_image_save_type", filter);
    return saveImageFile(path);
}

void ChromaxisMainWindow::closeImage()
{
    if (maybeSaveImage())
        m_commands.closeImage();
}

// The RGB-on-load actions that need the user: the question and the conversion dialog.
void ChromaxisMainWindow::applyRgbOnLoadAction(int value)
{
    if (value == DocumentCommands::RgbAsk) {
        RGBImageDialog dialog(this);
        if (dialog.exec() != QDialog::Accepted)
            return;
        value = dialog.chosenAction();
        if (dialog.remember())
            setRgbOnLoadAction(value);
    }
    if (value == DocumentCommands::RgbConvertDialog)
        imageModeConvert();
    else if (!DocumentCommands::rgbOnLoadConversion(value).isEmpty())
        imageFastConvert(DocumentCommands::rgbOnLoadConversion(value));
}

// ---- Palettes ------------------------------------------------------------------------------------

bool ChromaxisMainWindow::loadPaletteFile(const QString &path)
{
    if (m_commands.loadingPaletteDiscardsImage() && formatFromWord(QFileInfo(path).suffix()) != FormatUnknown) {
        const auto answer =
            QMessageBox::warning(this, tr("RGB format warning"),
                                 tr("The current image is an RGB image.<br/>Applying a new palette is impossible "
                                    "without prior conversion.<br/>When loading a new palette, the image will be "
                                    "discarded."),
                                 QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Cancel);
        if (answer != QMessageBox::Ok)
            return false;
    }
    if (!run([&] { m_commands.loadPalette(path); }))
        return false;
    rememberRecentFile(path);
    return true;
}

void ChromaxisMainWindow::openPalette()
{
    if (!maybeSavePalette())
        return;
    QSettings s;
    QString filter = s.value("default_palette_load_type").toString();
    const QString path = QFileDialog::getOpenFileName(this, tr("Open palette"), dialogDirectory("default_palette_dir"),
                                                      paletteOpenFilters().join(";;"), &filter);
    if (path.isEmpty())
        return;
    rememberDirectory("default_palette_dir", path);
    s.setValue("default_palette_load_type", filter);
    loadPaletteFile(path);
}

bool ChromaxisMainWindow::savePaletteFile(const QString &path)
{
    if (!run([&] { m_commands.savePalette(path); }))
        return false;
    updateProperties();
    rememberRecentFile(path);
    statusBar()->showMessage(tr("Palette saved"), 2000);
    return true;
}

bool ChromaxisMainWindow::savePalette()
{
    const QString current = m_document.paletteFileName();
    const int format = current.isEmpty() ? FormatUnknown : formatFromWord(QFileInfo(current).suffix());
    // Formats that cannot be read back (HTML, CSS, JavaScript) are exports, not a palette's home.
    if (format == FormatUnknown || format == FormatHtml || format == FormatCss || format == FormatJavaScript)
        return savePaletteAs();
    return savePaletteFile(current);
}

bool ChromaxisMainWindow::savePaletteAs()
{
    QSettings s;
    QString filter = s.value("default_palette_save_type").toString();
    const QStringList filters = {tr("GIMP palettes (*.gpl)"),       tr("Adobe palettes (*.aco)"),
                                 tr("Fractint palettes (*.map)"),    tr("Microsoft palettes (*.pal)"),
                                 tr("GIF images (*.gif)"),           tr("JASC palettes (*.jasc)"),
                                 tr("Adobe swatch exchange (*.ase)"), tr("Adobe color tables (*.act)"),
                                 tr("Hex text (*.hextxt)"),          tr("Hex text, one line (*.hex)"),
                                 tr("HTML table (*.html)"),          tr("CSS (*.css)"),
                                 tr("JavaScript (*.js)")};
    QString path = QFileDialog::getSaveFileName(this, tr("Save palette as"), dialogDirectory("default_palette_dir"),
                                                filters.join(";;"), &filter);
    if (path.isEmpty())
        return false;
    path = withFilterSuffix(path, filter);
    rememberDirectory("default_palette_dir", path);
    s.setValue("default_palette_save_type", filter);
    return savePaletteFile(path);
}

void ChromaxisMainWindow::exportPaletteToText()
{
    PaletteTextEncoderDialog dialog(m_document.palette(), m_presets.connectionName(), this);
    dialog.start();
    if (dialog.exec() != QDialog::Accepted)
        return;
    const QString filters = tr("All text formats (") + QStringLiteral("*.html *.php *.css *.js *.txt") +
                            QStringLiteral(");;") +
                            tr("HTML files (*.html *.php);;CSS files (*.css);;Javascript files (*.js);;Text "
                               "files (*.txt)") +
                            QStringLiteral(";;") + tr("All files (* *.*)");
    const QString path = QFileDialog::getSaveFileName(this, tr("Export palette as text"),
                                                      dialogDirectory("default_palette_dir"), filters);
    if (path.isEmpty())
        return;
    rememberDirectory("default_palette_dir", path);
    if (run([&] { m_commands.exportPaletteText(path, dialog.encoderTemplate()); }))
        statusBar()->showMessage(tr("Palette exported"), 2000);
}

// ---- Files from outside --------------------------------------------------------------------------

void ChromaxisMainWindow::openFiles(const QStringList &paths)
{
    for (const QString &path : paths) {
        const QString suffix = QFileInfo(path).suffix().toLower();
        if (suffix == QLatin1String("cxw")) {
            if (maybeSaveImage() && maybeSavePalette())
                loadProjectFile(path);
        } else if (formatFromWord(suffix) != FormatUnknown && suffix != QLatin1String("gif")) {
            if (maybeSavePalette())
                loadPaletteFile(path);
        } else if (maybeSaveImage()) {
            // GIF files open as images: a palette is one "Open palette..." away.
            loadImageFile(path);
        }
    }
}

void ChromaxisMainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void ChromaxisMainWindow::dropEvent(QDropEvent *event)
{
    QStringList paths;
    for (const QUrl &url : event->mimeData()->urls())
        if (url.isLocalFile())
            paths << url.toLocalFile();
    if (paths.isEmpty())
        return;
    event->acceptProposedAction();
    openFiles(paths);
}

void ChromaxisMainWindow::rememberRecentFile(const QString &path)
{
    QSettings s;
    QStringList files = s.value("recent_files").toStringList();
    const QString absolute = QFileInfo(path).absoluteFilePath();
    files.removeAll(absolute);
    files.prepend(absolute);
    while (files.size() > maxRecentFiles)
        files.removeLast();
    s.setValue("recent_files", files);
    updateRecentFiles();
}

void ChromaxisMainWindow::updateRecentFiles()
{
    if (!m_recentMenu)
        return;
    m_recentMenu->clear();
    const QStringList files = QSettings().value("recent_files").toStringList();
    for (int i = 0; i < files.size(); ++i) {
        QAction *a = m_recentMenu->addAction(QStringLiteral("&%1 %2").arg(i + 1).arg(QFileInfo(files[i]).fileName()));
        a->setStatusTip(files[i]);
        const QString file = files[i];
        connect(a, &QAction::triggered, this, [this, file]() { openFiles({file}); });
    }
    m_recentMenu->setEnabled(!files.isEmpty());
}
