#include "dialogsettingsio.h"

#include "palette/describedexception.h"

#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QSettings>
#include <QSignalBlocker>
#include <QToolButton>

namespace {
const char *const directoryKey = "default_dir__";
const char *const fileFilter = "Settings (*.txt)";
} // namespace

DialogSettingsIO::DialogSettingsIO(DialogSettingsIOParent *owner, const QString &connectionName,
                                   const QStringList &presetNames, QWidget *parent)
    : QWidget(parent), m_owner(owner), m_connection(connectionName), m_presetNames(presetNames)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_label = new QLabel(tr("Stored settings:"));
    layout->addWidget(m_label);
    m_combo = new QComboBox;
    m_combo->setObjectName(QStringLiteral("storedSettings"));
    m_combo->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_combo->addItem(QString());
    layout->addWidget(m_combo, 1);
    connect(addButton(tr("Save to DB"), QStringLiteral("db_save16x16.png"), "saveDB"), &QToolButton::clicked,
            this, &DialogSettingsIO::saveDB);
    m_remove = addButton(tr("Remove from DB"), QStringLiteral("db_remove16x16.png"), "removeDB");
    connect(m_remove, &QToolButton::clicked, this, &DialogSettingsIO::removeDB);
    m_rename = addButton(tr("Rename in DB"), QStringLiteral("db_rename16x16.png"), "renameDB");
    connect(m_rename, &QToolButton::clicked, this, &DialogSettingsIO::renameDB);
    connect(addButton(tr("Reload DB"), QStringLiteral("db_reload16x16.png"), "reloadDB"),
            &QToolButton::clicked, this, &DialogSettingsIO::reloadDB);
    connect(addButton(tr("Read from file"), QStringLiteral("open16x16.png"), "importFile"),
            &QToolButton::clicked, this, &DialogSettingsIO::importFile);
    connect(addButton(tr("Save to file"), QStringLiteral("save16x16.png"), "exportFile"),
            &QToolButton::clicked, this, &DialogSettingsIO::exportFile);
    connect(m_combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &DialogSettingsIO::entrySelected);
    updateButtons();
}

QToolButton *DialogSettingsIO::addButton(const QString &text, const QString &icon, const char *name)
{
    auto *button = new QToolButton;
    button->setObjectName(QString::fromLatin1(name));
    button->setText(text);
    button->setToolTip(text);
    button->setIcon(QIcon(QStringLiteral(":res/images/") + icon));
    layout()->addWidget(button);
    return button;
}

SettingsStore DialogSettingsIO::store() const
{
    // Asked each time rather than at construction: the dialog is not complete while it builds its row.
    return SettingsStore(m_connection, m_owner->dialogName());
}

void DialogSettingsIO::start()
{
    reloadDB();
    const SettingsStore s = store();
    if (const auto last = s.lastUsed()) {
        const int index = last->preset ? m_combo->findText(*last->preset) : -1;
        if (index > 0) {
            m_combo->setCurrentIndex(index);
        } else {
            {
                const QSignalBlocker block(m_combo);
                m_combo->setCurrentIndex(0);
            }
            updateButtons();
            applyText(SettingsText::format(s.dialogName(), last->lines));
        }
        return;
    }
    // Nothing kept yet: the first built-in preset, or the first entry when the dialog has none.
    if (m_presetCount > 0)
        m_combo->setCurrentIndex(presetIndex(1));
    else if (m_combo->count() > 1)
        m_combo->setCurrentIndex(1);
}

void DialogSettingsIO::recordLastUsed() const
{
    store().setLastUsed(m_owner->dialogSettings(), m_combo->currentText());
}

void DialogSettingsIO::markModified()
{
    if (m_combo->currentIndex() == 0)
        return;
    {
        const QSignalBlocker block(m_combo);
        m_combo->setCurrentIndex(0);
    }
    updateButtons();
}

void DialogSettingsIO::selectText(const QString &text)
{
    {
        const QSignalBlocker block(m_combo);
        m_combo->setCurrentIndex(qMax(0, m_combo->findText(text)));
    }
    updateButtons();
}

void DialogSettingsIO::updateButtons()
{
    const bool database = isDatabaseEntry(m_combo->currentIndex());
    m_remove->setEnabled(database);
    m_rename->setEnabled(database);
}

bool DialogSettingsIO::applyText(const QString &text)
{
    SettingsText::Pairs pairs;
    try {
        pairs = store().parse(text);
    } catch (const DescribedException &e) {
        QMessageBox::warning(this, e.title(), e.message());
        return false;
    }
    m_owner->applySettings(pairs);
    return true;
}

void DialogSettingsIO::entrySelected(int index)
{
    updateButtons();
    if (index <= 0)
        return;
    const SettingsStore s = store();
    if (isPreset(index)) {
        try {
            applyText(SettingsStore::presetText(s.dialogName(), index - m_databaseCount));
        } catch (const DescribedException &e) {
            QMessageBox::warning(this, e.title(), e.message());
        }
    } else if (const auto text = s.load(m_combo->itemText(index))) {
        applyText(*text);
    } else {
        // Removed behind our back, by another dialog of the same kind.
        QMessageBox::warning(
            this, tr("Could not load"),
            tr("Unable to load %1.\nThe entry was not found in the database.").arg(m_combo->itemText(index)));
    }
    emit presetIndexChanged(index);
}

void DialogSettingsIO::reloadDB()
{
    const SettingsStore s = store();
    const QString current = m_combo->currentText();
    const QStringList names = s.names();
    m_databaseCount = names.size();
    m_presetCount = SettingsStore::presetCount(s.dialogName());
    {
        const QSignalBlocker block(m_combo);
        m_combo->clear();
        m_combo->addItem(QString());
        m_combo->addItems(names);
        for (int i = 1; i <= m_presetCount; ++i)
            m_combo->addItem(SettingsStore::presetName(m_presetNames, i));
    }
    selectText(current);
}

void DialogSettingsIO::saveDB()
{
    bool ok = false;
    const QString name = QInputDialog::getText(this, tr("Save settings to DB as..."), tr("Name:"),
                                               QLineEdit::Normal, QString(), &ok);
    if (!ok || name.trimmed().isEmpty())
        return;
    SettingsStore s = store();
    switch (s.save(name, m_owner->dialogSettings())) {
    case SettingsStore::Result::Ok:
        reloadDB();
        selectText(name);
        break;
    case SettingsStore::Result::Exists:
        QMessageBox::warning(this, tr("Could not save"),
                             tr("Could not save %1 to database.\nName already exists.").arg(name));
        break;
    default:
        QMessageBox::warning(this, tr("Could not save"), tr("Unable to save %1 to database.").arg(name));
        break;
    }
}

void DialogSettingsIO::removeDB()
{
    if (!isDatabaseEntry(m_combo->currentIndex()))
        return;
    const QString name = m_combo->currentText();
    if (QMessageBox::question(this, tr("Remove from DB?"),
                              tr("Shall the selected setting be really removed?"),
                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes)
        return;
    SettingsStore s = store();
    switch (s.remove(name)) {
    case SettingsStore::Result::Ok:
        break;
    case SettingsStore::Result::NotFound:
        QMessageBox::warning(this, tr("Could not remove"),
                             tr("Unable to remove %1.\nThe entry was not found in the database.").arg(name));
        break;
    default:
        QMessageBox::warning(this, tr("Could not remove"), tr("Unable to remove %1.").arg(name));
        break;
    }
    reloadDB();
}

void DialogSettingsIO::renameDB()
{
    if (!isDatabaseEntry(m_combo->currentIndex()))
        return;
    const QString name = m_combo->currentText();
    bool ok = false;
    const QString newName =
        QInputDialog::getText(this, tr("Rename settings..."), tr("Name:"), QLineEdit::Normal, name, &ok);
    if (!ok || newName.trimmed().isEmpty() || newName == name)
        return;
    SettingsStore s = store();
    switch (s.rename(name, newName)) {
    case SettingsStore::Result::Ok:
        reloadDB();
        selectText(newName);
        break;
    case SettingsStore::Result::NotFound:
        QMessageBox::warning(this, tr("Could not rename"),
                             tr("Unable to rename %1.\nThe entry was not found in the database.").arg(name));
        reloadDB();
        break;
    case SettingsStore::Result::Exists:
        QMessageBox::warning(
            this, tr("Could not rename"),
            tr("Unable to rename %1.\nDestination name %2 already exists.").arg(name, newName));
        break;
    default:
        QMessageBox::warning(this, tr("Could not rename DB settings"), tr("Unable to rename %1.").arg(name));
        break;
    }
}

void DialogSettingsIO::exportFile()
{
    const QString path = QFileDialog::getSaveFileName(
        this, tr("Save settings as"), QSettings().value(directoryKey).toString(), tr(fileFilter));
    if (path.isEmpty())
        return;
    QSettings().setValue(directoryKey, QFileInfo(path).absolutePath());
    try {
        store().writeFile(path, m_owner->dialogSettings());
    } catch (const DescribedException &) {
        QMessageBox::warning(this, tr("Could not save"), tr("Cannot save %1.").arg(path));
    }
}

void DialogSettingsIO::importFile()
{
    const QString path = QFileDialog::getOpenFileName(
        this, tr("Open settings"), QSettings().value(directoryKey).toString(), tr(fileFilter));
    if (path.isEmpty())
        return;
    QSettings().setValue(directoryKey, QFileInfo(path).absolutePath());
    QFile file(path);
    // The message of a failed save, for a failed read as well: users know it from the program.
    if (!file.open(QIODevice::ReadOnly)) {
        QMessageBox::warning(this, tr("Could not load"), tr("Cannot save %1.").arg(path));
        return;
    }
    try {
        const SettingsText::Pairs pairs = store().readFile(path);
        m_owner->applySettings(pairs);
    } catch (const DescribedException &e) {
        QMessageBox::warning(this, e.title(), e.message());
        return;
    }
    markModified();
}
