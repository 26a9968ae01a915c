// The main window's commands on files, the palette, the image and the view.
#include "chromaxismainwindow.h"

#include "palette/describedexception.h"
#include "dialogs/palettedbdialog.h"
#include "dialogs/rgbimagedialog.h"
#include "storage/documentimageio.h"
#include "document/documentproject.h"
#include "palette/standardpalettes.h"
#include "imagelabel.h"
#include "document/macroplayer.h"
#include "operations/selectionlist.h"
#include "storage/palettedatabase.h"
#include "formats/paletteformats.h"
#include "utils/qt/colorwidgets/paletteview.h"

#include <QAction>
#include <QColorDialog>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QScrollArea>
#include <QSettings>
#include <QStatusBar>
#include <QUrl>

#include <cstdlib>

namespace {

void showError(QWidget *parent, const DescribedException &e)
{
    QMessageBox::warning(parent, e.title(), e.message());
}

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

// ---- Showing the document ----------------------------------------------------------------------

void ChromaxisMainWindow::showImage()
{
    if (!m_document.hasImage()) {
        m_imageView->clear();
        m_imageView->hide();
        return;
    }
    m_imageView->setPixmap(QPixmap::fromImage(m_document.image().picture()));
    m_imageView->resize(m_document.image().picture().size() * m_scale);
    m_imageView->show();
}

void ChromaxisMainWindow::installPalette(const Palette<uint> &palette, bool modified)
{
    PaletteState state = m_document.paletteState();
    state.palette = palette;
    state.paletteModified = modified;
    m_document.setPaletteState(state);
}

void ChromaxisMainWindow::adaptPalette(const Palette<uint> &palette)
{
    m_document.previewPalette(palette);
}

void ChromaxisMainWindow::adaptPaletteOnly(const Palette<uint> &palette)
{
    // The same preview: the document shows its image through whatever palette it holds.
    m_document.previewPalette(palette);
}

void ChromaxisMainWindow::paletteViewPaletteChange()
{
    m_document.setSelection(m_paletteView->selection());
    // Some commands announce the same change twice; only a real change is a history step.
    if (m_paletteView->palette() == m_document.palette())
        return;
    m_document.setPalette(m_paletteView->palette());
}

void ChromaxisMainWindow::documentPaletteChanged()
{
    if (m_paletteView->palette() != m_document.palette())
        m_paletteView->setPalette(m_document.palette());
    showImage();
    updateProperties();
}

void ChromaxisMainWindow::documentImageChanged()
{
    showImage();
    updateActions();
    updateProperties();
    const QSignalBlocker block(action("imageInterpolateEntries"));
    action("imageInterpolateEntries")->setChecked(m_document.image().interpolate());
}

void ChromaxisMainWindow::documentSettingsChanged()
{
    const PaletteViewSettings &s = m_document.paletteViewSettings();
    m_paletteView->setFixedPaletteSize(s.fixedSize);
    m_paletteView->setMaximumPaletteSize(s.maximumSize);
    m_paletteView->setFillColor(s.fillColor);
    m_maximumPaletteSize = s.maximumSize;
    action("paletteFixSize")->setChecked(s.fixedSize);
    for (QAction *a : m_actionFamilies.value("@maxPaletteSizes"))
        a->setChecked(a->data().toInt() == s.maximumSize);
}

void ChromaxisMainWindow::documentSelectionChanged()
{
    if (m_paletteView->selection() != m_document.selection())
        m_paletteView->setSelected(m_document.selection());
}

void ChromaxisMainWindow::updateHistoryActions()
{
    action("undo")->setEnabled(m_document.history().canUndo());
    action("redo")->setEnabled(m_document.history().canRedo());
}

void ChromaxisMainWindow::paletteViewSelectionChange()
{
    m_document.setSelection(m_paletteView->selection());
}

// ---- Files ---------------------------------------------------------------------------------------

// ---- Projects ------------------------------------------------------------------------------------

void ChromaxisMainWindow::newProject()
{
    if (!maybeSaveImage() || !maybeSavePalette())
        return;
    ProjectData fresh;
    fresh.palette = grayscalePalette();
    DocumentProject::install(m_document, fresh);
    m_document.setProjectFileName(QString());
    setScale(1.0);
    updateHistoryActions();
}

bool ChromaxisMainWindow::loadProjectFile(const QString &path)
{
    ProjectData data;
    try {
        data = ProjectFile::read(path);
    } catch (const DescribedException &e) {
        QMessageBox::critical(this, tr("Could not load project"), e.message(), QMessageBox::Ok);
        return false;
    }
    DocumentProject::install(m_document, data);
    m_document.setProjectFileName(path);
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
    try {
        ProjectFile::write(path, DocumentProject::capture(m_document));
    } catch (const DescribedException &e) {
        showError(this, e);
        return false;
    }
    m_document.setProjectFileName(path);
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

// ---- Images and palettes -------------------------------------------------------------------------

bool ChromaxisMainWindow::loadImageFile(const QString &path)
{
    DocumentImage image;
    try {
        image = DocumentImageIO::load(path);
    } catch (const DescribedException &e) {
        showError(this, e);
        return false;
    }
    setScale(1.0);
    m_document.setImageState({image, path, false});
    recordStep(QStringLiteral("load_image"), QStringLiteral("filename:%1\n").arg(path));
    rememberRecentFile(path);
    if (image.mode() == DocumentImage::RGB)
        applyRgbOnLoadAction(m_rgbOnLoadAction);
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
    try {
        DocumentImageIO::save(path, m_document.image());
    } catch (const DescribedException &e) {
        showError(this, e);
        return false;
    }
    // Where the image lives is not a change worth a history step.
    m_document.setImageFileName(path);
    m_document.setImageModified(false);
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
    QString path = QFileDialog::getSaveFileName(this, tr("Save image as"), dialogDirectory("default_image_dir"),
                                                DocumentImageIO::saveFilters().join(";;"), &filter);
    if (path.isEmpty())
        return false;
    path = withFilterSuffix(path, filter);
    rememberDirectory("default_image_dir", path);
    s.setValue("default_image_save_type", filter);
    return saveImageFile(path);
}

void ChromaxisMainWindow::closeImage()
{
    if (!maybeSaveImage())
        return;
    m_document.closeImage();
    recordStep(QStringLiteral("close_image"));
}

bool ChromaxisMainWindow::loadPaletteFile(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    const int format = formatFromWord(QFileInfo(path).suffix());
    if (format == FormatUnknown) {
        QMessageBox::warning(this, tr("Could not load"),
                             tr("Unable to load palette %1.\nUnrecognized format.").arg(name));
        return false;
    }
    if (m_document.imageMode() == DocumentImage::RGB) {
        const auto answer =
            QMessageBox::warning(this, tr("RGB format warning"),
                                 tr("The current image is an RGB image.<br/>Applying a new palette is impossible "
                                    "without prior conversion.<br/>When loading a new palette, the image will be "
                                    "discarded."),
                                 QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Cancel);
        if (answer != QMessageBox::Ok)
            return false;
    }
    Palette<uint> palette;
    try {
        importPalette(path, palette, format);
    } catch (const DescribedException &e) {
        showError(this, e);
        return false;
    }
    recordPaletteFileName(palette, path);
    const bool discardImage = m_document.imageMode() == DocumentImage::RGB;
    if (discardImage)
        m_document.beginGroup();
    if (discardImage)
        m_document.closeImage();
    PaletteState state = m_document.paletteState();
    state.palette = palette;
    state.fileName = path;
    state.paletteModified = false;
    m_document.setPaletteState(state);
    if (discardImage)
        m_document.endGroup();
    recordStep(QStringLiteral("load_palette"), QStringLiteral("filename:%1\n").arg(path));
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
    const int format = formatFromWord(QFileInfo(path).suffix());
    if (format == FormatUnknown) {
        QMessageBox::warning(this, tr("Could not save"),
                             tr("Unable to save palette %1.\nUnrecognized format.").arg(QFileInfo(path).fileName()));
        return false;
    }
    try {
        exportPalette(path, m_document.palette(), format);
    } catch (const DescribedException &e) {
        showError(this, e);
        return false;
    }
    m_document.setPaletteFileName(path);
    m_document.setPaletteModified(false);
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

// ---- Edit ----------------------------------------------------------------------------------------

void ChromaxisMainWindow::cut()
{
    const QString selection = SelectionList::parameterLine(m_paletteView->selection());
    if (m_paletteView->cut_remove(true)) {
        recordStep(QStringLiteral("copy"), selection);
        recordStep(QStringLiteral("delete"), selection);
    }
}

void ChromaxisMainWindow::copy()
{
    const QString selection = SelectionList::parameterLine(m_paletteView->selection());
    if (m_paletteView->copy())
        recordStep(QStringLiteral("copy"), selection);
}

void ChromaxisMainWindow::paste()
{
    const QString selection = SelectionList::parameterLine(m_paletteView->selection());
    if (m_paletteView->paste())
        recordStep(QStringLiteral("paste"), selection);
    else
        statusBar()->showMessage(tr("The clipboard holds no colours"), 3000);
}

void ChromaxisMainWindow::replace()
{
    const QString selection = SelectionList::parameterLine(m_paletteView->selection());
    if (m_paletteView->replace())
        recordStep(QStringLiteral("replace"), selection);
    else
        statusBar()->showMessage(tr("Nothing to replace: select entries and copy colours first"), 3000);
}

void ChromaxisMainWindow::deleteA()
{
    const QString selection = SelectionList::parameterLine(m_paletteView->selection());
    if (m_paletteView->deleteA())
        recordStep(QStringLiteral("delete"), selection);
}

void ChromaxisMainWindow::edit()
{
    const std::set<int> selected = m_paletteView->selection();
    if (!m_paletteView->edit()) {
        statusBar()->showMessage(tr("Select the entries to edit first"), 3000);
        return;
    }
    for (int i : selected)
        if (i >= 0 && i < m_document.palette().size()) {
            const RGBAColor<uint> &c = m_document.palette()[i];
            recordStep(QStringLiteral("edit"), SelectionList::parameterLine(selected) +
                                                   QStringLiteral("color:%1,%2,%3,%4\n")
                                                       .arg(c.r).arg(c.g).arg(c.b).arg(c.a));
            break;
        }
}

void ChromaxisMainWindow::selectAll()
{
    m_paletteView->selectAll();
}

void ChromaxisMainWindow::selectNone()
{
    m_paletteView->selectNone();
}

void ChromaxisMainWindow::selectInvert()
{
    m_paletteView->selectInvert();
}

void ChromaxisMainWindow::loadSelection()
{
    QSettings s;
    const QString path = QFileDialog::getOpenFileName(this, tr("Load selection"),
                                                      dialogDirectory("default_selection_dir"),
                                                      tr("text files (*.txt)"));
    if (path.isEmpty())
        return;
    rememberDirectory("default_selection_dir", path);
    try {
        m_document.setSelection(readSelectionFile(path));
        recordStep(QStringLiteral("load_selection"), QStringLiteral("filename:%1\n").arg(path));
    } catch (const DescribedException &e) {
        showError(this, e);
    }
}

void ChromaxisMainWindow::saveSelection()
{
    QFileDialog dialog(this, tr("Save selection as"), dialogDirectory("default_selection_dir"),
                       tr("text files (*.txt)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix("txt");
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    const QString path = dialog.selectedFiles().first();
    rememberDirectory("default_selection_dir", path);
    try {
        writeSelectionFile(path, m_paletteView->selection());
        recordStep(QStringLiteral("save_selection"), QStringLiteral("filename:%1\n").arg(path));
    } catch (const DescribedException &e) {
        showError(this, e);
    }
}

// ---- Palette -------------------------------------------------------------------------------------

void ChromaxisMainWindow::installBuiltin(int index)
{
    if (!m_builtinPalettes || m_builtinPalettes->isEmpty())
        return;
    const QString name = m_builtinPalettes->names().value(index);
    const auto palette = m_builtinPalettes->lookup(name);
    if (!palette)
        return;
    PaletteState state = m_document.paletteState();
    state.palette = *palette;
    state.palette.setProperty(PaletteName, name);
    state.builtinIndex = index;
    state.fileName.clear();
    state.paletteModified = true;
    m_document.setPaletteState(state);
    recordStep(QStringLiteral("palette_from_db"), QStringLiteral("name:%1\n").arg(name));
    statusBar()->showMessage(name, 3000);
}

void ChromaxisMainWindow::paletteNextDB()
{
    if (m_builtinPalettes)
        installBuiltin(BuiltinList::next(m_document.builtinIndex(), m_builtinPalettes->size()));
}

void ChromaxisMainWindow::palettePrevDB()
{
    if (m_builtinPalettes)
        installBuiltin(BuiltinList::prior(m_document.builtinIndex(), m_builtinPalettes->size()));
}

void ChromaxisMainWindow::paletteRandomDB()
{
    if (m_builtinPalettes)
        installBuiltin(BuiltinList::random(std::rand() & 0x7FFF, m_builtinPalettes->size()));
}

void ChromaxisMainWindow::paletteBrowseDB()
{
    if (!m_builtinPalettes)
        return;
    PaletteDBDialog dialog(*m_builtinPalettes, m_builtinPalettes->names().value(m_document.builtinIndex()), this);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedName().isEmpty())
        return;
    installBuiltin(m_builtinPalettes->names().indexOf(dialog.selectedName()));
}

void ChromaxisMainWindow::paletteFixSize()
{
    PaletteViewSettings s = m_document.paletteViewSettings();
    s.fixedSize = action("paletteFixSize")->isChecked();
    m_document.setPaletteViewSettings(s);
    recordStep(QStringLiteral("palette_fix_size"), QStringLiteral("fixed:%1\n").arg(s.fixedSize ? 1 : 0));
}

void ChromaxisMainWindow::paletteSetDefaultColor()
{
    const RGBAColor<uint> fill = m_paletteView->fillColor();
    const QColor chosen = QColorDialog::getColor(QColor::fromRgba64(quint16(fill.r), quint16(fill.g),
                                                                     quint16(fill.b), quint16(fill.a)),
                                                 this, tr("Set default color"), QColorDialog::ShowAlphaChannel);
    if (!chosen.isValid())
        return;
    const QRgba64 c = chosen.rgba64();
    PaletteViewSettings s = m_document.paletteViewSettings();
    s.fillColor = {c.red(), c.green(), c.blue(), c.alpha()};
    m_document.setPaletteViewSettings(s);
    recordStep(QStringLiteral("palette_set_default_color"),
               QStringLiteral("color:%1,%2,%3,%4\n").arg(c.red()).arg(c.green()).arg(c.blue()).arg(c.alpha()));
}

void ChromaxisMainWindow::setPaletteSizeTo(int size)
{
    size = qBound(0, size, m_maximumPaletteSize);
    if (size == m_document.palette().size())
        return;
    if (m_paletteView->isFixedPaletteSize()) {
        statusBar()->showMessage(tr("The palette size is fixed"), 3000);
        return;
    }
    Palette<uint> p = m_document.palette();
    p.resize(size, m_document.paletteViewSettings().fillColor);
    installPalette(p, true);
    recordStep(QStringLiteral("palette_set_default_size"), QStringLiteral("size:%1\n").arg(size));
}

void ChromaxisMainWindow::setMaximumPaletteSize(int size)
{
    if (size <= 0)
        return;
    PaletteViewSettings s = m_document.paletteViewSettings();
    if (m_document.hasImage() && size < s.maximumSize) {
        QMessageBox::warning(this, tr("Image conflict"),
                             tr("The current image may use more colors than the new maximum value.\nPlease close "
                                "the image first."));
        documentSettingsChanged(); // puts the menu's check back
        return;
    }
    if (s.maximumSize == size)
        return;
    s.maximumSize = size;
    m_document.setPaletteViewSettings(s);
    recordStep(QStringLiteral("palette_set_max_size"), QStringLiteral("size:%1\n").arg(size));
}

void ChromaxisMainWindow::setCopyFormat(int format)
{
    m_copyFormat = format;
    m_paletteView->setColorFormat(format);
    const QList<QAction *> family = m_actionFamilies.value("@copyFormats");
    for (int i = 0; i < family.size(); ++i)
        family[i]->setChecked(i == qBound(0, format, 2));
}

// ---- Image ---------------------------------------------------------------------------------------

void ChromaxisMainWindow::setRgbOnLoadAction(int value)
{
    if (value < 0 || value > 9)
        return;
    m_rgbOnLoadAction = value;
    const QList<QAction *> family = m_actionFamilies.value("@rgbActions");
    for (int i = 0; i < family.size(); ++i)
        family[i]->setChecked(i == value);
}

void ChromaxisMainWindow::applyRgbOnLoadAction(int value)
{
    if (value == 0) {
        RGBImageDialog dialog(this);
        if (dialog.exec() != QDialog::Accepted)
            return;
        value = dialog.chosenAction();
        if (dialog.remember())
            setRgbOnLoadAction(value);
    }
    static const char *const commands[] = {nullptr,
                                        nullptr,
                                        "imageModeConvert",
                                        "imageModeGrayscale",
                                        "imageModeExtendedGrayscale",
                                        "imageModeContinuousGrayscale",
                                        "imageModeIndexedLastPalette",
                                        "imageModeContinuousLastPalette",
                                        "imageModeIndexed8bit",
                                        "imageModeIndexed32bitInt"};
    if (value >= 2 && value <= 9)
        action(QString::fromLatin1(commands[value]))->trigger();
}

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
    DocumentImage image = m_document.image();
    image.setInterpolate(a->isChecked());
    m_document.setImage(image);
    recordStep(QStringLiteral("image_interpolate_entries"),
               QStringLiteral("interpolate:%1\n").arg(a->isChecked() ? 1 : 0));
}

// ---- View and help -------------------------------------------------------------------------------

void ChromaxisMainWindow::setScale(double scale)
{
    m_scale = scale;
    if (m_document.hasImage())
        m_imageView->resize(m_document.image().picture().size() * m_scale);
}

void ChromaxisMainWindow::normalSize()
{
    setScale(1.0);
    recordStep(QStringLiteral("zoom_reset"));
}

void ChromaxisMainWindow::zoomIn()
{
    setScale(m_scale * Zoom::inFactor);
    recordStep(QStringLiteral("zoom_in"));
}

void ChromaxisMainWindow::zoomOut()
{
    setScale(m_scale * Zoom::outFactor);
    recordStep(QStringLiteral("zoom_out"));
}

void ChromaxisMainWindow::zoomChanged(double val)
{
    // One wheel notch is one zoom step; touch pads send many small pixel steps, so only the
    // direction counts.
    if (val > 0)
        zoomIn();
    else if (val < 0)
        zoomOut();
}

void ChromaxisMainWindow::about()
{
    QMessageBox::about(this, tr("About Chromaxis"),
                       tr("<h3>Chromaxis</h3><p>A workbench for colour palettes: open, generate, manipulate and "
                          "save palettes, and see every change at once on an image.</p>"));
}

void ChromaxisMainWindow::visit()
{
    QDesktopServices::openUrl(QUrl(QStringLiteral("https://chromaxis.org")));
}

// ---- History and macros --------------------------------------------------------------------------

void ChromaxisMainWindow::recordStep(const QString &name, const QString &parameters)
{
    m_document.recordMacroStep(name, parameters);
}

void ChromaxisMainWindow::undo()
{
    if (!m_document.undo())
        statusBar()->showMessage(tr("Nothing to undo"), 2000);
}

void ChromaxisMainWindow::redo()
{
    if (!m_document.redo())
        statusBar()->showMessage(tr("Nothing to redo"), 2000);
}

void ChromaxisMainWindow::clearHistory()
{
    m_document.clearHistory();
    recordStep(QStringLiteral("reset_undo"));
    updateHistoryActions();
}

void ChromaxisMainWindow::macroRecord()
{
    const bool on = action("macroRecord")->isChecked();
    if (on == m_document.isRecording())
        return;
    if (on) {
        m_document.macros().clear();
        m_document.setRecording(true);
        m_recordLabel = new QLabel(QStringLiteral("Hallo?"));
        m_recordLabel->setPixmap(QPixmap(QStringLiteral(":res/images/record16x16.png")));
        m_recordLabel->setToolTip(tr("Recording a macro"));
        statusBar()->addPermanentWidget(m_recordLabel);
        statusBar()->repaint();
    } else {
        m_document.setRecording(false);
        delete m_recordLabel;
        m_recordLabel = nullptr;
        statusBar()->showMessage(tr("Macro recorded: %1 steps").arg(m_document.macros().position()), 3000);
    }
}

void ChromaxisMainWindow::macroSave()
{
    if (m_document.macros().position() == 0) {
        QMessageBox::information(this, tr("Save macro"),
                                 tr("There is no recorded macro to save.\nStart recording with \"Record macro\" "
                                    "in the Edit menu."));
        return;
    }
    QFileDialog dialog(this, tr("Save macro as"), dialogDirectory("default_macro_dir"),
                       tr("Chromaxis macros (*.cxm)"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix("cxm");
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    const QString path = dialog.selectedFiles().first();
    rememberDirectory("default_macro_dir", path);
    try {
        MacroFile::write(path, MacroFile::stepsOf(m_document.macros()));
    } catch (const DescribedException &e) {
        showError(this, e);
    }
}

bool ChromaxisMainWindow::playMacroFile(const QString &path)
{
    try {
        const std::vector<MacroFile::Step> steps = MacroFile::read(path);
        MacroPlayer player;
        m_document.beginGroup();
        MacroPlayer::Report report;
        try {
            report = player.play(m_document, steps);
        } catch (...) {
            m_document.endGroup();
            throw;
        }
        m_document.endGroup();
        if (!report.skipped.isEmpty())
            QMessageBox::warning(this, tr("Play macro"),
                                 tr("%1 steps were played. These steps are not available yet and were "
                                    "skipped:\n%2")
                                     .arg(report.played)
                                     .arg(report.skipped.join(", ")));
        else
            statusBar()->showMessage(tr("Macro played: %1 steps").arg(report.played), 3000);
    } catch (const DescribedException &e) {
        showError(this, e);
        return false;
    }
    return true;
}

void ChromaxisMainWindow::macroPlay()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Play macro"), dialogDirectory("default_macro_dir"),
                                                      tr("Chromaxis macros (*.cxm);;All files (* *.*)"));
    if (path.isEmpty())
        return;
    rememberDirectory("default_macro_dir", path);
    playMacroFile(path);
}

// ---- Recent files --------------------------------------------------------------------------------

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
