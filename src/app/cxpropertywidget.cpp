#include "cxpropertywidget.h"

#include <QHeaderView>

CXPropertyWidget::CXPropertyWidget(int width, QWidget *parent) : QTreeWidget(parent)
{
    setColumnCount(2);
    setHeaderLabels({tr("Property"), tr("Value")});
    setRootIsDecorated(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextElideMode(Qt::ElideMiddle);

    m_palette = new QTreeWidgetItem(this, {tr("Palette")});
    for (const char *name : {"Name", "Comment", "File", "Size"})
        new QTreeWidgetItem(m_palette, {tr(name), QString()});
    m_image = new QTreeWidgetItem(this, {tr("Image")});
    for (const char *name : {"File", "Height", "Width", "Mode"})
        new QTreeWidgetItem(m_image, {tr(name), QString()});
    for (QTreeWidgetItem *group : {m_palette, m_image}) {
        group->setFirstColumnSpanned(true);
        QFont f = group->font(0);
        f.setBold(true);
        group->setFont(0, f);
    }
    expandAll();

    setIndentation(12);
    resize(width, height());
    resizeColumnToContents(0);
    header()->resizeSection(0, header()->sectionSize(0) + 8);
    header()->setStretchLastSection(true);

    // Tall enough for the header and every row, and no taller: the palette view above takes the rest.
    int rowsHeight = 0;
    for (QTreeWidgetItem *group : {m_palette, m_image}) {
        rowsHeight += indexRowSizeHint(indexFromItem(group));
        for (int i = 0; i < group->childCount(); ++i)
            rowsHeight += indexRowSizeHint(indexFromItem(group->child(i)));
    }
    setFixedHeight(header()->sizeHint().height() + rowsHeight + 2 * frameWidth());
}

QTreeWidgetItem *CXPropertyWidget::row(const QString &group, const QString &name) const
{
    QTreeWidgetItem *g = group == QLatin1String("Palette") ? m_palette
                         : group == QLatin1String("Image") ? m_image
                                                           : nullptr;
    if (!g)
        return nullptr;
    for (int i = 0; i < g->childCount(); ++i)
        if (g->child(i)->text(0) == name)
            return g->child(i);
    return nullptr;
}

void CXPropertyWidget::setRow(const QString &group, const QString &name, const QString &value)
{
    if (QTreeWidgetItem *item = row(group, name)) {
        item->setText(1, value);
        item->setToolTip(1, value);
    }
}

QString CXPropertyWidget::value(const QString &group, const QString &rowName) const
{
    const QTreeWidgetItem *item = row(group, rowName);
    return item ? item->text(1) : QString();
}

void CXPropertyWidget::setPaletteProperties(const QString &name, const QString &comment, const QString &file,
                                            int size)
{
    setRow("Palette", "Name", name);
    setRow("Palette", "Comment", comment);
    setRow("Palette", "File", file);
    setRow("Palette", "Size", QString::number(size));
}

void CXPropertyWidget::setImageProperties(const QString &file, int height, int width, const QString &mode)
{
    setRow("Image", "File", file);
    setRow("Image", "Height", QString::number(height));
    setRow("Image", "Width", QString::number(width));
    setRow("Image", "Mode", mode);
}
