#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <memory>

class ChromaxisDocument;
class QLockFile;

// Keeps a copy of unsaved work where a crash cannot take it: while the document has unsaved
// changes, every interval it is written as a project into a folder of its own (the application's
// data folder in the window), without touching the document's file names or modified flags.
// Destroying the object is the clean exit and removes the copy; a session that dies leaves it.
//
// Several sessions may run at once, so each takes a numbered slot ("autosave-N.cxw") guarded by a
// lock file that lives as long as the session. An autosave whose lock nobody holds is an orphan:
// its session ended without cleaning up, and the next start offers it back.
class Autosave : public QObject
{
    Q_OBJECT
public:
    static constexpr int defaultIntervalMs = 3 * 60 * 1000;
    // More sessions at once than this run without an autosave.
    static constexpr int maximumSlots = 32;

    Autosave(ChromaxisDocument &document, const QString &folder, int intervalMs = defaultIntervalMs,
             QObject *parent = nullptr);
    ~Autosave() override;

    // False when no slot could be taken (the folder cannot be made, every slot is busy): then
    // nothing is ever written.
    bool isActive() const { return static_cast<bool>(m_lock); }
    // This session's autosave file; empty when inactive.
    const QString &path() const { return m_path; }
    int interval() const { return m_timer.interval(); }
    void setInterval(int ms) { m_timer.setInterval(ms); }

    // What a tick does: writes the document when it has unsaved changes not yet autosaved, and
    // removes the autosave once nothing is unsaved any more. Returns whether a file was written;
    // a failed write throws DescribedException and is tried again at the next tick.
    bool update();
    // Writes the document now, whatever its state.
    void save();
    void discard();

    // Autosaves of sessions that did not exit cleanly, newest first.
    QStringList orphans() const;
    // Forgets an orphan for good, once it was restored or declined.
    static void removeOrphan(const QString &path);

    static bool hasUnsavedChanges(const ChromaxisDocument &document);

signals:
    // A tick could not write the autosave; message says why.
    void failed(const QString &message);

private:
    void claimSlot();
    void tick();

    ChromaxisDocument &m_document;
    QString m_folder;
    QString m_path;
    std::unique_ptr<QLockFile> m_lock;
    QTimer m_timer;
    // The document changed since the last autosave was written.
    bool m_changed = false;
};
