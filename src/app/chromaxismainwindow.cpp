#include "chromaxismainwindow.h"

#include "cxpropertywidget.h"
#include "palettedatabase.h"

#include <QAction>
#include <QCloseEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPrinter>
#include <QScrollArea>
#include <QSettings>
#include <QStatusBar>
#include <QVBoxLayout>

namespace {
constexpr int paletteViewWidth = 222;
constexpr int propertyPanelWidth = 241;
} // namespace

ChromaxisMainWindow::ChromaxisMainWindow(PaletteDatabase *builtinPalettes, QWidget *parent)
    : QMainWindow(parent), m_builtinPalettes(builtinPalettes)
{
    m_printer = std::make_unique<QPrinter>(QPrinter::ScreenResolution);
    setWindowIcon(QIcon(QStringLiteral(":res/images/chromaxis.ico")));
    setWindowTitle(QStringLiteral("Chromaxis"));

    m_imageView = new QLabel;
    m_imageView->setObjectName(QStringLiteral("imageView"));
    m_imageView->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    m_imageView->setBackgroundRole(QPalette::Base);
    m_imageView->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    m_imageView->setScaledContents(true);
    m_imageScroll = new QScrollArea;
    m_imageScroll->setObjectName(QStringLiteral("imageScrollArea"));
    m_imageScroll->setBackgroundRole(QPalette::Dark);
    m_imageScroll->setWidget(m_imageView);

    // The palette view fills this area once it exists; until then the area keeps its place.
    m_paletteArea = new QWidget;
    m_paletteArea->setObjectName(QStringLiteral("paletteArea"));
    m_paletteArea->setFixedWidth(paletteViewWidth);
    m_paletteScroll = new QScrollArea;
    m_paletteScroll->setObjectName(QStringLiteral("paletteScrollArea"));
    m_paletteScroll->setBackgroundRole(QPalette::Window);
    m_paletteScroll->setFrameShape(QFrame::NoFrame);
    m_paletteScroll->setFrameShadow(QFrame::Plain);
    m_paletteScroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_paletteScroll->setWidget(m_paletteArea);
    m_paletteScroll->setWidgetResizable(false);

    m_properties = new CXPropertyWidget(propertyPanelWidth);
    m_properties->setObjectName(QStringLiteral("propertyWidget"));

    auto *column = new QWidget;
    column->setObjectName(QStringLiteral("sideColumn"));
    auto *columnLayout = new QVBoxLayout(column);
    columnLayout->addWidget(m_paletteScroll);
    columnLayout->addWidget(m_properties);
    const QMargins margins = columnLayout->contentsMargins();
    column->setMaximumWidth(margins.left() + margins.right() + propertyPanelWidth);

    auto *central = new QWidget;
    auto *centralLayout = new QHBoxLayout(central);
    centralLayout->addWidget(m_imageScroll);
    centralLayout->addWidget(column);
    setCentralWidget(central);

    createActions();
    createMenus();
    createToolBars();
    createStatusBar();

    resize(500, 400);
    readSettings();

    setUnifiedTitleAndToolBarOnMac(true);
    updateActions();
    updateProperties();

    openPresetDatabase();
}

ChromaxisMainWindow::~ChromaxisMainWindow() = default;

void ChromaxisMainWindow::createActions()
{
    m_exitAct = new QAction(tr("E&xit"), this);
    m_exitAct->setStatusTip(tr("Exit the application"));
    m_exitAct->setShortcuts(QKeySequence::Quit);
    connect(m_exitAct, &QAction::triggered, this, &QWidget::close);

    m_showStatusBarAct = new QAction(tr("Show status bar"), this);
    m_showStatusBarAct->setCheckable(true);
    m_showStatusBarAct->setChecked(true);
    connect(m_showStatusBarAct, &QAction::toggled, this, [this](bool on) { statusBar()->setVisible(on); });
}

void ChromaxisMainWindow::createMenus()
{
    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addAction(m_exitAct);
    QMenu *view = menuBar()->addMenu(tr("&View"));
    view->addAction(m_showStatusBarAct);
}

void ChromaxisMainWindow::createToolBars() {}

void ChromaxisMainWindow::createStatusBar()
{
    statusBar()->showMessage(tr("Ready"));
}

void ChromaxisMainWindow::readSettings()
{
    QSettings settings;
    if (settings.contains("maximized") && settings.value("maximized").toBool()) {
        setWindowState(windowState() | Qt::WindowMaximized);
    } else {
        if (settings.contains("pos"))
            move(settings.value("pos").toPoint());
        if (settings.contains("size"))
            resize(settings.value("size").toSize());
    }
    if (settings.contains("showbar_status"))
        m_showStatusBarAct->setChecked(settings.value("showbar_status").toBool());
    statusBar()->setVisible(m_showStatusBarAct->isChecked());
}

void ChromaxisMainWindow::writeSettings() const
{
    QSettings settings;
    settings.setValue("maximized", isMaximized());
    settings.setValue("pos", pos());
    settings.setValue("size", size());
    settings.setValue("showbar_status", m_showStatusBarAct->isChecked());
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

void ChromaxisMainWindow::updateActions()
{
    // Actions that depend on the document state are enabled here as they are added.
}

void ChromaxisMainWindow::updateProperties()
{
    const Palette<uint> &p = m_document.palette();
    m_properties->setPaletteProperties(p.property(PaletteName), p.property(PaletteComment),
                                       QFileInfo(m_document.paletteFileName()).fileName(), p.size());
    m_properties->setImageProperties(QFileInfo(m_document.imageFileName()).fileName(),
                                     m_document.imageHeight(), m_document.imageWidth(),
                                     ChromaxisDocument::modeText(m_document.imageMode(), false));
}

void ChromaxisMainWindow::notAvailableYet(const QString &what)
{
    QMessageBox::information(this, QStringLiteral("Chromaxis"), tr("%1 is not available yet.").arg(what));
}

bool ChromaxisMainWindow::saveImage()
{
    notAvailableYet(tr("Saving images"));
    return false;
}

bool ChromaxisMainWindow::savePalette()
{
    notAvailableYet(tr("Saving palettes"));
    return false;
}

bool ChromaxisMainWindow::maybeSaveImage()
{
    if (!m_document.isImageModified() || !m_document.hasImage())
        return true;
    const auto answer = QMessageBox::warning(
        this, QStringLiteral("Chromaxis"), tr("The image has been modified.\nDo you want to save your changes?"),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::NoButton);
    if (answer == QMessageBox::Save)
        return saveImage();
    if (answer == QMessageBox::Cancel)
        return false;
    m_document.setImageModified(false);
    return true;
}

bool ChromaxisMainWindow::maybeSavePalette()
{
    // An RGB image does not show the palette, so its changes are not worth a question then.
    if (!m_document.isPaletteModified() || m_document.imageMode() == 1)
        return true;
    const auto answer = QMessageBox::warning(
        this, QStringLiteral("Chromaxis"), tr("The palette has been modified.\nDo you want to save your changes?"),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::NoButton);
    if (answer == QMessageBox::Save)
        return savePalette();
    if (answer == QMessageBox::Cancel)
        return false;
    m_document.setPaletteModified(false);
    return true;
}

void ChromaxisMainWindow::closeEvent(QCloseEvent *event)
{
    if (!maybeSaveImage() || !maybeSavePalette()) {
        event->ignore();
        return;
    }
    writeSettings();
    event->accept();
}

void ChromaxisMainWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Shift)
        m_shiftHeld = true;
    else if (event->key() == Qt::Key_Control)
        m_controlHeld = true;
    QMainWindow::keyPressEvent(event);
}

void ChromaxisMainWindow::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Shift)
        m_shiftHeld = false;
    else if (event->key() == Qt::Key_Control)
        m_controlHeld = false;
    QMainWindow::keyReleaseEvent(event);
}

void ChromaxisMainWindow::zoomChanged(double factor)
{
    statusBar()->showMessage(tr("Zoom: %1%").arg(qRound(factor * 100.0)), 2000);
}

void ChromaxisMainWindow::paletteViewPaletteChange()
{
    updateProperties();
}

void ChromaxisMainWindow::paletteViewSelectionChange() {}
