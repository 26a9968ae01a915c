#pragma once

#include <QTextBrowser>
#include <QUrl>

class QHelpEngine;

// Shows the manual's pages from the help engine. Anything outside the manual goes to the
// desktop, and the browser stays where it was.
class HelpBrowser : public QTextBrowser
{
    Q_OBJECT

public:
    explicit HelpBrowser(QHelpEngine *engine, QWidget *parent = nullptr);

    QVariant loadResource(int type, const QUrl &name) override;

    using QTextBrowser::setSource;
    void setSource(const QUrl &name) override;

    static bool isHelpUrl(const QUrl &url);

private:
    QHelpEngine *m_engine;
    QUrl m_lastHelpUrl;
};
