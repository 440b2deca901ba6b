#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoicecriteria.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "domain/paymentcriteria.h"
#include "domain/printscript.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "logcapture.h"
#include "recordfields.h"
#include "samplerecords.h"
#include "storage/database.h"
#include "storage/faultinjector.h"
#include "storage/postgresqlquery.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QStandardPaths>
#include <QtTest>

#include <functional>
#include <memory>

// Ids of the fixture: invoices by number, customers by position.
struct Fixture
{
    QMap<int, int> invoiceIds;
    QList<int> customerIds;
};
using InvoiceSetter = std::function<void(InvoiceCriteria&, const Fixture&)>;
using PaymentSetter = std::function<void(PaymentCriteria&, InvoiceCriteria*, const Fixture&)>;

// The same suite runs against SQLite and PostgreSQL (VEKLARI_TEST_BACKEND).
class StorageTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init();
    void cleanup()
    {
        FaultInjector::clear();
        m_db.reset();
    }

    void recordsRoundTrip_data();
    void recordsRoundTrip();
    void printScriptsRoundTrip();
    void newIdsFollowTheTable();
    void invoiceCriteria_data();
    void invoiceCriteria();
    void paymentCriteria_data();
    void paymentCriteria();
    void transactionsAndLogLines();
    void injectedFaults_data();
    void injectedFaults();
    void createAfterFailedCreate();

private:
    std::unique_ptr<Query> newQuery() { return std::unique_ptr<Query>(m_db->database()->query()); }
    int count(const QString& table, const QString& where = QString())
    {
        return m_db->value(QStringLiteral("SELECT count(*) FROM ") + table + where).toInt();
    }
    int addCustomer(int number);
    void addPayment(int invoiceNumber, int amount, const QDate& date);
    void addCriteriaFixture();
    // Every row of the fetch, each as its record's fields.
    template<class Record>
    QList<QStringList> rows(Query* query, void (Query::*read)(Record*))
    {
        QList<QStringList> result;
        for (Record record; query->next(); record = Record()) {
            (query->*read)(&record);
            result.append(RecordFields::of(record));
        }
        return result;
    }

    std::unique_ptr<TestDatabase> m_db;
    Fixture m_fixture;
};

void StorageTest::init()
{
    m_db = std::make_unique<TestDatabase>(VEKLARI_TEST_BACKEND);
    QVERIFY2(m_db->open(), qPrintable(m_db->lastError()));
    m_fixture = Fixture();
}

int StorageTest::addCustomer(int number)
{
    Customer customer;
    customer.number = number;
    customer.name = QStringLiteral("Asiakas %1").arg(number);
    return newQuery()->saveCustomer(&customer) ? customer.id : -1;
}

void StorageTest::addPayment(int invoiceNumber, int amount, const QDate& date)
{
    Payment payment = SampleRecords::payment(m_fixture.invoiceIds.value(invoiceNumber), -1);
    payment.amount = amount;
    payment.date = date;
    std::unique_ptr<Query> query = newQuery();
    QVERIFY2(query->savePayment(&payment), qPrintable(query->lastError()));
}

void StorageTest::recordsRoundTrip_data()
{
    QTest::addColumn<bool>("deliveryDate");
    QTest::addRow("with delivery date") << true;
    QTest::addRow("delivery date NULL") << false;
}

// Every record type stored, read back field by field, changed, stored again
// and removed (customers and bank accounts only marked).
void StorageTest::recordsRoundTrip()
{
    QFETCH(bool, deliveryDate);
    std::unique_ptr<Query> query = newQuery();

    Customer customer = SampleRecords::customer();
    QVERIFY2(query->saveCustomer(&customer), qPrintable(query->lastError()));
    QVERIFY(query->fetchCustomers());
    QCOMPARE(rows(query.get(), &Query::customer).value(0), RecordFields::of(customer));
    customer.deleted = false;
    customer.properties.clear();
    QVERIFY(query->saveCustomer(&customer) && query->deleteCustomer(customer.id));
    customer.deleted = true;
    QVERIFY(query->fetchCustomers());
    QCOMPARE(rows(query.get(), &Query::customer).value(0), RecordFields::of(customer));

    Product product = SampleRecords::product();
    QVERIFY2(query->saveProduct(&product), qPrintable(query->lastError()));
    product.vatExcluded = false; // and saved again: an update
    QVERIFY(query->saveProduct(&product) && query->fetchProducts());
    QCOMPARE(rows(query.get(), &Query::product).value(1), RecordFields::of(product));
    QVERIFY(query->deleteProduct(product.id));
    QCOMPARE(count("product"), 1);

    // Bank accounts come by row number.
    BankAccount second = SampleRecords::bankAccount();
    second.rowNumber = 9;
    second.deleted = false;
    BankAccount account = SampleRecords::bankAccount();
    QVERIFY2(query->saveBankAccount(&second) && query->saveBankAccount(&account),
        qPrintable(query->lastError()));
    account.visible = true;
    QVERIFY(query->saveBankAccount(&account) && query->fetchBankAccounts());
    QCOMPARE(rows(query.get(), &Query::bankAccount),
        QList<QStringList>({ RecordFields::of(account), RecordFields::of(second) }));
    second.deleted = true;
    QVERIFY(query->deleteBankAccount(second.id) && query->fetchBankAccounts());
    QCOMPARE(rows(query.get(), &Query::bankAccount).value(1), RecordFields::of(second));

    Invoice invoice = SampleRecords::invoice(customer.id);
    if (!deliveryDate)
        invoice.deliveryDate = QDate();
    QVERIFY2(query->saveInvoice(&invoice), qPrintable(query->lastError()));
    QVERIFY(query->fetchInvoiceDetails(invoice.id));
    QCOMPARE(rows(query.get(), &Query::invoiceDetails).value(0), RecordFields::of(invoice));
    // A summary leaves out the texts, the interest and the properties.
    Invoice summary = invoice;
    summary.paymentTerms = summary.delivery = summary.buyerRef = summary.sellerRef = QString();
    summary.interestOnArrears = 0;
    summary.properties.clear();
    QVERIFY(query->fetchInvoiceSummaries(InvoiceCriteria()));
    QCOMPARE(rows(query.get(), &Query::invoiceSummary).value(0), RecordFields::of(summary));
    invoice.deliveryDate = deliveryDate ? QDate() : QDate(2025, 2, 1);
    invoice.balance = 0;
    QVERIFY(query->saveInvoice(&invoice) && query->fetchInvoiceDetails(invoice.id));
    QCOMPARE(rows(query.get(), &Query::invoiceDetails).value(0), RecordFields::of(invoice));

    // Rows saved in reverse order come back by row number.
    QList<InvoiceItem> items;
    for (int row = 2; row >= 0; --row) {
        items.prepend(SampleRecords::invoiceItem(invoice.id));
        items.first().rowNumber = row;
        items.first().vatExcluded = row != 1;
        QVERIFY2(query->saveInvoiceItem(&items.first()), qPrintable(query->lastError()));
    }
    items[0].text.clear();
    QVERIFY(query->saveInvoiceItem(&items[0]) && query->deleteInvoiceItem(items.at(1).id));
    QVERIFY(query->fetchInvoiceItems(invoice.id));
    QCOMPARE(rows(query.get(), &Query::invoiceItem),
        QList<QStringList>({ RecordFields::of(items.at(0)), RecordFields::of(items.at(2)) }));
    QVERIFY(query->deleteInvoiceItems(invoice.id));
    QCOMPARE(count("invoice_item"), 0);

    // Payments by date; a missing bank account is NULL.
    Payment later = SampleRecords::payment(invoice.id, -1);
    Payment earlier = SampleRecords::payment(invoice.id, account.id);
    earlier.date = later.date.addDays(-1);
    QVERIFY2(
        query->savePayment(&later) && query->savePayment(&earlier), qPrintable(query->lastError()));
    QCOMPARE(count("payment", QStringLiteral(" WHERE bank_account_id IS NULL")), 1);
    QVERIFY(query->fetchPayments(invoice.id));
    QCOMPARE(rows(query.get(), &Query::payment),
        QList<QStringList>({ RecordFields::of(earlier), RecordFields::of(later) }));
    later.bankAccountId = account.id;
    later.amount = 250;
    QVERIFY(query->savePayment(&later) && query->fetchPayment(later.id));
    QCOMPARE(rows(query.get(), &Query::payment).value(0), RecordFields::of(later));
    QVERIFY(query->deletePayment(earlier.id));
    QCOMPARE(count("payment"), 1);
    QVERIFY(query->deletePayments(invoice.id) && query->deleteInvoice(invoice.id));
    QCOMPARE(count("payment") + count("invoice"), 0);

    // The logo's every byte; an empty logo and map are stored empty, not NULL.
    for (Settings settings : { SampleRecords::settings(), Settings() }) {
        QVERIFY2(query->updateSettings(&settings), qPrintable(query->lastError()));
        QVERIFY(query->fetchSettings());
        QCOMPARE(rows(query.get(), &Query::settings).value(0), RecordFields::of(settings));
    }
    QCOMPARE(m_db->value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);
}

// Scripts come ordered by type and name; the summary leaves the source out.
void StorageTest::printScriptsRoundTrip()
{
    std::unique_ptr<Query> query = newQuery();
    const auto fields = [](const PrintScript& script) {
        return QStringList { QString::number(script.id), script.type, script.name,
            script.sourceCode };
    };
    QList<PrintScript> scripts(3);
    const char* names[][3] = { { "invoice", "Oma lasku", "function print() {\n}\n" },
        { "invoice-list", "Lista 'ä'", "// \\ % _" }, { "invoice", "Aamu", "" } };
    for (int i = 0; i < 3; ++i) {
        scripts[i].type = QString::fromUtf8(names[i][0]);
        scripts[i].name = QString::fromUtf8(names[i][1]);
        scripts[i].sourceCode = QString::fromUtf8(names[i][2]);
        QVERIFY2(query->savePrintScript(&scripts[i]), qPrintable(query->lastError()));
        QVERIFY(scripts.at(i).id > 0);
    }
    scripts[2].sourceCode = QStringLiteral("require('Oma lasku');");
    QVERIFY(query->savePrintScript(&scripts[2]) && query->fetchPrintScriptDetails());
    QList<QStringList> details;
    for (PrintScript script; query->next(); script = PrintScript()) {
        query->printScriptDetails(&script);
        details.append(fields(script));
    }
    QCOMPARE(details,
        QList<QStringList>({ fields(scripts[2]), fields(scripts[0]), fields(scripts[1]) }));

    QVERIFY(query->deletePrintScript(scripts.at(2).id) && query->fetchPrintScriptSummaries());
    QVERIFY(query->next());
    PrintScript summary;
    query->printScriptSummary(&summary);
    scripts[0].sourceCode.clear();
    QCOMPARE(fields(summary), fields(scripts[0]));
    PrintScript missing;
    QVERIFY(!query->fetchPrintScript(scripts.at(2).id, &missing));
    QCOMPARE(count("print_script"), 2);
}

void StorageTest::newIdsFollowTheTable()
{
    const int customerId = addCustomer(1);
    std::unique_ptr<Query> query = newQuery();
    QList<int> ids;
    for (int number : { 7, 1200, 35 }) {
        Invoice invoice = SampleRecords::invoice(customerId);
        invoice.number = number;
        QVERIFY(query->saveInvoice(&invoice));
        ids.append(invoice.id);
        // The id handed back is the one that the row really got.
        QCOMPARE(
            m_db->value(QStringLiteral("SELECT number FROM invoice WHERE id = %1").arg(invoice.id))
                .toInt(),
            number);
    }
    QVERIFY(ids.at(0) < ids.at(1) && ids.at(1) < ids.at(2));
    QCOMPARE(query->maxInvoiceNumber(), 1200);

    if (auto* pgQuery = qobject_cast<PostgreSQLQuery*>(query.get())) {
        QCOMPARE(pgQuery->sequenceValue(QStringLiteral("invoice_id_seq")), ids.at(2));
        // currval of a sequence not used in this session is an error.
        QCOMPARE(pgQuery->sequenceValue(QStringLiteral("payment_id_seq")), -1);
        QVERIFY(!pgQuery->lastError().isEmpty());
    }
}

// Six invoices of two customers. Effective delivery dates (the delivery date,
// else the invoice date): 1: 10.1., 2: 28.1., 3: 20.2., 4: 10.3., 5: 15.3.,
// 6: 15.2. Invoices 1 and 3 have two rows, the others one.
void StorageTest::addCriteriaFixture()
{
    m_fixture.customerIds = { addCustomer(1), addCustomer(2) };
    struct Row
    {
        int number, type, customer;
        QDate date, delivery;
        int balance;
        QStringList texts;
    };
    const QList<Row> rows {
        { 1, 0, 0, QDate(2024, 1, 10), QDate(), 0, { "Kahvi", "Tee" } },
        { 2, 0, 1, QDate(2024, 2, 5), QDate(2024, 1, 28), 5000, { "Kahvinkeitin 2 kpl" } },
        { 3, 2, 0, QDate(2024, 2, 20), QDate(), 0, { "100% puuvillaa", "C:\\kuvat\\" } },
        { 4, 1, 1, QDate(2024, 3, 1), QDate(2024, 3, 10), 700, { "a_b" } },
        { 5, 3, 0, QDate(2024, 3, 15), QDate(), 300, { "axb" } },
        { 6, 0, 0, QDate(2024, 4, 2), QDate(2024, 2, 15), 12345, { "KAHVI" } },
    };
    std::unique_ptr<Query> query = newQuery();
    // Stored out of number order so that the ordering is really done by SQL.
    for (int i : { 3, 0, 5, 1, 4, 2 }) {
        const Row& row = rows.at(i);
        Invoice invoice;
        invoice.number = row.number;
        invoice.customerId = m_fixture.customerIds.at(row.customer);
        invoice.type = row.type;
        invoice.date = row.date;
        invoice.dueDate = row.date.addDays(14);
        invoice.deliveryDate = row.delivery;
        invoice.balance = row.balance;
        QVERIFY2(query->saveInvoice(&invoice), qPrintable(query->lastError()));
        m_fixture.invoiceIds.insert(row.number, invoice.id);
        for (int r = 0; r < row.texts.size(); ++r) {
            InvoiceItem item;
            item.invoiceId = invoice.id;
            item.text = row.texts.at(r);
            item.rowNumber = r;
            QVERIFY2(query->saveInvoiceItem(&item), qPrintable(query->lastError()));
        }
    }
}

void StorageTest::invoiceCriteria_data()
{
    QTest::addColumn<InvoiceSetter>("set");
    QTest::addColumn<QList<int>>("numbers");
    auto row = [](const char* name, const InvoiceSetter& set, const QList<int>& numbers) {
        QTest::addRow("%s", name) << set << numbers;
    };
    using C = InvoiceCriteria;
    using F = Fixture;
    const QList<int> all { 1, 2, 3, 4, 5, 6 };
    row(
        "cleared criteria list everything by number", [](C&, const F&) {}, all);
    row("date range",
        [](C& c, const F&) { c.dateFrom = QDate(2024, 2, 5), c.dateTo = QDate(2024, 3, 1); },
        { 2, 3, 4 });
    row("delivery period, NULL falls back to the date",
        [](C& c, const F&) {
            c.deliveryDateFrom = QDate(2024, 2, 1), c.deliveryDateTo = QDate(2024, 2, 29);
        },
        { 3, 6 });
    row("delivery single day",
        [](C& c, const F&) { c.deliveryDateFrom = c.deliveryDateTo = QDate(2024, 3, 15); }, { 5 });
    row("number range from 0", [](C& c, const F&) { c.numberFrom = 0, c.numberTo = 2; }, { 1, 2 });
    row("number ranges and a single number",
        [](C& c, const F&) {
            c.numberRanges = { { 1, 2 }, { 5, 5 } };
        },
        { 1, 2, 5 });
    row("number ranges overlapping, out of order",
        [](C& c, const F&) {
            c.numberRanges = { { 4, 9 }, { 3, 5 } };
        },
        { 3, 4, 5, 6 });
    row("number ranges joined with other conditions",
        [](C& c, const F&) {
            c.numberRanges = { { 1, 3 }, { 6, 6 } }, c.types = 1;
        },
        { 1, 2, 6 });
    row("types 0 and 2", [](C& c, const F&) { c.types = 5; }, { 1, 2, 3, 6 });
    row("empty type mask", [](C& c, const F&) { c.types = 0; }, {});
    row(
        "balance date overrides payment status",
        [](C& c, const F&) { c.paymentStatus = 1, c.balanceDate = QDate(2024, 3, 1); }, all);
    row("limit", [](C& c, const F&) { c.limit = 2; }, { 1, 2 });
    row("latest two", [](C& c, const F&) { c.limit = 2, c.descending = true; }, { 6, 5 });
    row("text star and question mark", [](C& c, const F&) { c.text = "*k?hvi*"; }, { 1, 2, 6 });
    row("text typed underscore is a wildcard", [](C& c, const F&) { c.text = "a_b"; }, { 4, 5 });
    row("text backslash escapes", [](C& c, const F&) { c.text = "a\\_b"; }, { 4 });
    row("text backslash before a letter and at the end",
        [](C& c, const F&) { c.text = "C:\\kuvat\\"; }, { 3 });
    row("text ending in a backslash", [](C& c, const F&) { c.text = "*\\"; }, { 3 });
    row("text doubled backslash", [](C& c, const F&) { c.text = "*\\\\kuvat*"; }, { 3 });
    row("text typed percent is a wildcard", [](C& c, const F&) { c.text = "1%puuvillaa"; }, { 3 });
    row("text escaped percent is no wildcard", [](C& c, const F&) { c.text = "1\\%puuvillaa"; },
        {});
    row("text escaped percent", [](C& c, const F&) { c.text = "*0\\% p*"; }, { 3 });
    row("customer, type and unpaid",
        [](C& c, const F& f) {
            c.customerId = f.customerIds.at(0), c.types = 1, c.paymentStatus = 1;
        },
        { 6 });
}

void StorageTest::invoiceCriteria()
{
    QFETCH(InvoiceSetter, set);
    QFETCH(QList<int>, numbers);
    addCriteriaFixture();
    InvoiceCriteria criteria;
    set(criteria, m_fixture);

    std::unique_ptr<Query> query = newQuery();
    auto numbersOf = [&](const QList<QStringList>& invoices) {
        QList<int> result;
        for (const QStringList& fields : invoices)
            result.append(fields.filter("number=").value(0).mid(7).toInt());
        return result;
    };
    QVERIFY2(query->fetchInvoiceSummaries(criteria), qPrintable(query->lastError()));
    QCOMPARE(numbersOf(rows(query.get(), &Query::invoiceSummary)), numbers);
    QVERIFY2(query->fetchInvoiceDetails(criteria), qPrintable(query->lastError()));
    QCOMPARE(numbersOf(rows(query.get(), &Query::invoiceDetails)), numbers);
    // The count has no limit.
    if (criteria.limit <= 0)
        QCOMPARE(query->fetchInvoiceCount(criteria), int(numbers.size()));

    // Rows of the selected invoices, by invoice number and row number.
    QVERIFY2(query->fetchInvoiceItems(criteria), qPrintable(query->lastError()));
    QList<int> itemInvoices;
    for (const QStringList& item : rows(query.get(), &Query::invoiceItem))
        itemInvoices.append(m_fixture.invoiceIds.key(item.at(1).mid(10).toInt()));
    QList<int> expectedItems = numbers;
    std::sort(expectedItems.begin(), expectedItems.end());
    for (int twoRows : { 1, 3 }) {
        if (expectedItems.contains(twoRows))
            expectedItems.insert(expectedItems.indexOf(twoRows), twoRows);
    }
    QCOMPARE(itemInvoices, expectedItems);
}

void StorageTest::paymentCriteria_data()
{
    QTest::addColumn<PaymentSetter>("set");
    QTest::addColumn<QList<int>>("amounts");
    auto row = [](const char* name, const PaymentSetter& set, const QList<int>& amounts) {
        QTest::addRow("%s", name) << set << amounts;
    };
    using P = PaymentCriteria;
    using I = InvoiceCriteria;
    using F = Fixture;
    // Payments (amount: invoice number, date): 100: 1, 1.2.; 200: 1, 5.2.;
    // 300: 2, 3.2.; 400: 4, 10.3.; 500: 6, 1.4.
    row("all, by date", [](P&, I*, const F&) {}, { 100, 300, 200, 400, 500 });
    row("date range",
        [](P& p, I*, const F&) { p.dateFrom = QDate(2024, 2, 3), p.dateTo = QDate(2024, 3, 10); },
        { 300, 200, 400 });
    // With invoice criteria: ordered by invoice number first.
    row("invoice criteria: type 0", [](P&, I* i, const F&) { i->types = 1; },
        { 100, 200, 300, 500 });
    row("invoice criteria: customer A and date",
        [](P& p, I* i, const F& f) {
            i->customerId = f.customerIds.at(0), p.dateFrom = QDate(2024, 2, 2);
        },
        { 200, 500 });
}

void StorageTest::paymentCriteria()
{
    QFETCH(PaymentSetter, set);
    QFETCH(QList<int>, amounts);
    addCriteriaFixture();
    std::unique_ptr<Query> query = newQuery();
    addPayment(1, 100, QDate(2024, 2, 1));
    addPayment(1, 200, QDate(2024, 2, 5));
    addPayment(2, 300, QDate(2024, 2, 3));
    addPayment(4, 400, QDate(2024, 3, 10));
    addPayment(6, 500, QDate(2024, 4, 1));

    PaymentCriteria paymentCriteria;
    InvoiceCriteria invoiceCriteria;
    const bool withInvoices = QByteArray(QTest::currentDataTag()).startsWith("invoice criteria");
    set(paymentCriteria, &invoiceCriteria, m_fixture);
    QVERIFY2(withInvoices ? query->fetchPayments(paymentCriteria, invoiceCriteria)
                          : query->fetchPayments(paymentCriteria),
        qPrintable(query->lastError()));
    QList<int> found;
    for (const QStringList& payment : rows(query.get(), &Query::payment))
        found.append(payment.at(4).mid(7).toInt());
    QCOMPARE(found, amounts);
}

void StorageTest::transactionsAndLogLines()
{
    QLoggingCategory::setFilterRules(QStringLiteral("veklari.database.debug=true"));
    LogCapture log("veklari.database");
    const int customerId = addCustomer(1);
    Database* db = m_db->database();
    std::unique_ptr<Query> query = newQuery();
    QCOMPARE(query->maxInvoiceNumber(), 0);
    QVERIFY(
        log.contains(QStringLiteral("debug: Tietokantakysely: SELECT max(number) FROM invoice")));

    Invoice invoice = SampleRecords::invoice(customerId);
    QVERIFY(db->transaction() && query->saveInvoice(&invoice) && db->rollback());
    QCOMPARE(count("invoice"), 0);
    QVERIFY(log.contains(QStringLiteral("debug: Peruutetaan tietokantatapahtuma")));
    invoice.id = -1;
    QVERIFY(db->transaction() && query->saveInvoice(&invoice) && db->commit());
    QCOMPARE(count("invoice"), 1);

    // A missing date is refused by the NOT NULL column, and reported.
    invoice.id = -1;
    invoice.date = QDate();
    QVERIFY(!query->saveInvoice(&invoice) && invoice.id == -1);
    QVERIFY(log.contains(QStringLiteral("warning: Tietokantavirhe: ") + query->lastError()));
}

void StorageTest::injectedFaults_data()
{
    QTest::addColumn<int>("n"); // 0: the first statement that matches
    QTest::addColumn<QString>("pattern");
    QTest::addRow("second statement") << 2 << QString();
    QTest::addRow("matching statement") << 0 << QStringLiteral("^INSERT INTO invoice ");
    QTest::addRow("commit") << 0 << QStringLiteral("^COMMIT$");
}

// A customer and its invoice in one transaction. The fault stops it with its
// text like a failure of the server; after the rollback nothing is stored, and
// the fault is gone: the same transaction then goes through.
void StorageTest::injectedFaults()
{
    QFETCH(int, n);
    QFETCH(QString, pattern);
    const QString error = QStringLiteral("Levy täynnä");
    if (n > 0)
        FaultInjector::failStatement(n, error);
    else
        FaultInjector::failMatching(QRegularExpression(pattern), error);

    Database* db = m_db->database();
    std::unique_ptr<Query> query = newQuery();
    auto store = [&] {
        Customer customer = SampleRecords::customer();
        Invoice invoice = SampleRecords::invoice(-1);
        return db->transaction() && query->saveCustomer(&customer)
            && (invoice.customerId = customer.id, query->saveInvoice(&invoice)) && db->commit();
    };
    LogCapture log("veklari.database");
    QVERIFY(!store());
    QVERIFY(!FaultInjector::isPending());
    QVERIFY2(QStringList({ db->lastError(), query->lastError() }).contains(error),
        qPrintable(db->lastError() + query->lastError()));
    QVERIFY(log.contains(QStringLiteral("warning: Tietokantavirhe: ") + error));
    QVERIFY(db->rollback());
    QCOMPARE(count("customer") + count("invoice"), 0);

    QVERIFY2(store(), qPrintable(db->lastError() + query->lastError()));
    QCOMPARE(count("customer") + count("invoice"), 2);
}

// The error of a failed create is not left behind a later one that succeeds.
void StorageTest::createAfterFailedCreate()
{
    TestDatabase db(VEKLARI_TEST_BACKEND);
    const QString error = QStringLiteral("Levy täynnä");
    // CREATE DATABASE on PostgreSQL, the first CREATE TABLE on SQLite.
    FaultInjector::failMatching(QRegularExpression(QStringLiteral("^CREATE ")), error);
    QVERIFY(!db.open(true));
    QVERIFY(!FaultInjector::isPending());
    QVERIFY2(db.database()->lastError().contains(error), qPrintable(db.database()->lastError()));

    QVERIFY2(db.open(true), qPrintable(db.lastError()));
    QCOMPARE(db.database()->lastError(), QString());
    QCOMPARE(db.value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);
}

QTEST_GUILESS_MAIN(StorageTest)
#include "tst_storage.moc"
