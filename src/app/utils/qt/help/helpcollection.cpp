#include "helpcollection.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QHelpEngineCore>
#include <QStandardPaths>

namespace {

QString &folderOverride()
{
    static QString folder;
    return folder;
}

const char *const stampKey = "chromaxis/registered_manual";

} // namespace

namespace HelpCollection {

QString helpNamespace()
{
    return QStringLiteral("org.chromaxis.manual");
}

QUrl homePage()
{
    return pageUrl(QStringLiteral("index.html"));
}

QUrl pageUrl(const QString &page)
{
    return QUrl(QStringLiteral("qthelp://%1/doc/%2").arg(helpNamespace(), page));
}

QString manualFolder()
{
    return folderOverride().isEmpty() ? QCoreApplication::applicationDirPath() : folderOverride();
}

void setManualFolder(const QString &folder)
{
    folderOverride() = folder;
}

QString installedHelpFile()
{
    return QDir(manualFolder()).filePath(QStringLiteral("chromaxis.qch"));
}

QString installedPdf()
{
    return QDir(manualFolder()).filePath(QStringLiteral("chromaxis-manual.pdf"));
}

QString userCollectionFile()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation))
        .filePath(QStringLiteral("chromaxis.qhc"));
}

bool prepare(QString *error)
{
    const QFileInfo installed(installedHelpFile());
    if (!installed.isFile()) {
        *error = QCoreApplication::translate("HelpCollection", "The manual is not installed: %1 is missing.")
                     .arg(QDir::toNativeSeparators(installed.absoluteFilePath()));
        return false;
    }
    const QString collection = userCollectionFile();
    if (!QDir().mkpath(QFileInfo(collection).absolutePath())) {
        *error = QCoreApplication::translate("HelpCollection", "Cannot create the folder of %1.")
                     .arg(QDir::toNativeSeparators(collection));
        return false;
    }
    // The file and its time: a rebuilt or reinstalled manual is registered anew.
    const QString stamp = installed.absoluteFilePath() + '|'
                          + QString::number(installed.lastModified().toMSecsSinceEpoch());
    QHelpEngineCore engine(collection);
    if (!engine.setupData()) {
        *error = engine.error();
        return false;
    }
    const bool known = engine.registeredDocumentations().contains(helpNamespace());
    if (known && engine.customValue(QLatin1String(stampKey)).toString() == stamp)
        return true;
    if (known)
        engine.unregisterDocumentation(helpNamespace());
    if (!engine.registerDocumentation(installed.absoluteFilePath())) {
        *error = engine.error();
        return false;
    }
    engine.setCustomValue(QLatin1String(stampKey), stamp);
    return true;
}

} // namespace HelpCollection
