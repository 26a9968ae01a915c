#include "palettecommands.h"

#include "cliargs.h"
#include "clijson.h"
#include "conversion/palettebatchconvert.h"
#include "palette/describedexception.h"
#include "formats/exportoptions.h"
#include "formats/paletteformats.h"
#include "export/palettetextencoder.h"
#include "storage/projectfile.h"
#include "operations/selectionlist.h"

#include <QBuffer>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

#include <cstdio>
#include <unistd.h>

namespace {

const QString from = QStringLiteral("from");
const QString to = QStringLiteral("to");

ExportOptions exportOptionsFrom(const CliArgs &args)
{
    ExportOptions options;
    for (const QString &assignment : args.values(QStringLiteral("option"))) {
        try {
            options.setFromText(assignment);
        } catch (const DescribedException &e) {
            throw CliUsageError{QStringLiteral("--option %1: %2").arg(elidedValue(assignment), e.message())};
        }
    }
    return options;
}

// A project that holds the palette of in and no image, as the window saves it after opening in.
ProjectData paletteProject(const QString &in, const QString &formatWord)
{
    ProjectData project;
    if (isProjectPath(in, formatWord)) {
        const ProjectData source = ProjectFile::read(in);
        project.palette = source.palette;
        project.paletteFileName = source.paletteFileName;
    } else {
        project.palette = readPaletteFile(in, formatWord);
        project.paletteFileName = in;
    }
    return project;
}

} // namespace

int paletteShow(CliContext &ctx)
{
    const CliArgs args(ctx.args, {{from}, {QStringLiteral("raw"), false}});
    args.expectOperands(1);
    const QString path = args.operands()[0];
    const Palette<uint> palette = readPaletteFile(path, args.value(from), args.has(QStringLiteral("raw")));
    writePaletteJson(ctx.out, palette);
    ctx.out << '\n';
    return ExitOk;
}

int paletteConvert(CliContext &ctx)
{
    const CliArgs args(ctx.args, {{from}, {to}, {QStringLiteral("option"), true, true}});
    args.expectOperands(2);
    const QString in = args.operands()[0];
    const QString out = args.operands()[1];
    // Options and the output format are checked before anything is read, so a typo costs nothing.
    const ExportOptions options = exportOptionsFrom(args);
    if (isProjectPath(out, args.value(to))) {
        if (args.has(QStringLiteral("option")))
            throw CliUsageError{QStringLiteral("a project file takes no export options")};
        // The lossless hand-over: a project keeps every 32-bit word and the properties.
        ProjectFile::write(out, paletteProject(in, args.value(from)));
        return ExitOk;
    }
    const int format = paletteFormatFor(out, args.value(to));
    const Palette<uint> palette = readPaletteFile(in, args.value(from));
    exportPalette(out, palette, format, options);
    return ExitOk;
}

int paletteText(CliContext &ctx)
{
    const QString select = QStringLiteral("select");
    const CliArgs args(ctx.args,
                       {{from}, {QStringLiteral("settings")}, {QStringLiteral("set"), true, true}, {select}});
    args.expectOperands(2);
    const QString in = args.operands()[0];
    const QString out = args.operands()[1];
    if (args.has(select))
        checkSelectionList(args.value(select)); // a malformed list is wrong usage, found before any reading
    const PaletteTextEncoder::Template tmpl = PaletteTextEncoder::fromSettings(
        settingsFromArgs(args, PaletteTextEncoder::settingsName), PaletteTextEncoder::clipboardTemplate());

    const Palette<uint> palette = readPaletteFile(in, args.value(from));
    const std::set<int> selection =
        args.has(select) ? SelectionList::parse(args.value(select), palette.size()) : std::set<int>();

    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QTextStream stream(&buffer);
    stream.setCodec("UTF-8"); // what a template with an unknown encoding name gets
    PaletteTextEncoder::encode(tmpl, palette, selection, stream);
    ctx.out.flush();
    writeOutput(out, bytes);
    return ExitOk;
}

int paletteBatch(CliContext &ctx)
{
    const CliArgs args(ctx.args, {{to}, {QStringLiteral("option"), true, true}});
    if (args.operands().size() < 2)
        throw CliUsageError{QStringLiteral("palette batch needs OUTDIR and at least one FILE")};
    const QString word = args.value(to);
    if (word.isEmpty())
        throw CliUsageError{QStringLiteral("palette batch needs --to WORD")};
    const bool project = isProjectPath(QString(), word);
    if (!project)
        paletteFormatFor(QString(), word); // an unknown word is wrong usage, found before any work
    const ExportOptions options = exportOptionsFrom(args);
    if (project && args.has(QStringLiteral("option")))
        throw CliUsageError{QStringLiteral("a project file takes no export options")};

    const QString folder = args.operands()[0];
    QFileInfoList files;
    for (const QString &path : args.operands().mid(1))
        files << QFileInfo(path);
    const PaletteBatchConvert batch(folder, word, options);
    PaletteBatchConvert::Progress progress;
    if (isatty(fileno(stderr)))
        progress = [](int index, int count, const QString &name) {
            std::fprintf(stderr, "\r\033[Kconverting %d of %d: %s", index + 1, count, qPrintable(name));
            if (index + 1 == count)
                std::fputc('\n', stderr);
            std::fflush(stderr);
            return true;
        };
    const PaletteBatchConvert::Report report = batch.run(files, progress);
    if (report.complete())
        return ExitOk;
    ctx.err << report.text(QDir(folder).absolutePath()) << '\n';
    ctx.err.flush();
    return ExitFailure;
}
