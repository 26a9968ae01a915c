#pragma once

#include "imageconversiondialog.h"
#include "conversion/imageconvertsettings.h"

class ImageConvertSettingsWidget;
class PaletteDatabase;
class QLineEdit;

// "Convert image": converts by brightness with the image converter. For batch application the
// same dialog, titled "Batch apply palette", asks for the folder of images and the destination
// folder and extension instead, and converts nothing itself.
class ImageConvertDialog : public ImageConversionDialog
{
    Q_OBJECT
public:
    enum Purpose
    {
        ConvertImage,
        BatchApply
    };

    // given is what "Current palette" (or "Last palette" with lastPalette) stands for; database
    // is the built-in collection "From DB" looks names up in (may be null).
    ImageConvertDialog(Purpose purpose, const Palette<uint> &given, bool lastPalette,
                       const PaletteDatabase *database, const QString &connectionName,
                       QWidget *parent = nullptr);

    // The image OK converts and the palette it is shown with (for indexed and continuous images).
    void setImage(const DocumentImage &image, const Palette<uint> &shownWith);

    ImageConvertSettings settings() const;
    ImageConvertSettingsWidget *settingsWidget() const { return m_widget; }
    Purpose purpose() const { return m_purpose; }
    // Batch application: the folder whose images are converted.
    QString sourceFolder() const;
    void setSourceFolder(const QString &folder);

    QString dialogName() const override { return ImageConvertSettings::settingsName; }
    QString dialogSettings() const override;
    QString settingsText() const override;

protected:
    void applyPairs(const SettingsText::Pairs &pairs) override;
    bool run() override;

private:
    Purpose m_purpose = ConvertImage;
    Palette<uint> m_given;
    const PaletteDatabase *m_database = nullptr;
    DocumentImage m_image;
    Palette<uint> m_shownWith;
    ImageConvertSettingsWidget *m_widget = nullptr;
    QLineEdit *m_sourceFolder = nullptr;
};
