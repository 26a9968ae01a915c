#include "manualsource.h"

#include "actioncatalogue.h"

#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextFragment>
#include <QUrl>

#include <algorithm>
#include <map>

QString headingAnchor(const QString &heading)
{
    QString out;
    for (const QChar c : heading.toLower()) {
        if (c.isLetterOrNumber() || c == '-' || c == '_')
            out += c;
        else if (c.isSpace())
            out += '-';
    }
    return out;
}

QString pageId(const QString &fileName)
{
    return QFileInfo(fileName).completeBaseName().toLower();
}

namespace {

// "x.md" or "../x.md#part" -> "x.html#part" when x is a page of the manual.
QString rewriteLink(const QString &href, const QStringList &knownIds)
{
    const QUrl url(href);
    if (!url.scheme().isEmpty() || !url.path().endsWith(QLatin1String(".md"), Qt::CaseInsensitive))
        return href;
    const QString id = pageId(url.path());
    if (!knownIds.contains(id))
        return href;
    QString out = id + QStringLiteral(".html");
    if (url.hasFragment())
        out += '#' + url.fragment();
    return out;
}

} // namespace

std::unique_ptr<ManualPage> makePage(const QString &id, const QString &markdown, const QString &baseDir,
                                     const QStringList &knownIds, QString *error)
{
    auto page = std::make_unique<ManualPage>();
    page->id = id;
    page->document = std::make_unique<QTextDocument>();
    QTextDocument *doc = page->document.get();
    doc->setMarkdown(markdown, QTextDocument::MarkdownDialectGitHub);

    std::map<QString, int> seen; // repeated headings get "-1", "-2", ... as on the web
    for (QTextBlock block = doc->begin(); block.isValid(); block = block.next()) {
        // A list item that starts in bold carries bold as its block format too, and the HTML
        // writer then makes the whole item bold.
        if (block.textList())
            QTextCursor(block).setBlockCharFormat(QTextCharFormat());
        const int level = block.blockFormat().headingLevel();
        if (level > 0 && !block.text().trimmed().isEmpty()) {
            const QString text = block.text().trimmed();
            QString anchor = headingAnchor(text);
            const int n = seen[anchor]++;
            if (n > 0)
                anchor += QStringLiteral("-%1").arg(n);
            page->headings.push_back({level, text, anchor});
            if (page->title.isEmpty())
                page->title = text;
            QTextCursor cursor(block);
            cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
            QTextCharFormat format;
            format.setAnchor(true);
            format.setAnchorNames({anchor});
            cursor.mergeCharFormat(format);
        }
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            QTextCharFormat format = fragment.charFormat();
            if (format.isImageFormat()) {
                const QString name = format.toImageFormat().name();
                if (!page->images.contains(name)) {
                    QImageReader reader(QDir(baseDir).filePath(name));
                    QImage image = reader.read();
                    if (image.isNull()) {
                        if (error)
                            *error = QStringLiteral("%1: cannot read the image \"%2\": %3")
                                         .arg(id, name, reader.errorString());
                        return nullptr;
                    }
                    page->images.insert(name, image);
                    doc->addResource(QTextDocument::ImageResource, QUrl(name), image);
                }
            } else if (format.isAnchor() && !format.anchorHref().isEmpty()) {
                const QString href = rewriteLink(format.anchorHref(), knownIds);
                if (href != format.anchorHref()) {
                    QTextCursor cursor(doc);
                    cursor.setPosition(fragment.position());
                    cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
                    format.setAnchorHref(href);
                    cursor.setCharFormat(format);
                }
            }
        }
    }
    if (page->title.isEmpty())
        page->title = id;
    doc->setMetaInformation(QTextDocument::DocumentTitle, page->title);
    return page;
}

QStringList orderPages(const QStringList &ids, const QStringList &order)
{
    QStringList out;
    // The help window's home page is the root of the contents wherever it was listed.
    if (ids.contains(QStringLiteral("index")))
        out << QStringLiteral("index");
    for (const QString &id : order) {
        if (ids.contains(id) && !out.contains(id))
            out << id;
    }
    QStringList rest;
    for (const QString &id : ids) {
        if (!out.contains(id) && !rest.contains(id))
            rest << id;
    }
    std::sort(rest.begin(), rest.end());
    return out + rest;
}

namespace {

QString plain(const char *text)
{
    return QString::fromUtf8(text).remove('&');
}

// The families of entries the window makes from its own lists, in words.
QString familyLine(const QString &name)
{
    if (name == QLatin1String("@recentFiles"))
        return QStringLiteral("the recently used files, newest first; choosing one opens it again");
    if (name == QLatin1String("@paletteSizes"))
        return QStringLiteral("\"Set palette size to\": one entry per common size; the palette grows with its "
                              "default colour or loses entries at its end");
    if (name == QLatin1String("@copyFormats"))
        return QStringLiteral("three checkable entries, \"RGB hex (#000000)\", \"RGB hex (000000)\" and "
                              "\"RGB ints (0, 0, 0)\": how \"Copy\" writes a colour as text");
    if (name == QLatin1String("@rgbActions"))
        return QStringLiteral("what happens when an RGB picture is opened: ask, keep it as RGB, or convert it "
                              "at once in one of the image modes");
    if (name == QLatin1String("@maxPaletteSizes"))
        return QStringLiteral("the largest palette the program accepts, one checkable entry per size");
    return name;
}

} // namespace

QString menuCommandsMarkdown()
{
    std::map<QString, const ActionEntry *> bySlot;
    for (const ActionEntry &e : actionCatalogue())
        bySlot[QString::fromLatin1(e.slot)] = &e;

    QString md = QStringLiteral(
        "# Menu commands\n\n"
        "Every command of the window's menus, in menu order, with its shortcut and the line the "
        "status bar shows while the pointer rests on it. The pages linked from the "
        "[contents](index.md) describe the commands that open a dialog in detail.\n\n");
    for (const MenuLayout &menu : menuLayouts()) {
        md += QStringLiteral("## The %1 menu\n\n").arg(plain(menu.title));
        QStringList submenus;
        for (const char *item : menu.items) {
            const QString name = QString::fromLatin1(item);
            const QString indent = QString(submenus.size() * 2, ' ');
            if (name == QLatin1String("-"))
                continue;
            if (name.startsWith('[')) {
                md += indent + QStringLiteral("- **%1** (submenu)\n").arg(name.mid(1));
                submenus << name.mid(1);
            } else if (name == QLatin1String("]")) {
                if (!submenus.isEmpty())
                    submenus.removeLast();
            } else if (name.startsWith('@')) {
                md += indent + QStringLiteral("- %1\n").arg(familyLine(name));
            } else if (const auto it = bySlot.find(name); it != bySlot.end()) {
                const ActionEntry &e = *it->second;
                QStringList keys;
                for (const QKeySequence &k : QKeySequence::keyBindings(e.standardKey))
                    keys << k.toString(QKeySequence::PortableText);
                if (e.shortcut && !keys.contains(QString::fromLatin1(e.shortcut)))
                    keys << QString::fromLatin1(e.shortcut);
                QString line = QStringLiteral("- **%1**").arg(plain(e.text));
                if (!keys.isEmpty())
                    line += QStringLiteral(" (%1)").arg(keys.join(QStringLiteral(", ")));
                if (e.checkable)
                    line += QStringLiteral(", checkable");
                line += QStringLiteral(": %1\n").arg(plain(e.statusTip));
                md += indent + line;
            }
        }
        md += '\n';
    }
    md += QStringLiteral("## Tool bars\n\n"
                         "The tool bars repeat menu commands; \"Settings > Show tool bars\" shows or hides each "
                         "one, and the choice is kept for the next start.\n\n");
    for (const ToolBarLayout &bar : toolBarLayouts()) {
        QStringList texts;
        for (const char *item : bar.items) {
            if (const auto it = bySlot.find(QString::fromLatin1(item)); it != bySlot.end())
                texts << plain(it->second->text);
        }
        md += QStringLiteral("- **%1**: %2\n").arg(QString::fromLatin1(bar.title), texts.join(QStringLiteral(", ")));
    }
    return md;
}
