#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "domain/product.h"
#include "logcapture.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QDir>
#include <QStandardPaths>
#include <QtTest>
#include <memory>

namespace {

// The columns of the current schema and the version that brought each;
// older schemas are the current one minus the columns of later versions.
struct Column
{
    const char* name;
    const char* sqliteType;
    // nullptr: the same as in SQLite; "widened": integer before version 9,
    // bigint from it on.
    const char* postgresqlType;
    int since;
};

struct Table
{
    const char* name;
    QList<Column> columns;
};

const QList<Table>& tables()
{
    static const QList<Table> list {
        { "product",
            { { "number", "varchar(10) NOT NULL", nullptr, 1 },
                { "name", "varchar(100) NOT NULL", nullptr, 1 },
                { "unit_code", "varchar(10) NOT NULL", nullptr, 1 },
                { "amount", "integer NOT NULL", "widened", 1 },
                { "vat_rate", "integer NOT NULL", nullptr, 1 },
                { "vat_excluded", "integer NOT NULL", "boolean NOT NULL", 4 },
                { "category", "varchar(100) NOT NULL", nullptr, 6 } } },
        { "bank_account",
            { { "name", "varchar(50) NOT NULL", nullptr, 1 },
                { "short_name", "varchar(50) NOT NULL", nullptr, 1 },
                { "iban", "varchar(50) NOT NULL", nullptr, 1 },
                { "bic", "varchar(50) NOT NULL", nullptr, 1 },
                { "row_number", "integer NOT NULL", nullptr, 1 },
                { "visible", "boolean NOT NULL", nullptr, 10 },
                { "deleted", "boolean NOT NULL", nullptr, 1 } } },
        { "customer",
            { { "number", "integer NOT NULL", nullptr, 1 },
                { "name", "varchar(200) NOT NULL", nullptr, 1 },
                { "street_name", "varchar(100) NOT NULL", nullptr, 1 },
                { "post_code", "varchar(10) NOT NULL", nullptr, 1 },
                { "town_name", "varchar(100) NOT NULL", nullptr, 1 },
                { "country", "varchar(100) NOT NULL", nullptr, 1 },
                { "contact", "varchar(100) NOT NULL", nullptr, 3 },
                { "vat_number", "varchar(50) NOT NULL", nullptr, 2 },
                { "reference_number", "varchar(50) NOT NULL", nullptr, 2 },
                { "email_address", "varchar(100) NOT NULL", nullptr, 2 },
                { "phone_number", "varchar(100) NOT NULL", nullptr, 3 },
                { "payment_terms", "varchar(100) NOT NULL", nullptr, 5 },
                { "properties", "text NOT NULL", nullptr, 7 },
                { "deleted", "boolean NOT NULL", nullptr, 1 } } },
        { "invoice",
            { { "customer_id", "integer NOT NULL", nullptr, 1 },
                { "type", "integer NOT NULL", nullptr, 1 },
                { "number", "integer NOT NULL", nullptr, 1 },
                { "date", "date NOT NULL", nullptr, 1 },
                { "payment_terms", "varchar(100) NOT NULL", nullptr, 1 },
                { "delivery", "varchar(100) NOT NULL", nullptr, 1 },
                { "delivery_date", "date", nullptr, 8 },
                { "buyer_ref", "varchar(100) NOT NULL", nullptr, 1 },
                { "seller_ref", "varchar(100) NOT NULL", nullptr, 1 },
                { "interest_on_arrears", "integer NOT NULL", nullptr, 1 },
                { "due_date", "date NOT NULL", nullptr, 1 },
                { "reference_number", "varchar(50) NOT NULL", nullptr, 1 },
                { "total_amount", "integer NOT NULL", nullptr, 1 },
                { "balance", "integer NOT NULL", nullptr, 1 },
                { "tags", "integer NOT NULL DEFAULT 0", nullptr, 9 },
                { "properties", "text NOT NULL", nullptr, 7 } } },
        { "invoice_item",
            { { "invoice_id", "integer NOT NULL", nullptr, 1 },
                { "product_number", "varchar(10) NOT NULL", nullptr, 1 },
                { "product_name", "varchar(100) NOT NULL", nullptr, 1 },
                { "quantity", "integer NOT NULL", "widened", 1 },
                { "unit_code", "varchar(10) NOT NULL", nullptr, 1 },
                { "amount", "integer NOT NULL", "widened", 1 },
                { "vat_rate", "integer NOT NULL", nullptr, 1 },
                { "vat_excluded", "integer NOT NULL", "boolean NOT NULL", 4 },
                { "discount", "integer NOT NULL", nullptr, 6 },
                { "text", "text NOT NULL", nullptr, 1 },
                { "row_number", "integer NOT NULL", nullptr, 1 } } },
        { "payment",
            { { "invoice_id", "integer NOT NULL", nullptr, 1 },
                { "date", "date NOT NULL", nullptr, 1 },
                { "bank_account_id", "integer", nullptr, 1 },
                { "amount", "integer NOT NULL", nullptr, 1 } } },
        { "print_script",
            { { "type", "varchar(50) NOT NULL", nullptr, 1 },
                { "name", "varchar(100) NOT NULL", nullptr, 1 },
                { "source_code", "text NOT NULL", nullptr, 1 } } },
    };
    return list;
}

// One row per table, as literals that both servers accept ('1' is a boolean
// in PostgreSQL and an integer in SQLite's numeric columns).
const QMap<QString, QMap<QString, QString>>& rows()
{
    static const QMap<QString, QMap<QString, QString>> map {
        { "product",
            { { "number", "'10'" }, { "name", "'Kahvi'" }, { "unit_code", "'kg'" },
                { "amount", "150" }, { "vat_rate", "1400" }, { "vat_excluded", "'1'" },
                { "category", "'Juomat'" } } },
        { "bank_account",
            { { "name", "'Pankki'" }, { "short_name", "'P'" }, { "iban", "'FI2112345600000785'" },
                { "bic", "'NDEAFIHH'" }, { "row_number", "1" }, { "visible", "'0'" },
                { "deleted", "'0'" } } },
        { "customer",
            { { "number", "7" }, { "name", "'Vanha Asiakas'" }, { "street_name", "'Tie 2'" },
                { "post_code", "'00100'" }, { "town_name", "'Helsinki'" }, { "country", "''" },
                { "contact", "'Matti'" }, { "vat_number", "'FI12345671'" },
                { "reference_number", "'1232'" }, { "email_address", "'m@example.com'" },
                { "phone_number", "'09 1'" }, { "payment_terms", "'7 pv'" },
                { "properties", "'l=EN\n'" }, { "deleted", "'0'" } } },
        { "invoice",
            { { "customer_id", "1" }, { "type", "0" }, { "number", "100" },
                { "date", "'2015-03-01'" }, { "payment_terms", "'14 pv'" }, { "delivery", "''" },
                { "delivery_date", "'2015-02-27'" }, { "buyer_ref", "''" }, { "seller_ref", "''" },
                { "interest_on_arrears", "800" }, { "due_date", "'2015-03-15'" },
                { "reference_number", "'1009'" }, { "total_amount", "375" }, { "balance", "375" },
                { "tags", "3" }, { "properties", "'t1=Kiitos\n'" } } },
        { "invoice_item",
            { { "invoice_id", "1" }, { "product_number", "'10'" }, { "product_name", "'Kahvi'" },
                { "quantity", "250" }, { "unit_code", "'kg'" }, { "amount", "150" },
                { "vat_rate", "1400" }, { "vat_excluded", "'1'" }, { "discount", "500" },
                { "text", "'Kahvia'" }, { "row_number", "0" } } },
        { "payment",
            { { "invoice_id", "1" }, { "date", "'2015-03-10'" }, { "bank_account_id", "1" },
                { "amount", "100" } } },
        { "print_script",
            { { "type", "'invoice'" }, { "name", "'Oma'" }, { "source_code", "'1;'" } } },
    };
    return map;
}

QStringList oldSchema(TestDatabase::Backend backend, int version)
{
    const bool pg = backend == TestDatabase::PostgreSQL;
    QStringList statements;
    for (const Table& table : tables()) {
        QStringList columns { pg
                ? QStringLiteral("id integer PRIMARY KEY NOT NULL")
                : QStringLiteral("id integer PRIMARY KEY AUTOINCREMENT NOT NULL") };
        QStringList names { QStringLiteral("id") };
        QStringList values { QStringLiteral("1") };
        for (const Column& column : table.columns) {
            if (column.since > version)
                continue;
            const char* type
                = pg && column.postgresqlType ? column.postgresqlType : column.sqliteType;
            if (qstrcmp(type, "widened") == 0)
                type = version >= 9 ? "bigint NOT NULL" : "integer NOT NULL";
            columns.append(QLatin1String(column.name) + QLatin1Char(' ') + QLatin1String(type));
            names.append(QLatin1String(column.name));
            values.append(
                rows().value(QLatin1String(table.name)).value(QLatin1String(column.name)));
        }
        const QString name = QLatin1String(table.name);
        statements.append(QStringLiteral("CREATE TABLE %1 (%2)").arg(name, columns.join(", ")));
        statements.append(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                              .arg(name, names.join(", "), values.join(", ")));
        if (pg) {
            statements.append(QStringLiteral("CREATE SEQUENCE %1_id_seq").arg(name));
            statements.append(QStringLiteral("SELECT setval('%1_id_seq', 1)").arg(name));
        }
    }
    statements.append(QStringLiteral(
        "CREATE TABLE settings (version integer NOT NULL, seller_name varchar(100) NOT NULL, "
        "seller_street_name varchar(100) NOT NULL, seller_post_code varchar(10) NOT NULL, "
        "seller_town_name varchar(100) NOT NULL, seller_country varchar(100) NOT NULL, "
        "seller_business_id varchar(50) NOT NULL, seller_logo %1 NOT NULL, properties text NOT "
        "NULL, PRIMARY KEY (version))")
                          .arg(pg ? QStringLiteral("bytea") : QStringLiteral("blob")));
    statements.append(QStringLiteral("INSERT INTO settings VALUES (%1, 'Vanha Oy', '', '', '', "
                                     "'', '', '', 'settings/paymentTerms=14 pv\n')")
                          .arg(version));
    return statements;
}

int backupCount(const QString& directory)
{
    return QDir(directory).entryList({ QStringLiteral("backup-*.sqlite") }, QDir::Files).size();
}

} // namespace

class MigrationTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void upgrade_data();
    void upgrade();
    void failedStepDoesNotStopLaterSteps();
    void newerVersionIsLeftAlone();
};

void MigrationTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QLoggingCategory::setFilterRules(QStringLiteral("veklari.database.debug=true"));
}

void MigrationTest::upgrade_data()
{
    QTest::addColumn<int>("version");
    for (int version = 1; version <= 9; ++version)
        QTest::addRow("from version %d", version) << version;
}

void MigrationTest::upgrade()
{
    QFETCH(int, version);
    TestDatabase db(VEKLARI_TEST_BACKEND);
    QVERIFY2(db.exec(oldSchema(db.backend(), version)), qPrintable(db.lastError()));

    LogCapture log("veklari.database");
    QVERIFY2(db.open(false), qPrintable(db.lastError()));
    QVERIFY(db.database()->exists());
    QCOMPARE(db.value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);
    for (int step = version + 1; step <= 10; ++step)
        QVERIFY(
            log.contains(QStringLiteral("debug: Päivitetään tietokanta versioon %1").arg(step)));
    QVERIFY(
        !log.contains(QStringLiteral("debug: Päivitetään tietokanta versioon %1").arg(version)));
    QVERIFY(!log.contains(QStringLiteral("debug: Luodaan tietokantataulut")));
    if (db.backend() == TestDatabase::SQLite)
        QCOMPARE(backupCount(db.directory()), 10 - version);

    // Every current column can be read; added columns hold their defaults.
    const bool scaled = version <= 8;
    std::unique_ptr<Query> query(db.database()->query());

    QVERIFY2(query->fetchCustomers(), qPrintable(query->lastError()));
    QVERIFY(query->next());
    Customer customer;
    query->customer(&customer);
    QCOMPARE(customer.name, QStringLiteral("Vanha Asiakas"));
    QCOMPARE(customer.vatNumber, version >= 2 ? QStringLiteral("FI12345671") : QString());
    QCOMPARE(customer.emailAddress, version >= 2 ? QStringLiteral("m@example.com") : QString());
    QCOMPARE(customer.contact, version >= 3 ? QStringLiteral("Matti") : QString());
    QCOMPARE(customer.paymentTerms, version >= 5 ? QStringLiteral("7 pv") : QString());
    QCOMPARE(customer.property(QStringLiteral("l")).toString(),
        version >= 7 ? QStringLiteral("EN") : QString());

    QVERIFY2(query->fetchProducts(), qPrintable(query->lastError()));
    QVERIFY(query->next());
    Product product;
    query->product(&product);
    QCOMPARE(product.amount, scaled ? 15000LL : 150LL);
    QCOMPARE(product.vatExcluded, version >= 4);
    QCOMPARE(product.category, version >= 6 ? QStringLiteral("Juomat") : QString());

    QVERIFY2(query->fetchBankAccounts(), qPrintable(query->lastError()));
    QVERIFY(query->next());
    BankAccount account;
    query->bankAccount(&account);
    QVERIFY(account.visible); // the added column makes old accounts visible

    QVERIFY2(query->fetchInvoiceDetails(1), qPrintable(query->lastError()));
    QVERIFY(query->next());
    Invoice invoice;
    query->invoiceDetails(&invoice);
    QCOMPARE(invoice.number, 100);
    QCOMPARE(invoice.totalAmount, 375); // cents never change scale
    QCOMPARE(invoice.date, QDate(2015, 3, 1));
    QCOMPARE(invoice.deliveryDate, version >= 8 ? QDate(2015, 2, 27) : QDate());
    QCOMPARE(invoice.property(QStringLiteral("t1")).toString(),
        version >= 7 ? QStringLiteral("Kiitos") : QString());
    QCOMPARE(db.value(QStringLiteral("SELECT tags FROM invoice")).toInt(), version >= 9 ? 3 : 0);

    QVERIFY2(query->fetchInvoiceItems(1), qPrintable(query->lastError()));
    QVERIFY(query->next());
    InvoiceItem item;
    query->invoiceItem(&item);
    QCOMPARE(item.quantity, scaled ? 25000LL : 250LL);
    QCOMPARE(item.amount, scaled ? 15000LL : 150LL);
    QCOMPARE(item.vatExcluded, version >= 4);
    QCOMPARE(item.discount, version >= 6 ? 500 : 0);

    // New rows take fresh ids and 64-bit values (bigint on PostgreSQL now).
    InvoiceItem added;
    added.invoiceId = 1;
    added.quantity = Q_INT64_C(5000000000);
    added.amount = Q_INT64_C(-7000000000);
    QVERIFY2(query->saveInvoiceItem(&added), qPrintable(query->lastError()));
    QCOMPARE(added.id, 2);
    QVERIFY(query->fetchInvoiceItem(2));
    QVERIFY(query->next());
    query->invoiceItem(&item);
    QCOMPARE(item.quantity, Q_INT64_C(5000000000));
    QCOMPARE(item.amount, Q_INT64_C(-7000000000));

    // A second open finds version 10 and changes nothing.
    query.reset();
    db.close();
    log.clear();
    QVERIFY2(db.open(false), qPrintable(db.lastError()));
    QVERIFY(!log.containsPrefix(QStringLiteral("debug: Päivitetään")));
    if (db.backend() == TestDatabase::SQLite)
        QCOMPARE(backupCount(db.directory()), 10 - version);
}

void MigrationTest::failedStepDoesNotStopLaterSteps()
{
    // A version-7 database that already has the column of step 7 to 8: that
    // step fails, the later ones still run and bring the version to 10.
    TestDatabase db(VEKLARI_TEST_BACKEND);
    QStringList statements = oldSchema(db.backend(), 7);
    statements.append(QStringLiteral("ALTER TABLE invoice ADD delivery_date date"));
    QVERIFY2(db.exec(statements), qPrintable(db.lastError()));

    LogCapture log("veklari.database");
    const bool opened = db.open(false);
    QVERIFY(log.containsPrefix(QStringLiteral("warning: Tietokantavirhe:")));
    QVERIFY(log.contains(QStringLiteral("debug: Päivitetään tietokanta versioon 9")));
    QVERIFY(log.contains(QStringLiteral("debug: Päivitetään tietokanta versioon 10")));
    QVERIFY2(opened, qPrintable(db.lastError())); // the result is that of the last step
    QCOMPARE(db.value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);
    QCOMPARE(db.value(QStringLiteral("SELECT quantity FROM invoice_item")).toLongLong(), 25000LL);
}

void MigrationTest::newerVersionIsLeftAlone()
{
    TestDatabase db(VEKLARI_TEST_BACKEND);
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    db.close();
    QVERIFY(db.exec({ QStringLiteral("UPDATE settings SET version=11"),
        QStringLiteral("ALTER TABLE invoice_item ADD future integer NOT NULL DEFAULT 5") }));
    const int backupsBefore = backupCount(db.directory());

    LogCapture log("veklari.database");
    QVERIFY2(db.open(false), qPrintable(db.lastError()));
    QVERIFY(db.database()->exists());
    QVERIFY(!log.containsPrefix(QStringLiteral("debug: Päivitetään")));
    QVERIFY(!log.containsPrefix(QStringLiteral("warning:")));
    QCOMPARE(db.value(QStringLiteral("SELECT version FROM settings")).toInt(), 11);
    QCOMPARE(db.value(QStringLiteral("SELECT count(*) FROM product")).toInt(), 1);
    QCOMPARE(backupCount(db.directory()), backupsBefore);
}

QTEST_GUILESS_MAIN(MigrationTest)
#include "tst_migration.moc"
