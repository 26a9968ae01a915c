#pragma once

#include "document/autosave.h"

#include <QObject>
#include <QString>

class ChromaxisMainWindow;

// The window's side of the autosave: the copy of unsaved work lives in the application's data
// folder, a failed write is told in the status bar rather than in a box every few minutes, and a
// start after a crash offers the copy back. A child of the window: it goes when the window goes,
// which is the clean exit that removes the copy.
class CrashRecovery : public QObject
{
    Q_OBJECT
public:
    explicit CrashRecovery(ChromaxisMainWindow *window, int intervalMs = Autosave::defaultIntervalMs,
                           const QString &folder = defaultFolder());

    static QString defaultFolder();
    Autosave &autosave() { return m_autosave; }

    // Asks about the autosaves of sessions that did not exit cleanly, newest first: Restore
    // installs one as unsaved work and stops, Discard deletes it and goes on to the next, Cancel
    // keeps them all for the next start. Returns whether one was restored.
    bool offerRestore();

private:
    ChromaxisMainWindow *m_window;
    Autosave m_autosave;
};
