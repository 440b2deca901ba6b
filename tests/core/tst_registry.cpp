#include "core/filelogger.h"
#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/printscript.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QtTest>

#include <memory>

class TestRegistry : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void setupLogging_data();
    void setupLogging();
    void logFileNames_data();
    void logFileNames();
    void fetchedListsAndLookups();

private:
    QString newDirectory()
    {
        const QString path = m_dir.filePath(QString::number(++m_counter));
        QDir().mkpath(path);
        return path;
    }
    // A configuration file in the directory with the keys given.
    static QString iniWith(const QString& dir, const QVariantMap& keys)
    {
        const QString iniFile = QDir(dir).filePath(QStringLiteral("veklari.ini"));
        QSettings ini(iniFile, QSettings::IniFormat);
        for (auto it = keys.cbegin(); it != keys.cend(); ++it)
            ini.setValue(it.key(), it.value());
        return iniFile;
    }

    QTemporaryDir m_dir;
    int m_counter = 0;
};

void TestRegistry::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    QCoreApplication::setApplicationName(QStringLiteral("Veklari"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VEKLARI_VERSION));
}

void TestRegistry::setupLogging_data()
{
    QTest::addColumn<QVariantMap>("stored");
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<bool>("debugEnabled");
    QTest::addRow("nothing stored") << QVariantMap() << true << false;
    QTest::addRow("debug on") << QVariantMap { { "logging/debugEnabled", true } } << true << true;
    QTest::addRow("disabled") << QVariantMap { { "logging/enabled", false },
        { "logging/debugEnabled", true } }
                              << false << true;
}

void TestRegistry::setupLogging()
{
    QFETCH(QVariantMap, stored);
    QFETCH(bool, enabled);
    QFETCH(bool, debugEnabled);
    const QString dir = newDirectory();
    const QString iniFile = iniWith(dir, stored);
    {
        Registry registry;
        registry.loadSettings(iniFile);
        registry.setupLogging();
        FileLogger* logger = FileLogger::getInstance();
        QCOMPARE(logger->isEnabled(), enabled);
        QCOMPARE(logger->isDebugEnabled(), debugEnabled);
        logger->setEnabled(true);
    }
    // Missing keys are written to the file itself, stored ones kept.
    QSettings written(iniFile, QSettings::IniFormat);
    QCOMPARE(written.value("logging/filename").toString()
            + written.value("logging/enabled").toString()
            + written.value("logging/debugEnabled").toString(),
        "Veklari.log" + QVariant(enabled).toString() + QVariant(debugEnabled).toString());
    // The version line goes out at debug level.
    QFile logFile(QDir(dir).filePath(QStringLiteral("Veklari.log")));
    const QString log
        = logFile.open(QIODevice::ReadOnly) ? QString::fromUtf8(logFile.readAll()) : QString();
    QCOMPARE(log.contains(QStringLiteral(" DEBUG [veklari.ui] Veklari 1.28.1\n")),
        enabled && debugEnabled);
}

void TestRegistry::logFileNames_data()
{
    QTest::addColumn<QString>("configured");
    QTest::addColumn<QString>("expected"); // "DIR/" is the configuration's directory
    QTest::addRow("empty") << ""
                           << "DIR/Veklari.log";
    QTest::addRow("relative path") << "../sub/x.log"
                                   << "DIR/../sub/x.log";
    QTest::addRow("absolute") << "ABS/elsewhere.log"
                              << "ABS/elsewhere.log";
    QTest::addRow("standard error") << "-"
                                    << "-";
}

void TestRegistry::logFileNames()
{
    QFETCH(QString, configured);
    QFETCH(QString, expected);
    const QString dir = newDirectory();
    const QString elsewhere = newDirectory();
    configured.replace(QStringLiteral("ABS"), elsewhere);
    expected.replace(QStringLiteral("DIR"), dir).replace(QStringLiteral("ABS"), elsewhere);
    Registry registry;
    registry.loadSettings(iniWith(dir, { { "logging/filename", configured } }));
    registry.setupLogging();
    QCOMPARE(FileLogger::getInstance()->outputFileName(), expected);
    // The configured name stays as the user wrote it.
    QCOMPARE(registry.appSettings()->value(QStringLiteral("logging/filename")).toString(),
        configured.isEmpty() ? QStringLiteral("Veklari.log") : configured);
}

void TestRegistry::fetchedListsAndLookups()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    std::unique_ptr<Query> query(db.database()->query());
    QMap<QString, int> ids;
    for (int number : { 30, 10, 20 }) {
        Customer customer;
        customer.number = number;
        customer.name = QStringLiteral("Asiakas %1").arg(number);
        customer.deleted = number == 20;
        QVERIFY(query->saveCustomer(&customer));
    }
    for (const char* number : { "P2", "P1" }) {
        Product product;
        product.number = QLatin1String(number);
        QVERIFY(query->saveProduct(&product));
        ids.insert(product.number, product.id);
    }
    for (int row : { 2, 1 }) {
        BankAccount account;
        account.name = QStringLiteral("Tili %1").arg(row);
        account.rowNumber = row;
        QVERIFY(query->saveBankAccount(&account));
        ids.insert(account.name, account.id);
    }
    for (const char* type : { "invoice", "finvoice" }) {
        PrintScript script;
        script.type = QLatin1String(type);
        script.name = QStringLiteral("Oma ") + script.type;
        script.sourceCode = QStringLiteral("// lähde");
        QVERIFY(query->savePrintScript(&script));
    }

    Registry registry;
    QSignalSpy customersFetched(&registry, &Registry::customersFetched);
    QVERIFY(registry.fetchCustomers(query.get()));
    QVERIFY(registry.fetchCustomers(query.get())); // replaces, does not add
    QVERIFY(registry.fetchProducts(query.get()) && registry.fetchBankAccounts(query.get()));
    QVERIFY(registry.fetchPrintScripts(query.get()));
    QCOMPARE(customersFetched.count(), 2);

    // Customers by number, deleted ones included; products by number; bank
    // accounts by row number; scripts by type, without their source code.
    QStringList order;
    for (int i = 0; i < registry.customerCount(); ++i)
        order.append(registry.customerAt(i)->name);
    for (int i = 0; i < registry.productCount(); ++i)
        order.append(registry.productAt(i)->number);
    for (int i = 0; i < registry.bankAccountCount(); ++i)
        order.append(registry.bankAccountAt(i)->name);
    for (int i = 0; i < registry.printScriptCount(); ++i)
        order.append(registry.printScriptAt(i)->name + registry.printScriptAt(i)->sourceCode);
    QCOMPARE(order,
        QStringList({ "Asiakas 10", "Asiakas 20", "Asiakas 30", "999", "P1", "P2", "Tili 1",
            "Tili 2", "Oma finvoice", "Oma invoice" }));

    bool found = false;
    QCOMPARE(registry.customerByNumber(30, found)->name, QStringLiteral("Asiakas 30"));
    QCOMPARE(registry.customerByNumber(40, found), nullptr);
    QVERIFY(!found);
    QCOMPARE(registry.productIndexById(ids.value("P2")), 2);
    QCOMPARE(registry.bankAccountIndexById(ids.value("Tili 2")), 1);

    // A failed fetch leaves an empty list.
    QVERIFY(db.exec({ QStringLiteral("DROP TABLE customer") }));
    QVERIFY(!registry.fetchCustomers(query.get()));
    QCOMPARE(registry.customerCount(), 0);
}

QTEST_GUILESS_MAIN(TestRegistry)
#include "tst_registry.moc"
