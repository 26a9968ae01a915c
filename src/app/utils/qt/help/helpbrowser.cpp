#include "helpbrowser.h"

#include <QDesktopServices>
#include <QHelpEngine>

HelpBrowser::HelpBrowser(QHelpEngine *engine, QWidget *parent)
    : QTextBrowser(parent), m_engine(engine)
{
    setObjectName(QStringLiteral("helpBrowser"));
}

bool HelpBrowser::isHelpUrl(const QUrl &url)
{
    return url.scheme() == QLatin1String("qthelp");
}

QVariant HelpBrowser::loadResource(int type, const QUrl &name)
{
    Q_UNUSED(type)
    if (isHelpUrl(name)) {
        m_lastHelpUrl = name;
        return m_engine->fileData(name);
    }
    QDesktopServices::openUrl(name);
    return m_engine->fileData(m_lastHelpUrl);
}

void HelpBrowser::setSource(const QUrl &name)
{
    // A link out of the manual would otherwise become the page's address, and the next
    // relative link would resolve against the web site instead of the manual.
    if (!name.isRelative() && !isHelpUrl(name)) {
        loadResource(QTextDocument::HtmlResource, name);
        return;
    }
    QTextBrowser::setSource(name);
}
