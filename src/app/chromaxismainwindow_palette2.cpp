// The Palette menu, continued: sorting, sharpening and resizing the palette, and the pattern
// commands. As in the first half, every result is computed by a palette operation of the core
// and installed by the document commands.
#include "chromaxismainwindow.h"

#include "pal_gen/persianrasterdialog.h"
#include "pal_gen/repetitionpatterndialog.h"
#include "pal_manip/resizepalettedialog.h"
#include "pal_manip/sharpendialog.h"
#include "pal_manip/sortcolorsdialog.h"

#include <QStatusBar>

namespace {

bool paletteIsEmpty(const ChromaxisDocument &document, QStatusBar *bar)
{
    if (!document.palette().isEmpty())
        return false;
    bar->showMessage(QObject::tr("The palette is empty"), 3000);
    return true;
}

} // namespace

void ChromaxisMainWindow::paletteSortColors()
{
    SortColorsDialog dialog(m_document.palette(), m_document.selection(), m_presets.connectionName(),
                            m_document.imageMode(), this);
    // Where the pixels follow their colours the preview keeps the picture, as OK will.
    const ChromaxisDocument::PreviewScope preview(m_document);
    connect(&dialog, &PaletteDialog::paletteChanged, this, [this, &dialog](const Palette<uint> &palette) {
        m_document.setPreviewPalette(palette, ChromaxisDocument::PaletteOrigin::Edit,
                                     m_commands.sortMovesPixels(dialog.operationPairs()));
    });
    dialog.start();
    if (dialog.exec() != QDialog::Accepted)
        return;
    run([&] { m_commands.sortColors(dialog.selection(), dialog.operationPairs()); });
}

void ChromaxisMainWindow::paletteManipulateSharpen()
{
    SharpenDialog dialog(m_document.palette(), m_document.selection(), m_presets.connectionName(), this);
    runPaletteDialog(dialog);
}

void ChromaxisMainWindow::paletteSetSize()
{
    if (paletteIsEmpty(m_document, statusBar()))
        return;
    ResizePaletteDialog dialog(m_document.palette(), m_document.selection(), m_presets.connectionName(),
                               m_maximumPaletteSize, this);
    runPaletteDialog(dialog);
}

void ChromaxisMainWindow::paletteGenerateUsingPattern()
{
    if (paletteIsEmpty(m_document, statusBar()))
        return;
    RepetitionPatternDialog dialog(m_document.palette(), m_document.selection(), m_presets.connectionName(),
                                   m_maximumPaletteSize, this);
    runPaletteDialog(dialog);
}

void ChromaxisMainWindow::paletteGeneratePersianRaster()
{
    if (paletteIsEmpty(m_document, statusBar()))
        return;
    PersianRasterDialog dialog(m_document.palette(), m_document.selection(), m_presets.connectionName(),
                               m_maximumPaletteSize, this);
    runPaletteDialog(dialog);
}

void ChromaxisMainWindow::paletteAppendMirrored()
{
    if (2 * m_document.palette().size() > m_maximumPaletteSize) {
        statusBar()->showMessage(tr("The mirrored palette would be larger than the maximum palette size (%1)")
                                     .arg(m_maximumPaletteSize),
                                 3000);
        return;
    }
    applyPaletteOperation(QStringLiteral("palette_append_mirrored"));
}
