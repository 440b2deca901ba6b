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
#include "storage/database.h"
#include "storage/postgresqlquery.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QStandardPaths>
#include <QtTest>
#include <memory>

// The same suite runs against SQLite and PostgreSQL (VEKLARI_TEST_BACKEND).
class StorageTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void initialData();
    void customerRoundTrip();
    void productRoundTrip_data();
    void productRoundTrip();
    void bankAccountRoundTrip_data();
    void bankAccountRoundTrip();
    void printScripts();
    void invoiceRoundTrip_data();
    void invoiceRoundTrip();
    void invoiceWithoutDateIsRefused_data();
    void invoiceWithoutDateIsRefused();
    void invoiceItemsRoundTrip();
    void paymentsRoundTrip();
    void newIdsFollowTheTable();
    void maxInvoiceNumber();
    void invoiceCriteria_data();
    void invoiceCriteria();
    void paymentCriteria_data();
    void paymentCriteria();
    void invoicesAndPayments();
    void balanceAtDate();
    void deleteBetween();
    void settingsRoundTrip();
    void transactions();
    void logLines();

private:
    Query* newQuery() { return m_db->database()->query(); }
    int addCustomer(int number, const QString& name);
    int addBankAccount(const QString& name);
    Invoice makeInvoice(int number, int customerId);
    void addCriteriaFixture();

    std::unique_ptr<TestDatabase> m_db;
    QList<int> m_customerIds;
    QMap<int, int> m_invoiceIds; // number -> id
};

void StorageTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void StorageTest::init()
{
    m_db = std::make_unique<TestDatabase>(VEKLARI_TEST_BACKEND);
    QVERIFY2(m_db->open(), qPrintable(m_db->lastError()));
    m_customerIds.clear();
    m_invoiceIds.clear();
}

void StorageTest::cleanup()
{
    m_db.reset();
}

int StorageTest::addCustomer(int number, const QString& name)
{
    std::unique_ptr<Query> query(newQuery());
    Customer customer;
    customer.number = number;
    customer.name = name;
    if (!query->saveCustomer(&customer))
        qWarning() << query->lastError();
    return customer.id;
}

int StorageTest::addBankAccount(const QString& name)
{
    std::unique_ptr<Query> query(newQuery());
    BankAccount account;
    account.name = name;
    if (!query->saveBankAccount(&account))
        qWarning() << query->lastError();
    return account.id;
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

void StorageTest::initialData()
{
    QCOMPARE(m_db->value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM settings")).toInt(), 1);

    std::unique_ptr<Query> query(newQuery());
    QVERIFY(query->fetchSettings());
    QVERIFY(query->next());
    Settings settings;
    query->settings(&settings);
    QCOMPARE(settings.sellerName, QStringLiteral("Testi Oy"));
    QCOMPARE(settings.property(QStringLiteral("settings/paymentTerms")).toString(),
        QStringLiteral("14 päivää netto"));
    QCOMPARE(settings.property(QStringLiteral("settings/periodForComplaints")).toString(),
        QStringLiteral("8 päivää"));
    QCOMPARE(settings.property(QStringLiteral("settings/interestOnArrears")).toInt(), 800);
    QCOMPARE(settings.property(QStringLiteral("settings/productForInterestOnArrears")).toString(),
        QStringLiteral("999"));
    QVERIFY(settings.property(QStringLiteral("invoiceForm/reminderText"))
                .toString()
                .startsWith(QStringLiteral("Pyydämme ystävällisesti maksamaan saatavamme.")));
    QVERIFY(settings.sellerLogo.isEmpty());
    QVERIFY(!query->next());

    QVERIFY(query->fetchProducts());
    QVERIFY(query->next());
    Product product;
    query->product(&product);
    QCOMPARE(product.number, QStringLiteral("999"));
    QCOMPARE(product.name, QStringLiteral("Viivästyskorko"));
    QCOMPARE(product.amount, 0LL);
    QVERIFY(product.id >= 0);
    QVERIFY(!query->next());
}

void StorageTest::customerRoundTrip()
{
    std::unique_ptr<Query> query(newQuery());
    Customer customer;
    customer.number = 1001;
    customer.name = QStringLiteral("Äijälä & Poika Ky");
    customer.streetName = QStringLiteral("Kauppakatu 1 B 2");
    customer.postCode = QStringLiteral("00100");
    customer.townName = QStringLiteral("Helsinki");
    customer.country = QStringLiteral("Suomi");
    customer.contact = QStringLiteral("Maija");
    customer.vatNumber = QStringLiteral("FI12345671");
    customer.referenceNumber = QStringLiteral("1232");
    customer.emailAddress = QStringLiteral("maija@example.com");
    customer.phoneNumber = QStringLiteral("040 123 4567");
    customer.paymentTerms = QStringLiteral("7 päivää netto");
    customer.setProperty(QStringLiteral("e2"), QStringLiteral("003712345678"));
    customer.setProperty(QStringLiteral("c1"), QStringLiteral("rivi 1\nrivi 2 \\ loppu"));
    QVERIFY2(query->saveCustomer(&customer), qPrintable(query->lastError()));
    QVERIFY(customer.id >= 0);
    const int id = customer.id;

    QVERIFY(query->fetchCustomers());
    QVERIFY(query->next());
    Customer loaded;
    query->customer(&loaded);
    QVERIFY(!query->next());
    QCOMPARE(loaded.id, id);
    QCOMPARE(loaded.number, 1001);
    QCOMPARE(loaded.name, customer.name);
    QCOMPARE(loaded.streetName, customer.streetName);
    QCOMPARE(loaded.postCode, QStringLiteral("00100"));
    QCOMPARE(loaded.townName, customer.townName);
    QCOMPARE(loaded.country, customer.country);
    QCOMPARE(loaded.contact, customer.contact);
    QCOMPARE(loaded.vatNumber, customer.vatNumber);
    QCOMPARE(loaded.referenceNumber, customer.referenceNumber);
    QCOMPARE(loaded.emailAddress, customer.emailAddress);
    QCOMPARE(loaded.phoneNumber, customer.phoneNumber);
    QCOMPARE(loaded.paymentTerms, customer.paymentTerms);
    QCOMPARE(loaded.deleted, false);
    QCOMPARE(loaded.properties, customer.properties);

    // A second save updates the same row; a record of empty texts is stored.
    loaded.name = QStringLiteral("Uusi nimi");
    loaded.streetName = QString();
    loaded.properties.clear();
    QVERIFY2(query->saveCustomer(&loaded), qPrintable(query->lastError()));
    QCOMPARE(loaded.id, id);
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM customer")).toInt(), 1);

    // Customers are only marked deleted.
    QVERIFY2(query->deleteCustomer(id), qPrintable(query->lastError()));
    QVERIFY(query->fetchCustomers());
    QVERIFY(query->next());
    Customer marked;
    query->customer(&marked);
    QCOMPARE(marked.id, id);
    QCOMPARE(marked.name, QStringLiteral("Uusi nimi"));
    QCOMPARE(marked.streetName, QString());
    QVERIFY(marked.properties.isEmpty());
    QCOMPARE(marked.deleted, true);
}

void StorageTest::productRoundTrip_data()
{
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<bool>("vatExcluded");
    QTest::addRow("small VAT included") << Q_INT64_C(125000) << false;
    QTest::addRow("above 2^31 VAT excluded") << Q_INT64_C(5000000000123) << true;
    QTest::addRow("negative") << Q_INT64_C(-2147483649) << false;
}

void StorageTest::productRoundTrip()
{
    QFETCH(qint64, amount);
    QFETCH(bool, vatExcluded);

    std::unique_ptr<Query> query(newQuery());
    Product product;
    product.number = QStringLiteral("A-10");
    product.name = QStringLiteral("Tuote");
    product.unitCode = QStringLiteral("kpl");
    product.amount = amount;
    product.vatRate = 2550;
    product.vatExcluded = vatExcluded;
    product.category = QStringLiteral("Työkalut");
    QVERIFY2(query->saveProduct(&product), qPrintable(query->lastError()));

    auto load = [&](int id, Product* target) {
        if (!query->fetchProducts())
            return false;
        while (query->next()) {
            query->product(target);
            if (target->id == id)
                return true;
        }
        return false;
    };
    Product loaded;
    QVERIFY(load(product.id, &loaded));
    QCOMPARE(loaded.number, product.number);
    QCOMPARE(loaded.name, product.name);
    QCOMPARE(loaded.unitCode, product.unitCode);
    QCOMPARE(loaded.amount, amount);
    QCOMPARE(loaded.vatRate, 2550);
    QCOMPARE(loaded.vatExcluded, vatExcluded);
    QCOMPARE(loaded.category, product.category);

    loaded.vatExcluded = !vatExcluded;
    loaded.amount = -amount;
    QVERIFY2(query->saveProduct(&loaded), qPrintable(query->lastError()));
    Product updated;
    QVERIFY(load(product.id, &updated));
    QCOMPARE(updated.vatExcluded, !vatExcluded);
    QCOMPARE(updated.amount, -amount);

    QVERIFY2(query->deleteProduct(product.id), qPrintable(query->lastError()));
    QVERIFY(!load(product.id, &updated));
    // The interest product of the initial data is still there.
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM product")).toInt(), 1);
}

void StorageTest::bankAccountRoundTrip_data()
{
    QTest::addColumn<bool>("visible");
    QTest::addColumn<bool>("deleted");
    QTest::addRow("visible") << true << false;
    QTest::addRow("hidden") << false << false;
    QTest::addRow("hidden deleted") << false << true;
    QTest::addRow("visible deleted") << true << true;
}

void StorageTest::bankAccountRoundTrip()
{
    QFETCH(bool, visible);
    QFETCH(bool, deleted);

    std::unique_ptr<Query> query(newQuery());
    BankAccount second;
    second.name = QStringLiteral("Toinen pankki");
    second.rowNumber = 2;
    QVERIFY2(query->saveBankAccount(&second), qPrintable(query->lastError()));
    BankAccount account;
    account.name = QStringLiteral("Pankki Oyj");
    account.shortName = QStringLiteral("Pankki");
    account.iban = QStringLiteral("FI2112345600000785");
    account.bic = QStringLiteral("NDEAFIHH");
    account.rowNumber = 1;
    account.visible = visible;
    account.deleted = deleted;
    QVERIFY2(query->saveBankAccount(&account), qPrintable(query->lastError()));
    QVERIFY(account.id != second.id);

    QVERIFY(query->fetchBankAccounts());
    QVERIFY(query->next());
    BankAccount loaded;
    query->bankAccount(&loaded); // ordered by row number: the first comes first
    QCOMPARE(loaded.id, account.id);
    QCOMPARE(loaded.name, account.name);
    QCOMPARE(loaded.shortName, account.shortName);
    QCOMPARE(loaded.iban, account.iban);
    QCOMPARE(loaded.bic, account.bic);
    QCOMPARE(loaded.rowNumber, 1);
    QCOMPARE(loaded.visible, visible);
    QCOMPARE(loaded.deleted, deleted);
    QVERIFY(query->next());
    BankAccount loadedSecond;
    query->bankAccount(&loadedSecond);
    QCOMPARE(loadedSecond.id, second.id);
    QCOMPARE(loadedSecond.visible, true);
    QCOMPARE(loadedSecond.deleted, false);

    loaded.visible = !visible;
    QVERIFY(query->saveBankAccount(&loaded));
    QVERIFY(query->deleteBankAccount(second.id));
    QVERIFY(query->fetchBankAccounts());
    QVERIFY(query->next());
    query->bankAccount(&loaded);
    QCOMPARE(loaded.visible, !visible);
    QCOMPARE(loaded.deleted, deleted);
    QVERIFY(query->next());
    query->bankAccount(&loadedSecond);
    QCOMPARE(loadedSecond.deleted, true); // marked, not removed
    QVERIFY(!query->next());
}

void StorageTest::printScripts()
{
    std::unique_ptr<Query> query(newQuery());
    const QList<QPair<QString, QString>> scripts { { QStringLiteral("invoice"),
                                                       QStringLiteral("Oma lasku") },
        { QStringLiteral("finvoice"), QStringLiteral("Finvoice") },
        { QStringLiteral("invoice"), QStringLiteral("Lasku") } };
    QList<int> ids;
    for (const auto& pair : scripts) {
        PrintScript script;
        script.type = pair.first;
        script.name = pair.second;
        script.sourceCode = QStringLiteral("// ") + pair.second + QStringLiteral("\nprint('ä');\n");
        QVERIFY2(query->savePrintScript(&script), qPrintable(query->lastError()));
        ids.append(script.id);
    }

    // Ordered by type, then name.
    QVERIFY(query->fetchPrintScriptSummaries());
    QStringList order;
    while (query->next()) {
        PrintScript script;
        query->printScriptSummary(&script);
        QVERIFY(script.sourceCode.isEmpty());
        order.append(script.type + QLatin1Char('/') + script.name);
    }
    QCOMPARE(order,
        QStringList({ QStringLiteral("finvoice/Finvoice"), QStringLiteral("invoice/Lasku"),
            QStringLiteral("invoice/Oma lasku") }));

    QVERIFY(query->fetchPrintScriptDetails());
    int count = 0;
    while (query->next()) {
        PrintScript script;
        query->printScriptDetails(&script);
        QCOMPARE(script.sourceCode,
            QStringLiteral("// ") + script.name + QStringLiteral("\nprint('ä');\n"));
        ++count;
    }
    QCOMPARE(count, 3);

    PrintScript one;
    QVERIFY(query->fetchPrintScript(ids.at(1), &one));
    QCOMPARE(one.name, QStringLiteral("Finvoice"));
    QCOMPARE(one.id, ids.at(1));
    one.sourceCode = QString();
    QVERIFY2(query->savePrintScript(&one), qPrintable(query->lastError()));
    PrintScript again;
    QVERIFY(query->fetchPrintScript(ids.at(1), &again));
    QCOMPARE(again.sourceCode, QString());

    QVERIFY(!query->fetchPrintScript(-1, &again));
    QVERIFY(query->deletePrintScript(ids.at(1)));
    QVERIFY(!query->fetchPrintScript(ids.at(1), &again));
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM print_script")).toInt(), 2);
}

void StorageTest::invoiceRoundTrip_data()
{
    QTest::addColumn<QDate>("deliveryDate");
    QTest::addRow("without delivery date") << QDate();
    QTest::addRow("with delivery date") << QDate(2024, 12, 31);
}

void StorageTest::invoiceRoundTrip()
{
    QFETCH(QDate, deliveryDate);
    const int customerId = addCustomer(1, QStringLiteral("Asiakas"));
    QVERIFY(customerId >= 0);

    std::unique_ptr<Query> query(newQuery());
    Invoice invoice;
    invoice.customerId = customerId;
    invoice.type = 2;
    invoice.number = 1234;
    invoice.date = QDate(2025, 1, 2);
    invoice.paymentTerms = QStringLiteral("14 päivää netto");
    invoice.delivery = QStringLiteral("Nouto");
    invoice.deliveryDate = deliveryDate;
    invoice.buyerRef = QStringLiteral("Tilaus 5");
    invoice.sellerRef = QStringLiteral("Myyjä");
    invoice.interestOnArrears = 1150;
    invoice.dueDate = QDate(2025, 1, 16);
    invoice.referenceNumber = QStringLiteral("12344");
    invoice.totalAmount = 2147483647;
    invoice.balance = -2147483647;
    invoice.setProperty(QStringLiteral("t1"), QStringLiteral("Huomio:\r\nrivi"));
    invoice.setProperty(QStringLiteral("attributes/Projekti"), QStringLiteral("P-1"));
    QVERIFY2(query->saveInvoice(&invoice), qPrintable(query->lastError()));
    QVERIFY(invoice.id >= 0);

    QVERIFY(query->fetchInvoiceDetails(invoice.id));
    QVERIFY(query->next());
    Invoice loaded;
    query->invoiceDetails(&loaded);
    QVERIFY(!query->next());
    QCOMPARE(loaded.id, invoice.id);
    QCOMPARE(loaded.customerId, customerId);
    QCOMPARE(loaded.type, 2);
    QCOMPARE(loaded.number, 1234);
    QCOMPARE(loaded.date, invoice.date);
    QCOMPARE(loaded.paymentTerms, invoice.paymentTerms);
    QCOMPARE(loaded.delivery, invoice.delivery);
    QCOMPARE(loaded.deliveryDate, deliveryDate);
    QCOMPARE(loaded.buyerRef, invoice.buyerRef);
    QCOMPARE(loaded.sellerRef, invoice.sellerRef);
    QCOMPARE(loaded.interestOnArrears, 1150);
    QCOMPARE(loaded.dueDate, invoice.dueDate);
    QCOMPARE(loaded.referenceNumber, invoice.referenceNumber);
    QCOMPARE(loaded.totalAmount, 2147483647);
    QCOMPARE(loaded.balance, -2147483647);
    // The carriage return is dropped by the property text format.
    QCOMPARE(loaded.property(QStringLiteral("t1")).toString(), QStringLiteral("Huomio:\nrivi"));
    QCOMPARE(
        loaded.property(QStringLiteral("attributes/Projekti")).toString(), QStringLiteral("P-1"));
    QCOMPARE(m_db->value(QStringLiteral("SELECT tags FROM invoice")).toInt(), 0);

    QVERIFY(query->fetchInvoiceSummaries(InvoiceCriteria()));
    QVERIFY(query->next());
    Invoice summary;
    query->invoiceSummary(&summary);
    QCOMPARE(summary.id, invoice.id);
    QCOMPARE(summary.customerId, customerId);
    QCOMPARE(summary.type, 2);
    QCOMPARE(summary.number, 1234);
    QCOMPARE(summary.date, invoice.date);
    QCOMPARE(summary.dueDate, invoice.dueDate);
    QCOMPARE(summary.deliveryDate, deliveryDate);
    QCOMPARE(summary.referenceNumber, invoice.referenceNumber);
    QCOMPARE(summary.totalAmount, invoice.totalAmount);
    QCOMPARE(summary.balance, invoice.balance);
    QVERIFY(summary.paymentTerms.isEmpty()); // not part of a summary

    // The second save updates: the delivery date flips between NULL and set.
    loaded.deliveryDate = deliveryDate.isValid() ? QDate() : QDate(2025, 2, 1);
    loaded.balance = 0;
    QVERIFY2(query->saveInvoice(&loaded), qPrintable(query->lastError()));
    QCOMPARE(loaded.id, invoice.id);
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM invoice")).toInt(), 1);
    QVERIFY(query->fetchInvoiceDetails(invoice.id));
    QVERIFY(query->next());
    Invoice updated;
    query->invoiceDetails(&updated);
    QCOMPARE(updated.deliveryDate, loaded.deliveryDate);
    QCOMPARE(updated.balance, 0);

    QVERIFY(query->deleteInvoice(invoice.id));
    QVERIFY(query->fetchInvoiceDetails(invoice.id));
    QVERIFY(!query->next());
}

void StorageTest::invoiceWithoutDateIsRefused_data()
{
    QTest::addColumn<bool>("withDate");
    QTest::addColumn<bool>("withDueDate");
    QTest::addRow("no date") << false << true;
    QTest::addRow("no due date") << true << false;
}

void StorageTest::invoiceWithoutDateIsRefused()
{
    QFETCH(bool, withDate);
    QFETCH(bool, withDueDate);
    const int customerId = addCustomer(1, QStringLiteral("Asiakas"));
    std::unique_ptr<Query> query(newQuery());
    Invoice invoice = makeInvoice(1, customerId);
    if (!withDate)
        invoice.date = QDate();
    if (!withDueDate)
        invoice.dueDate = QDate();
    // The NOT NULL columns refuse a missing date: the save reports it.
    QVERIFY(!query->saveInvoice(&invoice));
    QVERIFY(!query->lastError().isEmpty());
    QCOMPARE(invoice.id, -1);
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM invoice")).toInt(), 0);
}

void StorageTest::invoiceItemsRoundTrip()
{
    const int customerId = addCustomer(1, QStringLiteral("Asiakas"));
    std::unique_ptr<Query> query(newQuery());
    Invoice invoice = makeInvoice(1, customerId);
    QVERIFY2(query->saveInvoice(&invoice), qPrintable(query->lastError()));

    // Saved in reverse row order; read back by row number.
    QList<InvoiceItem> items;
    for (int row = 2; row >= 0; --row) {
        InvoiceItem item;
        item.invoiceId = invoice.id;
        item.productNumber = QStringLiteral("P%1").arg(row);
        item.productName = QStringLiteral("Tuote %1").arg(row);
        item.quantity = Q_INT64_C(3000000000) + row; // above 2^31
        item.unitCode = QStringLiteral("h");
        item.amount = Q_INT64_C(9876543210123) * (row == 1 ? -1 : 1);
        item.vatRate = 2400 + row;
        item.vatExcluded = row % 2 == 0;
        item.discount = 1000 * row;
        item.text = row == 0 ? QString() : QStringLiteral("Rivi %1").arg(row);
        item.rowNumber = row;
        QVERIFY2(query->saveInvoiceItem(&item), qPrintable(query->lastError()));
        QVERIFY(item.id >= 0);
        items.prepend(item);
    }

    QVERIFY(query->fetchInvoiceItems(invoice.id));
    for (const InvoiceItem& expected : items) {
        QVERIFY(query->next());
        InvoiceItem loaded;
        query->invoiceItem(&loaded);
        QCOMPARE(loaded.id, expected.id);
        QCOMPARE(loaded.invoiceId, invoice.id);
        QCOMPARE(loaded.productNumber, expected.productNumber);
        QCOMPARE(loaded.productName, expected.productName);
        QCOMPARE(loaded.quantity, expected.quantity);
        QCOMPARE(loaded.unitCode, expected.unitCode);
        QCOMPARE(loaded.amount, expected.amount);
        QCOMPARE(loaded.vatRate, expected.vatRate);
        QCOMPARE(loaded.vatExcluded, expected.vatExcluded);
        QCOMPARE(loaded.discount, expected.discount);
        QCOMPARE(loaded.text, expected.text);
        QCOMPARE(loaded.rowNumber, expected.rowNumber);
    }
    QVERIFY(!query->next());

    InvoiceItem changed = items.at(1);
    changed.text = QStringLiteral("Muutettu");
    changed.vatExcluded = !changed.vatExcluded;
    QVERIFY2(query->saveInvoiceItem(&changed), qPrintable(query->lastError()));
    QCOMPARE(changed.id, items.at(1).id);
    QVERIFY(query->fetchInvoiceItem(changed.id));
    QVERIFY(query->next());
    InvoiceItem loaded;
    query->invoiceItem(&loaded);
    QCOMPARE(loaded.text, QStringLiteral("Muutettu"));
    QCOMPARE(loaded.vatExcluded, changed.vatExcluded);
    QVERIFY(!query->next());

    QVERIFY(query->deleteInvoiceItem(changed.id));
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM invoice_item")).toInt(), 2);
    QVERIFY(query->deleteInvoiceItems(invoice.id));
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM invoice_item")).toInt(), 0);
}

void StorageTest::paymentsRoundTrip()
{
    const int customerId = addCustomer(1, QStringLiteral("Asiakas"));
    const int accountId = addBankAccount(QStringLiteral("Pankki"));
    std::unique_ptr<Query> query(newQuery());
    Invoice invoice = makeInvoice(1, customerId);
    QVERIFY(query->saveInvoice(&invoice));

    Payment withAccount;
    withAccount.invoiceId = invoice.id;
    withAccount.date = QDate(2024, 2, 1);
    withAccount.bankAccountId = accountId;
    withAccount.amount = 1500;
    Payment withoutAccount;
    withoutAccount.invoiceId = invoice.id;
    withoutAccount.date = QDate(2024, 2, 1);
    withoutAccount.amount = -200;
    Payment earlier;
    earlier.invoiceId = invoice.id;
    earlier.date = QDate(2024, 1, 20);
    earlier.bankAccountId = accountId;
    earlier.amount = 300;
    for (Payment* payment : { &withAccount, &withoutAccount, &earlier })
        QVERIFY2(query->savePayment(payment), qPrintable(query->lastError()));
    QVERIFY(
        m_db->value(QStringLiteral("SELECT count(*) FROM payment WHERE bank_account_id IS NULL"))
            .toInt()
        == 1);

    // By date, then bank account (NULL sorts differently on the two servers,
    // so only the earlier date and the set of the two later ones are fixed).
    QVERIFY(query->fetchPayments(invoice.id));
    QList<Payment> loaded;
    while (query->next()) {
        Payment payment;
        query->payment(&payment);
        loaded.append(payment);
    }
    QCOMPARE(loaded.size(), 3);
    QCOMPARE(loaded.at(0).id, earlier.id);
    QCOMPARE(loaded.at(0).date, earlier.date);
    QCOMPARE(loaded.at(0).amount, 300);
    QCOMPARE(loaded.at(0).bankAccountId, accountId);
    const Payment& nullAccount = loaded.at(1).bankAccountId == -1 ? loaded.at(1) : loaded.at(2);
    QCOMPARE(nullAccount.id, withoutAccount.id);
    QCOMPARE(nullAccount.amount, -200);

    QVERIFY(query->fetchPayment(withoutAccount.id));
    QVERIFY(query->next());
    Payment single;
    query->payment(&single);
    QCOMPARE(single.bankAccountId, -1);
    QCOMPARE(single.invoiceId, invoice.id);
    QCOMPARE(single.date, QDate(2024, 2, 1));

    single.bankAccountId = accountId;
    single.amount = 250;
    QVERIFY2(query->savePayment(&single), qPrintable(query->lastError()));
    QVERIFY(query->fetchPayment(withoutAccount.id));
    QVERIFY(query->next());
    Payment updated;
    query->payment(&updated);
    QCOMPARE(updated.bankAccountId, accountId);
    QCOMPARE(updated.amount, 250);

    QVERIFY(query->deletePayment(earlier.id));
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM payment")).toInt(), 2);
    QVERIFY(query->deletePayments(invoice.id));
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM payment")).toInt(), 0);
}

void StorageTest::newIdsFollowTheTable()
{
    const int customerId = addCustomer(1, QStringLiteral("Asiakas"));
    std::unique_ptr<Query> query(newQuery());
    QList<int> ids;
    for (int number = 1; number <= 3; ++number) {
        Invoice invoice = makeInvoice(number, customerId);
        QVERIFY(query->saveInvoice(&invoice));
        ids.append(invoice.id);
        // The id handed back is the one that the row really got.
        QCOMPARE(m_db->value(QStringLiteral("SELECT id FROM invoice WHERE number = %1").arg(number))
                     .toInt(),
            invoice.id);
    }
    QVERIFY(ids.at(0) < ids.at(1) && ids.at(1) < ids.at(2));

    if (m_db->backend() == TestDatabase::PostgreSQL) {
        QCOMPARE(m_db->value(QStringLiteral("SELECT last_value FROM invoice_id_seq")).toInt(),
            ids.at(2));
        auto* pgQuery = qobject_cast<PostgreSQLQuery*>(query.get());
        QVERIFY(pgQuery);
        QCOMPARE(pgQuery->sequenceValue(QStringLiteral("invoice_id_seq")), ids.at(2));
        // currval of a sequence not used in this session is an error.
        QCOMPARE(pgQuery->sequenceValue(QStringLiteral("payment_id_seq")), -1);
        QVERIFY(!pgQuery->lastError().isEmpty());
    }
}

void StorageTest::maxInvoiceNumber()
{
    std::unique_ptr<Query> query(newQuery());
    QCOMPARE(query->maxInvoiceNumber(), 0);
    const int customerId = addCustomer(1, QStringLiteral("Asiakas"));
    for (int number : { 7, 1200, 35 }) {
        Invoice invoice = makeInvoice(number, customerId);
        QVERIFY(query->saveInvoice(&invoice));
    }
    QCOMPARE(query->maxInvoiceNumber(), 1200);
}

// Six invoices of two customers. Effective delivery dates (the delivery date,
// else the invoice date): 1: 10.1., 2: 28.1., 3: 20.2., 4: 10.3., 5: 15.3.,
// 6: 15.2.
void StorageTest::addCriteriaFixture()
{
    m_customerIds = { addCustomer(1, QStringLiteral("A")), addCustomer(2, QStringLiteral("B")) };
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
            { QStringLiteral("Kahvi"), QStringLiteral("Tee") } },
        { 2, 0, 1, QDate(2024, 2, 5), QDate(2024, 2, 19), QDate(2024, 1, 28), 5000, 5000, "1012",
            { QStringLiteral("Kahvinkeitin 2 kpl") } },
        { 3, 2, 0, QDate(2024, 2, 20), QDate(2024, 3, 5), QDate(), -2000, 0, "1025",
            { QStringLiteral("100% puuvillaa") } },
        { 4, 1, 1, QDate(2024, 3, 1), QDate(2024, 3, 15), QDate(2024, 3, 10), 700, 700, "1038",
            { QStringLiteral("a_b") } },
        { 5, 3, 0, QDate(2024, 3, 15), QDate(2024, 3, 29), QDate(), 0, 300, "1041",
            { QStringLiteral("axb") } },
        { 6, 0, 0, QDate(2024, 4, 2), QDate(2024, 4, 16), QDate(2024, 2, 15), 12345, 12345, "1054",
            { QStringLiteral("KAHVI") } },
    };
    std::unique_ptr<Query> query(newQuery());
    // Stored out of number order so that the ordering is really done by SQL.
    for (int i : { 3, 0, 5, 1, 4, 2 }) {
        const Row& row = rows.at(i);
        Invoice invoice;
        invoice.number = row.number;
        invoice.type = row.type;
        invoice.customerId = m_customerIds.at(row.customer);
        invoice.date = row.date;
        invoice.dueDate = row.due;
        invoice.deliveryDate = row.delivery;
        invoice.totalAmount = row.total;
        invoice.balance = row.balance;
        invoice.referenceNumber = QLatin1String(row.reference);
        QVERIFY2(query->saveInvoice(&invoice), qPrintable(query->lastError()));
        m_invoiceIds.insert(row.number, invoice.id);
        int rowNumber = 0;
        for (const QString& text : row.texts) {
            InvoiceItem item;
            item.invoiceId = invoice.id;
            item.text = text;
            item.rowNumber = rowNumber++;
            QVERIFY2(query->saveInvoiceItem(&item), qPrintable(query->lastError()));
        }
    }
}

void StorageTest::invoiceCriteria_data()
{
    QTest::addColumn<QVariantMap>("set");
    QTest::addColumn<QList<int>>("numbers");

    auto d = [](int y, int m, int day) { return QVariant(QDate(y, m, day)); };
    auto row = [](const char* name, const QVariantMap& set, const QList<int>& numbers) {
        QTest::addRow("%s", name) << set << numbers;
    };
    const QList<int> all { 1, 2, 3, 4, 5, 6 };
    row("cleared criteria list everything by number", {}, all);
    row("date from", { { "dateFrom", d(2024, 2, 5) } }, { 2, 3, 4, 5, 6 });
    row("date to", { { "dateTo", d(2024, 2, 20) } }, { 1, 2, 3 });
    row("date range", { { "dateFrom", d(2024, 2, 1) }, { "dateTo", d(2024, 3, 1) } }, { 2, 3, 4 });
    row("due date from", { { "dueDateFrom", d(2024, 3, 15) } }, { 4, 5, 6 });
    row("due date to", { { "dueDateTo", d(2024, 2, 19) } }, { 1, 2 });
    row("delivery period, NULL falls back to the date",
        { { "deliveryDateFrom", d(2024, 2, 1) }, { "deliveryDateTo", d(2024, 2, 29) } }, { 3, 6 });
    row("delivery from", { { "deliveryDateFrom", d(2024, 3, 1) } }, { 4, 5 });
    row("delivery to", { { "deliveryDateTo", d(2024, 1, 31) } }, { 1, 2 });
    row("delivery period start after end",
        { { "deliveryDateFrom", d(2024, 3, 12) }, { "deliveryDateTo", d(2024, 3, 11) } }, {});
    row("delivery single day",
        { { "deliveryDateFrom", d(2024, 3, 15) }, { "deliveryDateTo", d(2024, 3, 15) } }, { 5 });
    row("number from", { { "numberFrom", 3 } }, { 3, 4, 5, 6 });
    row("number from 0 is a condition", { { "numberFrom", 0 } }, all);
    row("number to", { { "numberTo", 2 } }, { 1, 2 });
    row("number", { { "number", 4 } }, { 4 });
    row("unknown number", { { "number", 99 } }, {});
    row("id", { { "idOfNumber", 3 } }, { 3 });
    row("customer", { { "customer", 1 } }, { 2, 4 });
    row("reference number", { { "referenceNumber", "1038" } }, { 4 });
    row("types 0 and 2", { { "types", 5 } }, { 1, 2, 3, 6 });
    row("type 3", { { "types", 8 } }, { 5 });
    row("empty type mask", { { "types", 0 } }, {});
    row("negative type mask", { { "types", -1 } }, all);
    row("paid", { { "paymentStatus", 0 } }, { 1, 3 });
    row("unpaid", { { "paymentStatus", 1 } }, { 2, 4, 5, 6 });
    row("both", { { "paymentStatus", 2 } }, all);
    row("balance date overrides payment status",
        { { "paymentStatus", 1 }, { "balanceDate", d(2024, 3, 1) } }, all);
    row("limit", { { "limit", 2 } }, { 1, 2 });
    row("limit 0 does not limit", { { "limit", 0 } }, all);
    row("descending", { { "descending", true } }, { 6, 5, 4, 3, 2, 1 });
    row("latest two", { { "limit", 2 }, { "descending", true } }, { 6, 5 });
    row("text whole", { { "text", "Kahvi" } }, { 1, 6 });
    row("text ignores case", { { "text", "kahvi" } }, { 1, 6 });
    row("text star", { { "text", "*kahvi*" } }, { 1, 2, 6 });
    row("text star at end", { { "text", "Kahvin*" } }, { 2 });
    row("text question mark", { { "text", "K?hvi" } }, { 1, 6 });
    row("text typed underscore is a wildcard", { { "text", "a_b" } }, { 4, 5 });
    row("text backslash escapes", { { "text", "a\\_b" } }, { 4 });
    row("text typed percent is a wildcard", { { "text", "100%" } }, { 3 });
    row("text not whole", { { "text", "Kahvinkeitin" } }, {});
    row("text second row", { { "text", "Tee" } }, { 1 });
    row("customer, type and unpaid", { { "customer", 0 }, { "types", 1 }, { "paymentStatus", 1 } },
        { 6 });
    row("date and text", { { "dateFrom", d(2024, 2, 1) }, { "text", "*kahvi*" } }, { 2, 6 });
    row("everything at once",
        { { "dateFrom", d(2024, 1, 1) }, { "dateTo", d(2024, 12, 31) },
            { "dueDateFrom", d(2024, 1, 1) }, { "dueDateTo", d(2024, 12, 31) },
            { "deliveryDateFrom", d(2024, 1, 1) }, { "deliveryDateTo", d(2024, 12, 31) },
            { "numberFrom", 1 }, { "numberTo", 6 }, { "number", 2 }, { "idOfNumber", 2 },
            { "customer", 1 }, { "referenceNumber", "1012" }, { "types", 1 },
            { "paymentStatus", 1 }, { "text", "*keitin*" }, { "limit", 5 },
            { "descending", true } },
        { 2 });
}

void StorageTest::invoiceCriteria()
{
    QFETCH(QVariantMap, set);
    QFETCH(QList<int>, numbers);
    addCriteriaFixture();

    InvoiceCriteria criteria;
    for (auto it = set.constBegin(); it != set.constEnd(); ++it) {
        const QString& key = it.key();
        const QVariant& v = it.value();
        if (key == QLatin1String("dateFrom"))
            criteria.dateFrom = v.toDate();
        else if (key == QLatin1String("dateTo"))
            criteria.dateTo = v.toDate();
        else if (key == QLatin1String("dueDateFrom"))
            criteria.dueDateFrom = v.toDate();
        else if (key == QLatin1String("dueDateTo"))
            criteria.dueDateTo = v.toDate();
        else if (key == QLatin1String("deliveryDateFrom"))
            criteria.deliveryDateFrom = v.toDate();
        else if (key == QLatin1String("deliveryDateTo"))
            criteria.deliveryDateTo = v.toDate();
        else if (key == QLatin1String("numberFrom"))
            criteria.numberFrom = v.toInt();
        else if (key == QLatin1String("numberTo"))
            criteria.numberTo = v.toInt();
        else if (key == QLatin1String("number"))
            criteria.number = v.toInt();
        else if (key == QLatin1String("idOfNumber"))
            criteria.id = m_invoiceIds.value(v.toInt());
        else if (key == QLatin1String("customer"))
            criteria.customerId = m_customerIds.at(v.toInt());
        else if (key == QLatin1String("types"))
            criteria.types = v.toInt();
        else if (key == QLatin1String("paymentStatus"))
            criteria.paymentStatus = v.toInt();
        else if (key == QLatin1String("balanceDate"))
            criteria.balanceDate = v.toDate();
        else if (key == QLatin1String("referenceNumber"))
            criteria.referenceNumber = v.toString();
        else if (key == QLatin1String("text"))
            criteria.text = v.toString();
        else if (key == QLatin1String("limit"))
            criteria.limit = v.toInt();
        else if (key == QLatin1String("descending"))
            criteria.descending = v.toBool();
        else
            QFAIL(qPrintable(QStringLiteral("unknown key ") + key));
    }

    std::unique_ptr<Query> query(newQuery());
    QVERIFY2(query->fetchInvoiceSummaries(criteria), qPrintable(query->lastError()));
    QList<int> found;
    while (query->next()) {
        Invoice invoice;
        query->invoiceSummary(&invoice);
        QCOMPARE(invoice.id, m_invoiceIds.value(invoice.number));
        found.append(invoice.number);
    }
    QCOMPARE(found, numbers);

    QVERIFY2(query->fetchInvoiceDetails(criteria), qPrintable(query->lastError()));
    found.clear();
    while (query->next()) {
        Invoice invoice;
        query->invoiceDetails(&invoice);
        found.append(invoice.number);
    }
    QCOMPARE(found, numbers);

    // The count has no limit.
    if (criteria.limit <= 0)
        QCOMPARE(query->fetchInvoiceCount(criteria), int(numbers.size()));

    // Rows of the selected invoices, by invoice number and row number.
    QVERIFY2(query->fetchInvoiceItems(criteria), qPrintable(query->lastError()));
    QList<int> itemInvoices;
    while (query->next()) {
        InvoiceItem item;
        query->invoiceItem(&item);
        itemInvoices.append(m_invoiceIds.key(item.invoiceId));
    }
    QList<int> expectedItems;
    QList<int> sorted = numbers;
    std::sort(sorted.begin(), sorted.end());
    for (int number : sorted) {
        expectedItems.append(number);
        if (number == 1)
            expectedItems.append(1); // invoice 1 has two rows
    }
    QCOMPARE(itemInvoices, expectedItems);
}

void StorageTest::paymentCriteria_data()
{
    QTest::addColumn<QVariantMap>("set");
    QTest::addColumn<QList<int>>("amounts");
    // Payments (amount: invoice number, date, account): 100: 1, 1.2., A;
    // 200: 1, 5.2., none; 300: 2, 3.2., B; 400: 4, 10.3., A; 500: 6, 1.4., B.
    auto row = [](const char* name, const QVariantMap& set, const QList<int>& amounts) {
        QTest::addRow("%s", name) << set << amounts;
    };
    row("all, by date", {}, { 100, 300, 200, 400, 500 });
    row("date from", { { "dateFrom", QDate(2024, 2, 3) } }, { 300, 200, 400, 500 });
    row("date to", { { "dateTo", QDate(2024, 2, 3) } }, { 100, 300 });
    row("bank account", { { "account", 1 } }, { 300, 500 });
    row("invoice", { { "invoice", 1 } }, { 100, 200 });
    row("id range", { { "idFromAmount", 200 }, { "idToAmount", 400 } }, { 300, 200, 400 });
    row("invoice criteria: type 0, by invoice number", { { "types", 1 } }, { 100, 200, 300, 500 });
    row("invoice criteria: customer A and date",
        { { "customer", 0 }, { "dateFrom", QDate(2024, 2, 2) } }, { 200, 500 });
}

void StorageTest::paymentCriteria()
{
    QFETCH(QVariantMap, set);
    QFETCH(QList<int>, amounts);
    addCriteriaFixture();
    const QList<int> accounts { addBankAccount(QStringLiteral("A")),
        addBankAccount(QStringLiteral("B")) };
    std::unique_ptr<Query> query(newQuery());
    struct P
    {
        int amount, invoice;
        QDate date;
        int account;
    };
    QMap<int, int> paymentIds; // amount -> id
    for (const P& p : { P { 100, 1, QDate(2024, 2, 1), 0 }, P { 200, 1, QDate(2024, 2, 5), -1 },
             P { 300, 2, QDate(2024, 2, 3), 1 }, P { 400, 4, QDate(2024, 3, 10), 0 },
             P { 500, 6, QDate(2024, 4, 1), 1 } }) {
        Payment payment;
        payment.amount = p.amount;
        payment.invoiceId = m_invoiceIds.value(p.invoice);
        payment.date = p.date;
        payment.bankAccountId = p.account < 0 ? -1 : accounts.at(p.account);
        QVERIFY2(query->savePayment(&payment), qPrintable(query->lastError()));
        paymentIds.insert(p.amount, payment.id);
    }

    PaymentCriteria paymentCriteria;
    InvoiceCriteria invoiceCriteria;
    bool withInvoiceCriteria = false;
    for (auto it = set.constBegin(); it != set.constEnd(); ++it) {
        const QString& key = it.key();
        if (key == QLatin1String("dateFrom"))
            paymentCriteria.dateFrom = it.value().toDate();
        else if (key == QLatin1String("dateTo"))
            paymentCriteria.dateTo = it.value().toDate();
        else if (key == QLatin1String("account"))
            paymentCriteria.bankAccountId = accounts.at(it.value().toInt());
        else if (key == QLatin1String("invoice"))
            paymentCriteria.invoiceId = m_invoiceIds.value(it.value().toInt());
        else if (key == QLatin1String("idFromAmount"))
            paymentCriteria.idFrom = paymentIds.value(it.value().toInt());
        else if (key == QLatin1String("idToAmount"))
            paymentCriteria.idTo = paymentIds.value(it.value().toInt());
        else if (key == QLatin1String("types")) {
            invoiceCriteria.types = it.value().toInt();
            withInvoiceCriteria = true;
        } else if (key == QLatin1String("customer")) {
            invoiceCriteria.customerId = m_customerIds.at(it.value().toInt());
            withInvoiceCriteria = true;
        } else
            QFAIL(qPrintable(QStringLiteral("unknown key ") + key));
    }

    auto read = [&]() {
        QList<int> result;
        while (query->next()) {
            Payment payment;
            query->payment(&payment);
            result.append(payment.amount);
        }
        return result;
    };
    if (withInvoiceCriteria) {
        QVERIFY2(
            query->fetchPayments(paymentCriteria, invoiceCriteria), qPrintable(query->lastError()));
        QCOMPARE(read(), amounts);
    } else {
        QVERIFY2(query->fetchPayments(paymentCriteria), qPrintable(query->lastError()));
        QCOMPARE(read(), amounts);
        // With cleared invoice criteria the join lists the same payments,
        // ordered by invoice number first.
        QVERIFY2(query->fetchPayments(paymentCriteria, InvoiceCriteria()),
            qPrintable(query->lastError()));
        QList<int> byInvoice = read();
        QList<int> expected = amounts;
        std::sort(expected.begin(), expected.end()); // amounts rise with invoice and date
        QCOMPARE(byInvoice, expected);
    }
}

void StorageTest::invoicesAndPayments()
{
    addCriteriaFixture();
    std::unique_ptr<Query> query(newQuery());
    // Same date for invoices 6 and 2: ordered by invoice number then.
    for (const auto& p : { qMakePair(6, 600), qMakePair(2, 200), qMakePair(1, 100) }) {
        Payment payment;
        payment.invoiceId = m_invoiceIds.value(p.first);
        payment.amount = p.second;
        payment.date = p.first == 1 ? QDate(2024, 3, 1) : QDate(2024, 2, 1);
        QVERIFY(query->savePayment(&payment));
    }
    InvoiceCriteria invoiceCriteria;
    invoiceCriteria.types = 1; // plain invoices
    QVERIFY2(query->fetchInvoicesAndPayments(PaymentCriteria(), invoiceCriteria),
        qPrintable(query->lastError()));
    QList<int> order;
    while (query->next()) {
        Invoice invoice;
        Payment payment;
        query->invoiceAndPayment(&invoice, &payment);
        QCOMPARE(payment.invoiceId, invoice.id);
        QCOMPARE(invoice.id, m_invoiceIds.value(invoice.number));
        QCOMPARE(payment.amount, invoice.number * 100);
        QCOMPARE(payment.bankAccountId, -1);
        if (invoice.number == 2) {
            QCOMPARE(invoice.totalAmount, 5000);
            QCOMPARE(invoice.deliveryDate, QDate(2024, 1, 28));
            QCOMPARE(invoice.dueDate, QDate(2024, 2, 19));
        }
        order.append(invoice.number);
    }
    QCOMPARE(order, QList<int>({ 2, 6, 1 }));
}

void StorageTest::balanceAtDate()
{
    addCriteriaFixture();
    std::unique_ptr<Query> query(newQuery());
    // Invoice 6 (total 123.45): 20.00 on 1.5., 30.00 on 1.6.; invoice 2
    // (total 50.00): 50.00 on 1.7.
    for (const auto& p :
        { std::make_tuple(6, 2000, QDate(2024, 5, 1)), std::make_tuple(6, 3000, QDate(2024, 6, 1)),
            std::make_tuple(2, 5000, QDate(2024, 7, 1)) }) {
        Payment payment;
        payment.invoiceId = m_invoiceIds.value(std::get<0>(p));
        payment.amount = std::get<1>(p);
        payment.date = std::get<2>(p);
        QVERIFY(query->savePayment(&payment));
    }

    InvoiceCriteria criteria;
    criteria.numberFrom = 2;
    QVERIFY(query->fetchPaymentAmounts(criteria, QDate(2024, 6, 1)));
    QList<QPair<int, long long>> sums;
    while (query->next()) {
        int invoiceId = -1;
        long long amount = 0;
        query->paymentAmount(&invoiceId, &amount);
        sums.append({ m_invoiceIds.key(invoiceId), amount });
    }
    QCOMPARE(sums, (QList<QPair<int, long long>> { { 6, 5000 } }));

    criteria.balanceDate = QDate(2024, 5, 15);
    QVERIFY(!query->invoiceBalanceMode());
    QVERIFY(query->fetchInvoiceSummaries(criteria));
    QMap<int, int> balances;
    while (query->next()) {
        Invoice invoice;
        query->invoiceSummary(&invoice);
        balances.insert(invoice.number, invoice.balance);
    }
    QCOMPARE(balances.value(6), 12345); // the stored balance

    query->setInvoiceBalanceMode(true);
    QVERIFY(query->invoiceBalanceMode());
    for (const auto& check : { std::make_tuple(QDate(2024, 4, 30), 12345, 5000),
             std::make_tuple(QDate(2024, 5, 15), 10345, 5000),
             std::make_tuple(QDate(2024, 7, 1), 7345, 0) }) {
        criteria.balanceDate = std::get<0>(check);
        QVERIFY2(query->fetchInvoiceSummaries(criteria), qPrintable(query->lastError()));
        balances.clear();
        while (query->next()) {
            Invoice invoice;
            query->invoiceSummary(&invoice);
            balances.insert(invoice.number, invoice.balance);
        }
        QCOMPARE(balances.keys(), QList<int>({ 2, 3, 4, 5, 6 }));
        QCOMPARE(balances.value(6), std::get<1>(check));
        QCOMPARE(balances.value(2), std::get<2>(check));
        QCOMPARE(balances.value(3), -2000); // no payments: the total
        QVERIFY(query->fetchInvoiceDetails(criteria));
        QVERIFY(query->next());
        Invoice details;
        query->invoiceDetails(&details);
        QCOMPARE(details.number, 2);
        QCOMPARE(details.balance, std::get<2>(check));
    }
}

void StorageTest::deleteBetween()
{
    addCriteriaFixture();
    std::unique_ptr<Query> query(newQuery());
    for (int number : m_invoiceIds.keys()) {
        Payment payment;
        payment.invoiceId = m_invoiceIds.value(number);
        payment.date = QDate(2024, 6, 1);
        payment.amount = number;
        QVERIFY(query->savePayment(&payment));
    }
    const int first = m_invoiceIds.value(2);
    const int last = m_invoiceIds.value(4);
    const int low = qMin(first, last);
    const int high = qMax(first, last);
    int inRange = 0;
    for (int id : m_invoiceIds)
        inRange += (id >= low && id <= high) ? 1 : 0;

    // Rows and payments go first: PostgreSQL checks the foreign keys.
    QVERIFY2(query->deleteInvoiceItemsBetween(low, high), qPrintable(query->lastError()));
    QVERIFY2(query->deletePaymentsBetween(low, high), qPrintable(query->lastError()));
    QVERIFY2(query->deleteInvoicesBetween(low, high), qPrintable(query->lastError()));
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM invoice")).toInt(), 6 - inRange);
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM payment")).toInt(), 6 - inRange);
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM invoice_item WHERE invoice_id "
                                        "BETWEEN %1 AND %2")
                             .arg(low)
                             .arg(high))
                 .toInt(),
        0);
    QVERIFY(m_db->value(QStringLiteral("SELECT count(*) FROM invoice_item")).toInt() > 0);
}

void StorageTest::settingsRoundTrip()
{
    std::unique_ptr<Query> query(newQuery());
    Settings settings;
    QVERIFY(query->fetchSettings());
    QVERIFY(query->next());
    query->settings(&settings);

    QByteArray logo;
    for (int i = 0; i < 256; ++i)
        logo.append(char(i));
    logo.append(QByteArray("\0\\'\"x", 5));
    settings.sellerName = QStringLiteral("Yritys Oy");
    settings.sellerStreetName = QStringLiteral("Tie 1");
    settings.sellerPostCode = QStringLiteral("33100");
    settings.sellerTownName = QStringLiteral("Tampere");
    settings.sellerCountry = QStringLiteral("Suomi");
    settings.sellerBusinessId = QStringLiteral("1234567-1");
    settings.sellerLogo = logo;
    settings.setProperty(QStringLiteral("finvoice/senderId"), QStringLiteral("0037"));
    QVERIFY2(query->updateSettings(&settings), qPrintable(query->lastError()));

    QVERIFY(query->fetchSettings());
    QVERIFY(query->next());
    Settings loaded;
    query->settings(&loaded);
    QCOMPARE(loaded.sellerName, settings.sellerName);
    QCOMPARE(loaded.sellerStreetName, settings.sellerStreetName);
    QCOMPARE(loaded.sellerPostCode, settings.sellerPostCode);
    QCOMPARE(loaded.sellerTownName, settings.sellerTownName);
    QCOMPARE(loaded.sellerCountry, settings.sellerCountry);
    QCOMPARE(loaded.sellerBusinessId, settings.sellerBusinessId);
    QCOMPARE(loaded.sellerLogo, logo);
    QCOMPARE(loaded.properties, settings.properties);
    QCOMPARE(m_db->value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);

    // An empty logo and an empty map are stored as empty, not NULL.
    loaded.sellerLogo = QByteArray();
    loaded.properties.clear();
    loaded.sellerName = QString();
    QVERIFY2(query->updateSettings(&loaded), qPrintable(query->lastError()));
    QVERIFY(query->fetchSettings());
    QVERIFY(query->next());
    Settings empty;
    query->settings(&empty);
    QVERIFY(empty.sellerLogo.isEmpty());
    QVERIFY(empty.properties.isEmpty());
    QVERIFY(empty.sellerName.isEmpty());
}

void StorageTest::transactions()
{
    const int customerId = addCustomer(1, QStringLiteral("Asiakas"));
    Database* db = m_db->database();
    std::unique_ptr<Query> query(newQuery());

    QVERIFY(db->transaction());
    Invoice dropped = makeInvoice(1, customerId);
    QVERIFY(query->saveInvoice(&dropped));
    InvoiceItem item;
    item.invoiceId = dropped.id;
    QVERIFY(query->saveInvoiceItem(&item));
    QVERIFY(db->rollback());
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM invoice")).toInt(), 0);
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM invoice_item")).toInt(), 0);

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
    std::unique_ptr<Query> query(newQuery());
    QCOMPARE(query->maxInvoiceNumber(), 0);
    QVERIFY(
        log.contains(QStringLiteral("debug: Tietokantakysely: SELECT max(number) FROM invoice")));

    Database* db = m_db->database();
    QVERIFY(db->transaction());
    QVERIFY(db->rollback());
    QVERIFY(log.contains(QStringLiteral("debug: Aloitetaan tietokantatapahtuma")));
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
