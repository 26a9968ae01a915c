#pragma once

#include "conversion/imageconvertsettings.h"
#include "palette/palette.h"

#include <QFileInfoList>
#include <QString>
#include <QStringList>

#include <functional>

class PaletteDatabase;

// Applies a palette to many image files: each image is converted with the conversion settings,
// the given palette standing for the "current palette" choice, and written to the settings'
// destination folder under its own base name with the settings' extension. A file that fails
// does not stop the run; the report lists it. The window, the command line and the tests run
// the very same loop.
class BatchApply
{
public:
    struct Report
    {
        int total = 0;
        int written = 0;
        bool cancelled = false;
        QStringList failures;        // "name: message", one line each
        QStringList missingPalettes; // database or file palettes that were replaced by grayscale

        bool complete() const { return !cancelled && failures.isEmpty() && missingPalettes.isEmpty(); }
        // The text a user reads after a run that was not complete.
        QString text(const QString &folder) const;
    };

    // Called before each file (percent 0) and while it converts (1..99); index counts from 0. Returning
    // false cancels the run after the current file.
    using Progress = std::function<bool(int index, int count, const QString &fileName, int percent)>;

    BatchApply(const ImageConvertSettings &settings, const Palette<uint> &current, const PaletteDatabase *builtins);

    // The files of folder that look like images, by name.
    static QFileInfoList imageFiles(const QString &folder);
    // The file a source is written to.
    QString targetOf(const QFileInfo &source) const;
    // How many targets of files exist already, for the question before they are replaced.
    int existingTargets(const QFileInfoList &files) const;

    // Creates the destination folder when needed (throws DescribedException when it cannot) and
    // converts every file.
    Report run(const QFileInfoList &files, const Progress &progress = {}) const;

private:
    ImageConvertSettings m_settings;
    Palette<uint> m_current;
    const PaletteDatabase *m_builtins;
};
