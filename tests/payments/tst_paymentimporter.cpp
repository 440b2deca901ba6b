#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "faultsweep.h"
#include "payments/irptablemodel.h"
#include "payments/paymentimporter.h"
#include "storage/database.h"
#include "storage/faultinjector.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QtTest>

#include <memory>

namespace {

QString dataFile(const QString& name)
{
    return qEnvironmentVariable("VEKLARI_TEST_DATA") + QStringLiteral("/payments/") + name;
}

// The business the sample files pay to: invoice number, customer, reference
// and balance in cents. 1004 and 1005 share one reference.
struct SampleInvoice
{
    int number;
    const char* customer;
    const char* reference;
    int balance;
};
const SampleInvoice sampleInvoices[] = {
    { 1001, "Virtanen Oy", "10016", 20000 },
    { 1002, "Mäkinen Matti", "10029", 100000 },
    { 1003, "Kallio; \"Ky\"", "10032", 5000 },
    { 1004, "Laine Tmi", "10045", 4000 },
    { 1005, "Laine Tmi", "10045", 9250 },
};
const QString sampleIban = QStringLiteral("FI2112345600000785");

} // namespace

// Payments matched to the invoices by reference and saved with the new
// balances in one transaction, against a real database.
class TestPaymentImporter : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void matching_data();
    void matching();
    void paddedRfReference();
    void chooseCandidate();
    void unmatchedRowCannotBeTicked();
    void failureSavesNothing_data();
    void failureSavesNothing();
    void everyStatementFails();
    void duplicateFile();
    void unknownAccount();

private:
    bool openBusiness();
    bool createBusiness();
    QStringList balances();
    QStringList rows(const IRPTableModel* model) const;

    QTemporaryDir m_dir;
    std::unique_ptr<TestDatabase> m_db;
    std::unique_ptr<Registry> m_registry;
    int m_counter = 0;
};

void TestPaymentImporter::initTestCase()
{
    QVERIFY(m_dir.isValid());
}

void TestPaymentImporter::init()
{
    QVERIFY2(openBusiness(), qPrintable(m_db->lastError()));
}

bool TestPaymentImporter::openBusiness()
{
    m_registry.reset();
    m_db = std::make_unique<TestDatabase>(VEKLARI_TEST_BACKEND);
    if (!m_db->open())
        return false;
    m_registry = std::make_unique<Registry>();
    m_registry->loadSettings(m_dir.filePath(QStringLiteral("%1.ini").arg(++m_counter)));
    m_registry->setDatabase(m_db->database());
    m_registry->setConnected(true);
    return createBusiness();
}

void TestPaymentImporter::cleanup()
{
    FaultInjector::clear();
    m_registry.reset();
    m_db.reset();
}

bool TestPaymentImporter::createBusiness()
{
    std::unique_ptr<Query> query(m_db->database()->query());
    BankAccount account;
    account.name = QStringLiteral("Pankki");
    account.iban = sampleIban;
    if (!query->saveBankAccount(&account))
        return false;
    QHash<QString, int> customers;
    for (const SampleInvoice& sample : sampleInvoices) {
        const QString name = QString::fromUtf8(sample.customer);
        if (!customers.contains(name)) {
            Customer customer;
            customer.number = int(customers.size()) + 1;
            customer.name = name;
            if (!query->saveCustomer(&customer))
                return false;
            customers.insert(name, customer.id);
        }
        Invoice invoice;
        invoice.customerId = customers.value(name);
        invoice.number = sample.number;
        invoice.date = QDate(2025, 2, 1);
        invoice.dueDate = QDate(2025, 2, 15);
        invoice.paymentTerms = QStringLiteral("14 päivää netto");
        invoice.referenceNumber = QString::fromLatin1(sample.reference);
        invoice.totalAmount = sample.balance;
        invoice.balance = sample.balance;
        invoice.setProperty(QStringLiteral("t1"), QStringLiteral("Kiitos tilauksesta"));
        if (!query->saveInvoice(&invoice))
            return false;
    }
    return m_registry->fetchSettings(query.get()) && m_registry->fetchCustomers(query.get())
        && m_registry->fetchBankAccounts(query.get());
}

QStringList TestPaymentImporter::balances()
{
    return m_db->rows(QStringLiteral("SELECT number, balance FROM invoice ORDER BY number"));
}

// "ticked|invoice|customer|amount|info" for each row.
QStringList TestPaymentImporter::rows(const IRPTableModel* model) const
{
    QStringList lines;
    for (int row = 0; row < model->rowCount(); ++row) {
        const QModelIndex date = model->index(row, IRPTableModel::DateColumn);
        const QString invoice = model->index(row, IRPTableModel::InvoiceColumn).data().toString();
        lines.append(QStringList(
            { date.data(Qt::CheckStateRole).toInt() == Qt::Checked ? QStringLiteral("x")
                                                                   : QStringLiteral("-"),
                invoice.section(QLatin1Char(' '), 0, 0), model->customerText(row),
                QString::number(model->amount(row)), model->info(row) })
                         .join(QLatin1Char('|')));
    }
    return lines;
}

void TestPaymentImporter::matching_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("summary");
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<QStringList>("balances");

    // Two payments to 1001 lower it cumulatively; 1004 and 1005 share a
    // reference and the later one is chosen.
    QTest::newRow("reference payments")
        << "reference-payments.txt"
        << "Tiedosto sisältää 5 tilitapahtumaa, joista 5 on viitemaksuja"
        << QStringList({ "x|1001|Virtanen Oy|12550|", "x|1002|Mäkinen Matti|100000|",
               "x|1001|Virtanen Oy|1000|", "x|1005|Laine Tmi|4000|2 laskulla on viitenumero 10045",
               "-|||999|Laskua ei löytynyt viitenumerolla 99998" })
        << QStringList({ "1001|6450", "1002|0", "1003|5000", "1004|4000", "1005|5250" });
    QTest::newRow("account statement")
        << "account-statement.txt"
        << "Tiedosto sisältää 4 tilitapahtumaa, joista 2 on viitemaksuja"
        << QStringList({ "x|1003|Kallio; \"Ky\"|4000|", "x|1001|Virtanen Oy|1000|" })
        << QStringList({ "1001|19000", "1002|100000", "1003|1000", "1004|4000", "1005|9250" });
    // Three payments of one batch entry, an RF reference; the debit is not one.
    QTest::newRow("camt.054") << "camt054.xml"
                              << "Tiedosto sisältää 5 tilitapahtumaa, joista 4 on viitemaksuja"
                              << QStringList({ "x|1001|Virtanen Oy|10000|",
                                     "x|1003|Kallio; \"Ky\"|4000|", "x|1002|Mäkinen Matti|2000|",
                                     "x|1005|Laine Tmi|9250|2 laskulla on viitenumero 10045" })
                              << QStringList({ "1001|10000", "1002|98000", "1003|1000", "1004|4000",
                                     "1005|0" });
    QTest::newRow("csv") << "statement-semicolon.csv"
                         << "Tiedosto sisältää 4 tilitapahtumaa, joista 2 on viitemaksuja"
                         << QStringList(
                                { "x|1001|Virtanen Oy|12550|", "x|1003|Kallio; \"Ky\"|100000|" })
                         << QStringList({ "1001|7450", "1002|100000", "1003|-95000", "1004|4000",
                                "1005|9250" });
}

void TestPaymentImporter::matching()
{
    QFETCH(QString, file);
    QFETCH(QString, summary);
    QFETCH(QStringList, rows);
    QFETCH(QStringList, balances);

    PaymentImporter importer(m_registry.get());
    QVERIFY2(importer.readFile(dataFile(file)), qPrintable(importer.lastError()));
    QCOMPARE(importer.summaryText(), summary);
    QCOMPARE(importer.bankAccountIndex(), 0);
    QCOMPARE(this->rows(importer.model()), rows);

    const int accountId = m_registry->bankAccountAt(0)->id;
    const int ticked = int(rows.filter(QRegularExpression(QStringLiteral("^x"))).size());
    QCOMPARE(importer.savePayments(accountId), ticked);
    QCOMPARE(this->balances(), balances);
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM payment WHERE bank_account_id = %1")
                             .arg(accountId))
                 .toInt(),
        ticked);
    // Everything else of a paid invoice stays as it was.
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM invoice WHERE properties LIKE "
                                        "'%Kiitos tilauksesta%' AND payment_terms <> ''"))
                 .toInt(),
        5);
    QCOMPARE(m_registry->settings()->property(SettingsKeys::irpBankAccount).toInt(), accountId);
    QVERIFY(importer.model()->firstPaymentId() > 0);
    QCOMPARE(importer.model()->lastPaymentId() - importer.model()->firstPaymentId(), ticked - 1);
}

// An RF reference is matched by its national part without the padding zeros.
void TestPaymentImporter::paddedRfReference()
{
    const QString path = m_dir.filePath(QStringLiteral("rf-%1.csv").arg(m_counter));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QStringLiteral("Kirjauspäivä\tMaksupäivä\tMäärä\tViite\n"
                              "19.03.2025\t18.03.2025\t15.00\tRF61 0001 0032\n")
                   .toUtf8());
    file.close();
    PaymentImporter importer(m_registry.get());
    QVERIFY2(importer.readFile(path), qPrintable(importer.lastError()));
    QCOMPARE(rows(importer.model()), QStringList({ "x|1003|Kallio; \"Ky\"|1500|" }));
}

void TestPaymentImporter::chooseCandidate()
{
    PaymentImporter importer(m_registry.get());
    QVERIFY(importer.readFile(dataFile(QStringLiteral("reference-payments.txt"))));
    IRPTableModel* model = importer.model();
    const QModelIndex invoice = model->index(3, IRPTableModel::InvoiceColumn);
    QCOMPARE(model->comboBoxItems(invoice), QStringList({ "1004 / 1.2.2025", "1005 / 1.2.2025" }));
    QCOMPARE(invoice.data(Qt::EditRole).toInt(), 1);
    QVERIFY(!model->setData(invoice, 2));
    QVERIFY(model->setData(invoice, 0));
    QCOMPARE(invoice.data().toString(), QStringLiteral("1004 / 1.2.2025"));

    model->setSaveEntryDate(false);
    QCOMPARE(model->headerData(IRPTableModel::DateColumn, Qt::Horizontal).toString(),
        QStringLiteral("Maksupäivä"));
    QCOMPARE(importer.savePayments(-1), 4);
    QCOMPARE(balances().mid(3), QStringList({ "1004|0", "1005|9250" }));
    // Saved with the payment date and no bank account.
    QCOMPARE(m_db->rows(QStringLiteral("SELECT i.number, p.date, p.bank_account_id IS NULL FROM "
                                       "payment p JOIN invoice i ON i.id = p.invoice_id WHERE "
                                       "i.number = 1004")),
        QStringList({ m_db->backend() == TestDatabase::SQLite ? "1004|2025-03-14|1"
                                                              : "1004|2025-03-14|true" }));
}

void TestPaymentImporter::unmatchedRowCannotBeTicked()
{
    PaymentImporter importer(m_registry.get());
    QVERIFY(importer.readFile(dataFile(QStringLiteral("reference-payments.txt"))));
    IRPTableModel* model = importer.model();
    const QModelIndex unmatched = model->index(4, IRPTableModel::DateColumn);
    QVERIFY(!model->setData(unmatched, Qt::Checked, Qt::CheckStateRole));
    QVERIFY(model->setData(model->index(0, 0), Qt::Unchecked, Qt::CheckStateRole));
    QCOMPARE(importer.savePayments(-1), 3);
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM payment")).toInt(), 3);
    QCOMPARE(balances().first(), QStringLiteral("1001|19000"));
}

// A failure anywhere in the save leaves the database, the invoices shown and
// the remembered file as they were.
void TestPaymentImporter::failureSavesNothing_data()
{
    // The statement that fails: its number after BEGIN (1), else its pattern.
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("pattern");

    QTest::newRow("first payment") << 2 << "";
    QTest::newRow("the remembered file") << 0 << "^UPDATE settings";
    QTest::newRow("commit") << 0 << "^COMMIT";
}

void TestPaymentImporter::failureSavesNothing()
{
    QFETCH(int, number);
    QFETCH(QString, pattern);
    PaymentImporter importer(m_registry.get());
    QVERIFY(importer.readFile(dataFile(QStringLiteral("reference-payments.txt"))));
    const QStringList before = balances();

    if (number > 0)
        FaultInjector::failStatement(number, QStringLiteral("levy täynnä"));
    else
        FaultInjector::failMatching(QRegularExpression(pattern), QStringLiteral("levy täynnä"));
    QCOMPARE(importer.savePayments(-1), -1);
    QVERIFY(!FaultInjector::isPending());
    QVERIFY2(importer.lastError().contains(QStringLiteral("levy täynnä")),
        qPrintable(importer.lastError()));
    QCOMPARE(balances(), before);
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM payment")).toInt(), 0);
    QVERIFY(!importer.isDuplicate());
    QVERIFY(!m_registry->settings()->properties.contains(SettingsKeys::irpLastTimestamp));

    // The rows are intact: saving again stores them once.
    QCOMPARE(importer.savePayments(-1), 4);
    QCOMPARE(balances().first(), QStringLiteral("1001|6450"));
}

// Each statement of the save fails in turn: the database stays as it was,
// the message names the failure and the file is not remembered as saved.
void TestPaymentImporter::everyStatementFails()
{
    std::unique_ptr<PaymentImporter> importer;
    FaultSweep sweep;
    sweep.setUp = [&] {
        importer.reset();
        if (!openBusiness())
            return false;
        importer = std::make_unique<PaymentImporter>(m_registry.get());
        return importer->readFile(dataFile(QStringLiteral("reference-payments.txt")));
    };
    sweep.operation = [&](QString* error) {
        const bool ok = importer->savePayments(m_registry->bankAccounts().first()->id) == 4;
        *error = importer->lastError();
        return ok;
    };
    sweep.dump = [&] { return m_db->dump(); };
    sweep.afterFailure = [&] {
        return importer->isDuplicate()
                || m_registry->settings()->properties.contains(SettingsKeys::irpLastTimestamp)
            ? QStringLiteral("the file is remembered as saved")
            : QString();
    };
    QVERIFY2(sweep.run(), qPrintable(sweep.lastError()));
    // BEGIN, a payment and a balance each, the remembered file, COMMIT.
    QVERIFY2(sweep.statements().size() >= 11, qPrintable(sweep.statements().join('\n')));
}

void TestPaymentImporter::duplicateFile()
{
    PaymentImporter importer(m_registry.get());
    QVERIFY(importer.readFile(dataFile(QStringLiteral("camt054.xml"))));
    QVERIFY(!importer.isDuplicate());
    QCOMPARE(importer.savePayments(-1), 4);
    QVERIFY(importer.readFile(dataFile(QStringLiteral("camt054.xml"))));
    QVERIFY(importer.isDuplicate());
    // The stored timestamp lives in the database.
    std::unique_ptr<Query> query(m_db->database()->query());
    Settings stored;
    QVERIFY(query->fetchSettings() && query->next());
    query->settings(&stored);
    QCOMPARE(stored.property(SettingsKeys::irpLastTimestamp).toString(),
        QStringLiteral("camt054.xml:2025-03-15T06:30:00+02:00"));
    QVERIFY(importer.readFile(dataFile(QStringLiteral("camt053.xml"))));
    QVERIFY(!importer.isDuplicate());
}

void TestPaymentImporter::unknownAccount()
{
    std::unique_ptr<Query> query(m_db->database()->query());
    BankAccount* account = m_registry->bankAccountAt(0);
    account->iban = QStringLiteral("FI4950009420028730");
    PaymentImporter importer(m_registry.get());
    QSignalSpy needed(&importer, &PaymentImporter::bankAccountNeeded);
    QVERIFY(importer.readFile(dataFile(QStringLiteral("reference-payments.txt"))));
    QCOMPARE(importer.bankAccountIndex(), -1);
    QCOMPARE(
        importer.accountText(), QStringLiteral("Pankkitiliä ei löytynyt tilinumerolla 123456-785"));
    QVERIFY(needed.count() > 0);
    QVERIFY(importer.readFile(dataFile(QStringLiteral("camt053.xml"))));
    QCOMPARE(importer.accountText(),
        QStringLiteral("Pankkitiliä ei löytynyt tilinumerolla FI21 1234 5600 0007 85"));
}

QTEST_GUILESS_MAIN(TestPaymentImporter)
#include "tst_paymentimporter.moc"
