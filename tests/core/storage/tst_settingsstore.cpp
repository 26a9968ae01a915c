// The dialog settings store against a real SQLite file in a test-mode documents folder: named
// entries, names that would break a statement built from text, last-used settings, presets and
// settings files.
#include "palette/describedexception.h"
#include "storage/presetdatabase.h"
#include "storage/settingsstore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

class TestSettingsStore : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void databaseInDocumentsFolder();
    void saveLoadRemove_data();
    void saveLoadRemove();
    void duplicateName();
    void renameRules();
    void removeOnlyTouchesItsRow();
    void reloadKeepsEntriesInOrder();
    void unusableDatabaseFails();
    void lastUsedKeys();
    void presets();
    void fileRoundTrip();
    void fileOfAnotherDialogRejected();
    void unwritableFile();

private:
    std::unique_ptr<PresetDatabase> m_db;
};

void TestSettingsStore::init()
{
    QSettings().clear();
    QDir(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)).removeRecursively();
    m_db = std::make_unique<PresetDatabase>();
    QCOMPARE(m_db->open(), PresetDatabase::OpenResult::Ok);
}

void TestSettingsStore::cleanup()
{
    m_db.reset();
}

void TestSettingsStore::databaseInDocumentsFolder()
{
    const QString docs = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    QVERIFY(docs.startsWith(qEnvironmentVariable("HOME")));
    QVERIFY(QFile::exists(docs + "/chromaxis.db"));
}

void TestSettingsStore::saveLoadRemove_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "warm";
    QTest::newRow("single quote") << "it's mine";
    QTest::newRow("quote pair") << "'';";
    QTest::newRow("percent") << "100% red";
    QTest::newRow("placeholders") << "%1 and %2";
    QTest::newRow("backslash") << "back\\slash\\";
    QTest::newRow("double quote") << "\"quoted\"";
    QTest::newRow("injection") << "x' OR '1'='1";
    QTest::newRow("statement") << "a'); DELETE FROM settings; --";
    QTest::newRow("like wildcards") << "_%";
}

void TestSettingsStore::saveLoadRemove()
{
    QFETCH(QString, name);
    SettingsStore tint(m_db->connectionName(), "tint");
    SettingsStore blur(m_db->connectionName(), "blur");
    // Neighbours that a badly quoted statement would reach.
    QCOMPARE(tint.save("other", "opacity:1\n"), SettingsStore::Result::Ok);
    QCOMPARE(blur.save(name, "value:3\n"), SettingsStore::Result::Ok);

    const QString lines = "color:#aa00ff\nopacity:40\nsel_only:1\nentry:.pal%i { a: b; }\n";
    QCOMPARE(tint.save(name, lines), SettingsStore::Result::Ok);
    QCOMPARE(tint.names(), QStringList({"other", name}));
    QVERIFY(tint.contains(name));
    QCOMPARE(tint.load(name).value_or(QString()), "tint 2.0.0\n" + lines);
    // The loaded text parses back into the pairs that were saved.
    const SettingsText::Pairs pairs = tint.parse(*tint.load(name));
    QCOMPARE(SettingsText::value(pairs, "entry"), QString(".pal%i { a: b; }"));

    QCOMPARE(tint.rename(name, name + "'2"), SettingsStore::Result::Ok);
    QCOMPARE(tint.names(), QStringList({"other", name + "'2"}));
    QCOMPARE(tint.remove(name), SettingsStore::Result::NotFound);
    QCOMPARE(tint.remove(name + "'2"), SettingsStore::Result::Ok);
    QCOMPARE(tint.names(), QStringList({"other"}));
    QVERIFY(!tint.load(name + "'2"));
    QCOMPARE(tint.load("other").value_or(QString()), QString("tint 2.0.0\nopacity:1\n"));
    QCOMPARE(blur.names(), QStringList({name}));
    QCOMPARE(blur.load(name).value_or(QString()), QString("blur 2.0.0\nvalue:3\n"));
}

void TestSettingsStore::duplicateName()
{
    SettingsStore tint(m_db->connectionName(), "tint");
    QCOMPARE(tint.save("Sunset", "opacity:40\n"), SettingsStore::Result::Ok);
    QCOMPARE(tint.save("Sunset", "opacity:90\n"), SettingsStore::Result::Exists);
    QCOMPARE(tint.names(), QStringList({"Sunset"}));
    QCOMPARE(tint.load("Sunset").value_or(QString()), QString("tint 2.0.0\nopacity:40\n"));
    // Names are per dialog: another dialog may use the same one.
    SettingsStore blur(m_db->connectionName(), "blur");
    QCOMPARE(blur.save("Sunset", "value:2\n"), SettingsStore::Result::Ok);
    // Names compare exactly.
    QCOMPARE(tint.save("sunset", "opacity:1\n"), SettingsStore::Result::Ok);
    QCOMPARE(tint.names(), QStringList({"Sunset", "sunset"}));
}

void TestSettingsStore::renameRules()
{
    SettingsStore tint(m_db->connectionName(), "tint");
    QCOMPARE(tint.save("a", "opacity:1\n"), SettingsStore::Result::Ok);
    QCOMPARE(tint.save("b", "opacity:2\n"), SettingsStore::Result::Ok);
    QCOMPARE(tint.rename("a", "b"), SettingsStore::Result::Exists);
    QCOMPARE(tint.load("a").value_or(QString()), QString("tint 2.0.0\nopacity:1\n"));
    QCOMPARE(tint.load("b").value_or(QString()), QString("tint 2.0.0\nopacity:2\n"));
    QCOMPARE(tint.rename("missing", "c"), SettingsStore::Result::NotFound);
    QCOMPARE(tint.rename("a", "c'd"), SettingsStore::Result::Ok);
    QCOMPARE(tint.names(), QStringList({"c'd", "b"}));
    QCOMPARE(tint.load("c'd").value_or(QString()), QString("tint 2.0.0\nopacity:1\n"));
    // A rename stays within its dialog.
    SettingsStore blur(m_db->connectionName(), "blur");
    QCOMPARE(blur.save("b", "value:1\n"), SettingsStore::Result::Ok);
    QCOMPARE(tint.rename("b", "e"), SettingsStore::Result::Ok);
    QCOMPARE(blur.names(), QStringList({"b"}));
}

void TestSettingsStore::removeOnlyTouchesItsRow()
{
    SettingsStore tint(m_db->connectionName(), "tint");
    SettingsStore blur(m_db->connectionName(), "blur");
    QCOMPARE(tint.save("keep", "opacity:1\n"), SettingsStore::Result::Ok);
    QCOMPARE(tint.save("drop", "opacity:2\n"), SettingsStore::Result::Ok);
    QCOMPARE(blur.save("drop", "value:1\n"), SettingsStore::Result::Ok);
    QCOMPARE(tint.remove("keep' OR name='drop"), SettingsStore::Result::NotFound);
    QCOMPARE(tint.remove("drop"), SettingsStore::Result::Ok);
    QCOMPARE(tint.names(), QStringList({"keep"}));
    QCOMPARE(blur.names(), QStringList({"drop"}));
    QCOMPARE(tint.remove("drop"), SettingsStore::Result::NotFound);
}

void TestSettingsStore::reloadKeepsEntriesInOrder()
{
    {
        SettingsStore tint(m_db->connectionName(), "tint");
        for (const char *name : {"first", "sec'ond", "third"})
            QCOMPARE(tint.save(name, QString("name:%1\n").arg(name)), SettingsStore::Result::Ok);
    }
    m_db.reset();
    m_db = std::make_unique<PresetDatabase>();
    QCOMPARE(m_db->open(), PresetDatabase::OpenResult::Ok);
    SettingsStore tint(m_db->connectionName(), "tint");
    QCOMPARE(tint.names(), QStringList({"first", "sec'ond", "third"}));
    QCOMPARE(tint.load("sec'ond").value_or(QString()), QString("tint 2.0.0\nname:sec'ond\n"));
}

void TestSettingsStore::unusableDatabaseFails()
{
    // A connection that was never opened, as after a failed start: commands fail, nothing crashes.
    SettingsStore tint("no_such_connection", "tint");
    QVERIFY(tint.names().isEmpty());
    QVERIFY(!tint.load("x"));
    QCOMPARE(tint.save("x", "opacity:1\n"), SettingsStore::Result::Failed);
    QCOMPARE(tint.remove("x"), SettingsStore::Result::Failed);
    QCOMPARE(tint.rename("x", "y"), SettingsStore::Result::Failed);
    // Last-used settings and presets do not need the database.
    tint.setLastUsed("opacity:3\n", QString());
    QVERIFY(tint.lastUsed());
}

void TestSettingsStore::lastUsedKeys()
{
    SettingsStore tint(m_db->connectionName(), "tint");
    QVERIFY(!tint.lastUsed());
    tint.setLastUsed("color:#008800\nopacity:40\n", "Predefined #2");
    QSettings s;
    QCOMPARE(s.value("dialog_tint_settings").toString(), QString("color:#008800\nopacity:40\n"));
    QCOMPARE(s.value("dialog_tint_version").toString(), QString("2.0.0"));
    QCOMPARE(s.value("dialog_tint_preset").toString(), QString("Predefined #2"));
    const auto last = tint.lastUsed();
    QVERIFY(last);
    QCOMPARE(last->lines, QString("color:#008800\nopacity:40\n"));
    QCOMPARE(last->version, QString("2.0.0"));
    QCOMPARE(last->preset.value_or(QString()), QString("Predefined #2"));
    // Settings without a preset key: the stored lines alone.
    s.remove("dialog_tint_preset");
    QVERIFY(!tint.lastUsed()->preset);
    QVERIFY(!SettingsStore(m_db->connectionName(), "blur").lastUsed());
}

void TestSettingsStore::presets()
{
    QCOMPARE(SettingsStore::presetCount("palette_textencode"), 9);
    QCOMPARE(SettingsStore::presetCount("no_such_dialog"), 0);
    const QString first = SettingsStore::presetText("palette_textencode", 1);
    QVERIFY(first.startsWith("palette_textencode 2.0.0\n"));
    SettingsStore encoder(m_db->connectionName(), "palette_textencode");
    QCOMPARE(SettingsText::value(encoder.parse(first), "bottom"), QString("</table>"));
    QVERIFY_EXCEPTION_THROWN(SettingsStore::presetText("palette_textencode", 10), DescribedException);
    QCOMPARE(SettingsStore::presetName({"html table", ""}, 1), QString("html table"));
    QCOMPARE(SettingsStore::presetName({"html table", ""}, 2), QString("Predefined #2"));
    QCOMPARE(SettingsStore::presetName({}, 11), QString("Predefined #11"));
}

void TestSettingsStore::fileRoundTrip()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("warm.txt");
    SettingsStore tint(m_db->connectionName(), "tint");
    tint.writeFile(path, "color:#aa00ff\nentry:.pal%i { background-color: rgb(%r, %g, %b); }\n");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(),
             QByteArray("tint 2.0.0\ncolor:#aa00ff\nentry:.pal%i { background-color: rgb(%r, %g, %b); }\n"));
    const SettingsText::Pairs pairs = tint.readFile(path);
    QCOMPARE(SettingsText::value(pairs, "color"), QString("#aa00ff"));
    QCOMPARE(SettingsText::value(pairs, "entry"), QString(".pal%i { background-color: rgb(%r, %g, %b); }"));

    // Files from other systems end their lines with "\r\n".
    QFile crlf(dir.filePath("crlf.txt"));
    QVERIFY(crlf.open(QIODevice::WriteOnly));
    crlf.write("tint 2.0.0\r\nopacity:40\r\nsel_only:1\r\n");
    crlf.close();
    const SettingsText::Pairs read = tint.readFile(crlf.fileName());
    QCOMPARE(SettingsText::value(read, "opacity"), QString("40"));
    QCOMPARE(SettingsText::value(read, "sel_only"), QString("1"));
}

void TestSettingsStore::fileOfAnotherDialogRejected()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("blur.txt");
    SettingsStore blur(m_db->connectionName(), "blur");
    blur.writeFile(path, "value:4\n");
    SettingsStore tint(m_db->connectionName(), "tint");
    try {
        tint.readFile(path);
        QFAIL("settings of another dialog were accepted");
    } catch (const DescribedException &e) {
        QCOMPARE(e.title(), QString("Invalid settings"));
        QVERIFY(e.message().contains("blur"));
    }
    // A name that only starts like the dialog's is another dialog's as well.
    QVERIFY_EXCEPTION_THROWN(tint.parse("tintx 2.0.0\nopacity:4\n"), DescribedException);
    QVERIFY_EXCEPTION_THROWN(tint.parse(""), DescribedException);
    QCOMPARE(blur.readFile(path).size(), size_t(2)); // the version remainder and the value
}

void TestSettingsStore::unwritableFile()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("missing/folder/x.txt");
    SettingsStore tint(m_db->connectionName(), "tint");
    try {
        tint.writeFile(path, "opacity:1\n");
        QFAIL("writing into a missing folder succeeded");
    } catch (const DescribedException &e) {
        QCOMPARE(e.message(), QString("Cannot save %1.\nNo such file or directory").arg(path));
    }
    QVERIFY(!QFile::exists(path));
    QVERIFY_EXCEPTION_THROWN(tint.readFile(path), DescribedException);
}

// Settings and the documents folder live in a temporary home for the whole run.
int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName("KLO");
    QCoreApplication::setApplicationName("ChromaxisSettingsStoreTest");
    TestSettingsStore t;
    return QTest::qExec(&t, argc, argv);
}

#include "tst_settingsstore.moc"
