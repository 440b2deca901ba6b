#include "core/invoiceitemtablemodel.h"
#include "core/invoicetablemodel.h"
#include "core/mainmodel.h"
#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "logcapture.h"
#include "recordfields.h"
#include "storage/database.h"
#include "storage/postgresqldatabase.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QtTest>

#include <functional>
#include <memory>

namespace {

using M = InvoiceItemTableModel;
using Cells = QList<QPair<int, QString>>;
using Entry = QVariantMap;

QStringList refusingRowTrigger(TestDatabase::Backend backend)
{
    if (backend == TestDatabase::SQLite) {
        return { QStringLiteral("CREATE TRIGGER refuse_row BEFORE INSERT ON invoice_item "
                                "WHEN NEW.text = 'KIELLETTY' BEGIN "
                                "SELECT RAISE(ABORT, 'rivi hylätty'); END") };
    }
    return { QStringLiteral("CREATE FUNCTION refuse_row() RETURNS trigger AS $$ BEGIN "
                            "IF NEW.text = 'KIELLETTY' THEN RAISE EXCEPTION 'rivi hylätty'; "
                            "END IF; RETURN NEW; END $$ LANGUAGE plpgsql"),
        QStringLiteral("CREATE TRIGGER refuse_row BEFORE INSERT ON invoice_item FOR EACH ROW "
                       "EXECUTE FUNCTION refuse_row()") };
}

const QDate fixedToday(2024, 6, 10);

// The 105 invoices of the search tests, described by their number.
struct Listed
{
    int number;
    QDate date;
    QDate dueDate;
    int balance;
    bool firstCustomer;
};

Listed listed(int number)
{
    return { number, fixedToday.addDays(-(number % 5)), fixedToday.addDays(number % 9 - 4),
        number % 4 == 0 ? 0 : number * 10, number % 2 == 1 };
}

} // namespace

class TestMainModelInvoices : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup() { closeSession(); }

    void openStatus_data();
    void openStatus();
    void fetchDataOnNewDatabase();
    void typicalRequest_data();
    void typicalRequest();
    void failedSaveWritesNothing_data() { typicalRequest_data(); }
    void failedSaveWritesNothing();
    void quickSearches_data();
    void quickSearches();
    void criteriaSurviveRestart();

private:
    bool openSession(TestDatabase& db);
    void closeSession();
    void addListFixture();
    QList<int> shownNumbers() const;
    int saveCustomer(const QString& name, int number);
    // Edits of a row as column-text pairs, inserting the row when it is new.
    void editRow(int row, const Cells& cells);
    void addPayment(int amount);

    QTemporaryDir m_dir;
    int m_counter = 0;
    QString m_iniFile;
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<MainModel> m_model;
};

void TestMainModelInvoices::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
}

void TestMainModelInvoices::init()
{
    m_iniFile = m_dir.filePath(QStringLiteral("veklari-%1.ini").arg(++m_counter));
}

// The program's own path: a configuration entry, open, fetch.
bool TestMainModelInvoices::openSession(TestDatabase& db)
{
    closeSession();
    if (!db.database() && !db.open())
        return false;
    QVariantMap entry = db.entry();
    entry.insert(QStringLiteral("number"), 1);
    db.close();

    m_registry = std::make_unique<Registry>();
    m_registry->loadSettings(m_iniFile);
    TestDatabase::writeEntries(m_registry->appSettings(), { entry });
    m_registry->setDatabaseNumber(1);
    m_model = std::make_unique<MainModel>(m_registry.get());
    m_model->setToday(fixedToday);
    const bool ok = m_model->openDatabase(0, false) == 0 && m_model->fetchData();
    if (!ok)
        qWarning() << m_model->lastError();
    return ok;
}

void TestMainModelInvoices::closeSession()
{
    m_model.reset();
    if (m_registry)
        m_registry->appSettings()->sync();
    m_registry.reset();
}

int TestMainModelInvoices::saveCustomer(const QString& name, int number)
{
    std::unique_ptr<Query> query(m_registry->database()->query());
    Customer customer;
    customer.number = number;
    customer.name = name;
    if (!query->saveCustomer(&customer) || !m_registry->fetchCustomers(query.get()))
        return -1;
    return customer.id;
}

void TestMainModelInvoices::editRow(int row, const Cells& cells)
{
    InvoiceItemTableModel* rows = m_model->invoiceItemTableModel();
    if (row >= rows->rowCount())
        QVERIFY(rows->insertRow(row));
    for (const auto& cell : cells)
        QVERIFY2(rows->setData(rows->index(row, cell.first), cell.second), qPrintable(cell.second));
}

void TestMainModelInvoices::addPayment(int amount)
{
    Payment payment;
    payment.date = fixedToday;
    payment.amount = amount;
    m_model->paymentTableModel()->addPayment(payment);
}

void TestMainModelInvoices::addListFixture()
{
    const int first = saveCustomer(QStringLiteral("Ensimmäinen"), 1);
    const int second = saveCustomer(QStringLiteral("Toinen"), 2);
    Database* database = m_registry->database();
    std::unique_ptr<Query> query(database->query());
    QVERIFY(database->transaction());
    for (int number = 1; number <= 105; ++number) {
        const Listed data = listed(number);
        Invoice invoice;
        invoice.customerId = data.firstCustomer ? first : second;
        invoice.number = number;
        invoice.date = data.date;
        invoice.dueDate = data.dueDate;
        invoice.totalAmount = number * 10;
        invoice.balance = data.balance;
        QVERIFY2(query->saveInvoice(&invoice), qPrintable(query->lastError()));
    }
    QVERIFY(database->commit());
    QVERIFY(m_model->refresh());
}

QList<int> TestMainModelInvoices::shownNumbers() const
{
    QList<int> numbers;
    for (int row = 0; row < m_model->invoiceCount(); ++row)
        numbers.append(m_model->invoiceTableModel()->invoiceAt(row)->number);
    return numbers;
}

void TestMainModelInvoices::openStatus_data()
{
    QTest::addColumn<Entry>("entry");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("postgreSQL");
    // create is false: a new SQLite file is made all the same.
    QTest::addRow("unknown type is SQLite")
        << Entry { { "type", "mysql" }, { "filename", "new" } } << 0 << false;
    QTest::addRow("nothing listens on the port") << Entry { { "type", "PostgreSQL" },
        { "host", "127.0.0.1" }, { "port", 1 }, { "databaseName", "x" }, { "filename", "unused" } }
                                                 << -1 << true;
    QTest::addRow("not a database") << Entry { { "filename", "garbage" } } << -1 << false;
    QTest::addRow("no file name") << Entry { { "filename", "" } } << -2 << false;
}

void TestMainModelInvoices::openStatus()
{
    QFETCH(Entry, entry);
    QFETCH(int, status);
    QFETCH(bool, postgreSQL);
    const QString fileName = entry.value("filename").toString();
    if (!fileName.isEmpty())
        entry.insert(QStringLiteral("filename"), m_dir.filePath(fileName));
    QFile garbage(m_dir.filePath(QStringLiteral("garbage")));
    QVERIFY(garbage.open(QIODevice::WriteOnly) && garbage.write(QByteArray(4096, 'x')) == 4096);
    garbage.close();
    Registry registry;
    registry.loadSettings(m_iniFile);
    MainModel model(&registry);
    QVERIFY(!model.fetchData() && !model.lastError().isEmpty()); // nothing open yet
    // The index picks the second entry.
    TestDatabase::writeEntries(
        registry.appSettings(), { Entry { { "filename", "first" } }, entry });
    QCOMPARE(model.openDatabase(1, fileName.isEmpty()), status);
    QCOMPARE(model.lastError().isEmpty(), status == 0);
    QCOMPARE(bool(qobject_cast<PostgreSQLDatabase*>(registry.database())), postgreSQL);
    // Only a successful SQLite open leaves a new file behind.
    if (status == 0)
        QVERIFY(QFileInfo::exists(entry.value("filename").toString()));
    QVERIFY(!QFileInfo::exists(m_dir.filePath(QStringLiteral("unused"))));
    // Connected even after a failure, until the caller closes.
    QVERIFY(registry.isConnected());
    QVERIFY(model.closeDatabase());
    QVERIFY(!registry.isConnected() && !registry.database());
}

void TestMainModelInvoices::fetchDataOnNewDatabase()
{
    TestDatabase db(TestDatabase::SQLite, QStringLiteral("Toiminimi Äyräs"));
    QVERIFY(openSession(db));
    LogCapture log("veklari.ui");
    QVERIFY2(m_model->fetchData(), qPrintable(m_model->lastError()));
    // One line a step, the invoices last.
    QCOMPARE(log.lines().size(), 6);
    QCOMPARE(log.lines().last(), QStringLiteral("debug: Haetaan laskujen tiedot"));
    // A new database holds its company name and the product of interest rows.
    QCOMPARE(m_registry->settings()->sellerName, QStringLiteral("Toiminimi Äyräs"));
    QCOMPARE(m_registry->productCount(), 1);
    QCOMPARE(m_registry->customerCount() + m_registry->bankAccountCount()
            + m_registry->printScriptCount() + m_model->invoiceCount(),
        0);
    // Closing clears the lists.
    QVERIFY(m_model->closeDatabase());
    QCOMPARE(m_registry->productCount(), 0);
}

void TestMainModelInvoices::typicalRequest_data()
{
    QTest::addColumn<int>("backend");
    QTest::addRow("SQLite") << int(TestDatabase::SQLite);
    QTest::addRow("PostgreSQL") << int(TestDatabase::PostgreSQL);
}

void TestMainModelInvoices::typicalRequest()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY(openSession(db));
    // 24.80 with VAT and 10.00 without.
    std::unique_ptr<Query> query(m_registry->database()->query());
    for (const auto& [number, amount, vatRate] :
        { std::tuple("101", 248000, 2400), std::tuple("202", 100000, 2550) }) {
        Product product;
        product.number = QLatin1String(number);
        product.amount = amount;
        product.vatRate = vatRate;
        product.vatExcluded = vatRate == 2550;
        QVERIFY(query->saveProduct(&product));
    }
    QVERIFY(m_registry->fetchProducts(query.get()));
    const int customerId = saveCustomer(QStringLiteral("Asiakas Oy"), 20);

    // The first invoice of a database: number 1, reference 100 and its 7-3-1 check digit.
    QCOMPARE(m_model->createInvoice(), 0);
    QVERIFY(m_model->isEditable());
    Invoice* invoice = m_model->invoice();
    QCOMPARE(invoice->number, 1);
    QCOMPARE(invoice->referenceNumber, QStringLiteral("1009"));
    invoice->customerId = customerId;
    editRow(0, { { M::ProductColumn, "101" }, { M::QuantityColumn, "3" } });
    editRow(1,
        { { M::ProductColumn, "202" }, { M::QuantityColumn, "2" }, { M::TextColumn, "Kaapelit" } });
    addPayment(1000);

    QVERIFY2(m_model->saveInvoice(), qPrintable(m_model->lastError()));
    // 3 x 24.80, and 2 x 10.00 with 25.5 % VAT.
    const int total = 3 * 2480 + 2 * 1255;
    const int id = invoice->id;
    const QString balanceSql = QStringLiteral("SELECT balance FROM invoice WHERE id = %1").arg(id);
    QCOMPARE(
        QList<int>({ invoice->totalAmount, m_model->invoiceTableModel()->invoiceAt(0)->balance,
            db.value(balanceSql).toInt(), db.value("SELECT count(*) FROM invoice_item").toInt(),
            db.value("SELECT sum(amount) FROM payment").toInt() }),
        QList<int>({ total, total - 1000, total - 1000, 2, 1000 }));

    // Reloaded in a new session, as after a restart: read-only, since it is
    // not the last invoice of this session.
    Invoice saved;
    invoice->copy(&saved);
    QVERIFY(openSession(db));
    QVERIFY2(m_model->goToInvoice(0), qPrintable(m_model->lastError()));
    invoice = m_model->invoice();
    InvoiceItemTableModel* rows = m_model->invoiceItemTableModel();
    QCOMPARE(RecordFields::of(*invoice), RecordFields::of(saved));
    QCOMPARE(invoice->dueDate, fixedToday.addDays(14));
    QCOMPARE(rows->invoiceItemAt(1)->text, QStringLiteral("Kaapelit"));
    QCOMPARE(rows->totalAmountVatIncluded(), qint64(total));
    QVERIFY(!m_model->isEditable() && !rows->isEditable());

    // The balance follows the payments, in the list and stored.
    m_model->setLastInvoiceId(id);
    m_model->setEditable(true);
    QVERIFY(m_model->paymentTableModel()->removeRow(0));
    m_model->updateBalance();
    QCOMPARE(m_model->invoiceTableModel()->invoiceAt(0)->balance, total);
    addPayment(total);
    QVERIFY2(m_model->saveInvoice(), qPrintable(m_model->lastError()));
    QCOMPARE(db.value(balanceSql).toInt(), 0);
}

void TestMainModelInvoices::failedSaveWritesNothing()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    QVERIFY2(
        db.exec(refusingRowTrigger(TestDatabase::Backend(backend))), qPrintable(db.lastError()));
    QVERIFY(openSession(db));
    const int customerId = saveCustomer(QStringLiteral("Asiakas"), 1);

    QVERIFY(m_model->createInvoice() >= 0);
    m_model->invoice()->customerId = customerId;
    for (int row = 0; row < 3; ++row) {
        editRow(row,
            { { M::TextColumn, row == 1 ? "KIELLETTY" : "rivi" }, { M::PriceColumn, "10" },
                { M::QuantityColumn, "1" } });
    }
    addPayment(500);
    QVERIFY(!m_model->saveInvoice());
    QVERIFY2(m_model->lastError().contains(QStringLiteral("rivi hylätty")),
        qPrintable(m_model->lastError()));
    QCOMPARE(db.value("SELECT (SELECT count(*) FROM invoice) + (SELECT count(*) FROM "
                      "invoice_item) + (SELECT count(*) FROM payment)")
                 .toInt(),
        0);
    QCOMPARE(m_model->invoice()->id + m_model->invoiceCount(), -1);
    QVERIFY(m_model->invoiceItemTableModel()->isChanged());

    // Corrected, the same invoice saves whole: every row and payment once.
    editRow(1, { { M::TextColumn, "sallittu" } });
    QVERIFY2(m_model->saveInvoice(), qPrintable(m_model->lastError()));
    QCOMPARE(db.value("SELECT (SELECT count(*) FROM invoice_item) * 10 + (SELECT count(*) "
                      "FROM payment)")
                 .toInt(),
        31);
    QCOMPARE(db.value("SELECT total_amount FROM invoice").toInt(), 3000);

    // A refused row in an update leaves the stored invoice as it was.
    editRow(
        3, { { M::TextColumn, "KIELLETTY" }, { M::PriceColumn, "1" }, { M::QuantityColumn, "1" } });
    editRow(0, { { M::TextColumn, "muutettu" } });
    QVERIFY(!m_model->saveInvoice());
    QCOMPARE(db.value("SELECT total_amount FROM invoice").toInt(), 3000);
    QCOMPARE(db.value("SELECT count(*) FROM invoice_item WHERE text = 'muutettu'").toInt(), 0);
}

void TestMainModelInvoices::quickSearches_data()
{
    using Expected = std::function<bool(const Listed&)>;
    QTest::addColumn<int>("n");
    QTest::addColumn<Expected>("expected");
    auto row = [](const char* name, int n, const Expected& expected) {
        QTest::addRow("%s", name) << n << expected;
    };
    row("latest", 0, [](const Listed& invoice) { return invoice.number > 5; });
    row("due", 1, [](const Listed& invoice) { return invoice.dueDate >= fixedToday; });
    row("open", 2, [](const Listed& invoice) { return invoice.balance != 0; });
    row("today", 3, [](const Listed& invoice) { return invoice.date == fixedToday; });
    row("customer", 4, [](const Listed& invoice) { return !invoice.firstCustomer; });
    row("other number", 9, [](const Listed&) { return true; });
}

void TestMainModelInvoices::quickSearches()
{
    QFETCH(int, n);
    QFETCH(std::function<bool(const Listed&)>, expected);
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    addListFixture();
    // The current invoice, number 8, belongs to the second customer.
    QVERIFY(m_model->goToInvoice(7));
    QCOMPARE(m_model->invoice()->number, 8);

    QVERIFY2(m_model->quickSearch(n), qPrintable(m_model->lastError()));
    QCOMPARE(m_model->currentQuickSearch(), n);
    QList<int> numbers;
    for (int number = 1; number <= 105; ++number) {
        if (expected(listed(number)))
            numbers.append(number);
    }
    QCOMPARE(shownNumbers(), numbers);
    QCOMPARE(m_model->invoiceIndex(), numbers.indexOf(8));
}

void TestMainModelInvoices::criteriaSurviveRestart()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    addListFixture();
    InvoiceCriteria* criteria = m_model->criteria();
    criteria->dateFrom = QDate(2024, 6, 7);
    criteria->dueDateTo = QDate(2024, 6, 12);
    criteria->deliveryDateFrom = QDate(2024, 1, 1);
    criteria->balanceDate = QDate(2024, 5, 31);
    criteria->numberFrom = 3;
    criteria->numberTo = 90;
    criteria->customerId = m_registry->customerAt(0)->id;
    criteria->types = 1;
    QVERIFY(m_model->search());
    QCOMPARE(m_model->currentQuickSearch(), -1);
    QList<int> expected;
    for (int number = 3; number <= 90; ++number) {
        const Listed data = listed(number);
        if (data.firstCustomer && data.date >= criteria->dateFrom
            && data.dueDate <= criteria->dueDateTo)
            expected.append(number);
    }
    QCOMPARE(shownNumbers(), expected);
    InvoiceCriteria saved;
    criteria->copy(&saved);

    QVERIFY(openSession(db));
    QCOMPARE(m_model->currentQuickSearch(), -1);
    QCOMPARE(m_model->lastCriteria(), m_model->criteria());
    QCOMPARE(RecordFields::of(*m_model->criteria()), RecordFields::of(saved));
    QCOMPARE(shownNumbers(), expected);

    QVERIFY(m_model->quickSearch(3));
    QVERIFY(openSession(db));
    QCOMPARE(m_model->currentQuickSearch(), 3);
    QCOMPARE(m_model->lastCriteria()->dateFrom, fixedToday);
}

QTEST_GUILESS_MAIN(TestMainModelInvoices)
#include "tst_mainmodelinvoices.moc"
