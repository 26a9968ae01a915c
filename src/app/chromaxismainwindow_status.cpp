// What the window says about the document besides the document itself: the title with its name
// and unsaved-changes mark, and the zoom in the status bar.
#include "chromaxismainwindow.h"

#include <QFileInfo>
#include <QLabel>
#include <QStatusBar>

void ChromaxisMainWindow::createStatusFields()
{
    m_zoomLabel = new QLabel;
    m_zoomLabel->setObjectName(QStringLiteral("zoomLabel"));
    m_zoomLabel->setToolTip(tr("Zoom of the image"));
    statusBar()->addPermanentWidget(m_zoomLabel);
    updateZoomLabel();

    for (auto signal : {&ChromaxisDocument::paletteChanged, &ChromaxisDocument::imageChanged,
                        &ChromaxisDocument::fileStateChanged})
        connect(&m_document, signal, this, &ChromaxisMainWindow::updateWindowTitle);
    updateWindowTitle();
}

QString ChromaxisMainWindow::documentName() const
{
    // The file the user would reopen to get this state back: the project, else the image, else
    // the palette.
    for (const QString &file :
         {m_document.projectFileName(), m_document.hasImage() ? m_document.imageFileName() : QString(),
          m_document.paletteFileName()})
        if (!file.isEmpty())
            return QFileInfo(file).fileName();
    const QString name = m_document.palette().property(PaletteName);
    return name.isEmpty() ? tr("Untitled") : name;
}

void ChromaxisMainWindow::updateWindowTitle()
{
    // "[*]" is where the toolkit shows the mark while the window is modified.
    setWindowTitle(tr("%1[*] - Chromaxis").arg(documentName()));
    setWindowModified(m_document.hasUnsavedPalette() || m_document.hasUnsavedImage());
}

void ChromaxisMainWindow::updateZoomLabel()
{
    if (m_zoomLabel)
        m_zoomLabel->setText(tr("Zoom %1%").arg(qRound(m_scale * 100)));
}
