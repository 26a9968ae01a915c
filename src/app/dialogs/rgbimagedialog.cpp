#include "rgbimagedialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

QStringList RGBImageDialog::actionTexts()
{
    return {tr("Ask..."),
            tr("Nothing (keep as RGB)"),
            tr("Open convert dialog..."),
            tr("Convert to 8bit grayscale"),
            tr("Convert to 32bit extended grayscale"),
            tr("Convert to continuous grayscale"),
            tr("Convert to indexed using last palette"),
            tr("Convert to continuous using last palette"),
            tr("Convert to 8bit indexed image"),
            tr("Convert 32bit assuming int indices")};
}

RGBImageDialog::RGBImageDialog(QWidget *parent) : QDialog(parent)
{
    setWindowTitle(tr("Convert image"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(
        new QLabel(tr("RGB images should be converted to an indexed format.\nPlease choose your action, it can be "
                      "undone.")));
    m_choices = new QButtonGroup(this);
    const QStringList texts = actionTexts();
    for (int i = 1; i < texts.size(); ++i) {
        auto *button = new QRadioButton(texts[i]);
        button->setObjectName(QStringLiteral("action%1").arg(i));
        m_choices->addButton(button, i);
        layout->addWidget(button);
    }
    m_choices->button(1)->setChecked(true);
    m_remember = new QCheckBox(tr("Remember my choice"));
    m_remember->setObjectName(QStringLiteral("remember"));
    layout->addWidget(m_remember);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

int RGBImageDialog::chosenAction() const
{
    return m_choices->checkedId();
}

void RGBImageDialog::setChosenAction(int action)
{
    if (QAbstractButton *b = m_choices->button(action))
        b->setChecked(true);
}

bool RGBImageDialog::remember() const
{
    return m_remember->isChecked();
}

void RGBImageDialog::setRemember(bool on)
{
    m_remember->setChecked(on);
}
