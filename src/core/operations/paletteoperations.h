#pragma once

#include "palette/palette.h"
#include "storage/settingstext.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <set>

// Every palette operation, looked up by its dialog's settings name ("tint", "blur", ...) or,
// for those without settings, by its macro step name ("palette_invert_order", ...). The same
// function serves the dialog's live preview and its OK, chromaxis-cli palette apply and the
// macro player: each operation is written once, as a pure function of its inputs.
namespace PaletteOperations {

// palette and selection in, new palette out; settings are the pairs of a settings text (the
// first line's remainder included, which operations ignore). Bad settings throw
// DescribedException.
using Function =
    std::function<Palette<uint>(const Palette<uint> &palette, const std::set<int> &selection,
                                const SettingsText::Pairs &settings)>;

struct Operation
{
    Function function;
    // Generators make a palette from their settings alone; the command line accepts "-" as input.
    bool generator = false;
};

// Hands an operation to the registry; the families of operations register through it.
using Registrar = std::function<void(const QString &name, Operation operation)>;

void registerOperation(const QString &name, Operation operation);
bool exists(const QString &name);
bool isGenerator(const QString &name);
QStringList names();

// Throws DescribedException ("Unknown operation") for a name nobody registered.
Palette<uint> apply(const QString &name, const Palette<uint> &palette, const std::set<int> &selection,
                    const SettingsText::Pairs &settings = {});

// The "Selected only" rule of the palette dialogs: with the box checked and a non-empty
// selection only the selected entries change; an empty selection leaves every entry eligible.
inline bool isEligible(int index, bool selectedOnly, const std::set<int> &selection)
{
    return !selectedOnly || selection.empty() || selection.count(index) > 0;
}

// Registers the operations of the core library; safe to call more than once. Called by apply()
// and exists() on first use, so callers need not remember it.
void registerBuiltins();

} // namespace PaletteOperations
