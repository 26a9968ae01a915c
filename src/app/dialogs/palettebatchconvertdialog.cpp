#include "palettebatchconvertdialog.h"

#include "conversion/palettebatchconvert.h"
#include "formats/paletteformats.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

const char *const folderKey = "palette_batch_folder";
const char *const formatKey = "palette_batch_format";
const char *const sourceDirKey = "palette_batch_source_dir";

QString describe(const QString &extension)
{
    static const struct
    {
        const char *extension;
        const char *text;
    } names[] = {
        {"gpl", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "GIMP palettes")},
        {"aco", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "Adobe palettes")},
        {"map", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "Fractint palettes")},
        {"pal", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "Microsoft palettes")},
        {"gif", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "GIF images")},
        {"html", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "HTML tables")},
        {"css", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "CSS")},
        {"js", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "JavaScript")},
        {"hextxt", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "Hex text")},
        {"hex", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "Hex text, one line")},
        {"jasc", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "JASC palettes")},
        {"ase", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "Adobe swatch exchange")},
        {"act", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "Adobe color tables")},
        {"cxw", QT_TRANSLATE_NOOP("PaletteBatchConvertDialog", "Chromaxis projects")},
    };
    QString text = extension;
    for (const auto &n : names)
        if (extension == QLatin1String(n.extension))
            text = PaletteBatchConvertDialog::tr(n.text);
    return QStringLiteral("%1 (.%2)").arg(text, extension);
}

} // namespace

PaletteBatchConvertDialog::PaletteBatchConvertDialog(QWidget *parent) : QDialog(parent)
{
    setWindowTitle(tr("Batch convert palettes"));
    const QSettings settings;

    m_files = new QListWidget;
    m_files->setObjectName(QStringLiteral("files"));
    m_files->setSelectionMode(QAbstractItemView::ExtendedSelection);
    auto *add = new QPushButton(tr("Add files..."));
    add->setObjectName(QStringLiteral("addFiles"));
    auto *remove = new QPushButton(tr("Remove"));
    remove->setObjectName(QStringLiteral("removeFiles"));
    auto *fileButtons = new QVBoxLayout;
    fileButtons->addWidget(add);
    fileButtons->addWidget(remove);
    fileButtons->addStretch(1);
    auto *fileRow = new QHBoxLayout;
    fileRow->addWidget(m_files, 1);
    fileRow->addLayout(fileButtons);

    m_format = new QComboBox;
    m_format->setObjectName(QStringLiteral("format"));
    for (const QString &extension : PaletteBatchConvert::targetExtensions())
        m_format->addItem(describe(extension), extension);
    const int remembered = m_format->findData(settings.value(formatKey, QStringLiteral("gpl")).toString());
    m_format->setCurrentIndex(qMax(0, remembered));

    m_folder = new QLineEdit(settings.value(folderKey).toString());
    m_folder->setObjectName(QStringLiteral("folder"));
    auto *choose = new QToolButton;
    choose->setObjectName(QStringLiteral("chooseFolder"));
    choose->setText(tr("..."));
    choose->setToolTip(tr("Choose the destination folder"));
    auto *folderRow = new QHBoxLayout;
    folderRow->addWidget(m_folder, 1);
    folderRow->addWidget(choose);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->setObjectName(QStringLiteral("buttons"));
    m_ok = buttons->button(QDialogButtonBox::Ok);

    auto *form = new QFormLayout;
    form->addRow(tr("Palettes:"), fileRow);
    form->addRow(tr("Convert to:"), m_format);
    form->addRow(tr("Destination folder:"), folderRow);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);

    connect(add, &QPushButton::clicked, this, &PaletteBatchConvertDialog::addFiles);
    connect(remove, &QPushButton::clicked, this, &PaletteBatchConvertDialog::removeFiles);
    connect(choose, &QToolButton::clicked, this, &PaletteBatchConvertDialog::chooseFolder);
    connect(m_folder, &QLineEdit::textChanged, this, &PaletteBatchConvertDialog::updateOk);
    connect(buttons, &QDialogButtonBox::accepted, this, &PaletteBatchConvertDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &PaletteBatchConvertDialog::reject);
    updateOk();
}

QStringList PaletteBatchConvertDialog::files() const
{
    QStringList out;
    for (int i = 0; i < m_files->count(); ++i)
        out << m_files->item(i)->text();
    return out;
}

void PaletteBatchConvertDialog::setFiles(const QStringList &files)
{
    m_files->clear();
    for (const QString &file : files)
        if (m_files->findItems(file, Qt::MatchExactly).isEmpty())
            m_files->addItem(file);
    updateOk();
}

QString PaletteBatchConvertDialog::folder() const
{
    return m_folder->text().trimmed();
}

QString PaletteBatchConvertDialog::target() const
{
    return m_format->currentData().toString();
}

void PaletteBatchConvertDialog::accept()
{
    QSettings settings;
    settings.setValue(folderKey, folder());
    settings.setValue(formatKey, target());
    QDialog::accept();
}

void PaletteBatchConvertDialog::addFiles()
{
    QSettings settings;
    const QStringList filters = paletteOpenFilters() << tr("Chromaxis projects (*.cxw)");
    const QStringList chosen = QFileDialog::getOpenFileNames(this, tr("Palettes to convert"),
                                                             settings.value(sourceDirKey).toString(),
                                                             filters.join(QStringLiteral(";;")));
    if (chosen.isEmpty())
        return;
    settings.setValue(sourceDirKey, QFileInfo(chosen.first()).absolutePath());
    setFiles(files() + chosen);
}

void PaletteBatchConvertDialog::removeFiles()
{
    qDeleteAll(m_files->selectedItems());
    updateOk();
}

void PaletteBatchConvertDialog::chooseFolder()
{
    const QString chosen =
        QFileDialog::getExistingDirectory(this, tr("Destination folder"), m_folder->text());
    if (!chosen.isEmpty())
        m_folder->setText(chosen);
}

void PaletteBatchConvertDialog::updateOk()
{
    m_ok->setEnabled(m_files->count() > 0 && !folder().isEmpty());
}
