// The Edit menu: history, macros, the clipboard edits of the palette view, selections and
// selection files. The palette view performs the clipboard edits itself (it owns the clipboard
// formats); the window records their macro steps, which replay through the document commands.
#include "chromaxismainwindow.h"

#include "dialogs/selectionpatterndialog.h"
#include "document/macroplayer.h"
#include "operations/selectionlist.h"
#include "palette/describedexception.h"
#include "utils/qt/colorwidgets/coloreditdialog.h"
#include "utils/qt/colorwidgets/paletteview.h"

#include <QAction>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QStatusBar>

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
    m_commands.clearHistory();
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
        m_recordLabel = new QLabel;
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
    run([&] { MacroFile::write(path, MacroFile::stepsOf(m_document.macros())); });
}

bool ChromaxisMainWindow::playMacroFile(const QString &path)
{
    MacroPlayer::Report report;
    const bool played = run([&] {
        const std::vector<MacroFile::Step> steps = MacroFile::read(path);
        MacroPlayer player(m_builtinPalettes);
        preparePrintSteps(player);
        // The whole replay is one step to undo.
        m_document.beginGroup();
        try {
            report = player.play(m_document, steps);
        } catch (...) {
            m_document.endGroup();
            throw;
        }
        m_document.endGroup();
    });
    if (!played)
        return false;
    if (!report.skipped.isEmpty())
        QMessageBox::warning(this, tr("Play macro"),
                             tr("%1 steps were played. These steps are unknown and were skipped:\n%2")
                                 .arg(report.played)
                                 .arg(report.skippedText()));
    else
        statusBar()->showMessage(tr("Macro played: %1 steps").arg(report.played), 3000);
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

// ---- Clipboard edits -----------------------------------------------------------------------------

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
    bool pasted = false;
    // A paste past the palette limit is refused with a message and changes nothing.
    if (!run([&] { pasted = m_paletteView->paste(); }))
        return;
    if (pasted)
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
    ColorEditDialog dialog(m_document.palette(), selected, this);
    if (!dialog.hasEntry()) {
        statusBar()->showMessage(tr("Select the entries to edit first"), 3000);
        return;
    }
    // Previewed like every palette dialog; the edit itself is the document command the macro
    // player replays.
    const ChromaxisDocument::PreviewScope preview(m_document);
    connect(&dialog, &ColorEditDialog::paletteChanged, this, &ChromaxisMainWindow::adaptPalette);
    if (dialog.exec() == QDialog::Accepted && dialog.isChanged())
        run([&] { m_commands.setColor(selected, dialog.colour()); });
}

// ---- Selections ----------------------------------------------------------------------------------

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

void ChromaxisMainWindow::loadSelection()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Load selection"),
                                                      dialogDirectory("default_selection_dir"),
                                                      tr("text files (*.txt)"));
    if (path.isEmpty())
        return;
    rememberDirectory("default_selection_dir", path);
    run([&] { m_commands.loadSelection(path); });
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
    m_document.setSelection(m_paletteView->selection());
    run([&] { m_commands.saveSelection(path); });
}
