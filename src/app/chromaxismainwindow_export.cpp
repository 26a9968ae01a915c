// Pictures of the palette and prints: "Export palette as image...", "Print palette", "Print
// image..." and the print steps of a replayed macro.
#include "chromaxismainwindow.h"
#include "dialogs/paletterenderdialog.h"
#include "document/macroplayer.h"
#include "export/palettepicture.h"
#include "export/pictureprint.h"

#include <QFileDialog>
#include <QImageWriter>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QSettings>
#include <QStatusBar>

#include <memory>

namespace {

// Every format the image writers know, the first being PNG, then all files.
QString pictureFilters()
{
    QStringList patterns;
    for (const QByteArray &format : QImageWriter::supportedImageFormats())
        patterns << QStringLiteral("*.") + QString::fromLatin1(format);
    QStringList filters{QStringLiteral("PNG image (*.png)"),
                        QStringLiteral("Images (%1)").arg(patterns.join(QLatin1Char(' ')))};
    filters << QStringLiteral("All files (* *.*)");
    return filters.join(QStringLiteral(";;"));
}

} // namespace

void ChromaxisMainWindow::exportPaletteToImage()
{
    PaletteRenderDialog dialog(m_document.palette(), m_presets.connectionName(), this);
    dialog.start();
    if (dialog.exec() != QDialog::Accepted)
        return;
    const QString path = QFileDialog::getSaveFileName(this, tr("Export palette as image"),
                                                      dialogDirectory("default_palette_dir"), pictureFilters());
    if (path.isEmpty())
        return;
    rememberDirectory("default_palette_dir", path);
    if (run([&] { PalettePicture::save(path, m_document.palette(), dialog.settings()); }))
        statusBar()->showMessage(tr("Palette exported"), 2000);
}

bool ChromaxisMainWindow::printPicture(const QImage &picture, QPrinter *printer)
{
    std::unique_ptr<QPrinter> own;
    if (!printer) {
        own = std::make_unique<QPrinter>();
        QPrintDialog dialog(own.get(), this);
        if (dialog.exec() != QDialog::Accepted)
            return false;
        printer = own.get();
    }
    return run([&] { PicturePrint::print(*printer, picture); });
}

void ChromaxisMainWindow::printPalette()
{
    PaletteRenderDialog dialog(m_document.palette(), m_presets.connectionName(), this);
    dialog.setWindowTitle(tr("Print palette"));
    dialog.start();
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (printPicture(dialog.picture()))
        recordStep(QStringLiteral("print_palette"), dialog.dialogSettings());
}

void ChromaxisMainWindow::printImage()
{
    if (!m_document.hasImage()) {
        QMessageBox::information(this, tr("Print image"), tr("There is no image to print."));
        return;
    }
    // What the window shows: the image through the current palette.
    if (printPicture(m_document.displayedPicture()))
        recordStep(QStringLiteral("print_image"));
}

void ChromaxisMainWindow::preparePrintSteps(MacroPlayer &player)
{
    // One question and one printer for the whole replay, asked at its first print: a macro run over
    // many files must not open a print dialog per file, nor print without being asked.
    struct Batch
    {
        bool asked = false;
        std::unique_ptr<QPrinter> printer; // null: the user declined
    };
    auto batch = std::make_shared<Batch>();
    const auto printerFor = [this, batch](const QString &question) -> QPrinter * {
        if (!batch->asked) {
            batch->asked = true;
            if (QMessageBox::question(this, tr("Play macro"), question, QMessageBox::Yes | QMessageBox::No,
                                      QMessageBox::No) != QMessageBox::Yes)
                return nullptr;
            auto printer = std::make_unique<QPrinter>();
            QPrintDialog dialog(printer.get(), this);
            if (dialog.exec() == QDialog::Accepted)
                batch->printer = std::move(printer);
        }
        return batch->printer.get();
    };
    player.setOwnStep(QStringLiteral("print_palette"),
                      [this, printerFor](MacroPlayer &, DocumentCommands &c, const MacroPlayer::Parameters &p) {
                          SettingsText::Pairs pairs(p.begin(), p.end());
                          const QImage picture =
                              PalettePicture::paint(c.document().palette(), PalettePicture::fromSettings(pairs));
                          if (QPrinter *printer =
                                  printerFor(tr("Do you really want to print palettes in batch?")))
                              PicturePrint::print(*printer, picture);
                      });
    player.setOwnStep(QStringLiteral("print_image"),
                      [this, printerFor](MacroPlayer &, DocumentCommands &c, const MacroPlayer::Parameters &) {
                          if (!c.document().hasImage())
                              return;
                          if (QPrinter *printer = printerFor(tr("Do you really want to print images in batch?")))
                              PicturePrint::print(*printer, c.document().displayedPicture());
                      });
}
