#include "util/ecmascriptengine.h"
#include "util/scriptloader.h"
#include "util/storedscriptsource.h"

#include <QtTest>
#include <array>
#include <memory>

// needThree() wants three arguments, report() hands a text to the test, "counter" is a property.
class TestEngine : public ECMAScriptEngine
{
    Q_OBJECT
public:
    int counter = 0;
    QString result;

    void initialize() override
    {
        ECMAScriptEngine::initialize();
        duk_push_global_object(context());
        registerFunc("needThree", this, "envNeedThree()");
        registerFunc("report", this, "envReport()");
        registerProperty("counter", this, "envCounter()", "envSetCounter()");
        duk_pop(context());
    }

public slots:
    int envNeedThree()
    {
        checkArgCount(3);
        return 0;
    }
    int envReport()
    {
        result = stringArg(0);
        return 0;
    }
    int envCounter()
    {
        duk_push_int(context(), counter);
        return 1;
    }
    int envSetCounter()
    {
        bool ok = false;
        counter = intArg(0, ok);
        return 0;
    }
};

// Stored scripts in list order; a script's id is its position + 1.
class ListScriptSource : public StoredScriptSource
{
public:
    QList<std::array<const char*, 2>> scripts; // name, source

    QByteArray storedScriptSource(int id) const override
    {
        return id >= 1 && id <= scripts.size() ? QByteArray(scripts.at(id - 1)[1]) : QByteArray();
    }
    int storedScriptId(const QString& name) const override
    {
        for (int i = 0; i < scripts.size(); ++i) {
            if (QString::fromUtf8(scripts.at(i)[0]) == name)
                return i + 1;
        }
        return -1;
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
    void scripts_data();
    void scripts();
    void scriptLoader();
    void limits_data();
    void limits();
    void globals();

private:
    ListScriptSource m_source;
    ScriptLoader m_loader { &m_source };
};

// Two modules named "apu": the first one in list order is found.
void TestECMAScriptEngine::initTestCase()
{
    m_source.scripts = {
        { "apu", "exports.kaksi = function (x) { return 2 * x; };" },
        { "apu", "exports.kaksi = function () { return 'väärä'; };" },
        { "laskuri", "counter = counter + 1;\nexports.runs = counter;" },
        { "ajo", "report('ajettu ' + require('apu').kaksi(2));" },
        { "lib/a", "var b = require('./b');\nexports.name = 'a+' + b.name;" },
        { "lib/b", "exports.name = 'b+' + require('../apu').kaksi(21);" },
        { "rikki", "var x = 1;\n\nthrow new Error('moduuli rikki');" },
        { "Ääkköset", "var s = 'Hämeenkatu €';" },
        { "ikuinen", "while (true) { }" },
    };
}

void TestECMAScriptEngine::scripts_data()
{
    QTest::addColumn<QString>("source");
    // "=text": what the script reported; "!start|part": the error's start
    // and a part of its stack (the line of the error).
    QTest::addColumn<QString>("outcome");
    const QList<std::array<const char*, 3>> rows {
        { "syntax error", "var a = 1;\nvar b = 2;\nvar c = ;\n", "!SyntaxError|:3" },
        { "too few arguments", "var x = 1;\nneedThree(1, 2);\n",
            "!TypeError: vähintään 3 parametria|:2" },
        { "accessor property", "counter = 41; counter = counter + 1; report(String(counter));",
            "=42" },
        // No file, network or process access; the engine's pointer stays hidden.
        { "no way out",
            "report(['print', 'alert', 'readFile', 'XMLHttpRequest', 'process', 'console', "
            "'require', 'ptr'].map(function (n) { return typeof this[n]; }, this).join() + ',' + "
            "typeof Duktape.modSearch + ',' + Object.getOwnPropertyNames(this).indexOf('ptr'));",
            "=undefined,undefined,undefined,undefined,undefined,undefined,function,undefined,"
            "function,-1" },
        // The first stored "apu" in list order.
        { "stored module", "report(String(require('apu').kaksi(21)));", "=42" },
        { "relative ids", "report(require('lib/a').name);", "=a+b+42" },
        { "missing module", "require('puuttuva');", "!TypeError: skriptiä puuttuva ei löytynyt|" },
        // The built-in layouts are resources, not stored scripts.
        { "built-in resource only", "require('invoice');",
            "!TypeError: skriptiä invoice ei löytynyt|" },
        { "module throws", "var m = require('rikki');", "!Error: moduuli rikki|rikki:3" },
        // The module's body runs once; a failed one is tried again.
        { "modules are cached",
            "var first = require('laskuri'); var second = require('laskuri');"
            "report([first === second, Object.keys(Duktape.modLoaded), counter].join());",
            "=true,laskuri,1" },
    };
    for (const auto& row : rows)
        QTest::newRow(row[0]) << QString::fromUtf8(row[1]) << QString::fromUtf8(row[2]);
}

void TestECMAScriptEngine::scripts()
{
    QFETCH(QString, source);
    QFETCH(QString, outcome);
    TestEngine engine;
    engine.setScriptLoader(&m_loader);
    const bool ok = engine.evaluate(source.toUtf8());
    QCOMPARE(engine.isEvaluated(), ok);
    if (outcome.startsWith(QLatin1Char('='))) {
        QVERIFY2(ok, qPrintable(engine.lastError()));
        QCOMPARE(engine.result, outcome.mid(1));
        return;
    }
    QVERIFY(!ok);
    const QStringList parts = outcome.mid(1).split(QLatin1Char('|'));
    QVERIFY2(engine.lastError().startsWith(parts.at(0)), qPrintable(engine.lastError()));
    QVERIFY2(engine.lastError().contains(parts.at(1)), qPrintable(engine.lastError()));
}

// Stored scripts by id and name, and the built-in ones from the resources.
void TestECMAScriptEngine::scriptLoader()
{
    QCOMPARE(m_loader.loadScriptByName(QStringLiteral("Ääkköset")),
        QByteArray("var s = 'Hämeenkatu €';"));
    QVERIFY(m_loader.loadScriptById(9999).isNull());
    QVERIFY(ScriptLoader(nullptr).loadScriptByName(QStringLiteral("apu")).isNull());
    QVERIFY(m_loader.loadResource(QStringLiteral("invoice")).contains("function print()"));
    QVERIFY(m_loader.loadResource(QStringLiteral("../sql/sqlite")).isNull());

    TestEngine engine;
    QVERIFY(!engine.evaluateScript(QStringLiteral("ajo")));
    engine.setScriptLoader(&m_loader);
    QVERIFY2(engine.evaluateScript(QStringLiteral("ajo")), qPrintable(engine.lastError()));
    QCOMPARE(engine.result, QStringLiteral("ajettu 4"));
    QVERIFY(!engine.evaluateScript(QStringLiteral("puuttuva")));
    QCOMPARE(engine.lastError(), QStringLiteral("skriptiä puuttuva ei löytynyt"));
}

namespace {
// Short limits, so that a runaway script is stopped soon.
constexpr int testTimeLimit = 200;
constexpr size_t testMemoryLimit = size_t(8) * 1024 * 1024;
} // namespace

// Runaway scripts are stopped with a sentence that names the limit, and the
// same engine then runs the next script.
void TestECMAScriptEngine::limits_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("error");
    const QString time = QStringLiteral("Skripti keskeytettiin, koska sen suoritus kesti yli");
    const QString memory
        = QStringLiteral("Skripti keskeytettiin, koska se varasi muistia yli 8 Mt.");
    const QString recursion
        = QStringLiteral("Skripti keskeytettiin, koska sen funktiokutsuja oli sisäkkäin");
    QTest::newRow("endless loop") << "var i = 0;\nwhile (true) { i++; }" << time;
    QTest::newRow("empty endless loop") << "for (;;) {}" << time;
    // Catching the timeout error does not keep the script running.
    QTest::newRow("loop catches the stop")
        << "for (;;) { try { for (;;) {} } catch (e) { report('kiinni'); } }" << time;
    QTest::newRow("loop in a module") << "require('ikuinen');" << time;
    QTest::newRow("unbounded recursion")
        << "function f(n) { return f(n + 1) + 1; }\nf(0);" << recursion;
    QTest::newRow("recursion through a native call")
        << "function f() { [1].forEach(f); }\nf();" << recursion;
    QTest::newRow("string doubling") << "var s = 'x';\nfor (;;) s = s + s;" << memory;
    QTest::newRow("array growth") << "var a = [];\nfor (;;) a.push({ n: a.length });" << memory;
}

void TestECMAScriptEngine::limits()
{
    QFETCH(QString, source);
    QFETCH(QString, error);
    TestEngine engine;
    engine.setScriptLoader(&m_loader);
    engine.setTimeLimit(testTimeLimit);
    engine.setMemoryLimit(testMemoryLimit);
    QVERIFY(!engine.evaluate(source.toUtf8()));
    QVERIFY2(engine.lastError().startsWith(error), qPrintable(engine.lastError()));
    QVERIFY(engine.result.isEmpty());

    // The heap is still usable, and the next run has its full time and memory.
    QVERIFY2(engine.evaluate("var t = new Array(10000).join('y'); report('seuraava ' + t.length);"),
        qPrintable(engine.lastError()));
    QCOMPARE(engine.result, QStringLiteral("seuraava 9999"));
    engine.initialize();
    QVERIFY2(engine.evaluate("report('uusi');"), qPrintable(engine.lastError()));
    QCOMPARE(engine.result, QStringLiteral("uusi"));
}

// Nothing beyond the language's own objects, the module loader and the
// engine's functions is reachable: no file, network or process access.
void TestECMAScriptEngine::globals()
{
    TestEngine engine;
    QVERIFY(engine.evaluate("report(Object.getOwnPropertyNames(this).sort().join(' '));"));
    QCOMPARE(engine.result,
        QStringLiteral(
            "Array ArrayBuffer Boolean Buffer CBOR DataView Date Duktape Error EvalError "
            "Float32Array Float64Array Function Infinity Int16Array Int32Array Int8Array JSON "
            "Math NaN Number Object Proxy RangeError ReferenceError Reflect RegExp String Symbol "
            "SyntaxError TextDecoder TextEncoder TypeError URIError Uint16Array Uint32Array "
            "Uint8Array Uint8ClampedArray counter decodeURI decodeURIComponent encodeURI "
            "encodeURIComponent escape eval globalThis isFinite isNaN needThree parseFloat "
            "parseInt performance report require undefined unescape"));
    QVERIFY(engine.evaluate("report(Object.getOwnPropertyNames(Duktape).sort().join(' '));"));
    QCOMPARE(engine.result,
        QStringLiteral("Pointer Thread act compact dec enc env fin gc "
                       "info modLoaded modSearch version"));
}

QTEST_MAIN(TestECMAScriptEngine)
#include "tst_ecmascriptengine.moc"
