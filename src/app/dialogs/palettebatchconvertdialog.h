#pragma once

#include <QDialog>

class QComboBox;
class QLineEdit;
class QListWidget;
class QPushButton;

// "Batch convert palettes...": the palette files to convert, the format they all become and the
// folder the results go to. OK is offered once there is a file and a folder; the folder and the
// format are remembered for the next time. The conversion is PaletteBatchConvert's.
class PaletteBatchConvertDialog : public QDialog
{
    Q_OBJECT
public:
    explicit PaletteBatchConvertDialog(QWidget *parent = nullptr);

    QStringList files() const;
    void setFiles(const QStringList &files);
    QString folder() const;
    // The results' extension without the dot, one of PaletteBatchConvert::targetExtensions().
    QString target() const;

    void accept() override;

private slots:
    void addFiles();
    void removeFiles();
    void chooseFolder();
    void updateOk();

private:
    QListWidget *m_files = nullptr;
    QComboBox *m_format = nullptr;
    QLineEdit *m_folder = nullptr;
    QPushButton *m_ok = nullptr;
};
