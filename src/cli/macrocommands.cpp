#include "macrocommands.h"

#include "cliargs.h"
#include "document/chromaxisdocument.h"
#include "document/documentcommands.h"
#include "document/documentproject.h"
#include "document/macroplayer.h"
#include "storage/palettedatabase.h"

int macroRun(CliContext &ctx)
{
    const CliArgs args(ctx.args, {});
    args.expectOperands(3);
    const QString macroPath = args.operands()[0];
    const QString input = args.operands()[1];
    const QString output = args.operands()[2];

    const std::vector<MacroFile::Step> steps = MacroFile::read(macroPath);
    ChromaxisDocument document;
    DocumentCommands(document, &PaletteDatabase::shipped(), DocumentCommands::DoNotRecord).open(input);
    MacroPlayer player(&PaletteDatabase::shipped());
    const MacroPlayer::Report report = player.play(document, steps);
    ProjectFile::write(output, DocumentProject::capture(document));
    if (!report.skipped.isEmpty())
        ctx.err << "warning: " << report.skipped.size()
                << " steps are unknown and were skipped: " << report.skippedText() << '\n';
    return ExitOk;
}
