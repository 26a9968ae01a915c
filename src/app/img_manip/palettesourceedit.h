#pragma once

#include <QStringList>
#include <QWidget>

class PaletteDatabase;
class QLineEdit;
class QToolButton;

// Where a conversion takes its palette from when it is not built in: the name of a palette of the
// built-in collection, with a button that browses it, or the path of a palette file, with a
// button that opens one. Only the text is kept; the engines resolve it and report what they
// cannot find.
class PaletteSourceEdit : public QWidget
{
    Q_OBJECT
public:
    enum Kind
    {
        Database,
        File
    };

    PaletteSourceEdit(Kind kind, const PaletteDatabase *database, QWidget *parent = nullptr);

    QString text() const;
    void setText(const QString &text);

    // The filters of the open-palette file dialog, in their order.
    static QStringList fileFilters();

signals:
    void textChanged();

private slots:
    void choose();

private:
    Kind m_kind = Database;
    const PaletteDatabase *m_database = nullptr;
    QLineEdit *m_edit = nullptr;
    QToolButton *m_button = nullptr;
};
