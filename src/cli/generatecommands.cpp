#include "generatecommands.h"

#include "cliargs.h"
#include "clidocument.h"
#include "document/documentcommands.h"
#include "document/imagelimits.h"
#include "formats/paletteformats.h"
#include "generators/imagegenerator.h"
#include "palette/describedexception.h"
#include "palette/standardpalettes.h"
#include "storage/documentimageio.h"
#include "storage/projectfile.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QRegularExpression>

#include <algorithm>
#include <cstring>

namespace {

// A display the toolkit can reach. A local X display whose socket is gone would make the
// graphical application abort at start, so it counts as none.
bool displayAtHand()
{
    const QByteArray wayland = qgetenv("WAYLAND_DISPLAY");
    if (!wayland.isEmpty()) {
        const QString socket = QFile::decodeName(wayland);
        if (QFileInfo(socket).isAbsolute() ? QFileInfo::exists(socket)
                                           : QFileInfo::exists(QFile::decodeName(qgetenv("XDG_RUNTIME_DIR")) + '/' + socket))
            return true;
    }
    const QString display = QFile::decodeName(qgetenv("DISPLAY"));
    if (display.isEmpty())
        return false;
    static const QRegularExpression local(QStringLiteral("^(?:unix)?:(\\d+)(?:\\.\\d+)?$"));
    const QRegularExpressionMatch m = local.match(display);
    if (!m.hasMatch())
        return true; // a remote display: trust it
    return QFileInfo::exists(QStringLiteral("/tmp/.X11-unix/X") + m.captured(1));
}

GeneratorSettings::Target targetFromWord(const QString &word)
{
    if (word == QLatin1String("indexed"))
        return GeneratorSettings::Indexed;
    if (word == QLatin1String("continuous"))
        return GeneratorSettings::Continuous;
    if (word == QLatin1String("rgb"))
        return GeneratorSettings::Rgb;
    throw CliUsageError{QStringLiteral("--target '%1' is none of indexed, continuous and rgb").arg(elidedValue(word))};
}

void applySize(GeneratorSettings &settings, const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^(\\d{1,9})x(\\d{1,9})$"));
    const QRegularExpressionMatch m = form.match(text);
    const qint64 w = m.hasMatch() ? m.captured(1).toLongLong() : 0;
    const qint64 h = m.hasMatch() ? m.captured(2).toLongLong() : 0;
    if (w <= 0 || h <= 0)
        throw CliUsageError{QStringLiteral("--size '%1' is not WIDTHxHEIGHT (for example 1024x768)").arg(elidedValue(text))};
    if (!ImageLimits::fits(w, h))
        throw DescribedException(QStringLiteral("Cannot render the image"), ImageLimits::tooLarge(w, h));
    settings.xsize = int(w);
    settings.ysize = int(h);
}

// A palette file, a project's palette or an image's own colours.
Palette<uint> paletteFrom(const QString &path)
{
    if (isProjectPath(path) || paletteFormatFor(path, QString()) != FormatUnknown)
        return readPaletteFile(path, QString());
    const DocumentImage image = DocumentImageIO::load(path);
    Palette<uint> colours = DocumentCommands::ownColours(image, path);
    if (colours.isEmpty())
        throw DescribedException(QStringLiteral("Could not load"),
                                 QStringLiteral("The image %1 brings no colours of its own to use as the palette.")
                                     .arg(QFileInfo(path).fileName()));
    return colours;
}

} // namespace

bool generateWantsOpenGL(int argc, char *argv[])
{
    if (argc < 2 || std::strcmp(argv[1], "generate") != 0)
        return false;
    for (int i = 2; i < argc; ++i) {
        if (std::strcmp(argv[i], "--") == 0)
            break;
        if (std::strcmp(argv[i], "--renderer=cpu") == 0
            || (std::strcmp(argv[i], "--renderer") == 0 && i + 1 < argc && std::strcmp(argv[i + 1], "cpu") == 0))
            return false;
    }
    return displayAtHand();
}

int generate(CliContext &ctx)
{
    const CliArgs args(ctx.args, {{QStringLiteral("settings")},
                                  {QStringLiteral("set"), true, true},
                                  {QStringLiteral("size")},
                                  {QStringLiteral("target")},
                                  {QStringLiteral("palette")},
                                  {QStringLiteral("renderer")}});
    args.expectOperands(2);
    const QString name = args.operands()[0];
    if (!GeneratorSettings::exists(name))
        throw CliUsageError{QStringLiteral("unknown generator '%1' (one of %2)")
                                .arg(elidedValue(name), GeneratorSettings::names().join(QStringLiteral(", ")))};
    ImageGenerator::Renderer renderer = ImageGenerator::Renderer::Auto;
    if (args.has(QStringLiteral("renderer"))) {
        const QString word = args.value(QStringLiteral("renderer"));
        if (word != QLatin1String("auto") && word != QLatin1String("gl") && word != QLatin1String("cpu"))
            throw CliUsageError{QStringLiteral("--renderer '%1' is none of auto, gl and cpu").arg(elidedValue(word))};
        renderer = ImageGenerator::rendererFromText(word);
    }
    // A --set names one of the generator's own keys; a typing error must not pass unnoticed.
    const SettingsText::Pairs own = GeneratorSettings::defaults(name).toPairs();
    for (const QString &assignment : args.values(QStringLiteral("set"))) {
        const QString key = assignment.section(QLatin1Char('='), 0, 0);
        const bool known = std::any_of(own.begin(), own.end(), [&](const auto &pair) { return pair.first == key; });
        if (assignment.contains(QLatin1Char('=')) && !known)
            throw CliUsageError{QStringLiteral("'--set %1': %2 has no setting '%3'")
                                    .arg(elidedValue(assignment), name, elidedValue(key))};
    }
    GeneratorSettings settings = GeneratorSettings::fromPairs(name, settingsFromArgs(args, name));
    if (args.has(QStringLiteral("size")))
        applySize(settings, args.value(QStringLiteral("size")));
    if (args.has(QStringLiteral("target")))
        settings.target = targetFromWord(args.value(QStringLiteral("target")));
    if (renderer == ImageGenerator::Renderer::Gl && !qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        throw DescribedException(QStringLiteral("OpenGL unavailable"),
                                 QStringLiteral("OpenGL needs a display (DISPLAY or WAYLAND_DISPLAY), and there is "
                                                "none; --renderer cpu computes the same picture without one."));
    const Palette<uint> palette =
        args.has(QStringLiteral("palette")) ? paletteFrom(args.value(QStringLiteral("palette"))) : grayscalePalette();
    DocumentImage image = ImageGenerator::generate(settings, palette, renderer);
    writeImageResult(args.operands()[1], std::move(image), palette);
    return ExitOk;
}
