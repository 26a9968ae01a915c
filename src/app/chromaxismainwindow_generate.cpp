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

bool ChromaxisMainWindow::runGeneratorDialog(GenImageDialog &dialog)
{
    dialog.start();
    if (dialog.exec() != QDialog::Accepted)
        return false;
    const GeneratorSettings settings = dialog.settings();
    // A large or deep picture takes a while; the window cannot be used meanwhile anyway.
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool done = run([&] { m_commands.generateImage(settings); });
    QApplication::restoreOverrideCursor();
    return done;
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
