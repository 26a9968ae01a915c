#include "document/autosave.h"

#include "document/chromaxisdocument.h"
#include "document/documentproject.h"
#include "palette/describedexception.h"
#include "storage/projectfile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>

#include <algorithm>

namespace {

QString slotBase(const QString &folder, int slot)
{
    return QDir(folder).filePath(QStringLiteral("autosave-%1").arg(slot));
}

QString lockPathOf(const QString &autosavePath)
{
    return autosavePath.left(autosavePath.size() - int(qstrlen(".cxw"))) + QStringLiteral(".lock");
}

// A lock held by a running session is never taken over, however old; one whose process is gone
// is stale and can be.
std::unique_ptr<QLockFile> tryLock(const QString &path)
{
    auto lock = std::make_unique<QLockFile>(path);
    lock->setStaleLockTime(0);
    if (!lock->tryLock(0))
        return nullptr;
    return lock;
}

} // namespace

Autosave::Autosave(ChromaxisDocument &document, const QString &folder, int intervalMs, QObject *parent)
    : QObject(parent), m_document(document), m_folder(folder)
{
    claimSlot();
    // Previews are not work: only what the document itself holds counts as a change.
    for (auto signal : {&ChromaxisDocument::paletteChanged, &ChromaxisDocument::imageChanged,
                        &ChromaxisDocument::paletteViewSettingsChanged, &ChromaxisDocument::selectionChanged,
                        &ChromaxisDocument::historyChanged})
        connect(&document, signal, this, [this]() { m_changed = true; });
    m_timer.setInterval(intervalMs);
    connect(&m_timer, &QTimer::timeout, this, &Autosave::tick);
    if (isActive())
        m_timer.start();
}

Autosave::~Autosave()
{
    discard();
}

void Autosave::claimSlot()
{
    if (m_folder.isEmpty() || !QDir().mkpath(m_folder))
        return;
    for (int slot = 0; slot < maximumSlots; ++slot) {
        const QString base = slotBase(m_folder, slot);
        auto lock = tryLock(base + QStringLiteral(".lock"));
        // A slot with an autosave still in it holds a crashed session's work, waiting to be offered.
        if (!lock || QFileInfo::exists(base + QStringLiteral(".cxw")))
            continue;
        m_lock = std::move(lock);
        m_path = base + QStringLiteral(".cxw");
        return;
    }
}

bool Autosave::hasUnsavedChanges(const ChromaxisDocument &document)
{
    return document.isPaletteModified() || (document.hasImage() && document.isImageModified());
}

bool Autosave::update()
{
    if (!isActive())
        return false;
    if (!hasUnsavedChanges(m_document)) {
        // Saved or discarded by the user: there is nothing left to recover.
        discard();
        return false;
    }
    if (!m_changed && QFileInfo::exists(m_path))
        return false;
    save();
    return true;
}

void Autosave::save()
{
    if (!isActive())
        return;
    // The capture is a copy: the document keeps its project name and modified flags.
    ProjectFile::write(m_path, DocumentProject::capture(m_document));
    m_changed = false;
}

void Autosave::discard()
{
    if (isActive())
        QFile::remove(m_path);
}

void Autosave::tick()
{
    try {
        update();
    } catch (const DescribedException &e) {
        emit failed(e.message());
    }
}

QStringList Autosave::orphans() const
{
    if (m_folder.isEmpty())
        return {};
    QFileInfoList candidates = QDir(m_folder).entryInfoList({QStringLiteral("autosave-*.cxw")}, QDir::Files);
    std::sort(candidates.begin(), candidates.end(),
              [](const QFileInfo &a, const QFileInfo &b) { return a.lastModified() > b.lastModified(); });
    QStringList found;
    for (const QFileInfo &info : candidates) {
        const QString path = info.absoluteFilePath();
        if (path == QFileInfo(m_path).absoluteFilePath())
            continue;
        // Taking the lock proves that no running session owns the file; it is let go at once.
        if (tryLock(lockPathOf(path)))
            found << path;
    }
    return found;
}

void Autosave::removeOrphan(const QString &path)
{
    QFile::remove(path);
}
