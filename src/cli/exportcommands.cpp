#include "exportcommands.h"

#include "cliargs.h"
#include "export/palettepicture.h"
#include "export/pictureprint.h"

namespace {

const QString from = QStringLiteral("from");
const QString preset = QStringLiteral("preset");

struct PictureRequest
{
    Palette<uint> palette;
    PalettePicture::Settings settings;
    QString out;
};

// The palette and the picture settings: a preset by its name (or the dialog's initial values),
// then the --settings file, then each --set in order.
PictureRequest pictureRequest(const CliContext &ctx)
{
    const CliArgs args(ctx.args, {{from},
                                  {QStringLiteral("settings")},
                                  {QStringLiteral("set"), true, true},
                                  {preset}});
    args.expectOperands(2);
    PalettePicture::Settings base;
    if (args.has(preset))
        base = PalettePicture::preset(args.value(preset));
    const PalettePicture::Settings settings =
        PalettePicture::fromSettings(settingsFromArgs(args, PalettePicture::settingsName), base);
    return {readPaletteFile(args.operands()[0], args.value(from)), settings, args.operands()[1]};
}

} // namespace

int paletteRender(CliContext &ctx)
{
    const PictureRequest request = pictureRequest(ctx);
    PalettePicture::save(request.out, request.palette, request.settings);
    return ExitOk;
}

int palettePrint(CliContext &ctx)
{
    const PictureRequest request = pictureRequest(ctx);
    PicturePrint::printToPdf(PalettePicture::paint(request.palette, request.settings), request.out);
    return ExitOk;
}
