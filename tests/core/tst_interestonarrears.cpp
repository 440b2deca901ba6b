#include "core/interestonarrearstablemodel.h"
#include "core/invoiceitemtablemodel.h"
#include "core/mainmodel.h"
#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoiceitem.h"
#include "domain/invoicetype.h"
#include "domain/payment.h"
#include "domain/product.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QtTest>

#include <memory>

namespace {

// A payment as days from the due date and cents.
struct Paid
{
    int day;
    int amount;
};
using Payments = QList<Paid>;

} // namespace

Q_DECLARE_METATYPE(Payments)

class TestInterestOnArrears : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void interest_data();
    void interest();
    void table();
    void rowsOnCurrentInvoice();
    void interestInvoice();

private:
    // A late invoice of customer as the current one.
    void setCurrent(int number, int customerId, const QDate& dueDate, int total, int rate);
    int saveCustomer(const QString& name, const QString& paymentTerms);

    QTemporaryDir m_dir;
    std::unique_ptr<TestDatabase> m_db;
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<MainModel> m_model;
    Product m_product;
};

void TestInterestOnArrears::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
}

void TestInterestOnArrears::init()
{
    m_db = std::make_unique<TestDatabase>(TestDatabase::SQLite);
    QVERIFY2(m_db->open(), qPrintable(m_db->lastError()));
    QVariantMap entry = m_db->entry();
    m_db->close();
    m_registry = std::make_unique<Registry>();
    m_registry->loadSettings(m_dir.filePath(QStringLiteral("veklari.ini")));
    TestDatabase::writeEntries(m_registry->appSettings(), { entry });
    m_model = std::make_unique<MainModel>(m_registry.get());
    QCOMPARE(m_model->openDatabase(0, false), 0);
    QVERIFY2(m_model->fetchData(), qPrintable(m_model->lastError()));
    m_product.number = QStringLiteral("999");
    m_product.name = QStringLiteral("Viivästyskorko");
    m_product.vatRate = 2550;
}

void TestInterestOnArrears::cleanup()
{
    m_model.reset();
    m_registry.reset();
    m_db.reset();
}

int TestInterestOnArrears::saveCustomer(const QString& name, const QString& paymentTerms)
{
    std::unique_ptr<Query> query(m_registry->database()->query());
    Customer customer;
    customer.number = m_registry->customerCount() + 1;
    customer.name = name;
    customer.paymentTerms = paymentTerms;
    if (!query->saveCustomer(&customer) || !m_registry->fetchCustomers(query.get()))
        return -1;
    return customer.id;
}

void TestInterestOnArrears::setCurrent(
    int number, int customerId, const QDate& dueDate, int total, int rate)
{
    QVERIFY(m_model->createInvoice() >= 0);
    Invoice* invoice = m_model->invoice();
    invoice->number = number;
    invoice->customerId = customerId;
    invoice->date = dueDate.addDays(-14);
    invoice->dueDate = dueDate;
    invoice->totalAmount = total;
    invoice->interestOnArrears = rate;
}

void TestInterestOnArrears::interest_data()
{
    QTest::addColumn<QDate>("dueDate");
    QTest::addColumn<int>("total");
    QTest::addColumn<int>("rate");
    QTest::addColumn<Payments>("payments");
    QTest::addColumn<int>("today"); // days from the due date
    QTest::addColumn<int>("days");
    QTest::addColumn<int>("cents"); // each period's balance x rate x days / 365, summed

    const QDate due(2024, 5, 2);
    // 65.75
    QTest::newRow("no payments, 30 days late")
        << due << 10000 << 800 << Payments() << 30 << 30 << 66;
    // 21.92 + 21.92
    QTest::newRow("half paid 10 days late")
        << due << 10000 << 800 << Payments { { 10, 5000 } } << 30 << 30 << 44;
    // The last period runs from the payment, also when it came early: 32.88.
    QTest::newRow("paid in part before the due date")
        << due << 10000 << 800 << Payments { { -5, 4000 } } << 20 << 25 << 33;
    // 26.30
    QTest::newRow("paid in part on the due date")
        << due << 10000 << 800 << Payments { { 0, 4000 } } << 20 << 20 << 26;
    // 15.34 + 4.38
    QTest::newRow("fully paid late, nothing after the payment")
        << due << 10000 << 800 << Payments { { 7, 6000 }, { 12, 4000 } } << 40 << 12 << 20;
    QTest::newRow("paid on time") << due << 10000 << 800 << Payments { { -1, 10000 } } << 40 << 0
                                  << 0;
    QTest::newRow("not due yet") << due << 10000 << 800 << Payments() << -3 << 0 << 0;
    // 20.2. + 9 days is the leap day 29.2.; the year still has 365 days:
    // 28.36 + 22.05.
    QTest::newRow("payment on a leap day")
        << QDate(2024, 2, 20) << 10000 << 1150 << Payments { { 9, 3000 } } << 19 << 19 << 50;
    // Exactly 6.5 cents, but the double lands just below.
    QTest::newRow("half a cent in exact arithmetic")
        << due << 13000 << 365 << Payments() << 5 << 5 << 6;
    // 4383561.60 + 0.28
    QTest::newRow("large sum, long delay")
        << due << 99999999 << 1600 << Payments { { 100, 99999998 } } << 730 << 730 << 4383562;
}

void TestInterestOnArrears::interest()
{
    QFETCH(QDate, dueDate);
    QFETCH(int, total);
    QFETCH(int, rate);
    QFETCH(Payments, payments);
    QFETCH(int, today);

    m_model->setToday(dueDate.addDays(today));
    setCurrent(42, 7, dueDate, total, rate);
    for (const Paid& paid : payments) {
        Payment payment;
        payment.date = dueDate.addDays(paid.day);
        payment.amount = paid.amount;
        m_model->paymentTableModel()->addPayment(payment);
    }
    m_model->calculateInterestOnArrears();

    InterestOnArrearsTableModel* table = m_model->interestTableModel();
    QCOMPARE(table->rowCount(), 1);
    const InterestOnArrearsRow* row = table->rowAt(0);
    QCOMPARE(row->invoiceNumber, 42);
    QCOMPARE(row->date, dueDate.addDays(-14));
    QTEST(row->days, "days");
    QTEST(row->amount, "cents");
    QCOMPARE(table->customerId(), 7);
}

void TestInterestOnArrears::table()
{
    InterestOnArrearsTableModel* table = m_model->interestTableModel();
    QStringList headers;
    for (int column = 0; column < table->columnCount(); ++column)
        headers.append(table->headerData(column, Qt::Horizontal).toString());
    QCOMPARE(headers, QStringList({ "Nro", "Päivämäärä", "Päiviä", "Viivästyskorko" }));

    for (int number = 1; number <= 4; ++number)
        table->addRow(number, QDate(2024, 1, number), number * 10, number * 12345);
    QStringList cells;
    for (int column = 0; column < table->columnCount(); ++column)
        cells.append(table->index(1, column).data().toString());
    QCOMPARE(cells, QStringList({ "2", "2.1.2024", "20", "246.90" }));
    QVERIFY(!(table->flags(table->index(0, 0)) & Qt::ItemIsEditable));

    // Beyond the last row nothing goes; a range past it is cut at the end.
    QVERIFY(!table->removeRows(4, 1));
    QVERIFY(table->removeRows(2, 10));
    QVERIFY(table->removeRows(0, 1));
    QCOMPARE(table->rowCount(), 1);
    QCOMPARE(table->invoiceNumber(0), 2);
    QCOMPARE(table->amount(0), 2 * 12345);
}

void TestInterestOnArrears::rowsOnCurrentInvoice()
{
    const int customer = saveCustomer(QStringLiteral("Myöhäinen Oy"), QString());
    const QDate due(2024, 5, 2);
    m_model->setToday(due.addDays(30));
    setCurrent(123, customer, due, 10000, 800);
    m_model->calculateInterestOnArrears();
    setCurrent(124, customer, due, 30000, 800);
    m_model->calculateInterestOnArrears();
    QVERIFY(m_model->interestTableModel()->hasOneCustomer());

    // The invoice being edited keeps its own row first.
    InvoiceItemTableModel* rows = m_model->invoiceItemTableModel();
    QVERIFY(rows->insertRow(0));
    rows->setText(0, QStringLiteral("Työ"));
    m_model->addInterestRows(&m_product);
    QCOMPARE(rows->rowCount(), 3);
    // 65.75 and 197.26
    const int first = 66;
    const int second = 197;
    QList<QStringList> found;
    for (int row = 1; row < 3; ++row) {
        InvoiceItem item;
        QVERIFY(rows->toInvoiceItem(row, &item));
        found.append({ item.text, item.productNumber, QString::number(item.quantity),
            QString::number(item.amount), QString::number(item.vatRate) });
    }
    QCOMPARE(found,
        QList<QStringList>(
            { { "Laskun 123 viivästyskorko", "999", "10000", QString::number(first * 100), "0" },
                { "Viivästyskorko", "999", "10000", QString::number(second * 100), "0" } }));
    QCOMPARE(rows->totalAmountVatIncluded(), qint64(first + second));
}

void TestInterestOnArrears::interestInvoice()
{
    const int termsCustomer
        = saveCustomer(QStringLiteral("Ehdot Oy"), QStringLiteral("30 pv netto"));
    const int plainCustomer = saveCustomer(QStringLiteral("Tavallinen Oy"), QString());
    const QDate today(2024, 6, 1);
    m_model->setToday(today);
    for (const int customer : { termsCustomer, plainCustomer }) {
        m_model->interestTableModel()->clear();
        setCurrent(5, customer, QDate(2024, 4, 1), 20000, 1000);
        m_model->calculateInterestOnArrears();
        const int amount = m_model->interestTableModel()->amount(0);
        QVERIFY(m_model->createInterestInvoice(&m_product) >= 0);

        const Invoice* invoice = m_model->invoice();
        QCOMPARE(invoice->type, int(InvoiceType::InterestInvoice));
        QCOMPARE(invoice->customerId, customer);
        QCOMPARE(invoice->id, -1);
        QVERIFY(m_model->isEditable());
        if (customer == termsCustomer) {
            QCOMPARE(invoice->paymentTerms, QStringLiteral("30 pv netto"));
            QCOMPARE(invoice->dueDate, today.addDays(30));
        } else {
            // The 14 days of the company's terms in a new database.
            QCOMPARE(invoice->dueDate, today.addDays(14));
        }
        InvoiceItem item;
        QCOMPARE(m_model->invoiceItemTableModel()->rowCount(), 1);
        QVERIFY(m_model->invoiceItemTableModel()->toInvoiceItem(0, &item));
        QCOMPARE(item.text, QStringLiteral("Laskun 5 viivästyskorko"));
        QCOMPARE(m_model->invoiceItemTableModel()->totalAmountVatIncluded(), qint64(amount));
        QVERIFY2(m_model->saveInvoice(), qPrintable(m_model->lastError()));
        QCOMPARE(m_db->value(QStringLiteral("SELECT type FROM invoice WHERE id = %1")
                                 .arg(m_model->invoice()->id))
                     .toInt(),
            int(InvoiceType::InterestInvoice));
    }
}

QTEST_GUILESS_MAIN(TestInterestOnArrears)
#include "tst_interestonarrears.moc"
