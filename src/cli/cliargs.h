#pragma once

#include "clicontext.h"
#include "palette/palette.h"
#include "storage/settingstext.h"

#include <QString>
#include <QStringList>

#include <set>
#include <utility>
#include <vector>

// The options and operands of one command. Options may stand anywhere among the operands, as
// "--name value" or "--name=value"; "--" ends the options. Anything not declared, a missing
// value or a repeated single option is a usage error.
class CliArgs
{
public:
    struct Option
    {
        QString name;            // without the leading "--"
        bool takesValue = true;  // false: a flag
        bool repeatable = false; // values collect in order
    };

    CliArgs(const QStringList &args, const std::vector<Option> &options);

    const QStringList &operands() const { return m_operands; }
    // Usage error unless exactly n operands were given.
    void expectOperands(int n) const;

    bool has(const QString &name) const;
    // The value of a single option; empty when it was not given.
    QString value(const QString &name) const;
    QStringList values(const QString &name) const;

private:
    QStringList m_operands;
    std::vector<std::pair<QString, QString>> m_given; // name, value in command-line order
};

// A --select list that is empty or malformed is a usage error, found before anything is read; the
// indexes themselves come from SelectionList::parse once the palette's size is known.
void checkSelectionList(const QString &list);

// Whether a path stands for a project file: the format word (given, or else the extension) is "cxw".
bool isProjectPath(const QString &path, const QString &word = {});

// The palette format of path: the format word when one is given (an unknown word is a usage
// error), else its extension, which may well map to no format (FormatUnknown).
int paletteFormatFor(const QString &path, const QString &word);

// Reads a palette file as the main window opens it: an extension without a format is refused
// with the window's message, and unless raw the file name is recorded in the properties.
// A project file (see isProjectPath) gives its palette as stored.
Palette<uint> readPaletteFile(const QString &path, const QString &formatWord, bool raw = false);

// The settings of a dialog: the --settings file when given, then each --set KEY=VALUE in order.
SettingsText::Pairs settingsFromArgs(const CliArgs &args, const QString &dialogName);

// Writes bytes to path whole or not at all (writeFileAtomically), or to stdout for "-".
void writeOutput(const QString &path, const QByteArray &bytes);
