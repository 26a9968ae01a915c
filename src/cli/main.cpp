#include "clicontext.h"
#include "colorcommands.h"
#include "conversioncommands.h"
#include "exportcommands.h"
#include "formats/librarymessages.h"
#include "generatecommands.h"
#include "imagecommands.h"
#include "operationcommands.h"
#include "macrocommands.h"
#include "palette/describedexception.h"
#include "palette/palette.h"
#include "palettecommands.h"
#include "projectcommands.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <vector>

namespace {

struct Command
{
    QStringList words;                  // e.g. {"color", "to-space"}
    std::function<int(CliContext &)> run;
};

const char *const usageText =
    "Usage: chromaxis-cli COMMAND [ARGS]\n"
    "\n"
    "Colours:\n"
    "  color to-space SPACE R G B A        components of a 16-bit colour in a colour space\n"
    "  color from-space SPACE C1 C2 C3 C4  the 16-bit colour of space components\n"
    "  color hsva R G B A                  hue, saturation, value and alpha of a colour\n"
    "      SPACE is an index 0..13 or a name (RGB, XYZ, HSL, Lab, LCH, Luv, Yxy, CMY, CMYK,\n"
    "      HSV, HSB, HunterLab, OKLab, OKLCH); R G B A are the 32-bit words of the colour\n"
    "      (0..65535).\n"
    "\n"
    "Palettes:\n"
    "  palette show FILE [--from WORD] [--raw]\n"
    "  palette convert IN OUT [--from WORD] [--to WORD] [--option KEY=VALUE]...\n"
    "  palette generate NAME OUT [--size N]\n"
    "  palette apply OPERATION IN OUT [--settings FILE] [--set KEY=VALUE]... [--select LIST]\n"
    "  palette text IN OUT|- [--settings FILE] [--select LIST]\n"
    "  palette render IN OUT.png [--settings FILE] [--set KEY=VALUE]... [--preset NAME]\n"
    "  palette print IN OUT.pdf [--settings FILE] [--set KEY=VALUE]... [--preset NAME]\n"
    "  palette select IN [--settings FILE] [--set KEY=VALUE]...\n"
    "  palette batch OUTDIR FILE... --to WORD [--option KEY=VALUE]...\n"
    "\n"
    "Images and projects:\n"
    "  image show FILE\n"
    "  image render FILE OUT.png [--palette P] [--interpolate 0|1]\n"
    "  image print FILE OUT.pdf [--palette P]\n"
    "  image convert IN OUT [--settings FILE] [--set KEY=VALUE]...\n"
    "  image quantise IN OUT [--settings FILE] [--set KEY=VALUE]...\n"
    "  image fast NAME IN OUT              NAME: a fast conversion or a transform (image_mirror_h,\n"
    "                                      image_mirror_v, image_rotate_cw, image_rotate_ccw)\n"
    "  image batch OUTDIR FILE... [--settings FILE] [--set KEY=VALUE]...\n"
    "  project show FILE.cxw\n"
    "  project create OUT.cxw [--palette P] [--image I] [--select LIST]\n"
    "\n"
    "Generators, animation, database, macros:\n"
    "  generate NAME OUT [--settings FILE] [--set ...] [--size WxH] [--target indexed|continuous|rgb]\n"
    "           [--palette P] [--renderer auto|gl|cpu]\n"
    "  animation IN OUT.gif|.avi|.wmv|.mp4|.webm --start S --end E --fps F [--palette P]\n"
    "  db list\n"
    "  db show NAME\n"
    "  macro run MACRO IN OUT\n"
    "\n"
    "Exit status: 0 success, 1 failure (TITLE: MESSAGE on stderr), 2 wrong usage.\n";

std::vector<Command> commands()
{
    return {
        {{"color", "to-space"}, colorToSpace},
        {{"color", "from-space"}, colorFromSpace},
        {{"color", "hsva"}, colorHsva},
        {{"palette", "show"}, paletteShow},
        {{"palette", "convert"}, paletteConvert},
        {{"palette", "generate"}, paletteGenerate},
        {{"palette", "apply"}, paletteApply},
        {{"palette", "text"}, paletteText},
        {{"palette", "render"}, paletteRender},
        {{"palette", "print"}, palettePrint},
        {{"image", "print"}, imagePrint},
        {{"palette", "select"}, paletteSelect},
        {{"image", "show"}, imageShow},
        {{"image", "render"}, imageRender},
        {{"image", "convert"}, imageConvert},
        {{"image", "quantise"}, imageQuantise},
        {{"image", "fast"}, imageFast},
        {{"image", "batch"}, imageBatch},
        {{"project", "show"}, projectShow},
        {{"project", "create"}, projectCreate},
        {{"generate"}, generate},
        {{"animation"}, animation},
        {{"db", "list"}, dbList},
        {{"db", "show"}, dbShow},
        {{"palette", "batch"}, paletteBatch},
        {{"macro", "run"}, macroRun},
    };
}

int usage(QTextStream &err, const QString &reason = {})
{
    if (!reason.isEmpty())
        err << "chromaxis-cli: " << reason << "\n\n";
    err << usageText;
    err.flush();
    return ExitUsage;
}

// Output that never arrived is a failure like any other: "palette show X >/dev/full" must not
// report success. Called once the command's output is complete.
int finish(QTextStream &out, QTextStream &err, int rc)
{
    out.flush();
    const bool failed = out.status() != QTextStream::Ok;
    const bool flushed = std::fflush(stdout) == 0;
    if (!failed && flushed && !std::ferror(stdout))
        return rc;
    const QString reason = failed && out.device() ? out.device()->errorString()
                                                  : QString::fromLocal8Bit(std::strerror(errno));
    err << "Could not save: Unable to write to the standard output.\n" << reason << '\n';
    err.flush();
    return ExitFailure;
}

} // namespace

int main(int argc, char *argv[])
{
    // OpenGL needs a graphical application; everything else runs without a display.
    const std::unique_ptr<QCoreApplication> application = generateWantsOpenGL(argc, argv)
                                                              ? std::make_unique<QGuiApplication>(argc, argv)
                                                              : std::make_unique<QCoreApplication>(argc, argv);
    QCoreApplication &app = *application;
    QCoreApplication::setOrganizationName(QStringLiteral("KLO"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("chromaxis.org"));
    QCoreApplication::setApplicationName(QStringLiteral("Chromaxis"));
    registerPaletteMetaType();
    quietLibraryMessages();

    QTextStream out(stdout);
    QTextStream err(stderr);
    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty())
        return usage(err);
    if (args.size() == 1 && (args[0] == "--help" || args[0] == "-h" || args[0] == "help")) {
        out << usageText;
        return finish(out, err, ExitOk);
    }

    for (const Command &cmd : commands()) {
        if (args.size() < cmd.words.size() || args.mid(0, cmd.words.size()) != cmd.words)
            continue;
        CliContext ctx{args.mid(cmd.words.size()), out, err};
        try {
            return finish(out, err, cmd.run(ctx));
        } catch (const CliUsageError &e) {
            out.flush();
            return usage(err, e.reason);
        } catch (const DescribedException &e) {
            out.flush();
            err << e.title() << ": " << e.message() << '\n';
            return ExitFailure;
        } catch (const std::bad_alloc &) {
            out.flush();
            const DescribedException e = outOfMemoryFailure();
            err << e.title() << ": " << e.message() << '\n';
            return ExitFailure;
        } catch (const std::exception &e) {
            out.flush();
            err << "Error: " << e.what() << '\n';
            return ExitFailure;
        }
    }
    return usage(err, QStringLiteral("unknown command '%1'").arg(elidedValue(args.join(' '))));
}
