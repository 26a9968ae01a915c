#pragma once

#include <QList>
#include <QObject>
#include <QPair>
#include <QString>

class QDialog;

// F1 in a dialog opens the manual at that dialog's section. The section is found by the dialog's
// class where a page names it, and otherwise by the dialog's title among the manual's keywords
// (every heading is one), so a dialog whose page has a heading of the same name needs no entry.
class DialogHelp : public QObject
{
    Q_OBJECT

public:
    // Watches the whole application; one watcher however often it is called.
    static void install();

    // The manual's page (with anchor) for dialog: by class, else empty (the caller then looks the
    // title up in the manual's keywords).
    static QString pageForClass(const QDialog *dialog);
    // Every (class name, page) pair the lookup by class knows.
    static QList<QPair<QString, QString>> classPages();

    // Opens the help for dialog. False, with a message shown, when the manual cannot be opened.
    static bool showHelpFor(QDialog *dialog);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    using QObject::QObject;
};
