#include "cliargs.h"

#include "palette/describedexception.h"
#include "formats/paletteformats.h"
#include "formats/writefileatomically.h"
#include "operations/selectionlist.h"
#include "storage/projectfile.h"

#include <QFileInfo>

#include <cstdio>

namespace {

const CliArgs::Option *findOption(const std::vector<CliArgs::Option> &options, const QString &name)
{
    for (const auto &option : options)
        if (option.name == name)
            return &option;
    return nullptr;
}

} // namespace

CliArgs::CliArgs(const QStringList &args, const std::vector<Option> &options)
{
    bool optionsEnded = false;
    for (int i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        if (optionsEnded || !arg.startsWith(QLatin1String("--"))) {
            m_operands << arg;
            continue;
        }
        if (arg == QLatin1String("--")) {
            optionsEnded = true;
            continue;
        }
        const int equals = arg.indexOf(QLatin1Char('='));
        const QString name = arg.mid(2, equals < 0 ? -1 : equals - 2);
        const Option *option = findOption(options, name);
        if (!option)
            throw CliUsageError{QStringLiteral("unknown option '--%1'").arg(elidedValue(name))};
        QString value;
        if (!option->takesValue) {
            if (equals >= 0)
                throw CliUsageError{QStringLiteral("option '--%1' takes no value").arg(name)};
        } else if (equals >= 0) {
            value = arg.mid(equals + 1);
        } else if (i + 1 < args.size()) {
            value = args[++i];
        } else {
            throw CliUsageError{QStringLiteral("option '--%1' needs a value").arg(name)};
        }
        if (!option->repeatable && has(name))
            throw CliUsageError{QStringLiteral("option '--%1' given twice").arg(name)};
        m_given.emplace_back(name, value);
    }
}

void CliArgs::expectOperands(int n) const
{
    if (m_operands.size() != n)
        throw CliUsageError{QStringLiteral("expected %1 arguments, got %2").arg(n).arg(m_operands.size())};
}

bool CliArgs::has(const QString &name) const
{
    for (const auto &given : m_given)
        if (given.first == name)
            return true;
    return false;
}

QString CliArgs::value(const QString &name) const
{
    const QStringList all = values(name);
    return all.isEmpty() ? QString() : all.last();
}

QStringList CliArgs::values(const QString &name) const
{
    QStringList all;
    for (const auto &given : m_given)
        if (given.first == name)
            all << given.second;
    return all;
}

void checkSelectionList(const QString &list)
{
    // The empty text is the empty selection elsewhere; an option given empty is a slip.
    if (list.isEmpty())
        throw CliUsageError{QStringLiteral("--select needs at least one index")};
    try {
        SelectionList::ranges(list);
    } catch (const DescribedException &e) {
        throw CliUsageError{e.message()};
    }
}

bool isProjectPath(const QString &path, const QString &word)
{
    const QString effective = word.isEmpty() ? QFileInfo(path).suffix() : word;
    return effective.compare(QLatin1String("cxw"), Qt::CaseInsensitive) == 0;
}

int paletteFormatFor(const QString &path, const QString &word)
{
    if (word.isEmpty())
        return formatFromWord(QFileInfo(path).suffix());
    const int format = formatFromWord(word);
    if (format == FormatUnknown)
        throw CliUsageError{QStringLiteral("'%1' is not a palette format").arg(elidedValue(word))};
    return format;
}

Palette<uint> readPaletteFile(const QString &path, const QString &formatWord, bool raw)
{
    // A project's palette comes with the properties it was saved with, as opening the project installs it.
    if (isProjectPath(path, formatWord))
        return ProjectFile::read(path).palette;
    const int format = paletteFormatFor(path, formatWord);
    if (format == FormatUnknown)
        throw DescribedException(
            QStringLiteral("Could not load"),
            QStringLiteral("Unable to load palette %1.\nUnrecognized format.").arg(path));
    Palette<uint> palette;
    importPalette(path, palette, format);
    if (!raw)
        recordPaletteFileName(palette, path);
    return palette;
}

SettingsText::Pairs settingsFromArgs(const CliArgs &args, const QString &dialogName)
{
    SettingsText::Pairs pairs;
    if (args.has(QStringLiteral("settings")))
        pairs = SettingsText::readFile(args.value(QStringLiteral("settings")), dialogName);
    for (const QString &assignment : args.values(QStringLiteral("set"))) {
        const int equals = assignment.indexOf(QLatin1Char('='));
        if (equals <= 0)
            throw CliUsageError{QStringLiteral("'--set %1' is not KEY=VALUE").arg(elidedValue(assignment))};
        pairs.emplace_back(assignment.left(equals), assignment.mid(equals + 1));
    }
    return pairs;
}

void writeOutput(const QString &path, const QByteArray &bytes)
{
    const FileWriteResult written =
        writeFileAtomically(path == QLatin1String("-") ? standardOutputPath : path, bytes);
    if (written.ok())
        return;
    if (path == QLatin1String("-"))
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Unable to write to the standard output.\n%1").arg(written.error));
    throw DescribedException(QStringLiteral("Could not save"),
                             QStringLiteral("Unable to save palette under\n%1.\n%2")
                                 .arg(path,
                                      written.stage == FileWriteResult::NotOpened
                                          ? QStringLiteral("Could not open file.\n") + written.error
                                          : written.error));
}
