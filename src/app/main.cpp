#include "chromaxismainwindow.h"
#include "crashrecovery.h"
#include "formats/librarymessages.h"
#include "palette/palette.h"
#include "storage/palettedatabase.h"

#include <QApplication>
#include <QFileInfo>

#include <memory>

namespace {

// The directory of the executable, known before QApplication exists (plug-in paths must be added
// before the application object loads its platform plug-in).
QString executableDirectory(const char *argv0)
{
    QFileInfo self(QStringLiteral("/proc/self/exe"));
    if (self.exists())
        return QFileInfo(self.canonicalFilePath()).absolutePath();
    return QFileInfo(QString::fromLocal8Bit(argv0)).absolutePath();
}

} // namespace

int main(int argc, char *argv[])
{
    const QString appDir = executableDirectory(argc > 0 ? argv[0] : "");
    for (const char *sub : {"/plugins/iconengines", "/plugins/imageformats", "/plugins/platform",
                            "/plugins/translations"})
        QCoreApplication::addLibraryPath(appDir + QLatin1String(sub));

    auto builtinPalettes = std::make_unique<PaletteDatabase>();
    builtinPalettes->loadFromFile(QStringLiteral(":res/texts/db.txt"));

    auto app = std::make_unique<QApplication>(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("KLO"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("chromaxis.org"));
    QCoreApplication::setApplicationName(QStringLiteral("Chromaxis"));
    registerPaletteMetaType();
    quietLibraryMessages();

    auto window = std::make_unique<ChromaxisMainWindow>(builtinPalettes.get());
    window->show();
    // Work a crashed session left behind is offered before anything else is opened.
    (new CrashRecovery(window.get()))->offerRestore();
    // Files named on the command line open as if chosen in the open dialogs.
    window->openFiles(app->arguments().mid(1));
    const int result = app->exec();

    window.reset();
    builtinPalettes.reset();
    app.reset();
    return result;
}
