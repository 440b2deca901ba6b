#include "core/invoiceitemtablemodel.h"
#include "core/invoicesavecheck.h"
#include "core/mainmodel.h"
#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/payment.h"
#include "domain/product.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QtTest>

#include <memory>

using Check = InvoiceSaveCheck;
Q_DECLARE_METATYPE(InvoiceSaveCheck::Texts)

namespace {

const QDate fixedToday(2024, 6, 10);

// What the form holds for new invoice 2 of customer Virtanen Oy unless a
// case says otherwise.
Check::Texts typed(const QString& number = QStringLiteral("2"),
    const QString& date = QStringLiteral("10.6.2024"),
    const QString& dueDate = QStringLiteral("24.6.2024"), const QString& deliveryDate = QString(),
    const QString& customer = QStringLiteral("Virtanen Oy"))
{
    return { customer, number, date, dueDate, deliveryDate };
}

} // namespace

class TestInvoiceSaveCheck : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void firstFailure_data();
    void firstFailure();

private:
    QTemporaryDir m_dir;
};

void TestInvoiceSaveCheck::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
}

void TestInvoiceSaveCheck::firstFailure_data()
{
    QTest::addColumn<int>("backend");
    // "new": a new invoice 2 in edit mode; "stored": invoice 1 as loaded,
    // outside edit mode.
    QTest::addColumn<QString>("invoice");
    QTest::addColumn<bool>("customer");
    // "product", "text" (a text but no product) or "empty".
    QTest::addColumn<QStringList>("rows");
    // "dated" or "undated".
    QTest::addColumn<QStringList>("payments");
    QTest::addColumn<Check::Texts>("texts");
    QTest::addColumn<int>("outcome");
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("number");

    const int sqlite = TestDatabase::SQLite;
    const QStringList product = { QStringLiteral("product") };
    const QStringList none;
    const QString customerMissing = QStringLiteral("Valitse laskun saaja ennen tallentamista.");
    const QString numberInUse = QStringLiteral("Laskun numero 1 on jo käytössä.");
    const QString badDeliveryDate = QStringLiteral("Toimituspäivämäärä on virheellinen.");
    const QString badDate = QStringLiteral("Laskun päivämäärä on virheellinen.");
    const QString badDueDate = QStringLiteral("Eräpäivä on virheellinen.");
    const QString noProduct = QStringLiteral("Valitse tuote riville 2 ennen laskun tallentamista.");
    const QString noPaymentDate
        = QStringLiteral("Syötä maksusuorituksen päivämäärä ennen laskun tallentamista.");

    QTest::newRow("untouched new invoice")
        << sqlite << "new" << false << none << none << typed("2", "", "", "", "")
        << int(Check::NothingToSave) << int(Check::NoField) << QString() << -1 << 2;
    QTest::newRow("name typed but no customer")
        << sqlite << "new" << false << none << none << typed("2", "", "", "", "Virta")
        << int(Check::Refused) << int(Check::CustomerField) << customerMissing << -1 << 2;
    for (const int backend : { sqlite, int(TestDatabase::PostgreSQL) }) {
        const QByteArray name = TestDatabase::backendName(TestDatabase::Backend(backend)).toUtf8();
        QTest::addRow("%s: number in use", name.constData())
            << backend << "new" << true << product << none << typed("1") << int(Check::Refused)
            << int(Check::NumberField) << numberInUse << -1 << 2;
        QTest::addRow("%s: free number is taken", name.constData())
            << backend << "new" << true << product << none << typed(" 7 ") << int(Check::Passed)
            << int(Check::NoField) << QString() << -1 << 7;
    }
    QTest::newRow("number before customer")
        << sqlite << "new" << false << product << none << typed("1") << int(Check::Refused)
        << int(Check::NumberField) << numberInUse << -1 << 2;
    QTest::newRow("text in the number field is ignored")
        << sqlite << "new" << true << product << none << typed("x1") << int(Check::Passed)
        << int(Check::NoField) << QString() << -1 << 2;
    QTest::newRow("customer before delivery date")
        << sqlite << "new" << false << product << none << typed("2", "", "", "31.2.2024")
        << int(Check::Refused) << int(Check::CustomerField) << customerMissing << -1 << 2;
    QTest::newRow("delivery date that does not exist")
        << sqlite << "new" << true << product << none
        << typed("2", "10.6.2024", "24.6.2024", "31.2.2024") << int(Check::Refused)
        << int(Check::DeliveryDateField) << badDeliveryDate << -1 << 2;
    QTest::newRow("delivery date before invoice date")
        << sqlite << "new" << true << product << none << typed("2", "45.45.2026", "", "x")
        << int(Check::Refused) << int(Check::DeliveryDateField) << badDeliveryDate << -1 << 2;
    QTest::newRow("mistyped invoice date")
        << sqlite << "new" << true << product << none << typed("2", "45.45.2026")
        << int(Check::Refused) << int(Check::DateField) << badDate << -1 << 2;
    QTest::newRow("empty invoice date")
        << sqlite << "new" << true << product << none << typed("2", " ") << int(Check::Refused)
        << int(Check::DateField) << badDate << -1 << 2;
    QTest::newRow("mistyped due date")
        << sqlite << "new" << true << product << none << typed("2", "10.6.2024", "1.13.2024")
        << int(Check::Refused) << int(Check::DueDateField) << badDueDate << -1 << 2;
    QTest::newRow("dates before rows")
        << sqlite << "new" << true << QStringList { "text" } << none << typed("2", "10.6.2024", "")
        << int(Check::Refused) << int(Check::DueDateField) << badDueDate << -1 << 2;
    // The empty row goes first, so the row without a product is the second.
    QTest::newRow("row without product")
        << sqlite << "new" << true << QStringList { "empty", "product", "text", "empty" } << none
        << typed() << int(Check::Refused) << int(Check::InvoiceItemField) << noProduct << 1 << 2;
    QTest::newRow("rows before payments")
        << sqlite << "new" << true << QStringList { "product", "text" } << QStringList { "undated" }
        << typed() << int(Check::Refused) << int(Check::InvoiceItemField) << noProduct << 1 << 2;
    QTest::newRow("payment without date")
        << sqlite << "new" << true << product << QStringList { "dated", "undated" } << typed()
        << int(Check::Refused) << int(Check::PaymentField) << noPaymentDate << 1 << 2;
    QTest::newRow("stored invoice unchanged")
        << sqlite << "stored" << true << none << none << typed("1") << int(Check::NothingToSave)
        << int(Check::NoField) << QString() << -1 << 1;
    // Outside edit mode the form's dates are not the invoice's to change.
    QTest::newRow("stored invoice, dated payment")
        << sqlite << "stored" << true << none << QStringList { "dated" } << typed("1", "x", "")
        << int(Check::Passed) << int(Check::NoField) << QString() << -1 << 1;
    QTest::newRow("stored invoice, undated payment")
        << sqlite << "stored" << true << none << QStringList { "undated" } << typed("1")
        << int(Check::Refused) << int(Check::PaymentField) << noPaymentDate << 0 << 1;
}

void TestInvoiceSaveCheck::firstFailure()
{
    QFETCH(int, backend);
    QFETCH(QString, invoice);
    QFETCH(bool, customer);
    QFETCH(QStringList, rows);
    QFETCH(QStringList, payments);
    QFETCH(Check::Texts, texts);
    QFETCH(int, outcome);
    QFETCH(int, field);
    QFETCH(QString, message);
    QFETCH(int, row);
    QFETCH(int, number);

    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    QVariantMap entry = db.entry();
    entry.insert(QStringLiteral("number"), 1);
    db.close();
    Registry registry;
    registry.loadSettings(m_dir.filePath(QStringLiteral("%1.ini").arg(QTest::currentDataTag())));
    TestDatabase::writeEntries(registry.appSettings(), { entry });
    MainModel model(&registry);
    model.setToday(fixedToday);
    QCOMPARE(model.openDatabase(0, false), 0);

    // Customer Virtanen Oy, product 1 and invoice 1 of the customer.
    std::unique_ptr<Query> query(registry.database()->query());
    Customer virtanen;
    virtanen.number = 1;
    virtanen.name = QStringLiteral("Virtanen Oy");
    Product work;
    work.number = QStringLiteral("1");
    work.amount = 800000;
    Invoice first;
    first.number = 1;
    first.date = first.dueDate = fixedToday;
    QVERIFY(query->saveCustomer(&virtanen) && query->saveProduct(&work));
    first.customerId = virtanen.id;
    QVERIFY(query->saveInvoice(&first));
    QVERIFY2(model.fetchData(), qPrintable(model.lastError()));

    if (invoice == QLatin1String("new")) {
        QCOMPARE(model.createInvoice(), 1);
        if (customer)
            model.invoice()->customerId = virtanen.id;
    } else {
        QVERIFY(model.goToInvoice(0));
    }
    InvoiceItemTableModel* items = model.invoiceItemTableModel();
    for (const QString& kind : rows) {
        const int at = items->rowCount();
        QVERIFY(items->insertRow(at));
        if (kind == QLatin1String("product"))
            QVERIFY(items->setData(items->index(at, InvoiceItemTableModel::ProductColumn), "1"));
        else if (kind == QLatin1String("text"))
            QVERIFY(items->setData(items->index(at, InvoiceItemTableModel::TextColumn), "Matka"));
    }
    for (const QString& kind : payments) {
        Payment payment;
        payment.amount = 100;
        if (kind == QLatin1String("dated"))
            payment.date = fixedToday;
        model.paymentTableModel()->addPayment(payment);
    }

    const Check::Result result = Check(&model).check(texts);
    QCOMPARE(int(result.outcome), outcome);
    QCOMPARE(int(result.field), field);
    QCOMPARE(result.message, message);
    QCOMPARE(result.row, row);
    QCOMPARE(model.invoice()->number, number);
    // A taken number brings its own reference number (base 700).
    if (number == 7)
        QCOMPARE(model.invoice()->referenceNumber, QStringLiteral("7003"));
    // The empty rows are dropped on the way to the rows check.
    if (field == Check::InvoiceItemField)
        QCOMPARE(items->rowCount(), rows.size() - rows.count(QStringLiteral("empty")));
    if (outcome == Check::Passed && invoice == QLatin1String("new")) {
        QCOMPARE(result.date, fixedToday);
        QCOMPARE(result.dueDate, QDate(2024, 6, 24));
        QVERIFY(result.deliveryDate.isNull());
    }
}

QTEST_MAIN(TestInvoiceSaveCheck)
#include "tst_invoicesavecheck.moc"
