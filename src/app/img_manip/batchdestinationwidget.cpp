#include "batchdestinationwidget.h"

#include "conversion/imageconvertsettings.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>

BatchDestinationWidget::BatchDestinationWidget(QWidget *parent) : QGroupBox(tr("Destination folder"), parent)
{
    m_folder = new QLineEdit;
    m_folder->setObjectName(QStringLiteral("folder"));
    m_choose = new QToolButton;
    m_choose->setObjectName(QStringLiteral("chooseFolder"));
    m_choose->setText(tr("..."));
    m_choose->setToolTip(tr("Choose the destination folder"));
    m_extension = new QComboBox;
    m_extension->setObjectName(QStringLiteral("extension"));
    m_extension->addItems(ImageConvertSettings::extensions());
    m_extension->setCurrentText(ImageConvertSettings().extension);

    auto *folderRow = new QHBoxLayout;
    folderRow->addWidget(m_folder, 1);
    folderRow->addWidget(m_choose);
    auto *form = new QFormLayout(this);
    form->addRow(tr("Folder:"), folderRow);
    form->addRow(tr("Extension:"), m_extension);

    connect(m_folder, &QLineEdit::textChanged, this, &BatchDestinationWidget::changed);
    connect(m_extension, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &BatchDestinationWidget::changed);
    connect(m_choose, &QToolButton::clicked, this, &BatchDestinationWidget::chooseFolder);
}

QString BatchDestinationWidget::folder() const
{
    return m_folder->text();
}

void BatchDestinationWidget::setFolder(const QString &folder)
{
    m_folder->setText(folder);
}

QString BatchDestinationWidget::extension() const
{
    return m_extension->currentText();
}

void BatchDestinationWidget::setExtension(const QString &extension)
{
    const int index = m_extension->findText(extension);
    if (index >= 0)
        m_extension->setCurrentIndex(index);
}

void BatchDestinationWidget::chooseFolder()
{
    const QString folder =
        QFileDialog::getExistingDirectory(this, tr("Destination folder"), m_folder->text());
    if (!folder.isEmpty())
        m_folder->setText(folder);
}
