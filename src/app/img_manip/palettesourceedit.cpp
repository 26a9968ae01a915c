#include "palettesourceedit.h"

#include "dialogs/palettedbdialog.h"
#include "storage/palettedatabase.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QSettings>
#include <QToolButton>

namespace {
// Shared with the window's own "Open palette...", so both start where the user last was.
const char *const directoryKey = "default_palette_dir";
} // namespace

PaletteSourceEdit::PaletteSourceEdit(Kind kind, const PaletteDatabase *database, QWidget *parent)
    : QWidget(parent), m_kind(kind), m_database(database)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_edit = new QLineEdit;
    m_edit->setObjectName(kind == Database ? QStringLiteral("db_palette") : QStringLiteral("file_palette"));
    layout->addWidget(m_edit, 1);
    m_button = new QToolButton;
    m_button->setObjectName(kind == Database ? QStringLiteral("browseDB") : QStringLiteral("openFile"));
    if (kind == Database) {
        m_button->setText(tr("Browse..."));
        m_button->setToolTip(tr("Browse the DB"));
        m_button->setIcon(QIcon(QStringLiteral(":res/images/db16x16.png")));
        // Without a collection there is nothing to browse; a typed name is still looked up.
        m_button->setEnabled(m_database && !m_database->isEmpty());
    } else {
        m_button->setText(tr("Open..."));
        m_button->setToolTip(tr("Open palette"));
        m_button->setIcon(QIcon(QStringLiteral(":res/images/open_palette16x16.png")));
    }
    layout->addWidget(m_button);
    connect(m_edit, &QLineEdit::textChanged, this, &PaletteSourceEdit::textChanged);
    connect(m_button, &QToolButton::clicked, this, &PaletteSourceEdit::choose);
}

QString PaletteSourceEdit::text() const
{
    return m_edit->text();
}

void PaletteSourceEdit::setText(const QString &text)
{
    m_edit->setText(text);
}

QStringList PaletteSourceEdit::fileFilters()
{
    return {tr("All palette files (*.gimp *.gpl *.aco *.map *.fractint *.pal)"),
            tr("GIMP palettes (*.gimp *.gpl)"),
            tr("Adobe palettes (*.aco)"),
            tr("Fractint palettes (*.map *.fractint)"),
            tr("Microsoft palettes (*.pal)"),
            tr("All files (* *.*)")};
}

void PaletteSourceEdit::choose()
{
    if (m_kind == Database) {
        if (!m_database)
            return;
        PaletteDBDialog dialog(*m_database, text(), this);
        if (dialog.exec() == QDialog::Accepted && !dialog.selectedName().isEmpty())
            setText(dialog.selectedName());
        return;
    }
    const QString start = text().isEmpty() ? QSettings().value(directoryKey).toString() : text();
    const QString path = QFileDialog::getOpenFileName(this, tr("Open palette"), start,
                                                      fileFilters().join(QStringLiteral(";;")));
    if (path.isEmpty())
        return;
    QSettings().setValue(directoryKey, QFileInfo(path).absolutePath());
    setText(path);
}
