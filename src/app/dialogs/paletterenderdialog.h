#pragma once

#include "export/palettepicture.h"
#include "palette/palette.h"
#include "utils/qt/widgets/dialogsettingsio.h"

#include <QDialog>
#include <QImage>

class QLabel;
class QSpinBox;
class SelectColorButton;

// The geometry of a palette picture (paddings, spacings, cell size, columns, background) with a
// preview of the dialog's palette drawn with it. Serves "Export palette as image..." and "Print
// palette", which take picture() after OK.
class PaletteRenderDialog : public QDialog, public DialogSettingsIO::DialogSettingsIOParent
{
    Q_OBJECT
public:
    PaletteRenderDialog(const Palette<uint> &palette, const QString &connectionName, QWidget *parent = nullptr);

    // Restores the last-used settings, or the first preset when there are none.
    void start();

    PalettePicture::Settings settings() const;
    // Shows settings, as if the user had set the controls.
    void setSettings(const PalettePicture::Settings &settings);
    // The dialog's palette drawn with the current settings: what the preview shows.
    QImage picture() const;
    DialogSettingsIO *settingsIO() const { return m_settingsIO; }
    QSpinBox *spinBox(const QString &key) const;
    SelectColorButton *colorButton() const { return m_color; }
    QLabel *preview() const { return m_preview; }

    QString dialogName() const override { return PalettePicture::settingsName; }
    QString dialogSettings() const override;
    void applySettings(const SettingsText::Pairs &pairs) override;

public slots:
    void accept() override;
    void setPadding(int);
    void setSpacing(int);
    void setSize(int);
    void setShape(int);
    void setColor();

private:
    void changed();
    void updatePreview();

    Palette<uint> m_palette;
    QList<QSpinBox *> m_spins; // in the order of the settings keys
    SelectColorButton *m_color = nullptr;
    QColor m_background = Qt::white;
    QLabel *m_preview = nullptr;
    DialogSettingsIO *m_settingsIO = nullptr;
    bool m_loading = false;
};
