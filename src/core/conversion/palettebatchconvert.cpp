#include "conversion/palettebatchconvert.h"

#include "formats/paletteformats.h"
#include "palette/describedexception.h"
#include "storage/projectfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QSet>

#include <exception>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("PaletteBatchConvert", text);
}

const QString projectExtension = QStringLiteral("cxw");

// One line of the report; messages span lines in boxes, a report line does not.
QString failureLine(const QFileInfo &file, const QString &message)
{
    return QStringLiteral("%1: %2").arg(file.fileName(), QString(message).replace('\n', ' '));
}

Palette<uint> readSource(const QFileInfo &file)
{
    if (file.suffix().compare(projectExtension, Qt::CaseInsensitive) == 0)
        return ProjectFile::read(file.filePath()).palette;
    return openPaletteFile(file.filePath());
}

} // namespace

QString PaletteBatchConvert::Report::text(const QString &folder) const
{
    QString report = tr("%1 of %2 palettes were written to %3.").arg(written).arg(total).arg(folder);
    if (cancelled)
        report += QLatin1Char('\n') + tr("The run was cancelled.");
    if (!failures.isEmpty())
        report +=
            QStringLiteral("\n\n") + tr("These palettes failed:") + QLatin1Char('\n') + failures.join('\n');
    return report;
}

PaletteBatchConvert::PaletteBatchConvert(const QString &folder, const QString &target,
                                         const ExportOptions &options)
    : m_folder(folder), m_options(options)
{
    if (target.compare(projectExtension, Qt::CaseInsensitive) == 0) {
        m_extension = projectExtension;
        return;
    }
    m_format = formatFromWord(target);
    if (m_format == FormatUnknown)
        throw DescribedException(tr("Batch convert palettes"),
                                 tr("'%1' is not a palette format.").arg(target));
    m_extension = extensionOfFormat(m_format);
}

QStringList PaletteBatchConvert::targetExtensions()
{
    QStringList extensions;
    for (int format = FormatUnknown + 1; format <= FormatLast; ++format)
        extensions << extensionOfFormat(format);
    return extensions << projectExtension;
}

QString PaletteBatchConvert::targetOf(const QFileInfo &source) const
{
    return QDir(m_folder).absoluteFilePath(source.completeBaseName() + extension());
}

int PaletteBatchConvert::existingTargets(const QFileInfoList &files) const
{
    int existing = 0;
    for (const QFileInfo &file : files)
        if (QFileInfo::exists(targetOf(file)))
            ++existing;
    return existing;
}

PaletteBatchConvert::Report PaletteBatchConvert::run(const QFileInfoList &files,
                                                     const Progress &progress) const
{
    if (m_folder.isEmpty() || !QDir().mkpath(m_folder))
        throw DescribedException(tr("Batch convert palettes"),
                                 tr("Could not create the destination folder '%1'.").arg(m_folder));
    Report report;
    report.total = int(files.size());
    QSet<QString> sources; // by absolute path, as the targets
    for (const QFileInfo &file : files)
        sources.insert(file.absoluteFilePath());
    QSet<QString> written;
    for (int index = 0; index < report.total; ++index) {
        const QFileInfo &file = files[index];
        if (progress && !progress(index, report.total, file.fileName())) {
            report.cancelled = true;
            break;
        }
        const QString target = QFileInfo(targetOf(file)).absoluteFilePath();
        if (target == file.absoluteFilePath()) {
            report.failures << failureLine(file, tr("The result would replace the palette itself."));
            continue;
        }
        if (sources.contains(target)) {
            report.failures << failureLine(file, tr("The result would replace %1, a palette of this batch.")
                                                     .arg(QFileInfo(target).fileName()));
            continue;
        }
        if (written.contains(target)) {
            report.failures << failureLine(file,
                                           tr("%1 was already written from another palette of this batch.")
                                               .arg(QFileInfo(target).fileName()));
            continue;
        }
        try {
            const Palette<uint> palette = readSource(file);
            if (m_format == FormatUnknown) {
                ProjectData project;
                project.palette = palette;
                project.paletteFileName = file.filePath();
                ProjectFile::write(target, project);
            } else {
                exportPalette(target, palette, m_format, m_options);
            }
            written.insert(target);
            ++report.written;
        } catch (const DescribedException &e) {
            report.failures << failureLine(file, e.message());
        } catch (const std::exception &e) {
            // Out of memory on a hostile file, say: that file fails, the batch goes on.
            report.failures << failureLine(file, QString::fromLocal8Bit(e.what()));
        }
    }
    return report;
}
