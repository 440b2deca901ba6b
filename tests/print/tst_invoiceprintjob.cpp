#include "core/registry.h"
#include "domain/invoicetype.h"
#include "domain/settings.h"
#include "invoicefixture.h"
#include "print/invoiceprintjob.h"
#include "print/invoiceprintmodel.h"
#include "print/printscriptengine.h"
#include "print/scripthelper.h"

#include <QtTest>

// Before printing invoices: which script runs, the due-date cautions and the question about
// invoices without rows.
class TestInvoicePrintJob : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void invoiceScript_data();
    void invoiceScript();
    void cautions_data();
    void cautions();

private:
    InvoiceFixture m_fixture;
    QTemporaryDir m_dir;
    int m_storedId = -1;
};

static const QString reminderWarning
    = QStringLiteral("Huomaathan, että yksi tai usempi laskuista ei ole vielä erääntynyt.");
static const QString receiptWarning
    = QStringLiteral("Huomaathan, että lasku ei ole vielä erääntynyt.");
static const QString noRows
    = QStringLiteral("Laskussa ei ole yhtään laskuriviä. Tulostetaanko lasku kuitenkin?");

// What the script in the engine is: the stored ones say it with marker(),
// the built-in layout defines printInvoice().
static QString marker(ECMAScriptEngine& engine)
{
    duk_context* ctx = engine.context();
    duk_peval_string(ctx,
        "typeof marker == 'function' ? marker() : "
        "typeof printInvoice == 'function' ? 'built-in' : 'none'");
    const QString value = QString::fromUtf8(duk_safe_to_string(ctx, -1));
    duk_pop(ctx);
    return value;
}

void TestInvoicePrintJob::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    m_fixture.registry()->loadSettings(m_dir.filePath(QStringLiteral("Veklari.ini")));
    m_storedId = m_fixture.addPrintScript(QStringLiteral("Oma lasku"), QStringLiteral("invoice"),
        QStringLiteral("function marker() { return 'oma'; }\nfunction print() {}"));
    QVERIFY(m_storedId > 0 && m_fixture.refresh());
    // All fall due on 15.3.2025 but 1002 on 30.4.; 1003 has no rows.
    QVERIFY(m_fixture.addInvoice(0, InvoiceFixture::sampleItems(), 1001) > 0);
    QVERIFY(m_fixture.addInvoice(0, InvoiceFixture::manyItems(2), 1002, 1) > 0);
    QVERIFY(m_fixture.addInvoice(0, {}, 1003) > 0);
    QVERIFY(m_fixture.testDatabase()->exec(
        { QStringLiteral("UPDATE invoice SET due_date = '2025-04-30' WHERE number = 1002") }));
}

void TestInvoicePrintJob::invoiceScript_data()
{
    QTest::addColumn<QString>("setting");
    QTest::addColumn<QString>("script");
    QTest::addRow("missing") << ""
                             << "built-in";
    QTest::addRow("stored") << "STORED"
                            << "oma";
    QTest::addRow("no such stored script") << "7777"
                                           << "built-in";
}

void TestInvoicePrintJob::invoiceScript()
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

void TestInvoicePrintJob::cautions_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QList<int>>("numbers");
    QTest::addColumn<QDate>("today");
    QTest::addColumn<bool>("preview");
    QTest::addColumn<QString>("said"); // the caution and the question, as they come

    const int reminder = InvoiceType::Reminder;
    const QList<int> first { 1001 };
    const QList<int> both { 1001, 1002 };
    const QDate due(2025, 3, 15);
    QTest::addRow("reminder on the due date") << reminder << first << due << true << "";
    QTest::addRow("reminders, one not yet due")
        << reminder << both << QDate(2025, 4, 1) << true << reminderWarning;
    QTest::addRow("receipt before the due date") << int(InvoiceType::Receipt) << QList<int> { 1002 }
                                                 << QDate(2025, 4, 29) << true << receiptWarning;
    // The preview shows the empty invoice; nothing to ask.
    QTest::addRow("no rows, preview")
        << int(InvoiceType::Invoice) << QList<int> { 1003 } << due << true << "";
    QTest::addRow("one of several without rows")
        << reminder << QList<int> { 1001, 1002, 1003 } << QDate(2025, 3, 1) << false
        << reminderWarning + "|" + noRows;
}

void TestInvoicePrintJob::cautions()
{
    QFETCH(int, kind);
    QFETCH(QList<int>, numbers);
    QFETCH(QDate, today);
    QFETCH(bool, preview);
    QFETCH(QString, said);
    InvoicePrintModel model(m_fixture.registry());
    model.setPrintType(kind);
    model.criteria().numberFrom = numbers.first();
    model.criteria().numberTo = numbers.last();
    QVERIFY(model.run());
    QCOMPARE(model.invoiceCount(), numbers.size());
    QStringList texts { InvoicePrintJob::dueDateWarning(&model, kind, today),
        InvoicePrintJob::noRowsQuestion(&model, preview) };
    texts.removeAll(QString());
    QCOMPARE(texts.join('|'), said);
}

QTEST_MAIN(TestInvoicePrintJob)
#include "tst_invoiceprintjob.moc"
