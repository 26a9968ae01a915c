#include "colorinterpolationdialog.h"

#include "spaces/colorspace.h"
#include "utils/qt/colorwidgets/colorticksbar.h"
#include "utils/qt/colorwidgets/selectcolorbutton.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include <cmath>

namespace {
constexpr int stripHeight = 16;
}

ColorInterpolationDialog::ColorInterpolationDialog(const Palette<uint> &palette,
                                                   const std::set<int> &selection,
                                                   const QString &connectionName, int maximumSize,
                                                   QWidget *parent)
    : PaletteDialog(palette, selection, connectionName, parent)
{
    setWindowTitle(tr("Generate palette by interpolation"));
    const InterpolationSettings initial;

    m_bar = new ColorTicksBar(2, 17, 256, 7, 0, 0);
    m_bar->setObjectName(QStringLiteral("ticks"));
    m_bar->setTicks(initial.ticks);
    m_stripLabel = new QLabel;
    m_stripLabel->setObjectName(QStringLiteral("strip"));
    m_stripLabel->setFixedSize(m_bar->width(), stripHeight);

    m_index = new QSpinBox;
    m_index->setObjectName(QStringLiteral("index"));
    m_index->setRange(0, InterpolationSettings::highestIndex);
    m_color = new SelectColorButton;
    m_color->setObjectName(QStringLiteral("color"));
    m_function = new QComboBox;
    m_function->setObjectName(QStringLiteral("function"));
    m_function->addItems({tr("linear"), tr("sigmoid")});
    m_colorSpace = new QComboBox;
    m_colorSpace->setObjectName(QStringLiteral("colorSpace"));
    for (const ColorSpaceInfo &space : colorSpaceTable())
        m_colorSpace->addItem(space.name);

    m_entry = new QGroupBox(tr("Entry"));
    auto *entryForm = new QFormLayout(m_entry);
    entryForm->addRow(tr("Index:"), m_index);
    entryForm->addRow(tr("Color:"), m_color);
    auto *segment = new QGroupBox(tr("Interpolation (right)"));
    auto *segmentForm = new QFormLayout(segment);
    segmentForm->addRow(tr("Function:"), m_function);
    segmentForm->addRow(tr("Color space:"), m_colorSpace);
    entryForm->addRow(segment);

    m_size = new QSpinBox;
    m_size->setObjectName(QStringLiteral("size"));
    m_size->setRange(1, qMax(1, maximumSize));
    m_size->setValue(initial.size);

    auto *layout = new QVBoxLayout;
    layout->addWidget(m_bar, 0, Qt::AlignHCenter);
    layout->addWidget(m_stripLabel, 0, Qt::AlignHCenter);
    layout->addWidget(m_entry);
    auto *sizeForm = new QFormLayout;
    sizeForm->addRow(tr("Palette size:"), m_size);
    layout->addLayout(sizeForm);

    connect(m_bar, &ColorTicksBar::ticksChanged, this, &ColorInterpolationDialog::controlChanged);
    connect(m_bar, &ColorTicksBar::tickSelected, this, &ColorInterpolationDialog::tickSelected);
    // An edit the bar had to bound (an index beyond a neighbour) shows what the tick became.
    connect(m_bar, &ColorTicksBar::ticksChanged, this, [this]() { tickSelected(m_bar->currentTick()); });
    connect(m_bar, &ColorTicksBar::currentColorChanged, m_color, &SelectColorButton::setColor);
    connect(m_index, QOverload<int>::of(&QSpinBox::valueChanged), m_bar, &ColorTicksBar::setCurrentTickIndex);
    connect(m_color, &SelectColorButton::colorChanged, m_bar, &ColorTicksBar::setCurrentTickColor);
    connect(m_function, QOverload<int>::of(&QComboBox::currentIndexChanged), m_bar,
            &ColorTicksBar::setCurrentTickFunction);
    connect(m_colorSpace, QOverload<int>::of(&QComboBox::currentIndexChanged), m_bar,
            &ColorTicksBar::setCurrentTickColorSpace);
    connect(m_size, QOverload<int>::of(&QSpinBox::valueChanged), this,
            &ColorInterpolationDialog::controlChanged);
    tickSelected(-1);
    setControls(layout);
}

QString ColorInterpolationDialog::settingsName() const
{
    return InterpolationSettings::settingsName;
}

InterpolationSettings ColorInterpolationDialog::settings() const
{
    InterpolationSettings s;
    s.ticks = m_bar->ticks();
    s.size = m_size->value();
    return s;
}

SettingsText::Pairs ColorInterpolationDialog::currentPairs() const
{
    return settings().toPairs();
}

void ColorInterpolationDialog::applyPairs(const SettingsText::Pairs &pairs)
{
    const auto s = InterpolationSettings::fromPairs(pairs, settings());
    m_bar->setTicks(s.ticks);
    m_size->setValue(s.size);
    tickSelected(-1);
}

void ColorInterpolationDialog::tickSelected(int position)
{
    const bool editing = position >= 0 && position < int(m_bar->ticks().size());
    for (QWidget *editor : {static_cast<QWidget *>(m_index), static_cast<QWidget *>(m_color),
                            static_cast<QWidget *>(m_function), static_cast<QWidget *>(m_colorSpace)})
        editor->setEnabled(editing);
    if (!editing)
        return;
    // Loading the editors is not an edit of the tick.
    const ColorTicksBar::Tick &tick = m_bar->ticks()[size_t(position)];
    const QSignalBlocker blockIndex(m_index);
    const QSignalBlocker blockFunction(m_function);
    const QSignalBlocker blockSpace(m_colorSpace);
    m_index->setValue(tick.index);
    m_color->setColor(QColor::fromRgb(tick.color | 0xFF000000u));
    m_function->setCurrentIndex(tick.function);
    m_colorSpace->setCurrentIndex(tick.colorSpace);
}

InterpolationSettings ColorInterpolationDialog::selectionSettings() const
{
    const Palette<uint> &p = original();
    std::vector<int> chosen;
    for (int i : selection())
        if (i >= 0 && i < p.size())
            chosen.push_back(i);
    InterpolationSettings s;
    s.size = qBound(1, p.size(), m_size->maximum());
    if (chosen.size() < 2)
        return s;
    auto tickAt = [&p](int bar, int entry) {
        const RGBAColor<uint> &c = p[entry];
        ColorTicksBar::Tick tick;
        tick.index = bar;
        tick.color =
            0xFF000000u | ((c.r >> 8 & 0xFFu) << 16) | ((c.g >> 8 & 0xFFu) << 8) | (c.b >> 8 & 0xFFu);
        return tick;
    };
    // Each tick sits where the generator's segment for this size ends at the entry's own index.
    const double scale = 256.0 / double(s.size);
    s.ticks.clear();
    for (int i : chosen)
        s.ticks.push_back(
            tickAt(qBound(0, int(std::ceil(i * scale)), InterpolationSettings::highestIndex), i));
    // The bar always holds a tick at either end; the outer colours continue to the palette's ends.
    if (s.ticks.front().index > 0)
        s.ticks.insert(s.ticks.begin(), tickAt(0, chosen.front()));
    if (s.ticks.back().index < InterpolationSettings::highestIndex)
        s.ticks.push_back(tickAt(InterpolationSettings::highestIndex, chosen.back()));
    return s;
}

void ColorInterpolationDialog::started()
{
    if (!m_fromSelection)
        return;
    applySettings(selectionSettings().toPairs());
    settingsIO()->markModified();
}

void ColorInterpolationDialog::resultChanged()
{
    m_strip = ColorInterpolation::generate(m_bar->ticks(), 256);
    QImage image(m_stripLabel->width(), stripHeight, QImage::Format_RGB32);
    for (int x = 0; x < image.width(); ++x) {
        const int i = qMin(m_strip.size() - 1, x * m_strip.size() / qMax(1, image.width()));
        const RGBAColor<uint> &c = m_strip[qMax(0, i)];
        const QRgb rgb = qRgb(int(c.r >> 8 & 0xFFu), int(c.g >> 8 & 0xFFu), int(c.b >> 8 & 0xFFu));
        for (int y = 0; y < stripHeight; ++y)
            image.setPixel(x, y, rgb);
    }
    m_stripLabel->setPixmap(QPixmap::fromImage(image));
}
