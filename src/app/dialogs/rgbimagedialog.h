#pragma once

#include <QDialog>

class QButtonGroup;
class QCheckBox;

// Asks what to do with an RGB image that was just opened: the default RGB actions 1 to 9, and
// whether to remember the choice as the new default.
class RGBImageDialog : public QDialog
{
    Q_OBJECT
public:
    explicit RGBImageDialog(QWidget *parent = nullptr);

    // The texts of the RGB actions 0 ("Ask...") to 9, shared with the settings menu.
    static QStringList actionTexts();

    int chosenAction() const;
    void setChosenAction(int action);
    bool remember() const;
    void setRemember(bool on);

private:
    QButtonGroup *m_choices = nullptr;
    QCheckBox *m_remember = nullptr;
};
