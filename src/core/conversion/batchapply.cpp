#include "conversion/batchapply.h"

#include "conversion/imageconverter.h"
#include "palette/describedexception.h"
#include "storage/documentimageio.h"

#include <QCoreApplication>
#include <QDir>
#include <QImageReader>

namespace {

QString tr(const char *text, int n = -1)
{
    return QCoreApplication::translate("BatchApply", text, nullptr, n);
}

// One line of the report; messages span lines in boxes, a report line does not.
QString failureLine(const QFileInfo &file, const QString &message)
{
    return QStringLiteral("%1: %2").arg(file.fileName(), QString(message).replace('\n', ' '));
}

} // namespace

QString BatchApply::Report::text(const QString &folder) const
{
    QString report = tr("%1 of %2 images were written to %3.").arg(written).arg(total).arg(folder);
    if (cancelled)
        report += QLatin1Char('\n') + tr("The run was cancelled.");
    if (!failures.isEmpty())
        report += QStringLiteral("\n\n") + tr("These images failed:") + QLatin1Char('\n') + failures.join('\n');
    if (!missingPalettes.isEmpty())
        report += QStringLiteral("\n\n") + tr("These palettes could not be found; the grayscale palette was used:") +
                  QLatin1Char('\n') + missingPalettes.join('\n');
    return report;
}

BatchApply::BatchApply(const ImageConvertSettings &settings, const Palette<uint> &current,
                       const PaletteDatabase *builtins)
    : m_settings(settings), m_current(current), m_builtins(builtins)
{
}

QFileInfoList BatchApply::imageFiles(const QString &folder)
{
    QStringList patterns{QStringLiteral("*.npy"), QStringLiteral("*.npz")};
    for (const QByteArray &format : QImageReader::supportedImageFormats())
        patterns << QStringLiteral("*.") + QString::fromLatin1(format);
    patterns.removeDuplicates();
    return QDir(folder).entryInfoList(patterns, QDir::Files, QDir::Name);
}

QString BatchApply::targetOf(const QFileInfo &source) const
{
    return QDir(m_settings.folder).absoluteFilePath(source.completeBaseName() + m_settings.extension);
}

int BatchApply::existingTargets(const QFileInfoList &files) const
{
    int existing = 0;
    for (const QFileInfo &file : files)
        if (QFileInfo::exists(targetOf(file)))
            ++existing;
    return existing;
}

BatchApply::Report BatchApply::run(const QFileInfoList &files, const Progress &progress) const
{
    if (m_settings.folder.isEmpty() || !QDir().mkpath(m_settings.folder))
        throw DescribedException(tr("Batch apply palette"),
                                 tr("Could not create the destination folder '%1'.").arg(m_settings.folder));
    Report report;
    report.total = int(files.size());
    ImageConverter converter(m_builtins);
    m_settings.configure(converter, m_current);
    int current = 0;
    QString currentName;
    if (progress)
        QObject::connect(&converter, &ImageConversionEngine::progressChanged, &converter,
                         [&](int, int percent) {
                             if (!progress(current, report.total, currentName, qBound(1, percent, 99)))
                                 converter.cancel();
                         });
    for (current = 0; current < report.total && !report.cancelled; ++current) {
        const QFileInfo &file = files[current];
        currentName = file.fileName();
        if (progress && !progress(current, report.total, currentName, 0)) {
            report.cancelled = true;
            break;
        }
        const QString target = targetOf(file);
        // Never let a result take the place of the image it came from.
        if (QFileInfo(target).absoluteFilePath() == file.absoluteFilePath()) {
            report.failures << failureLine(file, tr("The result would replace the image itself."));
            continue;
        }
        try {
            const DocumentImage image = DocumentImageIO::load(file.absoluteFilePath());
            // A file's indexed picture shows its own colour table; cells are shown through the palette.
            const Palette<uint> shownWith = image.mode() == DocumentImage::Indexed8 ? Palette<uint>() : m_current;
            DocumentImage result = converter.convert(image, shownWith);
            if (result.isNull()) {
                report.cancelled = converter.wasCancelled();
                if (!report.cancelled)
                    report.failures << failureLine(file, tr("The image is empty."));
                continue;
            }
            result.render(converter.destinationPalette());
            DocumentImageIO::save(target, result);
            ++report.written;
        } catch (const DescribedException &e) {
            report.failures << failureLine(file, e.message());
        }
    }
    report.missingPalettes = converter.missingPalettes();
    return report;
}
