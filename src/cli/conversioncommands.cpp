#include "conversioncommands.h"

#include "cliargs.h"
#include "clidocument.h"
#include "palette/describedexception.h"
#include "storage/documentimageio.h"
#include "conversion/batchapply.h"
#include "conversion/fastconversions.h"
#include "conversion/imageconverter.h"
#include "conversion/imageconvertsettings.h"
#include "conversion/imagequantisizer.h"
#include "conversion/imagequantisizesettings.h"
#include "conversion/imagetransforms.h"
#include "document/documentcommands.h"
#include "storage/palettedatabase.h"
#include "storage/projectfile.h"
#include "palette/standardpalettes.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>
#include <unistd.h>

namespace {

// What a project result keeps of its input: the image's file, and whether the palette changed.
ProjectData resultProject(const Palette<uint> &palette, const CliDocument &input)
{
    ProjectData project;
    project.paletteModified = palette != input.palette;
    project.imageFileName = input.imageFileName;
    return project;
}

// A progress line on stderr, only when it is a terminal.
void showProgress(ImageConversionEngine &engine)
{
    if (!isatty(fileno(stderr)))
        return;
    QObject::connect(&engine, &ImageConversionEngine::progressChanged, [](int step, int percent) {
        std::fprintf(stderr, "\r%s %3d%%", step == 0 ? "computing palette" : "mapping pixels  ", percent);
        if (step == 1 && percent == 100)
            std::fputc('\n', stderr);
        std::fflush(stderr);
    });
}

void reportMissing(CliContext &ctx, const QStringList &missing)
{
    for (const QString &name : missing)
        ctx.err << "Palette not found, grayscale used instead: " << name << '\n';
    ctx.err.flush();
}

std::vector<CliArgs::Option> settingsOptions()
{
    return {{QStringLiteral("settings")}, {QStringLiteral("set"), true, true}};
}

} // namespace

int imageConvert(CliContext &ctx)
{
    const CliArgs args(ctx.args, settingsOptions());
    args.expectOperands(2);
    const ImageConvertSettings settings =
        ImageConvertSettings::fromPairs(settingsFromArgs(args, ImageConvertSettings::settingsName));
    const CliDocument input = openCliDocument(args.operands()[0]);
    const PaletteDatabase &db = PaletteDatabase::shipped();
    ImageConverter converter(&db);
    settings.configure(converter, input.palette);
    showProgress(converter);
    DocumentImage result = converter.convert(input.image, input.palette);
    reportMissing(ctx, converter.missingPalettes());
    writeImageResult(args.operands()[1], std::move(result), converter.destinationPalette(), resultProject(converter.destinationPalette(), input));
    return ExitOk;
}

int imageQuantise(CliContext &ctx)
{
    const CliArgs args(ctx.args, settingsOptions());
    args.expectOperands(2);
    const ImageQuantisizeSettings settings =
        ImageQuantisizeSettings::fromPairs(settingsFromArgs(args, ImageQuantisizeSettings::settingsName));
    CliDocument input = openCliDocument(args.operands()[0]);
    // The shipped palettes are parsed only when the palette comes from them ("From DB"): they
    // take megabytes beside an image that may take all the memory there is.
    ImageQuantisizer quantisizer(settings.palette == 4 ? &PaletteDatabase::shipped() : nullptr);
    settings.configure(quantisizer, input.palette);
    showProgress(quantisizer);
    DocumentImage result;
    {
        const Palette<uint> colors = quantisizer.colorsFor(input.image, input.palette);
        result = quantisizer.apply(input.image, colors, input.palette);
    }
    input.image = DocumentImage(); // the source is not needed for writing
    reportMissing(ctx, quantisizer.missingPalettes());
    writeImageResult(args.operands()[1], std::move(result), quantisizer.destinationPalette(), resultProject(quantisizer.destinationPalette(), input));
    return ExitOk;
}

int imageFast(CliContext &ctx)
{
    const CliArgs args(ctx.args, {});
    args.expectOperands(3);
    const QString name = args.operands()[0];
    const bool transform = ImageTransforms::exists(name);
    if (!transform && !FastConversions::exists(name))
        throw CliUsageError{
            QStringLiteral("unknown conversion '%1'; one of: %2")
                .arg(elidedValue(name), (FastConversions::names() + ImageTransforms::names()).join(QStringLiteral(", ")))};
    CliDocument input = openCliDocument(args.operands()[1]);
    // A transform moves the pixels and keeps the palette the image is shown with.
    FastConversions::Result r =
        transform ? FastConversions::Result{ImageTransforms::apply(name, input.image), input.palette}
                  : FastConversions::apply(name, input.image, input.palette, input.lastPalette);
    input.image = DocumentImage();
    writeImageResult(args.operands()[2], std::move(r.image), r.palette, resultProject(r.palette, input));
    return ExitOk;
}

int imageBatch(CliContext &ctx)
{
    const CliArgs args(ctx.args, settingsOptions());
    if (args.operands().size() < 2)
        throw CliUsageError{QStringLiteral("image batch needs OUTDIR and at least one FILE")};
    ImageConvertSettings settings =
        ImageConvertSettings::fromPairs(settingsFromArgs(args, ImageConvertSettings::settingsName));
    settings.folder = args.operands()[0];
    QFileInfoList files;
    for (const QString &path : args.operands().mid(1))
        files << QFileInfo(path);
    // A fresh window shows the start-up palette; that is the current palette here.
    const BatchApply batch(settings, grayscalePalette(), &PaletteDatabase::shipped());
    const BatchApply::Report report = batch.run(files);
    if (report.complete())
        return ExitOk;
    ctx.err << report.text(QDir(settings.folder).absolutePath()) << '\n';
    ctx.err.flush();
    return report.failures.isEmpty() && !report.cancelled ? ExitOk : ExitFailure;
}
