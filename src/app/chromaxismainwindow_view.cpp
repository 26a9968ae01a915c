// The View and Settings menus: zoom and fitting, the clipboard formats, the RGB-on-load action, the maximum
// palette size, the tool bars, and the settings the window keeps between sessions.
#include "chromaxismainwindow.h"

#include "actioncatalogue.h"
#include "dialogs/palettetextencoderdialog.h"
#include "imagelabel.h"
#include "palette/describedexception.h"
#include "palette/palettelimits.h"
#include "utils/qt/colorwidgets/paletteview.h"
#include "utils/qt/widgets/dialogsettingsio.h"

#include <QAction>
#include <QFileInfo>
#include <QMessageBox>
#include <QScrollArea>
#include <QSettings>
#include <QStatusBar>

#include <algorithm>

// ---- Zoom ----------------------------------------------------------------------------------------

void ChromaxisMainWindow::setScale(double scale)
{
    m_scale = scale;
    if (m_document.hasImage())
        m_imageView->resize(m_document.image().picture().size() * m_scale);
    updateZoomLabel();
}

void ChromaxisMainWindow::normalSize()
{
    setScale(1.0);
    m_commands.recordViewStep(QStringLiteral("zoom_reset"));
}

void ChromaxisMainWindow::zoomIn()
{
    setScale(m_scale * Zoom::inFactor);
    m_commands.recordViewStep(QStringLiteral("zoom_in"));
}

void ChromaxisMainWindow::zoomOut()
{
    setScale(m_scale * Zoom::outFactor);
    m_commands.recordViewStep(QStringLiteral("zoom_out"));
}

void ChromaxisMainWindow::fitToWindow()
{
    const QSize picture = m_document.image().picture().size();
    if (picture.isEmpty())
        return;
    // The room the image has without scroll bars, which a fitting image does not need.
    const QSize room = m_imageScroll->maximumViewportSize();
    setScale(std::min(double(room.width()) / picture.width(), double(room.height()) / picture.height()));
}

void ChromaxisMainWindow::zoomChanged(double val)
{
    // One wheel notch is one zoom step; touch pads send many small pixel steps, so only the
    // direction counts.
    if (val > 0)
        zoomIn();
    else if (val < 0)
        zoomOut();
}

// ---- Settings ------------------------------------------------------------------------------------

void ChromaxisMainWindow::setCopyFormat(int format)
{
    m_copyFormat = format;
    m_paletteView->setColorFormat(format);
    const QList<QAction *> family = m_actionFamilies.value("@copyFormats");
    for (int i = 0; i < family.size(); ++i)
        family[i]->setChecked(i == qBound(0, format, 2));
}

void ChromaxisMainWindow::settingsPaletteCopyFormat()
{
    PaletteTextEncoderDialog dialog(m_document.palette(), m_presets.connectionName(), this);
    dialog.start();
    // The clipboard's own template is what the user came to change; the encoding plays no part there.
    PaletteTextEncoder::Template current = dialog.encoderTemplate();
    current.header = m_paletteView->clipboardHeader();
    current.entry = m_paletteView->clipboardEntry();
    current.divider = m_paletteView->clipboardDivider();
    current.bottom = m_paletteView->clipboardBottom();
    if (!(current == dialog.encoderTemplate())) {
        dialog.setEncoderTemplate(current);
        dialog.settingsIO()->markModified();
    }
    if (dialog.exec() != QDialog::Accepted)
        return;
    const PaletteTextEncoder::Template chosen = dialog.encoderTemplate();
    m_paletteView->setClipboardHeader(chosen.header);
    m_paletteView->setClipboardEntry(chosen.entry);
    m_paletteView->setClipboardDivider(chosen.divider);
    m_paletteView->setClipboardBottom(chosen.bottom);
    QSettings s;
    s.setValue("pal_clipboard_header", chosen.header);
    s.setValue("pal_clipboard_entry", chosen.entry);
    s.setValue("pal_clipboard_divider", chosen.divider);
    s.setValue("pal_clipboard_footer", chosen.bottom);
}

void ChromaxisMainWindow::setRgbOnLoadAction(int value)
{
    if (value < DocumentCommands::RgbAsk || value > DocumentCommands::RgbLastAction)
        return;
    m_rgbOnLoadAction = value;
    const QList<QAction *> family = m_actionFamilies.value("@rgbActions");
    for (int i = 0; i < family.size(); ++i)
        family[i]->setChecked(i == value);
}

void ChromaxisMainWindow::setMaximumPaletteSize(int size)
{
    if (size <= 0 || size == m_document.paletteViewSettings().maximumSize)
        return;
    try {
        m_commands.setMaximumPaletteSize(size);
    } catch (const DescribedException &e) {
        showError(e);
        documentSettingsChanged(); // puts the menu's check back
    }
}

void ChromaxisMainWindow::showStatusBar()
{
    statusBar()->setVisible(action("showStatusBar")->isChecked());
}

void ChromaxisMainWindow::readSettings()
{
    QSettings s;
    if (s.contains("maximized") && s.value("maximized").toBool()) {
        setWindowState(windowState() | Qt::WindowMaximized);
    } else {
        if (s.contains("pos"))
            move(s.value("pos").toPoint());
        if (s.contains("size"))
            resize(s.value("size").toSize());
    }
    PaletteViewSettings viewSettings = m_document.paletteViewSettings();
    if (s.contains("fixpalettesize"))
        viewSettings.fixedSize = s.value("fixpalettesize").toBool();
    if (s.contains("maximum_palette_size") && s.value("maximum_palette_size").toInt() > 0)
        viewSettings.maximumSize = qMin(s.value("maximum_palette_size").toInt(), PaletteLimits::maximumLength);
    m_document.setPaletteViewSettings(viewSettings, true);
    documentSettingsChanged();
    if (s.contains("interpolateentries"))
        action("imageInterpolateEntries")->setChecked(s.value("interpolateentries").toBool());
    for (const ToolBarLayout &t : toolBarLayouts())
        if (s.contains(t.settingsKey))
            action(QString::fromLatin1(t.showSlot))->setChecked(s.value(t.settingsKey).toBool());
    if (s.contains("showbar_status"))
        action("showStatusBar")->setChecked(s.value("showbar_status").toBool());
    statusBar()->setVisible(action("showStatusBar")->isChecked());
    if (s.contains("rgb_onload_action"))
        setRgbOnLoadAction(s.value("rgb_onload_action").toInt());
    if (s.contains("pal_clipboard_header"))
        m_paletteView->setClipboardHeader(s.value("pal_clipboard_header").toString());
    if (s.contains("pal_clipboard_entry"))
        m_paletteView->setClipboardEntry(s.value("pal_clipboard_entry").toString());
    if (s.contains("pal_clipboard_divider"))
        m_paletteView->setClipboardDivider(s.value("pal_clipboard_divider").toString());
    if (s.contains("pal_clipboard_footer"))
        m_paletteView->setClipboardBottom(s.value("pal_clipboard_footer").toString());
    if (s.contains("col_clipboard"))
        setCopyFormat(s.value("col_clipboard").toInt());
    if (s.contains("palettesize"))
        setPaletteSizeTo(s.value("palettesize").toInt());
}

void ChromaxisMainWindow::writeSettings() const
{
    QSettings s;
    s.setValue("maximized", isMaximized());
    s.setValue("pos", pos());
    s.setValue("size", size());
    s.setValue("fixpalettesize", action("paletteFixSize")->isChecked());
    s.setValue("interpolateentries", action("imageInterpolateEntries")->isChecked());
    s.setValue("palettesize", m_document.palette().size());
    for (const ToolBarLayout &t : toolBarLayouts())
        s.setValue(t.settingsKey, action(QString::fromLatin1(t.showSlot))->isChecked());
    s.setValue("showbar_status", action("showStatusBar")->isChecked());
    s.setValue("rgb_onload_action", m_rgbOnLoadAction);
    s.setValue("maximum_palette_size", m_maximumPaletteSize);
    s.setValue("pal_clipboard_header", m_paletteView->clipboardHeader());
    s.setValue("pal_clipboard_entry", m_paletteView->clipboardEntry());
    s.setValue("pal_clipboard_divider", m_paletteView->clipboardDivider());
    s.setValue("pal_clipboard_footer", m_paletteView->clipboardBottom());
    s.setValue("col_clipboard", m_copyFormat);
}

QString ChromaxisMainWindow::dialogDirectory(const char *key) const
{
    return QSettings().value(key, QString()).toString();
}

void ChromaxisMainWindow::rememberDirectory(const char *key, const QString &file) const
{
    QSettings().setValue(key, QFileInfo(file).absolutePath());
}

void ChromaxisMainWindow::openPresetDatabase()
{
    switch (m_presets.open()) {
    case PresetDatabase::OpenResult::Ok:
        break;
    case PresetDatabase::OpenResult::DriverMissing:
        QMessageBox::warning(this, tr("Missing database driver"),
                             tr("An SQLite driver was not found.\nSaving to the database will be not possible."));
        break;
    case PresetDatabase::OpenResult::OpenFailed:
        QMessageBox::warning(this, tr("Database error"),
                             tr("Could not open database.\nSaving to the database will be not possible."));
        break;
    case PresetDatabase::OpenResult::CreateFailed:
        QMessageBox::warning(this, tr("Database error"),
                             tr("Could not write to database.\nSaving to the database will be not "
                                "possible.\nError:\n%1")
                                 .arg(m_presets.errorText()));
        break;
    }
}
