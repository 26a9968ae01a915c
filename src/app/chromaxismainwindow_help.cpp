// The Help menu.
#include "chromaxismainwindow.h"

#include <QDesktopServices>
#include <QMessageBox>
#include <QUrl>

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
