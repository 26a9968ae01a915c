#include "imagecommands.h"

#include "cliargs.h"
#include "clidocument.h"
#include "clijson.h"
#include "document/documentcommands.h"
#include "export/animationexport.h"
#include "export/pictureprint.h"
#include "palette/describedexception.h"
#include "storage/documentimageio.h"
#include "storage/palettedatabase.h"
#include "storage/projectfile.h"
#include "palette/standardpalettes.h"

#include <QFileInfo>
#include <QJsonDocument>

namespace {

// A whole number for one of animation's options; anything else is a usage error.
int intOption(const CliArgs &args, const QString &name)
{
    if (!args.has(name))
        throw CliUsageError{QStringLiteral("animation needs --%1").arg(name)};
    bool ok = false;
    const int value = args.value(name).toInt(&ok);
    if (!ok)
        throw CliUsageError{QStringLiteral("--%1 takes a whole number, not '%2'").arg(name, elidedValue(args.value(name)))};
    return value;
}

} // namespace

int imageShow(CliContext &ctx)
{
    const CliArgs args(ctx.args, {});
    args.expectOperands(1);
    CliDocument document = openCliDocument(args.operands()[0]);
    DocumentImage &image = document.image;
    const Palette<uint> &palette = document.palette;
    image.render(palette);
    // The image's palette: the file's colour table, or the palette the cells are shown with; an
    // RGB image has none.
    const QJsonObject json{{QStringLiteral("width"), image.width()},
                           {QStringLiteral("height"), image.height()},
                           {QStringLiteral("mode"), image.mode()},
                           {QStringLiteral("interpolate"), image.interpolate()},
                           {QStringLiteral("palette"),
                            entriesJson(image.mode() == DocumentImage::RGB ? Palette<uint>() : palette)}};
    ctx.out << QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact)) << '\n';
    return ExitOk;
}

int imageRender(CliContext &ctx)
{
    const CliArgs args(ctx.args, {{QStringLiteral("palette")}, {QStringLiteral("interpolate")}});
    args.expectOperands(2);
    if (args.has(QStringLiteral("interpolate"))) {
        const QString v = args.value(QStringLiteral("interpolate"));
        if (v != QLatin1String("0") && v != QLatin1String("1"))
            throw CliUsageError{QStringLiteral("--interpolate takes 0 or 1")};
    }
    CliDocument document = openCliDocument(args.operands()[0]);
    DocumentImage &image = document.image;
    if (args.has(QStringLiteral("interpolate")))
        image.setInterpolate(args.value(QStringLiteral("interpolate")) == QLatin1String("1"));
    const Palette<uint> palette = args.has(QStringLiteral("palette"))
                                      ? readPaletteFile(args.value(QStringLiteral("palette")), QString())
                                      : document.palette;
    image.render(palette);
    DocumentImageIO::savePicture(args.operands()[1], image.picture().convertToFormat(QImage::Format_ARGB32),
                                 QSize(image.width(), image.height()), "png");
    return ExitOk;
}

int imagePrint(CliContext &ctx)
{
    const CliArgs args(ctx.args, {{QStringLiteral("palette")}});
    args.expectOperands(2);
    CliDocument document = openCliDocument(args.operands()[0]);
    DocumentImage &image = document.image;
    image.render(args.has(QStringLiteral("palette")) ? readPaletteFile(args.value(QStringLiteral("palette")), QString())
                                                     : document.palette);
    PicturePrint::printToPdf(image.picture(), args.operands()[1]);
    return ExitOk;
}

int dbList(CliContext &ctx)
{
    const CliArgs args(ctx.args, {});
    args.expectOperands(0);
    const PaletteDatabase &db = PaletteDatabase::shipped();
    for (const QString &name : db.names())
        ctx.out << name << '\n';
    return ExitOk;
}

int dbShow(CliContext &ctx)
{
    const CliArgs args(ctx.args, {});
    args.expectOperands(1);
    const auto palette = PaletteDatabase::shipped().lookup(args.operands()[0]);
    if (!palette)
        throw DescribedException(
            QStringLiteral("Palette database"),
            QStringLiteral("No palette named '%1' in the database.").arg(elidedValue(args.operands()[0])));
    ctx.out << QString::fromUtf8(QJsonDocument(paletteJson(*palette)).toJson(QJsonDocument::Compact)) << '\n';
    return ExitOk;
}

int animation(CliContext &ctx)
{
    const CliArgs args(ctx.args, {{QStringLiteral("start")},
                                  {QStringLiteral("end")},
                                  {QStringLiteral("fps")},
                                  {QStringLiteral("palette")}});
    args.expectOperands(2);
    const AnimationExport::Settings settings{intOption(args, QStringLiteral("start")),
                                             intOption(args, QStringLiteral("end")),
                                             intOption(args, QStringLiteral("fps"))};
    CliDocument document = openCliDocument(args.operands()[0]);
    const Palette<uint> palette = args.has(QStringLiteral("palette"))
                                      ? readPaletteFile(args.value(QStringLiteral("palette")), QString())
                                      : document.palette;
    const QString &out = args.operands()[1];
    AnimationExport::check(out, document.image, palette, settings);
    const AnimationExport::Result result = AnimationExport::write(out, document.image, palette, settings);
    if (result.outcome != AnimationExport::Outcome::Written)
        throw DescribedException(QStringLiteral("Animation export error"), result.error);
    return ExitOk;
}
