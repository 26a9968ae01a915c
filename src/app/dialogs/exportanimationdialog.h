#pragma once

#include <QDialog>

class QSpinBox;

// The range of palette indexes to cycle and the frame rate of an animation export. Starts from the
// values of the last export (QSettings "animation_start", "animation_end", "animation_speed") and
// keeps the accepted ones for the next.
class ExportAnimationDialog : public QDialog
{
    Q_OBJECT
public:
    explicit ExportAnimationDialog(int paletteLength, QWidget *parent = nullptr);

    int startIndex() const;
    int endIndex() const;
    int framesPerSecond() const;

    void accept() override;

private:
    QSpinBox *m_start = nullptr;
    QSpinBox *m_end = nullptr;
    QSpinBox *m_fps = nullptr;
};
