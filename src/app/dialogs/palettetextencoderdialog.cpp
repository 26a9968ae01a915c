#include "palettetextencoderdialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace {
const char *const encodings[] = {"ASCII", "LATIN1", "UTF-8", "UTF-16"};
}

PaletteTextEncoderDialog::PaletteTextEncoderDialog(const Palette<uint> &palette,
                                                   const QString &connectionName, QWidget *parent)
    : QDialog(parent), m_palette(palette)
{
    setWindowTitle(tr("Palette text format"));
    auto *layout = new QVBoxLayout(this);

    auto *definition = new QGroupBox(tr("Definition"));
    auto *form = new QFormLayout(definition);
    auto addField = [this, form](const QString &label, const char *name) {
        auto *edit = new QLineEdit;
        edit->setObjectName(QString::fromLatin1(name));
        connect(edit, &QLineEdit::textEdited, this, &PaletteTextEncoderDialog::textEdited);
        form->addRow(label, edit);
        return edit;
    };
    m_header = addField(tr("Header:"), "header");
    m_entry = addField(tr("Entry:"), "entry");
    m_divider = addField(tr("Divider:"), "divider");
    m_bottom = addField(tr("Footer:"), "bottom");
    layout->addWidget(definition);

    auto *encodingGroup = new QGroupBox(tr("Encoding"));
    auto *encodingLayout = new QVBoxLayout(encodingGroup);
    m_encoding = new QComboBox;
    m_encoding->setObjectName(QStringLiteral("encoding"));
    for (const char *name : encodings)
        m_encoding->addItem(QString::fromLatin1(name));
    connect(m_encoding, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &PaletteTextEncoderDialog::encodingChanged);
    encodingLayout->addWidget(m_encoding);
    layout->addWidget(encodingGroup);

    layout->addWidget(new QLabel(tr("Preview:")));
    m_preview = new QPlainTextEdit;
    m_preview->setObjectName(QStringLiteral("preview"));
    m_preview->setReadOnly(true);
    layout->addWidget(m_preview, 1);

    QStringList names;
    for (const PaletteTextEncoder::Preset &preset : PaletteTextEncoder::presets())
        names << preset.name;
    m_settingsIO = new DialogSettingsIO(this, connectionName, names);
    m_settingsIO->setObjectName(QStringLiteral("settingsIO"));
    layout->addWidget(m_settingsIO);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->setObjectName(QStringLiteral("buttons"));
    connect(buttons, &QDialogButtonBox::accepted, this, &PaletteTextEncoderDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &PaletteTextEncoderDialog::reject);
    layout->addWidget(buttons);
    resize(520, 420);
}

void PaletteTextEncoderDialog::start()
{
    m_settingsIO->start();
    updatePreview();
}

PaletteTextEncoder::Template PaletteTextEncoderDialog::encoderTemplate() const
{
    PaletteTextEncoder::Template t;
    t.encoding = m_encoding->currentText();
    t.header = m_header->text();
    t.entry = m_entry->text();
    t.divider = m_divider->text();
    t.bottom = m_bottom->text();
    return t;
}

void PaletteTextEncoderDialog::setEncoderTemplate(const PaletteTextEncoder::Template &tmpl)
{
    {
        const QSignalBlocker block(m_encoding);
        m_header->setText(tmpl.header);
        m_entry->setText(tmpl.entry);
        m_divider->setText(tmpl.divider);
        m_bottom->setText(tmpl.bottom);
        const int index = m_encoding->findText(tmpl.encoding);
        if (index >= 0)
            m_encoding->setCurrentIndex(index);
    }
    updatePreview();
}

QString PaletteTextEncoderDialog::previewText() const
{
    return m_preview->toPlainText();
}

QString PaletteTextEncoderDialog::dialogSettings() const
{
    return SettingsText::formatLines(PaletteTextEncoder::toSettings(encoderTemplate()));
}

void PaletteTextEncoderDialog::applySettings(const SettingsText::Pairs &pairs)
{
    setEncoderTemplate(PaletteTextEncoder::fromSettings(pairs, encoderTemplate()));
}

void PaletteTextEncoderDialog::textEdited()
{
    m_settingsIO->markModified();
    updatePreview();
}

void PaletteTextEncoderDialog::encodingChanged(int)
{
    m_settingsIO->markModified();
    updatePreview();
}

void PaletteTextEncoderDialog::updatePreview()
{
    // The whole palette: the selection plays no part in the preview.
    m_preview->setPlainText(PaletteTextEncoder::encodeToString(encoderTemplate(), m_palette, {}));
}

void PaletteTextEncoderDialog::accept()
{
    m_settingsIO->recordLastUsed();
    QDialog::accept();
}
