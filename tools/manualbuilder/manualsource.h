#pragma once

#include <QImage>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTextDocument>

#include <memory>
#include <vector>

// One page of the manual, read from its Markdown source and turned into a rich-text document
// whose headings carry anchors and whose links between pages point at the HTML names.
struct ManualHeading
{
    int level = 0;
    QString text;
    QString anchor;
};

struct ManualPage
{
    QString id;      // file name of the HTML page without ".html", e.g. "image-modes"
    QString title;   // the first heading, or the id
    QString source;  // the Markdown file it came from, or empty for a generated page
    std::unique_ptr<QTextDocument> document;
    std::vector<ManualHeading> headings;
    QMap<QString, QImage> images; // image name as written in the page -> picture

    QString htmlName() const { return id + QStringLiteral(".html"); }
};

// The anchor a heading gets: lower case, letters, digits and dashes, the way Markdown
// renderers on the web name them, so that "page.md#some-heading" links keep working.
QString headingAnchor(const QString &heading);

// The page id of a Markdown file name: "docs/manual/Image-Modes.md" -> "image-modes".
QString pageId(const QString &fileName);

// Builds a page from Markdown text. knownIds are the pages of the manual: links to "x.md" whose
// id is known become "x.html"; baseDir resolves the images the page shows. Returns null and
// sets error when an image cannot be read.
std::unique_ptr<ManualPage> makePage(const QString &id, const QString &markdown, const QString &baseDir,
                                     const QStringList &knownIds, QString *error);

// Orders page ids: "index" (the home page) first, then the ids of order in that order (those
// missing are skipped), then every other page in alphabetical order, so a page nobody listed
// still joins the manual.
QStringList orderPages(const QStringList &ids, const QStringList &order);

// The Markdown page that lists every menu command of the window, built from the action
// catalogue so that it can never miss one.
QString menuCommandsMarkdown();
