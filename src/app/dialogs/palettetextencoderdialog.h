#pragma once

#include "palette/palette.h"
#include "export/palettetextencoder.h"
#include "utils/qt/widgets/dialogsettingsio.h"

#include <QDialog>

class QComboBox;
class QLineEdit;
class QPlainTextEdit;

// Edits the template through which a palette becomes text, with a preview of the dialog's palette
// encoded through it. Serves "Export palette as text..." and "Palette clipboard format...".
class PaletteTextEncoderDialog : public QDialog, public DialogSettingsIO::DialogSettingsIOParent
{
    Q_OBJECT
public:
    PaletteTextEncoderDialog(const Palette<uint> &palette, const QString &connectionName,
                             QWidget *parent = nullptr);

    // Restores the last-used template, or the first preset when there is none.
    void start();

    PaletteTextEncoder::Template encoderTemplate() const;
    // Shows a template, as if the user had typed it.
    void setEncoderTemplate(const PaletteTextEncoder::Template &tmpl);
    QString previewText() const;
    DialogSettingsIO *settingsIO() const { return m_settingsIO; }

    QString dialogName() const override { return PaletteTextEncoder::settingsName; }
    QString dialogSettings() const override;
    void applySettings(const SettingsText::Pairs &pairs) override;

public slots:
    void accept() override;

private slots:
    void textEdited();
    void encodingChanged(int index);

private:
    void updatePreview();

    Palette<uint> m_palette;
    QLineEdit *m_header = nullptr;
    QLineEdit *m_entry = nullptr;
    QLineEdit *m_divider = nullptr;
    QLineEdit *m_bottom = nullptr;
    QComboBox *m_encoding = nullptr;
    QPlainTextEdit *m_preview = nullptr;
    DialogSettingsIO *m_settingsIO = nullptr;
};
