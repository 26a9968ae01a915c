#pragma once

#include "document/documentstate.h"

#include <memory>
#include <vector>

class ChromaxisDocument;

// One step of the history: it can set the document back to the state before a change and
// forward to the state after it. Restoring goes through the document's setters with the
// from-history flag, so it never records a new step.
class ChromaxisUndoAction
{
public:
    explicit ChromaxisUndoAction(ChromaxisDocument *document) : m_document(document) {}
    virtual ~ChromaxisUndoAction() = default;
    virtual bool undo() = 0;
    virtual bool redo() = 0;

    // Where the macro recorder stood before this step's command and after it, so that undoing
    // and redoing the step takes exactly its command out of the macro and back in; -1 when the
    // step was made while nothing was recorded.
    int macroBefore = -1;
    int macroAfter = -1;
    // Where the recorder stood when the step was last undone: commands recorded after this
    // step's own command without a step of their own (a copy after an edit) come back with it.
    int macroRedo = -1;

protected:
    ChromaxisDocument *m_document = nullptr; // not owned
};

class ChromaxisUndoAction_ImageChange : public ChromaxisUndoAction
{
public:
    ChromaxisUndoAction_ImageChange(ChromaxisDocument *document, ImageState before, ImageState after);
    bool undo() override;
    bool redo() override;

private:
    ImageState m_before;
    ImageState m_after;
};

class ChromaxisUndoAction_PaletteChange : public ChromaxisUndoAction
{
public:
    ChromaxisUndoAction_PaletteChange(ChromaxisDocument *document, PaletteState before, PaletteState after);
    bool undo() override;
    bool redo() override;

private:
    PaletteState m_before;
    PaletteState m_after;
};

class ChromaxisUndoAction_SettingsChange : public ChromaxisUndoAction
{
public:
    ChromaxisUndoAction_SettingsChange(ChromaxisDocument *document, PaletteViewSettings before,
                                       PaletteViewSettings after);
    bool undo() override;
    bool redo() override;

private:
    PaletteViewSettings m_before;
    PaletteViewSettings m_after;
};

// Several changes of one command undone and redone as one step.
class ChromaxisUndoAction_Combined : public ChromaxisUndoAction
{
public:
    explicit ChromaxisUndoAction_Combined(ChromaxisDocument *document) : ChromaxisUndoAction(document) {}
    ~ChromaxisUndoAction_Combined() override;
    void append(ChromaxisUndoAction *action) { m_actions.push_back(action); }
    int size() const { return int(m_actions.size()); }
    // Members from last to first, every one even after a failure; true when all succeeded.
    bool undo() override;
    bool redo() override;

private:
    std::vector<ChromaxisUndoAction *> m_actions; // owned
};

// A bounded linear history. After any addition it holds at most limit - 1 steps: the trimming
// runs while the count is at least the limit, and users have long known it as 19 steps.
class ChromaxisUndoSystem
{
public:
    explicit ChromaxisUndoSystem(ChromaxisDocument *document, int limit = 20);
    ~ChromaxisUndoSystem();
    ChromaxisUndoSystem(const ChromaxisUndoSystem &) = delete;
    ChromaxisUndoSystem &operator=(const ChromaxisUndoSystem &) = delete;

    // Takes ownership; inside an open group the action joins the group.
    void addUndoAction(ChromaxisUndoAction *action);
    void removeOldest();
    bool undo();
    bool redo();
    bool canUndo() const;
    bool canRedo() const;
    void clearHistory();
    void beginGroup();
    void endGroup();
    bool isGroupOpen() const { return m_openGroup != nullptr; }

    int position() const { return m_position; }
    // The step at index (0 is the oldest), or nullptr.
    ChromaxisUndoAction *actionAt(int index) const
    {
        return index >= 0 && index < int(m_actions.size()) ? m_actions[size_t(index)] : nullptr;
    }
    int count() const { return int(m_actions.size()); }
    int limit() const { return m_limit; }

private:
    void trace(const char *what) const;

    ChromaxisDocument *m_document = nullptr;
    std::vector<ChromaxisUndoAction *> m_actions; // owned, oldest first
    int m_position = 0;
    int m_limit = 20;
    ChromaxisUndoAction_Combined *m_openGroup = nullptr; // owned
};
