#pragma once

#include "document/chromaxismacrosystem.h"
#include "spaces/rgbacolor.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <map>
#include <set>
#include <vector>

class ChromaxisDocument;
class DocumentCommands;
class PaletteDatabase;

// Replays recorded steps on a document, headless. The player is a table from step name to the
// document command the window runs for it (DocumentCommands), so a replay does what the user
// did. Steps that only move the view (zoom) play as nothing; steps whose command is not known
// here are skipped and reported, never silently dropped.
class MacroPlayer
{
public:
    // Parameters of a step as key -> value (the first ":" splits; later keys win).
    using Parameters = std::map<QString, QString>;
    using Handler = std::function<void(MacroPlayer &, DocumentCommands &, const Parameters &)>;

    struct Report
    {
        int played = 0;
        QStringList skipped; // step names, in order
        // The skipped names for a message: each distinct name once, each cut short, the first
        // few of them and how many more there were.
        QString skippedText() const;
    };

    // builtins is the collection the "from DB" steps and the conversions look palettes up in.
    explicit MacroPlayer(const PaletteDatabase *builtins);
    MacroPlayer();

    // Adds or replaces the handler of a step name; features register their steps here.
    static void registerStep(const QString &name, Handler handler);
    static bool knows(const QString &name);
    // A handler that only this player uses, ahead of the registered ones: steps that need the
    // face playing the macro, such as the window's prints, which ask the user first.
    void setOwnStep(const QString &name, Handler handler) { m_own[name] = std::move(handler); }

    // Plays the steps in order. A failing step throws its DescribedException; what was played
    // before it stays applied.
    Report play(ChromaxisDocument &document, const std::vector<MacroFile::Step> &steps);

    static Parameters parseParameters(const QString &text);

    // The colours "copy" put aside, for a later "paste" or "replace" of the same macro: a replay
    // must not depend on what the system clipboard holds at the time.
    std::vector<RGBAColor<uint>> clipboard;
    bool clipboardSingle = false;

private:
    static std::map<QString, Handler> &registry();

    const PaletteDatabase *m_builtins;
    std::map<QString, Handler> m_own;
};
