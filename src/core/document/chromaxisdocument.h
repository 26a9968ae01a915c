#pragma once

#include "document/chromaxismacrosystem.h"
#include "document/chromaxisundosystem.h"
#include "document/documentimage.h"
#include "document/documentstate.h"
#include "palette/palette.h"

#include <QImage>
#include <QObject>
#include <QString>

#include <set>

// What the main window edits: the palette (always present), at most one image shown through it,
// the palette shown before the current one, the file names, the unsaved-changes flags, the
// palette view's settings, the undo history and the macro recorder. It lives in the core so
// that the command line, the macro player and the tests work on the very same document as the
// window, which only shows it.
//
// Every change through a setter is recorded as one history step unless fromHistory is set
// (the history itself restoring a state). The signals tell the views what to show again.
//
// Beside the palette the document may hold a preview: a dialog's result shown before the user
// chooses it. The views show displayedPalette() and displayedPicture(); the palette, the image,
// the history, the modified flags, the last palette and the macro recorder never see a preview.
// Any change of the palette or the image drops it, so a preview cannot outlive the state it was
// computed from, and OK commits it as one ordinary step.
class ChromaxisDocument : public QObject
{
    Q_OBJECT
public:
    // What a command's palette inherits from the one it replaces.
    //  Edit:      the current palette changed (a manipulation): it keeps its name, comment and
    //             file, so "Save palette" writes it back where it came from.
    //  Generator: a palette made from settings alone: it inherits nothing and has no file until
    //             it is saved, so a save can never overwrite the old palette's file with an
    //             unrelated one.
    // Both mark the palette modified, and the history step restores all of it.
    enum class PaletteOrigin
    {
        Edit,
        Generator
    };
    // The origin of a palette operation's result, by the operation's name.
    static PaletteOrigin originOf(const QString &operation);

    explicit ChromaxisDocument(QObject *parent = nullptr);
    ~ChromaxisDocument() override;

    // ---- Palette
    const Palette<uint> &palette() const { return m_palette.palette; }
    PaletteState paletteState() const { return m_palette; }
    void setPaletteState(const PaletteState &state, bool fromHistory = false);
    // A new palette from a command: marked modified, the current one becomes the last palette.
    void setPalette(const Palette<uint> &palette, bool fromHistory = false);
    // The state a command's result gives the palette, and installing it as one history step.
    PaletteState resultState(const Palette<uint> &result, PaletteOrigin origin) const;
    void setPaletteResult(const Palette<uint> &result, PaletteOrigin origin);
    const Palette<uint> &lastPalette() const { return m_lastPalette; }
    void setLastPalette(const Palette<uint> &p) { m_lastPalette = p; }
    bool isPaletteModified() const { return m_palette.paletteModified; }
    void setPaletteModified(bool m) { setFileState(m_palette.paletteModified, m); }
    const QString &paletteFileName() const { return m_palette.fileName; }
    void setPaletteFileName(const QString &f) { setFileState(m_palette.fileName, f); }
    int builtinIndex() const { return m_palette.builtinIndex; }
    void setBuiltinIndex(int i) { m_palette.builtinIndex = i; }

    // ---- Preview
    // Shows result as the palette it would become, until it is cleared, committed or dropped by a
    // change of the palette or the image.
    // With keepPicture the picture stays as it is: the result moved entries and the image's
    // pixels move with them (a sort), which shows exactly the picture there is now.
    void setPreviewPalette(const Palette<uint> &result, PaletteOrigin origin = PaletteOrigin::Edit,
                           bool keepPicture = false);
    void clearPreview();
    bool hasPreview() const { return m_hasPreview; }
    // Installs the pending preview as one history step, worked out against the palette as it is
    // now; false (and nothing recorded) when there is none.
    bool commitPreview();
    // What the views show: the preview while one is pending, the palette and its picture otherwise.
    const Palette<uint> &displayedPalette() const { return m_hasPreview ? m_preview : m_palette.palette; }
    QString displayedPaletteFileName() const;
    const QImage &displayedPicture() const
    {
        return m_hasPreview ? m_previewPicture : m_image.image.picture();
    }

    // Clears the preview however the scope is left, so that a dialog ended by an exception or
    // closed in any way leaves nothing of its preview behind.
    class PreviewScope
    {
    public:
        explicit PreviewScope(ChromaxisDocument &document) : m_document(document) {}
        ~PreviewScope() { m_document.clearPreview(); }
        PreviewScope(const PreviewScope &) = delete;
        PreviewScope &operator=(const PreviewScope &) = delete;

    private:
        ChromaxisDocument &m_document;
    };

    // ---- Image
    const DocumentImage &image() const { return m_image.image; }
    ImageState imageState() const { return m_image; }
    void setImageState(const ImageState &state, bool fromHistory = false);
    // A new image from a command: marked modified, the file name kept.
    void setImage(const DocumentImage &image, bool fromHistory = false);
    void closeImage(bool fromHistory = false);
    bool hasImage() const { return !m_image.image.isNull(); }
    int imageMode() const { return m_image.image.mode(); }
    int imageWidth() const { return m_image.image.width(); }
    int imageHeight() const { return m_image.image.height(); }
    bool isImageModified() const { return m_image.imageModified; }
    void setImageModified(bool m) { setFileState(m_image.imageModified, m); }
    const QString &imageFileName() const { return m_image.fileName; }
    void setImageFileName(const QString &f) { setFileState(m_image.fileName, f); }
    // Changes that closing now would lose, as the unsaved-changes questions count them: an RGB
    // image does not show the palette, so palette changes do not count beside one.
    bool hasUnsavedPalette() const { return m_palette.paletteModified && imageMode() != DocumentImage::RGB; }
    bool hasUnsavedImage() const { return m_image.imageModified && hasImage(); }
    // The text the property panel shows for a mode.
    static QString modeText(int mode, bool interpolate);

    // ---- Palette view settings
    const PaletteViewSettings &paletteViewSettings() const { return m_settings; }
    void setPaletteViewSettings(const PaletteViewSettings &s, bool fromHistory = false);

    // ---- Selection and project
    const std::set<int> &selection() const { return m_selection; }
    void setSelection(const std::set<int> &s);
    const QString &projectFileName() const { return m_projectFileName; }
    void setProjectFileName(const QString &f) { setFileState(m_projectFileName, f); }

    // ---- History and macros
    ChromaxisUndoSystem &history() { return m_history; }
    bool undo();
    bool redo();
    void clearHistory()
    {
        m_pendingMacroStep = nullptr;
        m_history.clearHistory();
        emit historyChanged();
    }
    // One command that changes both palette and image is one step.
    void beginGroup();
    void endGroup();
    ChromaxisMacroSystem &macros() { return m_macros; }
    bool isRecording() const { return m_recording; }
    void setRecording(bool on) { m_recording = on; }
    // Records a step when recording is on; parameters are key:value lines. A command that makes
    // a history step records its macro step right after it, so the two stay paired.
    void recordMacroStep(const QString &name, const QString &parameters = QString());

signals:
    // palette() changed.
    void paletteChanged();
    // What the views show changed: the palette, or a preview came, went or changed.
    void displayedPaletteChanged();
    void imageChanged();
    void paletteViewSettingsChanged();
    void selectionChanged();
    void historyChanged();
    // A file name or an unsaved-changes flag changed on its own, as saving and discarding do;
    // changes of the palette or the image announce theirs with paletteChanged() and imageChanged().
    void fileStateChanged();

private:
    template <typename T> void setFileState(T &field, const T &value)
    {
        if (field == value)
            return;
        field = value;
        emit fileStateChanged();
    }
    void addHistoryStep(ChromaxisUndoAction *action);
    // Forgets the preview without telling anyone; true when there was one.
    bool dropPreview();

    PaletteState m_palette;
    Palette<uint> m_lastPalette;
    ImageState m_image;
    PaletteViewSettings m_settings;
    bool m_hasPreview = false;
    Palette<uint> m_preview;
    PaletteOrigin m_previewOrigin = PaletteOrigin::Edit;
    QImage m_previewPicture;
    std::set<int> m_selection;
    QString m_projectFileName;
    ChromaxisUndoSystem m_history;
    ChromaxisMacroSystem m_macros;
    bool m_recording = false;
    int m_groupMacroBefore = -1;
    // The latest step whose command may still record its macro step.
    ChromaxisUndoAction *m_pendingMacroStep = nullptr;
};

// Walking the built-in palette list of count entries.
namespace BuiltinList {
int next(int index, int count);
int prior(int index, int count);
// r is a value of the C library's rand() (0..32767); the product is taken in single precision.
int random(int r, int count);
} // namespace BuiltinList

// Zoom steps of the image view. Out is not the inverse of in; zooming in and out again does not
// return to the old scale, and users' muscle memory relies on these steps.
namespace Zoom {
constexpr double inFactor = 1.25;
constexpr double outFactor = 0.75;
} // namespace Zoom

// Selection files: one decimal index a line, ascending.
std::set<int> readSelectionFile(const QString &path);
void writeSelectionFile(const QString &path, const std::set<int> &selection);
