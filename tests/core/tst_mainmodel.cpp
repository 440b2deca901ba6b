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

    void openStatus_data();
    void openStatus();
    void fetchDataOnNewDatabase();
    void invoiceListRunsInAscendingOrder_data();
    void invoiceListRunsInAscendingOrder();
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

void TestMainModel::openStatus_data()
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

void TestMainModel::openStatus()
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
    // The index picks the second entry.
    TestDatabase::writeEntries(
        m_registry->appSettings(), { Entry { { "filename", "first" } }, entry });
    QCOMPARE(m_model->openDatabase(1, fileName.isEmpty()), status);
    QCOMPARE(m_model->lastError().isEmpty(), status == 0);
    QCOMPARE(bool(qobject_cast<PostgreSQLDatabase*>(m_registry->database())), postgreSQL);
    // Only a successful SQLite open leaves a new file behind.
    if (status == 0)
        QVERIFY(QFileInfo::exists(entry.value("filename").toString()));
    QVERIFY(!QFileInfo::exists(m_dir.filePath(QStringLiteral("unused"))));
    // Connected even after a failure, until the caller closes.
    QVERIFY(m_registry->isConnected());
    QVERIFY(m_model->closeDatabase());
    QVERIFY(!m_registry->isConnected() && !m_registry->database());
}

void TestMainModel::fetchDataOnNewDatabase()
{
    QVERIFY(!m_model->fetchData()); // nothing open yet
    QVERIFY(!m_model->lastError().isEmpty());
    QVERIFY(openNewFile({ { "name", QStringLiteral("Toiminimi Äyräs") } }));

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
}

void TestMainModel::invoiceListRunsInAscendingOrder_data()
{
    QTest::addColumn<int>("limit");
    QTest::addColumn<bool>("descending");

    QTest::addRow("all, latest first") << 0 << true;
    QTest::addRow("latest three") << 3 << true;
}

void TestMainModel::invoiceListRunsInAscendingOrder()
{
    QFETCH(int, limit);
    QFETCH(bool, descending);

    QVERIFY(openNewFile());

    const QList<int> numbers = { 12, 3, 7, 15, 1, 9 };
    std::unique_ptr<Query> query(m_registry->database()->query());
    const int customerId = saveCustomer(query.get(), QStringLiteral("Mäkinen Ky"));
    for (int number : numbers)
        QVERIFY2(saveInvoice(query.get(), number, customerId, number * 1000 + 5),
            qPrintable(query->lastError()));
    query.reset();

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
    for (int row = 0; row < m_model->invoiceCount(); ++row)
        shown.append(list->index(row, InvoiceTableModel::NumberColumn).data().toInt());
    QCOMPARE(shown, expected);

    // The other columns of the last row; cents with two decimals.
    const int last = list->rowCount() - 1;
    const int number = expected.last();
    QCOMPARE(list->index(last, InvoiceTableModel::CustomerColumn).data().toString(),
        QStringLiteral("Mäkinen Ky"));
    QCOMPARE(list->index(last, InvoiceTableModel::DateColumn).data().toString(),
        QStringLiteral("%1.3.2024").arg(number % 28 + 1));
    bool ok = false;
    QCOMPARE(DecimalFormat(2, 2).parse(
                 list->index(last, InvoiceTableModel::TotalAmountColumn).data().toString(), ok),
        qint64(number * 1000 + 5));

    // Closing clears the lists and the current invoice.
    m_model->setLastInvoiceId(4);
    m_model->setEditable(true);
    QVERIFY(m_model->closeDatabase());
    QCOMPARE(m_model->invoiceCount() + m_registry->productCount(), 0);
    QCOMPARE(m_model->invoiceIndex() + m_model->lastInvoiceId(), -2);
    QVERIFY(!m_model->isEditable());
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
    missing.insert(QStringLiteral("databaseName"), server.databaseName() + QStringLiteral("_new"));
    missing.insert(QStringLiteral("name"), QStringLiteral("Uusi Oy"));
    TestDatabase::writeEntries(m_registry->appSettings(), { entry, missing });

    QCOMPARE(m_model->openDatabase(0, false), 0);
    QVERIFY(qobject_cast<PostgreSQLDatabase*>(m_registry->database()));
    QVERIFY2(m_model->fetchData(), qPrintable(m_model->lastError()));
    QCOMPARE(m_registry->settings()->sellerName, QStringLiteral("Palvelin Oy"));

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
