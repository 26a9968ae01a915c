#pragma once

#include "imageconversiondialog.h"
#include "conversion/imagequantisizesettings.h"

class ImageQuantisizeSettingsWidget;
class PaletteDatabase;

// "Quantisize image": converts by colour with the image quantiser, onto a palette that is chosen,
// read or computed, through the chosen dithering.
class ImageQuantisizeDialog : public ImageConversionDialog
{
    Q_OBJECT
public:
    // image is what OK converts, shown with shownWith when it is indexed or continuous; given is
    // what "Current palette" (or "Last palette" with lastPalette) stands for; database is the
    // built-in collection "From DB" looks names up in (may be null); maximumColors limits the
    // quantised palette's size.
    ImageQuantisizeDialog(const DocumentImage &image, const Palette<uint> &shownWith,
                          const Palette<uint> &given, bool lastPalette, const PaletteDatabase *database,
                          const QString &connectionName, int maximumColors, QWidget *parent = nullptr);

    ImageQuantisizeSettings settings() const;
    ImageQuantisizeSettingsWidget *settingsWidget() const { return m_widget; }

    QString dialogName() const override { return ImageQuantisizeSettings::settingsName; }
    // The stored keys; the method and palette size are not among them.
    QString dialogSettings() const override;
    // The stored keys and the method and palette size, so that a replayed step computes the same
    // palette.
    QString settingsText() const override;

protected:
    void applyPairs(const SettingsText::Pairs &pairs) override;
    bool run() override;

private:
    DocumentImage m_image;
    Palette<uint> m_shownWith;
    Palette<uint> m_given;
    const PaletteDatabase *m_database = nullptr;
    ImageQuantisizeSettingsWidget *m_widget = nullptr;
};
