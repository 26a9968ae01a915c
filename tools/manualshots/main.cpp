// Takes the screenshots the manual shows: the main window with a picture, a few dialogs, the help
// window and the About box. Run by tools/make-manual-shots under Xvfb; every shot is cut from the
// screen with ImageMagick's `import`, so it shows what a user sees.
//
// chromaxis-manual-shots OUTDIR PICTURE MANUALDIR
#include "chromaxismainwindow.h"
#include "dialogs/aboutdialog.h"
#include "palette/palette.h"
#include "storage/palettedatabase.h"
#include "utils/qt/help/helpcollection.h"
#include "utils/qt/help/helpwidget.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <functional>

namespace {

QString outDir;
int failures = 0;

void settle(int ms = 300)
{
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms)
        QApplication::processEvents(QEventLoop::AllEvents, 20);
}

void shoot(QWidget *w, const QString &name)
{
    settle();
    const QRect r = w->frameGeometry();
    const QString path = QDir(outDir).filePath(name + QStringLiteral(".png"));
    const int rc = QProcess::execute(QStringLiteral("import"),
                                     {QStringLiteral("-window"), QStringLiteral("root"), QStringLiteral("-crop"),
                                      QStringLiteral("%1x%2+%3+%4").arg(r.width()).arg(r.height()).arg(r.x()).arg(r.y()),
                                      QStringLiteral("+repage"), path});
    std::printf("%s %s\n", rc == 0 ? "wrote" : "FAILED", qPrintable(path));
    if (rc != 0)
        ++failures;
}

// Opens a dialog through the window's command, shoots it and closes it.
void shootDialog(ChromaxisMainWindow &window, const char *command, const QString &name)
{
    QTimer::singleShot(400, [name]() {
        if (auto *d = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
            d->move(40, 40);
            shoot(d, name);
            d->reject();
        }
    });
    window.findChild<QAction *>(QString::fromLatin1(command))->trigger();
}

} // namespace

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());
    qputenv("XDG_DATA_HOME", (home.path() + "/data").toLocal8Bit());
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("KLO"));
    QCoreApplication::setApplicationName(QStringLiteral("Chromaxis"));
    registerPaletteMetaType();
    const QStringList args = app.arguments();
    if (args.size() != 4) {
        std::fprintf(stderr, "usage: chromaxis-manual-shots OUTDIR PICTURE MANUALDIR\n");
        return 2;
    }
    outDir = args.at(1);
    HelpCollection::setManualFolder(args.at(3));
    // The picture opens as a grayscale image, ready to be shown through a palette.
    QSettings().setValue(QStringLiteral("rgb_onload_action"), 3);

    PaletteDatabase db;
    db.loadFromFile(QStringLiteral(":res/texts/db.txt"));
    ChromaxisMainWindow window(&db);
    window.setGeometry(0, 0, 760, 520);
    window.show();
    window.openFiles({args.at(2)});
    for (int i = 0; i < 4; ++i)
        window.findChild<QAction *>(QStringLiteral("paletteNextDB"))->trigger();
    window.move(0, 0);
    shoot(&window, QStringLiteral("window"));

    shootDialog(window, "paletteManipulateTint", QStringLiteral("tint-dialog"));
    shootDialog(window, "paletteGenerateInterpolation", QStringLiteral("interpolation-dialog"));
    shootDialog(window, "imageModeConvert", QStringLiteral("convert-dialog"));
    // The generators' previews are drawn through the palette the window shows.
    for (const char *generator : {"Mandelbrot", "Julia", "Apollonian", "Plasma", "Noise", "Gradient", "Moiree"})
        shootDialog(window, qPrintable(QStringLiteral("imageGenerate") + QLatin1String(generator)),
                    QString::fromLatin1(generator).toLower() + QStringLiteral("-dialog"));

    QTimer::singleShot(400, []() {
        if (auto *d = qobject_cast<AboutDialog *>(QApplication::activeModalWidget())) {
            d->move(40, 40);
            shoot(d, QStringLiteral("about"));
            d->accept();
        }
    });
    window.findChild<QAction *>(QStringLiteral("about"))->trigger();

    QString error;
    if (HelpWidget *help = HelpWidget::open(&window, QStringLiteral("image-modes.html"), &error)) {
        help->setGeometry(0, 0, 1100, 700);
        settle(800);
        shoot(help, QStringLiteral("help-window"));
    } else {
        std::fprintf(stderr, "no help window: %s\n", qPrintable(error));
        ++failures;
    }
    return failures == 0 ? 0 : 1;
}
