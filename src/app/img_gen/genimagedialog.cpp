#include "genimagedialog.h"

#include "genimagewidget.h"

#include "document/imagelimits.h"
#include "palette/describedexception.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

// A number field that shows a value with the digits it has, not always all of them: a preset's
// "0.9" next to a deep view's offset with nine decimals.
class GenNumberBox : public QDoubleSpinBox
{
public:
    using QDoubleSpinBox::QDoubleSpinBox;

protected:
    QString textFromValue(double value) const override
    {
        QLocale l = locale();
        l.setNumberOptions(QLocale::OmitGroupSeparator);
        QString text = l.toString(value, 'f', decimals());
        if (text.contains(l.decimalPoint())) {
            while (text.endsWith(l.zeroDigit()))
                text.chop(1);
            if (text.endsWith(l.decimalPoint()))
                text.chop(1);
        }
        return text == QLatin1String("-0") ? QStringLiteral("0") : text;
    }
};

QString valueText(const QWidget *control)
{
    if (const auto *number = qobject_cast<const QDoubleSpinBox *>(control))
        return QString::number(number->value(), 'g', 15);
    if (const auto *integer = qobject_cast<const QSpinBox *>(control))
        return QString::number(integer->value());
    if (const auto *list = qobject_cast<const QComboBox *>(control)) {
        // A list longer than its setting's values goes round them by position.
        const int values = list->property("values").toInt();
        return QString::number(values > 0 ? list->currentIndex() % values : list->currentIndex());
    }
    if (const auto *check = qobject_cast<const QCheckBox *>(control))
        return check->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
    return {};
}

void showValue(QWidget *control, const QString &value)
{
    if (auto *number = qobject_cast<QDoubleSpinBox *>(control))
        number->setValue(value.toDouble());
    else if (auto *integer = qobject_cast<QSpinBox *>(control))
        integer->setValue(value.toInt());
    else if (auto *list = qobject_cast<QComboBox *>(control))
        list->setCurrentIndex(qBound(0, value.toInt(), list->count() - 1));
    else if (auto *check = qobject_cast<QCheckBox *>(control))
        check->setChecked(value.toInt() != 0);
}

} // namespace

GenImageDialog::GenImageDialog(const QString &name, const Palette<uint> &palette, const QString &connectionName,
                               QWidget *parent)
    : QDialog(parent), m_name(name), m_palette(palette), m_connection(connectionName)
{
}

void GenImageDialog::setPage(const QString &groupTitle, QBoxLayout *page, GenImageWidget *preview)
{
    m_preview = preview;
    m_preview->setObjectName(QStringLiteral("preview"));
    m_preview->setPalette(m_palette);
    connect(m_preview, &GenImageWidget::viewChanged, this, &GenImageDialog::viewDragged);

    auto *generator = new QGroupBox(groupTitle);
    generator->setObjectName(QStringLiteral("generator"));
    generator->setLayout(page);

    makeInteger("xsize", 1, int(ImageLimits::maxSide));
    makeInteger("ysize", 1, int(ImageLimits::maxSide));
    makeList("target", {tr("Indexed"), tr("Continuous"), tr("RGB")});
    QGroupBox *output = makeGroup(tr("Output"), {{tr("Width:"), "xsize"}, {tr("Height:"), "ysize"},
                                                 {tr("Target:"), "target"}});

    auto *side = new QVBoxLayout;
    side->addWidget(generator);
    side->addWidget(output);
    side->addStretch(1);
    auto *top = new QHBoxLayout;
    top->addWidget(m_preview, 0, Qt::AlignTop);
    top->addLayout(side);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top, 1);
    m_settingsIO = new DialogSettingsIO(this, m_connection);
    m_settingsIO->setObjectName(QStringLiteral("settingsIO"));
    layout->addWidget(m_settingsIO);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->setObjectName(QStringLiteral("buttons"));
    connect(buttons, &QDialogButtonBox::accepted, this, &GenImageDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &GenImageDialog::reject);
    layout->addWidget(buttons);

    showSettings(GeneratorSettings::defaults(m_name));
    m_preview->setSettings(settings());
}

void GenImageDialog::start()
{
    if (m_settingsIO)
        m_settingsIO->start();
    m_preview->setSettings(settings());
}

SettingsText::Pairs GenImageDialog::controlPairs() const
{
    SettingsText::Pairs pairs = GeneratorSettings::defaults(m_name).toPairs();
    for (auto &pair : pairs)
        if (const QWidget *c = control(pair.first))
            pair.second = valueText(c);
    return pairs;
}

GeneratorSettings GenImageDialog::settings() const
{
    try {
        return GeneratorSettings::fromPairs(m_name, controlPairs());
    } catch (const DescribedException &) {
        // The controls only hold values of their ranges; should a range outgrow the parser,
        // the generator's own defaults are still a picture.
        return GeneratorSettings::defaults(m_name);
    }
}

QString GenImageDialog::settingsText() const
{
    return SettingsText::format(m_name, dialogSettings());
}

void GenImageDialog::applySettings(const SettingsText::Pairs &pairs)
{
    GeneratorSettings applied;
    try {
        applied = GeneratorSettings::fromPairs(m_name, pairs, settings());
    } catch (const DescribedException &e) {
        QMessageBox::warning(this, e.title(), e.message());
        return;
    }
    showSettings(applied);
    if (m_preview)
        m_preview->setSettings(settings());
}

void GenImageDialog::showSettings(const GeneratorSettings &settings)
{
    m_applying = true;
    for (const auto &pair : settings.toPairs())
        if (QWidget *c = control(pair.first))
            showValue(c, pair.second);
    m_applying = false;
}

void GenImageDialog::controlChanged()
{
    if (m_applying)
        return;
    if (m_settingsIO)
        m_settingsIO->markModified();
    if (m_preview)
        m_preview->setSettings(settings());
}

void GenImageDialog::viewDragged(double xoff, double yoff, double zoom)
{
    m_applying = true;
    for (const auto &field : {std::make_pair("xoff", xoff), std::make_pair("yoff", yoff),
                              std::make_pair("zoom", zoom)})
        if (auto *number = qobject_cast<QDoubleSpinBox *>(control(QLatin1String(field.first))))
            number->setValue(field.second);
    m_applying = false;
    if (m_settingsIO)
        m_settingsIO->markModified();
}

void GenImageDialog::accept()
{
    if (m_settingsIO)
        m_settingsIO->recordLastUsed();
    QDialog::accept();
}

QDoubleSpinBox *GenImageDialog::makeNumber(const char *key, double minimum, double maximum, int decimals)
{
    auto *number = new GenNumberBox;
    number->setObjectName(QString::fromLatin1(key));
    number->setDecimals(decimals);
    number->setRange(minimum, maximum);
    number->setAccelerated(true);
    connect(number, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, &GenImageDialog::controlChanged);
    m_controls.insert(number->objectName(), number);
    return number;
}

QSpinBox *GenImageDialog::makeInteger(const char *key, int minimum, int maximum)
{
    auto *integer = new QSpinBox;
    integer->setObjectName(QString::fromLatin1(key));
    integer->setRange(minimum, maximum);
    integer->setAccelerated(true);
    connect(integer, QOverload<int>::of(&QSpinBox::valueChanged), this, &GenImageDialog::controlChanged);
    m_controls.insert(integer->objectName(), integer);
    return integer;
}

QComboBox *GenImageDialog::makeList(const char *key, const QStringList &texts)
{
    auto *list = new QComboBox;
    list->setObjectName(QString::fromLatin1(key));
    list->addItems(texts);
    connect(list, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &GenImageDialog::controlChanged);
    m_controls.insert(list->objectName(), list);
    return list;
}

QCheckBox *GenImageDialog::makeCheckBox(const char *key, const QString &text)
{
    auto *check = new QCheckBox(text);
    check->setObjectName(QString::fromLatin1(key));
    connect(check, &QCheckBox::toggled, this, &GenImageDialog::controlChanged);
    m_controls.insert(check->objectName(), check);
    return check;
}

QGroupBox *GenImageDialog::makeGroup(const QString &title, const QList<QPair<QString, const char *>> &fields)
{
    auto *group = new QGroupBox(title);
    auto *form = new QFormLayout(group);
    for (const auto &field : fields) {
        QWidget *c = control(QLatin1String(field.second));
        Q_ASSERT(c);
        if (field.first.isEmpty())
            form->addRow(c);
        else
            form->addRow(field.first, c);
    }
    return group;
}

QGroupBox *GenImageDialog::makeViewGroup(double offsetLimit)
{
    // Offsets carry enough digits for a pixel of the deepest views to move them.
    makeNumber("xoff", -offsetLimit, offsetLimit, 12);
    makeNumber("yoff", -offsetLimit, offsetLimit, 12);
    makeNumber("zoom", 0.000001, 1e12, 6);
    return makeGroup(tr("View"), {{tr("X-offset:"), "xoff"}, {tr("Y-offset:"), "yoff"}, {tr("Zoom:"), "zoom"}});
}

QGroupBox *GenImageDialog::makeComputationGroup(bool withConstant, bool escapeTime)
{
    makeInteger("iterations", 1, 1000000);
    makeNumber("norm", 0.0001, 1000000, 4);
    QList<QPair<QString, const char *>> fields{{tr("Iterations:"), "iterations"}, {tr("Scale:"), "norm"}};
    if (withConstant) {
        makeNumber("c_r", -4, 4, 10);
        makeNumber("c_i", -4, 4, 10);
        fields.append({tr("Real:"), "c_r"});
        fields.append({tr("Imag:"), "c_i"});
    }
    if (escapeTime) {
        makeCheckBox("precision", tr("Double precision"));
        makeCheckBox("smooth", tr("Smooth colouring"));
        fields.append({QString(), "precision"});
        fields.append({QString(), "smooth"});
    }
    return makeGroup(tr("Computation"), fields);
}
