#include "conversioncommands.h"

#include "cliargs.h"
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

// The document IN becomes when the window opens it: a project's image and palette, or an image
// file shown through the start-up palette. A fresh window has no last palette until an image in
// its own colours replaces the start-up palette.
struct Input
{
    DocumentImage image;
    Palette<uint> palette;
    Palette<uint> lastPalette;
    QString imageFileName;
};

Input openInput(const QString &path)
{
    if (!isProjectPath(path)) {
        DocumentImage image = DocumentImageIO::load(path);
        const Palette<uint> colours = DocumentCommands::ownColours(image, path);
        if (colours.isEmpty())
            return {std::move(image), grayscalePalette(), {}, path};
        return {std::move(image), colours, grayscalePalette(), path};
    }
    ProjectData project = ProjectFile::read(path);
    if (project.image.isNull())
        throw DescribedException(
            QStringLiteral("No image"),
            QStringLiteral("The project %1 holds no image.").arg(QFileInfo(path).fileName()));
    return {std::move(project.image), std::move(project.palette), {}, project.imageFileName};
}

// A project holding the result and its palette, or the image file (rendered through the palette,
// indexed where the result is and the format allows it; .npy keeps the cells).
void writeResult(const QString &path, DocumentImage image, const Palette<uint> &palette, const Input &input)
{
    if (isProjectPath(path)) {
        ProjectData project;
        project.palette = palette;
        project.paletteModified = palette != input.palette;
        project.image = std::move(image);
        project.imageFileName = input.imageFileName;
        project.imageModified = true;
        ProjectFile::write(path, project);
        return;
    }
    image.render(palette);
    DocumentImageIO::save(path, image);
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
    const Input input = openInput(args.operands()[0]);
    const PaletteDatabase &db = PaletteDatabase::shipped();
    ImageConverter converter(&db);
    settings.configure(converter, input.palette);
    showProgress(converter);
    DocumentImage result = converter.convert(input.image, input.palette);
    reportMissing(ctx, converter.missingPalettes());
    writeResult(args.operands()[1], std::move(result), converter.destinationPalette(), input);
    return ExitOk;
}

int imageQuantise(CliContext &ctx)
{
    const CliArgs args(ctx.args, settingsOptions());
    args.expectOperands(2);
    const ImageQuantisizeSettings settings =
        ImageQuantisizeSettings::fromPairs(settingsFromArgs(args, ImageQuantisizeSettings::settingsName));
    Input input = openInput(args.operands()[0]);
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
    writeResult(args.operands()[1], std::move(result), quantisizer.destinationPalette(), input);
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
    Input input = openInput(args.operands()[1]);
    // A transform moves the pixels and keeps the palette the image is shown with.
    FastConversions::Result r =
        transform ? FastConversions::Result{ImageTransforms::apply(name, input.image), input.palette}
                  : FastConversions::apply(name, input.image, input.palette, input.lastPalette);
    input.image = DocumentImage();
    writeResult(args.operands()[2], std::move(r.image), r.palette, input);
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
