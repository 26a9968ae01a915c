#pragma once

#include <QDialog>
#include <QPixmap>
#include <QString>
#include <QStringList>

#include "palette/palette.h"

class PaletteDatabase;
class QComboBox;
class QDialogButtonBox;
class QTableWidget;

// "Browse the DB": picks one palette of the built-in collection. A combo box chooses the subset;
// the table lists its palettes as a colour strip and a name; the current row is the choice, and
// OK returns its full name ("subset/name").
class PaletteDBDialog : public QDialog
{
    Q_OBJECT
public:
    // currentName, when it names a palette of the database, is shown and chosen at the start.
    explicit PaletteDBDialog(const PaletteDatabase &database, const QString &currentName = QString(),
                             QWidget *parent = nullptr);

    // The subsets the combo box offers, in its order.
    static QStringList subsetNames();
    // The name the dialog's settings are stored under.
    static QString settingsName() { return QStringLiteral("palette_db"); }
    // A strip of the palette's colours, each entry a band of equal width.
    static QPixmap stripPixmap(const Palette<uint> &palette, const QSize &size);

    // The full name of the chosen palette; empty while none is chosen.
    QString selectedName() const { return m_selected; }

public slots:
    // Shows the palettes of subset index (an index into subsetNames()).
    void setSetSelection(int index);

private slots:
    void currentCellChanged(int row, int column, int previousRow, int previousColumn);

private:
    void choose(const QString &fullName);

    const PaletteDatabase &m_database;
    QComboBox *m_subsetBox = nullptr;
    QTableWidget *m_table = nullptr;
    QDialogButtonBox *m_buttons = nullptr;
    QString m_selected;
};
