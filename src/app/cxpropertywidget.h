#pragma once

#include <QTreeWidget>

// The property panel below the palette view: the palette's name, comment, file and size and the
// image's file, height, width and mode, as a two-column tree.
class CXPropertyWidget : public QTreeWidget
{
    Q_OBJECT
public:
    explicit CXPropertyWidget(int width, QWidget *parent = nullptr);

    void setPaletteProperties(const QString &name, const QString &comment, const QString &file, int size);
    void setImageProperties(const QString &file, int height, int width, const QString &mode);

    // The text shown in the row of group ("Palette" or "Image") and name ("Size", ...), for tests
    // and for copying a value out of the panel.
    QString value(const QString &group, const QString &row) const;

private:
    QTreeWidgetItem *row(const QString &group, const QString &name) const;
    void setRow(const QString &group, const QString &name, const QString &value);

    QTreeWidgetItem *m_palette = nullptr;
    QTreeWidgetItem *m_image = nullptr;
};
