#pragma once

#include <QString>

#include <vector>

// One recorded command: its step name ("load_image", "palette_invert_order", "tint", ...) and
// its parameters as key:value lines (a file command's "filename:" line, or a dialog's settings
// text).
class ChromaxisMacroAction
{
public:
    ChromaxisMacroAction(QString name, QString parameters = QString(), QString extra = QString())
        : m_name(std::move(name)), m_parameters(std::move(parameters)), m_extra(std::move(extra))
    {
    }
    virtual ~ChromaxisMacroAction() = default;

    const QString &name() const { return m_name; }
    const QString &parameters() const { return m_parameters; }
    const QString &extra() const { return m_extra; }

private:
    QString m_name;
    QString m_parameters;
    QString m_extra;
};

// The recorded commands. Recording mirrors the undo history: "undo" and "redo" steps move the
// position instead of being kept, so the effective macro is the first position() steps.
class ChromaxisMacroSystem
{
public:
    ChromaxisMacroSystem() = default;
    virtual ~ChromaxisMacroSystem();
    ChromaxisMacroSystem(const ChromaxisMacroSystem &) = delete;
    ChromaxisMacroSystem &operator=(const ChromaxisMacroSystem &) = delete;

    // Takes ownership.
    void addMacroAction(ChromaxisMacroAction *action);
    // Takes ownership: the action goes in at the position and the steps after it stay, one
    // place later. For a command that leaves the undone steps redoable.
    void insertAtPosition(ChromaxisMacroAction *action);
    virtual bool undo();
    virtual bool redo();
    void clear();
    // Moves the position directly, within 0..count(); the document uses it to follow its history.
    void setPosition(int position);

    int position() const { return m_position; }
    int count() const { return int(m_actions.size()); }
    // The steps that make up the macro now.
    std::vector<const ChromaxisMacroAction *> effectiveSteps() const;

private:
    std::vector<ChromaxisMacroAction *> m_actions; // owned, oldest first
    int m_position = 0;
};

// Macro files: a first line "chromaxis-macro 1", then each step as a line "%step NAME" followed
// by its parameter lines. A parameter line that itself starts with "%" is written with a second
// "%" in front, so any text survives the round trip.
namespace MacroFile {
struct Step
{
    QString name;
    QString parameters;
};
QByteArray encode(const std::vector<Step> &steps);
// Throws DescribedException on a text that is not a macro file.
std::vector<Step> decode(const QByteArray &text, const QString &path);
void write(const QString &path, const std::vector<Step> &steps);
std::vector<Step> read(const QString &path);
std::vector<Step> stepsOf(const ChromaxisMacroSystem &macros);
} // namespace MacroFile
