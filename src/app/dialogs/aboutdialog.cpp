#include "aboutdialog.h"

#include "storage/libraryversions.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QVBoxLayout>

AboutDialog::AboutDialog(const QString &version, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("aboutDialog"));
    setWindowTitle(tr("About Chromaxis"));
    auto *icon = new QLabel;
    icon->setPixmap(QIcon(QStringLiteral(":res/images/chromaxis.ico")).pixmap(64, 64));
    icon->setAlignment(Qt::AlignTop);
    auto *label = new QLabel(text(version));
    label->setObjectName(QStringLiteral("aboutText"));
    label->setTextFormat(Qt::RichText);
    label->setTextInteractionFlags(Qt::TextBrowserInteraction);
    label->setOpenExternalLinks(true);
    label->setWordWrap(true);
    label->setMinimumWidth(420);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto *row = new QHBoxLayout;
    row->addWidget(icon);
    row->addWidget(label, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addWidget(buttons);
}

QString AboutDialog::text(const QString &version)
{
    QString libraries;
    for (const auto &[name, v] : libraryVersions())
        libraries += QStringLiteral("<tr><td>%1</td><td>&nbsp;%2</td></tr>").arg(name.toHtmlEscaped(), v.toHtmlEscaped());
    return tr("<h3>Chromaxis %1</h3>"
              "<p>A workbench for colour palettes: open, generate, manipulate and save palettes, and see every "
              "change at once on an image.</p>"
              "<p>Licence: GNU General Public License, version 3 or later. Chromaxis comes with no warranty.</p>"
              "<p><a href=\"https://chromaxis.org\">chromaxis.org</a></p>"
              "<p>Libraries:</p><table>%2</table>")
        .arg(version.toHtmlEscaped(), libraries);
}
