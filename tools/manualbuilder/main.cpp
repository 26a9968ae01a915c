// Builds the manual from its Markdown pages: one HTML page each, the Qt help project that
// qhelpgenerator compiles, and the same pages as one PDF.
//
// chromaxis-manual-builder [--order FILE] [--menus] [--html DIR] [--qch FILE] [--pdf FILE]
//                          [--pdf-title TEXT] PAGE.md...
#include "manualsource.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocumentFragment>
#include <QTextFragment>
#include <QTextStream>
#include <QXmlStreamWriter>

#include <cstdio>

namespace {

const char *const helpNamespace = "org.chromaxis.manual";
const char *const virtualFolder = "doc";

bool fail(const QString &message)
{
    std::fprintf(stderr, "chromaxis-manual-builder: %s\n", qPrintable(message));
    return false;
}

bool writeAll(const QString &path, const QByteArray &data)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size() || !file.commit())
        return fail(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
    return true;
}

bool readText(const QString &path, QString *text)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("cannot read %1: %2").arg(path, file.errorString()));
    *text = QString::fromUtf8(file.readAll());
    return true;
}

QByteArray helpProject(const std::vector<std::unique_ptr<ManualPage>> &pages)
{
    QByteArray out;
    QXmlStreamWriter xml(&out);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("QtHelpProject"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    xml.writeTextElement(QStringLiteral("namespace"), QString::fromLatin1(helpNamespace));
    xml.writeTextElement(QStringLiteral("virtualFolder"), QString::fromLatin1(virtualFolder));
    xml.writeStartElement(QStringLiteral("filterSection"));

    xml.writeStartElement(QStringLiteral("toc"));
    const ManualPage &home = *pages.front();
    xml.writeStartElement(QStringLiteral("section"));
    xml.writeAttribute(QStringLiteral("title"), home.title);
    xml.writeAttribute(QStringLiteral("ref"), home.htmlName());
    for (const auto &page : pages) {
        if (page.get() == &home)
            continue;
        xml.writeStartElement(QStringLiteral("section"));
        xml.writeAttribute(QStringLiteral("title"), page->title);
        xml.writeAttribute(QStringLiteral("ref"), page->htmlName());
        for (const ManualHeading &h : page->headings) {
            if (h.level != 2)
                continue;
            xml.writeEmptyElement(QStringLiteral("section"));
            xml.writeAttribute(QStringLiteral("title"), h.text);
            xml.writeAttribute(QStringLiteral("ref"), page->htmlName() + '#' + h.anchor);
        }
        xml.writeEndElement();
    }
    xml.writeEndElement(); // home section
    xml.writeEndElement(); // toc

    xml.writeStartElement(QStringLiteral("keywords"));
    for (const auto &page : pages) {
        for (const ManualHeading &h : page->headings) {
            xml.writeEmptyElement(QStringLiteral("keyword"));
            xml.writeAttribute(QStringLiteral("name"), h.text);
            xml.writeAttribute(QStringLiteral("ref"),
                               h.level == 1 ? page->htmlName() : page->htmlName() + '#' + h.anchor);
        }
    }
    xml.writeEndElement();

    xml.writeStartElement(QStringLiteral("files"));
    QStringList files;
    for (const auto &page : pages) {
        files << page->htmlName();
        for (const QString &image : page->images.keys()) {
            if (!files.contains(image))
                files << image;
        }
    }
    for (const QString &f : files)
        xml.writeTextElement(QStringLiteral("file"), f);
    xml.writeEndElement();

    xml.writeEndElement(); // filterSection
    xml.writeEndElement(); // QtHelpProject
    xml.writeEndDocument();
    return out;
}

QByteArray collectionProject(const QString &qch)
{
    QByteArray out;
    QXmlStreamWriter xml(&out);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("QHelpCollectionProject"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    xml.writeStartElement(QStringLiteral("docFiles"));
    xml.writeStartElement(QStringLiteral("generate"));
    xml.writeStartElement(QStringLiteral("file"));
    xml.writeTextElement(QStringLiteral("input"), QStringLiteral("chromaxis.qhp"));
    xml.writeTextElement(QStringLiteral("output"), qch);
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeStartElement(QStringLiteral("register"));
    xml.writeTextElement(QStringLiteral("file"), qch);
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeEndDocument();
    return out;
}

bool writeHtml(const QString &dir, const std::vector<std::unique_ptr<ManualPage>> &pages, const QString &qch)
{
    if (!QDir().mkpath(dir))
        return fail(QStringLiteral("cannot create %1").arg(dir));
    for (const auto &page : pages) {
        // The body's font is the builder's default; the help window's own font reads better.
        QString html = page->document->toHtml("utf-8");
        html.replace(QRegularExpression(QStringLiteral("<body style=\"[^\"]*\">")), QStringLiteral("<body>"));
        if (!writeAll(QDir(dir).filePath(page->htmlName()), html.toUtf8()))
            return false;
        for (auto it = page->images.cbegin(); it != page->images.cend(); ++it) {
            const QString path = QDir(dir).filePath(it.key());
            QDir().mkpath(QFileInfo(path).absolutePath());
            QSaveFile file(path);
            if (!file.open(QIODevice::WriteOnly) || !it.value().save(&file, "PNG") || !file.commit())
                return fail(QStringLiteral("cannot write %1").arg(path));
        }
    }
    return writeAll(QDir(dir).filePath(QStringLiteral("chromaxis.qhp")), helpProject(pages))
        && (qch.isEmpty() || writeAll(QDir(dir).filePath(QStringLiteral("chromaxis.qhcp")), collectionProject(qch)));
}

// Screenshots wider than the printed text would be cut at the paper's edge: they are scaled down.
void fitImages(QTextDocument &book, const std::vector<std::unique_ptr<ManualPage>> &pages)
{
    constexpr int maxWidth = 560; // the text width of an A4 sheet in the document's pixels
    QMap<QString, QSize> sizes;
    for (const auto &page : pages) {
        for (auto it = page->images.cbegin(); it != page->images.cend(); ++it)
            sizes.insert(it.key(), it.value().size());
    }
    for (QTextBlock block = book.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (!fragment.charFormat().isImageFormat())
                continue;
            QTextImageFormat format = fragment.charFormat().toImageFormat();
            const QSize size = sizes.value(format.name());
            if (size.width() <= maxWidth)
                continue;
            format.setWidth(maxWidth);
            format.setHeight(double(size.height()) * maxWidth / size.width());
            QTextCursor cursor(&book);
            cursor.setPosition(fragment.position());
            cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
            cursor.setCharFormat(format);
        }
    }
}

bool writePdf(const QString &path, const QString &title, const std::vector<std::unique_ptr<ManualPage>> &pages)
{
    QTextDocument book;
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(10);
    book.setDefaultFont(font);
    QTextCursor cursor(&book);
    cursor.insertHtml(QStringLiteral("<h1>%1</h1>").arg(title.toHtmlEscaped()));
    for (const auto &page : pages) {
        cursor.insertBlock();
        cursor.insertText(QStringLiteral("%1").arg(page->title));
    }
    for (const auto &page : pages) {
        for (auto it = page->images.cbegin(); it != page->images.cend(); ++it)
            book.addResource(QTextDocument::ImageResource, QUrl(it.key()), it.value());
        // Every page of the manual starts a new sheet, in a fresh block: one that continued the
        // previous page's last block would also continue its list.
        QTextBlockFormat breakBefore;
        breakBefore.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        cursor.insertBlock(breakBefore, QTextCharFormat());
        cursor.insertFragment(QTextDocumentFragment(page->document.get()));
    }
    book.setMetaInformation(QTextDocument::DocumentTitle, title);
    fitImages(book, pages);

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
    {
        QPdfWriter pdf(&file);
        pdf.setTitle(title);
        pdf.setCreator(QStringLiteral("Chromaxis"));
        pdf.setPageSize(QPageSize(QPageSize::A4));
        pdf.setResolution(300);
        book.print(&pdf);
    }
    if (!file.commit())
        return fail(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addOption({QStringLiteral("order"), QStringLiteral("Page ids in contents order."), QStringLiteral("file")});
    parser.addOption({QStringLiteral("menus"), QStringLiteral("Add the page of menu commands.")});
    parser.addOption({QStringLiteral("html"), QStringLiteral("Write HTML pages and the help project."),
                      QStringLiteral("dir")});
    parser.addOption({QStringLiteral("qch"), QStringLiteral("The compiled help the collection project names."),
                      QStringLiteral("file")});
    parser.addOption({QStringLiteral("pdf"), QStringLiteral("Write the manual as one PDF."), QStringLiteral("file")});
    parser.addOption(
        {QStringLiteral("pdf-title"),
         QStringLiteral("The PDF's title (not \"--title\": the X11 platform takes that one for itself)."),
         QStringLiteral("text")});
    parser.addPositionalArgument(QStringLiteral("pages"), QStringLiteral("Markdown pages."));
    parser.process(app);

    QStringList order;
    if (parser.isSet(QStringLiteral("order"))) {
        QString text;
        if (!readText(parser.value(QStringLiteral("order")), &text))
            return 1;
        for (const QString &line : text.split('\n')) {
            const QString id = line.trimmed();
            if (!id.isEmpty() && !id.startsWith('#'))
                order << id;
        }
    }

    QMap<QString, QString> sources; // id -> file
    for (const QString &file : parser.positionalArguments())
        sources.insert(pageId(file), file);
    QStringList ids = sources.keys();
    if (parser.isSet(QStringLiteral("menus")))
        ids << QStringLiteral("menus");
    if (ids.isEmpty()) {
        fail(QStringLiteral("no pages"));
        return 2;
    }
    ids = orderPages(ids, order);

    std::vector<std::unique_ptr<ManualPage>> pages;
    for (const QString &id : ids) {
        QString markdown;
        QString dir;
        if (sources.contains(id)) {
            if (!readText(sources.value(id), &markdown))
                return 1;
            dir = QFileInfo(sources.value(id)).absolutePath();
        } else {
            markdown = menuCommandsMarkdown();
        }
        QString error;
        auto page = makePage(id, markdown, dir, ids, &error);
        if (!page) {
            fail(error);
            return 1;
        }
        page->source = sources.value(id);
        pages.push_back(std::move(page));
    }

    if (parser.isSet(QStringLiteral("html"))
        && !writeHtml(parser.value(QStringLiteral("html")), pages, parser.value(QStringLiteral("qch"))))
        return 1;
    if (parser.isSet(QStringLiteral("pdf"))) {
        const QString title = parser.isSet(QStringLiteral("pdf-title")) ? parser.value(QStringLiteral("pdf-title"))
                                                                     : QStringLiteral("Chromaxis manual");
        if (!writePdf(parser.value(QStringLiteral("pdf")), title, pages))
            return 1;
    }
    return 0;
}
