#include "crashrecovery.h"

#include "chromaxismainwindow.h"
#include "palette/describedexception.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QStatusBar>

CrashRecovery::CrashRecovery(ChromaxisMainWindow *window, int intervalMs, const QString &folder)
    : QObject(window), m_window(window), m_autosave(window->document(), folder, intervalMs)
{
    connect(&m_autosave, &Autosave::failed, this, [this](const QString &message) {
        m_window->statusBar()->showMessage(tr("Autosave failed: %1").arg(message), 10000);
    });
}

QString CrashRecovery::defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

bool CrashRecovery::offerRestore()
{
    for (const QString &path : m_autosave.orphans()) {
        const QString when = QLocale().toString(QFileInfo(path).lastModified(), QLocale::ShortFormat);
        QMessageBox box(QMessageBox::Question, QStringLiteral("Chromaxis"),
                        tr("Chromaxis did not exit cleanly. Unsaved work was kept at %1.\n"
                           "Do you want to restore it?")
                            .arg(when),
                        QMessageBox::Yes | QMessageBox::Discard | QMessageBox::Cancel, m_window);
        box.button(QMessageBox::Yes)->setText(tr("Restore"));
        box.button(QMessageBox::Cancel)->setText(tr("Ask again later"));
        box.setDefaultButton(QMessageBox::Yes);
        box.setEscapeButton(QMessageBox::Cancel);
        const int answer = box.exec();
        if (answer == QMessageBox::Cancel)
            return false;
        if (answer == QMessageBox::Discard) {
            Autosave::removeOrphan(path);
            continue;
        }
        try {
            m_window->commands().restoreProject(path);
        } catch (const DescribedException &e) {
            QMessageBox::critical(m_window, tr("Could not load project"), e.message(), QMessageBox::Ok);
            // Kept aside rather than deleted, but no longer offered at every start.
            QFile::rename(path, path + QStringLiteral(".damaged"));
            continue;
        }
        // The restored work goes into this session's own autosave before the old copy goes, so a
        // second crash right now still finds it.
        try {
            m_autosave.save();
            Autosave::removeOrphan(path);
        } catch (const DescribedException &) {
        }
        m_window->updateProperties();
        m_window->statusBar()->showMessage(tr("Unsaved work restored"), 5000);
        return true;
    }
    return false;
}
