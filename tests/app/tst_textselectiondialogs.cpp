// The palette text encoder dialog with "Export palette as text..." and "Palette clipboard
// format...", and the selection pattern dialog, each opened from its menu entry.
#include "chromaxismainwindow.h"
#include "dialogs/palettetextencoderdialog.h"
#include "dialogs/selectionpatterndialog.h"
#include "guitesting.h"
#include "document/macroplayer.h"
#include "storage/palettedatabase.h"
#include "paletteview.h"
#include "utils/qt/widgets/dialogsettingsio.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>

Q_DECLARE_METATYPE(std::set<int>)

namespace {

Palette<uint> twoColours()
{
    Palette<uint> p;
    p.append({255u << 8, 128u << 8, 0u, 65535u});
    p.append({0u, 0u, 255u << 8, 65535u});
    return p;
}

void clickButton(QDialog *dialog, QDialogButtonBox::StandardButton which)
{
    dialog->findChild<QDialogButtonBox *>("buttons")->button(which)->click();
}

void choosePreset(QDialog *dialog, const QString &name)
{
    QComboBox *box = dialog->findChild<DialogSettingsIO *>()->comboBox();
    box->setCurrentIndex(box->findText(name));
}

} // namespace

class TestTextSelectionDialogs : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void encoderPreview();
    void exportPaletteAsText();
    void clipboardFormat_data();
    void clipboardFormat();
    void selectionPattern_data();
    void selectionPattern();
    void selectionPatternLayout();

private:
    PaletteDatabase m_db;
    QTemporaryDir m_dir;
};

void TestTextSelectionDialogs::init()
{
    QSettings().clear();
}

void TestTextSelectionDialogs::encoderPreview()
{
    PaletteTextEncoderDialog d(twoColours(), "no_database");
    d.start();
    auto *preview = d.findChild<QPlainTextEdit *>("preview");
    QVERIFY(preview->isReadOnly());
    QCOMPARE(preview->toPlainText(),
             QString("<table>\n   <tr width=\"1\"><td style=\"background-color:#ff8000\"></td></tr>\n"
                     "   <tr width=\"1\"><td style=\"background-color:#0000ff\"></td></tr>\n"
                     "</table>"));
    choosePreset(&d, "hex text");
    QCOMPARE(preview->toPlainText(), QString("#ff8000\n#0000ff"));
    auto *divider = d.findChild<QLineEdit *>("divider");
    divider->setFocus();
    divider->end(false);
    QTest::keyClicks(divider, "-%i");
    QCOMPARE(preview->toPlainText(), QString("#ff8000\n-1#0000ff"));
    QCOMPARE(d.settingsIO()->comboBox()->currentIndex(), 0);
    auto *entry = d.findChild<QLineEdit *>("entry");
    entry->selectAll();
    QTest::keyClicks(entry, "(%r, %g, %b)");
    QCOMPARE(preview->toPlainText(), QString("(255, 128, 0)\n-1(0, 0, 255)"));
    auto *encoding = d.findChild<QComboBox *>("encoding");
    QCOMPARE(encoding->count(), 4);
    encoding->setCurrentText("UTF-16");
    QCOMPARE(d.encoderTemplate().encoding, QString("UTF-16"));
    QCOMPARE(d.encoderTemplate().divider, QString("\\n-%i"));
}

void TestTextSelectionDialogs::exportPaletteAsText()
{
    ChromaxisMainWindow w(&m_db);
    w.installPalette(twoColours(), false);
    w.document().setRecording(true);
    const QString path = m_dir.filePath("palette.css");
    handleNextDialog<PaletteTextEncoderDialog>([](PaletteTextEncoderDialog *d) {
        choosePreset(d, "css #2");
        clickButton(d, QDialogButtonBox::Ok);
    });
    QString title;
    QStringList filters;
    // Waits while the encoder dialog is up: the file dialog follows it.
    handleNextDialog<QFileDialog>([&](QFileDialog *d) {
        title = d->windowTitle();
        filters = d->nameFilters();
        d->selectFile(path);
        static_cast<QDialog *>(d)->accept();
    });
    w.action("exportPaletteToText")->trigger();
    QCOMPARE(title, QString("Export palette as text"));
    QCOMPARE(filters, QStringList({"All text formats (*.html *.php *.css *.js *.txt)",
                                   "HTML files (*.html *.php)", "CSS files (*.css)",
                                   "Javascript files (*.js)", "Text files (*.txt)", "All files (* *.*)"}));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(),
             QByteArray(".pal0 { background-color: #ff8000; }\n.pal1 { background-color: #0000ff; }\n"));
    const auto steps = MacroFile::stepsOf(w.document().macros());
    QCOMPARE(int(steps.size()), 1);
    QCOMPARE(steps[0].name, QString("export_palette_text"));
    QCOMPARE(steps[0].parameters, QString("filename:%1\n").arg(path));
    QCOMPARE(QSettings().value("dialog_palette_textencode_preset").toString(), QString("css #2"));
}

void TestTextSelectionDialogs::clipboardFormat_data()
{
    QTest::addColumn<bool>("accept");
    QTest::newRow("ok") << true;
    QTest::newRow("cancel") << false;
}

void TestTextSelectionDialogs::clipboardFormat()
{
    QFETCH(bool, accept);
    ChromaxisMainWindow w(&m_db);
    w.installPalette(twoColours(), false);
    QStringList shown;
    handleNextDialog<PaletteTextEncoderDialog>([&](PaletteTextEncoderDialog *d) {
        // The dialog opens on the template the clipboard uses now.
        for (const char *field : {"header", "entry", "divider", "bottom"})
            shown << d->findChild<QLineEdit *>(field)->text();
        choosePreset(d, "JavaScript #1");
        clickButton(d, accept ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel);
    });
    w.action("settingsPaletteCopyFormat")->trigger();
    QCOMPARE(shown, QStringList({"", "#%R%G%B", ", ", ""}));
    const PaletteView *view = w.paletteView();
    QSettings s;
    if (accept) {
        QCOMPARE(view->clipboardHeader(), QString("var palette = ["));
        QCOMPARE(view->clipboardEntry(), QString("[%r, %g, %b]"));
        QCOMPARE(view->clipboardDivider(), QString(", "));
        QCOMPARE(view->clipboardBottom(), QString("];"));
        QCOMPARE(s.value("pal_clipboard_header").toString(), QString("var palette = ["));
        QCOMPARE(s.value("pal_clipboard_entry").toString(), QString("[%r, %g, %b]"));
        QCOMPARE(s.value("pal_clipboard_divider").toString(), QString(", "));
        QCOMPARE(s.value("pal_clipboard_footer").toString(), QString("];"));
    } else {
        QCOMPARE(view->clipboardEntry(), QString("#%R%G%B"));
        QVERIFY(!s.contains("pal_clipboard_entry"));
    }
}

void TestTextSelectionDialogs::selectionPattern_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("set");
    QTest::addColumn<int>("skip");
    QTest::addColumn<bool>("full");
    QTest::addColumn<int>("end");
    QTest::addColumn<std::set<int>>("expected");
    // The full palette's bound is its length, one past the last entry.
    QTest::newRow("every other") << 0 << 1 << 1 << true << 0 << std::set<int>({0, 2, 4, 6});
    QTest::newRow("no skip") << 2 << 3 << 0 << true << 0 << std::set<int>({2, 3, 4, 5, 6});
    QTest::newRow("start beyond") << 7 << 1 << 0 << true << 0 << std::set<int>();
    QTest::newRow("end index") << 1 << 1 << 1 << false << 3 << std::set<int>({1, 3});
}

void TestTextSelectionDialogs::selectionPattern()
{
    QFETCH(int, start);
    QFETCH(int, set);
    QFETCH(int, skip);
    QFETCH(bool, full);
    QFETCH(int, end);
    QFETCH(std::set<int>, expected);

    ChromaxisMainWindow w(&m_db);
    Palette<uint> six;
    for (uint i = 0; i < 6; ++i)
        six.append({i << 12, 0u, 0u, 65535u});
    w.installPalette(six, false);
    w.document().clearHistory();
    w.document().setSelection({5});
    w.document().setRecording(true);

    auto drive = [&](SelectionPatternDialog *d) {
        d->findChild<QSpinBox *>("start_index")->setValue(start);
        d->findChild<QSpinBox *>("set_number")->setValue(set);
        d->findChild<QSpinBox *>("skip_number")->setValue(skip);
        d->findChild<QCheckBox *>("full_palette")->setChecked(full);
        if (!full)
            d->findChild<QSpinBox *>("end_index")->setValue(end);
    };
    std::set<int> live, liveView;
    handleNextDialog<SelectionPatternDialog>([&](SelectionPatternDialog *d) {
        drive(d);
        live = w.document().selection();
        liveView = w.paletteView()->selection();
        clickButton(d, QDialogButtonBox::Cancel);
    });
    w.action("selectPattern")->trigger();
    QCOMPARE(live, expected);
    QCOMPARE(liveView, expected);
    QCOMPARE(w.document().selection(), std::set<int>({5}));

    handleNextDialog<SelectionPatternDialog>([&](SelectionPatternDialog *d) {
        drive(d);
        clickButton(d, QDialogButtonBox::Ok);
    });
    w.action("selectPattern")->trigger();
    QCOMPARE(w.document().selection(), expected);
    QCOMPARE(w.document().palette(), six);
    QCOMPARE(w.document().history().count(), 0);
    const auto steps = MacroFile::stepsOf(w.document().macros());
    QCOMPARE(int(steps.size()), 1);
    QCOMPARE(steps[0].name, QString("select_pattern"));
    QVERIFY(steps[0].parameters.startsWith("selectionpattern 2.0.0\n"));
    QVERIFY(steps[0].parameters.contains(QString("start_index:%1\n").arg(start)));
    QVERIFY(steps[0].parameters.contains(QString("skip_number:%1\n").arg(skip)));
    w.document().setPaletteModified(false);
}

void TestTextSelectionDialogs::selectionPatternLayout()
{
    SelectionPatternDialog d(40, "no_database");
    d.start();
    QCOMPARE(d.windowTitle(), QString("Selection pattern"));
    QStringList groups;
    for (const QGroupBox *g : d.findChildren<QGroupBox *>())
        groups << g->title();
    QCOMPARE(groups, QStringList({"Limits", "Pattern"}));
    for (const char *name : {"start_index", "end_index", "set_number", "skip_number"}) {
        const QSpinBox *spin = d.findChild<QSpinBox *>(name);
        QVERIFY(spin->maximumWidth() <= 100);
        QCOMPARE(spin->maximum(), 65535);
    }
    QCOMPARE(d.findChild<QSpinBox *>("set_number")->minimum(), 1);
    // The first preset: start 0, set 2, skip 6 over the full palette.
    QCOMPARE(d.result(), std::set<int>({0, 1, 8, 9, 16, 17, 24, 25, 32, 33, 40}));
    auto *end = d.findChild<QSpinBox *>("end_index");
    QVERIFY(!end->isEnabled());
    d.findChild<QCheckBox *>("full_palette")->setChecked(false);
    QVERIFY(end->isEnabled());
}

CHROMAXIS_GUI_TEST_MAIN(TestTextSelectionDialogs)
#include "tst_textselectiondialogs.moc"
