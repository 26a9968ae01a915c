// Sorting, sharpening, resizing and the pattern commands on a document. A sort moves an indexed
// image's pixels with their colours in the same history step, so the picture stays byte for byte;
// a continuous image cannot follow. Every command is one step to undo and records a macro step
// that replays to the same document.
#include "document/chromaxisdocument.h"
#include "document/documentcommands.h"
#include "document/indexremap.h"
#include "document/macroplayer.h"
#include "operations/paletteoperations.h"
#include "operations/palettesort.h"

#include <QtTest>

#include <cstring>

namespace {

using Colour = RGBAColor<uint>;

// Reds from dark to light, shuffled, so that sorting by luminance moves every entry.
Palette<uint> shuffled(int size)
{
    Palette<uint> p;
    for (int i = 0; i < size; ++i) {
        const uint red = uint((i * 7919) % size) * 65535u / uint(size);
        p.append({red, 0x1000, uint(i) * 3u, 65535});
    }
    p.setProperty(PaletteName, QStringLiteral("shuffled"));
    return p;
}

// The picture as ARGB bytes, whatever format the mode renders into.
QByteArray bytesOf(const QImage &picture)
{
    const QImage argb = picture.convertToFormat(QImage::Format_ARGB32);
    QByteArray bytes;
    for (int y = 0; y < argb.height(); ++y)
        bytes.append(reinterpret_cast<const char *>(argb.constScanLine(y)), argb.width() * 4);
    return bytes;
}

SettingsText::Pairs sortPairs(bool remap = true, bool descending = false)
{
    SortSettings s;
    s.key = SortSettings::Luminance;
    s.remap = remap;
    s.descending = descending;
    return s.toPairs();
}

void load(ChromaxisDocument &doc, const DocumentImage &image, const Palette<uint> &palette)
{
    doc.setImageState({image, QStringLiteral("picture.png"), false});
    doc.setPaletteState({palette, 0, QStringLiteral("/p/shuffled.gpl"), false, false});
    doc.clearHistory();
}

// Every index 0..255 once, so that pixels past a short palette are there too.
DocumentImage allBytes()
{
    std::vector<uint8_t> indexes;
    for (int i = 0; i < 256; ++i)
        indexes.push_back(uint8_t(i));
    return DocumentImage::fromIndexes8(16, 16, indexes);
}

} // namespace

Q_DECLARE_METATYPE(DocumentImage)

class TestReshapeCommands : public QObject
{
    Q_OBJECT
private slots:
    void pictureStaysTheSame_data();
    void pictureStaysTheSame();
    void continuousImageChanges();
    void remapOffChangesThePicture();
    void selectedOnlyMovesOnlySelectedPixels();
    void recordedAndReplayed();
    void previewKeepsThePicture();
    void alreadySortedTouchesNoImage();
    void dialogStepsUndoAndReplay_data();
    void dialogStepsUndoAndReplay();
};

void TestReshapeCommands::pictureStaysTheSame_data()
{
    QTest::addColumn<DocumentImage>("image");
    QTest::addColumn<int>("paletteSize");
    QTest::addColumn<int>("modeAfter");
    QTest::addColumn<bool>("descending");
    QTest::newRow("8 bit, short palette") << allBytes() << 16 << int(DocumentImage::Indexed8) << false;
    QTest::newRow("8 bit, descending") << allBytes() << 200 << int(DocumentImage::Indexed8) << true;
    QTest::newRow("32 bit, cells past the palette")
        << DocumentImage::fromIndexes32(4, 2, {0, 5, 9, 400, 3, 11, 11, 4000000000u}) << 12
        << int(DocumentImage::Indexed32) << false;
    // Bytes cannot name places past 255: the image becomes 32-bit indexed and looks the same.
    QTest::newRow("8 bit, 300 entries") << allBytes() << 300 << int(DocumentImage::Indexed32) << true;
}

void TestReshapeCommands::pictureStaysTheSame()
{
    QFETCH(DocumentImage, image);
    QFETCH(int, paletteSize);
    QFETCH(int, modeAfter);
    QFETCH(bool, descending);
    ChromaxisDocument doc;
    load(doc, image, shuffled(paletteSize));
    const Palette<uint> before = doc.palette();
    const QByteArray picture = bytesOf(doc.image().picture());
    DocumentCommands commands(doc, nullptr);

    QVERIFY(commands.sortMovesPixels(sortPairs(true, descending)));
    commands.sortColors({}, sortPairs(true, descending));
    const Palette<uint> sorted = doc.palette();
    SortSettings s;
    s.descending = descending;
    QCOMPARE(sorted, PaletteSort::sort(before, {}, s));
    QVERIFY(sorted != before);
    QCOMPARE(doc.imageMode(), modeAfter);
    QCOMPARE(bytesOf(doc.image().picture()), picture);
    QVERIFY(doc.isImageModified());
    QCOMPARE(doc.paletteFileName(), QStringLiteral("/p/shuffled.gpl"));

    // One step: undo gives back palette and pixels, redo sorts both again.
    QCOMPARE(doc.history().count(), 1);
    QVERIFY(doc.undo());
    QCOMPARE(doc.palette(), before);
    QCOMPARE(doc.imageMode(), image.mode());
    QCOMPARE(bytesOf(doc.image().picture()), picture);
    QVERIFY(!doc.isImageModified());
    QVERIFY(!doc.isPaletteModified());
    QVERIFY(doc.redo());
    QCOMPARE(doc.palette(), sorted);
    QCOMPARE(bytesOf(doc.image().picture()), picture);
}

void TestReshapeCommands::continuousImageChanges()
{
    ChromaxisDocument doc;
    const std::vector<float> cells{0.0f, 9000.0f, 30000.0f, 65535.0f};
    load(doc, DocumentImage::fromContinuous(2, 2, cells), shuffled(16));
    const QByteArray picture = bytesOf(doc.image().picture());
    DocumentCommands commands(doc, nullptr);
    QVERIFY(!commands.sortMovesPixels(sortPairs()));
    commands.sortColors({}, sortPairs());
    // The cells are where they were; the picture shows the sorted palette through them.
    QCOMPARE(doc.image().continuousCells(), cells);
    QVERIFY(bytesOf(doc.image().picture()) != picture);
    QVERIFY(!doc.isImageModified());
    QCOMPARE(doc.history().count(), 1);
}

void TestReshapeCommands::remapOffChangesThePicture()
{
    ChromaxisDocument doc;
    load(doc, allBytes(), shuffled(16));
    const QByteArray picture = bytesOf(doc.image().picture());
    const QImage bytesBefore = doc.image().picture();
    DocumentCommands commands(doc, nullptr);
    QVERIFY(!commands.sortMovesPixels(sortPairs(false)));
    commands.sortColors({}, sortPairs(false));
    QVERIFY(bytesOf(doc.image().picture()) != picture);
    QVERIFY(std::memcmp(doc.image().indexRow(0), bytesBefore.constScanLine(0), 16) == 0);
    QVERIFY(!doc.isImageModified());
    // Without an image there are no pixels to move.
    ChromaxisDocument bare;
    DocumentCommands none(bare, nullptr);
    QVERIFY(!none.sortMovesPixels(sortPairs()));
}

void TestReshapeCommands::selectedOnlyMovesOnlySelectedPixels()
{
    ChromaxisDocument doc;
    load(doc, DocumentImage::fromIndexes32(6, 1, {0, 1, 2, 3, 4, 5}), shuffled(6));
    const QByteArray picture = bytesOf(doc.image().picture());
    SortSettings s;
    s.selectedOnly = true;
    s.descending = true;
    DocumentCommands commands(doc, nullptr);
    commands.sortColors({1, 3, 4}, s.toPairs());
    const std::vector<uint32_t> &cells = doc.image().indexCells();
    for (const int unselected : {0, 2, 5})
        QCOMPARE(cells[size_t(unselected)], uint32_t(unselected));
    QCOMPARE(bytesOf(doc.image().picture()), picture);
    QCOMPARE(doc.palette(), PaletteSort::sort(shuffled(6), {1, 3, 4}, s));
}

void TestReshapeCommands::recordedAndReplayed()
{
    ChromaxisDocument doc;
    load(doc, allBytes(), shuffled(40));
    ChromaxisDocument replayed;
    load(replayed, allBytes(), shuffled(40));
    doc.setRecording(true);
    doc.setSelection({3, 4, 5, 6, 7, 30});
    SortSettings s;
    s.mode = 3;
    s.key = SortSettings::Component1;
    s.selectedOnly = true;
    DocumentCommands(doc, nullptr).sortColors(doc.selection(), s.toPairs());
    const std::vector<MacroFile::Step> steps = MacroFile::stepsOf(doc.macros());
    QCOMPARE(int(steps.size()), 1);
    QCOMPARE(steps[0].name, QStringLiteral("sort_colors"));
    QCOMPARE(steps[0].parameters,
             QStringLiteral("sort_colors 2.0.0\nmode:3\nkey:0\ndescending:0\nsel_only:1\n"
                            "remap:1\nselection:3-7,30\n"));
    // The player runs the very same command: palette and pixels come out alike.
    const MacroPlayer::Report report = MacroPlayer(nullptr).play(replayed, steps);
    QCOMPARE(report.played, 1);
    QCOMPARE(replayed.palette().entries(), doc.palette().entries());
    QCOMPARE(bytesOf(replayed.image().picture()), bytesOf(doc.image().picture()));
    QCOMPARE(std::memcmp(replayed.image().indexRow(0), doc.image().indexRow(0), 16), 0);
    QCOMPARE(replayed.history().count(), 1);
    // So does the operation by name, as scripts reach it.
    ChromaxisDocument scripted;
    load(scripted, allBytes(), shuffled(40));
    DocumentCommands(scripted, nullptr)
        .applyPaletteOperation("sort_colors", {3, 4, 5, 6, 7, 30}, s.toPairs());
    QCOMPARE(std::memcmp(scripted.image().indexRow(1), doc.image().indexRow(1), 16), 0);
    // Undo takes the step out of the effective macro.
    QVERIFY(doc.undo());
    QVERIFY(MacroFile::stepsOf(doc.macros()).empty());
}

void TestReshapeCommands::previewKeepsThePicture()
{
    ChromaxisDocument doc;
    load(doc, allBytes(), shuffled(16));
    const QByteArray picture = bytesOf(doc.image().picture());
    const Palette<uint> sorted = PaletteSort::sort(doc.palette(), {}, SortSettings());
    doc.setPreviewPalette(sorted, ChromaxisDocument::PaletteOrigin::Edit, true);
    QCOMPARE(doc.displayedPalette().entries(), sorted.entries());
    QCOMPARE(bytesOf(doc.displayedPicture()), picture);
    // Without keepPicture the old pixels show the new order.
    doc.setPreviewPalette(sorted, ChromaxisDocument::PaletteOrigin::Edit);
    QVERIFY(bytesOf(doc.displayedPicture()) != picture);
    doc.clearPreview();
    QCOMPARE(doc.history().count(), 0);
}

void TestReshapeCommands::alreadySortedTouchesNoImage()
{
    ChromaxisDocument doc;
    load(doc, allBytes(), PaletteSort::sort(shuffled(16), {}, SortSettings()));
    DocumentCommands(doc, nullptr).sortColors({}, sortPairs());
    QVERIFY(!doc.isImageModified());
    QCOMPARE(doc.history().count(), 1);
    // The remapping itself: an empty permutation or an RGB image leave the image alone.
    const DocumentImage image = allBytes();
    QCOMPARE(std::memcmp(remapIndexes(image, {}).indexRow(3), image.indexRow(3), 16), 0);
    QCOMPARE(remapIndexes(DocumentImage::fromContinuous(1, 1, {5.0f}), {0}).continuousCells(),
             std::vector<float>{5.0f});
}

void TestReshapeCommands::dialogStepsUndoAndReplay_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("lines");
    QTest::newRow("sharpen")
        << "sharpen"
        << "mode:3\nmethod:1\nradius:3\namount:250\ncomp1:1\ncomp2:0\ncomp3:1\ncomp4:1\nsel_only:1";
    QTest::newRow("resize") << "resize_palette"
                            << "size:99\nmode:9\nmethod:2";
    QTest::newRow("repetition pattern") << "pattern_generation"
                                        << "count:3\nstride:2\noffset:1\nmirror:1\nsize:50\nsel_only:1";
    QTest::newRow("persian raster")
        << "persian_raster"
        << "period1:5\nperiod2:2\noffset:3\nreverse:1\nthread:2\nover:2\nunder:1\nsize:0\nsel_only:1";
    QTest::newRow("append mirrored") << "palette_append_mirrored"
                                     << "";
}

void TestReshapeCommands::dialogStepsUndoAndReplay()
{
    QFETCH(QString, name);
    QFETCH(QString, lines);
    const QString text = lines.isEmpty() ? QString() : SettingsText::format(name, lines + "\n");
    const SettingsText::Pairs pairs =
        text.isEmpty() ? SettingsText::Pairs() : SettingsText::parse(text, name);
    const std::set<int> selection{2, 3, 4, 5, 9};

    // What the window does on OK: the result, installed under the step with its settings text.
    ChromaxisDocument doc;
    load(doc, allBytes(), shuffled(24));
    doc.setRecording(true);
    doc.setSelection(selection);
    const Palette<uint> before = doc.palette();
    const Palette<uint> result = PaletteOperations::apply(name, before, selection, pairs);
    QVERIFY(result != before);
    DocumentCommands commands(doc, nullptr);
    if (text.isEmpty())
        commands.applyPaletteOperation(name, selection);
    else
        commands.installPalette(result, name, text);
    QCOMPARE(doc.palette().entries(), result.entries());
    // An edit keeps the palette's name and file.
    QCOMPARE(doc.palette().property(PaletteName), QStringLiteral("shuffled"));
    QCOMPARE(doc.paletteFileName(), QStringLiteral("/p/shuffled.gpl"));
    QCOMPARE(doc.history().count(), 1);
    const std::vector<MacroFile::Step> steps = MacroFile::stepsOf(doc.macros());
    QCOMPARE(int(steps.size()), 1);
    QCOMPARE(steps[0].name, name);

    ChromaxisDocument replayed;
    load(replayed, allBytes(), shuffled(24));
    QCOMPARE(MacroPlayer(nullptr).play(replayed, steps).played, 1);
    QCOMPARE(replayed.palette().entries(), result.entries());

    QVERIFY(doc.undo());
    QCOMPARE(doc.palette(), before);
    QVERIFY(!doc.isPaletteModified());
    QVERIFY(doc.redo());
    QCOMPARE(doc.palette().entries(), result.entries());
}

QTEST_GUILESS_MAIN(TestReshapeCommands)
#include "tst_reshapecommands.moc"
