#include "operationcommands.h"

#include "cliargs.h"
#include "palette/describedexception.h"
#include "formats/paletteformats.h"
#include "operations/paletteoperations.h"
#include "storage/projectfile.h"
#include "operations/selectionpattern.h"
#include "storage/settingsvalues.h"
#include "operations/selectionlist.h"

namespace {

const QString optFrom = QStringLiteral("from");
const QString optTo = QStringLiteral("to");
const QString optSettings = QStringLiteral("settings");
const QString optSet = QStringLiteral("set");
const QString optSelect = QStringLiteral("select");
const QString optSize = QStringLiteral("size");

// The generators that take neither settings nor a palette, by their macro step names.
const QStringList parameterlessGenerators = {
    QStringLiteral("palette_generate_grayscale"), QStringLiteral("palette_generate_extgrayscale"),
    QStringLiteral("palette_generate_huerot256"), QStringLiteral("palette_generate_huerot1024")};

// A palette file by the format of its extension (or --to), or a project holding the palette and
// no image for ".cxw": the one output that keeps every 32-bit word.
void writePalette(const QString &path, const Palette<uint> &palette, const QString &formatWord)
{
    if (isProjectPath(path, formatWord)) {
        ProjectData project;
        project.palette = palette;
        ProjectFile::write(path, project);
        return;
    }
    exportPalette(path, palette, paletteFormatFor(path, formatWord));
}

} // namespace

int paletteApply(CliContext &ctx)
{
    const CliArgs args(ctx.args, {{optFrom}, {optTo}, {optSettings}, {optSet, true, true}, {optSelect}});
    args.expectOperands(3);
    const QString operation = args.operands()[0];
    const QString in = args.operands()[1];
    const QString out = args.operands()[2];
    // Usage is checked first, then the operation, so that neither a typo nor an unknown name
    // costs a read.
    if (args.has(optSelect))
        checkSelectionList(args.value(optSelect));
    if (in == QLatin1String("-") && PaletteOperations::exists(operation) &&
        !PaletteOperations::isGenerator(operation))
        throw CliUsageError{
            QStringLiteral("'-' stands for no input palette, which only generators accept; '%1' needs one")
                .arg(elidedValue(operation))};
    if (!PaletteOperations::exists(operation))
        PaletteOperations::apply(operation, {}, {}); // throws "Unknown operation"
    const SettingsText::Pairs settings = settingsFromArgs(args, operation);

    const Palette<uint> palette =
        in == QLatin1String("-") ? Palette<uint>() : readPaletteFile(in, args.value(optFrom));
    const std::set<int> selection =
        args.has(optSelect) ? SelectionList::parse(args.value(optSelect), palette.size()) : std::set<int>();
    writePalette(out, PaletteOperations::apply(operation, palette, selection, settings), args.value(optTo));
    return ExitOk;
}

int paletteGenerate(CliContext &ctx)
{
    const CliArgs args(ctx.args, {{optTo}, {optSize}});
    args.expectOperands(2);
    const QString name = args.operands()[0];
    const QString out = args.operands()[1];
    if (!parameterlessGenerators.contains(name))
        throw CliUsageError{QStringLiteral("'%1' is not one of %2")
                                .arg(elidedValue(name), parameterlessGenerators.join(QStringLiteral(", ")))};
    int size = -1;
    if (args.has(optSize)) {
        bool ok = false;
        size = args.value(optSize).toInt(&ok);
        if (!ok || size < 1 || size > SettingsValues::maximumPaletteSize)
            throw CliUsageError{QStringLiteral("--size takes a palette size 1..%1, not '%2'")
                                    .arg(SettingsValues::maximumPaletteSize)
                                    .arg(elidedValue(args.value(optSize)))};
    }
    Palette<uint> palette = PaletteOperations::apply(name, {}, {});
    // A palette of fixed size N keeps its length: the generated colours are cut to N, or padded
    // with the palette view's initial fill colour, opaque black.
    if (size >= 0)
        palette.resize(size, RGBAColor<uint>(0, 0, 0, 65535));
    writePalette(out, palette, args.value(optTo));
    return ExitOk;
}

int paletteSelect(CliContext &ctx)
{
    const CliArgs args(ctx.args, {{optFrom}, {optSettings}, {optSet, true, true}});
    args.expectOperands(1);
    const SettingsText::Pairs settings = settingsFromArgs(args, SelectionPatternSettings::settingsName);
    const SelectionPatternSettings pattern = SelectionPatternSettings::fromPairs(settings);
    const Palette<uint> palette = readPaletteFile(args.operands()[0], args.value(optFrom));
    for (const int index : SelectionPattern::select(palette.size(), pattern))
        ctx.out << index << '\n';
    return ExitOk;
}
