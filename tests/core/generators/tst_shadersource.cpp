// The shaders' shared pieces are pasted in before compiling: every shader a generator can ask for
// resolves to one self-contained text, and a broken include says what is wrong instead of
// reaching the compiler.

#include "generators/generatorgl.h"
#include "generators/generatorsettings.h"
#include "generators/shadersource.h"

#include <QtTest>

class TestShaderSource : public QObject
{
    Q_OBJECT
private slots:
    void everyGeneratorsShaderResolves_data()
    {
        QTest::addColumn<QString>("resource");
        QSet<QString> seen;
        for (const QString &name : GeneratorSettings::names())
            for (int method = 0; method < 6; ++method)
                for (int precision : {0, 1}) {
                    GeneratorSettings s = GeneratorSettings::defaults(name);
                    s.method = method;
                    s.precision = precision;
                    const QString resource = GeneratorGL::fragmentShader(s);
                    if (!seen.contains(resource)) {
                        seen.insert(resource);
                        QTest::newRow(qPrintable(resource)) << resource;
                    }
                }
        QTest::newRow("plasma's alias") << QStringLiteral(":res/shader/julia_fshader.txt");
        QVERIFY(seen.size() >= 15);
    }
    void everyGeneratorsShaderResolves()
    {
        QFETCH(QString, resource);
        QString error;
        const QByteArray text = ShaderSource::load(resource, &error);
        QVERIFY2(!text.isEmpty(), qPrintable(error));
        QVERIFY(text.startsWith("#version "));
        QVERIFY(!text.contains("#include"));
        QCOMPARE(text.count("void main()"), 1);
        if (text.contains("escape-time loop shared"))
            QCOMPARE(text.count("for (i = 0; i < first; i++)"), 1);
    }

    void brokenIncludesSaySo_data()
    {
        QTest::addColumn<QString>("resource");
        QTest::addColumn<QString>("message");
        QTest::newRow("missing shader") << ":res/shader/none.glsl" << "The shader :res/shader/none.glsl does not exist.";
        QTest::newRow("missing include") << ":res/shader/test/includesabsent.glsl"
                                         << "The shader :res/shader/test/absent.glsl does not exist.";
        QTest::newRow("includes itself") << ":res/shader/test/selfinclude.glsl"
                                         << "The shader :res/shader/test/selfinclude.glsl includes itself.";
    }
    void brokenIncludesSaySo()
    {
        QFETCH(QString, resource);
        QFETCH(QString, message);
        QString error;
        QVERIFY(ShaderSource::load(resource, &error).isEmpty());
        QCOMPARE(error, message);
    }
};

QTEST_GUILESS_MAIN(TestShaderSource)
#include "tst_shadersource.moc"
