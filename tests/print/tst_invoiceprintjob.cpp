#include "core/registry.h"
#include "domain/invoiceitem.h"
#include "domain/settings.h"
#include "invoicefixture.h"
#include "print/invoiceprintjob.h"
#include "print/invoiceprintmodel.h"

#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

// The decisions before printing invoices: the due-date cautions of
// reminders and receipts, the question about invoices without rows, and
// where the printing settings are read from.
class TestInvoicePrintJob : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void dueDateWarning_data();
    void dueDateWarning();
    void noRowsQuestion_data();
    void noRowsQuestion();
    void settings();

private:
    bool load(InvoicePrintModel& model, const QList<int>& numbers);

    InvoiceFixture m_fixture;
    QTemporaryDir m_dir;
};

static const QString reminderWarning
    = QStringLiteral("Huomaathan, että yksi tai usempi laskuista ei ole vielä erääntynyt.");
static const QString receiptWarning
    = QStringLiteral("Huomaathan, että lasku ei ole vielä erääntynyt.");
static const QString noRows
    = QStringLiteral("Laskussa ei ole yhtään laskuriviä. Tulostetaanko lasku kuitenkin?");

void TestInvoicePrintJob::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    m_fixture.registry()->loadSettings(m_dir.filePath(QStringLiteral("Veklari.ini")));
    // All fall due on 15.3.2025; 1003 has no rows.
    QVERIFY(m_fixture.addInvoice(0, InvoiceFixture::sampleItems(), 1001) > 0);
    QVERIFY(m_fixture.addInvoice(0, InvoiceFixture::manyItems(2), 1002, 1) > 0);
    QVERIFY(m_fixture.addInvoice(0, {}, 1003) > 0);
    QVERIFY(m_fixture.testDatabase()->exec(
        { QStringLiteral("UPDATE invoice SET due_date = '2025-04-30' WHERE number = 1002") }));
}

bool TestInvoicePrintJob::load(InvoicePrintModel& model, const QList<int>& numbers)
{
    model.criteria().numberFrom = numbers.first();
    model.criteria().numberTo = numbers.last();
    return model.run() && model.invoiceCount() == numbers.size();
}

void TestInvoicePrintJob::dueDateWarning_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QList<int>>("numbers");
    QTest::addColumn<QDate>("today");
    QTest::addColumn<QString>("warning");

    const int reminder = InvoicePrintJob::Reminder;
    const int receipt = InvoicePrintJob::Receipt;
    QTest::addRow("reminder before the due date")
        << reminder << QList<int> { 1001 } << QDate(2025, 3, 14) << reminderWarning;
    QTest::addRow("reminder on the due date")
        << reminder << QList<int> { 1001 } << QDate(2025, 3, 15) << QString();
    QTest::addRow("reminder after the due date")
        << reminder << QList<int> { 1001 } << QDate(2025, 4, 1) << QString();
    QTest::addRow("reminders, one not yet due")
        << reminder << QList<int> { 1001, 1002 } << QDate(2025, 4, 1) << reminderWarning;
    QTest::addRow("reminders, all due")
        << reminder << QList<int> { 1001, 1002 } << QDate(2025, 5, 1) << QString();
    QTest::addRow("receipt before the due date")
        << receipt << QList<int> { 1002 } << QDate(2025, 4, 29) << receiptWarning;
    QTest::addRow("receipt after the due date")
        << receipt << QList<int> { 1002 } << QDate(2025, 5, 2) << QString();
    QTest::addRow("invoice is never cautioned")
        << int(InvoicePrintJob::Invoice) << QList<int> { 1001 } << QDate(2025, 1, 1) << QString();
}

void TestInvoicePrintJob::dueDateWarning()
{
    QFETCH(int, kind);
    QFETCH(QList<int>, numbers);
    QFETCH(QDate, today);
    QFETCH(QString, warning);

    InvoicePrintModel model(m_fixture.registry());
    model.setPrintType(kind);
    QVERIFY(load(model, numbers));
    QCOMPARE(InvoicePrintJob::dueDateWarning(&model, kind, today), warning);
}

void TestInvoicePrintJob::noRowsQuestion_data()
{
    QTest::addColumn<QList<int>>("numbers");
    QTest::addColumn<bool>("preview");
    QTest::addColumn<QString>("question");

    QTest::addRow("rows, printer") << QList<int> { 1001 } << false << QString();
    QTest::addRow("no rows, printer") << QList<int> { 1003 } << false << noRows;
    // The preview shows the empty invoice; nothing to ask.
    QTest::addRow("no rows, preview") << QList<int> { 1003 } << true << QString();
    QTest::addRow("one of several without rows")
        << QList<int> { 1001, 1002, 1003 } << false << noRows;
}

void TestInvoicePrintJob::noRowsQuestion()
{
    QFETCH(QList<int>, numbers);
    QFETCH(bool, preview);
    QFETCH(QString, question);

    InvoicePrintModel model(m_fixture.registry());
    QVERIFY(load(model, numbers));
    QCOMPARE(InvoicePrintJob::noRowsQuestion(&model, preview), question);
}

void TestInvoicePrintJob::settings()
{
    InvoicePrintJob job(m_fixture.registry());
    QVERIFY(job.showPreview());
    QCOMPARE(job.numberOfCopies(), 0);
    QCOMPARE(job.printerName(), QString());

    QVERIFY(
        m_fixture.setSetting(QStringLiteral("invoiceForm/printPreview"), QStringLiteral("false")));
    QVERIFY(
        m_fixture.setSetting(QStringLiteral("invoiceForm/numberOfCopies"), QStringLiteral("2")));
    // Printers belong to the machine: a company setting of that name is not read.
    QVERIFY(m_fixture.setSetting(QStringLiteral("printers/invoice"), QStringLiteral("Väärä")));
    QSettings* config = m_fixture.registry()->appSettings();
    config->setValue(QStringLiteral("printers/invoice"), QStringLiteral("HP LaserJet"));
    config->setValue(QStringLiteral("printers/copies"), QStringLiteral("Ricoh"));
    config->setValue(QStringLiteral("printers/reports"), QStringLiteral("Brother"));
    QVERIFY(!job.showPreview());
    QCOMPARE(job.numberOfCopies(), 2);
    QCOMPARE(job.printerName(), QStringLiteral("HP LaserJet"));
    QCOMPARE(job.copiesPrinterName(), QStringLiteral("Ricoh"));
    QCOMPARE(job.reportPrinterName(), QStringLiteral("Brother"));

    QVERIFY(m_fixture.setSetting(QStringLiteral("invoiceForm/printPreview"), true));
    QVERIFY(
        m_fixture.setSetting(QStringLiteral("invoiceForm/numberOfCopies"), QStringLiteral("-3")));
    QVERIFY(job.showPreview());
    QCOMPARE(job.numberOfCopies(), 0);
}

QTEST_MAIN(TestInvoicePrintJob)
#include "tst_invoiceprintjob.moc"
