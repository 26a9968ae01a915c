#pragma once

#include "conversion/imagequantisizesettings.h"

#include <QWidget>

class BatchDestinationWidget;
class PaletteDatabase;
class PaletteSourceEdit;
class QComboBox;
class QSpinBox;

// The controls of the quantiser: the "Destination palette" group (the palette list, the method
// and palette size of the quantized source, the database name and the palette file), the
// "Dithering" list and the "Destination format" list, and, for batch application, the
// destination folder and extension. The list positions go to the engine as they stand.
class ImageQuantisizeSettingsWidget : public QWidget
{
    Q_OBJECT
public:
    // lastPalette names list position 2 "Last palette" instead of "Current palette"; database is
    // what the "From DB" browse button shows (may be null); maximumColors limits "Palette size:".
    ImageQuantisizeSettingsWidget(bool lastPalette, const PaletteDatabase *database, int maximumColors,
                                  QWidget *parent = nullptr);

    // All values, the method and palette size included.
    ImageQuantisizeSettings settings() const;
    void setSettings(const ImageQuantisizeSettings &settings);
    void setBatchMode(bool batch);
    bool isBatchMode() const { return m_batch; }

signals:
    void changed();

private:
    void updateEnabled();

    QComboBox *m_palette = nullptr;
    QComboBox *m_method = nullptr;
    QSpinBox *m_colors = nullptr;
    PaletteSourceEdit *m_dbPalette = nullptr;
    PaletteSourceEdit *m_filePalette = nullptr;
    QComboBox *m_dither = nullptr;
    QComboBox *m_format = nullptr;
    BatchDestinationWidget *m_destination = nullptr;
    // Stored with the black-and-white source; no control changes it.
    int m_bwThreshold = 128;
    bool m_batch = false;
};
