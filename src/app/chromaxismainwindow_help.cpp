// The Help menu.
#include "chromaxismainwindow.h"

#include "dialogs/aboutdialog.h"
#include "utils/qt/help/helpcollection.h"
#include "utils/qt/help/helpwidget.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QUrl>

void ChromaxisMainWindow::about()
{
    AboutDialog dialog(QStringLiteral(CHROMAXIS_VERSION), this);
    dialog.exec();
}

void ChromaxisMainWindow::help()
{
    QString error;
    if (!HelpWidget::open(this, QString(), &error))
        QMessageBox::warning(this, tr("Help"), tr("The manual cannot be opened.\n%1").arg(error));
}

void ChromaxisMainWindow::visit()
{
    const QUrl site(QStringLiteral("https://chromaxis.org"));
    if (!QDesktopServices::openUrl(site))
        QMessageBox::information(this, tr("Visit chromaxis.org"),
                                 tr("No web browser could be started. The web site is at %1.").arg(site.toString()));
}

void ChromaxisMainWindow::openPDFdocs()
{
    const QString pdf = HelpCollection::installedPdf();
    if (!QFileInfo(pdf).isFile()) {
        QMessageBox::warning(this, tr("Open PDF docs"),
                             tr("The PDF manual is not installed: %1 is missing.").arg(QDir::toNativeSeparators(pdf)));
        return;
    }
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(pdf)))
        QMessageBox::information(this, tr("Open PDF docs"),
                                 tr("No PDF viewer could be started. The manual is at %1.")
                                     .arg(QDir::toNativeSeparators(pdf)));
}
