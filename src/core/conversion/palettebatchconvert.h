#pragma once

#include "formats/exportoptions.h"

#include <QFileInfoList>
#include <QString>
#include <QStringList>

#include <functional>

// Converts many palette files to one format: each file is read as "Open palette..." reads it (a
// project gives its palette) and written into the destination folder under its own base name
// with the format's extension, as "Save palette as..." writes it. A file that fails does not stop
// the run; the report lists it. A run never destroys its own input or output: a result does not
// take the place of any file of the batch, nor of a result an earlier file of the run wrote.
// The window, the command line and the tests run this very loop.
class PaletteBatchConvert
{
public:
    struct Report
    {
        int total = 0;
        int written = 0;
        bool cancelled = false;
        QStringList failures; // "name: message", one line each

        bool complete() const { return !cancelled && failures.isEmpty(); }
        // The text a user reads after a run that was not complete.
        QString text(const QString &folder) const;
    };

    // Called before each file with its position (from 0); returning false cancels the run there,
    // leaving that file and the ones after it alone.
    using Progress = std::function<bool(int index, int count, const QString &fileName)>;

    // target is a palette format word of formatFromWord ("gimp", "gpl", "jasc", ...) or "cxw" for
    // projects holding the palette and no image. Throws DescribedException for any other word.
    PaletteBatchConvert(const QString &folder, const QString &target, const ExportOptions &options = {});

    // The extensions the results can have, without the dot, one a format: what a dialog offers.
    static QStringList targetExtensions();
    // The results' extension with its dot: ".gpl", ".jasc", ".cxw", ...
    QString extension() const { return QLatin1Char('.') + m_extension; }
    // The file a source is written to.
    QString targetOf(const QFileInfo &source) const;
    // How many targets of files exist already, for the question before they are replaced.
    int existingTargets(const QFileInfoList &files) const;

    // Creates the destination folder when needed (throws DescribedException when it cannot) and
    // converts every file.
    Report run(const QFileInfoList &files, const Progress &progress = {}) const;

private:
    QString m_folder;
    QString m_extension;
    int m_format = 0; // FormatUnknown stands for a project
    ExportOptions m_options;
};
