#pragma once

#include "conversion/imageconvertsettings.h"

#include <QWidget>

class BatchDestinationWidget;
class PaletteDatabase;
class PaletteSourceEdit;
class QCheckBox;
class QComboBox;

// The controls of the image conversion: the destination palette and where it comes from, the
// destination mode and interpolation, and, for batch application, the destination folder and
// extension. The list positions are the settings' values as they stand.
class ImageConvertSettingsWidget : public QWidget
{
    Q_OBJECT
public:
    // lastPalette names list position 2 "Last palette" instead of "Current palette"; database is
    // what the "From DB" browse button shows (may be null).
    ImageConvertSettingsWidget(bool lastPalette, const PaletteDatabase *database, QWidget *parent = nullptr);

    ImageConvertSettings settings() const;
    void setSettings(const ImageConvertSettings &settings);
    // Shows the destination folder and extension.
    void setBatchMode(bool batch);
    bool isBatchMode() const { return m_batch; }

signals:
    void changed();

private:
    void updateEnabled();

    QComboBox *m_palette = nullptr;
    PaletteSourceEdit *m_dbPalette = nullptr;
    PaletteSourceEdit *m_filePalette = nullptr;
    QComboBox *m_mode = nullptr;
    QCheckBox *m_interpolate = nullptr;
    BatchDestinationWidget *m_destination = nullptr;
    bool m_batch = false;
};
