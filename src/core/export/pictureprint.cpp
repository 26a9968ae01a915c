#include "export/pictureprint.h"

#include "formats/writefileatomically.h"
#include "palette/describedexception.h"

#include <QFile>
#include <QFileInfo>
#include <QPageSize>
#include <QPainter>
#include <QPrinter>
#include <QTemporaryDir>

namespace PicturePrint {

namespace {

[[noreturn]] void cannotPrint(const QString &reason)
{
    throw DescribedException(QStringLiteral("Could not print"), reason);
}

} // namespace

QRect fittedViewport(const QSize &picture, const QRect &viewport)
{
    if (picture.isEmpty() || viewport.isEmpty())
        return QRect(viewport.topLeft(), QSize(0, 0));
    return QRect(viewport.topLeft(), picture.scaled(viewport.size(), Qt::KeepAspectRatio));
}

void paint(QPainter &painter, const QImage &picture)
{
    painter.setViewport(fittedViewport(picture.size(), painter.viewport()));
    painter.setWindow(picture.rect());
    // Cells are meant to stay sharp squares however far the page enlarges them.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(0, 0, picture);
}

void print(QPrinter &printer, const QImage &picture)
{
    if (picture.isNull())
        cannotPrint(QStringLiteral("There is nothing to print: the picture is empty."));
    QPainter painter;
    if (!painter.begin(&printer))
        cannotPrint(QStringLiteral("The printer could not be started."));
    paint(painter, picture);
    if (!painter.end())
        cannotPrint(QStringLiteral("The printer did not take the page."));
}

void printToPdf(const QImage &picture, const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    // The printer writes its file itself; it goes to a private folder first so that the file at
    // path is replaced whole or not at all, like every other file the program writes.
    QTemporaryDir folder;
    if (!folder.isValid())
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Unable to save %1.\n%2").arg(name, folder.errorString()));
    const QString staged = folder.filePath(QStringLiteral("print.pdf"));
    {
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(staged);
        printer.setPageSize(QPageSize(QPageSize::A4));
        printer.setPageOrientation(QPageLayout::Portrait);
        printer.setCreator(QStringLiteral("Chromaxis"));
        printer.setDocName(name);
        print(printer, picture);
    }
    QFile file(staged);
    if (!file.open(QIODevice::ReadOnly))
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Unable to save %1.\n%2").arg(name, file.errorString()));
    const FileWriteResult written = writeFileAtomically(path, file.readAll());
    if (!written.ok())
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Unable to save %1.\n%2").arg(name, written.error));
}

} // namespace PicturePrint
