#pragma once

#include <QGroupBox>

class QComboBox;
class QLineEdit;
class QToolButton;

// Where batch application writes its results: the "Destination folder" with a folder chooser and
// the extension that picks the image format.
class BatchDestinationWidget : public QGroupBox
{
    Q_OBJECT
public:
    explicit BatchDestinationWidget(QWidget *parent = nullptr);

    QString folder() const;
    void setFolder(const QString &folder);
    // ".png", ".jpg", ...
    QString extension() const;
    // An extension the list does not hold leaves the choice as it is.
    void setExtension(const QString &extension);

signals:
    void changed();

private slots:
    void chooseFolder();

private:
    QLineEdit *m_folder = nullptr;
    QToolButton *m_choose = nullptr;
    QComboBox *m_extension = nullptr;
};
