#include "core/registry.h"
#include "invoicefixture.h"
#include "print/scripthelper.h"
#include "util/ecmascriptengine.h"

#include <QStandardPaths>
#include <QtTest>

// Which script a job runs: the invoice layout from the company setting,
// the first stored Finvoice script, the built-in list reports.
class TestScriptHelper : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void invoiceScript_data();
    void invoiceScript();
    void invoiceScriptById_data();
    void invoiceScriptById();
    void finvoiceScript();

private:
    static QString marker(ECMAScriptEngine& engine);

    InvoiceFixture m_fixture;
    int m_storedId = -1;
};

// The stored scripts define marker(); the built-in layout defines printInvoice().
QString TestScriptHelper::marker(ECMAScriptEngine& engine)
{
    duk_context* ctx = engine.context();
    if (duk_get_global_string(ctx, "marker")) {
        duk_call(ctx, 0);
        const QString value = QString::fromUtf8(duk_safe_to_string(ctx, -1));
        duk_pop(ctx);
        return value;
    }
    duk_pop(ctx);
    const bool builtIn = duk_get_global_string(ctx, "printInvoice");
    duk_pop(ctx);
    return builtIn ? QStringLiteral("built-in") : QStringLiteral("none");
}

void TestScriptHelper::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    m_storedId = m_fixture.addPrintScript(QStringLiteral("Oma lasku"), QStringLiteral("invoice"),
        QStringLiteral("function marker() { return 'oma'; }\nfunction print() {}"));
    QVERIFY(m_storedId > 0);
    // Listed by type and name: "Alku" comes before "Loppu".
    QVERIFY(m_fixture.addPrintScript(QStringLiteral("Loppu"), QStringLiteral("finvoice"),
                QStringLiteral("function marker() { return 'loppu'; }"))
        > 0);
    QVERIFY(m_fixture.addPrintScript(QStringLiteral("Alku"), QStringLiteral("finvoice"),
                QStringLiteral("function marker() { return 'alku'; }"))
        > 0);
    QVERIFY(m_fixture.refresh());
}

void TestScriptHelper::invoiceScript_data()
{
    QTest::addColumn<QString>("setting");
    QTest::addColumn<QString>("script");
    QTest::addRow("missing") << ""
                             << "built-in";
    QTest::addRow("not a number") << "oma"
                                  << "built-in";
    QTest::addRow("stored") << "STORED"
                            << "oma";
    QTest::addRow("no such stored script") << "7777"
                                           << "built-in";
    QTest::addRow("built-in by id") << "-1"
                                    << "built-in";
    QTest::addRow("zero") << "0"
                          << "built-in";
    QTest::addRow("beyond the built-in list") << "-5"
                                              << "built-in";
}

void TestScriptHelper::invoiceScript()
{
    QFETCH(QString, setting);
    QFETCH(QString, script);
    if (setting == QLatin1String("STORED"))
        setting = QString::number(m_storedId);
    QVERIFY(m_fixture.setSetting(QStringLiteral("printScripts/invoice"), setting));
    ECMAScriptEngine engine;
    QVERIFY2(ScriptHelper(m_fixture.registry()).loadInvoiceScript(&engine),
        qPrintable(engine.lastError()));
    QCOMPARE(marker(engine), script);
}

void TestScriptHelper::invoiceScriptById_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("script");
    QTest::addRow("stored") << 0 << "oma";
    QTest::addRow("missing stored") << 9999 << "built-in";
    QTest::addRow("first built-in") << -1 << "built-in";
    QTest::addRow("out of range") << -3 << "built-in";
}

void TestScriptHelper::invoiceScriptById()
{
    QFETCH(int, id);
    QFETCH(QString, script);
    ECMAScriptEngine engine;
    QVERIFY(ScriptHelper(m_fixture.registry()).loadInvoiceScript(&engine, id ? id : m_storedId));
    QCOMPARE(marker(engine), script);
}

void TestScriptHelper::finvoiceScript()
{
    ECMAScriptEngine engine;
    QVERIFY(ScriptHelper(m_fixture.registry()).loadFinvoiceScript(&engine));
    QCOMPARE(marker(engine), QStringLiteral("alku"));
}

QTEST_MAIN(TestScriptHelper)
#include "tst_scripthelper.moc"
