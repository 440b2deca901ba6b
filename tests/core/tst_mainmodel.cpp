#include "core/invoicetablemodel.h"
#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/decimalformat.h"
#include "domain/invoice.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "logcapture.h"
#include "storage/database.h"
#include "storage/postgresqldatabase.h"
#include "storage/query.h"
#include "storage/sqlitedatabase.h"
#include "testdatabase.h"

#include <QtTest>

#include <algorithm>
#include <memory>

namespace {

using Entry = QVariantMap;

// The id of a new customer, -1 on failure.
int saveCustomer(Query* query, const QString& name)
{
    Customer customer;
    customer.number = 1;
    customer.name = name;
    return query->saveCustomer(&customer) ? customer.id : -1;
}

bool saveInvoice(Query* query, int number, int customerId, int totalAmount)
{
    Invoice invoice;
    invoice.number = number;
    invoice.customerId = customerId;
    invoice.date = QDate(2024, 3, number % 28 + 1);
    invoice.dueDate = invoice.date.addDays(14);
    invoice.totalAmount = totalAmount;
    invoice.balance = totalAmount;
    return query->saveInvoice(&invoice);
}

} // namespace

class TestMainModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void openNewSQLiteDatabase();
    void backendFollowsType_data();
    void backendFollowsType();
    void postgreSQLCreateFlagFollowsCaller();
    void openFailureStatus();
    void fetchDataOnNewDatabase();
    void invoiceListRunsInAscendingOrder_data();
    void invoiceListRunsInAscendingOrder();
    void fetchFailureStopsLaterSteps();
    void fetchDataWithoutDatabase();
    void closeDatabaseClearsState();
    void openAndFetchOnPostgreSQL();

private:
    // Opens a new SQLite file through a configuration entry with the keys given.
    bool openNewFile(Entry entry = Entry())
    {
        entry.insert(
            QStringLiteral("filename"), m_dir.filePath(QStringLiteral("%1.sqlite").arg(m_counter)));
        TestDatabase::writeEntries(m_registry->appSettings(), { entry });
        return m_model->openDatabase(0, false) == 0;
    }

    QTemporaryDir m_dir;
    int m_counter = 0;
    QString m_iniFile;
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<MainModel> m_model;
};

void TestMainModel::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
}

void TestMainModel::init()
{
    m_iniFile = m_dir.filePath(QStringLiteral("veklari-%1.ini").arg(++m_counter));
    m_registry = std::make_unique<Registry>();
    m_registry->loadSettings(m_iniFile);
    m_model = std::make_unique<MainModel>(m_registry.get());
}

void TestMainModel::cleanup()
{
    m_model.reset();
    m_registry.reset();
}

void TestMainModel::openNewSQLiteDatabase()
{
    const QString fileName = m_dir.filePath(QStringLiteral("new-%1.sqlite").arg(m_counter));
    TestDatabase::writeEntries(
        m_registry->appSettings(), { { { "number", 1 }, { "filename", fileName } } });

    QCOMPARE(m_model->openDatabase(0, false), 0);
    QVERIFY(m_registry->isConnected());
    QVERIFY(qobject_cast<SQLiteDatabase*>(m_registry->database()));
    QVERIFY(m_registry->database()->exists());
    QVERIFY(QFileInfo::exists(fileName));
    QVERIFY(m_model->lastError().isEmpty());
    // The settings object is back at the top level after reading the entry.
    QVERIFY(m_registry->appSettings()->group().isEmpty());
}

void TestMainModel::backendFollowsType_data()
{
    QTest::addColumn<QVariant>("type");
    QTest::addColumn<bool>("postgreSQL");

    QTest::addRow("no type") << QVariant() << false;
    QTest::addRow("SQLite") << QVariant(QStringLiteral("SQLite")) << false;
    QTest::addRow("unknown type") << QVariant(QStringLiteral("mysql")) << false;
    QTest::addRow("PostgreSQL") << QVariant(QStringLiteral("PostgreSQL")) << true;
}

void TestMainModel::backendFollowsType()
{
    QFETCH(QVariant, type);
    QFETCH(bool, postgreSQL);

    const QString fileName = m_dir.filePath(QStringLiteral("typed-%1.sqlite").arg(m_counter));
    // The first entry is never opened: the index picks the second.
    Entry entry { { "number", 2 }, { "filename", fileName }, { "host", "127.0.0.1" }, { "port", 1 },
        { "databaseName", "veklari_no_such_server" } };
    if (type.isValid())
        entry.insert(QStringLiteral("type"), type);
    TestDatabase::writeEntries(m_registry->appSettings(),
        { { { "number", 1 }, { "filename", m_dir.filePath(QStringLiteral("unused.sqlite")) } },
            entry });

    // create is false: a SQLite file is created all the same.
    const int status = m_model->openDatabase(1, false);
    QVERIFY(!QFileInfo::exists(m_dir.filePath(QStringLiteral("unused.sqlite"))));
    if (postgreSQL) {
        QVERIFY(qobject_cast<PostgreSQLDatabase*>(m_registry->database()));
        // Nothing listens on port 1.
        QCOMPARE(status, QSqlDatabase::isDriverAvailable(QStringLiteral("QPSQL")) ? -1 : -3);
        QVERIFY(!m_model->lastError().isEmpty());
        QVERIFY(!QFileInfo::exists(fileName));
    } else {
        QVERIFY(qobject_cast<SQLiteDatabase*>(m_registry->database()));
        QCOMPARE(status, 0);
        QVERIFY(QFileInfo::exists(fileName));
    }
    // Connected even after a failure, until the caller closes.
    QVERIFY(m_registry->isConnected());
    QVERIFY(m_model->closeDatabase());
    QVERIFY(!m_registry->isConnected());
    QCOMPARE(m_registry->database(), nullptr);
}

void TestMainModel::postgreSQLCreateFlagFollowsCaller()
{
    TestDatabase::writeEntries(m_registry->appSettings(),
        { { { "type", "postgresql" }, { "host", "127.0.0.1" }, { "port", 1 } } });
    m_model->openDatabase(0, false);
    QVERIFY(qobject_cast<PostgreSQLDatabase*>(m_registry->database()));
    QVERIFY(!m_registry->database()->isCreateIfNotExist());
    // Opening again closes the first database.
    m_model->openDatabase(0, true);
    QVERIFY(m_registry->database()->isCreateIfNotExist());
}

void TestMainModel::openFailureStatus()
{
    // An existing file that is not a database.
    const QString fileName = m_dir.filePath(QStringLiteral("garbage-%1.sqlite").arg(m_counter));
    {
        QFile file(fileName);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(4096, 'x'));
    }
    TestDatabase::writeEntries(m_registry->appSettings(), { { { "filename", fileName } } });
    QCOMPARE(m_model->openDatabase(0, false), -1);
    QVERIFY(!m_model->lastError().isEmpty());

    // No file name at all: nothing exists to open.
    TestDatabase::writeEntries(m_registry->appSettings(), { { { "filename", QString() } } });
    QCOMPARE(m_model->openDatabase(0, true), -2);
}

void TestMainModel::fetchDataOnNewDatabase()
{
    QVERIFY(openNewFile({ { "name", QStringLiteral("Toiminimi Äyräs") } }));

    LogCapture log("veklari.ui");
    QVERIFY2(m_model->fetchData(), qPrintable(m_model->lastError()));
    QCOMPARE(log.lines(),
        QStringList({ "debug: Haetaan perustiedot", "debug: Haetaan asiakastiedot",
            "debug: Haetaan tuotetiedot", "debug: Haetaan pankkitilien tiedot",
            "debug: Haetaan tulostusskriptien tiedot", "debug: Haetaan laskujen tiedot" }));

    // A new database holds its company name and the product of interest rows.
    QCOMPARE(m_registry->settings()->sellerName, QStringLiteral("Toiminimi Äyräs"));
    QCOMPARE(m_registry->productCount(), 1);
    bool found = false;
    QVERIFY(m_registry->productByNumber(QStringLiteral("999"), found));
    QVERIFY(found);
    QCOMPARE(m_registry->customerCount(), 0);
    QCOMPARE(m_registry->bankAccountCount(), 0);
    QCOMPARE(m_registry->printScriptCount(), 0);
    QCOMPARE(m_model->invoiceCount(), 0);
}

void TestMainModel::invoiceListRunsInAscendingOrder_data()
{
    QTest::addColumn<int>("limit");
    QTest::addColumn<bool>("descending");

    QTest::addRow("all, latest first") << 0 << true;
    QTest::addRow("latest three") << 3 << true;
    QTest::addRow("limit above count") << 50 << true;
}

void TestMainModel::invoiceListRunsInAscendingOrder()
{
    QFETCH(int, limit);
    QFETCH(bool, descending);

    QVERIFY(openNewFile());

    const QList<int> numbers = { 12, 3, 7, 15, 1, 9 };
    {
        std::unique_ptr<Query> query(m_registry->database()->query());
        const int customerId = saveCustomer(query.get(), QStringLiteral("Mäkinen Ky"));
        QVERIFY2(customerId >= 0, qPrintable(query->lastError()));
        for (int number : numbers)
            QVERIFY2(saveInvoice(query.get(), number, customerId, number * 1000 + 5),
                qPrintable(query->lastError()));
    }

    m_model->lastCriteria()->limit = limit;
    m_model->lastCriteria()->descending = descending;
    QVERIFY2(m_model->fetchData(), qPrintable(m_model->lastError()));

    // Independently: sort, then keep the first or the last `limit` numbers.
    QList<int> expected = numbers;
    std::sort(expected.begin(), expected.end());
    if (limit > 0 && limit < expected.size())
        expected = descending ? expected.mid(expected.size() - limit) : expected.mid(0, limit);

    InvoiceTableModel* list = m_model->invoiceTableModel();
    QList<int> shown;
    for (int row = 0; row < list->rowCount(); ++row)
        shown.append(list->index(row, InvoiceTableModel::NumberColumn).data().toInt());
    QCOMPARE(shown, expected);
    QCOMPARE(m_model->invoiceCount(), expected.size());

    // The other columns of the last row.
    const int last = list->rowCount() - 1;
    const int number = expected.last();
    QCOMPARE(list->invoiceAt(last)->number, number);
    QCOMPARE(list->index(last, InvoiceTableModel::CustomerColumn).data().toString(),
        QStringLiteral("Mäkinen Ky"));
    QCOMPARE(list->index(last, InvoiceTableModel::DateColumn).data().toString(),
        QStringLiteral("%1.3.2024").arg(number % 28 + 1));
    // Cents, shown with two decimals in the user's locale.
    const DecimalFormat cents(2, 2);
    bool ok = false;
    QCOMPARE(
        cents.parse(list->index(last, InvoiceTableModel::TotalAmountColumn).data().toString(), ok),
        qint64(number * 1000 + 5));
    QVERIFY(ok);
    QCOMPARE(list->rowOfInvoiceId(list->invoiceAt(last)->id), last);
    QCOMPARE(list->rowOfInvoiceId(-5), -1);
}

void TestMainModel::fetchFailureStopsLaterSteps()
{
    QVERIFY(openNewFile());
    {
        QSqlQuery drop(QSqlDatabase::database(m_registry->database()->connectionName()));
        QVERIFY(drop.exec(QStringLiteral("DROP TABLE product")));
        std::unique_ptr<Query> query(m_registry->database()->query());
        BankAccount account;
        account.name = QStringLiteral("Tili");
        QVERIFY(query->saveBankAccount(&account));
    }

    LogCapture log("veklari.ui");
    QVERIFY(!m_model->fetchData());
    QVERIFY2(
        m_model->lastError().contains(QStringLiteral("product")), qPrintable(m_model->lastError()));
    // Every step still writes its line.
    QCOMPARE(log.lines().size(), 6);
    QCOMPARE(log.lines().last(), QStringLiteral("debug: Haetaan laskujen tiedot"));
    // Steps before the failure ran, those after it did not.
    QCOMPARE(m_registry->settings()->property(QStringLiteral("settings/interestOnArrears")).toInt(),
        800);
    QCOMPARE(m_registry->bankAccountCount(), 0);
}

void TestMainModel::fetchDataWithoutDatabase()
{
    QVERIFY(!m_model->fetchData());
    QVERIFY(!m_model->lastError().isEmpty());
}

void TestMainModel::closeDatabaseClearsState()
{
    QVERIFY(openNewFile());
    {
        std::unique_ptr<Query> query(m_registry->database()->query());
        QVERIFY(saveInvoice(query.get(), 1, saveCustomer(query.get(), QStringLiteral("A")), 100));
    }
    QVERIFY(m_model->fetchData());
    QCOMPARE(m_model->invoiceCount(), 1);
    QCOMPARE(m_registry->productCount(), 1);
    m_model->setLastInvoiceId(4);
    m_model->setEditable(true);

    QVERIFY(m_model->closeDatabase());
    QVERIFY(!m_registry->isConnected());
    QCOMPARE(m_registry->database(), nullptr);
    QCOMPARE(m_model->invoiceCount(), 0);
    QCOMPARE(m_registry->productCount(), 0);
    QCOMPARE(m_model->invoiceIndex(), -1);
    QCOMPARE(m_model->lastInvoiceId(), -1);
    QVERIFY(!m_model->isEditable());
    // Closing twice is harmless.
    QVERIFY(m_model->closeDatabase());
}

void TestMainModel::openAndFetchOnPostgreSQL()
{
    // The test server's connection, as TestDatabase writes it into an entry.
    TestDatabase server(TestDatabase::PostgreSQL, QStringLiteral("Palvelin Oy"));
    QVERIFY2(server.open(), qPrintable(server.lastError()));
    server.close();
    Entry entry = server.entry();
    entry.insert(QStringLiteral("type"), QStringLiteral("PostgreSQL"));
    Entry missing = entry;
    const QString missingName = server.databaseName() + QStringLiteral("_new");
    missing.insert(QStringLiteral("databaseName"), missingName);
    missing.insert(QStringLiteral("name"), QStringLiteral("Uusi Oy"));
    TestDatabase::writeEntries(m_registry->appSettings(), { entry, missing });

    QCOMPARE(m_model->openDatabase(0, false), 0);
    QVERIFY(qobject_cast<PostgreSQLDatabase*>(m_registry->database()));
    {
        std::unique_ptr<Query> query(m_registry->database()->query());
        const int customerId = saveCustomer(query.get(), QStringLiteral("Asiakas"));
        QVERIFY2(customerId >= 0, qPrintable(query->lastError()));
        QVERIFY2(saveInvoice(query.get(), 2, customerId, 500), qPrintable(query->lastError()));
        QVERIFY(saveInvoice(query.get(), 1, customerId, 700));
    }
    QVERIFY2(m_model->fetchData(), qPrintable(m_model->lastError()));
    QCOMPARE(m_registry->settings()->sellerName, QStringLiteral("Palvelin Oy"));
    QCOMPARE(m_model->invoiceCount(), 2);
    QCOMPARE(m_model->invoiceTableModel()->invoiceAt(0)->number, 1);
    QCOMPARE(m_model->invoiceTableModel()->invoiceAt(1)->totalAmount, 500);

    // A database missing on the server: -2, and made when creation is allowed.
    QCOMPARE(m_model->openDatabase(1, false), -2);
    QVERIFY(!m_model->lastError().isEmpty());
    QCOMPARE(m_model->openDatabase(1, true), 0);
    QVERIFY2(m_model->lastError().isEmpty(), qPrintable(m_model->lastError()));
    QVERIFY2(m_model->fetchData(), qPrintable(m_model->lastError()));
    QCOMPARE(m_registry->settings()->sellerName, QStringLiteral("Uusi Oy"));
    QCOMPARE(m_model->openDatabase(1, false), 0);
    m_model->closeDatabase();
}

QTEST_GUILESS_MAIN(TestMainModel)
#include "tst_mainmodel.moc"
