// Ten thousand random document commands from a fixed seed, through DocumentCommands as the window,
// the macro player and the command line use them. Between checkpoints the commands form an
// episode; at each checkpoint:
//   - a saved project reloads to the state the document is in;
//   - replaying the episode's recorded macro on a second document, which stood where this one
//     stood when the episode began, gives the same palette and pixels;
//   - undoing everything returns the state the episode began with, and redoing it all returns
//     the state before the undos, with the macro as it was.
// A command that is refused leaves the document, its history and its macro as they were.

#include "conversion/fastconversions.h"
#include "conversion/imageconvertsettings.h"
#include "conversion/imagequantisizesettings.h"
#include "document/chromaxisdocument.h"
#include "document/documentcommands.h"
#include "document/macroplayer.h"
#include "formats/paletteformats.h"
#include "operations/paletteoperations.h"
#include "palette/describedexception.h"
#include "storage/numpyimage.h"
#include "storage/palettedatabase.h"

#include <QElapsedTimer>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>
#include <functional>
#include <random>

namespace {

constexpr int commandCount = 10000;
constexpr quint32 seed = 20240611;

// Everything a user can tell apart, and what the project file keeps of it.
struct Snapshot
{
    Palette<uint> palette;
    PaletteState paletteState;
    ImageState imageState;
    PaletteViewSettings settings;
    std::set<int> selection;
    int historyCount = 0;
    int historyPosition = 0;
    QStringList macro;
};

QStringList macroOf(ChromaxisDocument &doc)
{
    QStringList steps;
    for (const MacroFile::Step &s : MacroFile::stepsOf(doc.macros()))
        steps << s.name + QLatin1Char('\n') + s.parameters;
    return steps;
}

Snapshot snapshotOf(ChromaxisDocument &doc)
{
    return {doc.palette(),   doc.paletteState(),    doc.imageState(),         doc.paletteViewSettings(),
            doc.selection(), doc.history().count(), doc.history().position(), macroOf(doc)};
}

// The cells of an image, whatever its mode, and the picture it shows.
QString imageDifference(const DocumentImage &a, const DocumentImage &b)
{
    if (a.mode() != b.mode() || a.width() != b.width() || a.height() != b.height())
        return QStringLiteral("image %1 %2x%3 against %4 %5x%6")
            .arg(a.mode())
            .arg(a.width())
            .arg(a.height())
            .arg(b.mode())
            .arg(b.width())
            .arg(b.height());
    if (a.interpolate() != b.interpolate())
        return QStringLiteral("interpolation");
    if (a.indexCells() != b.indexCells() || a.continuousCells() != b.continuousCells())
        return QStringLiteral("image cells");
    if (a.mode() == DocumentImage::Indexed8)
        for (int y = 0; y < a.height(); ++y)
            if (std::memcmp(a.indexRow(y), b.indexRow(y), size_t(a.width())) != 0)
                return QStringLiteral("8-bit indexes in row %1").arg(y);
    if (a.picture().convertToFormat(QImage::Format_ARGB32) !=
        b.picture().convertToFormat(QImage::Format_ARGB32))
        return QStringLiteral("picture");
    return QString();
}

QString contentDifference(const Snapshot &a, const Snapshot &b)
{
    if (a.palette.entries() != b.palette.entries())
        return QStringLiteral("palette entries (%1 against %2)").arg(a.palette.size()).arg(b.palette.size());
    if (a.palette != b.palette)
        return QStringLiteral("palette properties");
    const QString image = imageDifference(a.imageState.image, b.imageState.image);
    if (!image.isEmpty())
        return image;
    if (a.settings != b.settings)
        return QStringLiteral("palette view settings");
    return QString();
}

// Content plus the names and flags that travel with it in the history.
QString stateDifference(const Snapshot &a, const Snapshot &b)
{
    const QString content = contentDifference(a, b);
    if (!content.isEmpty())
        return content;
    if (a.paletteState.fileName != b.paletteState.fileName ||
        a.paletteState.paletteModified != b.paletteState.paletteModified ||
        a.paletteState.builtinIndex != b.paletteState.builtinIndex)
        return QStringLiteral("palette file name, flag or built-in index");
    if (a.imageState.fileName != b.imageState.fileName ||
        a.imageState.imageModified != b.imageState.imageModified)
        return QStringLiteral("image file name or flag");
    return QString();
}

PaletteDatabase soakDatabase()
{
    PaletteDatabase db;
    db.loadFromText("warm/fire;000000400000800000c04000ff8000ffc000ffff80;\n"
                    "cold/ice;0000200000802040c080c0ffffffff;\n"
                    "grey/four;000000555555aaaaaaffffff;\n");
    return db;
}

class Soak
{
public:
    Soak(const QString &folder, const PaletteDatabase &db)
        : m_folder(folder), m_db(db), m_commands(m_doc, &db), m_replicaPlayer(&db), m_rng(seed)
    {
        m_doc.setRecording(true);
        writeFixtures();
        startEpisode();
    }

    // Runs the commands; returns the first broken invariant, or an empty string.
    QString run(int count, int *checkpoints)
    {
        const auto table = commandTable();
        int weightSum = 0;
        for (const auto &c : table)
            weightSum += c.weight;
        for (m_step = 0; m_step < count; ++m_step) {
            int pick = int(m_rng() % uint(weightSum));
            const Command *command = &table.front();
            for (const auto &c : table) {
                if (pick < c.weight) {
                    command = &c;
                    break;
                }
                pick -= c.weight;
            }
            QString failure = command->boundary ? checkpoint() : QString();
            if (failure.isEmpty())
                failure = runOne(*command);
            if (failure.isEmpty() &&
                (command->boundary || m_doc.history().count() >= 15 || ++m_inEpisode >= 25)) {
                if (!command->boundary)
                    failure = checkpoint();
                ++*checkpoints;
                if (failure.isEmpty())
                    startEpisode();
            }
            if (!failure.isEmpty())
                return QStringLiteral("command %1 (%2): %3\nThe episode's commands: %4")
                    .arg(m_step)
                    .arg(m_last, failure, m_episodeLog.join(QStringLiteral(", ")));
        }
        const QString failure = checkpoint();
        ++*checkpoints;
        return failure.isEmpty() ? QString() : QStringLiteral("final checkpoint: ") + failure;
    }

private:
    struct Command
    {
        const char *name;
        int weight;
        std::function<void()> run;
        bool boundary = false; // the macro cannot replay it: the episode ends before it
    };

    int random(int n) { return n <= 0 ? 0 : int(m_rng() % uint(n)); }
    bool coin() { return random(2) == 1; }
    QString path(const QString &name) const { return m_folder + QLatin1Char('/') + name; }

    // Some indexes of the palette, sometimes none, sometimes some past its end.
    std::set<int> randomSelection()
    {
        std::set<int> s;
        const int size = m_doc.palette().size();
        const int kind = random(5);
        if (kind == 0)
            return s;
        if (kind == 1) {
            s.insert(random(size + 2));
            return s;
        }
        const int first = random(size + 1);
        const int count = 1 + random(12);
        const int step = 1 + random(3);
        for (int i = 0; i < count; ++i)
            s.insert(first + i * step);
        return s;
    }

    RGBAColor<uint> randomColour()
    {
        // Fill colours travel through projects as 8-bit values; edited colours are any words.
        return {uint(random(256)) << 8, uint(random(256)) << 8, uint(random(256)) << 8, 65535};
    }

    void writeFixtures()
    {
        Palette<uint> five;
        for (int i = 0; i < 5; ++i)
            five.append({uint(i) * 13000, 65535 - uint(i) * 9000, uint(i * i) * 2000, 65535});
        exportPalette(path("five.gpl"), five, formatFromWord("gpl"));
        Palette<uint> ramp;
        for (int i = 0; i < 40; ++i)
            ramp.append({uint(i) * 1600, uint(i) * 800, 65535 - uint(i) * 1600, 65535});
        exportPalette(path("ramp.gpl"), ramp, formatFromWord("gpl"));

        QImage rgb(7, 5, QImage::Format_ARGB32);
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 7; ++x)
                rgb.setPixel(x, y, qRgb(x * 36, y * 60, (x + y) * 20));
        QVERIFY(rgb.save(path("rgb.png")));
        QImage indexed(6, 4, QImage::Format_Indexed8);
        indexed.setColorTable({qRgb(0, 0, 0), qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255)});
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 6; ++x)
                indexed.setPixel(x, y, uint((x + y) % 4));
        QVERIFY(indexed.save(path("indexed.png")));
        std::vector<float> cells;
        for (int i = 0; i < 20; ++i)
            cells.push_back(float(i) * 3400.0f);
        NumpyImage::write(DocumentImage::fromContinuous(5, 4, cells), path("cont.npy"));
        NumpyImage::write(DocumentImage::fromIndexes32(4, 3, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 300, 2}),
                          path("idx32.npy"));
        QFile selection(path("selection.txt"));
        QVERIFY(selection.open(QIODevice::WriteOnly));
        selection.write("1\n3\n4\n9\n");
    }

    std::vector<Command> commandTable()
    {
        DocumentCommands &c = m_commands;
        std::vector<Command> t;
        t.push_back({"palette operation", 14, [&] {
                         const QStringList names = PaletteOperations::names();
                         const QString name = names[random(names.size())];
                         SettingsText::Pairs settings;
                         if (name == QLatin1String("shift_order"))
                             settings.emplace_back("offset", QString::number(random(21) - 10));
                         if (coin()) // the manipulations then act on the selected entries only
                             settings.emplace_back("sel_only", "1");
                         m_last += QLatin1Char(' ') + name;
                         c.applyPaletteOperation(name, m_doc.selection(), settings);
                     }});
        t.push_back({"dialog result", 4, [&] {
                         const QString name = coin() ? QStringLiteral("tint") : QStringLiteral("blur");
                         const SettingsText::Pairs settings{{"sel_only", QString::number(random(2))}};
                         const Palette<uint> result =
                             PaletteOperations::apply(name, m_doc.palette(), m_doc.selection(), settings);
                         c.installPalette(result, name,
                                          SettingsText::format(name, SettingsText::formatLines(settings)));
                     }});
        const auto copy = [&] {
            const std::set<int> s = randomSelection();
            m_clipboard = c.copy(s);
            m_single = s.size() == 1;
            m_clipboardReplayable = true;
        };
        // A replay pastes what the macro's own copies put aside. An undo can take the copy that
        // filled the clipboard out of the macro (with the command before it), and then nothing
        // in the macro makes what the clipboard holds; the user copies again before pasting.
        const auto copyIfNeeded = [=] {
            if (!m_clipboardReplayable)
                copy();
        };
        t.push_back({"copy", 6, copy});
        t.push_back({"paste", 6, [=, &c] {
                         copyIfNeeded();
                         c.paste(randomSelection(), m_clipboard, m_single);
                     }});
        t.push_back({"replace", 3, [=, &c] {
                         copyIfNeeded();
                         c.replace(randomSelection(), m_clipboard);
                     }});
        t.push_back({"delete", 4, [&] { c.remove(randomSelection()); }});
        t.push_back({"edit", 4, [&] {
                         c.setColor(randomSelection(), {uint(random(65536)), uint(random(65536)),
                                                        uint(random(65536)), uint(random(65536))});
                     }});
        t.push_back({"palette size", 3,
                     [&] { c.setPaletteSize(random(m_doc.paletteViewSettings().maximumSize + 8)); }});
        t.push_back({"maximum size", 2, [&] { c.setMaximumPaletteSize(16 << random(9)); }});
        t.push_back({"fixed size", 2, [&] { c.setFixedPaletteSize(coin()); }});
        t.push_back({"fill colour", 2, [&] { c.setFillColor(randomColour()); }});
        t.push_back({"select pattern", 4, [&] {
                         c.selectPattern({{"start_index", QString::number(random(8))},
                                          {"full_palette", QString::number(random(2))},
                                          {"end_index", QString::number(random(30))},
                                          {"set_number", QString::number(1 + random(3))},
                                          {"skip_number", QString::number(random(3))}});
                     }});
        t.push_back({"selection file", 1, [&] {
                         if (coin())
                             c.loadSelection(path("selection.txt"));
                         else
                             c.saveSelection(path("saved-selection.txt"));
                     }});
        t.push_back({"built-in palette", 3, [&] { c.takeBuiltin(random(m_db.size() + 1)); }});
        t.push_back({"load palette", 2, [&] { c.loadPalette(path(coin() ? "five.gpl" : "ramp.gpl")); }});
        t.push_back({"load image", 4, [&] {
                         static const char *const files[] = {"rgb.png", "indexed.png", "cont.npy",
                                                             "idx32.npy", "none.png"};
                         int action = coin() ? DocumentCommands::RgbKeep : 3 + random(7);
                         if (m_undoneInEpisode &&
                             DocumentCommands::rgbOnLoadConversion(action).contains("lastpalette"))
                             action = DocumentCommands::RgbKeep; // as for the fast conversions below
                         c.loadImage(path(files[random(5)]), action);
                     }});
        t.push_back({"fast conversion", 6, [&] {
                         QStringList names = FastConversions::names();
                         // "The last palette" is the one shown before the current one; after an
                         // undo that is a palette the effective macro never shows, so a replay
                         // cannot know it.
                         if (m_undoneInEpisode)
                             names = names.filter(QRegularExpression("^(?!.*lastpalette)"));
                         const QString name = names[random(names.size())];
                         m_last += QLatin1Char(' ') + name;
                         c.fastConvert(name);
                     }});
        t.push_back({"convert", 2, [&] {
                         ImageConvertSettings s;
                         s.mode = random(2);
                         s.palette = random(4);
                         s.interpolate = coin();
                         s.dbPalette = QStringLiteral("cold/ice");
                         c.convertImage(s);
                     }});
        t.push_back({"quantise", 2, [&] {
                         ImageQuantisizeSettings s;
                         s.format = random(2);
                         s.palette = random(4);
                         s.dither = random(4);
                         s.method = random(4);
                         s.colors = 2 + random(30);
                         c.quantiseImage(s);
                     }});
        t.push_back({"interpolate", 2, [&] { c.setInterpolate(coin()); }});
        t.push_back({"close image", 1, [&] { c.closeImage(); }});
        t.push_back({"undo", 8, [&] {
                         m_doc.undo();
                         m_undoneInEpisode = true;
                         m_clipboardReplayable = false;
                     }});
        t.push_back({"redo", 4, [&] {
                         m_doc.redo();
                         m_undoneInEpisode = true;
                     }});
        t.push_back({"save", 2, [&] {
                         m_savedInEpisode = true;
                         if (coin() || !m_doc.hasImage())
                             c.savePalette(path("saved.gpl"));
                         else
                             c.saveImage(path(coin() ? "saved.png" : "saved.npy"));
                     }});
        t.push_back({"export text", 1, [&] {
                         c.exportPaletteText(path("text.txt"), PaletteTextEncoder::clipboardTemplate());
                     }});
        t.push_back({"project save and load", 2,
                     [&] {
                         c.saveProject(path("round.cxw"));
                         c.openProject(path("round.cxw"));
                         DocumentCommands(m_replica, &m_db, DocumentCommands::DoNotRecord)
                             .openProject(path("round.cxw"));
                     },
                     true});
        t.push_back({"new project", 1,
                     [&] {
                         c.newProject();
                         DocumentCommands(m_replica, &m_db, DocumentCommands::DoNotRecord).newProject();
                     },
                     true});
        return t;
    }

    QString runOne(const Command &command)
    {
        m_last = QString::fromLatin1(command.name);
        const Snapshot before = snapshotOf(m_doc);
        try {
            command.run();
            m_episodeLog << m_last;
        } catch (const DescribedException &e) {
            m_episodeLog << m_last + QStringLiteral(" (refused)");
            const Snapshot after = snapshotOf(m_doc);
            QString changed = stateDifference(before, after);
            if (changed.isEmpty() && before.selection != after.selection)
                changed = QStringLiteral("selection");
            if (changed.isEmpty() && (before.historyCount != after.historyCount ||
                                      before.historyPosition != after.historyPosition))
                changed = QStringLiteral("history");
            if (changed.isEmpty() && before.macro != after.macro)
                changed = QStringLiteral("macro");
            if (!changed.isEmpty())
                return QStringLiteral("refused with \"%1\" but changed the %2").arg(e.message(), changed);
        }
        return QString();
    }

    void startEpisode()
    {
        m_doc.clearHistory();
        m_doc.macros().clear();
        m_first = snapshotOf(m_doc);
        m_inEpisode = 0;
        m_episodeLog.clear();
        m_undoneInEpisode = false;
        m_savedInEpisode = false;
    }

    QString checkpoint()
    {
        const Snapshot now = snapshotOf(m_doc);

        // The macro, through its file form, replayed where the episode began.
        const std::vector<MacroFile::Step> steps =
            MacroFile::decode(MacroFile::encode(MacroFile::stepsOf(m_doc.macros())), QStringLiteral("soak"));
        try {
            const MacroPlayer::Report report = m_replicaPlayer.play(m_replica, steps);
            // Exporting text changes nothing a replay could show.
            if (!report.skipped.filter(QRegularExpression("^(?!export_palette_text$)")).isEmpty())
                return QStringLiteral("replay skipped ") + report.skipped.join(',');
        } catch (const DescribedException &e) {
            return QStringLiteral("replay failed: ") + e.message();
        }
        const QString replayed = contentDifference(snapshotOf(m_replica), now);
        if (!replayed.isEmpty())
            return QStringLiteral("replay: ") + replayed + QStringLiteral(" after the macro\n") +
                   macroOf(m_doc).join(QLatin1Char('\n'));

        // Undo to the beginning of the episode and back.
        int undone = 0;
        while (m_doc.undo())
            ++undone;
        const Snapshot first = snapshotOf(m_doc);
        const QString back =
            m_savedInEpisode ? contentDifference(first, m_first) : stateDifference(first, m_first);
        if (!back.isEmpty())
            return QStringLiteral("undo: ") + back;
        for (int i = 0; i < undone; ++i)
            if (!m_doc.redo())
                return QStringLiteral("redo stopped early");
        const Snapshot again = snapshotOf(m_doc);
        const QString forth = contentDifference(again, now);
        if (!forth.isEmpty())
            return QStringLiteral("redo: ") + forth;
        if (again.macro != now.macro)
            return QStringLiteral("redo: macro");
        // Last, since saving cleans the document's flags, which the undo above compares. Names
        // and flags are those after the redo: a save outside the history is not redone.
        return projectReloads(snapshotOf(m_doc));
    }

    QString projectReloads(const Snapshot &now)
    {
        // A saved project reloads to the same state, as far as a project keeps it.
        DocumentCommands(m_doc, &m_db, DocumentCommands::DoNotRecord).saveProject(path("checkpoint.cxw"));
        ChromaxisDocument reloaded;
        DocumentCommands(reloaded, &m_db).openProject(path("checkpoint.cxw"));
        if (reloaded.palette().entries() != now.palette.entries())
            return QStringLiteral("project: palette entries");
        for (int key : {PaletteName, PaletteComment, PaletteFile})
            if (reloaded.palette().property(key) != now.palette.property(key))
                return QStringLiteral("project: palette property %1").arg(palettePropertyName(key));
        // A saved project is clean, in the file and in the document that saved it.
        if (reloaded.isPaletteModified() || reloaded.isImageModified() || m_doc.isPaletteModified() ||
            m_doc.isImageModified())
            return QStringLiteral("project: modified flags after saving");
        if (reloaded.paletteFileName() != now.paletteState.fileName ||
            reloaded.builtinIndex() != now.paletteState.builtinIndex)
            return QStringLiteral("project: palette file name or built-in index");
        if (reloaded.paletteViewSettings().fixedSize != now.settings.fixedSize ||
            reloaded.paletteViewSettings().fillColor != now.settings.fillColor)
            return QStringLiteral("project: fixed size or fill colour");
        const QString image = imageDifference(reloaded.image(), now.imageState.image);
        if (!image.isEmpty())
            return QStringLiteral("project: ") + image;
        if (reloaded.imageFileName() != now.imageState.fileName)
            return QStringLiteral("project: image file name (%1 against %2)")
                .arg(reloaded.imageFileName(), now.imageState.fileName);
        // Indexes past the palette's end travel too: the view ignores them until the palette grows.
        if (reloaded.selection() != now.selection)
            return QStringLiteral("project: selection");

        return QString();
    }

    QString m_folder;
    const PaletteDatabase &m_db;
    ChromaxisDocument m_doc;
    DocumentCommands m_commands;
    ChromaxisDocument m_replica;
    MacroPlayer m_replicaPlayer; // one player, so that its clipboard lives on like the system's
    std::mt19937 m_rng;
    Snapshot m_first;
    std::vector<RGBAColor<uint>> m_clipboard;
    bool m_single = false;
    bool m_clipboardReplayable = true;
    int m_step = 0;
    int m_inEpisode = 0;
    bool m_undoneInEpisode = false;
    bool m_savedInEpisode = false;
    QString m_last;
    QStringList m_episodeLog;
};

} // namespace

class TestSoak : public QObject
{
    Q_OBJECT
private slots:
    void randomCommandsKeepTheInvariants();
};

void TestSoak::randomCommandsKeepTheInvariants()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const PaletteDatabase db = soakDatabase();
    QElapsedTimer timer;
    timer.start();
    Soak soak(dir.path(), db);
    int checkpoints = 0;
    const QString failure = soak.run(commandCount, &checkpoints);
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
    QVERIFY(checkpoints > commandCount / 30);
    qInfo("%d commands, %d checkpoints, %lld ms", commandCount, checkpoints, timer.elapsed());
}

QTEST_GUILESS_MAIN(TestSoak)
#include "tst_soak.moc"
