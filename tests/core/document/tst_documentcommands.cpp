#include "conversion/batchapply.h"
#include "document/chromaxisdocument.h"
#include "document/documentcommands.h"
#include "document/macroplayer.h"
#include "formats/paletteformats.h"
#include "palette/describedexception.h"
#include "conversion/imagequantisizesettings.h"
#include "storage/documentimageio.h"
#include "storage/palettedatabase.h"
#include "storage/projectfile.h"

#include "../storage/gifbuilder.h"
#include "refusal.h"

#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

namespace {

Palette<uint> rampOf(int size)
{
    Palette<uint> p;
    for (int i = 0; i < size; ++i) {
        const uint v = uint(i * 65535 / qMax(1, size - 1));
        p.append({v, 65535 - v, v / 2, 65535});
    }
    return p;
}

QString writeRgbImage(const QString &path, int width = 4, int height = 3)
{
    QImage picture(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            picture.setPixel(x, y, qRgb(x * 60, y * 80, 200));
    if (!picture.save(path))
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QString writePalette(const QString &path, const Palette<uint> &palette)
{
    exportPalette(path, palette, formatFromWord(QFileInfo(path).suffix()));
    return path;
}

PaletteDatabase smallDatabase()
{
    PaletteDatabase db;
    db.loadFromText("first/warm;ff0000ff8000ffff00;\nsecond/cold;0000ff00ffff;\n");
    return db;
}

QVector<QRgb> pixelsOf(const QImage &picture)
{
    QVector<QRgb> pixels;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            pixels << picture.pixel(x, y);
    return pixels;
}

// A picture of a dozen colours, as an 8-bit indexed picture with its colour table.
QImage indexedPicture()
{
    QImage picture(6, 5, QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (int i = 0; i < 16; ++i)
        table << qRgb((i * 53) % 256, (i * 97 + 30) % 256, (255 - i * 31) % 256);
    picture.setColorTable(table);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x)
            picture.setPixel(x, y, uint((x * 3 + y * 5) % 12));
    return picture;
}

Palette<uint> tableOf(const QImage &picture, int transparent = -1)
{
    Palette<uint> p;
    const QVector<QRgb> table = picture.colorTable();
    for (int i = 0; i < table.size(); ++i)
        p.append({uint(qRed(table[i])) << 8, uint(qGreen(table[i])) << 8, uint(qBlue(table[i])) << 8,
                  i == transparent ? 0u : 65535u});
    return p;
}

// The picture as a GIF whose first frame has a local table and a transparent index; the global
// table is another one, which must not be taken.
QByteArray gifOf(const QImage &picture, int transparent)
{
    GifFrame frame;
    frame.width = picture.width();
    frame.height = picture.height();
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            frame.pixels.push_back(uint8_t(picture.pixelIndex(x, y)));
    frame.localTable = picture.colorTable();
    frame.transparent = transparent;
    return buildGif(frame.width, frame.height, {qRgb(0, 0, 0), qRgb(255, 255, 255)}, {frame});
}

QString writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QByteArray cellsOf(const DocumentImage &image)
{
    QByteArray out;
    if (image.mode() == DocumentImage::Indexed8)
        for (int y = 0; y < image.height(); ++y)
            out += QByteArray(reinterpret_cast<const char *>(image.indexRow(y)), image.width());
    else if (image.mode() == DocumentImage::Indexed32)
        out = QByteArray(reinterpret_cast<const char *>(image.indexCells().data()),
                         int(image.indexCells().size() * 4));
    else if (image.mode() == DocumentImage::Continuous)
        out = QByteArray(reinterpret_cast<const char *>(image.continuousCells().data()),
                         int(image.continuousCells().size() * 4));
    return out;
}

} // namespace

class TestDocumentCommands : public QObject
{
    Q_OBJECT
private slots:
    void init() { QVERIFY(m_dir.isValid()); }

    void refusedCommandsChangeNothing_data();
    void refusedCommandsChangeNothing();
    void paletteOverRgbImageIsOneStep();
    void savedProjectIsClean();
    void rgbOnLoadRule_data();
    void rgbOnLoadRule();
    void indexedImagesOpenInTheirOwnColours_data();
    void indexedImagesOpenInTheirOwnColours();
    void indexedSourceConvertsLikeItsPicture_data();
    void indexedSourceConvertsLikeItsPicture();
    void projectKeepsSelectionPastTheEnd();
    void builtinPalettes();
    void recordedCommandsReplayAlike();
    void replayDoesNotRecord();
    void undoneCommandsReplayAlike_data();
    void undoneCommandsReplayAlike();
    void batchApplyWritesAndReports();
    void batchApplyCancelsAndRefusesFolder();

private:
    QTemporaryDir m_dir;
};

// A command that fails says why and leaves the document, its history and its recording alone.
void TestDocumentCommands::refusedCommandsChangeNothing_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *tag, const QString &command, const QString &message) {
        QTest::newRow(tag) << command << message;
    };
    row("unknown palette format", "loadPalette",
        "Could not load: Unable to load palette x.zzz.\nUnrecognized format.");
    row("missing image file", "loadImage", "");
    row("database name", "takeBuiltin",
        "Palette database: There is no palette named 'nobody/none' in the database.");
    row("database position", "takeBuiltinIndex",
        "Palette database: There is no palette at position 7 in the database.");
    row("conversion without image", "fastConvert",
        "No image: The command 'image_convert_grayscale' needs an image.");
    row("maximum below image", "maximum",
        "Image conflict: The current image may use more colors than the new maximum value.\nPlease close the "
        "image first.");
    row("save palette unknown format", "savePalette",
        "Could not save: Unable to save palette p.zzz.\nUnrecognized format.");
}

void TestDocumentCommands::refusedCommandsChangeNothing()
{
    QFETCH(QString, command);
    QFETCH(QString, message);
    const PaletteDatabase db = smallDatabase();
    ChromaxisDocument doc;
    DocumentCommands commands(doc, &db);
    doc.setPaletteState({rampOf(8), 0, QString(), false, false}, true);
    if (command == QLatin1String("maximum"))
        doc.setImageState({DocumentImage::fromIndexes8(2, 1, {0, 7}), QString(), false}, true);
    doc.setRecording(true);
    const Palette<uint> before = doc.palette();
    const int mode = doc.imageMode();

    const QString got = refusal([&] {
        if (command == QLatin1String("loadPalette"))
            commands.loadPalette(m_dir.filePath("x.zzz"));
        else if (command == QLatin1String("loadImage"))
            commands.loadImage(m_dir.filePath("absent.png"));
        else if (command == QLatin1String("takeBuiltin"))
            commands.takeBuiltin(QStringLiteral("nobody/none"));
        else if (command == QLatin1String("takeBuiltinIndex"))
            commands.takeBuiltin(7);
        else if (command == QLatin1String("fastConvert"))
            commands.fastConvert(QStringLiteral("image_convert_grayscale"));
        else if (command == QLatin1String("maximum"))
            commands.setMaximumPaletteSize(256);
        else if (command == QLatin1String("savePalette"))
            commands.savePalette(m_dir.filePath("p.zzz"));
    });
    QVERIFY2(got != QLatin1String("accepted"), "the command must fail");
    if (!message.isEmpty())
        QCOMPARE(got, message);
    QCOMPARE(doc.palette(), before);
    QCOMPARE(doc.imageMode(), mode);
    QCOMPARE(doc.history().count(), 0);
    QCOMPARE(doc.macros().position(), 0);
}

// No palette can show an RGB image, so loading one closes the image; undo brings both back.
void TestDocumentCommands::paletteOverRgbImageIsOneStep()
{
    ChromaxisDocument doc;
    DocumentCommands commands(doc, nullptr);
    const QString image = writeRgbImage(m_dir.filePath("photo.png"));
    const QString gpl = writePalette(m_dir.filePath("ramp.gpl"), rampOf(5));
    QCOMPARE(commands.loadImage(image), int(DocumentCommands::RgbKeep));
    QCOMPARE(doc.imageMode(), int(DocumentImage::RGB));
    QVERIFY(commands.loadingPaletteDiscardsImage());
    const int steps = doc.history().position();

    commands.loadPalette(gpl);
    QVERIFY(!doc.hasImage());
    QCOMPARE(doc.palette().size(), 5);
    QCOMPARE(doc.paletteFileName(), gpl);
    QVERIFY(!doc.isPaletteModified());
    QCOMPARE(doc.history().position(), steps + 1);

    QVERIFY(doc.undo());
    QCOMPARE(doc.imageMode(), int(DocumentImage::RGB));
    QVERIFY(doc.palette().size() != 5);
    QVERIFY(doc.redo());
    QVERIFY(!doc.hasImage());
    QCOMPARE(doc.palette().size(), 5);
}

// Saving a project saves every change: the document and the file are clean, and the window hears
// of it though neither palette nor image changed.
void TestDocumentCommands::savedProjectIsClean()
{
    ChromaxisDocument doc;
    DocumentCommands commands(doc, nullptr);
    QCOMPARE(commands.loadImage(writeRgbImage(m_dir.filePath("photo.png"))), int(DocumentCommands::RgbKeep));
    commands.fastConvert(QStringLiteral("image_convert_grayscale"));
    commands.applyPaletteOperation(QStringLiteral("palette_invert_order"), {});
    QVERIFY(doc.isPaletteModified() && doc.isImageModified());
    QVERIFY(doc.hasUnsavedPalette() && doc.hasUnsavedImage());
    QSignalSpy told(&doc, &ChromaxisDocument::fileStateChanged);

    const QString file = m_dir.filePath("clean.cxw");
    commands.saveProject(file);
    QVERIFY(!doc.isPaletteModified() && !doc.isImageModified());
    QCOMPARE(doc.projectFileName(), file);
    QVERIFY(told.count() >= 1);

    ChromaxisDocument reopened;
    DocumentCommands(reopened, nullptr).openProject(file);
    QVERIFY(!reopened.isPaletteModified() && !reopened.isImageModified());
    QCOMPARE(reopened.palette().entries(), doc.palette().entries());

    // Over an RGB image the palette's changes do not count: no palette shows that image.
    commands.loadImage(writeRgbImage(m_dir.filePath("photo2.png")));
    doc.setPaletteModified(true);
    QVERIFY(!doc.hasUnsavedPalette());
}

void TestDocumentCommands::rgbOnLoadRule_data()
{
    QTest::addColumn<int>("action");
    QTest::addColumn<int>("pending");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QStringList>("steps");
    const QStringList load{"load_image"};
    QTest::newRow("ask") << 0 << 0 << int(DocumentImage::RGB) << load;
    QTest::newRow("keep") << 1 << 1 << int(DocumentImage::RGB) << load;
    QTest::newRow("dialog") << 2 << 2 << int(DocumentImage::RGB) << load;
    QTest::newRow("grayscale") << 3 << 1 << int(DocumentImage::Indexed8)
                               << QStringList{"load_image", "image_convert_grayscale"};
    QTest::newRow("continuous grayscale") << 5 << 1 << int(DocumentImage::Continuous)
                                          << QStringList{"load_image", "image_convert_continuous_grayscale"};
    QTest::newRow("32-bit") << 9 << 1 << int(DocumentImage::Indexed32)
                            << QStringList{"load_image", "image_convert_indexed32bitint"};
    QTest::newRow("out of range keeps") << 10 << 1 << int(DocumentImage::RGB) << load;
}

void TestDocumentCommands::rgbOnLoadRule()
{
    QFETCH(int, action);
    QFETCH(int, pending);
    QFETCH(int, mode);
    QFETCH(QStringList, steps);
    ChromaxisDocument doc;
    doc.setPaletteState({rampOf(16), 0, QString(), false, false}, true);
    doc.setRecording(true);
    DocumentCommands commands(doc, nullptr);
    QCOMPARE(commands.loadImage(writeRgbImage(m_dir.filePath("rgb.png")), action), pending);
    QCOMPARE(doc.imageMode(), mode);
    QStringList recorded;
    for (const MacroFile::Step &s : MacroFile::stepsOf(doc.macros()))
        recorded << s.name;
    QCOMPARE(recorded, steps);
}

void TestDocumentCommands::indexedImagesOpenInTheirOwnColours_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<Palette<uint>>("colours");
    const QImage picture = indexedPicture();
    QVERIFY(picture.save(m_dir.filePath("own.png")));
    QTest::newRow("indexed png") << m_dir.filePath("own.png") << tableOf(picture);
    const QByteArray gif = gifOf(picture, 5);
    QVERIFY(!gif.isEmpty());
    QTest::newRow("gif, local table, transparent index")
        << writeBytes(m_dir.filePath("own.gif"), gif) << tableOf(picture, 5);
}

// Opening an indexed picture installs its colour table with it, as one step to undo, and the
// palette shown before becomes the last palette; a replay of the step does the same.
void TestDocumentCommands::indexedImagesOpenInTheirOwnColours()
{
    QFETCH(QString, file);
    QFETCH(Palette<uint>, colours);
    const Palette<uint> before = rampOf(8);
    const DocumentImage oldImage = DocumentImage::fromIndexes32(2, 1, {7, 1});
    ChromaxisDocument doc;
    doc.setPaletteState({before, 0, m_dir.filePath("ramp.gpl"), true, false}, true);
    doc.setImageState({oldImage, m_dir.filePath("old.npy"), true}, true);
    doc.setRecording(true);
    DocumentCommands commands(doc, nullptr);

    QCOMPARE(commands.loadImage(file, DocumentCommands::RgbAsk), int(DocumentCommands::RgbKeep));
    QCOMPARE(doc.imageMode(), int(DocumentImage::Indexed8));
    QCOMPARE(doc.palette().entries(), colours.entries());
    QCOMPARE(doc.palette().property(PaletteName), QStringLiteral("own"));
    QVERIFY(doc.paletteFileName().isEmpty());
    QVERIFY(!doc.isPaletteModified());
    QVERIFY(!doc.isImageModified());
    QCOMPARE(doc.imageFileName(), file);
    QCOMPARE(doc.lastPalette(), before);
    QCOMPARE(doc.history().position(), 1);
    const std::vector<MacroFile::Step> steps = MacroFile::stepsOf(doc.macros());
    QCOMPARE(int(steps.size()), 1);
    QCOMPARE(steps[0].name, QStringLiteral("load_image"));
    QCOMPARE(steps[0].parameters, QStringLiteral("filename:%1\n").arg(file));
    const QImage picture = indexedPicture();
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            QCOMPARE(doc.displayedPicture().pixel(x, y), picture.pixel(x, y));

    ChromaxisDocument replayed;
    replayed.setPaletteState({before, 0, QString(), false, false}, true);
    MacroPlayer(nullptr).play(replayed, steps);
    QCOMPARE(replayed.palette(), doc.palette());
    QCOMPARE(replayed.lastPalette(), before);
    QCOMPARE(cellsOf(replayed.image()), cellsOf(doc.image()));

    QVERIFY(doc.undo());
    QCOMPARE(doc.palette(), before);
    QCOMPARE(doc.paletteFileName(), m_dir.filePath("ramp.gpl"));
    QVERIFY(doc.isPaletteModified());
    QCOMPARE(doc.imageMode(), int(DocumentImage::Indexed32));
    QCOMPARE(doc.image().indexCells(), oldImage.indexCells());
    QCOMPARE(doc.imageFileName(), m_dir.filePath("old.npy"));
    QVERIFY(doc.isImageModified());
    for (int x = 0; x < 2; ++x) {
        const RGBAColor<uint> shown = before[int(oldImage.indexCells()[size_t(x)])];
        QCOMPARE(doc.displayedPicture().pixel(x, 0),
                 qRgb(int(shown.r >> 8), int(shown.g >> 8), int(shown.b >> 8)));
    }
    QCOMPARE(doc.macros().position(), 0);
    QVERIFY(!doc.undo());

    QVERIFY(doc.redo());
    QCOMPARE(doc.palette().entries(), colours.entries());
    QCOMPARE(doc.imageMode(), int(DocumentImage::Indexed8));
    QCOMPARE(doc.macros().position(), 1);
}

void TestDocumentCommands::indexedSourceConvertsLikeItsPicture_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("settings");
    const QImage picture = indexedPicture();
    QVERIFY(picture.save(m_dir.filePath("source.png")));
    QVERIFY(picture.convertToFormat(QImage::Format_RGB32).save(m_dir.filePath("source-rgb.png")));
    writeBytes(m_dir.filePath("source.gif"), gifOf(picture, 3));
    const QList<QPair<QString, QString>> runs{
        {"quantise", "palette:0\ndither:0\nformat:0"},           // grayscale, nearest
        {"quantise", "palette:1\ndither:0\nformat:1"},           // extended grayscale, continuous
        {"quantise", "palette:3\nmethod:2\ncolors:4\ndither:3"}, // Wu, error diffusion
        {"quantise", "palette:6\ndither:0\nformat:0"},           // the image's own colours
        {"quantise", "palette:7\ndither:11\nformat:0"},          // black and white, Bayer
        {"convert", "mode:0\npalette:0"},                        // 8-bit grayscale
        {"convert", "mode:0\npalette:1"},                        // 32-bit channel sums
        {"convert", "mode:1\npalette:1\ninterpolate:1"},         // continuous
    };
    for (const QString source : {"source.png", "source.gif"})
        for (const auto &run : runs)
            QTest::newRow(
                qPrintable(source + ", " + run.first + ", " + QString(run.second).replace('\n', ' ')))
                << m_dir.filePath(source) << run.first << run.second;
}

// An indexed source is converted by the colours it shows, exactly as the same picture in RGB.
void TestDocumentCommands::indexedSourceConvertsLikeItsPicture()
{
    QFETCH(QString, source);
    QFETCH(QString, command);
    QFETCH(QString, settings);
    SettingsText::Pairs pairs;
    for (const QString &line : settings.split('\n')) {
        const int colon = line.indexOf(':');
        pairs.emplace_back(line.left(colon), line.mid(colon + 1));
    }
    const auto run = [&](const QString &path) {
        auto doc = std::make_unique<ChromaxisDocument>();
        DocumentCommands commands(*doc, nullptr);
        commands.loadImage(path, DocumentCommands::RgbKeep);
        if (command == QLatin1String("quantise"))
            commands.quantiseImage(ImageQuantisizeSettings::fromPairs(pairs));
        else
            commands.convertImage(ImageConvertSettings::fromPairs(pairs));
        return doc;
    };
    const auto indexed = run(source);
    const auto rgb = run(m_dir.filePath("source-rgb.png"));
    QVERIFY(rgb->imageMode() != DocumentImage::RGB);
    QCOMPARE(indexed->imageMode(), rgb->imageMode());
    QCOMPARE(indexed->palette().entries(), rgb->palette().entries());
    QVERIFY(!cellsOf(rgb->image()).isEmpty());
    QCOMPARE(cellsOf(indexed->image()), cellsOf(rgb->image()));
}

// "Full palette" selects the index one past the end; the project keeps it through a save and an
// open, and the palette view's commands leave it alone.
void TestDocumentCommands::projectKeepsSelectionPastTheEnd()
{
    const QString project = m_dir.filePath("past.cxw");
    ChromaxisDocument doc;
    DocumentCommands commands(doc, nullptr);
    doc.setPaletteState({rampOf(6), 0, QString(), false, false}, true);
    commands.selectPattern(
        {{"start_index", "0"}, {"set_number", "1"}, {"skip_number", "1"}, {"full_palette", "1"}});
    QCOMPARE(doc.selection(), std::set<int>({0, 2, 4, 6}));
    commands.saveProject(project);
    QCOMPARE(ProjectFile::read(project).selection, std::set<int>({0, 2, 4, 6}));

    ChromaxisDocument reopened;
    DocumentCommands again(reopened, nullptr);
    again.openProject(project);
    QCOMPARE(reopened.selection(), std::set<int>({0, 2, 4, 6}));
    QCOMPARE(reopened.palette(), doc.palette());
    again.setColor(reopened.selection(), {1, 2, 3, 4});
    QCOMPARE(reopened.palette().size(), 6);
    QCOMPARE(reopened.palette()[4], (RGBAColor<uint>{1, 2, 3, 4}));
    again.saveProject(project);
    QCOMPARE(ProjectFile::read(project).selection, std::set<int>({0, 2, 4, 6}));
}

void TestDocumentCommands::builtinPalettes()
{
    const PaletteDatabase db = smallDatabase();
    ChromaxisDocument doc;
    doc.setRecording(true);
    DocumentCommands commands(doc, &db);
    commands.takeBuiltin(1);
    QCOMPARE(doc.builtinIndex(), 1);
    QCOMPARE(doc.palette().size(), 2);
    QCOMPARE(doc.palette().property(PaletteName), QStringLiteral("second/cold"));
    QVERIFY(doc.isPaletteModified());
    QVERIFY(doc.paletteFileName().isEmpty());
    const std::vector<MacroFile::Step> steps = MacroFile::stepsOf(doc.macros());
    QCOMPARE(int(steps.size()), 1);
    QCOMPARE(steps[0].name, QStringLiteral("palette_from_db"));
    QCOMPARE(steps[0].parameters, QStringLiteral("name:second/cold\n"));
}

// What the window records through the commands, the player replays through the same commands:
// the two documents must end alike.
void TestDocumentCommands::recordedCommandsReplayAlike()
{
    const PaletteDatabase db = smallDatabase();
    const QString gpl = writePalette(m_dir.filePath("ramp.gpl"), rampOf(12));
    const QString image = writeRgbImage(m_dir.filePath("scene.png"), 6, 5);
    const QString selectionFile = m_dir.filePath("selection.txt");

    ChromaxisDocument recorded;
    recorded.setRecording(true);
    DocumentCommands c(recorded, &db);
    c.loadPalette(gpl);
    c.loadImage(image, 3);
    c.setFillColor({100, 200, 300, 65535});
    c.setFixedPaletteSize(false);
    c.setPaletteSize(20);
    // Clicks in the palette view are no steps; a selection file is how a macro gets a selection.
    writeSelectionFile(selectionFile, {1, 2, 3});
    c.loadSelection(selectionFile);
    c.applyPaletteOperation(QStringLiteral("palette_invert_order"), recorded.selection());
    c.setColor({0, 5}, {1, 2, 3, 4});
    const std::vector<RGBAColor<uint>> copied = c.copy({4, 5});
    c.paste({10}, copied, false);
    c.remove({0});
    c.loadSelection(selectionFile);
    c.fastConvert(QStringLiteral("image_convert_indexed32bitint"));
    c.setInterpolate(true);
    c.takeBuiltin(QStringLiteral("first/warm"));

    ChromaxisDocument replayed;
    MacroPlayer player(&db);
    const MacroPlayer::Report report = player.play(replayed, MacroFile::stepsOf(recorded.macros()));
    QVERIFY2(report.skipped.isEmpty(), qPrintable(report.skipped.join(',')));
    QCOMPARE(replayed.palette(), recorded.palette());
    QCOMPARE(replayed.paletteViewSettings(), recorded.paletteViewSettings());
    QCOMPARE(replayed.imageMode(), recorded.imageMode());
    QCOMPARE(replayed.image().interpolate(), recorded.image().interpolate());
    QCOMPARE(pixelsOf(replayed.image().picture()), pixelsOf(recorded.image().picture()));
    QCOMPARE(replayed.selection(), recorded.selection());
    QCOMPARE(replayed.builtinIndex(), recorded.builtinIndex());
}

// Sequences with undos that the soak test found replaying differently from what the user saw.
void TestDocumentCommands::undoneCommandsReplayAlike_data()
{
    QTest::addColumn<QString>("sequence");
    // A paste clears the selection and its undo does not bring it back; a manipulation of the
    // selected entries then acts on the whole palette, and so must its replay.
    QTest::newRow("operation after an undone paste") << "selection";
    // The quantised source's method and size are no stored settings, yet the step needs them.
    QTest::newRow("quantisation with a method") << "quantise";
    // A copy made after an undo used to take the undone command out of the macro while the
    // history could still redo it.
    QTest::newRow("copy between undo and redo") << "copy";
}

void TestDocumentCommands::undoneCommandsReplayAlike()
{
    QFETCH(QString, sequence);
    const PaletteDatabase db = smallDatabase();
    ChromaxisDocument recorded;
    recorded.setRecording(true);
    DocumentCommands c(recorded, &db);
    c.applyPaletteOperation(QStringLiteral("palette_generate_huerot256"), {});
    if (sequence == "selection") {
        c.selectPattern({{"start_index", "10"}, {"full_palette", "0"}, {"end_index", "20"}});
        c.paste({3}, c.copy({1}), true);
        QVERIFY(recorded.selection().empty());
        QVERIFY(recorded.undo());
        c.applyPaletteOperation(QStringLiteral("brightness_contrast"), recorded.selection(),
                                {{"brightness", "60"}, {"sel_only", "1"}});
    } else if (sequence == "quantise") {
        c.loadImage(writeRgbImage(m_dir.filePath("quantise.png"), 9, 7), DocumentCommands::RgbKeep);
        ImageQuantisizeSettings s;
        s.palette = 3;
        s.method = 2;
        s.colors = 5;
        c.quantiseImage(s);
        QCOMPARE(recorded.palette().size(), 5);
    } else {
        c.applyPaletteOperation(QStringLiteral("palette_invert_order"), {});
        QVERIFY(recorded.undo());
        c.copy({0});
        QVERIFY(recorded.redo());
    }

    ChromaxisDocument replayed;
    MacroPlayer player(&db);
    player.play(replayed, MacroFile::stepsOf(recorded.macros()));
    QCOMPARE(replayed.palette().entries(), recorded.palette().entries());
    QCOMPARE(pixelsOf(replayed.image().picture()), pixelsOf(recorded.image().picture()));
}

void TestDocumentCommands::replayDoesNotRecord()
{
    ChromaxisDocument doc;
    doc.setRecording(true);
    MacroPlayer player(nullptr);
    player.play(doc, {{QStringLiteral("palette_fix_size"), QStringLiteral("fixed:1\n")}});
    QVERIFY(doc.paletteViewSettings().fixedSize);
    QCOMPARE(doc.macros().position(), 0);
}

void TestDocumentCommands::batchApplyWritesAndReports()
{
    const QString source = m_dir.filePath("batch-in");
    QVERIFY(QDir().mkpath(source));
    writeRgbImage(source + "/a.png", 5, 4);
    writeRgbImage(source + "/b.bmp", 3, 3);
    QFile broken(source + "/c.png");
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.write("not a picture");
    broken.close();

    ImageConvertSettings settings;
    settings.palette = 2; // the current palette
    settings.folder = m_dir.filePath("batch-out/deeper");
    settings.extension = QStringLiteral(".png");
    const BatchApply batch(settings, rampOf(4), nullptr);
    const QFileInfoList files = BatchApply::imageFiles(source);
    QCOMPARE(files.size(), 3);
    QCOMPARE(batch.existingTargets(files), 0);

    QStringList seen;
    const BatchApply::Report report = batch.run(files, [&](int index, int count, const QString &name, int percent) {
        if (percent == 0)
            seen << QStringLiteral("%1/%2 %3").arg(index + 1).arg(count).arg(name);
        return true;
    });
    QCOMPARE(seen, (QStringList{"1/3 a.png", "2/3 b.bmp", "3/3 c.png"}));
    QCOMPARE(report.total, 3);
    QCOMPARE(report.written, 2);
    QVERIFY(!report.cancelled);
    QCOMPARE(report.failures.size(), 1);
    QVERIFY2(report.failures[0].startsWith("c.png: "), qPrintable(report.failures[0]));
    QVERIFY(!report.failures[0].contains('\n'));
    QVERIFY(!report.complete());
    QVERIFY(report.text(settings.folder).startsWith(QStringLiteral("2 of 3 images were written to ")));
    QCOMPARE(batch.existingTargets(files), 2);

    // Written through the ramp: every pixel of a result is one of its four colours.
    const DocumentImage result = DocumentImageIO::load(settings.folder + "/a.png");
    QCOMPARE(result.width(), 5);
    QSet<QRgb> colours;
    const QImage picture = result.picture().convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            colours.insert(picture.pixel(x, y));
    QSet<QRgb> ramp;
    for (int i = 0; i < 4; ++i) {
        const RGBAColor<uint> c = rampOf(4)[i];
        ramp.insert(qRgb(int(c.r >> 8), int(c.g >> 8), int(c.b >> 8)));
    }
    QVERIFY(ramp.contains(colours));
}

void TestDocumentCommands::batchApplyCancelsAndRefusesFolder()
{
    const QString source = m_dir.filePath("cancel-in");
    QVERIFY(QDir().mkpath(source));
    writeRgbImage(source + "/a.png");
    writeRgbImage(source + "/b.png");
    ImageConvertSettings settings;
    settings.folder = m_dir.filePath("cancel-out");
    const BatchApply batch(settings, rampOf(4), nullptr);
    const BatchApply::Report report =
        batch.run(BatchApply::imageFiles(source), [](int index, int, const QString &, int) { return index < 1; });
    QVERIFY(report.cancelled);
    QCOMPARE(report.written, 1);
    QVERIFY(report.text(settings.folder).contains(QStringLiteral("The run was cancelled.")));

    // A destination that cannot be a folder stops the run before anything is read.
    QFile file(m_dir.filePath("plain-file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    settings.folder = m_dir.filePath("plain-file/sub");
    const BatchApply refused(settings, rampOf(4), nullptr);
    QCOMPARE(refusal([&] { refused.run(BatchApply::imageFiles(source)); }),
             QStringLiteral("Batch apply palette: Could not create the destination folder '%1'.").arg(settings.folder));
}

QTEST_GUILESS_MAIN(TestDocumentCommands)
#include "tst_documentcommands.moc"
