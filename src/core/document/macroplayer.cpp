#include "document/macroplayer.h"

#include "document/chromaxisdocument.h"
#include "palette/describedexception.h"
#include "storage/documentimageio.h"
#include "conversion/imageconversionsteps.h"
#include "storage/palettedatabase.h"
#include "operations/paletteedits.h"
#include "operations/selectionlist.h"
#include "operations/selectionpattern.h"
#include "formats/paletteformats.h"
#include "operations/palettegenerators.h"
#include "operations/paletteoperations.h"
#include "palette/standardpalettes.h"

#include <QFileInfo>

namespace {

QString required(const MacroPlayer::Parameters &p, const QString &key, const QString &step)
{
    const auto it = p.find(key);
    if (it == p.end())
        throw DescribedException(QStringLiteral("Error on playing macro"),
                                 QStringLiteral("The step '%1' lacks its parameter '%2'.").arg(step, key));
    return it->second;
}

// The selection a step recorded, or the document's when it recorded none.
std::set<int> stepSelection(const ChromaxisDocument &doc, const MacroPlayer::Parameters &p)
{
    const auto it = p.find(SelectionList::parameterKey);
    if (it == p.end())
        return doc.selection();
    try {
        return SelectionList::parse(it->second);
    } catch (const DescribedException &e) {
        throw DescribedException(QStringLiteral("Error on playing macro"), e.message());
    }
}

RGBAColor<uint> colourFromText(const QString &text, const QString &step)
{
    const QStringList parts = text.split(',');
    bool ok = parts.size() == 4;
    uint c[4] = {0, 0, 0, 0};
    for (int i = 0; ok && i < 4; ++i)
        c[i] = parts[i].trimmed().toUInt(&ok);
    if (!ok)
        throw DescribedException(QStringLiteral("Error on playing macro"),
                                 QStringLiteral("The step '%1' has a colour that cannot be read: '%2'.").arg(step, text));
    return {c[0], c[1], c[2], c[3]};
}

const PaletteDatabase *database = nullptr;

void registerBuiltins(std::map<QString, MacroPlayer::Handler> &r)
{
    using P = MacroPlayer::Parameters;
    r["load_image"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        const QString path = required(p, QStringLiteral("filename"), QStringLiteral("load_image"));
        doc.setImageState({DocumentImageIO::load(path), path, false});
    };
    r["load_palette"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        const QString path = required(p, QStringLiteral("filename"), QStringLiteral("load_palette"));
        const int format = formatFromWord(QFileInfo(path).suffix());
        if (format == FormatUnknown)
            throw DescribedException(QStringLiteral("Could not load"),
                                     QStringLiteral("Unable to load palette %1.\nUnrecognized format.")
                                         .arg(QFileInfo(path).fileName()));
        Palette<uint> palette;
        importPalette(path, palette, format);
        recordPaletteFileName(palette, path);
        PaletteState state = doc.paletteState();
        state.palette = palette;
        state.fileName = path;
        state.paletteModified = false;
        doc.setPaletteState(state);
    };
    r["load_selection"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        doc.setSelection(readSelectionFile(required(p, QStringLiteral("filename"), QStringLiteral("load_selection"))));
    };
    r["save_selection"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        writeSelectionFile(required(p, QStringLiteral("filename"), QStringLiteral("save_selection")), doc.selection());
    };
    r["copy"] = [](MacroPlayer &player, ChromaxisDocument &doc, const P &p) {
        const std::set<int> sel = stepSelection(doc, p);
        player.clipboard.clear();
        for (int i = 0; i < doc.palette().size(); ++i)
            if (sel.empty() || sel.count(i))
                player.clipboard.push_back(PaletteEdits::throughClipboard(doc.palette()[i]));
        player.clipboardSingle = sel.size() == 1;
    };
    r["paste"] = [](MacroPlayer &player, ChromaxisDocument &doc, const P &p) {
        const PaletteViewSettings &s = doc.paletteViewSettings();
        Palette<uint> palette = doc.palette();
        PaletteEdits::paste(palette, stepSelection(doc, p), player.clipboard, player.clipboardSingle,
                            s.fixedSize ? palette.size() : s.maximumSize, s.fixedSize, s.fillColor);
        doc.setSelection({});
        doc.setPalette(palette);
    };
    r["replace"] = [](MacroPlayer &player, ChromaxisDocument &doc, const P &p) {
        Palette<uint> palette = doc.palette();
        if (PaletteEdits::replaceSelected(palette, stepSelection(doc, p), player.clipboard) > 0)
            doc.setPalette(palette);
    };
    r["delete"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        const PaletteViewSettings &s = doc.paletteViewSettings();
        Palette<uint> palette = doc.palette();
        PaletteEdits::removeSelected(palette, stepSelection(doc, p), s.fixedSize, s.fillColor);
        doc.setSelection({});
        doc.setPalette(palette);
    };
    r["edit"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        Palette<uint> palette = doc.palette();
        const RGBAColor<uint> colour = colourFromText(required(p, QStringLiteral("color"), QStringLiteral("edit")),
                                                      QStringLiteral("edit"));
        if (PaletteEdits::setSelected(palette, stepSelection(doc, p), colour) > 0)
            doc.setPalette(palette);
    };
    r["close_image"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &) { doc.closeImage(); };
    r["palette_from_db"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        const QString name = required(p, QStringLiteral("name"), QStringLiteral("palette_from_db"));
        const auto palette = database ? database->lookup(name) : std::nullopt;
        if (!palette)
            throw DescribedException(QStringLiteral("Error on playing macro"),
                                     QStringLiteral("There is no palette named '%1' in the database.").arg(name));
        PaletteState state = doc.paletteState();
        state.palette = *palette;
        state.palette.setProperty(PaletteName, name);
        state.builtinIndex = int(database->names().indexOf(name));
        state.fileName.clear();
        state.paletteModified = true;
        doc.setPaletteState(state);
    };
    r["palette_set_max_size"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        bool ok = false;
        const int size = required(p, QStringLiteral("size"), QStringLiteral("palette_set_max_size")).toInt(&ok);
        if (!ok || size <= 0)
            throw DescribedException(QStringLiteral("Error on playing macro"),
                                     QStringLiteral("The maximum palette size must be a positive number."));
        PaletteViewSettings s = doc.paletteViewSettings();
        s.maximumSize = size;
        doc.setPaletteViewSettings(s);
    };
    r["select_pattern"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        SettingsText::Pairs pairs(p.begin(), p.end());
        doc.setSelection(SelectionPattern::select(doc.palette().size(), pairs));
    };
    r["reset_undo"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &) { doc.clearHistory(); };
    for (const char *viewOnly : {"zoom_in", "zoom_out", "zoom_reset"})
        r[viewOnly] = [](MacroPlayer &, ChromaxisDocument &, const P &) {};
    r["image_interpolate_entries"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        if (!doc.hasImage())
            return;
        DocumentImage image = doc.image();
        image.setInterpolate(required(p, QStringLiteral("interpolate"), QStringLiteral("image_interpolate_entries")) ==
                             QLatin1String("1"));
        doc.setImage(image);
    };
    r["palette_fix_size"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        PaletteViewSettings s = doc.paletteViewSettings();
        s.fixedSize = required(p, QStringLiteral("fixed"), QStringLiteral("palette_fix_size")) == QLatin1String("1");
        doc.setPaletteViewSettings(s);
    };
    r["palette_set_default_color"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        PaletteViewSettings s = doc.paletteViewSettings();
        s.fillColor = colourFromText(required(p, QStringLiteral("color"), QStringLiteral("palette_set_default_color")),
                                     QStringLiteral("palette_set_default_color"));
        doc.setPaletteViewSettings(s);
    };
    r["palette_set_default_size"] = [](MacroPlayer &, ChromaxisDocument &doc, const P &p) {
        bool ok = false;
        const int size = required(p, QStringLiteral("size"), QStringLiteral("palette_set_default_size")).toInt(&ok);
        const PaletteViewSettings &s = doc.paletteViewSettings();
        if (!ok || size < 0 || size > s.maximumSize || s.fixedSize)
            return;
        Palette<uint> palette = doc.palette();
        palette.resize(size, s.fillColor);
        doc.setPalette(palette);
    };
}

} // namespace

std::map<QString, MacroPlayer::Handler> &MacroPlayer::registry()
{
    static std::map<QString, Handler> r = [] {
        std::map<QString, Handler> m;
        registerBuiltins(m);
        registerImageConversionSteps(m);
        return m;
    }();
    return r;
}

MacroPlayer::MacroPlayer() = default;

void MacroPlayer::setPaletteDatabase(const PaletteDatabase *db)
{
    database = db;
}

const PaletteDatabase *MacroPlayer::paletteDatabase()
{
    return database;
}

void MacroPlayer::registerStep(const QString &name, Handler handler)
{
    registry()[name] = std::move(handler);
}

bool MacroPlayer::knows(const QString &name)
{
    return registry().count(name) > 0;
}

MacroPlayer::Report MacroPlayer::play(ChromaxisDocument &document, const std::vector<MacroFile::Step> &steps)
{
    Report report;
    for (const MacroFile::Step &step : steps) {
        const auto it = registry().find(step.name);
        if (it != registry().end()) {
            it->second(*this, document, parseParameters(step.parameters));
        } else if (PaletteOperations::exists(step.name)) {
            // A palette dialog's step carries its settings text; the selection it acted on, when
            // recorded, comes in a line of its own after it.
            const std::set<int> selection = stepSelection(document, parseParameters(step.parameters));
            SettingsText::Pairs settings;
            for (const QString &line : step.parameters.split('\n', Qt::SkipEmptyParts)) {
                const int colon = line.indexOf(':');
                settings.emplace_back(colon < 0 ? line.trimmed() : line.left(colon),
                                      colon < 0 ? QString() : line.mid(colon + 1));
            }
            document.setPalette(PaletteOperations::apply(step.name, document.palette(), selection, settings));
        } else {
            report.skipped << step.name;
            continue;
        }
        ++report.played;
    }
    return report;
}

MacroPlayer::Parameters MacroPlayer::parseParameters(const QString &text)
{
    Parameters p;
    for (const QString &line : text.split('\n')) {
        if (line.isEmpty())
            continue;
        const int colon = line.indexOf(':');
        if (colon < 0)
            p[line.trimmed()] = QString();
        else
            p[line.left(colon)] = line.mid(colon + 1);
    }
    return p;
}
