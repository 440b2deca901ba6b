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

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtTest>

#include <functional>
#include <memory>

namespace {

// Writes the logging keys given, leaving the others out.
QString iniWith(const QString& dir, const QVariantMap& keys)
{
    const QString iniFile = QDir(dir).filePath(QStringLiteral("veklari.ini"));
    QSettings ini(iniFile, QSettings::IniFormat);
    for (auto it = keys.cbegin(); it != keys.cend(); ++it)
        ini.setValue(it.key(), it.value());
    return iniFile;
}

} // namespace

class TestRegistry : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void loadSettingsCreatesOneDirectoryLevel_data();
    void loadSettingsCreatesOneDirectoryLevel();
    void loadSettingsDefaultsToThePerUserFile();
    void setupLogging_data();
    void setupLogging();
    void setupLoggingResolvesFileName_data();
    void setupLoggingResolvesFileName();
    void vocabularies();

    void copiesAreIndependent();
    void fetchedListsAndLookups();
    void fetchSettingsWithoutRowClears();
    void failedFetchLeavesEmptyList();

private:
    QString newDirectory();
    // A SQLite database with a few customers, products, bank accounts and
    // print scripts; ids of the records in m_ids by name.
    bool fillDatabase(TestDatabase& db);

    QMap<QString, int> m_ids;
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

QString TestRegistry::newDirectory()
{
    const QString path = m_dir.filePath(QString::number(++m_counter));
    QDir().mkpath(path);
    return path;
}

void TestRegistry::loadSettingsCreatesOneDirectoryLevel_data()
{
    QTest::addColumn<QString>("relativeFile");
    QTest::addColumn<bool>("directoryMade");
    QTest::addRow("existing directory") << "veklari.ini" << true;
    QTest::addRow("missing directory") << "conf/veklari.ini" << true;
    QTest::addRow("missing parent") << "a/b/veklari.ini" << false;
}

void TestRegistry::loadSettingsCreatesOneDirectoryLevel()
{
    QFETCH(QString, relativeFile);
    QFETCH(bool, directoryMade);
    const QDir base(newDirectory());
    Registry registry;
    registry.loadSettings(base.filePath(relativeFile));
    QCOMPARE(registry.appSettings()->format(), QSettings::IniFormat);
    QCOMPARE(registry.appSettings()->fileName(), base.filePath(relativeFile));
    QCOMPARE(QFileInfo(QFileInfo(base.filePath(relativeFile)).path()).isDir(), directoryMade);
}

void TestRegistry::loadSettingsDefaultsToThePerUserFile()
{
    const QString configHome = newDirectory();
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, configHome);
    Registry registry;
    registry.loadSettings(QString());
    QCOMPARE(registry.appSettings()->format(), QSettings::IniFormat);
    QCOMPARE(registry.appSettings()->fileName(),
        QDir(configHome).filePath(QStringLiteral("Veklari/Veklari.ini")));
    QVERIFY(QFileInfo(QDir(configHome).filePath(QStringLiteral("Veklari"))).isDir());
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
        QCOMPARE(logger->outputFileName(), QDir(dir).filePath(QStringLiteral("Veklari.log")));
        QCOMPARE(logger->isEnabled(), enabled);
        QCOMPARE(logger->isDebugEnabled(), debugEnabled);
        logger->setEnabled(true);
    }
    // Missing keys are written to the file itself, stored ones kept.
    QSettings written(iniFile, QSettings::IniFormat);
    QCOMPARE(written.value(QStringLiteral("logging/filename")).toString(),
        QStringLiteral("Veklari.log"));
    QCOMPARE(written.value(QStringLiteral("logging/enabled")).toString(),
        enabled ? QStringLiteral("true") : QStringLiteral("false"));
    QCOMPARE(written.value(QStringLiteral("logging/debugEnabled")).toString(),
        debugEnabled ? QStringLiteral("true") : QStringLiteral("false"));
    // The version line goes out at debug level.
    QFile logFile(QDir(dir).filePath(QStringLiteral("Veklari.log")));
    const QString log
        = logFile.open(QIODevice::ReadOnly) ? QString::fromUtf8(logFile.readAll()) : QString();
    QCOMPARE(log.contains(QStringLiteral(" DEBUG [veklari.ui] Veklari 1.28.1\n")),
        enabled && debugEnabled);
}

void TestRegistry::setupLoggingResolvesFileName_data()
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

void TestRegistry::setupLoggingResolvesFileName()
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

void TestRegistry::vocabularies()
{
    Registry registry;
    QCOMPARE(registry.availableLanguages(),
        QStringList({ "fi - suomi", "sv - ruotsi", "en - englanti" }));
    QCOMPARE(registry.builtInPrintScriptNames(), QStringList { "Oletuslaskupohja" });
    QCOMPARE(registry.builtInPrintScriptFilenames(), QStringList { "invoice" });
    QCOMPARE(registry.builtInPrintScriptIds(), QList<int> { -1 });
    QStringList codes;
    for (const QString& language : registry.availableLanguages())
        codes.append(Registry::parseLanguageCode(language));
    QCOMPARE(codes, QStringList({ "fi", "sv", "en" }));
    // The code is what stands before the first dash, trimmed.
    QCOMPARE(Registry::parseLanguageCode(QStringLiteral("  fi  - a-b")), QStringLiteral("fi"));
    QCOMPARE(Registry::parseLanguageCode(QStringLiteral(" fi ")), QStringLiteral(" fi "));
    QCOMPARE(Registry::parseLanguageCode(QStringLiteral("- x")), QString());
}

void TestRegistry::copiesAreIndependent()
{
    Registry registry;
    registry.setConnected(true);
    QSignalSpy customersFetched(&registry, &Registry::customersFetched);
    QSignalSpy accountsFetched(&registry, &Registry::bankAccountsFetched);
    Customer customer;
    customer.id = 4;
    customer.name = QStringLiteral("Aalto Oy");
    customer.setProperty(QStringLiteral("l"), QStringLiteral("fi"));
    BankAccount account;
    account.id = 3;
    registry.copyCustomersFrom({ &customer });
    registry.copyBankAccountsFrom({ &account });
    QCOMPARE(customersFetched.count(), 1);
    QCOMPARE(accountsFetched.count(), 1);
    customer.name.clear();
    account.visible = false;
    QCOMPARE(registry.customerAt(0)->name, QStringLiteral("Aalto Oy"));
    QVERIFY(registry.bankAccountAt(0)->visible);

    QList<Customer*> customers;
    registry.copyCustomersTo(customers);
    QList<BankAccount*> accounts;
    registry.copyBankAccountsTo(accounts);
    customers.at(0)->setProperty(QStringLiteral("l"), QStringLiteral("sv"));
    accounts.at(0)->visible = false;
    QCOMPARE(registry.customerAt(0)->property(QStringLiteral("l")), QVariant("fi"));
    QVERIFY(registry.bankAccountAt(0)->visible);
    qDeleteAll(customers);
    qDeleteAll(accounts);

    // Disconnecting deletes every list, products announced as changed.
    QSignalSpy endProducts(&registry, &Registry::endUpdateProducts);
    registry.setConnected(false);
    QVERIFY(!registry.isConnected());
    QCOMPARE(registry.customerCount() + registry.bankAccountCount(), 0);
    QCOMPARE(endProducts.count(), 1);
    bool found = true;
    QCOMPARE(registry.customerById(4, found), nullptr);
    QVERIFY(!found);
    QCOMPARE(registry.customerAt(0), nullptr);
}

bool TestRegistry::fillDatabase(TestDatabase& db)
{
    if (!db.open())
        return false;
    std::unique_ptr<Query> query(db.database()->query());
    m_ids.clear();
    const QList<QPair<int, QString>> customers
        = { { 30, "Cederberg" }, { 10, "Aaltonen" }, { 20, "Björk" } };
    for (const auto& c : customers) {
        Customer customer;
        customer.number = c.first;
        customer.name = c.second;
        customer.deleted = c.first == 20;
        if (!query->saveCustomer(&customer))
            return false;
        m_ids.insert(c.second, customer.id);
    }
    for (const QString& number : { QStringLiteral("P2"), QStringLiteral("P1") }) {
        Product product;
        product.number = number;
        product.name = QStringLiteral("Tuote ") + number;
        if (!query->saveProduct(&product))
            return false;
        m_ids.insert(number, product.id);
    }
    const QList<QPair<int, QString>> accounts = { { 2, "Säästö" }, { 1, "Käyttö" } };
    for (const auto& a : accounts) {
        BankAccount account;
        account.name = a.second;
        account.rowNumber = a.first;
        if (!query->saveBankAccount(&account))
            return false;
        m_ids.insert(a.second, account.id);
    }
    const QList<QPair<QString, QString>> scripts
        = { { "invoice", "Oma lasku" }, { "finvoice", "Verkkolasku" } };
    for (const auto& s : scripts) {
        PrintScript script;
        script.type = s.first;
        script.name = s.second;
        script.sourceCode = QStringLiteral("// ") + s.second;
        if (!query->savePrintScript(&script))
            return false;
        m_ids.insert(s.second, script.id);
    }
    return true;
}

void TestRegistry::fetchedListsAndLookups()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY2(fillDatabase(db), qPrintable(db.lastError()));
    std::unique_ptr<Query> query(db.database()->query());
    Registry registry;
    QSignalSpy customersFetched(&registry, &Registry::customersFetched);
    QSignalSpy beginProducts(&registry, &Registry::beginUpdateProducts);
    QVERIFY(registry.fetchCustomers(query.get()));
    QVERIFY(registry.fetchCustomers(query.get())); // replaces, does not add
    QVERIFY(registry.fetchProducts(query.get()));
    QVERIFY(registry.fetchBankAccounts(query.get()));
    QVERIFY(registry.fetchPrintScripts(query.get()));
    QCOMPARE(customersFetched.count(), 2);
    QCOMPARE(beginProducts.count(), 1);

    // Customers by number, deleted ones included; products by number; bank
    // accounts by row number; scripts by type, then name.
    auto names = [](int count, const std::function<QString(int)>& name) {
        QStringList result;
        for (int i = 0; i < count; ++i)
            result.append(name(i));
        return result;
    };
    QCOMPARE(names(registry.customerCount(), [&](int i) { return registry.customerAt(i)->name; }),
        QStringList({ "Aaltonen", "Björk", "Cederberg" }));
    QCOMPARE(names(registry.productCount(), [&](int i) { return registry.productAt(i)->number; }),
        QStringList({ "999", "P1", "P2" }));
    QCOMPARE(
        names(registry.bankAccountCount(), [&](int i) { return registry.bankAccountAt(i)->name; }),
        QStringList({ "Käyttö", "Säästö" }));
    QCOMPARE(
        names(registry.printScriptCount(), [&](int i) { return registry.printScriptAt(i)->name; }),
        QStringList({ "Verkkolasku", "Oma lasku" }));
    // The source code stays in the database until a script runs.
    QVERIFY(registry.printScriptAt(0)->sourceCode.isEmpty());

    bool found = false;
    QCOMPARE(registry.customerById(m_ids.value("Björk"), found)->name, QStringLiteral("Björk"));
    QVERIFY(found);
    QCOMPARE(registry.customerByNumber(30, found)->name, QStringLiteral("Cederberg"));
    QCOMPARE(registry.customerByNumber(40, found), nullptr);
    QVERIFY(!found);
    QCOMPARE(registry.productByNumber(QStringLiteral("P2"), found)->id, m_ids.value("P2"));
    QCOMPARE(registry.productByNumber(QStringLiteral("p1"), found), nullptr);
    QCOMPARE(registry.productById(m_ids.value("P1"), found)->name, QStringLiteral("Tuote P1"));
    QCOMPARE(registry.productIndexById(m_ids.value("P2")), 2);
    QCOMPARE(registry.bankAccountById(m_ids.value("Säästö"), found)->rowNumber, 2);
    QCOMPARE(registry.bankAccountIndexById(m_ids.value("Säästö")), 1);
    QCOMPARE(registry.bankAccountIndexById(9999), -1);
    QCOMPARE(registry.printScriptIndexByType(QStringLiteral("invoice")), 1);
    QCOMPARE(registry.printScriptIndexByType(QStringLiteral("invoice-list")), -1);
    QCOMPARE(registry.printScriptIndexByName(QStringLiteral("oma lasku")), -1);
    QCOMPARE(registry.printScriptIndexById(m_ids.value("Verkkolasku")), 0);

    QList<Product*> products;
    registry.copyProducts(products);
    QList<PrintScript*> scripts;
    registry.copyPrintScripts(scripts);
    products.at(1)->amount = 1;
    scripts.at(1)->name.clear();
    QCOMPARE(registry.productAt(1)->amount, 0LL);
    QCOMPARE(registry.printScriptAt(1)->name, QStringLiteral("Oma lasku"));
    qDeleteAll(products);
    qDeleteAll(scripts);
}

void TestRegistry::fetchSettingsWithoutRowClears()
{
    TestDatabase db(TestDatabase::SQLite, QStringLiteral("Yritys Oy"));
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    std::unique_ptr<Query> query(db.database()->query());
    Registry registry;
    QVERIFY(registry.fetchSettings(query.get()));
    QCOMPARE(registry.settings()->sellerName, QStringLiteral("Yritys Oy"));
    QCOMPARE(registry.settings()->property(QStringLiteral("settings/paymentTerms")).toString(),
        QStringLiteral("14 päivää netto"));
    // On the same connection: the fetch above still holds its read lock.
    QSqlQuery remove(QSqlDatabase::database(db.database()->connectionName()));
    QVERIFY(remove.exec(QStringLiteral("DELETE FROM settings")));
    QVERIFY(registry.fetchSettings(query.get()));
    QVERIFY(registry.settings()->sellerName.isEmpty());
    QVERIFY(registry.settings()->properties.isEmpty());
}

void TestRegistry::failedFetchLeavesEmptyList()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY2(fillDatabase(db), qPrintable(db.lastError()));
    std::unique_ptr<Query> query(db.database()->query());
    Registry registry;
    QVERIFY(registry.fetchCustomers(query.get()));
    QCOMPARE(registry.customerCount(), 3);
    QVERIFY(db.exec({ QStringLiteral("DROP TABLE customer") }));
    QVERIFY(!registry.fetchCustomers(query.get()));
    QVERIFY(!query->lastError().isEmpty());
    QCOMPARE(registry.customerCount(), 0);
}

QTEST_GUILESS_MAIN(TestRegistry)
#include "tst_registry.moc"
