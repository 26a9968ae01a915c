#include "dialoghelp.h"

#include "helpcollection.h"
#include "helpwidget.h"

#include <QApplication>
#include <QDialog>
#include <QHelpEngine>
#include <QHelpLink>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPointer>

#include <utility>

namespace {

// Dialogs whose title is not a heading of their page, or is shared with another dialog. The pages
// are UTF-8: a heading's anchor keeps its accents ("moiré").
const std::pair<const char *, const char *> pagesByClass[] = {
    {"RGBImageDialog", "image-dialogs.html#opening-an-rgb-picture"},
    {"ImageConvertDialog", "image-dialogs.html#convert-image"},
    {"ImageQuantisizeDialog", "image-dialogs.html#quantisize-image"},
    {"PaletteDBDialog", "palette-dialogs.html#browse-the-db"},
    {"ColorEditDialog", "palette-dialogs.html#edit-colour"},
    {"PaletteBatchConvertDialog", "transforms-and-batch.html#palette--batch-convert-palettes"},
    {"ExportAnimationDialog", "animation.html#in-the-window"},
    {"PaletteRenderDialog", "pictures-and-prints.html#the-picture-dialog"},
    {"SortColorsDialog", "palette-commands.html#sort-colors"},
    {"SharpenDialog", "palette-commands.html#sharpen"},
    {"ResizePaletteDialog", "palette-commands.html#resize-the-palette"},
    {"RepetitionPatternDialog", "palette-commands.html#repetition-pattern"},
    {"PersianRasterDialog", "palette-commands.html#persian-raster"},
    {"MandelbrotDialog", "generator-dialogs.html#mandelbrot-julia-ifs-and-plasma"},
    {"JuliaDialog", "generator-dialogs.html#mandelbrot-julia-ifs-and-plasma"},
    {"IFSDialog", "generator-dialogs.html#mandelbrot-julia-ifs-and-plasma"},
    {"PlasmaDialog", "generator-dialogs.html#mandelbrot-julia-ifs-and-plasma"},
    {"ApollonianDialog", "generator-dialogs.html#apollonian-gasket"},
    {"NoiseDialog", "generator-dialogs.html#noise"},
    {"GradientDialog", "generator-dialogs.html#gradient"},
    {"MoireeDialog", "generator-dialogs.html#moiré"},
};

QUrl urlForTitle(QHelpEngine *engine, QString title)
{
    title.remove('&');
    if (title.endsWith(QLatin1String("...")))
        title.chop(3);
    for (const QString &key : {title, title + QStringLiteral("...")}) {
        const QList<QHelpLink> links = engine->documentsForKeyword(key);
        if (!links.isEmpty())
            return links.first().url;
    }
    return {};
}

} // namespace

void DialogHelp::install()
{
    static QPointer<DialogHelp> watcher;
    if (!watcher && qApp) {
        watcher = new DialogHelp(qApp);
        qApp->installEventFilter(watcher);
    }
}

QString DialogHelp::pageForClass(const QDialog *dialog)
{
    for (const QMetaObject *m = dialog->metaObject(); m; m = m->superClass()) {
        for (const auto &entry : pagesByClass) {
            if (qstrcmp(m->className(), entry.first) == 0)
                return QString::fromUtf8(entry.second);
        }
    }
    return {};
}

QList<QPair<QString, QString>> DialogHelp::classPages()
{
    QList<QPair<QString, QString>> out;
    for (const auto &entry : pagesByClass)
        out.append({QString::fromLatin1(entry.first), QString::fromUtf8(entry.second)});
    return out;
}

bool DialogHelp::showHelpFor(QDialog *dialog)
{
    QString error;
    // A modal dialog blocks every other window, so its help is a window of its own.
    HelpWidget *help = HelpWidget::open(dialog, QString(), &error);
    if (!help) {
        QMessageBox::warning(dialog, tr("Help"), tr("The manual cannot be opened.\n%1").arg(error));
        return false;
    }
    const QString page = pageForClass(dialog);
    const QUrl url = page.isEmpty() ? urlForTitle(help->helpEngine(), dialog->windowTitle())
                                    : HelpCollection::pageUrl(page);
    if (url.isValid())
        help->linkActivated(url);
    return true;
}

bool DialogHelp::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return false;
    auto *key = static_cast<QKeyEvent *>(event);
    if (key->key() != Qt::Key_F1 || key->modifiers() != Qt::NoModifier)
        return false;
    auto *widget = qobject_cast<QWidget *>(watched);
    auto *dialog = widget ? qobject_cast<QDialog *>(widget->window()) : nullptr;
    if (!dialog || qobject_cast<QMessageBox *>(dialog))
        return false;
    showHelpFor(dialog);
    return true;
}
