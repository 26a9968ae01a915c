#include "document/chromaxisundosystem.h"

#include "document/chromaxisdocument.h"

#include <QDebug>
#include <QLoggingCategory>

namespace {
Q_LOGGING_CATEGORY(historyLog, "chromaxis.history", QtWarningMsg)
}

ChromaxisUndoAction_ImageChange::ChromaxisUndoAction_ImageChange(ChromaxisDocument *document, ImageState before,
                                                                 ImageState after)
    : ChromaxisUndoAction(document), m_before(std::move(before)), m_after(std::move(after))
{
}

bool ChromaxisUndoAction_ImageChange::undo()
{
    m_document->setImageState(m_before, true);
    return true;
}

bool ChromaxisUndoAction_ImageChange::redo()
{
    m_document->setImageState(m_after, true);
    return true;
}

ChromaxisUndoAction_PaletteChange::ChromaxisUndoAction_PaletteChange(ChromaxisDocument *document,
                                                                     PaletteState before, PaletteState after)
    : ChromaxisUndoAction(document), m_before(std::move(before)), m_after(std::move(after))
{
}

bool ChromaxisUndoAction_PaletteChange::undo()
{
    m_document->setPaletteState(m_before, true);
    return true;
}

bool ChromaxisUndoAction_PaletteChange::redo()
{
    m_document->setPaletteState(m_after, true);
    return true;
}

ChromaxisUndoAction_SettingsChange::ChromaxisUndoAction_SettingsChange(ChromaxisDocument *document,
                                                                       PaletteViewSettings before,
                                                                       PaletteViewSettings after)
    : ChromaxisUndoAction(document), m_before(before), m_after(after)
{
}

bool ChromaxisUndoAction_SettingsChange::undo()
{
    m_document->setPaletteViewSettings(m_before, true);
    return true;
}

bool ChromaxisUndoAction_SettingsChange::redo()
{
    m_document->setPaletteViewSettings(m_after, true);
    return true;
}

ChromaxisUndoAction_Combined::~ChromaxisUndoAction_Combined()
{
    for (auto it = m_actions.rbegin(); it != m_actions.rend(); ++it)
        delete *it;
}

bool ChromaxisUndoAction_Combined::undo()
{
    bool ok = true;
    for (auto it = m_actions.rbegin(); it != m_actions.rend(); ++it)
        ok = (*it)->undo() && ok;
    return ok;
}

bool ChromaxisUndoAction_Combined::redo()
{
    bool ok = true;
    for (ChromaxisUndoAction *a : m_actions)
        ok = a->redo() && ok;
    return ok;
}

ChromaxisUndoSystem::ChromaxisUndoSystem(ChromaxisDocument *document, int limit)
    : m_document(document), m_limit(limit)
{
}

ChromaxisUndoSystem::~ChromaxisUndoSystem()
{
    clearHistory();
    delete m_openGroup;
}

void ChromaxisUndoSystem::trace(const char *what) const
{
    qCDebug(historyLog).nospace() << what << " position " << m_position << " count " << m_actions.size();
}

void ChromaxisUndoSystem::addUndoAction(ChromaxisUndoAction *action)
{
    if (m_openGroup) {
        m_openGroup->append(action);
        return;
    }
    trace("addUndoAction1:");
    while (int(m_actions.size()) > m_position) {
        delete m_actions.back();
        m_actions.pop_back();
    }
    m_actions.push_back(action);
    ++m_position;
    while (int(m_actions.size()) >= m_limit)
        removeOldest();
    trace("addUndoAction2:");
}

void ChromaxisUndoSystem::removeOldest()
{
    trace("removeOldest1:");
    if (m_position >= 0 && !m_actions.empty()) {
        delete m_actions.front();
        m_actions.erase(m_actions.begin());
        --m_position;
    }
    trace("removeOldest2:");
}

bool ChromaxisUndoSystem::undo()
{
    trace("undo1:");
    if (m_position == 0)
        return false;
    if (m_actions[size_t(m_position - 1)]->undo())
        --m_position;
    trace("undo2:");
    return true;
}

bool ChromaxisUndoSystem::redo()
{
    trace("redo1:");
    if (m_position == int(m_actions.size()))
        return false;
    if (m_actions[size_t(m_position)]->redo())
        ++m_position;
    trace("redo2:");
    return true;
}

bool ChromaxisUndoSystem::canUndo() const
{
    return m_position >= 1 && m_position <= int(m_actions.size());
}

bool ChromaxisUndoSystem::canRedo() const
{
    return m_position < int(m_actions.size());
}

void ChromaxisUndoSystem::clearHistory()
{
    for (auto it = m_actions.rbegin(); it != m_actions.rend(); ++it)
        delete *it;
    m_actions.clear();
    m_position = 0;
}

void ChromaxisUndoSystem::beginGroup()
{
    delete m_openGroup;
    m_openGroup = new ChromaxisUndoAction_Combined(m_document);
}

void ChromaxisUndoSystem::endGroup()
{
    ChromaxisUndoAction_Combined *group = m_openGroup;
    m_openGroup = nullptr;
    if (group)
        addUndoAction(group);
}
