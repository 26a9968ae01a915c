#include "imagecommands.h"

#include "cliargs.h"
#include "clijson.h"
#include "describedexception.h"
#include "documentimageio.h"
#include "palettedatabase.h"
#include "standardpalettes.h"

#include <QBuffer>
#include <QImageWriter>
#include <QJsonDocument>

namespace {

// The image a file becomes when the window opens it, shown through the start-up palette as in
// a fresh window.
DocumentImage openedImage(const QString &path, bool &projectPath)
{
    projectPath = isProjectPath(path);
    if (projectPath)
        return {};
    return DocumentImageIO::load(path);
}

PaletteDatabase loadDatabase()
{
    PaletteDatabase db;
    db.loadFromFile(QStringLiteral(":res/texts/db.txt"));
    return db;
}

} // namespace

int imageShow(CliContext &ctx)
{
    const CliArgs args(ctx.args, {});
    args.expectOperands(1);
    bool project = false;
    DocumentImage image = openedImage(args.operands()[0], project);
    if (project)
        return notAvailableYet(ctx);
    const Palette<uint> palette = grayscalePalette();
    image.render(palette);
    const QJsonObject json{{QStringLiteral("width"), image.width()},
                           {QStringLiteral("height"), image.height()},
                           {QStringLiteral("mode"), image.mode()},
                           {QStringLiteral("interpolate"), image.interpolate()},
                           {QStringLiteral("palette"), entriesJson(palette)}};
    ctx.out << QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact)) << '\n';
    return ExitOk;
}

int imageRender(CliContext &ctx)
{
    const CliArgs args(ctx.args, {{QStringLiteral("palette")}, {QStringLiteral("interpolate")}});
    args.expectOperands(2);
    bool project = false;
    DocumentImage image = openedImage(args.operands()[0], project);
    if (project || isProjectPath(args.value(QStringLiteral("palette"))))
        return notAvailableYet(ctx);
    if (args.has(QStringLiteral("interpolate"))) {
        const QString v = args.value(QStringLiteral("interpolate"));
        if (v != QLatin1String("0") && v != QLatin1String("1"))
            throw CliUsageError{QStringLiteral("--interpolate takes 0 or 1")};
        image.setInterpolate(v == QLatin1String("1"));
    }
    const Palette<uint> palette = args.has(QStringLiteral("palette"))
                                      ? readPaletteFile(args.value(QStringLiteral("palette")), QString())
                                      : grayscalePalette();
    image.render(palette);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    if (!writer.write(image.picture().convertToFormat(QImage::Format_ARGB32)))
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Unable to save %1.").arg(args.operands()[1]));
    writeOutput(args.operands()[1], png);
    return ExitOk;
}

int dbList(CliContext &ctx)
{
    const CliArgs args(ctx.args, {});
    args.expectOperands(0);
    const PaletteDatabase db = loadDatabase();
    for (const QString &name : db.names())
        ctx.out << name << '\n';
    return ExitOk;
}

int dbShow(CliContext &ctx)
{
    const CliArgs args(ctx.args, {});
    args.expectOperands(1);
    const auto palette = loadDatabase().lookup(args.operands()[0]);
    if (!palette)
        throw DescribedException(QStringLiteral("Palette database"),
                                 QStringLiteral("No palette named '%1' in the database.").arg(args.operands()[0]));
    ctx.out << QString::fromUtf8(QJsonDocument(paletteJson(*palette)).toJson(QJsonDocument::Compact)) << '\n';
    return ExitOk;
}
