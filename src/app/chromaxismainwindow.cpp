#include "chromaxismainwindow.h"

#include "actioncatalogue.h"
#include "cxpropertywidget.h"
#include "dialogs/rgbimagedialog.h"
#include "imagelabel.h"
#include "palette/describedexception.h"
#include "storage/palettedatabase.h"
#include "utils/qt/colorwidgets/paletteview.h"
#include "utils/qt/help/dialoghelp.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QMetaMethod>
#include <QScrollArea>
#include <QSettings>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

#include <new>

namespace {
constexpr int paletteViewWidth = 222;
constexpr int propertyPanelWidth = 241;

const char *const copyFormatTexts[] = {"RGB hex (#000000)", "RGB hex (000000)", "RGB ints (0, 0, 0)"};
const int maximumPaletteSizes[] = {256, 1024, 4096, 16384, 65536};
const int defaultPaletteSizes[] = {2, 4, 8, 16, 32, 64, 128, 256, 512, 1024};
} // namespace

ChromaxisMainWindow::ChromaxisMainWindow(PaletteDatabase *builtinPalettes, QWidget *parent)
    : QMainWindow(parent), m_builtinPalettes(builtinPalettes)
{
    setWindowIcon(QIcon(QStringLiteral(":res/images/chromaxis.ico")));
    setAcceptDrops(true);

    m_imageView = new ImageLabel;
    m_imageView->setObjectName(QStringLiteral("imageView"));
    m_imageView->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    m_imageView->setBackgroundRole(QPalette::Base);
    m_imageView->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    m_imageView->setScaledContents(true);
    m_imageScroll = new QScrollArea;
    m_imageScroll->setObjectName(QStringLiteral("imageScrollArea"));
    m_imageScroll->setBackgroundRole(QPalette::Dark);
    m_imageScroll->setWidget(m_imageView);
    m_imageScroll->setMinimumSize(32, 32);
    m_imageView->hide();

    m_paletteView = new PaletteView(m_document.palette(), 16, 12, 12, 2, 2, 1, 1, 1, 1, QColor());
    m_paletteView->setObjectName(QStringLiteral("paletteView"));
    m_paletteView->setFixedWidth(paletteViewWidth);
    m_paletteView->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_paletteScroll = new QScrollArea;
    m_paletteScroll->setObjectName(QStringLiteral("paletteScrollArea"));
    m_paletteScroll->setBackgroundRole(QPalette::Window);
    m_paletteScroll->setFrameShape(QFrame::NoFrame);
    m_paletteScroll->setFrameShadow(QFrame::Plain);
    m_paletteScroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_paletteScroll->setWidget(m_paletteView);
    m_paletteScroll->setMinimumHeight(32);

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

    connect(m_imageView, &ImageLabel::zoomChanged, this, &ChromaxisMainWindow::zoomChanged);
    connect(m_paletteView, &PaletteView::paletteChanged, this, &ChromaxisMainWindow::paletteViewPaletteChange);
    connect(m_paletteView, &PaletteView::selectionChanged, this, &ChromaxisMainWindow::paletteViewSelectionChange);
    connect(&m_document, &ChromaxisDocument::displayedPaletteChanged, this,
            &ChromaxisMainWindow::documentPaletteChanged);
    connect(&m_document, &ChromaxisDocument::imageChanged, this, &ChromaxisMainWindow::documentImageChanged);
    connect(&m_document, &ChromaxisDocument::paletteViewSettingsChanged, this,
            &ChromaxisMainWindow::documentSettingsChanged);
    connect(&m_document, &ChromaxisDocument::selectionChanged, this, &ChromaxisMainWindow::documentSelectionChanged);
    connect(&m_document, &ChromaxisDocument::historyChanged, this, &ChromaxisMainWindow::updateHistoryActions);

    createActions();
    createActionGroups();
    createMenus();
    createToolBars();
    createStatusBar();
    createStatusFields();
    // F1 in any dialog opens that dialog's page of the manual.
    DialogHelp::install();

    resize(500, 400);
    readSettings();

    setUnifiedTitleAndToolBarOnMac(true);
    updateActions();
    updateProperties();
    updateRecentFiles();
    // Restoring the last session's state is not something to undo.
    m_document.clearHistory();
    updateHistoryActions();

    openPresetDatabase();
}

ChromaxisMainWindow::~ChromaxisMainWindow() = default;

void ChromaxisMainWindow::createActions()
{
    for (const ActionEntry &e : actionCatalogue()) {
        auto *a = new QAction(tr(e.text), this);
        a->setObjectName(QString::fromLatin1(e.slot));
        a->setStatusTip(tr(e.statusTip));
        if (e.icon)
            a->setIcon(QIcon(QStringLiteral(":res/images/") + QLatin1String(e.icon)));
        // The platform's keys first, so menus show the familiar one; a fixed key joins them.
        QList<QKeySequence> keys = QKeySequence::keyBindings(e.standardKey);
        if (e.shortcut && !keys.contains(QKeySequence(QString::fromLatin1(e.shortcut))))
            keys << QKeySequence(QString::fromLatin1(e.shortcut));
        a->setShortcuts(keys);
        a->setCheckable(e.checkable);
        const QByteArray signature = QMetaObject::normalizedSignature(QByteArray(e.slot) + "()");
        const QString slot = QString::fromLatin1(e.slot);
        // The tool bar toggles have no slot: they are wired to their bars where the bars are made.
        if (metaObject()->indexOfMethod(signature) >= 0)
            connect(a, &QAction::triggered, this, [this, slot]() {
                QMetaObject::invokeMethod(this, slot.toLatin1().constData(), Qt::DirectConnection);
            });
        m_actions.insert(slot, a);
    }
    action("showStatusBar")->setChecked(true);
}

void ChromaxisMainWindow::createActionGroups()
{
    auto makeFamily = [this](const QString &name, const QStringList &texts, const QString &tipFormat,
                             const QList<int> &data, std::function<void(int)> apply) {
        auto *group = new QActionGroup(this);
        group->setExclusive(true);
        QList<QAction *> family;
        for (int i = 0; i < texts.size(); ++i) {
            auto *a = new QAction(texts[i], group);
            a->setObjectName(name.mid(1) + QString::number(i));
            a->setCheckable(true);
            a->setData(data[i]);
            a->setStatusTip(tipFormat.arg(texts[i]));
            connect(a, &QAction::triggered, this, [apply, a]() { apply(a->data().toInt()); });
            family << a;
        }
        m_actionFamilies.insert(name, family);
    };

    QStringList texts;
    QList<int> data;
    for (int i = 0; i < 3; ++i) {
        texts << tr(copyFormatTexts[i]);
        data << i;
    }
    makeFamily("@copyFormats", texts, tr("Set color copy format to") + " %1", data,
               [this](int v) { setCopyFormat(v); });

    texts.clear();
    data.clear();
    texts = RGBImageDialog::actionTexts();
    for (int i = 0; i < texts.size(); ++i)
        data << i;
    makeFamily("@rgbActions", texts, tr("Set default action when opening RGB images to") + " '%1'", data,
               [this](int v) { setRgbOnLoadAction(v); });

    texts.clear();
    data.clear();
    for (int size : maximumPaletteSizes) {
        texts << tr("%1 %2").arg(size).arg(tr("entries"));
        data << size;
    }
    makeFamily("@maxPaletteSizes", texts, tr("Set the maximum palette size to") + " %1", data,
               [this](int v) { setMaximumPaletteSize(v); });

    // Palette sizes are commands, not a state: they are not exclusive choices.
    QList<QAction *> sizes;
    for (int size : defaultPaletteSizes) {
        auto *a = new QAction(tr("%1 %2").arg(size).arg(tr("entries")), this);
        a->setObjectName(QStringLiteral("paletteSetDefaultSize%1").arg(size));
        a->setData(size);
        a->setStatusTip(tr("Set the size of the palette to") + QStringLiteral(" %1").arg(size));
        connect(a, &QAction::triggered, this, [this, size]() { setPaletteSizeTo(size); });
        sizes << a;
    }
    m_actionFamilies.insert("@paletteSizes", sizes);

    m_actionFamilies["@copyFormats"].at(0)->setChecked(true);
    m_actionFamilies["@rgbActions"].at(0)->setChecked(true);
}

void ChromaxisMainWindow::fillMenu(QMenu *menu, const std::vector<const char *> &items)
{
    QList<QMenu *> stack{menu};
    for (const char *item : items) {
        const QString name = QString::fromLatin1(item);
        if (name == QLatin1String("-")) {
            stack.last()->addSeparator();
        } else if (name.startsWith('[')) {
            stack << stack.last()->addMenu(tr(item + 1));
        } else if (name == QLatin1String("]")) {
            stack.removeLast();
        } else if (name == QLatin1String("@recentFiles")) {
            m_recentMenu = stack.last()->addMenu(tr("Recent files"));
            m_recentMenu->setObjectName(QStringLiteral("recentFiles"));
        } else if (name == QLatin1String("@paletteSizes")) {
            QMenu *sub = stack.last()->addMenu(tr("Set palette size to"));
            sub->addActions(m_actionFamilies.value(name));
        } else if (name.startsWith('@')) {
            stack.last()->addActions(m_actionFamilies.value(name));
        } else if (QAction *a = action(name)) {
            stack.last()->addAction(a);
        }
    }
}

void ChromaxisMainWindow::createMenus()
{
    for (const MenuLayout &m : menuLayouts())
        fillMenu(menuBar()->addMenu(tr(m.title)), m.items);
}

void ChromaxisMainWindow::createToolBars()
{
    for (const ToolBarLayout &t : toolBarLayouts()) {
        // Two rows, so that the eight bars fit the default window width.
        if (m_toolBars.size() == 4)
            addToolBarBreak();
        QToolBar *bar = addToolBar(tr(t.title));
        bar->setObjectName(QString::fromLatin1(t.settingsKey));
        for (const char *item : t.items)
            bar->addAction(action(QString::fromLatin1(item)));
        QAction *show = action(QString::fromLatin1(t.showSlot));
        show->setChecked(true);
        // The check box and the bar follow each other, whichever the user moves.
        disconnect(show, &QAction::triggered, nullptr, nullptr);
        connect(show, &QAction::toggled, bar, &QToolBar::setVisible);
        connect(bar->toggleViewAction(), &QAction::toggled, show, &QAction::setChecked);
        m_toolBars << bar;
    }
}

void ChromaxisMainWindow::createStatusBar()
{
    statusBar()->showMessage(tr("Ready"));
}

void ChromaxisMainWindow::updateActions()
{
    const bool image = m_document.hasImage();
    for (const char *name : {"saveImage", "saveImageAs", "closeImage", "printImage", "imageModeConvert",
                             "imageModeGrayscale", "imageModeExtendedGrayscale", "imageModeContinuousGrayscale",
                             "imageModeIndexedLastPalette", "imageModeContinuousLastPalette", "imageModeIndexed8bit",
                             "imageModeIndexed32bitInt", "imageModeContinuous", "imageQuantisize",
                             "imageMirrorHorizontally", "imageMirrorVertically", "imageRotateCW", "imageRotateCCW",
                             "imageExportAnimation", "normalSize", "zoomIn", "zoomOut", "fitToWindow"})
        action(QString::fromLatin1(name))->setEnabled(image);
    const bool db = m_builtinPalettes && !m_builtinPalettes->isEmpty();
    for (const char *name : {"paletteBrowseDB", "paletteRandomDB", "palettePrevDB", "paletteNextDB"})
        action(QString::fromLatin1(name))->setEnabled(db);
}

void ChromaxisMainWindow::updateProperties()
{
    const Palette<uint> &p = m_document.displayedPalette();
    m_properties->setPaletteProperties(p.property(PaletteName), p.property(PaletteComment),
                                       QFileInfo(m_document.displayedPaletteFileName()).fileName(), p.size());
    m_properties->setImageProperties(QFileInfo(m_document.imageFileName()).fileName(), m_document.imageHeight(),
                                     m_document.imageWidth(),
                                     ChromaxisDocument::modeText(m_document.imageMode(),
                                                                 m_document.image().interpolate()));
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
    m_paletteView->setModifiers(m_shiftHeld, m_controlHeld);
    QMainWindow::keyPressEvent(event);
}

void ChromaxisMainWindow::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Shift)
        m_shiftHeld = false;
    else if (event->key() == Qt::Key_Control)
        m_controlHeld = false;
    m_paletteView->setModifiers(m_shiftHeld, m_controlHeld);
    QMainWindow::keyReleaseEvent(event);
}

bool ChromaxisMainWindow::run(const std::function<void()> &command)
{
    try {
        command();
    } catch (const DescribedException &e) {
        showError(e);
        return false;
    } catch (const std::bad_alloc &) {
        showError(outOfMemoryFailure());
        return false;
    }
    return true;
}

void ChromaxisMainWindow::showError(const DescribedException &e)
{
    QMessageBox::warning(this, e.title(), e.message());
}

// ---- Showing the document ------------------------------------------------------------------------

void ChromaxisMainWindow::showImage()
{
    if (!m_document.hasImage()) {
        m_imageView->clear();
        m_imageView->hide();
        return;
    }
    m_imageView->setPixmap(QPixmap::fromImage(m_document.displayedPicture()));
    m_imageView->resize(m_document.displayedPicture().size() * m_scale);
    m_imageView->show();
}

void ChromaxisMainWindow::documentPaletteChanged()
{
    if (m_paletteView->palette() != m_document.displayedPalette())
        m_paletteView->setPalette(m_document.displayedPalette());
    showImage();
    updateProperties();
}

void ChromaxisMainWindow::documentImageChanged()
{
    showImage();
    updateActions();
    updateProperties();
    const QSignalBlocker block(action("imageInterpolateEntries"));
    action("imageInterpolateEntries")->setChecked(m_document.image().interpolate());
}

void ChromaxisMainWindow::documentSelectionChanged()
{
    if (m_paletteView->selection() != m_document.selection())
        m_paletteView->setSelected(m_document.selection());
}

void ChromaxisMainWindow::updateHistoryActions()
{
    action("undo")->setEnabled(m_document.history().canUndo());
    action("redo")->setEnabled(m_document.history().canRedo());
}
