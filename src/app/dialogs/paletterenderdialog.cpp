#include "paletterenderdialog.h"

#include "utils/qt/colorwidgets/selectcolorbutton.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPixmap>
#include <QScrollArea>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

using G = PalettePicture::Geometry;

struct Control
{
    const char *key;
    const char *label;
    int G::*member;
    int minimum;
    void (PaletteRenderDialog::*slot)(int);
};

// The controls in the order of the settings keys, grouped as the dialog shows them.
const Control controls[] = {
    {"pad_top", "Top:", &G::padTop, 0, &PaletteRenderDialog::setPadding},
    {"pad_right", "Right:", &G::padRight, 0, &PaletteRenderDialog::setPadding},
    {"pad_bottom", "Bottom:", &G::padBottom, 0, &PaletteRenderDialog::setPadding},
    {"pad_left", "Left:", &G::padLeft, 0, &PaletteRenderDialog::setPadding},
    {"spc_v", "Vertical:", &G::vspacing, 0, &PaletteRenderDialog::setSpacing},
    {"spc_h", "Horizontal:", &G::hspacing, 0, &PaletteRenderDialog::setSpacing},
    {"cell_width", "Width:", &G::cellWidth, 1, &PaletteRenderDialog::setSize},
    {"cell_height", "Height:", &G::cellHeight, 1, &PaletteRenderDialog::setSize},
    {"columns", "Columns:", &G::columns, 1, &PaletteRenderDialog::setShape},
};

// Group title and the range of controls[] it holds.
struct Group
{
    const char *title;
    int first;
    int count;
};
const Group groups[] = {{"Padding", 0, 4}, {"Spacing", 4, 2}, {"Size", 6, 2}, {"Shape", 8, 1}};

} // namespace

PaletteRenderDialog::PaletteRenderDialog(const Palette<uint> &palette, const QString &connectionName,
                                         QWidget *parent)
    : QDialog(parent), m_palette(palette)
{
    setWindowTitle(tr("Export palette as image"));
    auto *layout = new QVBoxLayout(this);
    auto *row = new QHBoxLayout;
    layout->addLayout(row);
    auto *left = new QVBoxLayout;
    row->addLayout(left);

    const PalettePicture::Settings initial;
    for (const Group &group : groups) {
        auto *box = new QGroupBox(tr(group.title));
        auto *form = new QFormLayout(box);
        for (int i = group.first; i < group.first + group.count; ++i) {
            const Control &c = controls[i];
            auto *spin = new QSpinBox;
            spin->setObjectName(QString::fromLatin1(c.key));
            spin->setRange(c.minimum, PalettePicture::maximumValue);
            spin->setValue(initial.geometry.*c.member);
            connect(spin, QOverload<int>::of(&QSpinBox::valueChanged), this, c.slot);
            form->addRow(tr(c.label), spin);
            m_spins << spin;
        }
        left->addWidget(box);
    }
    auto *background = new QGroupBox(tr("Background"));
    auto *backgroundForm = new QFormLayout(background);
    m_color = new SelectColorButton;
    m_color->setObjectName(QStringLiteral("bgcolor"));
    m_color->setColor(m_background);
    connect(m_color, &SelectColorButton::colorChanged, this, &PaletteRenderDialog::setColor);
    backgroundForm->addRow(tr("Color:"), m_color);
    left->addWidget(background);
    left->addStretch(1);

    auto *right = new QVBoxLayout;
    row->addLayout(right, 1);
    right->addWidget(new QLabel(tr("Preview:")));
    m_preview = new QLabel;
    m_preview->setObjectName(QStringLiteral("preview"));
    m_preview->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    auto *scroll = new QScrollArea;
    scroll->setWidget(m_preview);
    scroll->setWidgetResizable(true);
    right->addWidget(scroll, 1);

    QStringList names;
    for (const PalettePicture::Preset &preset : PalettePicture::presets())
        names << preset.name;
    m_settingsIO = new DialogSettingsIO(this, connectionName, names);
    m_settingsIO->setObjectName(QStringLiteral("settingsIO"));
    layout->addWidget(m_settingsIO);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->setObjectName(QStringLiteral("buttons"));
    connect(buttons, &QDialogButtonBox::accepted, this, &PaletteRenderDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &PaletteRenderDialog::reject);
    layout->addWidget(buttons);
    resize(560, 460);
    updatePreview();
}

void PaletteRenderDialog::start()
{
    m_settingsIO->start();
    updatePreview();
}

QSpinBox *PaletteRenderDialog::spinBox(const QString &key) const
{
    for (QSpinBox *spin : m_spins)
        if (spin->objectName() == key)
            return spin;
    return nullptr;
}

PalettePicture::Settings PaletteRenderDialog::settings() const
{
    PalettePicture::Settings s;
    for (int i = 0; i < m_spins.size(); ++i)
        s.geometry.*controls[i].member = m_spins[i]->value();
    s.background = m_background;
    return s;
}

void PaletteRenderDialog::setSettings(const PalettePicture::Settings &settings)
{
    m_loading = true;
    for (int i = 0; i < m_spins.size(); ++i)
        m_spins[i]->setValue(settings.geometry.*controls[i].member);
    m_background = settings.background;
    m_color->setColor(m_background);
    m_loading = false;
    updatePreview();
}

QImage PaletteRenderDialog::picture() const
{
    return PalettePicture::paint(m_palette, settings());
}

QString PaletteRenderDialog::dialogSettings() const
{
    return SettingsText::formatLines(PalettePicture::toSettings(settings()));
}

void PaletteRenderDialog::applySettings(const SettingsText::Pairs &pairs)
{
    setSettings(PalettePicture::fromSettings(pairs, settings()));
}

void PaletteRenderDialog::setPadding(int)
{
    changed();
}

void PaletteRenderDialog::setSpacing(int)
{
    changed();
}

void PaletteRenderDialog::setSize(int)
{
    changed();
}

void PaletteRenderDialog::setShape(int)
{
    changed();
}

void PaletteRenderDialog::setColor()
{
    m_background = m_color->color();
    changed();
}

void PaletteRenderDialog::changed()
{
    // Loading settings moves every control; that is one change, shown once, and not the user's.
    if (m_loading)
        return;
    m_settingsIO->markModified();
    updatePreview();
}

void PaletteRenderDialog::updatePreview()
{
    const QImage image = picture();
    m_preview->setPixmap(image.isNull() ? QPixmap() : QPixmap::fromImage(image));
}

void PaletteRenderDialog::accept()
{
    m_settingsIO->recordLastUsed();
    QDialog::accept();
}
