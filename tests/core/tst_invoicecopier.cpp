#include "core/customergrouplist.h"
#include "core/invoicecopier.h"
#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "storage/database.h"
#include "storage/faultinjector.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QtTest>

#include <memory>

namespace {

const QDate runDay(2024, 9, 2);
const QDate sourceDate(2024, 9, 1);
const QDate sourceDueDate(2024, 9, 15);
const int copyCount = 50;
const int rowsPerInvoice = 3;

// The 7-3-1 check digit of a Finnish reference, written out.
QString withCheckDigit(const QString& base)
{
    const int weights[] = { 7, 3, 1 };
    int sum = 0;
    for (int i = 0; i < base.size(); ++i)
        sum += base.at(base.size() - 1 - i).digitValue() * weights[i % 3];
    return base + QString::number((10 - sum % 10) % 10);
}

QStringList snapshot(TestDatabase& db)
{
    return db.rows(
               QStringLiteral("SELECT id, number, customer_id, balance FROM invoice ORDER BY id"))
        + db.rows(QStringLiteral("SELECT id, invoice_id, text FROM invoice_item ORDER BY id"))
        + db.rows(QStringLiteral("SELECT id, invoice_id, amount FROM payment ORDER BY id"));
}

} // namespace

class TestInvoiceCopier : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void groupRunAndUndo_data();
    void groupRunAndUndo();
    void failureLeavesDatabaseAsBefore_data();
    void failureLeavesDatabaseAsBefore();
    void customerGroups();

private:
    bool open(TestDatabase& db);
    // The source invoice (number 10) with rows and a payment, another
    // customer's invoice 11 likewise, and the customers to copy to.
    void addFixture();
    int saveInvoice(int number, int customerId, const QStringList& rowTexts, int paid);
    bool storeAndFetchSettings();

    QTemporaryDir m_dir;
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<MainModel> m_model;
    Invoice m_source;
    int m_sourceCustomer = -1;
    QList<int> m_customers;
};

void TestInvoiceCopier::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
}

void TestInvoiceCopier::cleanup()
{
    FaultInjector::clear();
    m_model.reset();
    m_registry.reset();
    m_customers.clear();
}

bool TestInvoiceCopier::open(TestDatabase& db)
{
    if (!db.open())
        return false;
    const QVariantMap entry = db.entry();
    db.close();
    m_registry = std::make_unique<Registry>();
    m_registry->loadSettings(m_dir.filePath(QStringLiteral("veklari.ini")));
    TestDatabase::writeEntries(m_registry->appSettings(), { entry });
    m_model = std::make_unique<MainModel>(m_registry.get());
    return m_model->openDatabase(0, false) == 0 && m_model->fetchData();
}

int TestInvoiceCopier::saveInvoice(
    int number, int customerId, const QStringList& rowTexts, int paid)
{
    std::unique_ptr<Query> query(m_registry->database()->query());
    Invoice invoice;
    invoice.number = number;
    invoice.customerId = customerId;
    invoice.date = sourceDate;
    invoice.dueDate = sourceDueDate;
    invoice.paymentTerms = QStringLiteral("14 päivää netto");
    invoice.totalAmount = 12000;
    invoice.balance = 12000 - paid;
    invoice.setProperty(QStringLiteral("attributes/Tilaus"), QStringLiteral("T-7"));
    if (!query->saveInvoice(&invoice))
        return -1;
    for (const QString& text : rowTexts) {
        InvoiceItem item;
        item.invoiceId = invoice.id;
        item.text = text;
        item.quantity = 10000;
        item.amount = 40000;
        if (!query->saveInvoiceItem(&item))
            return -1;
    }
    Payment payment;
    payment.invoiceId = invoice.id;
    payment.date = sourceDueDate;
    payment.amount = paid;
    if (!query->savePayment(&payment))
        return -1;
    if (number == 10)
        invoice.copy(&m_source);
    return invoice.id;
}

void TestInvoiceCopier::addFixture()
{
    std::unique_ptr<Query> query(m_registry->database()->query());
    QList<Customer> customers;
    for (int i = 0; i <= copyCount + 1; ++i) {
        Customer customer;
        customer.number = 100 + i;
        customer.name = QStringLiteral("Asiakas %1").arg(i);
        // Every other customer keeps a reference of its own; every third
        // pays in 30 days, and one has terms without a number of days.
        if (i % 2 == 0)
            customer.referenceNumber = withCheckDigit(QString::number(5000 + i));
        if (i % 3 == 0)
            customer.paymentTerms = QStringLiteral("30 päivää netto");
        if (i == 5)
            customer.paymentTerms = QStringLiteral("käteinen");
        QVERIFY(query->saveCustomer(&customer));
        customers.append(customer);
    }
    QVERIFY(m_registry->fetchCustomers(query.get()));
    m_sourceCustomer = customers.at(0).id;
    for (int i = 1; i <= copyCount; ++i)
        m_customers.append(customers.at(i).id);
    Settings* settings = m_registry->settings();
    settings->setProperty(SettingsKeys::noticeText1, QStringLiteral("Hei {{ customer/name }}"));
    QVERIFY(saveInvoice(10, m_sourceCustomer, { "Huolto", "Osat", "Matka" }, 2000) > 0);
    QVERIFY(saveInvoice(11, customers.last().id, { "Muu", "Toinen" }, 500) > 0);
}

bool TestInvoiceCopier::storeAndFetchSettings()
{
    std::unique_ptr<Query> query(m_registry->database()->query());
    return m_model->saveSettings() && m_registry->fetchSettings(query.get());
}

void TestInvoiceCopier::groupRunAndUndo_data()
{
    QTest::addColumn<int>("backend");
    QTest::addRow("SQLite") << int(TestDatabase::SQLite);
    QTest::addRow("PostgreSQL") << int(TestDatabase::PostgreSQL);
}

void TestInvoiceCopier::groupRunAndUndo()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY2(open(db), qPrintable(db.lastError()));
    addFixture();
    const QStringList before = snapshot(db);

    // The source's own customer and an unknown id get no copy.
    InvoiceCopier copier(m_registry.get(), m_source);
    copier.setToday(runDay);
    QVERIFY(!copier.canUndo());
    QVERIFY2(
        copier.createInvoices(QList<int> { m_sourceCustomer } + m_customers + QList<int> { 99999 }),
        qPrintable(copier.lastError()));
    QCOMPARE(copier.createdCount(), copyCount);
    QCOMPARE(db.value("SELECT count(*) FROM invoice").toInt(), copyCount + 2);
    QCOMPARE(db.value("SELECT count(*) FROM invoice_item").toInt(),
        (copyCount + 1) * rowsPerInvoice + 2);

    std::unique_ptr<Query> query(m_registry->database()->query());
    for (int i = 1; i <= copyCount; ++i) {
        InvoiceCriteria criteria;
        criteria.number = 11 + i;
        QVERIFY(query->fetchInvoiceDetails(criteria) && query->next());
        Invoice copy;
        query->invoiceDetails(&copy);
        QCOMPARE(copy.customerId, m_customers.at(i - 1));
        const QString reference = i % 2 == 0
            ? withCheckDigit(QString::number(5000 + i))
            : withCheckDigit(QString::number(11 + i) + QStringLiteral("00"));
        QCOMPARE(copy.referenceNumber, reference);
        const bool ownTerms = i % 3 == 0;
        QCOMPARE(copy.paymentTerms,
            ownTerms ? QStringLiteral("30 päivää netto") : QStringLiteral("14 päivää netto"));
        QCOMPARE(copy.dueDate, ownTerms ? sourceDate.addDays(30) : sourceDueDate);
        QCOMPARE(copy.date, sourceDate);
        QCOMPARE(copy.balance, 12000);
        QCOMPARE(copy.property(QStringLiteral("t1")).toString(),
            QStringLiteral("Hei Asiakas %1").arg(i));
        QCOMPARE(
            copy.property(QStringLiteral("attributes/Tilaus")).toString(), QStringLiteral("T-7"));
        QCOMPARE(db.rows(QStringLiteral(
                     "SELECT text FROM invoice_item WHERE invoice_id = %1 ORDER BY id")
                             .arg(copy.id)),
            QStringList({ "Huolto", "Osat", "Matka" }));
    }

    // The record comes back from the database as text.
    QVERIFY2(storeAndFetchSettings(), qPrintable(m_model->lastError()));
    InvoiceCopier later(m_registry.get(), m_source);
    const InvoiceCopier::UndoRecord record = later.undoRecord();
    QCOMPARE(
        QList<int>({ record.firstNumber, record.lastNumber }), QList<int>({ 12, 11 + copyCount }));
    QCOMPARE(record.date, runDay);
    QCOMPARE(record.lastId - record.firstId, copyCount - 1);

    // A payment on a copy goes with it.
    Payment payment;
    payment.invoiceId = record.firstId;
    payment.date = runDay;
    payment.amount = 100;
    QVERIFY(query->savePayment(&payment));

    QVERIFY2(later.undoCopy(), qPrintable(later.lastError()));
    QCOMPARE(snapshot(db), before);

    // Nothing is left to undo, also after a restart.
    QVERIFY(!later.canUndo());
    QVERIFY(storeAndFetchSettings());
    QVERIFY(!later.canUndo());
    QVERIFY(!later.undoCopy());
    QCOMPARE(snapshot(db), before);
}

void TestInvoiceCopier::failureLeavesDatabaseAsBefore_data()
{
    QTest::addColumn<int>("backend");
    QTest::addColumn<QString>("failing"); // a pattern, or the n-th statement of the run
    QTest::addColumn<int>("nth");
    QTest::addColumn<bool>("undo");
    for (const int backend : { int(TestDatabase::SQLite), int(TestDatabase::PostgreSQL) }) {
        const QByteArray name
            = TestDatabase::backendName(TestDatabase::Backend(backend)).toLatin1();
        // Fetching the rows and BEGIN; then per copy: the number, the
        // invoice and its rows. The 26th copy's second row:
        const int middle = 2 + 25 * (2 + rowsPerInvoice) + 2 + 2;
        QTest::addRow("%s: row of a copy in the middle", name.constData())
            << backend << QString() << middle << false;
        QTest::addRow("%s: commit", name.constData()) << backend << "^COMMIT$" << 0 << false;
        QTest::addRow("%s: undo, deleting the rows", name.constData())
            << backend << "^DELETE FROM invoice_item" << 0 << true;
        QTest::addRow("%s: undo, deleting the invoices", name.constData())
            << backend << "^DELETE FROM invoice " << 0 << true;
    }
}

void TestInvoiceCopier::failureLeavesDatabaseAsBefore()
{
    QFETCH(int, backend);
    QFETCH(QString, failing);
    QFETCH(int, nth);
    QFETCH(bool, undo);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY2(open(db), qPrintable(db.lastError()));
    addFixture();
    InvoiceCopier copier(m_registry.get(), m_source);
    if (undo)
        QVERIFY(copier.createInvoices(m_customers));
    const QStringList before = snapshot(db);
    const QString error = QStringLiteral("levy täynnä");
    if (failing.isEmpty())
        FaultInjector::failStatement(nth, error);
    else
        FaultInjector::failMatching(QRegularExpression(failing), error);

    QVERIFY(undo ? !copier.undoCopy() : !copier.createInvoices(m_customers));
    QVERIFY(!FaultInjector::isPending());
    QVERIFY2(copier.lastError().contains(error), qPrintable(copier.lastError()));
    QCOMPARE(snapshot(db), before);
    // A failed run leaves nothing to undo; a failed undo keeps its record.
    QCOMPARE(copier.canUndo(), undo);
    if (undo) {
        QVERIFY2(copier.undoCopy(), qPrintable(copier.lastError()));
        QCOMPARE(db.value("SELECT count(*) FROM invoice").toInt(), 2);
    }
}

void TestInvoiceCopier::customerGroups()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY2(open(db), qPrintable(db.lastError()));
    addFixture();
    const QList<CustomerGroupList::Group> groups = {
        { QStringLiteral("Kuukausittain"), m_customers.mid(0, 3) },
        { QStringLiteral("Tyhjä"), {} },
        { QStringLiteral("Vuosittain"), m_customers.mid(10, 2) },
    };
    Settings* settings = m_registry->settings();
    settings->setProperty(QStringLiteral("groups/7/name"), QStringLiteral("vanha"));
    CustomerGroupList::save(settings, groups);
    QCOMPARE(settings->property(QStringLiteral("groups/0/customers")).toString(),
        QStringLiteral("%1,%2,%3")
            .arg(m_customers.at(0))
            .arg(m_customers.at(1))
            .arg(m_customers.at(2)));
    QVERIFY(!settings->property(QStringLiteral("groups/7/name")).isValid());

    // A customer deleted since, and parts that are no number, are left out.
    std::unique_ptr<Query> query(m_registry->database()->query());
    QVERIFY(query->deleteCustomer(m_customers.at(1)));
    QVERIFY(m_registry->fetchCustomers(query.get()));
    settings->setProperty(QStringLiteral("groups/2/customers"),
        QStringLiteral(",%1,,x,%2,").arg(m_customers.at(10)).arg(m_customers.at(11)));
    QVERIFY(storeAndFetchSettings());
    const QList<CustomerGroupList::Group> loaded
        = CustomerGroupList::load(m_registry->settings(), m_registry.get());
    QCOMPARE(loaded.size(), 3);
    QCOMPARE(loaded.at(0).customerIds, QList<int>({ m_customers.at(0), m_customers.at(2) }));
    QCOMPARE(loaded.at(1).customerIds, QList<int>());
    QCOMPARE(loaded.at(2).name, QStringLiteral("Vuosittain"));
    QCOMPARE(loaded.at(2).customerIds, m_customers.mid(10, 2));

    // Loading stops at the first gap.
    CustomerGroupList::save(m_registry->settings(), loaded.mid(0, 1));
    m_registry->settings()->setProperty(
        QStringLiteral("groups/2/name"), QStringLiteral("irrallinen"));
    QCOMPARE(CustomerGroupList::load(m_registry->settings(), m_registry.get()).size(), 1);
}

QTEST_GUILESS_MAIN(TestInvoiceCopier)
#include "tst_invoicecopier.moc"
