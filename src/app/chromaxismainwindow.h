#pragma once

#include "chromaxisdocument.h"
#include "presetdatabase.h"

#include <QMainWindow>

#include <memory>

class CXPropertyWidget;
class PaletteDatabase;
class QAction;
class QLabel;
class QPrinter;
class QScrollArea;

class ChromaxisMainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit ChromaxisMainWindow(PaletteDatabase *builtinPalettes, QWidget *parent = nullptr);
    ~ChromaxisMainWindow() override;

    ChromaxisDocument &document() { return m_document; }
    const ChromaxisDocument &document() const { return m_document; }
    CXPropertyWidget *propertyWidget() const { return m_properties; }
    const PresetDatabase &presetDatabase() const { return m_presets; }

    bool isShiftHeld() const { return m_shiftHeld; }
    bool isControlHeld() const { return m_controlHeld; }

    // The unsaved-changes questions; false means the user cancelled and the caller must stop.
    bool maybeSaveImage();
    bool maybeSavePalette();

    // Shows the palette and image state in the property panel.
    void updateProperties();

public slots:
    void zoomChanged(double factor);
    void paletteViewPaletteChange();
    void paletteViewSelectionChange();
    bool saveImage();
    bool savePalette();

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;

private:
    void createActions();
    void createMenus();
    void createToolBars();
    void createStatusBar();
    void readSettings();
    void writeSettings() const;
    void openPresetDatabase();
    void updateActions();
    void notAvailableYet(const QString &what);

    PaletteDatabase *m_builtinPalettes = nullptr;
    ChromaxisDocument m_document;
    PresetDatabase m_presets;
    std::unique_ptr<QPrinter> m_printer;

    QLabel *m_imageView = nullptr;
    QScrollArea *m_imageScroll = nullptr;
    QWidget *m_paletteArea = nullptr;
    QScrollArea *m_paletteScroll = nullptr;
    CXPropertyWidget *m_properties = nullptr;

    QAction *m_exitAct = nullptr;
    QAction *m_showStatusBarAct = nullptr;

    bool m_shiftHeld = false;
    bool m_controlHeld = false;
};
