#include "core/registry.h"
#include "domain/decimal.h"
#include "domain/printscript.h"
#include "logcapture.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"
#include "util/ecmascriptengine.h"
#include "util/scriptloader.h"

#include <QStandardPaths>
#include <QtTest>
#include <array>
#include <memory>

// An engine with a few native functions that hand their arguments to the
// test and give back what the test prepared.
class TestEngine : public ECMAScriptEngine
{
    Q_OBJECT
public:
    QString stringValue;
    int intValue = 0;
    bool intOk = false;
    double doubleValue = 0;
    bool doubleOk = false;
    bool boolValue = false;
    QDate dateValue;
    QVariant pushed;
    int calls = 0;
    int property = 0;
    QString result;

    void initialize() override
    {
        ECMAScriptEngine::initialize();
        duk_push_global_object(context());
        registerFunc("capture", this, "envCapture()");
        registerFunc("push", this, "envPush()");
        registerFunc("needOne", this, "envNeedOne()");
        registerFunc("needThree", this, "envNeedThree()");
        registerFunc("report", this, "envReport()");
        registerProperty("counter", this, "envCounter()", "envSetCounter()");
        registerProperty("readOnly", this, "envCounter()", nullptr);
        duk_pop(context());
    }

public slots:
    int envCapture()
    {
        stringValue = stringArg(0);
        intValue = intArg(0, intOk);
        doubleValue = doubleArg(0, doubleOk);
        boolValue = boolArg(0);
        dateValue = dateArg(0);
        return 0;
    }
    int envPush()
    {
        pushVariant(pushed);
        return 1;
    }
    int envNeedOne()
    {
        if (checkArgCount(1) < 0)
            return 0;
        ++calls;
        return 0;
    }
    int envNeedThree()
    {
        if (checkArgCount(3) < 0)
            return 0;
        ++calls;
        return 0;
    }
    int envReport()
    {
        result = stringArg(0);
        return 0;
    }
    int envCounter()
    {
        duk_push_int(context(), property);
        return 1;
    }
    int envSetCounter()
    {
        bool ok = false;
        property = intArg(0, ok);
        return 0;
    }
};

// The script host: argument readers and conversions, errors with their
// lines, what scripts can reach, and require() of stored scripts through
// the script loader.
class TestECMAScriptEngine : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void errorsCarryLineNumbers_data();
    void errorsCarryLineNumbers();
    void argumentReaders_data();
    void argumentReaders();
    void pushVariant_data();
    void pushVariant();
    void checkArgCount_data();
    void checkArgCount();
    void accessorProperties();
    void initializeForgetsEverything();
    void errorsAreLogged();
    void noWayOut();
    void scriptLoader_data();
    void scriptLoader();
    void require_data();
    void require();
    void requireCachesModules();
    void requireFailureCanBeRetried();
    void evaluateScript();

private:
    TestDatabase m_database { TestDatabase::SQLite };
    Registry m_registry;
    ScriptLoader m_loader { &m_registry };
    QMap<QString, int> m_ids; // by name
};

void TestECMAScriptEngine::errorsCarryLineNumbers_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("line");
    QTest::addRow("syntax error") << "var a = 1;\nvar b = 2;\nvar c = ;\n"
                                  << "SyntaxError" << 3;
    QTest::addRow("reference error") << "var a = 1;\n\n\n\nmissing();\n"
                                     << "ReferenceError: identifier 'missing' undefined" << 5;
    QTest::addRow("thrown error") << "function f() {\n  throw new Error('rikki');\n}\nf();\n"
                                  << "Error: rikki" << 2;
    QTest::addRow("native argument check") << "var x = 1;\nneedThree(1, 2);\n"
                                           << "TypeError: vähintään 3 parametria" << 2;
}

void TestECMAScriptEngine::errorsCarryLineNumbers()
{
    QFETCH(QString, source);
    QFETCH(QString, message);
    QFETCH(int, line);
    TestEngine engine;
    QVERIFY(!engine.evaluate(source.toUtf8()));
    QVERIFY(!engine.isEvaluated());
    const QString error = engine.lastError();
    QVERIFY2(error.startsWith(message), qPrintable(error));
    QVERIFY2(error.contains(QStringLiteral(":%1").arg(line)), qPrintable(error));
}

void TestECMAScriptEngine::argumentReaders_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("read"); // string|int|double|bool|date, "null" and "-" for none
    const QList<std::array<const char*, 3>> rows {
        // Six significant digits, in exponent form when needed.
        { "large number", "1234567", "1.23457e+06|1234567|1234567|false|" },
        { "negative fraction", "-2.75", "-2.75|-2|-2.75|false|" },
        // ToInt32 wraps modulo 2^32.
        { "beyond 32 bits", "4294967297", "4.29497e+09|1|4294967297|false|" },
        { "utf-8 text", "'Hämeenkatu €'", "Hämeenkatu €|-|-|false|" },
        { "number as text", "'42'", "42|-|-|false|" },
        { "iso date", "'2025-03-15'", "2025-03-15|-|-|false|2025-03-15" },
        { "finnish date", "'15.3.2025'", "15.3.2025|-|-|false|" },
        { "true", "true", "null|-|-|true|" },
        { "missing", "", "null|-|-|false|" },
        { "object", "{ a: 1 }", "null|-|-|false|" },
        { "date object", "new Date(2025, 2, 15)", "null|-|-|false|" },
    };
    for (const auto& row : rows)
        QTest::newRow(row[0]) << QString::fromUtf8(row[1]) << QString::fromUtf8(row[2]);
}

void TestECMAScriptEngine::argumentReaders()
{
    QFETCH(QString, argument);
    QFETCH(QString, read);
    TestEngine engine;
    QVERIFY2(engine.evaluate(QStringLiteral("capture(%1);").arg(argument).toUtf8()),
        qPrintable(engine.lastError()));
    QCOMPARE(engine.doubleOk, engine.intOk);
    const QStringList seen { engine.stringValue.isNull() ? "null" : engine.stringValue,
        engine.intOk ? QString::number(engine.intValue) : "-",
        engine.doubleOk ? QString::number(engine.doubleValue, 'g', 12) : "-",
        engine.boolValue ? "true" : "false", engine.dateValue.toString(Qt::ISODate) };
    QCOMPARE(seen.join(QLatin1Char('|')), read);
}

void TestECMAScriptEngine::pushVariant_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("seen");

    QTest::addRow("string") << QVariant(QStringLiteral("Jyväskylä")) << "string:Jyväskylä";
    QTest::addRow("bool") << QVariant(true) << "boolean:true";
    QTest::addRow("int") << QVariant(-42) << "number:-42";
    QTest::addRow("long long") << QVariant(qlonglong(2147483647)) << "number:2147483647";
    // Pushed through 32 bits: 3000000000 - 2^32.
    QTest::addRow("long long beyond 32 bits")
        << QVariant(qlonglong(3000000000LL)) << "number:-1294967296";
    QTest::addRow("double") << QVariant(12.5) << "number:12.5";
    QTest::addRow("date") << QVariant(QDate(2025, 3, 1)) << "string:2025-03-01";
    QTest::addRow("date time") << QVariant(QDateTime(QDate(2025, 3, 1), QTime(8, 5, 30)))
                               << "string:2025-03-01T08:05:30";
    QTest::addRow("decimal") << Decimal(139804, 2).toVariant() << "number:139804";
    // 5000000000 - 2^32.
    QTest::addRow("decimal beyond 32 bits")
        << Decimal(5000000000LL, 4).toVariant() << "number:705032704";
    QTest::addRow("invalid") << QVariant() << "undefined:undefined";
    QTest::addRow("other type") << QVariant(QStringList { "a" }) << "undefined:undefined";
}

void TestECMAScriptEngine::pushVariant()
{
    QFETCH(QVariant, value);
    QFETCH(QString, seen);
    TestEngine engine;
    engine.pushed = value;
    QVERIFY2(engine.evaluate("var v = push(); report(typeof v + ':' + String(v));"),
        qPrintable(engine.lastError()));
    QCOMPARE(engine.result, seen);
}

void TestECMAScriptEngine::checkArgCount_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("error");
    QTest::addColumn<int>("calls");
    QTest::addRow("one missing") << "needOne()"
                                 << "TypeError: vähintään 1 parametri" << 0;
    QTest::addRow("one given") << "needOne('x')"
                               << "" << 1;
    QTest::addRow("two of three") << "needThree(1, 2)"
                                  << "TypeError: vähintään 3 parametria" << 0;
    QTest::addRow("three given") << "needThree(1, 2, 3)"
                                 << "" << 1;
}

void TestECMAScriptEngine::checkArgCount()
{
    QFETCH(QString, call);
    QFETCH(QString, error);
    QFETCH(int, calls);
    TestEngine engine;
    const bool ok = engine.evaluate(call.toUtf8());
    QCOMPARE(ok, error.isEmpty());
    QCOMPARE(engine.calls, calls);
    if (!ok)
        QVERIFY2(engine.lastError().startsWith(error), qPrintable(engine.lastError()));

    // The script can catch the error and go on.
    TestEngine catching;
    QVERIFY(catching.evaluate(
        QStringLiteral("try { %1; report('ok'); } catch (e) { report(e.name + ': ' + e.message); }")
            .arg(call)
            .toUtf8()));
    QCOMPARE(catching.result, error.isEmpty() ? QStringLiteral("ok") : error);
}

void TestECMAScriptEngine::accessorProperties()
{
    TestEngine engine;
    QVERIFY2(engine.evaluate("counter = 41; counter = counter + 1; report(String(readOnly));"),
        qPrintable(engine.lastError()));
    QCOMPARE(engine.property, 42);
    QCOMPARE(engine.result, QStringLiteral("42"));
    // Without a setter the property cannot be assigned (non-strict code ignores it).
    QVERIFY(engine.evaluate("readOnly = 7; report(String(readOnly));"));
    QCOMPARE(engine.result, QStringLiteral("42"));
}

void TestECMAScriptEngine::initializeForgetsEverything()
{
    TestEngine engine;
    QVERIFY(engine.evaluate("var kept = 'first'; function f() { return 1; }"));
    QVERIFY(engine.isEvaluated());
    // A second script adds to the globals of the first.
    QVERIFY(engine.evaluate("report(kept + typeof f);"));
    QCOMPARE(engine.result, QStringLiteral("firstfunction"));
    engine.initialize();
    QVERIFY(!engine.isEvaluated());
    QVERIFY(engine.evaluate("report(typeof kept + typeof f + typeof capture);"));
    QCOMPARE(engine.result, QStringLiteral("undefinedundefinedfunction"));
    engine.clear();
    QVERIFY(!engine.context());
    QVERIFY(!engine.isEvaluated());
}

void TestECMAScriptEngine::errorsAreLogged()
{
    LogCapture log("veklari.script");
    TestEngine engine;
    QVERIFY(!engine.evaluate("throw 'pelkkä teksti';"));
    // A thrown non-error value is reported as text.
    QCOMPARE(engine.lastError(), QStringLiteral("pelkkä teksti"));
    QVERIFY(log.contains(QStringLiteral("warning: pelkkä teksti")));
}

// Scripts get nothing beyond their interface: no file, network or process
// access, and the engine's pointer stays hidden.
void TestECMAScriptEngine::noWayOut()
{
    TestEngine engine;
    QVERIFY(engine.evaluate(
        "var names = ['print', 'alert', 'readFile', 'XMLHttpRequest', 'fetch', 'process', 'load',"
        " 'console', 'require', 'ptr'];"
        "report(names.map(function (n) { return typeof this[n]; }, this).join() + ',' +"
        " typeof Duktape.modSearch + ',' + Object.getOwnPropertyNames(this).indexOf('ptr'));"));
    QCOMPARE(engine.result,
        QStringLiteral("undefined,undefined,undefined,undefined,undefined,undefined,undefined,"
                       "undefined,function,undefined,function,-1"));
}

// Stored scripts, listed by type and name: the Finvoice "apu" before the
// invoice one.
void TestECMAScriptEngine::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    Decimal::registerMetaType();
    QVERIFY2(m_database.open(), qPrintable(m_database.lastError()));
    m_registry.setDatabase(m_database.database());
    std::unique_ptr<Query> query(m_database.database()->query());
    const QList<std::array<const char*, 3>> scripts {
        { "apu", "finvoice", "exports.kaksi = function (x) { return 2 * x; };" },
        { "apu", "invoice", "exports.kaksi = function () { return 'väärä'; };" },
        { "Apu", "invoice", "exports.kaksi = function () { return 'iso alkukirjain'; };" },
        { "laskuri", "invoice", "counter = counter + 1;\nexports.runs = counter;" },
        { "ajo", "invoice", "report('ajettu ' + require('apu').kaksi(2));" },
        { "lib/a", "invoice", "var b = require('./b');\nexports.name = 'a+' + b.name;" },
        { "lib/b", "invoice", "exports.name = 'b+' + require('../apu').kaksi(21);" },
        { "rikki", "invoice", "var x = 1;\n\nthrow new Error('moduuli rikki');" },
        { "korvaava", "invoice", "module.exports = function () { return 'kokonaan uusi'; };" },
        { "tyhjä", "invoice", "" },
        { "Ääkköset", "invoice", "var s = 'Hämeenkatu €';" },
    };
    for (const auto& data : scripts) {
        PrintScript script;
        script.name = QString::fromUtf8(data[0]);
        script.type = QString::fromUtf8(data[1]);
        script.sourceCode = QString::fromUtf8(data[2]);
        QVERIFY2(query->savePrintScript(&script), qPrintable(query->lastError()));
        m_ids.insert(script.name, script.id);
    }
    QVERIFY(m_registry.fetchPrintScripts(query.get()));
}

void TestECMAScriptEngine::cleanupTestCase()
{
    m_registry.setDatabase(nullptr);
}

void TestECMAScriptEngine::scriptLoader_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("argument");
    QTest::addColumn<bool>("found");
    QTest::addColumn<QString>("source"); // a part of it
    QTest::addRow("by id") << "id"
                           << "Ääkköset" << true << "Hämeenkatu €";
    QTest::addRow("empty source is not missing") << "id"
                                                 << "tyhjä" << true << "";
    QTest::addRow("unknown id") << "id"
                                << "9999" << false << "";
    QTest::addRow("negative id") << "id"
                                 << "-5" << false << "";
    QTest::addRow("first in list order") << "name"
                                         << "apu" << true << "2 * x";
    QTest::addRow("names are case-sensitive") << "name"
                                              << "APU" << false << "";
    QTest::addRow("built-in is not stored") << "name"
                                            << "invoice" << false << "";
    QTest::addRow("no database") << "no database"
                                 << "apu" << false << "";
    QTest::addRow("resource") << "resource"
                              << "invoice" << true << "function print()";
    QTest::addRow("unknown resource") << "resource"
                                      << "ei-ole" << false << "";
    QTest::addRow("path tricks stay in the resources") << "resource"
                                                       << "../sql/sqlite" << false << "";
}

void TestECMAScriptEngine::scriptLoader()
{
    QFETCH(QString, kind);
    QFETCH(QString, argument);
    QFETCH(bool, found);
    QFETCH(QString, source);
    Registry empty;
    const ScriptLoader loader(kind == QLatin1String("no database") ? &empty : &m_registry);
    QByteArray loaded;
    if (kind == QLatin1String("id"))
        loaded = loader.loadScriptById(m_ids.value(argument, argument.toInt()));
    else if (kind == QLatin1String("resource"))
        loaded = loader.loadResource(argument);
    else
        loaded = loader.loadScriptByName(argument);
    QCOMPARE(!loaded.isNull(), found);
    QVERIFY(QString::fromUtf8(loaded).contains(source));
}

void TestECMAScriptEngine::require_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("result");
    QTest::addColumn<QString>("error");
    QTest::addRow("stored module") << "report(String(require('apu').kaksi(21)));"
                                   << "42"
                                   << "";
    QTest::addRow("names are case-sensitive") << "report(require('Apu').kaksi());"
                                              << "iso alkukirjain"
                                              << "";
    QTest::addRow("relative ids") << "report(require('lib/a').name);"
                                  << "a+b+42"
                                  << "";
    QTest::addRow("module.exports replaced") << "report(require('korvaava')());"
                                             << "kokonaan uusi"
                                             << "";
    QTest::addRow("missing module") << "require('puuttuva');"
                                    << ""
                                    << "TypeError: skriptiä puuttuva ei löytynyt";
    // The built-in layouts are resources, not stored scripts.
    QTest::addRow("built-in resource only") << "require('invoice');"
                                            << ""
                                            << "TypeError: skriptiä invoice ei löytynyt";
    QTest::addRow("relative id above the top") << "require('../apu');"
                                               << ""
                                               << "TypeError: cannot resolve module id";
    QTest::addRow("module throws") << "var m = require('rikki');"
                                   << ""
                                   << "Error: moduuli rikki";
}

void TestECMAScriptEngine::require()
{
    QFETCH(QString, source);
    QFETCH(QString, result);
    QFETCH(QString, error);
    TestEngine engine;
    engine.setScriptLoader(&m_loader);
    const bool ok = engine.evaluate(source.toUtf8());
    QCOMPARE(ok, error.isEmpty());
    if (ok)
        QCOMPARE(engine.result, result);
    else
        QVERIFY2(engine.lastError().startsWith(error), qPrintable(engine.lastError()));
    if (QTest::currentDataTag() == QLatin1String("module throws")) {
        // The stack names the module and the line of the throw.
        QVERIFY2(
            engine.lastError().contains(QStringLiteral("rikki:3")), qPrintable(engine.lastError()));
    }
}

void TestECMAScriptEngine::requireCachesModules()
{
    TestEngine engine;
    engine.setScriptLoader(&m_loader);
    QVERIFY2(engine.evaluate("var first = require('laskuri'); var second = require('laskuri');"
                             "report(String(first === second) + ','"
                             " + Object.keys(Duktape.modLoaded).join(','));"),
        qPrintable(engine.lastError()));
    QCOMPARE(engine.result, QStringLiteral("true,laskuri"));
    // The module body ran once.
    QCOMPARE(engine.property, 1);
}

void TestECMAScriptEngine::requireFailureCanBeRetried()
{
    TestEngine engine;
    engine.setScriptLoader(&m_loader);
    QVERIFY(engine.evaluate("var tries = [];"
                            "for (var i = 0; i < 2; i++) {"
                            "  try { require('rikki'); } catch (e) { tries.push(e.message); }"
                            "}"
                            "report(tries.join('|') + '|' + ('rikki' in Duktape.modLoaded));"));
    QCOMPARE(engine.result, QStringLiteral("moduuli rikki|moduuli rikki|false"));
}

void TestECMAScriptEngine::evaluateScript()
{
    TestEngine engine;
    QVERIFY(!engine.evaluateScript(QStringLiteral("ajo")));
    engine.setScriptLoader(&m_loader);
    QVERIFY2(engine.evaluateScript(QStringLiteral("ajo")), qPrintable(engine.lastError()));
    QCOMPARE(engine.result, QStringLiteral("ajettu 4"));
    QVERIFY(!engine.evaluateScript(QStringLiteral("puuttuva")));
    QCOMPARE(engine.lastError(), QStringLiteral("skriptiä puuttuva ei löytynyt"));
}

QTEST_MAIN(TestECMAScriptEngine)
#include "tst_ecmascriptengine.moc"
