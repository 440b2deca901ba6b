#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "domain/product.h"
#include "faultsweep.h"
#include "logcapture.h"
#include "storage/database.h"
#include "storage/faultinjector.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QDir>
#include <QSqlDatabase>
#include <QStandardPaths>
#include <QtTest>
#include <memory>

namespace {

// The columns of the current schema as "name|type|since|value": the version
// that brought each and a value of the one row, a literal both servers take
// ('1' is a boolean in PostgreSQL and an integer in SQLite's numeric columns).
// "flag" is an integer in SQLite and a boolean in PostgreSQL; "widened" an
// integer before version 9 and a bigint from it on in PostgreSQL. Older
// schemas are the current one minus the columns of later versions.
const QList<QPair<const char*, QStringList>>& tables()
{
    static const QList<QPair<const char*, QStringList>> list {
        { "product",
            { "number|varchar(10) NOT NULL|1|'10'", "name|varchar(100) NOT NULL|1|'Kahvi'",
                "unit_code|varchar(10) NOT NULL|1|'kg'", "amount|widened|1|150",
                "vat_rate|integer NOT NULL|1|1400", "vat_excluded|flag|4|'1'",
                "category|varchar(100) NOT NULL|6|'Juomat'" } },
        { "bank_account",
            { "name|varchar(50) NOT NULL|1|'Pankki'", "short_name|varchar(50) NOT NULL|1|'P'",
                "iban|varchar(50) NOT NULL|1|'FI2112345600000785'",
                "bic|varchar(50) NOT NULL|1|'NDEAFIHH'", "row_number|integer NOT NULL|1|1",
                "visible|boolean NOT NULL|10|'0'", "deleted|boolean NOT NULL|1|'0'" } },
        { "customer",
            { "number|integer NOT NULL|1|7", "name|varchar(200) NOT NULL|1|'Vanha Asiakas'",
                "street_name|varchar(100) NOT NULL|1|'Tie 2'",
                "post_code|varchar(10) NOT NULL|1|'00100'",
                "town_name|varchar(100) NOT NULL|1|'Helsinki'",
                "country|varchar(100) NOT NULL|1|''", "contact|varchar(100) NOT NULL|3|'Matti'",
                "vat_number|varchar(50) NOT NULL|2|'FI12345671'",
                "reference_number|varchar(50) NOT NULL|2|'1232'",
                "email_address|varchar(100) NOT NULL|2|'m@example.com'",
                "phone_number|varchar(100) NOT NULL|3|'09 1'",
                "payment_terms|varchar(100) NOT NULL|5|'7 pv'",
                "properties|text NOT NULL|7|'l=EN\n'", "deleted|boolean NOT NULL|1|'0'" } },
        { "invoice",
            { "customer_id|integer NOT NULL|1|1", "type|integer NOT NULL|1|0",
                "number|integer NOT NULL|1|100", "date|date NOT NULL|1|'2015-03-01'",
                "payment_terms|varchar(100) NOT NULL|1|'14 pv'",
                "delivery|varchar(100) NOT NULL|1|''", "delivery_date|date|8|'2015-02-27'",
                "buyer_ref|varchar(100) NOT NULL|1|''", "seller_ref|varchar(100) NOT NULL|1|''",
                "interest_on_arrears|integer NOT NULL|1|800",
                "due_date|date NOT NULL|1|'2015-03-15'",
                "reference_number|varchar(50) NOT NULL|1|'1009'",
                "total_amount|integer NOT NULL|1|375", "balance|integer NOT NULL|1|375",
                "tags|integer NOT NULL DEFAULT 0|9|3",
                "properties|text NOT NULL|7|'t1=Kiitos\n'" } },
        { "invoice_item",
            { "invoice_id|integer NOT NULL|1|1", "product_number|varchar(10) NOT NULL|1|'10'",
                "product_name|varchar(100) NOT NULL|1|'Kahvi'", "quantity|widened|1|250",
                "unit_code|varchar(10) NOT NULL|1|'kg'", "amount|widened|1|150",
                "vat_rate|integer NOT NULL|1|1400", "vat_excluded|flag|4|'1'",
                "discount|integer NOT NULL|6|500", "text|text NOT NULL|1|'Kahvia'",
                "row_number|integer NOT NULL|1|0" } },
        { "payment",
            { "invoice_id|integer NOT NULL|1|1", "date|date NOT NULL|1|'2015-03-10'",
                "bank_account_id|integer|1|1", "amount|integer NOT NULL|1|100" } },
        { "print_script",
            { "type|varchar(50) NOT NULL|1|'invoice'", "name|varchar(100) NOT NULL|1|'Oma'",
                "source_code|text NOT NULL|1|'1;'" } },
    };
    return list;
}

QStringList oldSchema(TestDatabase::Backend backend, int version)
{
    const bool pg = backend == TestDatabase::PostgreSQL;
    QStringList statements;
    for (const auto& [table, columnList] : tables()) {
        QStringList columns { pg
                ? QStringLiteral("id integer PRIMARY KEY NOT NULL")
                : QStringLiteral("id integer PRIMARY KEY AUTOINCREMENT NOT NULL") };
        QStringList names { QStringLiteral("id") };
        QStringList values { QStringLiteral("1") };
        for (const QString& column : columnList) {
            const QStringList parts = column.split(QLatin1Char('|'));
            if (parts.at(2).toInt() > version)
                continue;
            QString type = parts.at(1);
            if (type == QLatin1String("flag"))
                type = pg ? QStringLiteral("boolean NOT NULL") : QStringLiteral("integer NOT NULL");
            else if (type == QLatin1String("widened"))
                type = pg && version >= 9 ? QStringLiteral("bigint NOT NULL")
                                          : QStringLiteral("integer NOT NULL");
            columns.append(parts.at(0) + QLatin1Char(' ') + type);
            names.append(parts.at(0));
            values.append(parts.at(3));
        }
        const QString name = QLatin1String(table);
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

QByteArray contents(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Everything a database holds: its columns and the rows of every table. On
// SQLite also the bytes of the file and the other files (journals) beside it.
QStringList snapshot(TestDatabase& db)
{
    QStringList state;
    if (db.backend() == TestDatabase::SQLite) {
        state = db.rows(QStringLiteral("SELECT name, sql FROM sqlite_master ORDER BY name"));
        state.append(QString::fromLatin1(contents(db.fileName()).toBase64()));
        const QStringList files = QDir(db.directory()).entryList(QDir::Files);
        state.append(files.filter(QRegularExpression(QStringLiteral("^(?!backup-)"))).join(' '));
    } else {
        state = db.rows(QStringLiteral(
            "SELECT table_name, column_name, data_type, is_nullable, column_default FROM "
            "information_schema.columns WHERE table_schema = 'public' ORDER BY table_name, "
            "ordinal_position"));
    }
    for (const auto& table : tables())
        state += db.rows(QStringLiteral("SELECT * FROM %1 ORDER BY id").arg(table.first));
    state += db.rows(QStringLiteral("SELECT * FROM settings"));
    return state;
}

} // namespace

class MigrationTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void upgrade_data();
    void upgrade();
    void newerVersionIsLeftAlone();
    void failedUpgradeChangesNothing_data();
    void failedUpgradeChangesNothing();
    void everyStatementOfAnUpgrade_data();
    void everyStatementOfAnUpgrade();
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
    QCOMPARE(db.value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);
    // One step at a time, from the version found.
    QStringList steps;
    for (int step = version + 1; step <= 10; ++step)
        steps.append(QStringLiteral("debug: Päivitetään tietokanta versioon %1").arg(step));
    QCOMPARE(log.lines().filter(QStringLiteral("Päivitetään")), steps);
    if (db.backend() == TestDatabase::SQLite)
        QCOMPARE(backupCount(db.directory()), 10 - version);

    // Every current column can be read; added columns hold their defaults,
    // old accounts are visible, and amounts in 1/100 before version 9 scaled.
    const bool scaled = version <= 8;
    auto since
        = [&](int step, const QString& value) { return version >= step ? value : QString(); };
    std::unique_ptr<Query> query(db.database()->query());
    Customer customer;
    Product product;
    BankAccount account;
    Invoice invoice;
    InvoiceItem item;
    QVERIFY(query->fetchCustomers() && query->next());
    query->customer(&customer);
    QVERIFY(query->fetchProducts() && query->next());
    query->product(&product);
    QVERIFY(query->fetchBankAccounts() && query->next());
    query->bankAccount(&account);
    QVERIFY(query->fetchInvoiceDetails(1) && query->next());
    query->invoiceDetails(&invoice);
    QVERIFY(query->fetchInvoiceItems(1) && query->next());
    query->invoiceItem(&item);
    const QStringList found { customer.name, customer.vatNumber, customer.emailAddress,
        customer.contact, customer.paymentTerms, customer.property("l").toString(),
        QString::number(product.amount), QString::number(product.vatExcluded), product.category,
        QString::number(account.visible), QString::number(invoice.totalAmount),
        invoice.date.toString(Qt::ISODate), invoice.deliveryDate.toString(Qt::ISODate),
        invoice.property("t1").toString(), db.value("SELECT tags FROM invoice").toString(),
        QString::number(item.quantity), QString::number(item.amount),
        QString::number(item.vatExcluded), QString::number(item.discount) };
    QCOMPARE(found,
        QStringList({ "Vanha Asiakas", since(2, "FI12345671"), since(2, "m@example.com"),
            since(3, "Matti"), since(5, "7 pv"), since(7, "EN"), scaled ? "15000" : "150",
            version >= 4 ? "1" : "0", since(6, "Juomat"), "1", "375", "2015-03-01",
            since(8, "2015-02-27"), since(7, "Kiitos"), version >= 9 ? "3" : "0",
            scaled ? "25000" : "250", scaled ? "15000" : "150", version >= 4 ? "1" : "0",
            version >= 6 ? "500" : "0" }));

    // New rows take fresh ids and 64-bit values (bigint on PostgreSQL now).
    InvoiceItem added;
    added.invoiceId = 1;
    added.quantity = Q_INT64_C(5000000000);
    added.amount = Q_INT64_C(-7000000000);
    QVERIFY2(query->saveInvoiceItem(&added), qPrintable(query->lastError()));
    QCOMPARE(added.id, 2);
    QVERIFY(query->fetchInvoiceItem(2) && query->next());
    query->invoiceItem(&item);
    QCOMPARE(QList<qint64>({ item.quantity, item.amount }),
        QList<qint64>({ Q_INT64_C(5000000000), Q_INT64_C(-7000000000) }));

    // A second open finds version 10 and changes nothing.
    query.reset();
    db.close();
    log.clear();
    QVERIFY2(db.open(false), qPrintable(db.lastError()));
    QVERIFY(!log.containsPrefix(QStringLiteral("debug: Päivitetään")));
    if (db.backend() == TestDatabase::SQLite)
        QCOMPARE(backupCount(db.directory()), 10 - version);
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
    QVERIFY(log.lines().filter(QRegularExpression("Päivitetään|warning:")).isEmpty());
    QCOMPARE(db.value("SELECT version * 10 + (SELECT count(*) FROM product) FROM settings").toInt(),
        111);
    QCOMPARE(backupCount(db.directory()), backupsBefore);
}

void MigrationTest::failedUpgradeChangesNothing_data()
{
    QTest::addColumn<int>("version");
    // The statement that fails: an injected fault, or a real failure.
    QTest::addColumn<QString>("failing");
    QTest::addColumn<bool>("injected");
    QTest::addRow("first statement of step 8 to 9") << 8 << "^ALTER TABLE invoice" << true;
    QTest::addRow("middle of step 5 to 6, after two steps")
        << 3 << "^ALTER TABLE invoice_item ADD discount " << true;
    QTest::addRow("version update of the last step")
        << 1 << "^UPDATE settings SET version=10$" << true;
    QTest::addRow("commit") << 7 << "^COMMIT$" << true;
    QTest::addRow("tags column already there")
        << 8 << "^ALTER TABLE invoice ADD tags integer NOT NULL DEFAULT 0$" << false;
}

// Either every step or none: the database after a failure is the one before,
// and the message names the statement that failed (and the SQLite backup).
void MigrationTest::failedUpgradeChangesNothing()
{
    QFETCH(int, version);
    QFETCH(QString, failing);
    QFETCH(bool, injected);
    TestDatabase db(VEKLARI_TEST_BACKEND);
    QStringList schema = oldSchema(db.backend(), version);
    if (!injected)
        schema.append(QStringLiteral("ALTER TABLE invoice ADD tags integer NOT NULL DEFAULT 0"));
    QVERIFY2(db.exec(schema), qPrintable(db.lastError()));
    const QByteArray bytes = contents(db.fileName());
    const QStringList before = snapshot(db);

    const QString fault = QStringLiteral("Levy täynnä");
    if (injected)
        FaultInjector::failMatching(QRegularExpression(failing), fault);
    LogCapture log("veklari.database");
    QVERIFY(!db.open(false));
    QVERIFY(!FaultInjector::isPending());
    QVERIFY(!QSqlDatabase::contains(db.database()->connectionName()));
    QVERIFY(log.containsPrefix(QStringLiteral("warning: Tietokannan päivittäminen epäonnistui:")));

    const QString message = db.lastError();
    const QRegularExpressionMatch parts
        = QRegularExpression(QStringLiteral("^Tietokannan päivitys versiosta (\\d+) versioon 10 "
                                            "epäonnistui, joten tietokanta jätettiin ennalleen. "
                                            "Epäonnistunut lause: (.*)\nVirhe: (.*)$"),
            QRegularExpression::MultilineOption)
              .match(message);
    QVERIFY2(parts.hasMatch(), qPrintable(message));
    QCOMPARE(parts.captured(1).toInt(), version);
    QVERIFY2(QRegularExpression(failing).match(parts.captured(2)).hasMatch(), qPrintable(message));
    QVERIFY2(
        parts.captured(3).contains(injected ? fault : QStringLiteral("tags")), qPrintable(message));
    if (db.backend() == TestDatabase::SQLite) {
        // Every copy, and first of all the one the message names, holds the
        // file as it was.
        const QString backup
            = message.section(QStringLiteral("Varmuuskopio ennen päivitystä: "), 1);
        QVERIFY2(QFile::exists(backup) && contents(backup) == bytes, qPrintable(message));
        QCOMPARE(backupCount(db.directory()), 10 - version);
        for (const QString& name :
            QDir(db.directory()).entryList({ QStringLiteral("backup-*.sqlite") }, QDir::Files))
            QVERIFY(contents(QDir(db.directory()).filePath(name)) == bytes);
        QVERIFY(contents(db.fileName()) == bytes);
    }
    QCOMPARE(snapshot(db), before);

    // Nothing was harmed: once the fault is gone the upgrade goes through.
    if (injected) {
        QVERIFY2(db.open(false), qPrintable(db.lastError()));
        QCOMPARE(db.value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);
    }
}

void MigrationTest::everyStatementOfAnUpgrade_data()
{
    QTest::addColumn<int>("version");
    QTest::addRow("all steps from version 1") << 1;
    QTest::addRow("last step") << 9;
}

// Each statement of an upgrade fails in turn: the database is left as it was
// and the message names the failure.
void MigrationTest::everyStatementOfAnUpgrade()
{
    QFETCH(int, version);
    std::unique_ptr<TestDatabase> db;
    FaultSweep sweep;
    sweep.setUp = [&] {
        db = std::make_unique<TestDatabase>(VEKLARI_TEST_BACKEND);
        return db->exec(oldSchema(db->backend(), version));
    };
    sweep.operation = [&](QString* error) {
        const bool ok = db->open(false);
        *error = db->lastError();
        return ok;
    };
    sweep.tearDown = [&] { db->close(); };
    sweep.dump = [&] { return snapshot(*db); };
    QVERIFY2(sweep.run(), qPrintable(sweep.lastError()));
    // Every step changes the schema and the version.
    QVERIFY2(sweep.statements().filter(QRegularExpression("^UPDATE settings SET version=")).size()
            == 10 - version,
        qPrintable(sweep.statements().join('\n')));
}

QTEST_GUILESS_MAIN(MigrationTest)
#include "tst_migration.moc"
