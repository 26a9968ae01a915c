// The main window's palette generators, the palette dialogs, the selection pattern and the text
// export. Every palette is computed by the palette operations of the core; the window previews,
// installs and records.
#include "chromaxismainwindow.h"

#include "palette/describedexception.h"
#include "dialogs/palettetextencoderdialog.h"
#include "dialogs/selectionpatterndialog.h"
#include "formats/writefileatomically.h"
#include "pal_gen/colorinterpolationdialog.h"
#include "pal_gen/cosinepalettedialog.h"
#include "pal_manip/blurdialog.h"
#include "pal_manip/brightnesscontrastdialog.h"
#include "pal_manip/componentmanipulationdialog.h"
#include "pal_manip/gradienttintdialog.h"
#include "pal_manip/huesaturationvaluedialog.h"
#include "pal_manip/shiftorderdialog.h"
#include "pal_manip/tintdialog.h"
#include "operations/paletteoperations.h"
#include "operations/selectionlist.h"
#include "utils/qt/colorwidgets/paletteview.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QSettings>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QTextStream>

QString ChromaxisMainWindow::selectionParameters() const
{
    if (m_document.selection().empty())
        return QString();
    return SelectionList::parameterLine(m_document.selection());
}

bool ChromaxisMainWindow::runPaletteDialog(PaletteDialog &dialog)
{
    const Palette<uint> original = m_document.palette();
    connect(&dialog, &PaletteDialog::paletteChanged, this, &ChromaxisMainWindow::adaptPalette);
    dialog.start();
    const bool accepted = dialog.exec() == QDialog::Accepted;
    disconnect(&dialog, &PaletteDialog::paletteChanged, this, &ChromaxisMainWindow::adaptPalette);
    if (!accepted) {
        adaptPalette(original);
        return false;
    }
    {
        // The history step must go from the palette the dialog started with; the views need not
        // show it in between, since the result follows at once.
        const QSignalBlocker block(&m_document);
        adaptPalette(original);
    }
    m_document.setPalette(dialog.result());
    recordStep(dialog.settingsName(), dialog.settingsText() + selectionParameters());
    return true;
}

void ChromaxisMainWindow::applyPaletteOperation(const QString &name)
{
    Palette<uint> result;
    try {
        result = PaletteOperations::apply(name, m_document.palette(), m_document.selection());
    } catch (const DescribedException &e) {
        QMessageBox::warning(this, e.title(), e.message());
        return;
    }
    m_document.setPalette(result);
    recordStep(name, selectionParameters());
}

// ---- Generators without settings -----------------------------------------------------------------

void ChromaxisMainWindow::paletteGenerateGrayScale()
{
    applyPaletteOperation(QStringLiteral("palette_generate_grayscale"));
}

void ChromaxisMainWindow::paletteGenerateExtendedGrayScale()
{
    applyPaletteOperation(QStringLiteral("palette_generate_extgrayscale"));
}

void ChromaxisMainWindow::paletteGenerateHueRot256()
{
    applyPaletteOperation(QStringLiteral("palette_generate_huerot256"));
}

void ChromaxisMainWindow::paletteGenerateHueRot1024()
{
    applyPaletteOperation(QStringLiteral("palette_generate_huerot1024"));
}

void ChromaxisMainWindow::paletteInterpolateSelected()
{
    if (m_document.selection().size() < 2) {
        statusBar()->showMessage(tr("Select at least two entries to interpolate between"), 3000);
        return;
    }
    applyPaletteOperation(QStringLiteral("interpolate_selected"));
}

void ChromaxisMainWindow::paletteOrderInvert()
{
    applyPaletteOperation(QStringLiteral("palette_invert_order"));
}

// ---- Palette dialogs -----------------------------------------------------------------------------

void ChromaxisMainWindow::paletteOrderShift()
{
    ShiftOrderDialog dialog(m_document.palette(), m_document.selection(), m_presets.connectionName(), this);
    runPaletteDialog(dialog);
}

void ChromaxisMainWindow::paletteGenerateInterpolation()
{
    ColorInterpolationDialog dialog(m_document.palette(), m_document.selection(), m_presets.connectionName(),
                                    m_maximumPaletteSize, this);
    runPaletteDialog(dialog);
}

void ChromaxisMainWindow::paletteInterpolateSelectedExt()
{
    const std::set<int> &selection = m_document.selection();
    int inPalette = 0;
    for (int i : selection)
        if (i >= 0 && i < m_document.palette().size())
            ++inPalette;
    if (inPalette < 2) {
        statusBar()->showMessage(tr("Select at least two entries to interpolate between"), 3000);
        return;
    }
    ColorInterpolationDialog dialog(m_document.palette(), selection, m_presets.connectionName(),
                                    m_maximumPaletteSize, this);
    dialog.setTicksFromSelection();
    runPaletteDialog(dialog);
}

void ChromaxisMainWindow::paletteGenerateUsingCosini()
{
    CosinePaletteDialog dialog(m_document.palette(), m_document.selection(), m_presets.connectionName(),
                               m_maximumPaletteSize, this);
    runPaletteDialog(dialog);
}

void ChromaxisMainWindow::paletteManipulateBrightnessContrast()
{
    BrightnessContrastDialog dialog(m_document.palette(), m_document.selection(), m_presets.connectionName(),
                                    this);
    runPaletteDialog(dialog);
}

void ChromaxisMainWindow::paletteManipulateHueSaturationValue()
{
    HueSaturationValueDialog dialog(m_document.palette(), m_document.selection(), m_presets.connectionName(),
                                    this);
    runPaletteDialog(dialog);
}

void ChromaxisMainWindow::paletteManipulateComponents()
{
    ComponentManipulationDialog dialog(m_document.palette(), m_document.selection(),
                                       m_presets.connectionName(), this);
    runPaletteDialog(dialog);
}

void ChromaxisMainWindow::paletteManipulateBlur()
{
    BlurDialog dialog(m_document.palette(), m_document.selection(), m_presets.connectionName(), this);
    runPaletteDialog(dialog);
}

void ChromaxisMainWindow::paletteManipulateTint()
{
    TintDialog dialog(m_document.palette(), m_document.selection(), m_presets.connectionName(), this);
    runPaletteDialog(dialog);
}

void ChromaxisMainWindow::paletteManipulateGradientTint()
{
    if (m_document.palette().size() < 2) {
        statusBar()->showMessage(tr("A gradient tint needs a palette of at least two entries"), 3000);
        return;
    }
    GradientTintDialog dialog(m_document.palette(), m_document.selection(), m_presets.connectionName(), this);
    runPaletteDialog(dialog);
}

// ---- Selection pattern ---------------------------------------------------------------------------

void ChromaxisMainWindow::selectPattern()
{
    const std::set<int> original = m_document.selection();
    SelectionPatternDialog dialog(m_document.palette().size(), m_presets.connectionName(), this);
    connect(&dialog, &SelectionPatternDialog::selectionChanged, this,
            [this](const std::set<int> &selection) { m_document.setSelection(selection); });
    dialog.start();
    if (dialog.exec() != QDialog::Accepted) {
        m_document.setSelection(original);
        return;
    }
    m_document.setSelection(dialog.result());
    recordStep(QStringLiteral("select_pattern"), dialog.settingsText());
}

// ---- Text export and the clipboard template ------------------------------------------------------

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
    const FileWriteResult written = writeFileAtomically(path, [&](QIODevice &device) {
        QTextStream stream(&device);
        PaletteTextEncoder::encode(dialog.encoderTemplate(), m_document.palette(), {}, stream);
        stream.flush();
        return stream.status() == QTextStream::Ok;
    });
    if (!written.ok()) {
        QMessageBox::warning(this, tr("Could not save"),
                             tr("Unable to save palette under\n%1.\nCould not open file.").arg(path));
        return;
    }
    recordStep(QStringLiteral("export_palette_text"), QStringLiteral("filename:%1\n").arg(path));
    statusBar()->showMessage(tr("Palette exported"), 2000);
}

void ChromaxisMainWindow::settingsPaletteCopyFormat()
{
    PaletteTextEncoderDialog dialog(m_document.palette(), m_presets.connectionName(), this);
    dialog.start();
    // The clipboard's own template is what the user came to change; the encoding plays no part there.
    PaletteTextEncoder::Template current = dialog.encoderTemplate();
    current.header = m_paletteView->clipboardHeader();
    current.entry = m_paletteView->clipboardEntry();
    current.divider = m_paletteView->clipboardDivider();
    current.bottom = m_paletteView->clipboardBottom();
    if (!(current == dialog.encoderTemplate())) {
        dialog.setEncoderTemplate(current);
        dialog.settingsIO()->markModified();
    }
    if (dialog.exec() != QDialog::Accepted)
        return;
    const PaletteTextEncoder::Template chosen = dialog.encoderTemplate();
    m_paletteView->setClipboardHeader(chosen.header);
    m_paletteView->setClipboardEntry(chosen.entry);
    m_paletteView->setClipboardDivider(chosen.divider);
    m_paletteView->setClipboardBottom(chosen.bottom);
    QSettings s;
    s.setValue("pal_clipboard_header", chosen.header);
    s.setValue("pal_clipboard_entry", chosen.entry);
    s.setValue("pal_clipboard_divider", chosen.divider);
    s.setValue("pal_clipboard_footer", chosen.bottom);
}
