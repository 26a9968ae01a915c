#include "projectcommands.h"

#include "cliargs.h"
#include "clijson.h"
#include "document/documentcommands.h"
#include "palette/describedexception.h"
#include "storage/documentimageio.h"
#include "storage/projectfile.h"
#include "palette/standardpalettes.h"
#include "operations/selectionlist.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

namespace {

QJsonValue imageJson(const ProjectData &project)
{
    const DocumentImage &image = project.image;
    if (image.isNull())
        return QJsonValue::Null;
    const QByteArray digest =
        QCryptographicHash::hash(ProjectFile::pixelBytes(image), QCryptographicHash::Sha256);
    return QJsonObject{{QStringLiteral("mode"), image.mode()},
                       {QStringLiteral("width"), image.width()},
                       {QStringLiteral("height"), image.height()},
                       {QStringLiteral("interpolate"), image.interpolate()},
                       {QStringLiteral("fileName"), project.imageFileName},
                       {QStringLiteral("modified"), project.imageModified},
                       {QStringLiteral("pixelsSha256"), QString::fromLatin1(digest.toHex())}};
}

} // namespace

int projectShow(CliContext &ctx)
{
    const CliArgs args(ctx.args, {});
    args.expectOperands(1);
    const ProjectData project = ProjectFile::read(args.operands()[0]);

    QJsonObject palette = paletteJson(project.palette);
    palette.insert(QStringLiteral("fileName"), project.paletteFileName);
    palette.insert(QStringLiteral("modified"), project.paletteModified);
    palette.insert(QStringLiteral("fixedSize"), project.fixedPaletteSize);
    palette.insert(QStringLiteral("fillColor"), colourJson(project.fillColor));
    QJsonArray selection;
    for (const int index : project.selection)
        selection.append(index);
    const QJsonObject json{{QStringLiteral("version"), project.version},
                           {QStringLiteral("dbIndex"), double(project.builtinIndex)},
                           {QStringLiteral("palette"), palette},
                           {QStringLiteral("image"), imageJson(project)},
                           {QStringLiteral("selection"), selection}};
    ctx.out << QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact)) << '\n';
    return ExitOk;
}

int projectCreate(CliContext &ctx)
{
    const QString paletteOption = QStringLiteral("palette");
    const QString imageOption = QStringLiteral("image");
    const QString selectOption = QStringLiteral("select");
    const CliArgs args(ctx.args, {{paletteOption}, {imageOption}, {selectOption}});
    args.expectOperands(1);
    const QString out = args.operands()[0];
    if (!isProjectPath(out))
        throw CliUsageError{QStringLiteral("'%1' is not a project file name (*.cxw)").arg(out)};
    if (args.has(selectOption))
        checkSelectionList(args.value(selectOption)); // wrong usage is found before anything is read

    // As the window does it: the palette is opened first, so an RGB image opened after it stays;
    // an indexed image opened alone brings its own colours, and one opened before a palette keeps
    // that palette.
    ProjectData project;
    project.palette = grayscalePalette();
    if (args.has(paletteOption)) {
        const QString path = args.value(paletteOption);
        if (isProjectPath(path)) {
            const ProjectData source = ProjectFile::read(path);
            project.palette = source.palette;
            project.paletteFileName = source.paletteFileName;
        } else {
            project.palette = readPaletteFile(path, QString());
            project.paletteFileName = path;
        }
    }
    if (args.has(imageOption)) {
        const QString path = args.value(imageOption);
        if (isProjectPath(path)) {
            const ProjectData source = ProjectFile::read(path);
            project.image = source.image;
            project.imageFileName = source.imageFileName;
        } else {
            project.image = DocumentImageIO::load(path);
            project.imageFileName = path;
            const Palette<uint> colours = DocumentCommands::ownColours(project.image, path);
            if (!colours.isEmpty() && !args.has(paletteOption))
                project.palette = colours;
        }
    }
    // Indexes past the palette's end are kept: the palette view ignores them, and the selection
    // pattern's "Full palette" makes one.
    if (args.has(selectOption))
        project.selection = SelectionList::parse(args.value(selectOption));
    ProjectFile::write(out, project);
    return ExitOk;
}
