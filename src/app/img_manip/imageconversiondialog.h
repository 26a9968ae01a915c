#pragma once

#include "document/documentimage.h"
#include "palette/palette.h"
#include "utils/qt/widgets/dialogsettingsio.h"

#include <QDialog>
#include <QStringList>

#include <functional>

class ImageConversionEngine;
class QDialogButtonBox;

// What the conversion and quantise dialogs share: their controls above the settings row and
// OK / Cancel, and running their engine on OK behind a progress dialog whose Cancel stops it.
// The dialogs only collect settings and call the engines; the caller takes the result image and
// palette into the document.
class ImageConversionDialog : public QDialog, public DialogSettingsIO::DialogSettingsIOParent
{
    Q_OBJECT
public:
    explicit ImageConversionDialog(const QString &connectionName, QWidget *parent = nullptr);

    // Restores the last-used settings, or the first built-in preset.
    void start();
    DialogSettingsIO *settingsIO() const { return m_settingsIO; }
    QDialogButtonBox *buttons() const { return m_buttons; }

    // The complete settings text, as a macro step records it.
    virtual QString settingsText() const = 0;

    // After acceptance: the converted image (not rendered) and the palette to show it with.
    const DocumentImage &resultImage() const { return m_result; }
    const Palette<uint> &resultPalette() const { return m_resultPalette; }
    // Database names and file paths that could not be resolved; grayscale stood in for them.
    const QStringList &missingPalettes() const { return m_missing; }

    void applySettings(const SettingsText::Pairs &pairs) override;

    // How long a conversion runs before its progress dialog shows; until then it cannot be
    // cancelled, which is no loss for the small images that finish sooner.
    void setProgressDelay(int milliseconds) { m_progressDelay = milliseconds; }

public slots:
    void accept() override;

protected:
    // Builds the dialog around controls: the controls, the settings row and OK / Cancel. Called
    // once, at the end of the derived constructor.
    void setControls(QWidget *controls);
    // Puts settings pairs into the controls; throws DescribedException for a value its control
    // does not have.
    virtual void applyPairs(const SettingsText::Pairs &pairs) = 0;
    // The work of OK; false keeps the dialog open (cancelled, or something to correct first).
    virtual bool run() = 0;
    // Every control's change ends here: the settings no longer show the chosen entry.
    void controlChanged();
    // Runs conversion, which calls engine, behind a progress dialog; false when it was cancelled.
    // On success the result, the engine's palette and its missing list are kept.
    bool runEngine(ImageConversionEngine &engine, const std::function<DocumentImage()> &conversion);

private:
    QString m_connection;
    DialogSettingsIO *m_settingsIO = nullptr;
    QDialogButtonBox *m_buttons = nullptr;
    DocumentImage m_result;
    Palette<uint> m_resultPalette;
    QStringList m_missing;
    int m_progressDelay = 400;
    bool m_applying = false;
};
