#include "document/macroplayer.h"

#include "conversion/fastconversions.h"
#include "conversion/imagetransforms.h"
#include "document/chromaxisdocument.h"
#include "document/documentcommands.h"
#include "generators/generatorsettings.h"
#include "operations/paletteoperations.h"
#include "operations/selectionlist.h"
#include "palette/describedexception.h"
#include "storage/palettedatabase.h"

namespace {

QString required(const MacroPlayer::Parameters &p, const QString &key, const QString &step)
{
    const auto it = p.find(key);
    if (it == p.end())
        throw DescribedException(QStringLiteral("Error on playing macro"),
                                 QStringLiteral("The step '%1' lacks its parameter '%2'.").arg(elidedValue(step), key));
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

RGBAColor<uint> colorFromText(const QString &text, const QString &step)
{
    const QStringList parts = text.split(',');
    bool ok = parts.size() == 4;
    uint c[4] = {0, 0, 0, 0};
    for (int i = 0; ok && i < 4; ++i)
        c[i] = parts[i].trimmed().toUInt(&ok);
    if (!ok)
        throw DescribedException(QStringLiteral("Error on playing macro"),
                                 QStringLiteral("The step '%1' has a colour that cannot be read: '%2'.")
                                     .arg(step, elidedValue(text)));
    return {c[0], c[1], c[2], c[3]};
}

int sizeFrom(const MacroPlayer::Parameters &p, const QString &step)
{
    bool ok = false;
    const int size = required(p, QStringLiteral("size"), step).toInt(&ok);
    if (!ok)
        throw DescribedException(QStringLiteral("Error on playing macro"),
                                 QStringLiteral("The step '%1' has a size that is no number.").arg(step));
    return size;
}

SettingsText::Pairs pairsOf(const MacroPlayer::Parameters &p)
{
    return SettingsText::Pairs(p.begin(), p.end());
}

std::map<QString, MacroPlayer::Handler> builtinSteps()
{
    using P = MacroPlayer::Parameters;
    using C = DocumentCommands;
    const QString filename = QStringLiteral("filename");
    std::map<QString, MacroPlayer::Handler> r;
    r["load_image"] = [=](MacroPlayer &, C &c, const P &p) { c.loadImage(required(p, filename, "load_image")); };
    r["load_palette"] = [=](MacroPlayer &, C &c, const P &p) { c.loadPalette(required(p, filename, "load_palette")); };
    r["load_selection"] = [=](MacroPlayer &, C &c, const P &p) {
        c.loadSelection(required(p, filename, "load_selection"));
    };
    r["save_selection"] = [=](MacroPlayer &, C &c, const P &p) {
        c.saveSelection(required(p, filename, "save_selection"));
    };
    r["copy"] = [](MacroPlayer &player, C &c, const P &p) {
        const std::set<int> selection = stepSelection(c.document(), p);
        player.clipboard = c.copy(selection);
        player.clipboardSingle = selection.size() == 1;
    };
    r["paste"] = [](MacroPlayer &player, C &c, const P &p) {
        c.paste(stepSelection(c.document(), p), player.clipboard, player.clipboardSingle);
    };
    r["replace"] = [](MacroPlayer &player, C &c, const P &p) {
        c.replace(stepSelection(c.document(), p), player.clipboard);
    };
    r["delete"] = [](MacroPlayer &, C &c, const P &p) { c.remove(stepSelection(c.document(), p)); };
    r["edit"] = [](MacroPlayer &, C &c, const P &p) {
        c.setColor(stepSelection(c.document(), p), colorFromText(required(p, "color", "edit"), "edit"));
    };
    r["close_image"] = [](MacroPlayer &, C &c, const P &) { c.closeImage(); };
    r["palette_from_db"] = [](MacroPlayer &, C &c, const P &p) {
        c.takeBuiltin(required(p, QStringLiteral("name"), QStringLiteral("palette_from_db")));
    };
    r["palette_set_max_size"] = [](MacroPlayer &, C &c, const P &p) {
        c.setMaximumPaletteSize(sizeFrom(p, "palette_set_max_size"));
    };
    r["palette_set_default_size"] = [](MacroPlayer &, C &c, const P &p) {
        c.setPaletteSize(sizeFrom(p, "palette_set_default_size"));
    };
    r["palette_fix_size"] = [](MacroPlayer &, C &c, const P &p) {
        c.setFixedPaletteSize(required(p, "fixed", "palette_fix_size") == QLatin1String("1"));
    };
    r["palette_set_default_color"] = [](MacroPlayer &, C &c, const P &p) {
        c.setFillColor(colorFromText(required(p, "color", "palette_set_default_color"), "palette_set_default_color"));
    };
    r["select_pattern"] = [](MacroPlayer &, C &c, const P &p) { c.selectPattern(pairsOf(p)); };
    r["reset_undo"] = [](MacroPlayer &, C &c, const P &) { c.clearHistory(); };
    for (const char *viewOnly : {"zoom_in", "zoom_out", "zoom_reset"})
        r[viewOnly] = [](MacroPlayer &, C &, const P &) {};
    r["image_interpolate_entries"] = [](MacroPlayer &, C &c, const P &p) {
        c.setInterpolate(required(p, "interpolate", "image_interpolate_entries") == QLatin1String("1"));
    };
    for (const QString &name : FastConversions::names())
        r[name] = [name](MacroPlayer &, C &c, const P &) { c.fastConvert(name); };
    for (const QString &name : ImageTransforms::names())
        r[name] = [name](MacroPlayer &, C &c, const P &) { c.transformImage(name); };
    r["image_convert"] = [](MacroPlayer &, C &c, const P &p) {
        c.convertImage(ImageConvertSettings::fromPairs(pairsOf(p)));
    };
    r["image_quantisize"] = [](MacroPlayer &, C &c, const P &p) {
        c.quantiseImage(ImageQuantisizeSettings::fromPairs(pairsOf(p)));
    };
    // A generator's OK renders again from its settings, with whichever renderer is at hand.
    for (const QString &name : GeneratorSettings::names())
        r[GeneratorSettings::defaults(name).macroStep()] = [name](MacroPlayer &, C &c, const P &p) {
            c.generateImage(GeneratorSettings::fromPairs(name, pairsOf(p)));
        };
    return r;
}

// A palette dialog's step carries its settings text; the selection it acted on, when recorded,
// comes in a line of its own after it.
void playPaletteOperation(DocumentCommands &c, const QString &name, const QString &parameters)
{
    SettingsText::Pairs settings;
    for (const QString &line : parameters.split('\n', Qt::SkipEmptyParts)) {
        const int colon = line.indexOf(':');
        settings.emplace_back(colon < 0 ? line.trimmed() : line.left(colon), colon < 0 ? QString() : line.mid(colon + 1));
    }
    c.applyPaletteOperation(name, stepSelection(c.document(), MacroPlayer::parseParameters(parameters)), settings);
}

} // namespace

std::map<QString, MacroPlayer::Handler> &MacroPlayer::registry()
{
    static std::map<QString, Handler> r = builtinSteps();
    return r;
}

MacroPlayer::MacroPlayer(const PaletteDatabase *builtins) : m_builtins(builtins) {}

MacroPlayer::MacroPlayer() : MacroPlayer(&PaletteDatabase::shipped()) {}

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
    DocumentCommands commands(document, m_builtins, DocumentCommands::DoNotRecord);
    Report report;
    for (const MacroFile::Step &step : steps) {
        const auto own = m_own.find(step.name);
        const auto it = registry().find(step.name);
        if (own != m_own.end()) {
            own->second(*this, commands, parseParameters(step.parameters));
        } else if (it != registry().end()) {
            it->second(*this, commands, parseParameters(step.parameters));
        } else if (PaletteOperations::exists(step.name)) {
            playPaletteOperation(commands, step.name, step.parameters);
        } else {
            report.skipped << step.name;
            continue;
        }
        ++report.played;
    }
    return report;
}

QString MacroPlayer::Report::skippedText() const
{
    constexpr int shown = 10;
    QStringList names;
    int more = 0;
    for (const QString &name : skipped) {
        const QString elided = elidedValue(name);
        if (names.contains(elided))
            continue;
        if (names.size() < shown)
            names << elided;
        else
            ++more;
    }
    QString text = names.join(QStringLiteral(", "));
    if (more > 0)
        text += QStringLiteral(" and %1 more").arg(more);
    return text;
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
