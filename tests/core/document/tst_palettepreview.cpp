// A dialog's preview beside the document's palette: shown by what the views read, invisible to
// everything that is saved, undone or recorded, committed as one step, and never left behind.
#include "document/chromaxisdocument.h"
#include "document/macroplayer.h"
#include "palette/describedexception.h"

#include <QSignalSpy>
#include <QtTest>

namespace {

using Origin = ChromaxisDocument::PaletteOrigin;

Palette<uint> paletteOf(std::initializer_list<uint> reds)
{
    Palette<uint> p;
    for (uint r : reds)
        p.append({r << 8, 0x1100, 0x2200, 65535});
    return p;
}

QRgb shownRed(uint red)
{
    return qRgb(int(red), 0x11, 0x22);
}

// A document as a user leaves it after opening a palette file and an image: nothing modified,
// nothing to undo, a macro being recorded.
void loadDocument(ChromaxisDocument &doc,
                  const DocumentImage &image = DocumentImage::fromIndexes32(3, 1, {0, 1, 2}))
{
    doc.setImageState({image, QStringLiteral("three.png"), false});
    PaletteState state;
    state.palette = paletteOf({10, 20, 30});
    state.palette.setProperty(PaletteName, QStringLiteral("Three"));
    state.palette.setProperty(PaletteComment, QStringLiteral("from a file"));
    state.fileName = QStringLiteral("/palettes/three.gpl");
    state.builtinIndex = 4;
    doc.setPaletteState(state);
    doc.setRecording(true);
    doc.recordMacroStep(QStringLiteral("load_palette"), QStringLiteral("filename:/palettes/three.gpl\n"));
    doc.clearHistory();
}

} // namespace

class TestPalettePreview : public QObject
{
    Q_OBJECT
private slots:
    void previewLeavesDocumentAlone_data();
    void previewLeavesDocumentAlone();
    void previewShowsThroughEveryMode_data();
    void previewShowsThroughEveryMode();
    void clearingShowsThePaletteAgain();
    void commitIsOneStep_data();
    void commitIsOneStep();
    void commitWithoutPreviewRecordsNothing();
    void realChangeDropsPreview_data();
    void realChangeDropsPreview();
    void scopeClearsOnAnyExit();
    void originOfOperations_data();
    void originOfOperations();
    void replayInheritsLikeTheWindow();
};

void TestPalettePreview::previewLeavesDocumentAlone_data()
{
    QTest::addColumn<int>("origin");
    QTest::addColumn<QString>("shownName");
    QTest::addColumn<QString>("shownFile");
    QTest::newRow("edit") << int(Origin::Edit) << "Three"
                          << "/palettes/three.gpl";
    QTest::newRow("generator") << int(Origin::Generator) << ""
                               << "";
}

void TestPalettePreview::previewLeavesDocumentAlone()
{
    QFETCH(int, origin);
    QFETCH(QString, shownName);
    QFETCH(QString, shownFile);
    ChromaxisDocument doc;
    loadDocument(doc);
    const PaletteState before = doc.paletteState();
    const Palette<uint> last = doc.lastPalette();
    const QImage picture = doc.image().picture();
    const Palette<uint> imagePalette = doc.image().imagePalette();
    QSignalSpy real(&doc, &ChromaxisDocument::paletteChanged);
    QSignalSpy shown(&doc, &ChromaxisDocument::displayedPaletteChanged);
    QSignalSpy history(&doc, &ChromaxisDocument::historyChanged);

    const Palette<uint> preview = paletteOf({200, 210, 220, 230});
    doc.setPreviewPalette(preview, Origin(origin));

    QVERIFY(doc.hasPreview());
    QCOMPARE(doc.displayedPalette().entries(), preview.entries());
    QCOMPARE(doc.displayedPalette().property(PaletteName), shownName);
    QCOMPARE(doc.displayedPaletteFileName(), shownFile);
    QCOMPARE(doc.displayedPicture().pixel(1, 0), shownRed(210));
    QCOMPARE(shown.count(), 1);
    // Nothing that is saved, undone or recorded sees it.
    QCOMPARE(doc.palette(), before.palette);
    QCOMPARE(doc.paletteFileName(), before.fileName);
    QCOMPARE(doc.builtinIndex(), 4);
    QVERIFY(!doc.isPaletteModified());
    QVERIFY(!doc.isImageModified());
    QCOMPARE(doc.lastPalette(), last);
    QCOMPARE(doc.image().picture(), picture);
    QCOMPARE(doc.image().imagePalette(), imagePalette);
    QCOMPARE(doc.history().count(), 0);
    QCOMPARE(doc.macros().count(), 1);
    QCOMPARE(real.count(), 0);
    QCOMPARE(history.count(), 0);

    // A dialog moving its control again replaces the preview; still nothing recorded.
    doc.setPreviewPalette(paletteOf({5}), Origin(origin));
    QCOMPARE(doc.displayedPalette().size(), 1);
    QCOMPARE(doc.displayedPicture().pixel(2, 0), shownRed(5)); // past the palette: the last entry
    QCOMPARE(doc.palette(), before.palette);
    QCOMPARE(doc.history().count(), 0);
    QCOMPARE(shown.count(), 2);
}

void TestPalettePreview::previewShowsThroughEveryMode_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("indexed 8bit") << int(DocumentImage::Indexed8);
    QTest::newRow("indexed 32bit") << int(DocumentImage::Indexed32);
    QTest::newRow("continuous") << int(DocumentImage::Continuous);
    QTest::newRow("rgb") << int(DocumentImage::RGB);
}

void TestPalettePreview::previewShowsThroughEveryMode()
{
    QFETCH(int, mode);
    DocumentImage image;
    switch (mode) {
    case DocumentImage::Indexed8:
        image = DocumentImage::fromIndexes8(3, 1, {0, 1, 2});
        break;
    case DocumentImage::Indexed32:
        image = DocumentImage::fromIndexes32(3, 1, {0, 1, 2});
        break;
    case DocumentImage::Continuous:
        // Cell values in the middle of the bands of entries 0, 1 and 2 of three.
        image = DocumentImage::fromContinuous(3, 1, {10922.f, 32767.f, 54612.f});
        break;
    default: {
        QImage rgb(3, 1, QImage::Format_ARGB32);
        rgb.fill(qRgb(1, 2, 3));
        image = DocumentImage::fromPicture(rgb);
    }
    }
    ChromaxisDocument doc;
    loadDocument(doc, image);
    QCOMPARE(doc.imageMode(), mode);
    const QImage before = doc.image().picture().convertToFormat(QImage::Format_ARGB32);

    doc.setPreviewPalette(paletteOf({100, 110, 120}));
    const QImage shown = doc.displayedPicture().convertToFormat(QImage::Format_ARGB32);
    QCOMPARE(shown.size(), QSize(3, 1));
    for (int x = 0; x < 3; ++x)
        QCOMPARE(shown.pixel(x, 0),
                 mode == DocumentImage::RGB ? qRgb(1, 2, 3) : shownRed(100 + 10 * uint(x)));
    // The document's own picture, which is what gets saved, still shows the palette.
    QCOMPARE(doc.image().picture().convertToFormat(QImage::Format_ARGB32), before);
    if (mode != DocumentImage::RGB)
        QCOMPARE(before.pixel(1, 0), shownRed(20));
}

void TestPalettePreview::clearingShowsThePaletteAgain()
{
    ChromaxisDocument doc;
    loadDocument(doc);
    doc.setPreviewPalette(paletteOf({99, 98, 97}));
    QSignalSpy shown(&doc, &ChromaxisDocument::displayedPaletteChanged);
    doc.clearPreview();
    QVERIFY(!doc.hasPreview());
    QCOMPARE(doc.displayedPalette(), doc.palette());
    QCOMPARE(doc.displayedPaletteFileName(), QString("/palettes/three.gpl"));
    QCOMPARE(doc.displayedPicture().pixel(0, 0), shownRed(10));
    QCOMPARE(shown.count(), 1);
    doc.clearPreview(); // nothing pending: the views need not hear of it
    QCOMPARE(shown.count(), 1);
    QCOMPARE(doc.history().count(), 0);
    QVERIFY(!doc.isPaletteModified());
}

void TestPalettePreview::commitIsOneStep_data()
{
    QTest::addColumn<int>("origin");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("file");
    QTest::newRow("edit keeps name and file") << int(Origin::Edit) << "Three"
                                              << "/palettes/three.gpl";
    QTest::newRow("generator inherits nothing") << int(Origin::Generator) << ""
                                                << "";
}

void TestPalettePreview::commitIsOneStep()
{
    QFETCH(int, origin);
    QFETCH(QString, name);
    QFETCH(QString, file);
    ChromaxisDocument doc;
    loadDocument(doc);
    const PaletteState before = doc.paletteState();
    doc.setPreviewPalette(paletteOf({1, 2}), Origin(origin));
    doc.setPreviewPalette(paletteOf({40, 50, 60, 70}), Origin(origin));
    QSignalSpy real(&doc, &ChromaxisDocument::paletteChanged);

    QVERIFY(doc.commitPreview());
    QVERIFY(!doc.hasPreview());
    QCOMPARE(real.count(), 1);
    QCOMPARE(doc.history().count(), 1);
    QCOMPARE(doc.palette().entries(), paletteOf({40, 50, 60, 70}).entries());
    QCOMPARE(doc.palette().property(PaletteName), name);
    QCOMPARE(doc.paletteFileName(), file);
    QCOMPARE(doc.builtinIndex(), 4);
    QVERIFY(doc.isPaletteModified());
    // The last palette is the one before the dialog, not an intermediate preview.
    QCOMPARE(doc.lastPalette(), before.palette);
    QCOMPARE(doc.displayedPalette(), doc.palette());
    QCOMPARE(doc.image().picture().pixel(1, 0), shownRed(50));
    QCOMPARE(doc.displayedPicture().pixel(1, 0), shownRed(50));

    QVERIFY(doc.undo());
    QCOMPARE(doc.palette(), before.palette);
    QCOMPARE(doc.paletteFileName(), before.fileName);
    QVERIFY(!doc.isPaletteModified());
    QCOMPARE(doc.image().picture().pixel(1, 0), shownRed(20));
    QCOMPARE(doc.displayedPicture().pixel(1, 0), shownRed(20));
    QVERIFY(!doc.history().canUndo());
    QVERIFY(doc.redo());
    QCOMPARE(doc.palette().entries(), paletteOf({40, 50, 60, 70}).entries());
    QCOMPARE(doc.palette().property(PaletteName), name);
    QCOMPARE(doc.paletteFileName(), file);
    QVERIFY(doc.isPaletteModified());
    QVERIFY(!doc.history().canRedo());
}

void TestPalettePreview::commitWithoutPreviewRecordsNothing()
{
    ChromaxisDocument doc;
    loadDocument(doc);
    QVERIFY(!doc.commitPreview());
    doc.setPreviewPalette(paletteOf({1}));
    doc.clearPreview();
    QVERIFY(!doc.commitPreview());
    QCOMPARE(doc.history().count(), 0);
    QCOMPARE(doc.palette().entries(), paletteOf({10, 20, 30}).entries());
    QVERIFY(!doc.isPaletteModified());
}

void TestPalettePreview::realChangeDropsPreview_data()
{
    QTest::addColumn<QString>("change");
    for (const char *change :
         {"set palette", "set palette state", "palette result", "set image", "close image", "undo", "redo"})
        QTest::newRow(change) << QString::fromLatin1(change);
}

void TestPalettePreview::realChangeDropsPreview()
{
    QFETCH(QString, change);
    ChromaxisDocument doc;
    loadDocument(doc);
    doc.setPalette(paletteOf({11, 21, 31}));
    if (change == "redo")
        QVERIFY(doc.undo());
    doc.setPreviewPalette(paletteOf({250, 251, 252}), Origin::Generator);
    QSignalSpy shown(&doc, &ChromaxisDocument::displayedPaletteChanged);

    if (change == "set palette")
        doc.setPalette(paletteOf({7, 8, 9}));
    else if (change == "set palette state")
        doc.setPaletteState(doc.paletteState());
    else if (change == "palette result")
        doc.setPaletteResult(paletteOf({7, 8, 9}), Origin::Edit);
    else if (change == "set image")
        doc.setImage(DocumentImage::fromIndexes32(2, 1, {2, 1}));
    else if (change == "close image")
        doc.closeImage();
    else if (change == "undo")
        QVERIFY(doc.undo());
    else
        QVERIFY(doc.redo());

    QVERIFY(!doc.hasPreview());
    QVERIFY(shown.count() >= 1);
    QCOMPARE(doc.displayedPalette(), doc.palette());
    QCOMPARE(doc.displayedPaletteFileName(), doc.paletteFileName());
    QCOMPARE(doc.displayedPicture(), doc.image().picture());
    // Nothing stale can be committed afterwards.
    const int steps = doc.history().count();
    QVERIFY(!doc.commitPreview());
    QCOMPARE(doc.history().count(), steps);
}

void TestPalettePreview::scopeClearsOnAnyExit()
{
    ChromaxisDocument doc;
    loadDocument(doc);
    try {
        const ChromaxisDocument::PreviewScope scope(doc);
        doc.setPreviewPalette(paletteOf({1, 2, 3}));
        QVERIFY(doc.hasPreview());
        throw DescribedException(QStringLiteral("Failed"), QStringLiteral("on purpose"));
    } catch (const DescribedException &) {
    }
    QVERIFY(!doc.hasPreview());
    QCOMPARE(doc.displayedPicture().pixel(0, 0), shownRed(10));

    {
        const ChromaxisDocument::PreviewScope scope(doc);
        doc.setPreviewPalette(paletteOf({1, 2, 3}));
        QVERIFY(doc.commitPreview());
    }
    QCOMPARE(doc.history().count(), 1); // a committed preview stays committed
    QCOMPARE(doc.palette().entries(), paletteOf({1, 2, 3}).entries());
}

void TestPalettePreview::originOfOperations_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<int>("origin");
    QTest::newRow("cosine") << "cosini" << int(Origin::Generator);
    QTest::newRow("interpolation") << "interpolation" << int(Origin::Generator);
    QTest::newRow("grayscale") << "palette_generate_grayscale" << int(Origin::Generator);
    QTest::newRow("hue rotation") << "palette_generate_huerot1024" << int(Origin::Generator);
    QTest::newRow("tint") << "tint" << int(Origin::Edit);
    QTest::newRow("gradient tint") << "gradienttint" << int(Origin::Edit);
    QTest::newRow("blur") << "blur" << int(Origin::Edit);
    QTest::newRow("hue saturation value") << "hue_saturation_value" << int(Origin::Edit);
    QTest::newRow("shift order") << "shift_order" << int(Origin::Edit);
    QTest::newRow("invert order") << "palette_invert_order" << int(Origin::Edit);
    QTest::newRow("unknown") << "no_such_operation" << int(Origin::Edit);
}

void TestPalettePreview::originOfOperations()
{
    QFETCH(QString, operation);
    QFETCH(int, origin);
    QCOMPARE(int(ChromaxisDocument::originOf(operation)), origin);
}

void TestPalettePreview::replayInheritsLikeTheWindow()
{
    ChromaxisDocument doc;
    loadDocument(doc);
    MacroPlayer player;
    player.play(doc, {{"tint", "tint 2.0.0\ncolor:#ff0000\nopacity:50\nsel_only:0\n"}});
    QCOMPARE(doc.history().count(), 1);
    QCOMPARE(doc.palette()[0].r, uint((10u << 8) * 0.5 + 65280 * 0.5));
    QCOMPARE(doc.palette().property(PaletteName), QString("Three"));
    QCOMPARE(doc.paletteFileName(), QString("/palettes/three.gpl"));

    player.play(doc, {{"cosini", "cosini 2.0.0\nsize:8\n"}});
    QCOMPARE(doc.history().count(), 2);
    QCOMPARE(doc.palette().size(), 8);
    QCOMPARE(doc.palette().property(PaletteName), QString());
    QCOMPARE(doc.paletteFileName(), QString());
    QVERIFY(doc.undo());
    QCOMPARE(doc.paletteFileName(), QString("/palettes/three.gpl"));
    QCOMPARE(doc.palette().property(PaletteName), QString("Three"));
}

QTEST_GUILESS_MAIN(TestPalettePreview)
#include "tst_palettepreview.moc"
