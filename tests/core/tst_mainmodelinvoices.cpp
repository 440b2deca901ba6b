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
#include "storage/query.h"
#include "testdatabase.h"

#include <QSortFilterProxyModel>
#include <QtTest>

#include <functional>
#include <memory>

namespace {

// The Finnish reference check digit: weights 7, 3, 1 from the right.
QString withCheckDigit(const QString& digits)
{
    const int weights[] = { 7, 3, 1 };
    int sum = 0;
    for (int i = 0; i < digits.size(); ++i)
        sum += digits.at(digits.size() - 1 - i).digitValue() * weights[i % 3];
    return digits + QString::number((10 - sum % 10) % 10);
}

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

// The fixture invoices of the search tests, described by their number.
struct Listed
{
    int number;
    QDate date;
    QDate dueDate;
    int balance;
    bool firstCustomer;
};

const QDate fixedToday(2024, 6, 10);

int intValue(TestDatabase& db, const QString& sql)
{
    return db.value(sql).toInt();
}

Listed listed(int number)
{
    Listed result;
    result.number = number;
    result.date = fixedToday.addDays(-(number % 5));
    result.dueDate = fixedToday.addDays(number % 9 - 4);
    result.balance = number % 4 == 0 ? 0 : number * 10;
    result.firstCustomer = number % 2 == 1;
    return result;
}

} // namespace

class TestMainModelInvoices : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void typicalRequest_data();
    void typicalRequest();
    void firstInvoiceInEmptyDatabase();
    void referenceNumberSources_data();
    void referenceNumberSources();
    void noticeTextsNeedCustomer();
    void dueDateFollowsTerms_data();
    void dueDateFollowsTerms();
    void failedSaveWritesNothing_data();
    void failedSaveWritesNothing();
    void removeSavedInvoice_data();
    void removeSavedInvoice();
    void removeNeverSavedInvoice();
    void quickSearches_data();
    void quickSearches();
    void searchCriteria();
    void criteriaSurviveRestart();
    void lastInvoiceStaysEditable();
    void missingInvoice();
    void numberInUse();
    void settingsAndCustomerReference();
    void proxySortsByValue();

private:
    bool openSession(TestDatabase& db);
    void closeSession();
    void addListFixture();
    QList<int> shownNumbers() const;
    int saveCustomer(const QString& name, int number, const QString& reference = QString());
    void saveProduct(const QString& number, long long amount, int vatRate, bool vatExcluded);
    void setCell(int row, int column, const QString& text);

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

void TestMainModelInvoices::cleanup()
{
    closeSession();
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
    if (m_model->openDatabase(0, false) != 0) {
        qWarning() << m_model->lastError();
        return false;
    }
    if (!m_model->fetchData()) {
        qWarning() << m_model->lastError();
        return false;
    }
    return true;
}

void TestMainModelInvoices::closeSession()
{
    m_model.reset();
    if (m_registry)
        m_registry->appSettings()->sync();
    m_registry.reset();
}

int TestMainModelInvoices::saveCustomer(const QString& name, int number, const QString& reference)
{
    std::unique_ptr<Query> query(m_registry->database()->query());
    Customer customer;
    customer.number = number;
    customer.name = name;
    customer.referenceNumber = reference;
    if (!query->saveCustomer(&customer) || !m_registry->fetchCustomers(query.get()))
        return -1;
    return customer.id;
}

void TestMainModelInvoices::saveProduct(
    const QString& number, long long amount, int vatRate, bool vatExcluded)
{
    std::unique_ptr<Query> query(m_registry->database()->query());
    Product product;
    product.number = number;
    product.name = QStringLiteral("Tuote %1").arg(number);
    product.unitCode = QStringLiteral("kpl");
    product.amount = amount;
    product.vatRate = vatRate;
    product.vatExcluded = vatExcluded;
    QVERIFY2(query->saveProduct(&product), qPrintable(query->lastError()));
    QVERIFY(m_registry->fetchProducts(query.get()));
}

void TestMainModelInvoices::setCell(int row, int column, const QString& text)
{
    InvoiceItemTableModel* rows = m_model->invoiceItemTableModel();
    QVERIFY2(rows->setData(rows->index(row, column), text), qPrintable(text));
}

void TestMainModelInvoices::addListFixture()
{
    const int first = saveCustomer(QStringLiteral("Ensimmäinen"), 1);
    const int second = saveCustomer(QStringLiteral("Toinen"), 2);
    QVERIFY(first >= 0 && second >= 0);
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
}

QList<int> TestMainModelInvoices::shownNumbers() const
{
    QList<int> numbers;
    for (int row = 0; row < m_model->invoiceCount(); ++row)
        numbers.append(m_model->invoiceTableModel()->invoiceAt(row)->number);
    return numbers;
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
    saveProduct(QStringLiteral("101"), 248000, 2400, false); // 24.80 with VAT
    saveProduct(QStringLiteral("202"), 100000, 2550, true); // 10.00 without VAT
    const int customerId = saveCustomer(QStringLiteral("Asiakas Oy"), 20);

    QCOMPARE(m_model->createInvoice(), 0);
    QVERIFY(m_model->isEditable());
    QCOMPARE(m_model->invoiceIndex(), -1);
    Invoice* invoice = m_model->invoice();
    invoice->customerId = customerId;
    m_model->updateReferenceNumber();
    InvoiceItemTableModel* rows = m_model->invoiceItemTableModel();
    QVERIFY(rows->insertRow(0));
    setCell(0, InvoiceItemTableModel::ProductColumn, QStringLiteral("101"));
    setCell(0, InvoiceItemTableModel::QuantityColumn, QStringLiteral("3"));
    QVERIFY(rows->insertRow(1));
    setCell(1, InvoiceItemTableModel::ProductColumn, QStringLiteral("202"));
    setCell(1, InvoiceItemTableModel::QuantityColumn, QStringLiteral("2"));
    setCell(1, InvoiceItemTableModel::TextColumn, QStringLiteral("Kaapelit"));
    Payment payment;
    payment.date = QDate(2024, 6, 12);
    payment.amount = 1000;
    m_model->paymentTableModel()->addPayment(payment);

    QVERIFY2(m_model->saveInvoice(), qPrintable(m_model->lastError()));
    // 3 x 24.80, and 2 x 10.00 with 25.5 % VAT.
    const int total = 3 * 2480 + 2 * 1255;
    const int id = invoice->id;
    QVERIFY(id >= 0);
    QCOMPARE(invoice->totalAmount, total);
    QCOMPARE(invoice->balance, total - 1000);
    QCOMPARE(m_model->lastInvoiceId(), id);
    QCOMPARE(m_model->invoiceCount(), 1);
    QCOMPARE(m_model->invoiceIndex(), 0);
    QCOMPARE(m_model->invoiceTableModel()->invoiceAt(0)->balance, total - 1000);
    QVERIFY(!rows->isChanged());
    QVERIFY(!m_model->paymentTableModel()->isChanged());

    const QString where = QStringLiteral(" WHERE invoice_id = %1").arg(id);
    QCOMPARE(intValue(db, QStringLiteral("SELECT total_amount FROM invoice WHERE id = %1").arg(id)),
        total);
    QCOMPARE(intValue(db, QStringLiteral("SELECT balance FROM invoice WHERE id = %1").arg(id)),
        total - 1000);
    QCOMPARE(intValue(db, QStringLiteral("SELECT count(*) FROM invoice_item") + where), 2);
    QCOMPARE(intValue(db, QStringLiteral("SELECT sum(amount) FROM payment") + where), 1000);

    // Reload in a new session, as after a restart.
    Invoice saved;
    invoice->copy(&saved);
    QVERIFY(openSession(db));
    QCOMPARE(m_model->invoiceCount(), 1);
    QVERIFY2(m_model->goToInvoice(0), qPrintable(m_model->lastError()));
    invoice = m_model->invoice();
    rows = m_model->invoiceItemTableModel();
    QCOMPARE(RecordFields::of(*invoice), RecordFields::of(saved));
    QCOMPARE(invoice->customerId, customerId);
    QCOMPARE(invoice->dueDate, fixedToday.addDays(14));
    QCOMPARE(invoice->paymentTerms, QStringLiteral("14 päivää netto"));
    QCOMPARE(invoice->interestOnArrears, 800);
    QCOMPARE(rows->rowCount(), 2);
    QCOMPARE(rows->invoiceItemAt(1)->text, QStringLiteral("Kaapelit"));
    QCOMPARE(rows->invoiceItemAt(0)->productName, QStringLiteral("Tuote 101"));
    QCOMPARE(rows->totalAmountVatIncluded(), qint64(total));
    QCOMPARE(m_model->paymentTableModel()->rowCount(), 1);
    // Not the last invoice of this session: read-only.
    QVERIFY(!m_model->isEditable());
    QVERIFY(!rows->isEditable());

    // The balance follows the payments.
    m_model->setLastInvoiceId(id);
    m_model->setEditable(true);
    PaymentTableModel* payments = m_model->paymentTableModel();
    payment.amount = total - 1000;
    payments->addPayment(payment);
    QVERIFY2(m_model->saveInvoice(), qPrintable(m_model->lastError()));
    QCOMPARE(invoice->balance, 0);
    QCOMPARE(m_model->invoiceTableModel()->invoiceAt(0)->balance, 0);
    QCOMPARE(intValue(db, QStringLiteral("SELECT balance FROM invoice WHERE id = %1").arg(id)), 0);
    QVERIFY(payments->removeRow(0));
    m_model->updateTotalAmount();
    m_model->updateBalance();
    QCOMPARE(invoice->balance, 1000);
    QCOMPARE(m_model->invoiceTableModel()->invoiceAt(0)->balance, 1000);
    QVERIFY(m_model->saveInvoice());
    QCOMPARE(intValue(db, QStringLiteral("SELECT count(*) FROM payment") + where), 1);
    QCOMPARE(
        intValue(db, QStringLiteral("SELECT balance FROM invoice WHERE id = %1").arg(id)), 1000);
}

void TestMainModelInvoices::firstInvoiceInEmptyDatabase()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    QCOMPARE(m_model->createInvoice(), 0);
    QCOMPARE(m_model->invoice()->number, 1);
    QCOMPARE(m_model->invoice()->id, -1);
    QCOMPARE(m_model->invoice()->customerId, -1);
    QCOMPARE(m_model->invoice()->referenceNumber, QStringLiteral("1009"));
    QCOMPARE(m_model->invoice()->referenceNumber, withCheckDigit(QStringLiteral("100")));
}

void TestMainModelInvoices::referenceNumberSources_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("customerReference");
    QTest::addColumn<QString>("expected");

    QTest::addRow("default") << ""
                             << ""
                             << "" << withCheckDigit(QStringLiteral("4200"));
    QTest::addRow("suffix 5") << "5"
                              << ""
                              << "" << withCheckDigit(QStringLiteral("4205"));
    QTest::addRow("template wins") << "5"
                                   << "9{C3}{I}"
                                   << "" << withCheckDigit(QStringLiteral("903042"));
    QTest::addRow("customer's own") << "5"
                                    << "9{I}"
                                    << "12345672"
                                    << "12345672";
}

void TestMainModelInvoices::referenceNumberSources()
{
    QFETCH(QString, suffix);
    QFETCH(QString, pattern);
    QFETCH(QString, customerReference);
    QFETCH(QString, expected);

    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    const int customerId = saveCustomer(QStringLiteral("Viite Oy"), 30, customerReference);
    Settings* settings = m_registry->settings();
    settings->setPropertyIfNotEmpty(QStringLiteral("settings/referenceNumberSuffix"), suffix);
    settings->setPropertyIfNotEmpty(QStringLiteral("settings/referenceNumberTemplate"), pattern);
    QVERIFY(m_model->createInvoice() >= 0);
    m_model->invoice()->number = 42;
    m_model->invoice()->customerId = customerId;
    m_model->updateReferenceNumber();
    QCOMPARE(m_model->invoice()->referenceNumber, expected);
    QCOMPARE(m_model->buildReferenceNumber1(), customerReference);
}

void TestMainModelInvoices::noticeTextsNeedCustomer()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    const int customerId = saveCustomer(QStringLiteral("Meikäläinen"), 31);
    m_registry->settings()->setProperty(
        QStringLiteral("invoiceForm/noticeText1"), QStringLiteral("Hei {{customer/name}}!"));
    m_registry->settings()->setProperty(
        QStringLiteral("invoiceForm/noticeText2"), QStringLiteral("Lasku {I}"));
    QVERIFY(m_model->createInvoice() >= 0);
    QVERIFY(!m_model->invoice()->properties.contains(QStringLiteral("t1")));

    m_model->invoice()->customerId = customerId;
    m_model->updateReferenceNumber();
    QCOMPARE(m_model->invoice()->property(QStringLiteral("t1")).toString(),
        QStringLiteral("Hei Meikäläinen!"));
    QCOMPARE(
        m_model->invoice()->property(QStringLiteral("t2")).toString(), QStringLiteral("Lasku 1"));
}

void TestMainModelInvoices::dueDateFollowsTerms_data()
{
    QTest::addColumn<QString>("terms");
    QTest::addColumn<int>("days");

    QTest::addRow("14 days") << "14 päivää netto" << 14;
    QTest::addRow("no number keeps the date") << "käteinen" << 0;
}

void TestMainModelInvoices::dueDateFollowsTerms()
{
    QFETCH(QString, terms);
    QFETCH(int, days);

    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    m_registry->settings()->setProperty(QStringLiteral("settings/paymentTerms"), terms);
    QVERIFY(m_model->createInvoice() >= 0);
    QCOMPARE(m_model->invoice()->paymentTerms, terms);
    QCOMPARE(m_model->invoice()->dueDate, fixedToday.addDays(days));

    // A new invoice is always saveable: its due date is never empty.
    m_model->invoice()->customerId = saveCustomer(QStringLiteral("A"), 1);
    QVERIFY2(m_model->saveInvoice(), qPrintable(m_model->lastError()));
}

void TestMainModelInvoices::failedSaveWritesNothing_data()
{
    typicalRequest_data();
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
    InvoiceItemTableModel* rows = m_model->invoiceItemTableModel();
    for (int row = 0; row < 3; ++row) {
        QVERIFY(rows->insertRow(row));
        setCell(row, InvoiceItemTableModel::TextColumn,
            row == 1 ? QStringLiteral("KIELLETTY") : QStringLiteral("rivi %1").arg(row));
        setCell(row, InvoiceItemTableModel::PriceColumn, QStringLiteral("10"));
        setCell(row, InvoiceItemTableModel::QuantityColumn, QStringLiteral("1"));
    }
    Payment payment;
    payment.date = fixedToday;
    payment.amount = 500;
    m_model->paymentTableModel()->addPayment(payment);

    QVERIFY(!m_model->saveInvoice());
    QVERIFY2(m_model->lastError().contains(QStringLiteral("rivi hylätty")),
        qPrintable(m_model->lastError()));
    for (const char* table : { "invoice", "invoice_item", "payment" })
        QCOMPARE(
            intValue(db, QStringLiteral("SELECT count(*) FROM %1").arg(QLatin1String(table))), 0);
    QCOMPARE(m_model->invoice()->id, -1);
    QCOMPARE(m_model->invoiceCount(), 0);
    QCOMPARE(m_model->lastInvoiceId(), -1);
    QVERIFY(rows->isChanged());

    // Corrected, the same invoice saves whole: every row and payment once.
    setCell(1, InvoiceItemTableModel::TextColumn, QStringLiteral("sallittu"));
    QVERIFY2(m_model->saveInvoice(), qPrintable(m_model->lastError()));
    QCOMPARE(intValue(db, QStringLiteral("SELECT count(*) FROM invoice")), 1);
    QCOMPARE(intValue(db,
                 QStringLiteral("SELECT count(*) FROM invoice_item WHERE invoice_id = %1")
                     .arg(m_model->invoice()->id)),
        3);
    QCOMPARE(intValue(db,
                 QStringLiteral("SELECT count(*) FROM payment WHERE invoice_id = %1")
                     .arg(m_model->invoice()->id)),
        1);
    QCOMPARE(intValue(db, QStringLiteral("SELECT total_amount FROM invoice")), 3000);

    // A refused row in an update leaves the stored invoice as it was.
    QVERIFY(rows->insertRow(3));
    setCell(3, InvoiceItemTableModel::TextColumn, QStringLiteral("KIELLETTY"));
    setCell(3, InvoiceItemTableModel::PriceColumn, QStringLiteral("1"));
    setCell(3, InvoiceItemTableModel::QuantityColumn, QStringLiteral("1"));
    setCell(0, InvoiceItemTableModel::TextColumn, QStringLiteral("muutettu"));
    QVERIFY(!m_model->saveInvoice());
    QCOMPARE(intValue(db, QStringLiteral("SELECT total_amount FROM invoice")), 3000);
    QCOMPARE(
        intValue(db, QStringLiteral("SELECT count(*) FROM invoice_item WHERE text = 'muutettu'")),
        0);
}

void TestMainModelInvoices::removeSavedInvoice_data()
{
    typicalRequest_data();
}

void TestMainModelInvoices::removeSavedInvoice()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY(openSession(db));
    const int customerId = saveCustomer(QStringLiteral("Asiakas"), 1);
    for (int i = 0; i < 2; ++i) {
        QVERIFY(m_model->createInvoice() >= 0);
        m_model->invoice()->customerId = customerId;
        QVERIFY(m_model->invoiceItemTableModel()->insertRow(0));
        setCell(0, InvoiceItemTableModel::TextColumn, QStringLiteral("rivi"));
        Payment payment;
        payment.date = fixedToday;
        payment.amount = 100;
        m_model->paymentTableModel()->addPayment(payment);
        QVERIFY2(m_model->saveInvoice(), qPrintable(m_model->lastError()));
    }
    const int keptId = m_model->invoiceTableModel()->invoiceAt(0)->id;
    const int removedId = m_model->invoice()->id;
    QCOMPARE(m_model->invoiceIndex(), 1);

    QVERIFY2(m_model->removeInvoice(), qPrintable(m_model->lastError()));
    QCOMPARE(m_model->invoice()->id, MainModel::removedInvoiceId);
    QCOMPARE(m_model->invoiceCount(), 1);
    QCOMPARE(m_model->invoiceTableModel()->invoiceAt(0)->id, keptId);
    QCOMPARE(m_model->invoiceItemTableModel()->rowCount(), 0);
    for (const char* table : { "invoice_item", "payment" }) {
        QCOMPARE(intValue(db,
                     QStringLiteral("SELECT count(*) FROM %1 WHERE invoice_id = %2")
                         .arg(QLatin1String(table))
                         .arg(removedId)),
            0);
        QCOMPARE(intValue(db,
                     QStringLiteral("SELECT count(*) FROM %1 WHERE invoice_id = %2")
                         .arg(QLatin1String(table))
                         .arg(keptId)),
            1);
    }
    QCOMPARE(intValue(db, QStringLiteral("SELECT count(*) FROM invoice")), 1);
}

void TestMainModelInvoices::removeNeverSavedInvoice()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    QVERIFY(m_model->createInvoice() >= 0);
    QVERIFY(m_model->invoiceItemTableModel()->insertRow(0));
    LogCapture log("veklari.database");
    QVERIFY(m_model->removeInvoice());
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(m_model->invoice()->id, 2147483647);
    QCOMPARE(m_model->invoiceItemTableModel()->rowCount(), 0);
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
    QVERIFY(m_model->refresh());
    QCOMPARE(m_model->invoiceCount(), 105);
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
    QVERIFY(!numbers.isEmpty());
    QCOMPARE(shownNumbers(), numbers);
    QCOMPARE(m_model->invoiceIndex(), numbers.indexOf(8));
}

void TestMainModelInvoices::searchCriteria()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    addListFixture();
    InvoiceCriteria* criteria = m_model->criteria();
    criteria->numberFrom = 10;
    criteria->numberTo = 40;
    criteria->paymentStatus = 0;
    QVERIFY(m_model->search());
    QCOMPARE(m_model->currentQuickSearch(), -1);
    QCOMPARE(m_model->lastCriteria(), criteria);
    QList<int> numbers;
    for (int number = 10; number <= 40; ++number) {
        if (listed(number).balance == 0)
            numbers.append(number);
    }
    QCOMPARE(shownNumbers(), numbers);
}

void TestMainModelInvoices::criteriaSurviveRestart()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    addListFixture();
    // Another database's saved search must survive our saves.
    QSettings* settings = m_registry->appSettings();
    settings->beginGroup(QStringLiteral("search"));
    settings->beginWriteArray(QStringLiteral("databases"), 1);
    settings->setArrayIndex(0);
    settings->setValue(QStringLiteral("number"), 7);
    settings->setValue(QStringLiteral("quickSearch"), 2);
    settings->endArray();
    settings->endGroup();

    InvoiceCriteria* criteria = m_model->criteria();
    criteria->dateFrom = QDate(2024, 6, 7);
    criteria->dueDateTo = QDate(2024, 6, 12);
    criteria->deliveryDateFrom = QDate(2024, 1, 1);
    criteria->balanceDate = QDate(2024, 5, 31);
    criteria->numberFrom = 3;
    criteria->numberTo = 90;
    criteria->customerId = m_registry->customerAt(0)->id;
    criteria->types = 1;
    criteria->text = QStringLiteral("*x*");
    QVERIFY(m_model->search());
    criteria->text.clear();
    QVERIFY(m_model->search());
    const QList<int> searched = shownNumbers();
    QVERIFY(!searched.isEmpty());
    InvoiceCriteria saved;
    criteria->copy(&saved);

    QVERIFY(openSession(db));
    QCOMPARE(m_model->currentQuickSearch(), -1);
    QCOMPARE(m_model->lastCriteria(), m_model->criteria());
    QCOMPARE(RecordFields::of(*m_model->criteria()), RecordFields::of(saved));
    QCOMPARE(shownNumbers(), searched);

    QVERIFY(m_model->quickSearch(3));
    QVERIFY(openSession(db));
    QCOMPARE(m_model->currentQuickSearch(), 3);
    QCOMPARE(m_model->lastCriteria()->dateFrom, fixedToday);
    QCOMPARE(m_model->lastCriteria()->dateTo, fixedToday);
    QCOMPARE(m_model->criteria()->numberFrom, -1);
    for (int number : shownNumbers())
        QCOMPARE(listed(number).date, fixedToday);

    settings = m_registry->appSettings();
    const int size = settings->beginReadArray(QStringLiteral("search/databases"));
    QCOMPARE(size, 2);
    settings->setArrayIndex(0);
    QCOMPARE(settings->value(QStringLiteral("number")).toInt(), 7);
    QCOMPARE(settings->value(QStringLiteral("quickSearch")).toInt(), 2);
    settings->setArrayIndex(1);
    QVERIFY(!settings->contains(QStringLiteral("date1")));
    settings->endArray();
}

void TestMainModelInvoices::lastInvoiceStaysEditable()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    addListFixture();
    QVERIFY(m_model->refresh());
    QVERIFY(m_model->createInvoice() >= 0);
    QCOMPARE(m_model->invoice()->number, 106);
    m_model->invoice()->customerId = m_registry->customerAt(0)->id;
    QVERIFY(m_model->saveInvoice());
    const int index = m_model->invoiceIndex();
    QCOMPARE(index, 105);

    QVERIFY(m_model->goToInvoice(3));
    QVERIFY(!m_model->isEditable());
    QVERIFY(!m_model->invoiceItemTableModel()->isEditable());
    QVERIFY(!m_model->paymentTableModel()->isEditable());
    QVERIFY(m_model->goToInvoice(index));
    QVERIFY(m_model->isEditable());
    QVERIFY(m_model->invoiceItemTableModel()->isEditable());
    QVERIFY(m_model->paymentTableModel()->isEditable());
    QCOMPARE(m_model->invoice()->number, 106);

    // A saved change shows in the invoice's list row.
    m_model->invoice()->type = 2;
    QVERIFY(m_model->invoiceItemTableModel()->insertRow(0));
    setCell(0, InvoiceItemTableModel::PriceColumn, QStringLiteral("-5"));
    setCell(0, InvoiceItemTableModel::QuantityColumn, QStringLiteral("1"));
    QVERIFY(m_model->saveInvoice());
    InvoiceTableModel* list = m_model->invoiceTableModel();
    QCOMPARE(list->index(index, InvoiceTableModel::TypeColumn).data().toString(),
        QStringLiteral("Hyvityslasku"));
    QCOMPARE(list->invoiceAt(index)->totalAmount, -500);
    QCOMPARE(list->invoiceAt(index)->balance, -500);
    QCOMPARE(list->headerData(InvoiceTableModel::TypeColumn, Qt::Horizontal).toString(),
        QStringLiteral("Tyyppi"));
}

void TestMainModelInvoices::missingInvoice()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    addListFixture();
    QVERIFY(m_model->refresh());
    const int id = m_model->invoiceTableModel()->invoiceAt(2)->id;
    QVERIFY(db.exec({ QStringLiteral("DELETE FROM invoice WHERE id = %1").arg(id) }));

    LogCapture log("veklari.ui");
    QVERIFY(!m_model->goToInvoice(2));
    QCOMPARE(m_model->lastError(), QStringLiteral("Laskun tietoja ei löytynyt tietokannasta"));
    QCOMPARE(log.lines(),
        QStringList({ QStringLiteral("debug: Haetaan laskun id=%1 tiedot").arg(id),
            QStringLiteral("warning: Laskun id=%1 tietoja ei löytynyt tietokannasta").arg(id) }));
    QVERIFY(!m_model->goToInvoice(500));
}

void TestMainModelInvoices::numberInUse()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    addListFixture();
    QCOMPARE(m_model->isValidNumber(105), 0);
    QCOMPARE(m_model->isValidNumber(1), 0);
    QCOMPARE(m_model->isValidNumber(106), 1);
    QVERIFY(db.exec({ QStringLiteral("ALTER TABLE invoice RENAME TO invoice_old") }));
    QCOMPARE(m_model->isValidNumber(106), -1);
    QVERIFY(!m_model->lastError().isEmpty());
    QCOMPARE(m_model->createInvoice(), -1);
}

void TestMainModelInvoices::settingsAndCustomerReference()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    const int customerId = saveCustomer(QStringLiteral("Viite Oy"), 5);
    m_registry->settings()->setProperty(
        QStringLiteral("settings/paymentTerms"), QStringLiteral("7 pv"));
    QVERIFY2(m_model->saveSettings(), qPrintable(m_model->lastError()));

    QVERIFY(m_model->createInvoice() >= 0);
    QVERIFY(!m_model->saveReferenceNumber());
    m_model->invoice()->customerId = customerId;
    m_model->invoice()->referenceNumber = QStringLiteral("77777771");
    QVERIFY2(m_model->saveReferenceNumber(), qPrintable(m_model->lastError()));
    QVERIFY(m_model->saveReferenceNumber());

    QVERIFY(openSession(db));
    QCOMPARE(m_registry->settings()->property(QStringLiteral("settings/paymentTerms")).toString(),
        QStringLiteral("7 pv"));
    bool found = false;
    QCOMPARE(
        m_registry->customerById(customerId, found)->referenceNumber, QStringLiteral("77777771"));
    QVERIFY(m_model->createInvoice() >= 0);
    QCOMPARE(m_model->invoice()->dueDate, fixedToday.addDays(7));
    m_model->invoice()->customerId = customerId;
    m_model->updateReferenceNumber();
    QCOMPARE(m_model->invoice()->referenceNumber, QStringLiteral("77777771"));
}

void TestMainModelInvoices::proxySortsByValue()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    addListFixture();
    QVERIFY(m_model->refresh());
    QSortFilterProxyModel* proxy = m_model->invoiceProxyModel();
    QCOMPARE(proxy->rowCount(), 105);
    proxy->sort(InvoiceTableModel::NumberColumn, Qt::DescendingOrder);
    QCOMPARE(proxy->index(0, InvoiceTableModel::NumberColumn).data().toInt(), 105);
    // Dates by value, not as d.M.yyyy text; ties keep no particular order.
    proxy->sort(InvoiceTableModel::DueDateColumn, Qt::AscendingOrder);
    QDate previous;
    for (int row = 0; row < proxy->rowCount(); ++row) {
        const int number = proxy->index(row, InvoiceTableModel::NumberColumn).data().toInt();
        QVERIFY(previous <= listed(number).dueDate);
        previous = listed(number).dueDate;
    }
    // 104 is paid: the largest open balances are those of 105 and 103.
    proxy->sort(InvoiceTableModel::BalanceColumn, Qt::DescendingOrder);
    QCOMPARE(proxy->index(0, InvoiceTableModel::NumberColumn).data().toInt(), 105);
    QCOMPARE(proxy->index(1, InvoiceTableModel::NumberColumn).data().toInt(), 103);
}

QTEST_GUILESS_MAIN(TestMainModelInvoices)
#include "tst_mainmodelinvoices.moc"
