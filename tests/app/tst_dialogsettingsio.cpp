// The "Stored settings:" row of the parameter dialogs against a real preset database: what the
// dialog starts with, the six commands and every message they give.
#include "dialogs/palettetextencoderdialog.h"
#include "guitesting.h"
#include "pal_manip/tintdialog.h"
#include "storage/presetdatabase.h"
#include "storage/settingsstore.h"
#include "utils/qt/colorwidgets/selectcolorbutton.h"
#include "utils/qt/widgets/dialogsettingsio.h"
#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QSettings>
#include <QSignalSpy>
#include <QToolButton>

#include <memory>

namespace {

Palette<uint> somePalette()
{
    Palette<uint> p;
    for (uint i = 0; i < 8; ++i)
        p.append({i * 8000u, 65535u - i * 8000u, 30000u, 65535u});
    return p;
}

QStringList entries(const QComboBox *box)
{
    QStringList out;
    for (int i = 0; i < box->count(); ++i)
        out << box->itemText(i);
    return out;
}

// Answers the next text question with text, or cancels it when text is null.
void answerNextInput(const QString &text, QString *seenTitle = nullptr, QString *seenLabel = nullptr,
                     QString *seenDefault = nullptr)
{
    handleNextDialog<QInputDialog>([=](QInputDialog *d) {
        if (seenTitle)
            *seenTitle = d->windowTitle();
        if (seenLabel)
            *seenLabel = d->labelText();
        if (seenDefault)
            *seenDefault = d->textValue();
        if (text.isNull()) {
            d->reject();
            return;
        }
        d->setTextValue(text);
        d->accept();
    });
}

void answerNextFile(const QString &path, QString *seenTitle = nullptr, QStringList *seenFilters = nullptr)
{
    handleNextDialog<QFileDialog>([=](QFileDialog *d) {
        if (seenTitle)
            *seenTitle = d->windowTitle();
        if (seenFilters)
            *seenFilters = d->nameFilters();
        d->selectFile(path);
        static_cast<QDialog *>(d)->accept();
    });
}

} // namespace

class TestDialogSettingsIO : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void rowLayout_data();
    void rowLayout();
    void startsWithFirstPreset();
    void namedPresets();
    void startRestoresLastUsed_data();
    void startRestoresLastUsed();
    void changedControlLeavesEntry();
    void saveToDatabase();
    void renameAndRemove();
    void selectingDatabaseEntryLoads();
    void filesRoundTrip();
    void fileOfAnotherDialogKeepsValues();
    void unusableDatabaseMessages();

private:
    std::unique_ptr<TintDialog> tintDialog(const QString &connection = QString());
    DialogSettingsIO *row(QDialog *d) const { return d->findChild<DialogSettingsIO *>(); }
    QToolButton *button(QDialog *d, const char *name) const { return d->findChild<QToolButton *>(name); }
    int opacity(QDialog *d) const { return d->findChild<QCombinedSliderSpin *>("opacity")->value(); }

    std::unique_ptr<PresetDatabase> m_db;
    QTemporaryDir m_dir;
};

void TestDialogSettingsIO::init()
{
    QSettings().clear();
    QDir(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)).removeRecursively();
    m_db = std::make_unique<PresetDatabase>();
    QCOMPARE(m_db->open(), PresetDatabase::OpenResult::Ok);
}

void TestDialogSettingsIO::cleanup()
{
    m_db.reset();
}

std::unique_ptr<TintDialog> TestDialogSettingsIO::tintDialog(const QString &connection)
{
    auto d = std::make_unique<TintDialog>(somePalette(), std::set<int>{1, 2},
                                          connection.isNull() ? m_db->connectionName() : connection);
    d->start();
    return d;
}

void TestDialogSettingsIO::rowLayout_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("icon");
    QTest::newRow("save") << "saveDB"
                          << "Save to DB"
                          << ":res/images/db_save16x16.png";
    QTest::newRow("remove") << "removeDB"
                            << "Remove from DB"
                            << ":res/images/db_remove16x16.png";
    QTest::newRow("rename") << "renameDB"
                            << "Rename in DB"
                            << ":res/images/db_rename16x16.png";
    QTest::newRow("reload") << "reloadDB"
                            << "Reload DB"
                            << ":res/images/db_reload16x16.png";
    QTest::newRow("read") << "importFile"
                          << "Read from file"
                          << ":res/images/open16x16.png";
    QTest::newRow("write") << "exportFile"
                           << "Save to file"
                           << ":res/images/save16x16.png";
}

void TestDialogSettingsIO::rowLayout()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(QString, icon);
    auto d = tintDialog();
    DialogSettingsIO *io = row(d.get());
    QVERIFY(io);
    QCOMPARE(io->findChild<QLabel *>()->text(), QString("Stored settings:"));
    QToolButton *b = button(d.get(), name.toLatin1().constData());
    QVERIFY(b);
    QCOMPARE(b->text(), text);
    QCOMPARE(b->toolTip(), text);
    QVERIFY(QFile::exists(icon));
    QCOMPARE(b->icon().pixmap(16).toImage(), QIcon(icon).pixmap(16).toImage());
    QCOMPARE(io->findChildren<QToolButton *>().size(), 6);
}

void TestDialogSettingsIO::startsWithFirstPreset()
{
    auto d = tintDialog();
    QComboBox *box = row(d.get())->comboBox();
    QCOMPARE(entries(box), QStringList({"", "Predefined #1", "Predefined #2"}));
    QCOMPARE(box->currentIndex(), 1);
    QCOMPARE(d->findChild<SelectColorButton *>("color")->color(), QColor("#aa00ff"));
    QCOMPARE(opacity(d.get()), 40);
    QVERIFY(d->findChild<QCheckBox *>("sel_only")->isChecked());
    // Presets are not database entries: nothing there to remove or rename.
    QVERIFY(!button(d.get(), "removeDB")->isEnabled());
    QVERIFY(!button(d.get(), "renameDB")->isEnabled());
    box->setCurrentIndex(2);
    QCOMPARE(d->findChild<SelectColorButton *>("color")->color(), QColor("#008800"));
}

void TestDialogSettingsIO::namedPresets()
{
    PaletteTextEncoderDialog d(somePalette(), m_db->connectionName());
    d.start();
    QComboBox *box = d.settingsIO()->comboBox();
    QCOMPARE(entries(box),
             QStringList({"", "html table", "css #1", "css #2", "JavaScript #1", "JavaScript #2", "hex text",
                          "hext text compact", "json #1", "json #2"}));
    QCOMPARE(box->currentText(), QString("html table"));
    QCOMPARE(d.findChild<QLineEdit *>("header")->text(), QString("<table>\\n"));
    box->setCurrentIndex(8);
    QCOMPARE(d.findChild<QLineEdit *>("entry")->text(), QString("   [%r, %g, %b]"));
    QCOMPARE(d.findChild<QLineEdit *>("divider")->text(), QString(",\\n"));
}

void TestDialogSettingsIO::startRestoresLastUsed_data()
{
    QTest::addColumn<QVariant>("preset"); // an invalid variant: no preset key at all
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("opacity");
    QTest::newRow("preset kept") << QVariant("Predefined #2") << 2 << 40;
    QTest::newRow("unsaved state") << QVariant("") << 0 << 13;
    QTest::newRow("no preset key") << QVariant() << 0 << 13;
    QTest::newRow("entry gone") << QVariant("removed since") << 0 << 13;
}

void TestDialogSettingsIO::startRestoresLastUsed()
{
    QFETCH(QVariant, preset);
    QFETCH(int, index);
    QFETCH(int, opacity);
    QSettings s;
    s.setValue("dialog_tint_settings", "color:#123456\nopacity:13\nsel_only:0\n");
    s.setValue("dialog_tint_version", "2.0.0");
    if (preset.isValid())
        s.setValue("dialog_tint_preset", preset.toString());
    auto d = tintDialog();
    QCOMPARE(row(d.get())->comboBox()->currentIndex(), index);
    QCOMPARE(this->opacity(d.get()), opacity);
}

void TestDialogSettingsIO::changedControlLeavesEntry()
{
    auto d = tintDialog();
    QCOMPARE(row(d.get())->comboBox()->currentIndex(), 1);
    d->findChild<QCombinedSliderSpin *>("opacity")->slider()->setValue(70);
    // The controls no longer show the preset; what is kept on OK is the unsaved state.
    QCOMPARE(row(d.get())->comboBox()->currentIndex(), 0);
    d->accept();
    QCOMPARE(QSettings().value("dialog_tint_preset").toString(), QString());
    QCOMPARE(QSettings().value("dialog_tint_settings").toString(),
             QString("color:#aa00ff\nopacity:70\nsel_only:1\n"));
    QCOMPARE(QSettings().value("dialog_tint_version").toString(), QString("2.0.0"));

    // A preset chosen and left alone is kept by its name.
    auto again = tintDialog();
    QCOMPARE(opacity(again.get()), 70);
    row(again.get())->comboBox()->setCurrentIndex(2);
    again->accept();
    QCOMPARE(QSettings().value("dialog_tint_preset").toString(), QString("Predefined #2"));
}

void TestDialogSettingsIO::saveToDatabase()
{
    auto d = tintDialog();
    d->findChild<QCombinedSliderSpin *>("opacity")->setValue(55);
    const QString name = "it's 100% \\mine";
    QString title, label;
    answerNextInput(name, &title, &label);
    button(d.get(), "saveDB")->click();
    QCOMPARE(title, QString("Save settings to DB as..."));
    QCOMPARE(label, QString("Name:"));
    QComboBox *box = row(d.get())->comboBox();
    QCOMPARE(entries(box), QStringList({"", name, "Predefined #1", "Predefined #2"}));
    QCOMPARE(box->currentIndex(), 1);
    QVERIFY(button(d.get(), "removeDB")->isEnabled());
    QCOMPARE(SettingsStore(m_db->connectionName(), "tint").load(name).value_or(QString()),
             QString("tint 2.0.0\ncolor:#aa00ff\nopacity:55\nsel_only:1\n"));

    SeenBox box2;
    answerNextInput(name);
    answerNextBox(box2, QMessageBox::Ok);
    button(d.get(), "saveDB")->click();
    QVERIFY(box2.seen);
    QCOMPARE(box2.title, QString("Could not save"));
    QCOMPARE(box2.text, QString("Could not save %1 to database.\nName already exists.").arg(name));

    // Cancelling the question saves nothing.
    answerNextInput(QString());
    button(d.get(), "saveDB")->click();
    QCOMPARE(box->count(), 4);
}

void TestDialogSettingsIO::renameAndRemove()
{
    SettingsStore store(m_db->connectionName(), "tint");
    QCOMPARE(store.save("a", "opacity:11\n"), SettingsStore::Result::Ok);
    QCOMPARE(store.save("b", "opacity:22\n"), SettingsStore::Result::Ok);
    QSettings().setValue("dialog_tint_settings", "opacity:5\n");
    QSettings().setValue("dialog_tint_preset", "a");
    auto d = tintDialog();
    QComboBox *box = row(d.get())->comboBox();
    QCOMPARE(box->currentText(), QString("a"));
    QCOMPARE(opacity(d.get()), 11);

    SeenBox exists;
    QString title, label, suggested;
    answerNextInput("b", &title, &label, &suggested);
    answerNextBox(exists, QMessageBox::Ok);
    button(d.get(), "renameDB")->click();
    QCOMPARE(title, QString("Rename settings..."));
    QCOMPARE(label, QString("Name:"));
    QCOMPARE(suggested, QString("a"));
    QCOMPARE(exists.title, QString("Could not rename"));
    QCOMPARE(exists.text, QString("Unable to rename a.\nDestination name b already exists."));

    answerNextInput("c'%");
    button(d.get(), "renameDB")->click();
    QCOMPARE(entries(box).mid(0, 3), QStringList({"", "c'%", "b"}));
    QCOMPARE(box->currentText(), QString("c'%"));

    // Someone else removed the entry meanwhile.
    QCOMPARE(store.remove("c'%"), SettingsStore::Result::Ok);
    SeenBox missing;
    answerNextInput("d");
    answerNextBox(missing, QMessageBox::Ok);
    button(d.get(), "renameDB")->click();
    QCOMPARE(missing.title, QString("Could not rename"));
    QCOMPARE(missing.text, QString("Unable to rename c'%.\nThe entry was not found in the database."));

    box->setCurrentIndex(1); // "b"
    QCOMPARE(opacity(d.get()), 22);
    SeenBox question;
    answerNextBox(question, QMessageBox::No);
    button(d.get(), "removeDB")->click();
    QCOMPARE(question.title, QString("Remove from DB?"));
    QCOMPARE(question.text, QString("Shall the selected setting be really removed?"));
    QVERIFY(store.contains("b"));
    SeenBox yes;
    answerNextBox(yes, QMessageBox::Yes);
    button(d.get(), "removeDB")->click();
    QVERIFY(!store.contains("b"));
    QCOMPARE(entries(box), QStringList({"", "Predefined #1", "Predefined #2"}));
    QCOMPARE(box->currentIndex(), 0);
    QCOMPARE(opacity(d.get()), 22); // removing an entry keeps what the controls show
}

void TestDialogSettingsIO::selectingDatabaseEntryLoads()
{
    auto d = tintDialog();
    SettingsStore store(m_db->connectionName(), "tint");
    QCOMPARE(store.save("x'", "color:#010203\nopacity:77\n"), SettingsStore::Result::Ok);
    // Entries saved elsewhere show up after a reload; the chosen entry stays chosen.
    button(d.get(), "reloadDB")->click();
    QComboBox *box = row(d.get())->comboBox();
    QCOMPARE(entries(box), QStringList({"", "x'", "Predefined #1", "Predefined #2"}));
    QCOMPARE(box->currentText(), QString("Predefined #1"));
    QSignalSpy spy(row(d.get()), &DialogSettingsIO::presetIndexChanged);
    box->setCurrentIndex(1);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toInt(), 1);
    QCOMPARE(opacity(d.get()), 77);
    QCOMPARE(d->findChild<SelectColorButton *>("color")->color(), QColor("#010203"));
    // Keys a text leaves out keep their values.
    QVERIFY(d->findChild<QCheckBox *>("sel_only")->isChecked());
    box->setCurrentIndex(0);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(opacity(d.get()), 77);
}

void TestDialogSettingsIO::filesRoundTrip()
{
    auto d = tintDialog();
    const QString path = m_dir.filePath("tint-settings.txt");
    QString title;
    QStringList filters;
    answerNextFile(path, &title, &filters);
    button(d.get(), "exportFile")->click();
    QCOMPARE(title, QString("Save settings as"));
    QCOMPARE(filters, QStringList({"Settings (*.txt)"}));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("tint 2.0.0\ncolor:#aa00ff\nopacity:40\nsel_only:1\n"));
    QCOMPARE(QSettings().value("default_dir__").toString(), m_dir.path());

    d->findChild<QCombinedSliderSpin *>("opacity")->setValue(3);
    answerNextFile(path, &title);
    button(d.get(), "importFile")->click();
    QCOMPARE(title, QString("Open settings"));
    QCOMPARE(opacity(d.get()), 40);
    QCOMPARE(row(d.get())->comboBox()->currentIndex(), 0);
}

void TestDialogSettingsIO::fileOfAnotherDialogKeepsValues()
{
    auto d = tintDialog();
    const QString path = m_dir.filePath("blur-settings.txt");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("blur 2.0.0\nopacity:99\n");
    file.close();
    SeenBox seen;
    answerNextFile(path);
    answerNextBox(seen, QMessageBox::Ok);
    button(d.get(), "importFile")->click();
    QVERIFY(seen.seen);
    QCOMPARE(seen.title, QString("Invalid settings"));
    QVERIFY(seen.text.contains("blur"));
    QCOMPARE(opacity(d.get()), 40);
    QCOMPARE(row(d.get())->comboBox()->currentIndex(), 1);
}

void TestDialogSettingsIO::unusableDatabaseMessages()
{
    // As after a failed start: presets still work, database commands say they failed.
    auto d = tintDialog("never_opened");
    QCOMPARE(entries(row(d.get())->comboBox()), QStringList({"", "Predefined #1", "Predefined #2"}));
    QCOMPARE(opacity(d.get()), 40);
    SeenBox seen;
    answerNextInput("name");
    answerNextBox(seen, QMessageBox::Ok);
    button(d.get(), "saveDB")->click();
    QCOMPARE(seen.title, QString("Could not save"));
    QCOMPARE(seen.text, QString("Unable to save name to database."));
}

CHROMAXIS_GUI_TEST_MAIN(TestDialogSettingsIO)
#include "tst_dialogsettingsio.moc"
