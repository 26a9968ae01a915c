#pragma once

#include <QString>
#include <QUrl>

class QHelpEngineCore;

// Where the manual lives and how the help engine finds it. The compiled manual is installed
// beside the program, read-only; the engine works on a collection of its own in the user's data
// folder, because the search index is written next to the collection and a read-only one leaves
// the search empty.
namespace HelpCollection {

QString helpNamespace();
QUrl homePage();
// "palette-dialogs.html#tint" -> the address of that place in the manual
QUrl pageUrl(const QString &page);

// The folder holding chromaxis.qch and chromaxis-manual.pdf; the program's own folder unless set.
QString manualFolder();
void setManualFolder(const QString &folder);
QString installedHelpFile();
QString installedPdf();

QString userCollectionFile();

// Makes the user's collection know the installed manual: registers it when its namespace is
// missing and again when the installed file has changed since. False with a reason otherwise.
bool prepare(QString *error);

} // namespace HelpCollection
