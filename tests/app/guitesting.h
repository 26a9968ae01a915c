#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <functional>

// What a modal message box said before the test answered it.
struct SeenBox
{
    QString title;
    QString text;
    bool seen = false;
};

// Answers the next modal message box with button and records what it said. The box may not be
// up yet when the event loop first runs, so this keeps looking until it is.
inline void answerNextBox(SeenBox &seen, QMessageBox::StandardButton button)
{
    QTimer::singleShot(0, [&seen, button]() {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box) {
            answerNextBox(seen, button);
            return;
        }
        seen.title = box->windowTitle();
        seen.text = box->text();
        seen.seen = true;
        box->button(button)->click();
    });
}

// Hands the next modal dialog of type D to handle, which must close it.
template <typename D>
void handleNextDialog(std::function<void(D *)> handle)
{
    QTimer::singleShot(0, [handle]() {
        auto *dialog = qobject_cast<D *>(QApplication::activeModalWidget());
        if (!dialog) {
            handleNextDialog<D>(handle);
            return;
        }
        handle(dialog);
    });
}

// A main() that keeps settings, the preset database and the documents folder away from the
// user's profile: HOME and XDG_CONFIG_HOME point into a temporary folder for the whole run.
#define CHROMAXIS_GUI_TEST_MAIN(TestClass)                                                                     \
    int main(int argc, char *argv[])                                                                           \
    {                                                                                                          \
        QTemporaryDir home;                                                                                    \
        qputenv("HOME", home.path().toLocal8Bit());                                                            \
        qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());                                   \
        QStandardPaths::setTestModeEnabled(true);                                                              \
        QApplication app(argc, argv);                                                                          \
        QCoreApplication::setOrganizationName("KLO");                                                          \
        QCoreApplication::setApplicationName("Chromaxis");                                                     \
        TestClass t;                                                                                           \
        return QTest::qExec(&t, argc, argv);                                                                   \
    }
