#include "imageconversiondialog.h"

#include "palette/describedexception.h"
#include "conversion/imageconversionengine.h"

#include <QDialogButtonBox>
#include <QMessageBox>
#include <QProgressDialog>
#include <QVBoxLayout>

namespace {
// Progress runs over two steps, computing the palette and mapping the pixels, 100 each.
constexpr int stepRange = 100;
} // namespace

ImageConversionDialog::ImageConversionDialog(const QString &connectionName, QWidget *parent)
    : QDialog(parent), m_connection(connectionName)
{
}

void ImageConversionDialog::setControls(QWidget *controls)
{
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(controls);
    m_settingsIO = new DialogSettingsIO(this, m_connection);
    m_settingsIO->setObjectName(QStringLiteral("settingsIO"));
    layout->addWidget(m_settingsIO);
    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    m_buttons->setObjectName(QStringLiteral("buttons"));
    connect(m_buttons, &QDialogButtonBox::accepted, this, &ImageConversionDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &ImageConversionDialog::reject);
    layout->addWidget(m_buttons);
}

void ImageConversionDialog::start()
{
    if (m_settingsIO)
        m_settingsIO->start();
}

void ImageConversionDialog::applySettings(const SettingsText::Pairs &pairs)
{
    m_applying = true;
    try {
        applyPairs(pairs);
    } catch (const DescribedException &e) {
        QMessageBox::warning(this, e.title(), e.message());
    }
    m_applying = false;
}

void ImageConversionDialog::controlChanged()
{
    if (m_applying || !m_settingsIO)
        return;
    m_settingsIO->markModified();
}

bool ImageConversionDialog::runEngine(ImageConversionEngine &engine,
                                      const std::function<DocumentImage()> &conversion)
{
    QProgressDialog progress(tr("Computing the palette..."), tr("Cancel"), 0, 2 * stepRange, this);
    progress.setObjectName(QStringLiteral("progress"));
    progress.setWindowTitle(windowTitle());
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(m_progressDelay);
    progress.setAutoClose(false);
    progress.setAutoReset(false);
    int shownStep = 0;
    const auto report =
        connect(&engine, &ImageConversionEngine::progressChanged, &progress,
                [&progress, &shownStep](int step, int percent) {
                    if (step != shownStep) {
                        shownStep = step;
                        progress.setLabelText(step == 0 ? tr("Computing the palette...")
                                                        : tr("Mapping the pixels..."));
                    }
                    progress.setValue(qBound(0, step, 1) * stepRange + qBound(0, percent, 100));
                });
    const auto stop =
        connect(&progress, &QProgressDialog::canceled, &engine, [&engine]() { engine.cancel(); });
    DocumentImage result = conversion();
    disconnect(report);
    disconnect(stop);
    progress.close();
    if (result.isNull() || engine.wasCancelled())
        return false;
    m_result = std::move(result);
    m_resultPalette = engine.destinationPalette();
    m_missing = engine.missingPalettes();
    return true;
}

void ImageConversionDialog::accept()
{
    if (!run())
        return;
    if (m_settingsIO)
        m_settingsIO->recordLastUsed();
    QDialog::accept();
}
