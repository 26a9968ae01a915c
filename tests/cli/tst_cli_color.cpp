#include <QtTest>

#include <cmath>

#include "clirunner.h"


class TestCliColor : public QObject
{
    Q_OBJECT
private slots:
    void prints_data();
    void prints();
    void badUsage_data();
    void badUsage();
    void perceptualSpaces_data();
    void perceptualSpaces();
};

void TestCliColor::prints_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("expected");
    QTest::newRow("rgb index") << QStringList{"color", "to-space", "0", "65535", "0", "32768", "65535"}
                               << "1 0 0.50000762951094835 1\n";
    QTest::newRow("unknown index behaves as rgb")
        << QStringList{"color", "to-space", "42", "65535", "0", "0", "0"} << "1 0 0 0\n";
    QTest::newRow("cmyk of black by name") << QStringList{"color", "to-space", "CMYK", "0", "0", "0", "65535"}
                                           << "0 0 0 1\n";
    QTest::newRow("cmy of white") << QStringList{"color", "to-space", "7", "65535", "65535", "65535", "65535"}
                                  << QString("%1 %1 %1 0\n").arg(QString::number(1.0 - 1.0 / 255.0, 'g', 17));
    QTest::newRow("hsva of opaque white") << QStringList{"color", "hsva", "65535", "65535", "65535", "65535"}
                                          << "0 0 1 1.5259021896696422e-05\n";
    QTest::newRow("hsva of red") << QStringList{"color", "hsva", "65535", "0", "0", "0"} << "0 1 1 0\n";
    QTest::newRow("rgb back truncates") << QStringList{"color", "from-space", "0", "0.5", "1", "0", "0.25"}
                                        << "32767 65535 0 65535\n";
    QTest::newRow("cmyk back") << QStringList{"color", "from-space", "8", "0", "0", "0", "1"}
                               << "0 0 0 65535\n";
}

void TestCliColor::prints()
{
    QFETCH(QStringList, args);
    QFETCH(QString, expected);
    const CliRun r = runCli(args);
    QCOMPARE(r.err, QString());
    QCOMPARE(r.code, 0);
    QCOMPARE(QString::fromUtf8(r.out), expected);
}

void TestCliColor::badUsage_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::newRow("nothing") << QStringList{};
    QTest::newRow("unknown command") << QStringList{"colour", "hsva"};
    QTest::newRow("too few") << QStringList{"color", "hsva", "1", "2", "3"};
    QTest::newRow("too many") << QStringList{"color", "to-space", "0", "1", "2", "3", "4", "5"};
    QTest::newRow("not a number") << QStringList{"color", "hsva", "1", "x", "3", "4"};
    QTest::newRow("negative component") << QStringList{"color", "hsva", "-1", "2", "3", "4"};
    QTest::newRow("unknown space name") << QStringList{"color", "to-space", "Lub", "1", "2", "3", "4"};
    QTest::newRow("from-space not a double") << QStringList{"color", "from-space", "3", "1", "nope", "3", "4"};
}

void TestCliColor::badUsage()
{
    QFETCH(QStringList, args);
    const CliRun r = runCli(args);
    QCOMPARE(r.code, 2);
    QVERIFY(r.out.isEmpty());
    QVERIFY2(r.err.contains("Usage: chromaxis-cli"), qPrintable(r.err));
}

void TestCliColor::perceptualSpaces_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("index");
    QTest::addColumn<QStringList>("colour");
    QTest::addColumn<QList<double>>("expected"); // the published values
    QTest::newRow("OKLab red") << "OKLab"
                               << "12" << QStringList{"65535", "0", "0", "65535"}
                               << QList<double>{0.6279553606, 0.2248630611, 0.1258462985, 0};
    QTest::newRow("OKLab blue") << "oklab"
                                << "12" << QStringList{"0", "0", "65535", "0"}
                                << QList<double>{0.4520137184, -0.0324569842, -0.3115281477, 0};
    QTest::newRow("OKLCH green") << "OKLCH"
                                 << "13" << QStringList{"0", "65535", "0", "65535"}
                                 << QList<double>{0.8664396115, 0.2948272403, 142.4953388878, 0};
    QTest::newRow("OKLCH white") << "OKLCH"
                                 << "13" << QStringList{"65535", "65535", "65535", "65535"}
                                 << QList<double>{1, 0, 0, 0};
}

void TestCliColor::perceptualSpaces()
{
    QFETCH(QString, name);
    QFETCH(QString, index);
    QFETCH(QStringList, colour);
    QFETCH(QList<double>, expected);
    const CliRun byName = runCli(QStringList{"color", "to-space", name} + colour);
    QCOMPARE(byName.err, QString());
    QCOMPARE(byName.code, 0);
    const CliRun byIndex = runCli(QStringList{"color", "to-space", index} + colour);
    QCOMPARE(byIndex.out, byName.out);
    const QStringList words = QString::fromUtf8(byName.out).trimmed().split(' ');
    QCOMPARE(words.size(), 4);
    for (int i = 0; i < 4; ++i)
        QVERIFY2(std::fabs(words[i].toDouble() - expected[i]) < 1e-4, byName.out.constData());
    // The printed digits are enough to come back to the colour (alpha made opaque).
    const CliRun back = runCli(QStringList{"color", "from-space", name} + words);
    QCOMPARE(back.code, 0);
    QCOMPARE(QString::fromUtf8(back.out),
             QStringList(colour.mid(0, 3) + QStringList{"65535"}).join(' ') + "\n");
}

QTEST_GUILESS_MAIN(TestCliColor)
#include "tst_cli_color.moc"
