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
#include "storage/postgresqlquery.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QStandardPaths>
#include <QtTest>

#include <functional>
#include <memory>

// Fixture invoices by number and customers by position, for the criteria.
struct Fixture
{
    QMap<int, int> invoiceIds;
    QList<int> customerIds;
    QMap<int, int> paymentIds; // by amount
    QList<int> accountIds;
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
    void cleanup() { m_db.reset(); }

    void initialData();
    void recordsRoundTrip_data();
    void recordsRoundTrip();
    void invoiceWithoutDateIsRefused();
    void newIdsFollowTheTable();
    void invoiceCriteria_data();
    void invoiceCriteria();
    void paymentCriteria_data();
    void paymentCriteria();
    void invoicesAndPayments();
    void balanceAtDate();
    void deleteBetween();
    void transactions();
    void logLines();

private:
    std::unique_ptr<Query> newQuery() { return std::unique_ptr<Query>(m_db->database()->query()); }
    int count(const QString& table, const QString& where = QString())
    {
        return m_db->value(QStringLiteral("SELECT count(*) FROM ") + table + where).toInt();
    }
    int addCustomer(int number);
    Invoice makeInvoice(int number, int customerId);
    void addPayment(int invoiceNumber, int amount, const QDate& date, int accountId = -1);
    void addCriteriaFixture();
    template<class Record, class Read>
    QList<Record> readAll(Query* query, Read read);

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

Invoice StorageTest::makeInvoice(int number, int customerId)
{
    Invoice invoice;
    invoice.number = number;
    invoice.customerId = customerId;
    invoice.date = QDate(2024, 1, 1);
    invoice.dueDate = QDate(2024, 1, 15);
    return invoice;
}

void StorageTest::addPayment(int invoiceNumber, int amount, const QDate& date, int accountId)
{
    Payment payment;
    payment.invoiceId = m_fixture.invoiceIds.value(invoiceNumber);
    payment.amount = amount;
    payment.date = date;
    payment.bankAccountId = accountId;
    std::unique_ptr<Query> query = newQuery();
    QVERIFY2(query->savePayment(&payment), qPrintable(query->lastError()));
    m_fixture.paymentIds.insert(amount, payment.id);
}

template<class Record, class Read>
QList<Record> StorageTest::readAll(Query* query, Read read)
{
    QList<Record> records;
    while (query->next()) {
        Record record;
        (query->*read)(&record);
        records.append(record);
    }
    return records;
}

void StorageTest::initialData()
{
    QCOMPARE(m_db->value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);
    std::unique_ptr<Query> query = newQuery();
    QVERIFY(query->fetchSettings());
    const QList<Settings> settings = readAll<Settings>(query.get(), &Query::settings);
    QCOMPARE(settings.size(), 1);
    QCOMPARE(RecordFields::of(settings.at(0)),
        QStringList({ "sellerName=Testi Oy", "sellerStreetName=", "sellerPostCode=",
            "sellerTownName=", "sellerCountry=", "sellerBusinessId=", "sellerLogo=",
            "property invoiceForm/reminderText=Pyydämme ystävällisesti maksamaan saatavamme. "
            "Mikäli kuitenkin olette jo suorittaneet tämän laskun, tämä maksumuistutus on "
            "aiheeton.",
            "property settings/interestOnArrears=800",
            "property settings/paymentTerms=14 päivää netto",
            "property settings/periodForComplaints=8 päivää",
            "property settings/productForInterestOnArrears=999" }));
    QVERIFY(query->fetchProducts());
    const QList<Product> products = readAll<Product>(query.get(), &Query::product);
    QCOMPARE(products.size(), 1);
    QCOMPARE(products.at(0).number, QStringLiteral("999"));
    QCOMPARE(products.at(0).name, QStringLiteral("Viivästyskorko"));
}

void StorageTest::recordsRoundTrip_data()
{
    QTest::addColumn<bool>("deliveryDate");
    QTest::addRow("with delivery date") << true;
    QTest::addRow("delivery date NULL") << false;
}

// Every record type stored, read back field by field, changed, stored again
// and removed (or marked, for customers and bank accounts).
void StorageTest::recordsRoundTrip()
{
    QFETCH(bool, deliveryDate);
    std::unique_ptr<Query> query = newQuery();

    Customer customer = SampleRecords::customer();
    QVERIFY2(query->saveCustomer(&customer), qPrintable(query->lastError()));
    QVERIFY(query->fetchCustomers());
    QCOMPARE(RecordFields::of(readAll<Customer>(query.get(), &Query::customer).value(0)),
        RecordFields::of(customer));
    customer.deleted = false;
    customer.streetName.clear();
    customer.properties.clear();
    QVERIFY2(query->saveCustomer(&customer), qPrintable(query->lastError()));
    QVERIFY2(query->deleteCustomer(customer.id), qPrintable(query->lastError()));
    customer.deleted = true;
    QVERIFY(query->fetchCustomers());
    QCOMPARE(RecordFields::of(readAll<Customer>(query.get(), &Query::customer).value(0)),
        RecordFields::of(customer));

    Product product = SampleRecords::product();
    QVERIFY2(query->saveProduct(&product), qPrintable(query->lastError()));
    product.amount = -product.amount;
    product.vatExcluded = false;
    QVERIFY2(query->saveProduct(&product), qPrintable(query->lastError()));
    QVERIFY(query->fetchProducts());
    QCOMPARE(RecordFields::of(readAll<Product>(query.get(), &Query::product).value(1)),
        RecordFields::of(product));
    QVERIFY(query->deleteProduct(product.id));
    QCOMPARE(count("product"), 1);

    BankAccount second = SampleRecords::bankAccount();
    second.rowNumber = 9;
    second.deleted = false;
    BankAccount account = SampleRecords::bankAccount();
    for (BankAccount* a : { &second, &account })
        QVERIFY2(query->saveBankAccount(a), qPrintable(query->lastError()));
    account.visible = true;
    QVERIFY(query->saveBankAccount(&account));
    QVERIFY(query->fetchBankAccounts()); // by row number
    const QList<BankAccount> accounts = readAll<BankAccount>(query.get(), &Query::bankAccount);
    QCOMPARE(RecordFields::of(accounts.value(0)), RecordFields::of(account));
    QCOMPARE(RecordFields::of(accounts.value(1)), RecordFields::of(second));
    QVERIFY(query->deleteBankAccount(second.id) && query->fetchBankAccounts());
    QCOMPARE(readAll<BankAccount>(query.get(), &Query::bankAccount).value(1).deleted, true);

    Invoice invoice = SampleRecords::invoice(customer.id);
    if (!deliveryDate)
        invoice.deliveryDate = QDate();
    QVERIFY2(query->saveInvoice(&invoice), qPrintable(query->lastError()));
    QVERIFY(query->fetchInvoiceDetails(invoice.id));
    QCOMPARE(RecordFields::of(readAll<Invoice>(query.get(), &Query::invoiceDetails).value(0)),
        RecordFields::of(invoice));
    QCOMPARE(m_db->value(QStringLiteral("SELECT tags FROM invoice")).toInt(), 0);
    // A summary leaves out the texts, the interest and the properties.
    Invoice summary = invoice;
    summary.paymentTerms = summary.delivery = summary.buyerRef = summary.sellerRef = QString();
    summary.interestOnArrears = 0;
    summary.properties.clear();
    QVERIFY(query->fetchInvoiceSummaries(InvoiceCriteria()));
    QCOMPARE(RecordFields::of(readAll<Invoice>(query.get(), &Query::invoiceSummary).value(0)),
        RecordFields::of(summary));
    invoice.deliveryDate = deliveryDate ? QDate() : QDate(2025, 2, 1);
    invoice.balance = 0;
    QVERIFY2(query->saveInvoice(&invoice), qPrintable(query->lastError()));
    QVERIFY(query->fetchInvoiceDetails(invoice.id));
    QCOMPARE(RecordFields::of(readAll<Invoice>(query.get(), &Query::invoiceDetails).value(0)),
        RecordFields::of(invoice));

    // Rows saved in reverse order come back by row number.
    QList<InvoiceItem> items;
    for (int row = 2; row >= 0; --row) {
        InvoiceItem item = SampleRecords::invoiceItem(invoice.id);
        item.rowNumber = row;
        item.vatExcluded = row != 1;
        QVERIFY2(query->saveInvoiceItem(&item), qPrintable(query->lastError()));
        items.prepend(item);
    }
    items[1].text.clear();
    QVERIFY(query->saveInvoiceItem(&items[1]));
    QVERIFY(query->fetchInvoiceItems(invoice.id));
    const QList<InvoiceItem> loadedItems = readAll<InvoiceItem>(query.get(), &Query::invoiceItem);
    QCOMPARE(loadedItems.size(), 3);
    for (int row = 0; row < 3; ++row)
        QCOMPARE(RecordFields::of(loadedItems.at(row)), RecordFields::of(items.at(row)));
    QVERIFY(query->fetchInvoiceItem(items.at(2).id));
    QCOMPARE(readAll<InvoiceItem>(query.get(), &Query::invoiceItem).value(0).rowNumber, 2);
    QVERIFY(query->deleteInvoiceItem(items.at(0).id));
    QCOMPARE(count("invoice_item"), 2);
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
    const QList<Payment> payments = readAll<Payment>(query.get(), &Query::payment);
    QCOMPARE(RecordFields::of(payments.value(0)), RecordFields::of(earlier));
    QCOMPARE(RecordFields::of(payments.value(1)), RecordFields::of(later));
    later.bankAccountId = account.id;
    later.amount = 250;
    QVERIFY(query->savePayment(&later) && query->fetchPayment(later.id));
    QCOMPARE(RecordFields::of(readAll<Payment>(query.get(), &Query::payment).value(0)),
        RecordFields::of(later));
    QVERIFY(query->deletePayment(earlier.id));
    QCOMPARE(count("payment"), 1);
    QVERIFY(query->deletePayments(invoice.id) && query->deleteInvoice(invoice.id));
    QCOMPARE(count("payment") + count("invoice"), 0);

    Settings settings = SampleRecords::settings();
    QVERIFY2(query->updateSettings(&settings), qPrintable(query->lastError()));
    QVERIFY(query->fetchSettings());
    QCOMPARE(RecordFields::of(readAll<Settings>(query.get(), &Query::settings).value(0)),
        RecordFields::of(settings));
    // An empty logo and map are stored as empty, not NULL.
    settings = Settings();
    QVERIFY2(query->updateSettings(&settings), qPrintable(query->lastError()));
    QVERIFY(query->fetchSettings());
    QCOMPARE(RecordFields::of(readAll<Settings>(query.get(), &Query::settings).value(0)),
        RecordFields::of(settings));
    QCOMPARE(m_db->value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);
}

void StorageTest::invoiceWithoutDateIsRefused()
{
    const int customerId = addCustomer(1);
    std::unique_ptr<Query> query = newQuery();
    for (int missing = 0; missing < 2; ++missing) {
        Invoice invoice = makeInvoice(1, customerId);
        (missing ? invoice.dueDate : invoice.date) = QDate();
        // The NOT NULL columns refuse a missing date: the save reports it.
        QVERIFY(!query->saveInvoice(&invoice));
        QVERIFY(!query->lastError().isEmpty());
        QCOMPARE(invoice.id, -1);
    }
    QCOMPARE(count("invoice"), 0);
}

void StorageTest::newIdsFollowTheTable()
{
    const int customerId = addCustomer(1);
    std::unique_ptr<Query> query = newQuery();
    QCOMPARE(query->maxInvoiceNumber(), 0);
    QList<int> ids;
    for (int number : { 7, 1200, 35 }) {
        Invoice invoice = makeInvoice(number, customerId);
        QVERIFY(query->saveInvoice(&invoice));
        ids.append(invoice.id);
        // The id handed back is the one that the row really got.
        QCOMPARE(m_db->value(QStringLiteral("SELECT id FROM invoice WHERE number = %1").arg(number))
                     .toInt(),
            invoice.id);
    }
    QVERIFY(ids.at(0) < ids.at(1) && ids.at(1) < ids.at(2));
    QCOMPARE(query->maxInvoiceNumber(), 1200);

    if (m_db->backend() == TestDatabase::PostgreSQL) {
        auto* pgQuery = qobject_cast<PostgreSQLQuery*>(query.get());
        QVERIFY(pgQuery);
        QCOMPARE(pgQuery->sequenceValue(QStringLiteral("invoice_id_seq")), ids.at(2));
        // currval of a sequence not used in this session is an error.
        QCOMPARE(pgQuery->sequenceValue(QStringLiteral("payment_id_seq")), -1);
        QVERIFY(!pgQuery->lastError().isEmpty());
    }
}

// Six invoices of two customers. Effective delivery dates (the delivery date,
// else the invoice date): 1: 10.1., 2: 28.1., 3: 20.2., 4: 10.3., 5: 15.3.,
// 6: 15.2.
void StorageTest::addCriteriaFixture()
{
    m_fixture.customerIds = { addCustomer(1), addCustomer(2) };
    struct Row
    {
        int number, type, customer;
        QDate date, due, delivery;
        int total, balance;
        const char* reference;
        QStringList texts;
    };
    const QList<Row> rows {
        { 1, 0, 0, QDate(2024, 1, 10), QDate(2024, 1, 24), QDate(), 10000, 0, "1009",
            { "Kahvi", "Tee" } },
        { 2, 0, 1, QDate(2024, 2, 5), QDate(2024, 2, 19), QDate(2024, 1, 28), 5000, 5000, "1012",
            { "Kahvinkeitin 2 kpl" } },
        { 3, 2, 0, QDate(2024, 2, 20), QDate(2024, 3, 5), QDate(), -2000, 0, "1025",
            { "100% puuvillaa" } },
        { 4, 1, 1, QDate(2024, 3, 1), QDate(2024, 3, 15), QDate(2024, 3, 10), 700, 700, "1038",
            { "a_b" } },
        { 5, 3, 0, QDate(2024, 3, 15), QDate(2024, 3, 29), QDate(), 0, 300, "1041", { "axb" } },
        { 6, 0, 0, QDate(2024, 4, 2), QDate(2024, 4, 16), QDate(2024, 2, 15), 12345, 12345, "1054",
            { "KAHVI" } },
    };
    std::unique_ptr<Query> query = newQuery();
    // Stored out of number order so that the ordering is really done by SQL.
    for (int i : { 3, 0, 5, 1, 4, 2 }) {
        const Row& row = rows.at(i);
        Invoice invoice = makeInvoice(row.number, m_fixture.customerIds.at(row.customer));
        invoice.type = row.type;
        invoice.date = row.date;
        invoice.dueDate = row.due;
        invoice.deliveryDate = row.delivery;
        invoice.totalAmount = row.total;
        invoice.balance = row.balance;
        invoice.referenceNumber = QLatin1String(row.reference);
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
    row("due date from", [](C& c, const F&) { c.dueDateFrom = QDate(2024, 3, 15); }, { 4, 5, 6 });
    row("due date to", [](C& c, const F&) { c.dueDateTo = QDate(2024, 2, 19); }, { 1, 2 });
    row("delivery period, NULL falls back to the date",
        [](C& c, const F&) {
            c.deliveryDateFrom = QDate(2024, 2, 1), c.deliveryDateTo = QDate(2024, 2, 29);
        },
        { 3, 6 });
    row("delivery from", [](C& c, const F&) { c.deliveryDateFrom = QDate(2024, 3, 1); }, { 4, 5 });
    row("delivery to", [](C& c, const F&) { c.deliveryDateTo = QDate(2024, 1, 31); }, { 1, 2 });
    row("delivery period start after end",
        [](C& c, const F&) {
            c.deliveryDateFrom = QDate(2024, 3, 12), c.deliveryDateTo = QDate(2024, 3, 11);
        },
        {});
    row("delivery single day",
        [](C& c, const F&) { c.deliveryDateFrom = c.deliveryDateTo = QDate(2024, 3, 15); }, { 5 });
    row("number range from 0", [](C& c, const F&) { c.numberFrom = 0, c.numberTo = 2; }, { 1, 2 });
    row("number", [](C& c, const F&) { c.number = 4; }, { 4 });
    row("id", [](C& c, const F& f) { c.id = f.invoiceIds.value(3); }, { 3 });
    row("customer", [](C& c, const F& f) { c.customerId = f.customerIds.at(1); }, { 2, 4 });
    row("reference number", [](C& c, const F&) { c.referenceNumber = "1038"; }, { 4 });
    row("types 0 and 2", [](C& c, const F&) { c.types = 5; }, { 1, 2, 3, 6 });
    row("empty type mask", [](C& c, const F&) { c.types = 0; }, {});
    row("paid", [](C& c, const F&) { c.paymentStatus = 0; }, { 1, 3 });
    row("unpaid", [](C& c, const F&) { c.paymentStatus = 1; }, { 2, 4, 5, 6 });
    row(
        "both", [](C& c, const F&) { c.paymentStatus = 2; }, all);
    row(
        "balance date overrides payment status",
        [](C& c, const F&) { c.paymentStatus = 1, c.balanceDate = QDate(2024, 3, 1); }, all);
    row("limit", [](C& c, const F&) { c.limit = 2; }, { 1, 2 });
    row("latest two", [](C& c, const F&) { c.limit = 2, c.descending = true; }, { 6, 5 });
    row("text ignores case", [](C& c, const F&) { c.text = "kahvi"; }, { 1, 6 });
    row("text star and question mark", [](C& c, const F&) { c.text = "*k?hvi*"; }, { 1, 2, 6 });
    row("text typed underscore is a wildcard", [](C& c, const F&) { c.text = "a_b"; }, { 4, 5 });
    row("text backslash escapes", [](C& c, const F&) { c.text = "a\\_b"; }, { 4 });
    row("text typed percent is a wildcard", [](C& c, const F&) { c.text = "100%"; }, { 3 });
    row("text second row", [](C& c, const F&) { c.text = "Tee"; }, { 1 });
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
    auto numbersOf = [&](const QList<Invoice>& invoices) {
        QList<int> result;
        // A number whose id does not match shows up negative.
        for (const Invoice& invoice : invoices) {
            const bool sameId = invoice.id == m_fixture.invoiceIds.value(invoice.number);
            result.append(sameId ? invoice.number : -invoice.number);
        }
        return result;
    };
    QVERIFY2(query->fetchInvoiceSummaries(criteria), qPrintable(query->lastError()));
    QCOMPARE(numbersOf(readAll<Invoice>(query.get(), &Query::invoiceSummary)), numbers);
    QVERIFY2(query->fetchInvoiceDetails(criteria), qPrintable(query->lastError()));
    QCOMPARE(numbersOf(readAll<Invoice>(query.get(), &Query::invoiceDetails)), numbers);
    // The count has no limit.
    if (criteria.limit <= 0)
        QCOMPARE(query->fetchInvoiceCount(criteria), int(numbers.size()));

    // Rows of the selected invoices, by invoice number and row number.
    QVERIFY2(query->fetchInvoiceItems(criteria), qPrintable(query->lastError()));
    QList<int> itemInvoices;
    for (const InvoiceItem& item : readAll<InvoiceItem>(query.get(), &Query::invoiceItem))
        itemInvoices.append(m_fixture.invoiceIds.key(item.invoiceId));
    QList<int> expectedItems = numbers;
    std::sort(expectedItems.begin(), expectedItems.end());
    if (expectedItems.contains(1))
        expectedItems.prepend(1); // invoice 1 has two rows
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
    // Payments (amount: invoice number, date, account): 100: 1, 1.2., A;
    // 200: 1, 5.2., none; 300: 2, 3.2., B; 400: 4, 10.3., A; 500: 6, 1.4., B.
    row("all, by date", [](P&, I*, const F&) {}, { 100, 300, 200, 400, 500 });
    row("date from", [](P& p, I*, const F&) { p.dateFrom = QDate(2024, 2, 3); },
        { 300, 200, 400, 500 });
    row("date to", [](P& p, I*, const F&) { p.dateTo = QDate(2024, 2, 3); }, { 100, 300 });
    row("bank account", [](P& p, I*, const F& f) { p.bankAccountId = f.accountIds.at(1); },
        { 300, 500 });
    row("invoice", [](P& p, I*, const F& f) { p.invoiceId = f.invoiceIds.value(1); }, { 100, 200 });
    row("id range",
        [](P& p, I*, const F& f) {
            p.idFrom = f.paymentIds.value(200), p.idTo = f.paymentIds.value(400);
        },
        { 300, 200, 400 });
    // With invoice criteria: ordered by invoice number first.
    row("invoice criteria: cleared", [](P&, I*, const F&) {}, { 100, 200, 300, 400, 500 });
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
    for (const char* name : { "A", "B" }) {
        BankAccount account;
        account.name = QLatin1String(name);
        QVERIFY(query->saveBankAccount(&account));
        m_fixture.accountIds.append(account.id);
    }
    const QList<int>& accounts = m_fixture.accountIds;
    addPayment(1, 100, QDate(2024, 2, 1), accounts.at(0));
    addPayment(1, 200, QDate(2024, 2, 5));
    addPayment(2, 300, QDate(2024, 2, 3), accounts.at(1));
    addPayment(4, 400, QDate(2024, 3, 10), accounts.at(0));
    addPayment(6, 500, QDate(2024, 4, 1), accounts.at(1));

    PaymentCriteria paymentCriteria;
    InvoiceCriteria invoiceCriteria;
    const bool withInvoices = QByteArray(QTest::currentDataTag()).startsWith("invoice criteria");
    set(paymentCriteria, &invoiceCriteria, m_fixture);
    QVERIFY2(withInvoices ? query->fetchPayments(paymentCriteria, invoiceCriteria)
                          : query->fetchPayments(paymentCriteria),
        qPrintable(query->lastError()));
    QList<int> found;
    for (const Payment& payment : readAll<Payment>(query.get(), &Query::payment))
        found.append(payment.amount);
    QCOMPARE(found, amounts);
}

void StorageTest::invoicesAndPayments()
{
    addCriteriaFixture();
    // Same date for invoices 6 and 2: ordered by invoice number then.
    addPayment(6, 600, QDate(2024, 2, 1));
    addPayment(2, 200, QDate(2024, 2, 1));
    addPayment(1, 100, QDate(2024, 3, 1));
    InvoiceCriteria invoiceCriteria;
    invoiceCriteria.types = 1; // plain invoices
    std::unique_ptr<Query> query = newQuery();
    QVERIFY2(query->fetchInvoicesAndPayments(PaymentCriteria(), invoiceCriteria),
        qPrintable(query->lastError()));
    QList<int> order;
    while (query->next()) {
        Invoice invoice;
        Payment payment;
        query->invoiceAndPayment(&invoice, &payment);
        QCOMPARE(payment.invoiceId, invoice.id);
        QCOMPARE(payment.id, m_fixture.paymentIds.value(payment.amount));
        QCOMPARE(payment.amount, invoice.number * 100);
        QCOMPARE(payment.bankAccountId, -1);
        if (invoice.number == 2) {
            QCOMPARE(invoice.totalAmount, 5000);
            QCOMPARE(invoice.balance, 5000);
            QCOMPARE(invoice.customerId, m_fixture.customerIds.at(1));
            QCOMPARE(invoice.date, QDate(2024, 2, 5));
            QCOMPARE(invoice.deliveryDate, QDate(2024, 1, 28));
            QCOMPARE(invoice.dueDate, QDate(2024, 2, 19));
            QCOMPARE(payment.date, QDate(2024, 2, 1));
        }
        order.append(invoice.number);
    }
    QCOMPARE(order, QList<int>({ 2, 6, 1 }));
}

void StorageTest::balanceAtDate()
{
    addCriteriaFixture();
    // Invoice 6 (total 123.45): 20.00 on 1.5., 30.00 on 1.6.; invoice 2
    // (total 50.00): 50.00 on 1.7.
    addPayment(6, 2000, QDate(2024, 5, 1));
    addPayment(6, 3000, QDate(2024, 6, 1));
    addPayment(2, 5000, QDate(2024, 7, 1));

    std::unique_ptr<Query> query = newQuery();
    InvoiceCriteria criteria;
    criteria.numberFrom = 2;
    QVERIFY(query->fetchPaymentAmounts(criteria, QDate(2024, 6, 1)));
    QVERIFY(query->next());
    int invoiceId = -1;
    long long amount = 0;
    query->paymentAmount(&invoiceId, &amount);
    QCOMPARE(invoiceId, m_fixture.invoiceIds.value(6));
    QCOMPARE(amount, 5000LL);
    QVERIFY(!query->next());

    auto balances = [&] {
        QMap<int, int> result;
        for (const Invoice& invoice : readAll<Invoice>(query.get(), &Query::invoiceSummary))
            result.insert(invoice.number, invoice.balance);
        return result;
    };
    criteria.balanceDate = QDate(2024, 5, 15);
    QVERIFY(query->fetchInvoiceSummaries(criteria));
    QCOMPARE(balances().value(6), 12345); // the stored balance, until asked otherwise

    query->setInvoiceBalanceMode(true);
    for (const auto& check : { std::make_tuple(QDate(2024, 4, 30), 12345, 5000),
             std::make_tuple(QDate(2024, 5, 15), 10345, 5000),
             std::make_tuple(QDate(2024, 7, 1), 7345, 0) }) {
        criteria.balanceDate = std::get<0>(check);
        QVERIFY2(query->fetchInvoiceSummaries(criteria), qPrintable(query->lastError()));
        const QMap<int, int> found = balances();
        QCOMPARE(found.keys(), QList<int>({ 2, 3, 4, 5, 6 }));
        QCOMPARE(found.value(6), std::get<1>(check));
        QCOMPARE(found.value(2), std::get<2>(check));
        QCOMPARE(found.value(3), -2000); // no payments: the total
        QVERIFY(query->fetchInvoiceDetails(criteria));
        QCOMPARE(readAll<Invoice>(query.get(), &Query::invoiceDetails).value(0).balance,
            std::get<2>(check));
    }
}

void StorageTest::deleteBetween()
{
    addCriteriaFixture();
    for (int number = 1; number <= 6; ++number)
        addPayment(number, number, QDate(2024, 6, 1));
    const int low = qMin(m_fixture.invoiceIds.value(2), m_fixture.invoiceIds.value(4));
    const int high = qMax(m_fixture.invoiceIds.value(2), m_fixture.invoiceIds.value(4));
    int inRange = 0;
    for (int id : std::as_const(m_fixture.invoiceIds))
        inRange += (id >= low && id <= high) ? 1 : 0;

    // Rows and payments go first: PostgreSQL checks the foreign keys.
    std::unique_ptr<Query> query = newQuery();
    QVERIFY2(query->deleteInvoiceItemsBetween(low, high), qPrintable(query->lastError()));
    QVERIFY2(query->deletePaymentsBetween(low, high), qPrintable(query->lastError()));
    QVERIFY2(query->deleteInvoicesBetween(low, high), qPrintable(query->lastError()));
    QCOMPARE(count("invoice"), 6 - inRange);
    QCOMPARE(count("payment"), 6 - inRange);
    const QString between
        = QStringLiteral(" WHERE invoice_id BETWEEN %1 AND %2").arg(low).arg(high);
    QCOMPARE(count("invoice_item", between), 0);
    QVERIFY(count("invoice_item") > 0);
}

void StorageTest::transactions()
{
    const int customerId = addCustomer(1);
    Database* db = m_db->database();
    std::unique_ptr<Query> query = newQuery();

    QVERIFY(db->transaction());
    Invoice dropped = makeInvoice(1, customerId);
    QVERIFY(query->saveInvoice(&dropped));
    InvoiceItem item;
    item.invoiceId = dropped.id;
    QVERIFY(query->saveInvoiceItem(&item));
    QVERIFY(db->rollback());
    QCOMPARE(count("invoice") + count("invoice_item"), 0);

    QVERIFY(db->transaction());
    Invoice kept = makeInvoice(2, customerId);
    QVERIFY(query->saveInvoice(&kept));
    QVERIFY(db->commit());
    QCOMPARE(m_db->value(QStringLiteral("SELECT number FROM invoice")).toInt(), 2);
}

void StorageTest::logLines()
{
    QLoggingCategory::setFilterRules(QStringLiteral("veklari.database.debug=true"));
    LogCapture log("veklari.database");
    std::unique_ptr<Query> query = newQuery();
    QCOMPARE(query->maxInvoiceNumber(), 0);
    QVERIFY(
        log.contains(QStringLiteral("debug: Tietokantakysely: SELECT max(number) FROM invoice")));

    Database* db = m_db->database();
    QVERIFY(db->transaction() && db->commit());
    QVERIFY(db->transaction() && db->rollback());
    QVERIFY(log.contains(QStringLiteral("debug: Aloitetaan tietokantatapahtuma")));
    QVERIFY(log.contains(QStringLiteral("debug: Vahvistetaan tietokantatapahtuma")));
    QVERIFY(log.contains(QStringLiteral("debug: Peruutetaan tietokantatapahtuma")));

    log.clear();
    Invoice invoice = makeInvoice(1, -1);
    invoice.date = QDate();
    QVERIFY(!query->saveInvoice(&invoice));
    QVERIFY(log.containsPrefix(QStringLiteral("debug: Tietokantakysely: INSERT INTO invoice (id, "
                                              "customer_id, type, number, date,")));
    QVERIFY(log.contains(QStringLiteral("warning: Tietokantavirhe: ") + query->lastError()));
}

QTEST_GUILESS_MAIN(StorageTest)
#include "tst_storage.moc"
