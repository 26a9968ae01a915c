// The Palette menu: the built-in collection, the generators, the palette dialogs and the size
// and fill colour of the palette. Every palette is computed by the palette operations of the
// core; the window previews, and the document commands install and record.
#include "chromaxismainwindow.h"

#include "dialogs/palettedbdialog.h"
#include "pal_gen/colorinterpolationdialog.h"
#include "pal_gen/cosinepalettedialog.h"
#include "pal_manip/blurdialog.h"
#include "pal_manip/brightnesscontrastdialog.h"
#include "pal_manip/componentmanipulationdialog.h"
#include "pal_manip/gradienttintdialog.h"
#include "pal_manip/huesaturationvaluedialog.h"
#include "pal_manip/shiftorderdialog.h"
#include "pal_manip/tintdialog.h"
#include "storage/palettedatabase.h"
#include "utils/qt/colorwidgets/paletteview.h"

#include <QAction>
#include <QColorDialog>
#include <QStatusBar>

#include <cstdlib>

// ---- Previews and the palette view ---------------------------------------------------------------

void ChromaxisMainWindow::adaptPalette(const Palette<uint> &palette)
{
    m_document.setPreviewPalette(palette, ChromaxisDocument::PaletteOrigin::Edit);
}

void ChromaxisMainWindow::adaptPaletteOnly(const Palette<uint> &palette)
{
    m_document.setPreviewPalette(palette, ChromaxisDocument::PaletteOrigin::Generator);
}

void ChromaxisMainWindow::paletteViewPaletteChange()
{
    m_document.setSelection(m_paletteView->selection());
    // Some commands announce the same change twice; only a real change is a history step.
    if (m_paletteView->palette() == m_document.displayedPalette())
        return;
    m_document.setPalette(m_paletteView->palette());
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

void ChromaxisMainWindow::paletteViewSelectionChange()
{
    m_document.setSelection(m_paletteView->selection());
}

bool ChromaxisMainWindow::runPaletteDialog(PaletteDialog &dialog)
{
    // A generator's result is a palette alone; every other dialog changes the current palette.
    const auto adapt =
        ChromaxisDocument::originOf(dialog.settingsName()) == ChromaxisDocument::PaletteOrigin::Generator
            ? &ChromaxisMainWindow::adaptPaletteOnly
            : &ChromaxisMainWindow::adaptPalette;
    const ChromaxisDocument::PreviewScope preview(m_document);
    const QMetaObject::Connection live = connect(&dialog, &PaletteDialog::paletteChanged, this, adapt);
    dialog.start();
    const bool accepted = dialog.exec() == QDialog::Accepted;
    disconnect(live);
    if (!accepted)
        return false;
    // The result itself is installed, even if the dialog never announced it; installing drops the
    // preview.
    m_commands.installPalette(dialog.result(), dialog.settingsName(), dialog.settingsText());
    return true;
}

void ChromaxisMainWindow::applyPaletteOperation(const QString &name)
{
    run([&] { m_commands.applyPaletteOperation(name, m_document.selection()); });
}

void ChromaxisMainWindow::installPalette(const Palette<uint> &palette, bool modified)
{
    PaletteState state = m_document.paletteState();
    state.palette = palette;
    state.paletteModified = modified;
    m_document.setPaletteState(state);
}

// ---- The built-in collection ---------------------------------------------------------------------

void ChromaxisMainWindow::takeBuiltin(int index)
{
    if (run([&] { m_commands.takeBuiltin(index); }))
        statusBar()->showMessage(m_builtinPalettes->names().value(index), 3000);
}

void ChromaxisMainWindow::paletteNextDB()
{
    if (m_builtinPalettes && !m_builtinPalettes->isEmpty())
        takeBuiltin(BuiltinList::next(m_document.builtinIndex(), m_builtinPalettes->size()));
}

void ChromaxisMainWindow::palettePrevDB()
{
    if (m_builtinPalettes && !m_builtinPalettes->isEmpty())
        takeBuiltin(BuiltinList::prior(m_document.builtinIndex(), m_builtinPalettes->size()));
}

void ChromaxisMainWindow::paletteRandomDB()
{
    if (m_builtinPalettes && !m_builtinPalettes->isEmpty())
        takeBuiltin(BuiltinList::random(std::rand() & 0x7FFF, m_builtinPalettes->size()));
}

void ChromaxisMainWindow::paletteBrowseDB()
{
    if (!m_builtinPalettes)
        return;
    PaletteDBDialog dialog(*m_builtinPalettes, m_builtinPalettes->names().value(m_document.builtinIndex()), this);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedName().isEmpty())
        return;
    takeBuiltin(m_builtinPalettes->names().indexOf(dialog.selectedName()));
}

// ---- Size and fill colour ------------------------------------------------------------------------

void ChromaxisMainWindow::paletteFixSize()
{
    m_commands.setFixedPaletteSize(action("paletteFixSize")->isChecked());
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
    m_commands.setFillColor({c.red(), c.green(), c.blue(), c.alpha()});
}

void ChromaxisMainWindow::setPaletteSizeTo(int size)
{
    size = qBound(0, size, m_maximumPaletteSize);
    if (size == m_document.palette().size())
        return;
    if (!m_commands.setPaletteSize(size))
        statusBar()->showMessage(tr("The palette size is fixed"), 3000);
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
