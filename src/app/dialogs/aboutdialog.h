#pragma once

#include <QDialog>

// The About box: what the program is, its version and licence, and the libraries it runs on
// with their versions, which is what a bug report needs.
class AboutDialog : public QDialog
{
    Q_OBJECT

public:
    explicit AboutDialog(const QString &version, QWidget *parent = nullptr);

    // The box's text as rich text, also what the tests read.
    static QString text(const QString &version);
};
