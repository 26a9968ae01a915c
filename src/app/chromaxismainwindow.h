#pragma once

#include "document/chromaxisdocument.h"
#include "document/documentcommands.h"
#include "storage/presetdatabase.h"

#include <QHash>
#include <QMainWindow>

#include <functional>

class CXPropertyWidget;
class ImageLabel;
class PaletteDatabase;
class GenImageDialog;
class PaletteDialog;
class PaletteView;
class MacroPlayer;
class QPrinter;
class QAction;
class QActionGroup;
class QLabel;
class QMenu;
class QScrollArea;
class QToolBar;

class DescribedException;
class QDragEnterEvent;
class QDropEvent;

// The main window: the shell (chromaxismainwindow.cpp) builds the views, actions, menus and tool
// bars and follows the document; each menu's commands live in a file of their own (_file, _edit,
// _palette, _image, _view, _help), the title and the status fields in _status. A command slot only
// gathers what the user chose and shows the result: the change itself is a DocumentCommands call,
// shared with the macro player and the CLI.
class ChromaxisMainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit ChromaxisMainWindow(PaletteDatabase *builtinPalettes, QWidget *parent = nullptr);
    ~ChromaxisMainWindow() override;

    ChromaxisDocument &document() { return m_document; }
    DocumentCommands &commands() { return m_commands; }
    static constexpr int maxRecentFiles = 8;
    const ChromaxisDocument &document() const { return m_document; }
    CXPropertyWidget *propertyWidget() const { return m_properties; }
    PaletteView *paletteView() const { return m_paletteView; }
    ImageLabel *imageView() const { return m_imageView; }
    const PresetDatabase &presetDatabase() const { return m_presets; }
    // The action of a command by its slot name ("openImage", "paletteNextDB", ...).
    QAction *action(const QString &slotName) const { return m_actions.value(slotName); }
    double scale() const { return m_scale; }
    int maximumPaletteSize() const { return m_maximumPaletteSize; }
    int rgbOnLoadAction() const { return m_rgbOnLoadAction; }

    bool isShiftHeld() const { return m_shiftHeld; }
    bool isControlHeld() const { return m_controlHeld; }

    // The unsaved-changes questions; false means the user cancelled and the caller must stop.
    bool maybeSaveImage();
    bool maybeSavePalette();

    // Opening without a file dialog, as the command line and dropped files do; errors are shown
    // in message boxes and leave the document as it was. Return whether the file was opened.
    bool loadImageFile(const QString &path);
    bool loadProjectFile(const QString &path);
    bool saveProjectFile(const QString &path);
    bool loadPaletteFile(const QString &path);
    bool saveImageFile(const QString &path);
    bool savePaletteFile(const QString &path);
    // Opens each file as the matching "Open ..." command would, chosen by its extension.
    void openFiles(const QStringList &paths);

    // Installs a palette as the document's palette (one history step).
    void installPalette(const Palette<uint> &palette, bool modified);
    // Plays a macro file on the document; returns false when it failed (a message was shown).
    bool playMacroFile(const QString &path);

    // Shows the palette and image state in the property panel.
    void updateProperties();

public slots:
    // File
    void newProject();
    void openProject();
    bool saveProject();
    bool saveProjectAs();
    void openImage();
    bool saveImage();
    bool saveImageAs();
    void closeImage();
    void openPalette();
    bool savePalette();
    bool savePaletteAs();
    // Edit
    void undo();
    void redo();
    void clearHistory();
    void macroRecord();
    void macroSave();
    void macroPlay();
    void cut();
    void copy();
    void paste();
    void replace();
    void deleteA();
    void edit();
    void selectAll();
    void selectNone();
    void selectInvert();
    void loadSelection();
    void saveSelection();
    // Palette
    void paletteBrowseDB();
    void paletteRandomDB();
    void palettePrevDB();
    void paletteNextDB();
    void paletteFixSize();
    void paletteSetDefaultColor();
    // Image
    void imageInterpolateEntries();
    // Image conversions, the quantiser and batch application
    void imageModeConvert();
    void imageModeGrayscale();
    void imageModeExtendedGrayscale();
    void imageModeContinuousGrayscale();
    void imageModeIndexedLastPalette();
    void imageModeContinuousLastPalette();
    void imageModeIndexed8bit();
    void imageModeIndexed32bitInt();
    void imageModeContinuous();
    void imageQuantisize();
    void imageBatchApply();
    void imageExportAnimation();
    // A fast conversion by its macro step name, as one history step and one macro step.
    void imageFastConvert(const QString &step);
    // Image > Transform, and a transform by its macro step name
    void imageMirrorHorizontally();
    void imageMirrorVertically();
    void imageRotateCW();
    void imageRotateCCW();
    void imageTransform(const QString &step);
    // Image > Generate (chromaxismainwindow_generate.cpp)
    void imageGenerateMandelbrot();
    void imageGenerateJulia();
    void imageGenerateApollonian();
    void imageGenerateNoise();
    void imageGeneratePlasma();
    void imageGenerateGradient();
    void imageGenerateMoiree();
    // Palette > Batch convert palettes...
    void paletteBatchConvert();
    // View
    void normalSize();
    void zoomIn();
    void zoomOut();
    void zoomChanged(double val);
    void fitToWindow();
    // Settings and help
    void showStatusBar();
    void about();
    void help();
    void visit();
    void openPDFdocs();
    // Palette generators, manipulation dialogs, selection pattern and text export
    void paletteGenerateGrayScale();
    void paletteGenerateExtendedGrayScale();
    void paletteGenerateHueRot256();
    void paletteGenerateHueRot1024();
    void paletteInterpolateSelected();
    void paletteOrderInvert();
    void paletteOrderShift();
    void paletteGenerateInterpolation();
    void paletteInterpolateSelectedExt();
    void paletteGenerateUsingCosini();
    void paletteManipulateBrightnessContrast();
    void paletteManipulateHueSaturationValue();
    void paletteManipulateComponents();
    void paletteManipulateBlur();
    void paletteManipulateTint();
    void paletteManipulateGradientTint();
    // Sorting, sharpening, resizing and the pattern commands (chromaxismainwindow_palette2.cpp)
    void paletteSortColors();
    void paletteManipulateSharpen();
    void paletteSetSize();
    void paletteGenerateUsingPattern();
    void paletteGeneratePersianRaster();
    void paletteAppendMirrored();
    void selectPattern();
    void exportPaletteToText();
    // Palette pictures and prints (chromaxismainwindow_export.cpp)
    void exportPaletteToImage();
    void printPalette();
    void printImage();
    void settingsPaletteCopyFormat();
    // Previews of the palette dialogs; neither changes the document until OK commits the preview.
    // adaptPalette shows a changed current palette, which keeps its name and file: what the
    // manipulations make. adaptPaletteOnly shows a palette alone, made from settings and
    // inheriting nothing, which has no file until saved: what the generators make, so that "Save
    // palette" cannot overwrite the old palette's file with an unrelated one.
    void adaptPalette(const Palette<uint> &palette);
    void adaptPaletteOnly(const Palette<uint> &palette);
    // The palette view
    void paletteViewPaletteChange();
    void paletteViewSelectionChange();

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private slots:
    void documentPaletteChanged();
    void documentImageChanged();
    void documentSettingsChanged();
    void documentSelectionChanged();
    void updateHistoryActions();
    void updateWindowTitle();

private:
    void createActions();
    void createActionGroups();
    void createMenus();
    void createToolBars();
    void createStatusBar();
    void fillMenu(QMenu *menu, const std::vector<const char *> &items);
    void readSettings();
    void writeSettings() const;
    void openPresetDatabase();
    void updateActions();
    void showImage();
    void setScale(double scale);
    // The title's name and the zoom field of the status bar (chromaxismainwindow_status.cpp).
    void createStatusFields();
    QString documentName() const;
    void updateZoomLabel();
    // Runs a document command; a failure is shown in a message box. Returns whether it succeeded.
    bool run(const std::function<void()> &command);
    void showError(const DescribedException &e);
    void takeBuiltin(int index);
    void applyRgbOnLoadAction(int action);
    void setRgbOnLoadAction(int action);
    void setMaximumPaletteSize(int size);
    void setPaletteSizeTo(int size);
    void setCopyFormat(int format);
    void recordStep(const QString &name, const QString &parameters = QString());
    // A generator dialog: OK renders its settings and replaces the image as one history step.
    bool runGeneratorDialog(GenImageDialog &dialog);
    // Palette dialogs: live preview beside the document's palette, Cancel (or any other end) drops
    // it, OK commits the result as one history step and one macro step.
    bool runPaletteDialog(PaletteDialog &dialog);
    // A palette operation without settings, installed as one history step and one macro step.
    void applyPaletteOperation(const QString &name);
    // Prints picture on printer, or on the printer a print dialog chooses; false when cancelled or failed.
    bool printPicture(const QImage &picture, QPrinter *printer = nullptr);
    // The print steps of a replay ask before they print (chromaxismainwindow_export.cpp).
    void preparePrintSteps(MacroPlayer &player);
    void rememberRecentFile(const QString &path);
    void updateRecentFiles();
    // The directory a file dialog starts in and remembering the chosen one.
    QString dialogDirectory(const char *key) const;
    void rememberDirectory(const char *key, const QString &file) const;

    PaletteDatabase *m_builtinPalettes = nullptr;
    ChromaxisDocument m_document;
    DocumentCommands m_commands{m_document, m_builtinPalettes};
    PresetDatabase m_presets;

    ImageLabel *m_imageView = nullptr;
    QScrollArea *m_imageScroll = nullptr;
    PaletteView *m_paletteView = nullptr;
    QScrollArea *m_paletteScroll = nullptr;
    CXPropertyWidget *m_properties = nullptr;

    QHash<QString, QAction *> m_actions;
    QHash<QString, QList<QAction *>> m_actionFamilies; // "@copyFormats", "@rgbActions", ...
    QList<QToolBar *> m_toolBars;
    QMenu *m_recentMenu = nullptr;
    QLabel *m_recordLabel = nullptr;
    QLabel *m_zoomLabel = nullptr;

    double m_scale = 1.0;
    int m_maximumPaletteSize = 1024;
    int m_rgbOnLoadAction = 0;
    int m_copyFormat = 0;
    bool m_shiftHeld = false;
    bool m_controlHeld = false;
};
