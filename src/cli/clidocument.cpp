#include "clidocument.h"

#include "cliargs.h"
#include "document/documentcommands.h"
#include "palette/describedexception.h"
#include "palette/standardpalettes.h"
#include "storage/documentimageio.h"

#include <QFileInfo>

CliDocument openCliDocument(const QString &path)
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

void writeImageResult(const QString &path, DocumentImage image, const Palette<uint> &palette,
                      ProjectData project)
{
    if (isProjectPath(path)) {
        project.palette = palette;
        project.image = std::move(image);
        project.imageModified = true;
        ProjectFile::write(path, project);
        return;
    }
    image.render(palette);
    DocumentImageIO::save(path, image);
}
