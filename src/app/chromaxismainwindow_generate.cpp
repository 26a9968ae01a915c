// Image > Generate: the generator dialogs. A dialog only gathers settings and shows a preview;
// after OK the core renders the picture off-screen (or on the processor) through the document's
// palette, and the document command installs it as one history step with its macro step.
#include "chromaxismainwindow.h"

#include "img_gen/apollonian/apolloniandialog.h"
#include "img_gen/gradient/gradientdialog.h"
#include "img_gen/julia/juliadialog.h"
#include "img_gen/mandelbrot/mandelbrotdialog.h"
#include "img_gen/moiree/moireedialog.h"
#include "img_gen/noise/noisedialog.h"
#include "img_gen/plasma/plasmadialog.h"

#include <QApplication>
#include <QProgressDialog>

bool ChromaxisMainWindow::runGeneratorDialog(GenImageDialog &dialog)
{
    dialog.start();
    if (dialog.exec() != QDialog::Accepted)
        return false;
    const GeneratorSettings settings = dialog.settings();
    // A large or deep picture takes a while. The processor's evaluation reports its progress and
    // can be cancelled; a render on the graphics card is one draw and shows the busy cursor only.
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QProgressDialog progress(tr("Generating the image..."), tr("Cancel"), 0, 100, this);
    progress.setObjectName(QStringLiteral("generateProgress"));
    progress.setWindowTitle(dialog.windowTitle());
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(400);
    bool cancelled = false;
    const bool done = run([&] {
        try {
            m_commands.generateImage(settings, ImageGenerator::Renderer::Auto, [&](int percent) {
                progress.setValue(percent);
                return !progress.wasCanceled();
            });
        } catch (const ImageGenerator::Cancelled &) {
            cancelled = true;
        }
    });
    progress.setValue(progress.maximum());
    QApplication::restoreOverrideCursor();
    return done && !cancelled;
}

void ChromaxisMainWindow::imageGenerateMandelbrot()
{
    MandelbrotDialog dialog(m_document.palette(), m_presets.connectionName(), this);
    runGeneratorDialog(dialog);
}

void ChromaxisMainWindow::imageGenerateJulia()
{
    JuliaDialog dialog(m_document.palette(), m_presets.connectionName(), this);
    runGeneratorDialog(dialog);
}

void ChromaxisMainWindow::imageGenerateApollonian()
{
    ApollonianDialog dialog(m_document.palette(), m_presets.connectionName(), this);
    runGeneratorDialog(dialog);
}

void ChromaxisMainWindow::imageGenerateNoise()
{
    NoiseDialog dialog(m_document.palette(), m_presets.connectionName(), this);
    runGeneratorDialog(dialog);
}

void ChromaxisMainWindow::imageGeneratePlasma()
{
    PlasmaDialog dialog(m_document.palette(), m_presets.connectionName(), this);
    runGeneratorDialog(dialog);
}

void ChromaxisMainWindow::imageGenerateGradient()
{
    GradientDialog dialog(m_document.palette(), m_presets.connectionName(), this);
    runGeneratorDialog(dialog);
}

void ChromaxisMainWindow::imageGenerateMoiree()
{
    MoireeDialog dialog(m_document.palette(), m_presets.connectionName(), this);
    runGeneratorDialog(dialog);
}
