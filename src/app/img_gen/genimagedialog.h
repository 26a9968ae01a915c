#pragma once

#include "generators/generatorsettings.h"
#include "palette/palette.h"
#include "storage/settingstext.h"
#include "utils/qt/widgets/dialogsettingsio.h"

#include <QDialog>
#include <QHash>

class GenImageWidget;
class QBoxLayout;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFormLayout;
class QGroupBox;
class QSpinBox;

// The common ground of the image generator dialogs: the preview, the generator's page, the
// output (size and target kind), the settings row, OK and Cancel. Every control is named after
// its settings key; the settings are read from the controls and parsed by GeneratorSettings, the
// same parser the presets, the command line and the macro player go through, so a dialog only
// lays out its page. The dialog never touches the document: the window renders its settings
// after OK.
class GenImageDialog : public QDialog, public DialogSettingsIO::DialogSettingsIOParent
{
    Q_OBJECT
public:
    // name: the generator's settings name ("mandelbrot", "julia", ...).
    GenImageDialog(const QString &name, const Palette<uint> &palette, const QString &connectionName,
                   QWidget *parent = nullptr);

    // Restores the last-used settings (or the first preset) and shows them in the preview.
    void start();
    // The settings the controls show.
    GeneratorSettings settings() const;
    // The settings text of a macro step: the name line and the generator's key:value lines.
    QString settingsText() const;
    GenImageWidget *preview() const { return m_preview; }
    DialogSettingsIO *settingsIO() const { return m_settingsIO; }
    const QString &name() const { return m_name; }

    QString dialogName() const override { return m_name; }
    QString dialogSettings() const override { return settings().settingsText(); }
    void applySettings(const SettingsText::Pairs &pairs) override;

public slots:
    void accept() override;

protected:
    // Builds the dialog around the derived dialog's page and preview: the page (one group box
    // titled groupTitle), the output group and the settings row. Called once, at the end of the
    // derived constructor, after the page's controls were made.
    void setPage(const QString &groupTitle, QBoxLayout *page, GenImageWidget *preview);

    // Controls named after their key, each reporting its changes. The double fields show as many
    // digits as a value needs, up to decimals.
    QDoubleSpinBox *makeNumber(const char *key, double minimum, double maximum, int decimals);
    QSpinBox *makeInteger(const char *key, int minimum, int maximum);
    QComboBox *makeList(const char *key, const QStringList &texts);
    QCheckBox *makeCheckBox(const char *key, const QString &text);
    // A group of labelled fields: (label, key) pairs of controls made above.
    QGroupBox *makeGroup(const QString &title, const QList<QPair<QString, const char *>> &fields);
    // The "View" and "Computation" groups of the fractal pages; withConstant adds the Julia
    // constant, escapeTime the "Double precision" and "Smooth colouring" boxes.
    QGroupBox *makeViewGroup(double offsetLimit);
    QGroupBox *makeComputationGroup(bool withConstant, bool escapeTime);

private:
    void controlChanged();
    void viewDragged(double xoff, double yoff, double zoom);
    // The controls' values as the generator's pairs, in its table order.
    SettingsText::Pairs controlPairs() const;
    void showSettings(const GeneratorSettings &settings);
    QWidget *control(const QString &key) const { return m_controls.value(key); }

    QString m_name;
    Palette<uint> m_palette;
    QString m_connection;
    QHash<QString, QWidget *> m_controls;
    GenImageWidget *m_preview = nullptr;
    DialogSettingsIO *m_settingsIO = nullptr;
    bool m_applying = false;
};
