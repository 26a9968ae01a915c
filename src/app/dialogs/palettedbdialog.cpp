#include "palettedbdialog.h"

#include "storage/palettedatabase.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

const QSize stripSize(256, 16);

} // namespace

PaletteDBDialog::PaletteDBDialog(const PaletteDatabase &database, const QString &currentName, QWidget *parent)
    : QDialog(parent), m_database(database)
{
    setWindowTitle(QStringLiteral("Browse the DB"));

    auto *subsetLabel = new QLabel(QStringLiteral("Subset:"), this);
    m_subsetBox = new QComboBox(this);
    m_subsetBox->setObjectName(QStringLiteral("subset"));
    m_subsetBox->addItems(subsetNames());
    subsetLabel->setBuddy(m_subsetBox);

    m_table = new QTableWidget(0, 2, this);
    m_table->setObjectName(QStringLiteral("palettes"));
    m_table->setHorizontalHeaderLabels({QStringLiteral("Palette"), QStringLiteral("Name")});
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setIconSize(stripSize);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(stripSize.height() + 6);
    m_table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Fixed);
    m_table->horizontalHeader()->resizeSection(0, stripSize.width() + 12);
    m_table->horizontalHeader()->setStretchLastSection(true);

    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *top = new QHBoxLayout;
    top->addWidget(subsetLabel);
    top->addWidget(m_subsetBox, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_table, 1);
    layout->addWidget(m_buttons);
    resize(stripSize.width() + 260, 480);

    connect(m_subsetBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &PaletteDBDialog::setSetSelection);
    connect(m_table, &QTableWidget::currentCellChanged, this, &PaletteDBDialog::currentCellChanged);
    connect(m_table, &QTableWidget::cellDoubleClicked, this, [this](int row) {
        if (row >= 0 && !m_selected.isEmpty())
            accept();
    });

    m_selected = m_database.lookup(currentName) ? currentName : QString();
    const int subset = subsetNames().indexOf(PaletteDatabase::subsetOf(m_selected));
    if (subset > 0)
        m_subsetBox->setCurrentIndex(subset); // refills through the signal
    else
        setSetSelection(qMax(0, subset));
}

QStringList PaletteDBDialog::subsetNames()
{
    return {QStringLiteral("fractint"), QStringLiteral("gimp"),   QStringLiteral("orvane"),
            QStringLiteral("kestil96"), QStringLiteral("plimsy"), QStringLiteral("drabet")};
}

QPixmap PaletteDBDialog::stripPixmap(const Palette<uint> &palette, const QSize &size)
{
    QImage strip(size, QImage::Format_RGB32);
    strip.fill(Qt::black);
    const int n = palette.size();
    if (n > 0) {
        for (int x = 0; x < size.width(); ++x) {
            const auto &c = palette[int(qint64(x) * n / size.width())];
            const QRgb rgb = qRgb(int(c.r >> 8), int(c.g >> 8), int(c.b >> 8));
            for (int y = 0; y < size.height(); ++y)
                reinterpret_cast<QRgb *>(strip.scanLine(y))[x] = rgb;
        }
    }
    return QPixmap::fromImage(strip);
}

void PaletteDBDialog::setSetSelection(int index)
{
    const QStringList subsets = subsetNames();
    if (index < 0 || index >= subsets.size())
        return;
    if (m_subsetBox->currentIndex() != index) {
        m_subsetBox->setCurrentIndex(index); // comes back here through the signal
        return;
    }
    const QString subset = subsets[index];
    const QString kept = PaletteDatabase::subsetOf(m_selected) == subset ? m_selected : QString();

    const QSignalBlocker block(m_table);
    m_table->clearContents();
    m_table->setRowCount(0);
    int keptRow = -1;
    for (const QString &name : m_database.names()) {
        if (PaletteDatabase::subsetOf(name) != subset)
            continue;
        const auto palette = m_database.lookup(name);
        const int row = m_table->rowCount();
        m_table->insertRow(row);
        auto *strip = new QTableWidgetItem;
        strip->setData(Qt::DecorationRole, stripPixmap(*palette, stripSize));
        strip->setData(Qt::UserRole, name);
        strip->setToolTip(QStringLiteral("%1 colours").arg(palette->size()));
        m_table->setItem(row, 0, strip);
        auto *label = new QTableWidgetItem(name.mid(subset.size() + 1));
        label->setData(Qt::UserRole, name);
        m_table->setItem(row, 1, label);
        if (name == kept)
            keptRow = row;
    }
    if (keptRow >= 0) {
        m_table->setCurrentCell(keptRow, 1);
        m_table->scrollToItem(m_table->item(keptRow, 1));
    } else {
        m_table->setCurrentCell(-1, -1);
    }
    choose(kept);
}

void PaletteDBDialog::currentCellChanged(int row, int, int, int)
{
    const QTableWidgetItem *item = row >= 0 ? m_table->item(row, 0) : nullptr;
    choose(item ? item->data(Qt::UserRole).toString() : QString());
}

void PaletteDBDialog::choose(const QString &fullName)
{
    m_selected = fullName;
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(!m_selected.isEmpty());
}
