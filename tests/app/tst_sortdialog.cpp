// "Sort colors..." and "Append mirrored" as a user reaches them: the sort's preview and result
// keep an indexed picture as it was, a continuous image is announced in the dialog and changes,
// and both commands leave one undo step and one macro step.
#include "chromaxismainwindow.h"
#include "document/macroplayer.h"
#include "guitesting.h"
#include "imagelabel.h"
#include "operations/palettesort.h"
#include "pal_manip/palettedialog.h"
#include "paletteview.h"
#include "storage/palettedatabase.h"

#include <QAction>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>

namespace {

using Colour = RGBAColor<uint>;

// Sixteen entries whose luminance goes up and down, so that a sort moves most of them.
Palette<uint> zigzag()
{
    Palette<uint> p;
    for (uint i = 0; i < 16; ++i)
        p.append(Colour{(i * 4111u) % 65536u, 65535u - i * 3000u, i * i * 250u, 65535u});
    return p;
}

QImage shownPicture(ChromaxisMainWindow &w)
{
    return w.imageView()->pixmap(Qt::ReturnByValue).toImage().convertToFormat(QImage::Format_ARGB32);
}

void click(QDialog *dialog, QDialogButtonBox::StandardButton which)
{
    dialog->findChild<QDialogButtonBox *>("buttons")->button(which)->click();
}

} // namespace

class TestSortDialog : public QObject
{
    Q_OBJECT
private slots:
    void init() { QSettings().clear(); }
    void indexedPictureStays();
    void continuousImageIsAnnounced();
    void appendMirrored();

private:
    PaletteDatabase m_db;
};

void TestSortDialog::indexedPictureStays()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    std::vector<uint8_t> indexes;
    for (uint8_t i = 0; i < 16; ++i)
        indexes.push_back(i);
    w.document().setImageState({DocumentImage::fromIndexes8(16, 1, indexes), QString(), false});
    w.installPalette(zigzag(), false);
    w.document().clearHistory();
    w.document().setRecording(true);
    const Palette<uint> before = w.document().palette();
    const QImage picture = shownPicture(w);

    bool previewKept = false, remapOffered = false, noteShown = false;
    Palette<uint> previewed;
    QString title;
    handleNextDialog<PaletteDialog>([&](PaletteDialog *d) {
        title = d->windowTitle();
        d->findChild<QCheckBox *>("descending")->setChecked(true);
        QCoreApplication::processEvents();
        remapOffered = d->findChild<QCheckBox *>("remap")->isEnabled() &&
                       d->findChild<QCheckBox *>("remap")->isChecked();
        noteShown = d->findChild<QLabel *>("note")->text().contains("stays");
        previewed = w.document().displayedPalette();
        previewKept = w.document().hasPreview() && previewed.entries() == d->result().entries() &&
                      previewed != before && shownPicture(w) == picture && w.document().palette() == before;
        click(d, QDialogButtonBox::Ok);
    });
    w.action("paletteSortColors")->trigger();
    QCOMPARE(title, QStringLiteral("Sort colors"));
    QVERIFY(remapOffered);
    QVERIFY(noteShown);
    QVERIFY(previewKept);
    QCOMPARE(w.document().palette().entries(), previewed.entries());
    QCOMPARE(w.paletteView()->palette(), w.document().palette());
    QCOMPARE(shownPicture(w), picture);
    QCOMPARE(w.document().history().count(), 1);
    const std::vector<MacroFile::Step> steps = MacroFile::stepsOf(w.document().macros());
    QCOMPARE(int(steps.size()), 1);
    QCOMPARE(steps[0].name, QStringLiteral("sort_colors"));
    QVERIFY2(steps[0].parameters.contains("descending:1\n") && steps[0].parameters.contains("remap:1\n"),
             qPrintable(steps[0].parameters));

    // Unticking the box keeps the indexes, so the picture shows the sorted colours.
    w.action("undo")->trigger();
    QCOMPARE(w.document().palette(), before);
    QCOMPARE(shownPicture(w), picture);
    handleNextDialog<PaletteDialog>([&](PaletteDialog *d) {
        d->findChild<QCheckBox *>("remap")->setChecked(false);
        QCoreApplication::processEvents();
        click(d, QDialogButtonBox::Ok);
    });
    w.action("paletteSortColors")->trigger();
    QVERIFY(w.document().palette() != before);
    QVERIFY(shownPicture(w) != picture);
    w.document().setPaletteModified(false);
    w.document().setImageModified(false);
}

void TestSortDialog::continuousImageIsAnnounced()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    std::vector<float> cells;
    for (int i = 0; i < 16; ++i)
        cells.push_back(float(i * 4096));
    w.document().setImageState({DocumentImage::fromContinuous(16, 1, cells), QString(), false});
    w.installPalette(zigzag(), false);
    w.document().clearHistory();
    const QImage picture = shownPicture(w);

    QString note;
    bool remapDisabled = false, previewChanges = false;
    handleNextDialog<PaletteDialog>([&](PaletteDialog *d) {
        QCoreApplication::processEvents();
        note = d->findChild<QLabel *>("note")->text();
        remapDisabled = !d->findChild<QCheckBox *>("remap")->isEnabled();
        previewChanges = shownPicture(w) != picture;
        click(d, QDialogButtonBox::Ok);
    });
    w.action("paletteSortColors")->trigger();
    QVERIFY2(note.contains("continuous") && note.contains("change the picture"), qPrintable(note));
    QVERIFY(remapDisabled);
    QVERIFY(previewChanges);
    QVERIFY(shownPicture(w) != picture);
    QCOMPARE(w.document().image().continuousCells(), cells);
    QCOMPARE(w.document().palette(), PaletteSort::sort(zigzag(), {}, SortSettings()));
    w.document().setPaletteModified(false);
}

void TestSortDialog::appendMirrored()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    w.installPalette(zigzag(), false);
    w.document().clearHistory();
    w.document().setRecording(true);
    w.action("paletteAppendMirrored")->trigger();
    const Palette<uint> &p = w.document().palette();
    QCOMPARE(p.size(), 32);
    for (int i = 0; i < 16; ++i) {
        QCOMPARE(p[i], zigzag()[i]);
        QCOMPARE(p[31 - i], zigzag()[i]);
    }
    QCOMPARE(w.document().history().count(), 1);
    QCOMPARE(MacroFile::stepsOf(w.document().macros()).at(0).name, QStringLiteral("palette_append_mirrored"));
    w.action("undo")->trigger();
    QCOMPARE(w.document().palette(), zigzag());

    // Past the maximum palette size the window says so and leaves the palette alone.
    Palette<uint> big = zigzag();
    big.resize(w.maximumPaletteSize() / 2 + 1, Colour(1, 2, 3, 65535));
    w.installPalette(big, false);
    const int steps = w.document().history().count();
    w.action("paletteAppendMirrored")->trigger();
    QCOMPARE(w.document().palette(), big);
    QCOMPARE(w.document().history().count(), steps);
    QVERIFY(w.statusBar()->currentMessage().contains("maximum palette size"));
    w.document().setPaletteModified(false);
}

CHROMAXIS_GUI_TEST_MAIN(TestSortDialog)
#include "tst_sortdialog.moc"
