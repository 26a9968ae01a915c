#include "paletteview.h"

#include "coloreditdialog.h"

#include "operations/paletteedits.h"

#include "export/palettepicture.h"
#include "export/palettetextencoder.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPixmap>
#include <QToolTip>

#include <algorithm>
#include <memory>

namespace {

// The hit test counts this many cells per row whatever the configured column count is. The
// window's view has 16 columns, so the two agree there; off-screen views never take clicks.
constexpr int HitTestColumns = 16;
uint byteOf(uint channel)
{
    return (channel >> 8) & 0xFF;
}

QRgb opaqueRgb(const RGBAColor<uint> &c)
{
    return qRgb(int(byteOf(c.r)), int(byteOf(c.g)), int(byteOf(c.b)));
}

} // namespace

const char *const PaletteView::PaletteMimeType = "application/x-chromaxis-palette";

PaletteView::PaletteView(const Palette<uint> &palette, int columns, int cellWidth, int cellHeight,
                         int vspacing, int hspacing, int padTop, int padRight, int padBottom, int padLeft,
                         const QColor &background, QWidget *parent)
    : QLabel(parent), m_palette(palette), m_columns(std::max(1, columns)),
      m_cellWidth(std::max(0, cellWidth)), m_cellHeight(std::max(0, cellHeight)),
      m_vspacing(std::max(0, vspacing)), m_hspacing(std::max(0, hspacing)), m_padTop(std::max(0, padTop)),
      m_padRight(std::max(0, padRight)), m_padBottom(std::max(0, padBottom)), m_padLeft(std::max(0, padLeft)),
      m_background(background)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    rebuild();
}

void PaletteView::setPalette(const Palette<uint> &palette)
{
    m_palette = palette;
    rebuild();
    update();
}

void PaletteView::setModifiers(bool shift, bool control)
{
    m_shift = shift;
    m_control = control;
}

RGBAColor<uint> PaletteView::entryFromColor(const QColor &color)
{
    // Colours from outside arrive with 8 bits a channel and widen like colours read from files.
    return fromByteColor(RGBAColor<uchar>(uchar(color.red()), uchar(color.green()), uchar(color.blue()),
                                          uchar(color.alpha())));
}

QColor PaletteView::colorFromEntry(const RGBAColor<uint> &entry)
{
    auto channel = [](uint v) { return quint16(std::min<uint>(v, 65535)); };
    return QColor::fromRgba64(channel(entry.r), channel(entry.g), channel(entry.b), channel(entry.a));
}

QString PaletteView::entryToolTip(int index, const RGBAColor<uint> &entry)
{
    const auto n = [](uint v) { return QString::number(v); };
    return tr("Entry %1: %2\nred %3, green %4, blue %5, alpha %6")
        .arg(QString::number(index), QColor(opaqueRgb(entry)).name(), n(entry.r), n(entry.g), n(entry.b),
             n(entry.a));
}

bool PaletteView::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QLabel::event(event);
    // The cell a click there would select, so the tip and the selection never disagree.
    auto *help = static_cast<QHelpEvent *>(event);
    const int index = indexAt(help->pos());
    if (index >= 0 && index < m_palette.size()) {
        QToolTip::showText(help->globalPos(), entryToolTip(index, m_palette[index]), this);
    } else {
        QToolTip::hideText();
        event->ignore();
    }
    return true;
}

int PaletteView::indexAt(const QPoint &pos) const
{
    const int stepX = m_cellWidth + m_hspacing;
    const int stepY = m_cellHeight + m_vspacing;
    if (pos.x() < 0 || pos.y() < 0 || stepX <= 0 || stepY <= 0)
        return -1;
    // The paddings are not subtracted: the grid is hit as if it started at the widget's corner.
    return (pos.y() / stepY) * HitTestColumns + pos.x() / stepX;
}

QColor PaletteView::backgroundColor() const
{
    if (m_background.isValid())
        return m_background;
    return QWidget::palette().color(backgroundRole());
}

void PaletteView::rebuild()
{
    PalettePicture::Geometry g;
    g.columns = m_columns;
    g.cellWidth = m_cellWidth;
    g.cellHeight = m_cellHeight;
    g.vspacing = m_vspacing;
    g.hspacing = m_hspacing;
    g.padTop = m_padTop;
    g.padRight = m_padRight;
    g.padBottom = m_padBottom;
    g.padLeft = m_padLeft;
    m_image = PalettePicture::paint(m_palette, g, backgroundColor(), m_selection);
    setPixmap(QPixmap::fromImage(m_image));
    setFixedSize(m_image.size());
}

void PaletteView::finishCommand(bool selectionChanged, bool paletteChanged, int oldLength)
{
    rebuild();
    if (selectionChanged)
        emit this->selectionChanged();
    if (paletteChanged) {
        if (m_palette.size() != oldLength)
            emit setPaletteSize(size_t(m_palette.size()));
        emit this->paletteChanged();
    }
    update();
}

void PaletteView::mousePressEvent(QMouseEvent *event)
{
    const int index = event->button() == Qt::LeftButton ? indexAt(event->pos()) : -1;
    if (index < 0) {
        QLabel::mousePressEvent(event);
        return;
    }
    // Modifiers held while the window did not have the keyboard still count.
    const bool shift = m_shift || event->modifiers().testFlag(Qt::ShiftModifier);
    const bool control = m_control || event->modifiers().testFlag(Qt::ControlModifier);

    const bool wasSelected = isSelected(index);
    if (shift && m_anchor >= 0) {
        // The whole range takes the state the clicked entry is about to get.
        for (int i = std::min(m_anchor, index); i <= std::max(m_anchor, index); ++i) {
            if (wasSelected)
                m_selection.erase(i);
            else
                m_selection.insert(i);
        }
        m_anchor = index;
    } else if (control) {
        if (wasSelected)
            m_selection.erase(index);
        else
            m_selection.insert(index);
        m_anchor = index;
    } else {
        m_anchor = -1;
        m_selection.clear();
        if (!wasSelected) {
            m_selection.insert(index);
            m_anchor = index;
        }
    }
    rebuild();
    emit selectionChanged();
    update();
    QLabel::mousePressEvent(event);
}

void PaletteView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QLabel::mouseDoubleClickEvent(event);
        return;
    }
    const int index = indexAt(event->pos());
    if (index >= 0 && index < m_palette.size())
        emit currentColorChanged(colorFromEntry(m_palette[index]));
    event->accept();
}

bool PaletteView::copy()
{
    const int length = m_palette.size();
    auto data = std::make_unique<QMimeData>();
    if (m_selection.size() == 1) {
        const int index = *m_selection.begin();
        if (index < 0 || index >= length)
            return false;
        const RGBAColor<uint> &c = m_palette[index];
        data->setText(PaletteTextEncoder::formatColour(
            index, c, PaletteTextEncoder::singleColourPattern(m_colorFormat)));
        data->setColorData(QColor(int(byteOf(c.r)), int(byteOf(c.g)), int(byteOf(c.b)), 255));
    } else {
        QString groups;
        for (int i = 0; i < length; ++i) {
            if (!m_selection.empty() && !isSelected(i))
                continue;
            const RGBAColor<uint> &c = m_palette[i];
            groups += QColor(int(byteOf(c.r)), int(byteOf(c.g)), int(byteOf(c.b)), 255).name(QColor::HexArgb);
        }
        if (groups.isEmpty())
            return false;
        PaletteTextEncoder::Template t;
        t.encoding = QStringLiteral("ASCII");
        t.header = m_header;
        t.entry = m_entry;
        t.divider = m_divider;
        t.bottom = m_bottom;
        data->setText(
            PaletteTextEncoder::encodeToString(t, m_palette, m_selection, PaletteTextEncoder::previewLimit));
        data->setData(QString::fromLatin1(PaletteMimeType), groups.toLatin1());
    }
    QGuiApplication::clipboard()->setMimeData(data.release());
    return true;
}

std::vector<RGBAColor<uint>> PaletteView::clipboardColors(const QMimeData *data, bool *single)
{
    std::vector<RGBAColor<uint>> colors;
    *single = false;
    if (!data)
        return colors;
    if (data->hasColor()) {
        const QColor c = qvariant_cast<QColor>(data->colorData());
        if (c.isValid()) {
            *single = true;
            colors.push_back(entryFromColor(c));
            return colors;
        }
    }
    const QString mime = QString::fromLatin1(PaletteMimeType);
    if (data->hasFormat(mime)) {
        const QString text = QString::fromLatin1(data->data(mime));
        // A group that is cut short or does not name a colour is skipped rather than read as black.
        for (int pos = 0; pos + 9 <= text.size(); pos += 9) {
            const QColor c(text.mid(pos, 9));
            if (c.isValid())
                colors.push_back(entryFromColor(c));
        }
    }
    return colors;
}

bool PaletteView::paste()
{
    bool single = false;
    const std::vector<RGBAColor<uint>> colors =
        clipboardColors(QGuiApplication::clipboard()->mimeData(), &single);
    if (colors.empty())
        return false;

    const int oldLength = m_palette.size();
    PaletteEdits::paste(m_palette, m_selection, colors, single, m_fixedSize ? oldLength : m_maximumSize, m_fixedSize,
                        m_fillColor);

    const bool hadSelection = !m_selection.empty();
    m_selection.clear();
    m_anchor = -1;
    finishCommand(hadSelection, true, oldLength);
    return true;
}

bool PaletteView::replace()
{
    // The selected entries, in index order, take the clipboard's colours in order. A single colour
    // fills every selected entry; a list shorter than the selection starts over from its first
    // colour, and colours left over are not used. The length never changes and the selection stays,
    // so the same entries can be replaced again.
    if (m_selection.empty())
        return false;
    bool single = false;
    const std::vector<RGBAColor<uint>> colors =
        clipboardColors(QGuiApplication::clipboard()->mimeData(), &single);
    if (colors.empty())
        return false;
    const int length = m_palette.size();
    if (PaletteEdits::replaceSelected(m_palette, m_selection, colors) == 0)
        return false;
    finishCommand(false, true, length);
    return true;
}

bool PaletteView::cut_remove(bool copy2clipboard)
{
    if (m_selection.empty())
        return false;
    if (copy2clipboard)
        copy();
    const int oldLength = m_palette.size();
    PaletteEdits::removeSelected(m_palette, m_selection, m_fixedSize, m_fillColor);
    m_selection.clear();
    m_anchor = -1;
    finishCommand(true, true, oldLength);
    return true;
}

bool PaletteView::deleteA()
{
    const bool removed = cut_remove(false);
    m_selection.clear();
    m_anchor = -1;
    finishCommand(true, true, m_palette.size());
    return removed;
}

bool PaletteView::cut_toBackground()
{
    if (m_selection.empty())
        return false;
    copy();
    const int length = m_palette.size();
    PaletteEdits::fillSelected(m_palette, m_selection, m_fillColor);
    m_selection.clear();
    m_anchor = -1;
    finishCommand(true, true, length);
    return true;
}

bool PaletteView::edit()
{
    ColorEditDialog dialog(m_palette, m_selection, this);
    if (!dialog.hasEntry() || dialog.exec() != QDialog::Accepted || !dialog.isChanged())
        return false;
    const int length = m_palette.size();
    PaletteEdits::setSelected(m_palette, m_selection, dialog.colour());
    finishCommand(false, true, length);
    return true;
}

void PaletteView::selectAll()
{
    m_selection.clear();
    for (int i = 0; i < m_palette.size(); ++i)
        m_selection.insert(m_selection.end(), i);
    finishCommand(true, false, m_palette.size());
}

void PaletteView::selectNone()
{
    m_selection.clear();
    m_anchor = -1;
    finishCommand(true, false, m_palette.size());
}

void PaletteView::selectInvert()
{
    std::set<int> inverted;
    for (int i = 0; i < m_palette.size(); ++i)
        if (!isSelected(i))
            inverted.insert(inverted.end(), i);
    m_selection = std::move(inverted);
    finishCommand(true, false, m_palette.size());
}

void PaletteView::setSelected(std::set<int> selected)
{
    // Indexes past the end are kept (they are ignored where entries are read); negative ones are not
    // indexes at all.
    selected.erase(selected.begin(), selected.lower_bound(0));
    m_selection = std::move(selected);
    m_anchor = -1;
    finishCommand(true, false, m_palette.size());
}
