// The manual's build tool as the build runs it: Markdown pages in, HTML pages, the help project
// and a PDF out; a changed page changes what is built from it; and the installed manual holds
// every page of docs/manual.
#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

namespace {

struct Run
{
    int exitCode = -1;
    QString errors;
};

Run runBuilder(const QStringList &args)
{
    QProcess p;
    p.start(QStringLiteral(CHROMAXIS_MANUAL_BUILDER), args);
    Run r;
    if (!p.waitForFinished(60000))
        return r;
    r.exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.errors = QString::fromUtf8(p.readAllStandardError());
    return r;
}

void write(const QString &path, const QByteArray &text)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(text);
}

QString read(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

QString tool(const QString &program, const QStringList &args, int *exitCode = nullptr)
{
    QProcess p;
    p.start(program, args);
    p.waitForFinished(60000);
    if (exitCode)
        *exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    return QString::fromUtf8(p.readAllStandardOutput());
}

int pdfPages(const QString &pdf)
{
    const QRegularExpressionMatch m =
        QRegularExpression(QStringLiteral("Pages:\\s+(\\d+)")).match(tool(QStringLiteral("pdfinfo"), {pdf}));
    return m.hasMatch() ? m.captured(1).toInt() : -1;
}

// Dark pixels of one page turned into a picture: text shows as dark pixels on white paper.
int darkPixelsOfPage(const QString &pdf, int page, const QString &dir)
{
    int rc = -1;
    const QString prefix = QDir(dir).filePath(QStringLiteral("page"));
    tool(QStringLiteral("pdftoppm"), {QStringLiteral("-r"), QStringLiteral("40"), QStringLiteral("-f"),
                                      QString::number(page), QStringLiteral("-l"), QString::number(page),
                                      QStringLiteral("-png"), QStringLiteral("-singlefile"), pdf, prefix},
         &rc);
    if (rc != 0)
        return -1;
    const QImage image(prefix + QStringLiteral(".png"));
    int dark = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            dark += qGray(image.pixel(x, y)) < 100;
    }
    return dark;
}

} // namespace

class TestManualBuilder : public QObject
{
    Q_OBJECT

private slots:
    void pagesBecomeHtmlAndHelpProject();
    void changedPageChangesTheOutput();
    void linksBetweenPages_data();
    void linksBetweenPages();
    void contentsOrder();
    void missingImageFails();
    void pdfHasPagesWithText();
    void installedManualHoldsEveryPage();
    void buildRebuildsTheHelpWhenAPageChanges();
};

void TestManualBuilder::pagesBecomeHtmlAndHelpProject()
{
    QTemporaryDir dir;
    write(dir.filePath("index.md"), "# Start here\n\nSee [dithering](dither.md#error-diffusion).\n");
    write(dir.filePath("dither.md"), "# Dithering\n\nText.\n\n## Error diffusion\n\nMore.\n\n## Error diffusion\n");
    const Run r = runBuilder({"--html", dir.filePath("out"), "--qch", "x.qch", dir.filePath("index.md"),
                              dir.filePath("dither.md")});
    QCOMPARE(r.exitCode, 0);

    const QString html = read(dir.filePath("out/dither.html"));
    QVERIFY(html.contains("<title>Dithering</title>"));
    QVERIFY(html.contains("<a name=\"error-diffusion\"></a>"));
    QVERIFY(html.contains("<a name=\"error-diffusion-1\"></a>")); // a repeated heading stays reachable
    QVERIFY(read(dir.filePath("out/index.html")).contains("href=\"dither.html#error-diffusion\""));

    const QString qhp = read(dir.filePath("out/chromaxis.qhp"));
    QVERIFY(qhp.contains("<namespace>org.chromaxis.manual</namespace>"));
    QVERIFY(qhp.contains("<virtualFolder>doc</virtualFolder>"));
    QVERIFY(qhp.contains("<section title=\"Start here\" ref=\"index.html\">"));
    QVERIFY(qhp.contains("<section title=\"Error diffusion\" ref=\"dither.html#error-diffusion\"/>"));
    QVERIFY(qhp.contains("<keyword name=\"Dithering\" ref=\"dither.html\"/>"));
    QVERIFY(qhp.contains("<keyword name=\"Error diffusion\" ref=\"dither.html#error-diffusion-1\"/>"));
    QVERIFY(qhp.contains("<file>dither.html</file>"));
    const QString qhcp = read(dir.filePath("out/chromaxis.qhcp"));
    QVERIFY(qhcp.contains("<input>chromaxis.qhp</input>"));
    QVERIFY(qhcp.contains("<output>x.qch</output>"));
}

void TestManualBuilder::changedPageChangesTheOutput()
{
    // What makes the build rebuild the help when a page changes is the page being an input of the
    // step; what makes the rebuilt help differ is this.
    QTemporaryDir dir;
    const QString page = dir.filePath("modes.md");
    write(page, "# Image modes\n\n## Continuous\n\nOld words.\n");
    QCOMPARE(runBuilder({"--html", dir.filePath("out"), page}).exitCode, 0);
    const QString before = read(dir.filePath("out/modes.html"));
    const QString qhpBefore = read(dir.filePath("out/chromaxis.qhp"));
    QVERIFY(before.contains("Old words."));

    write(page, "# Image modes\n\n## Indexed\n\nNew words.\n");
    QCOMPARE(runBuilder({"--html", dir.filePath("out"), page}).exitCode, 0);
    const QString after = read(dir.filePath("out/modes.html"));
    const QString qhpAfter = read(dir.filePath("out/chromaxis.qhp"));
    QVERIFY(after.contains("New words."));
    QVERIFY(!after.contains("Old words."));
    QVERIFY(qhpBefore.contains("modes.html#continuous"));
    QVERIFY(qhpAfter.contains("<keyword name=\"Indexed\" ref=\"modes.html#indexed\"/>"));
    QVERIFY(!qhpAfter.contains("continuous"));
}

void TestManualBuilder::linksBetweenPages_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("href");
    QTest::newRow("page") << "other.md" << "other.html";
    QTest::newRow("page and heading") << "other.md#a-b" << "other.html#a-b";
    QTest::newRow("page in a parent folder") << "../Other.md" << "other.html";
    QTest::newRow("page outside the manual") << "ARCHITECTURE.md" << "ARCHITECTURE.md";
    QTest::newRow("web site") << "https://chromaxis.org/x.md" << "https://chromaxis.org/x.md";
    QTest::newRow("heading of the same page") << "#here" << "#here";
}

void TestManualBuilder::linksBetweenPages()
{
    QFETCH(QString, link);
    QFETCH(QString, href);
    QTemporaryDir dir;
    write(dir.filePath("start.md"), QStringLiteral("# Start\n\n[go](%1)\n").arg(link).toUtf8());
    write(dir.filePath("other.md"), "# Other\n");
    QCOMPARE(runBuilder({"--html", dir.filePath("out"), dir.filePath("start.md"), dir.filePath("other.md")}).exitCode,
             0);
    const QString html = read(dir.filePath("out/start.html"));
    QVERIFY2(html.contains(QStringLiteral("href=\"%1\"").arg(href)), qPrintable(html));
}

void TestManualBuilder::contentsOrder()
{
    QTemporaryDir dir;
    for (const char *id : {"a", "b", "c", "home", "z"})
        write(dir.filePath(QStringLiteral("%1.md").arg(id)), QStringLiteral("# Page %1\n").arg(id).toUtf8());
    // Listed pages first in their order; pages nobody listed follow alphabetically; a listed page
    // that does not exist is passed over.
    write(dir.filePath("order.txt"), "# comment\nhome\nz\nmissing\nb\n");
    QCOMPARE(runBuilder({"--order", dir.filePath("order.txt"), "--html", dir.filePath("out"), dir.filePath("a.md"),
                         dir.filePath("b.md"), dir.filePath("c.md"), dir.filePath("home.md"), dir.filePath("z.md")})
                 .exitCode,
             0);
    const QString qhp = read(dir.filePath("out/chromaxis.qhp"));
    QStringList refs;
    QRegularExpressionMatchIterator it = QRegularExpression(QStringLiteral("<section title=\"[^\"]*\" ref=\"([a-z]+)\\.html\"")).globalMatch(qhp);
    while (it.hasNext())
        refs << it.next().captured(1);
    QCOMPARE(refs, (QStringList{"home", "z", "b", "a", "c"}));
}

void TestManualBuilder::missingImageFails()
{
    QTemporaryDir dir;
    write(dir.filePath("shots.md"), "# Shots\n\n![The window](images/none.png)\n");
    const Run r = runBuilder({"--html", dir.filePath("out"), dir.filePath("shots.md")});
    QCOMPARE(r.exitCode, 1);
    QVERIFY2(r.errors.contains("shots: cannot read the image \"images/none.png\""), qPrintable(r.errors));
    QVERIFY(!QFile::exists(dir.filePath("out/chromaxis.qhp")));
}

void TestManualBuilder::pdfHasPagesWithText()
{
    QTemporaryDir dir;
    QDir().mkpath(dir.filePath("images"));
    QImage shot(120, 80, QImage::Format_RGB32);
    shot.fill(Qt::darkBlue);
    QVERIFY(shot.save(dir.filePath("images/shot.png")));
    QByteArray longPage = "# Long page\n\n";
    for (int i = 0; i < 120; ++i)
        longPage += "A line of the manual that is long enough to be seen, number " + QByteArray::number(i) + ".\n\n";
    write(dir.filePath("one.md"), "# First page\n\nDithering spreads the error.\n\n![shot](images/shot.png)\n");
    write(dir.filePath("two.md"), longPage);
    const QString pdf = dir.filePath("manual.pdf");
    QCOMPARE(runBuilder({"--pdf", pdf, "--pdf-title", "Test manual", dir.filePath("one.md"), dir.filePath("two.md")})
                 .exitCode,
             0);
    // A title sheet, one sheet for the first page, more than one for the long page.
    QVERIFY2(pdfPages(pdf) >= 4, qPrintable(QString::number(pdfPages(pdf))));
    QVERIFY(tool(QStringLiteral("pdfinfo"), {pdf}).contains(QStringLiteral("Test manual")));
    QVERIFY(darkPixelsOfPage(pdf, 2, dir.path()) > 500);

    // A PDF that cannot be written fails and leaves nothing.
    const Run r = runBuilder({"--pdf", dir.filePath("no/such/folder/m.pdf"), dir.filePath("one.md")});
    QCOMPARE(r.exitCode, 1);
    QVERIFY(r.errors.contains("cannot write"));
}

void TestManualBuilder::installedManualHoldsEveryPage()
{
    const QString qhp = read(QStringLiteral(CHROMAXIS_MANUAL_HTML "/chromaxis.qhp"));
    QVERIFY(!qhp.isEmpty());
    const QStringList pages = QDir(QStringLiteral(CHROMAXIS_SOURCE_DIR "/docs/manual")).entryList({"*.md"});
    QVERIFY(pages.size() >= 10);
    for (const QString &page : pages) {
        const QString html = QFileInfo(page).completeBaseName().toLower() + QStringLiteral(".html");
        QVERIFY2(qhp.contains(QStringLiteral("<file>%1</file>").arg(html)), qPrintable(html));
    }
    for (const char *extra : {"macros.html", "saving-and-limits.html", "readme.html", "menus.html"})
        QVERIFY2(qhp.contains(QStringLiteral("<file>%1</file>").arg(QLatin1String(extra))), extra);

    // The generated page of menu commands lists every command of every menu, the Help menu too.
    const QString menus = read(QStringLiteral(CHROMAXIS_MANUAL_HTML "/menus.html"));
    for (const char *text : {"The Help menu", "Open PDF docs", "Visit chromaxis.org", "Batch convert palettes...",
                             "Rotate 90 CCW", "Record macro"})
        QVERIFY2(menus.contains(QLatin1String(text)), text);

    // The shipped PDF: many pages, and text on them.
    const QString pdf = QStringLiteral(CHROMAXIS_MANUAL_DIR "/chromaxis-manual.pdf");
    const int sheets = pdfPages(pdf);
    QVERIFY(sheets >= 20);
    QTemporaryDir dir;
    QVERIFY(darkPixelsOfPage(pdf, sheets / 2, dir.path()) > 500);
}

void TestManualBuilder::buildRebuildsTheHelpWhenAPageChanges()
{
    // Building the help takes seconds, but a whole build tree to prove it would take minutes; the
    // build rules say the same: every page is an input of the help file and of the PDF.
    const QString makeRules = read(QStringLiteral(CHROMAXIS_BINARY_DIR "/docs/CMakeFiles/chromaxis_manual.dir/build.make"));
    const QString ninjaRules = read(QStringLiteral(CHROMAXIS_BINARY_DIR "/build.ninja"));
    if (makeRules.isEmpty() && ninjaRules.isEmpty())
        QSKIP("the build rules are in a form this test does not read");
    QStringList pages;
    for (const QString &page : QDir(QStringLiteral(CHROMAXIS_SOURCE_DIR "/docs/manual")).entryList({"*.md"}))
        pages << QStringLiteral(CHROMAXIS_SOURCE_DIR "/docs/manual/") + page;
    pages << QStringLiteral(CHROMAXIS_SOURCE_DIR "/docs/macros.md") << QStringLiteral(CHROMAXIS_SOURCE_DIR "/README.md")
          << QStringLiteral(CHROMAXIS_SOURCE_DIR "/docs/manual/contents.txt");
    for (const QString &output : {QStringLiteral("chromaxis.qch"), QStringLiteral("chromaxis-manual.pdf")}) {
        for (const QString &page : pages) {
            bool found = false;
            if (!makeRules.isEmpty()) {
                found = makeRules.contains(QStringLiteral("src/app/%1: %2\n").arg(output, page));
            } else {
                for (const QString &line : ninjaRules.split('\n')) {
                    if (line.startsWith(QLatin1String("build ")) && line.section(':', 0, 0).contains(output)
                        && line.contains(page))
                        found = true;
                }
            }
            QVERIFY2(found, qPrintable(output + QStringLiteral(" <- ") + page));
        }
    }
}

QTEST_GUILESS_MAIN(TestManualBuilder)
#include "tst_manualbuilder.moc"
