#include "document/chromaxisdocument.h"

#include "operations/paletteoperations.h"
#include "palette/describedexception.h"
#include "palette/palettelimits.h"
#include "formats/writefileatomically.h"
#include "palette/standardpalettes.h"

#include <QFile>
#include <QTextStream>

ChromaxisDocument::ChromaxisDocument(QObject *parent) : QObject(parent), m_history(this)
{
    m_palette.palette = grayscalePalette();
    // Nothing was shown before the start-up palette; "the last palette" is that palette then.
    m_lastPalette = m_palette.palette;
}

ChromaxisDocument::~ChromaxisDocument() = default;

ChromaxisDocument::PaletteOrigin ChromaxisDocument::originOf(const QString &operation)
{
    return PaletteOperations::isGenerator(operation) ? PaletteOrigin::Generator : PaletteOrigin::Edit;
}

void ChromaxisDocument::setPaletteState(const PaletteState &state, bool fromHistory)
{
    // The history only holds states that passed here.
    if (!fromHistory)
        PaletteLimits::checkLength(state.palette.size());
    dropPreview();
    if (!fromHistory)
        addHistoryStep(new ChromaxisUndoAction_PaletteChange(this, m_palette, state));
    if (state.palette != m_palette.palette)
        m_lastPalette = m_palette.palette;
    m_palette = state;
    m_image.image.render(m_palette.palette);
    emit paletteChanged();
    emit displayedPaletteChanged();
    emit historyChanged();
}

void ChromaxisDocument::setPalette(const Palette<uint> &palette, bool fromHistory)
{
    PaletteState state = m_palette;
    state.palette = palette;
    state.paletteModified = true;
    setPaletteState(state, fromHistory);
}

PaletteState ChromaxisDocument::resultState(const Palette<uint> &result, PaletteOrigin origin) const
{
    PaletteState state = m_palette;
    state.palette = result;
    state.paletteModified = true;
    if (origin == PaletteOrigin::Edit)
        state.palette.setProperties(m_palette.palette.properties());
    else
        state.fileName.clear();
    return state;
}

void ChromaxisDocument::setPaletteResult(const Palette<uint> &result, PaletteOrigin origin)
{
    setPaletteState(resultState(result, origin));
}

void ChromaxisDocument::setPreviewPalette(const Palette<uint> &result, PaletteOrigin origin, bool keepPicture)
{
    m_preview = resultState(result, origin).palette;
    m_previewOrigin = origin;
    m_hasPreview = true;
    if (keepPicture)
        m_previewPicture = m_image.image.picture();
    else
        m_image.image.renderInto(m_preview, m_previewPicture);
    emit displayedPaletteChanged();
}

void ChromaxisDocument::clearPreview()
{
    if (dropPreview())
        emit displayedPaletteChanged();
}

bool ChromaxisDocument::dropPreview()
{
    if (!m_hasPreview)
        return false;
    m_hasPreview = false;
    m_preview = Palette<uint>();
    m_previewPicture = QImage();
    return true;
}

bool ChromaxisDocument::commitPreview()
{
    if (!m_hasPreview)
        return false;
    setPaletteState(resultState(m_preview, m_previewOrigin));
    return true;
}

QString ChromaxisDocument::displayedPaletteFileName() const
{
    return m_hasPreview && m_previewOrigin == PaletteOrigin::Generator ? QString() : m_palette.fileName;
}

void ChromaxisDocument::setImageState(const ImageState &state, bool fromHistory)
{
    const bool dropped = dropPreview();
    if (!fromHistory)
        addHistoryStep(new ChromaxisUndoAction_ImageChange(this, m_image, state));
    m_image = state;
    m_image.image.render(m_palette.palette);
    if (dropped)
        emit displayedPaletteChanged();
    emit imageChanged();
    emit historyChanged();
}

void ChromaxisDocument::setImage(const DocumentImage &image, bool fromHistory)
{
    ImageState state = m_image;
    state.image = image;
    state.imageModified = true;
    setImageState(state, fromHistory);
}

void ChromaxisDocument::closeImage(bool fromHistory)
{
    setImageState(ImageState(), fromHistory);
}

void ChromaxisDocument::setPaletteViewSettings(const PaletteViewSettings &s, bool fromHistory)
{
    if (s == m_settings)
        return;
    if (!fromHistory)
        addHistoryStep(new ChromaxisUndoAction_SettingsChange(this, m_settings, s));
    m_settings = s;
    emit paletteViewSettingsChanged();
    emit historyChanged();
}

void ChromaxisDocument::setSelection(const std::set<int> &s)
{
    if (s == m_selection)
        return;
    m_selection = s;
    emit selectionChanged();
}

void ChromaxisDocument::addHistoryStep(ChromaxisUndoAction *action)
{
    if (m_history.isGroupOpen()) {
        m_history.addUndoAction(action);
        return;
    }
    action->macroBefore = action->macroAfter = m_recording ? m_macros.position() : -1;
    m_pendingMacroStep = m_recording ? action : nullptr;
    m_history.addUndoAction(action);
    if (m_history.actionAt(m_history.count() - 1) != action)
        m_pendingMacroStep = nullptr; // trimmed away at once (a history of one step)
}

void ChromaxisDocument::beginGroup()
{
    m_groupMacroBefore = m_recording ? m_macros.position() : -1;
    m_history.beginGroup();
}

void ChromaxisDocument::endGroup()
{
    m_history.endGroup();
    ChromaxisUndoAction *group = m_history.actionAt(m_history.count() - 1);
    if (group) {
        group->macroBefore = group->macroAfter = m_groupMacroBefore;
        m_pendingMacroStep = m_groupMacroBefore >= 0 ? group : nullptr;
    }
    emit historyChanged();
}

// The macro follows the history: an undone command drops out of the effective steps and a
// redone one comes back. Each step remembers where the recorder stood around its command, which
// also keeps commands that make no history step (copy, zoom) from being taken out by mistake.
bool ChromaxisDocument::undo()
{
    ChromaxisUndoAction *step = m_history.actionAt(m_history.position() - 1);
    const bool done = m_history.undo();
    if (done && m_recording && step && step->macroBefore >= 0) {
        step->macroRedo = m_macros.position();
        m_macros.setPosition(step->macroBefore);
    }
    m_pendingMacroStep = nullptr;
    emit historyChanged();
    return done;
}

bool ChromaxisDocument::redo()
{
    ChromaxisUndoAction *step = m_history.actionAt(m_history.position());
    const bool done = m_history.redo();
    if (done && m_recording && step && step->macroAfter >= 0)
        m_macros.setPosition(qMax(step->macroAfter, step->macroRedo));
    m_pendingMacroStep = nullptr;
    emit historyChanged();
    return done;
}

void ChromaxisDocument::recordMacroStep(const QString &name, const QString &parameters)
{
    if (!m_recording)
        return;
    if (!m_pendingMacroStep && m_history.canRedo() && m_macros.position() < m_macros.count() &&
        name != QLatin1String("undo") && name != QLatin1String("redo")) {
        // A command without a history step of its own (a copy, a zoom) after an undo: the history
        // can still redo the undone commands, so their steps stay in the macro, after this one.
        const int at = m_macros.position();
        m_macros.insertAtPosition(new ChromaxisMacroAction(name, parameters));
        for (int i = m_history.position(); i < m_history.count(); ++i) {
            ChromaxisUndoAction *later = m_history.actionAt(i);
            for (int *index : {&later->macroBefore, &later->macroAfter, &later->macroRedo})
                if (*index >= at)
                    ++*index;
        }
        return;
    }
    m_macros.addMacroAction(new ChromaxisMacroAction(name, parameters));
    if (m_pendingMacroStep) {
        m_pendingMacroStep->macroAfter = m_macros.position();
        m_pendingMacroStep = nullptr;
    }
}

QString ChromaxisDocument::modeText(int mode, bool interpolate)
{
    switch (mode) {
    case 1:
        return QStringLiteral("RGB");
    case 2:
        return QStringLiteral("indexed 8bit");
    case 3:
        return QStringLiteral("indexed 32bit");
    case 4:
        return interpolate ? QStringLiteral("continuous (interpolated)") : QStringLiteral("continuous");
    default:
        return QStringLiteral("N/A");
    }
}

namespace BuiltinList {

int next(int index, int count)
{
    if (count <= 0)
        return 0;
    return index >= count - 1 ? 0 : index + 1;
}

int prior(int index, int count)
{
    if (count <= 0)
        return 0;
    if (index < 1 || index > count)
        index = count;
    return index - 1;
}

int random(int r, int count)
{
    const int i = int(float(r * (1 / 32768.0)) * float(count));
    return count > 0 ? qBound(0, i, count - 1) : 0;
}

} // namespace BuiltinList

std::set<int> readSelectionFile(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly | QIODevice::Text))
        throw DescribedException(QStringLiteral("Could not load"),
                                 QStringLiteral("Could not open file '%1'.").arg(path));
    std::set<int> selection;
    QTextStream in(&f);
    while (!in.atEnd()) {
        const QString line = in.readLine();
        for (const QString &token : line.split(QRegExp(QStringLiteral("\\s+")), Qt::SkipEmptyParts)) {
            bool ok = false;
            const int v = token.toInt(&ok);
            if (!ok)
                throw DescribedException(
                    QStringLiteral("Could not load"),
                    QStringLiteral("Could not parse file '%1'.\nA non-integer value occured.").arg(path));
            if (v >= 0) // a negative index names no entry
                selection.insert(v);
            if (selection.size() > size_t(PaletteLimits::maximumSelection))
                throw DescribedException(QStringLiteral("Could not load"),
                                         QStringLiteral("The selection in '%1' names more than %2 entries.")
                                             .arg(path)
                                             .arg(PaletteLimits::maximumSelection));
        }
    }
    return selection;
}

void writeSelectionFile(const QString &path, const std::set<int> &selection)
{
    QByteArray text;
    for (int i : selection)
        text += QByteArray::number(i) + '\n';
    const FileWriteResult written = writeFileAtomically(path, text);
    if (written.stage == FileWriteResult::NotOpened)
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Could not open file '%1'.\n%2").arg(path, written.error));
    if (!written.ok())
        throw DescribedException(QStringLiteral("Could not save"),
                                 QStringLiteral("Could not write file '%1'.\n%2").arg(path, written.error));
}
