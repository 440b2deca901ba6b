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

#include <QSqlError>
#include <QtTest>

#include <memory>

namespace {

QString readFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    return QString::fromUtf8(file.readAll());
}

Customer* newCustomer(int id, int number, const QString& name)
{
    Customer* customer = new Customer();
    customer->id = id;
    customer->number = number;
    customer->name = name;
    customer->setProperty(QStringLiteral("l"), QStringLiteral("fi"));
    return customer;
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
    void setupLoggingWritesMissingKeys();
    void setupLoggingResolvesFileName_data();
    void setupLoggingResolvesFileName();
    void setupLoggingKeepsStoredFlags();
    void setupLoggingAnnouncesVersion_data();
    void setupLoggingAnnouncesVersion();

    void vocabularies();
    void parseLanguageCode_data();
    void parseLanguageCode();

    void customerCopiesAreIndependent();
    void bankAccountCopiesAreIndependent();
    void disconnectingDeletesLists();

    void fetchedListsAndLookups_data();
    void fetchedListsAndLookups();
    void fetchedListsFollowTheirOrder();
    void fetchPrintScriptsReadsSummaries();
    void fetchSettingsWithoutRowClears();
    void failedFetchLeavesEmptyList();

private:
    QString newDirectory();
    // A SQLite database with a few customers, products, bank accounts and
    // print scripts; ids of the records in m_ids by name.
    bool fillDatabase(TestDatabase& db);

    QMap<QString, int> m_ids;
    std::unique_ptr<TestDatabase> m_lookupDatabase;

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
    QTest::addColumn<QString>("expectedDirectory");
    QTest::addColumn<QString>("absentDirectory");

    QTest::addRow("existing directory") << "veklari.ini"
                                        << "." << QString();
    QTest::addRow("missing directory") << "conf/veklari.ini"
                                       << "conf" << QString();
    QTest::addRow("missing parent") << "a/b/veklari.ini" << QString() << "a";
}

void TestRegistry::loadSettingsCreatesOneDirectoryLevel()
{
    QFETCH(QString, relativeFile);
    QFETCH(QString, expectedDirectory);
    QFETCH(QString, absentDirectory);

    const QDir base(newDirectory());
    Registry registry;
    registry.loadSettings(base.filePath(relativeFile));
    QVERIFY(registry.appSettings());
    QCOMPARE(registry.appSettings()->format(), QSettings::IniFormat);
    QCOMPARE(registry.appSettings()->fileName(), base.filePath(relativeFile));

    if (!expectedDirectory.isEmpty())
        QVERIFY(QFileInfo(base.filePath(expectedDirectory)).isDir());
    if (!absentDirectory.isEmpty())
        QVERIFY(!QFileInfo::exists(base.filePath(absentDirectory)));
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

void TestRegistry::setupLoggingWritesMissingKeys()
{
    const QDir dir(newDirectory());
    const QString iniFile = dir.filePath(QStringLiteral("veklari.ini"));
    {
        Registry registry;
        registry.loadSettings(iniFile);
        registry.setupLogging();

        FileLogger* logger = FileLogger::getInstance();
        QCOMPARE(logger->outputFileName(), dir.filePath(QStringLiteral("Veklari.log")));
        QVERIFY(logger->isEnabled());
        QVERIFY(!logger->isDebugEnabled());
    }
    // Written to the file itself, not only kept in memory.
    QSettings written(iniFile, QSettings::IniFormat);
    QCOMPARE(written.value(QStringLiteral("logging/filename")).toString(),
        QStringLiteral("Veklari.log"));
    QCOMPARE(written.value(QStringLiteral("logging/enabled")).toString(), QStringLiteral("true"));
    QCOMPARE(
        written.value(QStringLiteral("logging/debugEnabled")).toString(), QStringLiteral("false"));
}

void TestRegistry::setupLoggingResolvesFileName_data()
{
    QTest::addColumn<QString>("configured");
    QTest::addColumn<QString>("expected"); // "DIR/" is the configuration's directory

    QTest::addRow("empty") << ""
                           << "DIR/Veklari.log";
    QTest::addRow("plain name") << "x.log"
                                << "DIR/x.log";
    QTest::addRow("relative path") << "sub/x.log"
                                   << "DIR/sub/x.log";
    QTest::addRow("parent path") << "../up.log"
                                 << "DIR/../up.log";
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

    const QString iniFile = QDir(dir).filePath(QStringLiteral("veklari.ini"));
    {
        QSettings ini(iniFile, QSettings::IniFormat);
        ini.setValue(QStringLiteral("logging/filename"), configured);
    }
    Registry registry;
    registry.loadSettings(iniFile);
    registry.setupLogging();
    QCOMPARE(FileLogger::getInstance()->outputFileName(), expected);
    // The configured name stays as the user wrote it.
    QCOMPARE(registry.appSettings()->value(QStringLiteral("logging/filename")).toString(),
        configured.isEmpty() ? QStringLiteral("Veklari.log") : configured);
}

void TestRegistry::setupLoggingKeepsStoredFlags()
{
    const QDir dir(newDirectory());
    const QString iniFile = dir.filePath(QStringLiteral("veklari.ini"));
    {
        QSettings ini(iniFile, QSettings::IniFormat);
        ini.setValue(QStringLiteral("logging/enabled"), false);
        ini.setValue(QStringLiteral("logging/debugEnabled"), true);
    }
    Registry registry;
    registry.loadSettings(iniFile);
    registry.setupLogging();
    QVERIFY(!FileLogger::getInstance()->isEnabled());
    QVERIFY(FileLogger::getInstance()->isDebugEnabled());
    QCOMPARE(registry.appSettings()->value(QStringLiteral("logging/enabled")).toBool(), false);
    FileLogger::getInstance()->setEnabled(true);
}

void TestRegistry::setupLoggingAnnouncesVersion_data()
{
    QTest::addColumn<bool>("debugEnabled");
    QTest::addRow("debug on") << true;
    QTest::addRow("debug off") << false;
}

void TestRegistry::setupLoggingAnnouncesVersion()
{
    QFETCH(bool, debugEnabled);

    const QDir dir(newDirectory());
    const QString iniFile = dir.filePath(QStringLiteral("veklari.ini"));
    {
        QSettings ini(iniFile, QSettings::IniFormat);
        ini.setValue(QStringLiteral("logging/debugEnabled"), debugEnabled);
    }
    Registry registry;
    registry.loadSettings(iniFile);
    registry.setupLogging();

    const QString log = readFile(dir.filePath(QStringLiteral("Veklari.log")));
    QCOMPARE(log.contains(QStringLiteral(" DEBUG [veklari.ui] Veklari 1.28.1\n")), debugEnabled);
}

void TestRegistry::vocabularies()
{
    Registry registry;
    QCOMPARE(registry.availableLanguages(),
        QStringList({ QStringLiteral("fi - suomi"), QStringLiteral("sv - ruotsi"),
            QStringLiteral("en - englanti") }));
    QCOMPARE(
        registry.builtInPrintScriptNames(), QStringList { QStringLiteral("Oletuslaskupohja") });
    QCOMPARE(registry.builtInPrintScriptFilenames(), QStringList { QStringLiteral("invoice") });
    QCOMPARE(registry.builtInPrintScriptIds(), QList<int> { -1 });
    // Each language entry gives back its own code.
    QStringList codes;
    for (const QString& language : registry.availableLanguages())
        codes.append(Registry::parseLanguageCode(language));
    QCOMPARE(codes, QStringList({ "fi", "sv", "en" }));
}

void TestRegistry::parseLanguageCode_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("code");

    QTest::addRow("entry") << "sv - ruotsi"
                           << "sv";
    QTest::addRow("no spaces") << "en-englanti"
                               << "en";
    QTest::addRow("padded code") << "  fi  - suomi"
                                 << "fi";
    QTest::addRow("first dash only") << "a-b-c"
                                     << "a";
    QTest::addRow("no dash unchanged") << " fi "
                                       << " fi ";
    QTest::addRow("empty") << ""
                           << "";
    QTest::addRow("dash first") << "- x"
                                << "";
}

void TestRegistry::parseLanguageCode()
{
    QFETCH(QString, text);
    QFETCH(QString, code);
    QCOMPARE(Registry::parseLanguageCode(text), code);
}

void TestRegistry::customerCopiesAreIndependent()
{
    Registry registry;
    QSignalSpy fetched(&registry, &Registry::customersFetched);

    QList<Customer*> source = { newCustomer(4, 10, QStringLiteral("Aalto Oy")),
        newCustomer(9, 11, QStringLiteral("Berg")) };
    registry.copyCustomersFrom(source);
    QCOMPARE(fetched.count(), 1);
    source.at(0)->name = QStringLiteral("changed in the dialog");
    qDeleteAll(source);

    QCOMPARE(registry.customerCount(), 2);
    bool found = false;
    Customer* aalto = registry.customerById(4, found);
    QVERIFY(found);
    QCOMPARE(aalto->name, QStringLiteral("Aalto Oy"));
    QCOMPARE(aalto->property(QStringLiteral("l")).toString(), QStringLiteral("fi"));

    QList<Customer*> copies;
    registry.copyCustomersTo(copies);
    QCOMPARE(copies.size(), 2);
    QVERIFY(copies.at(0) != registry.customerAt(0));
    copies.at(0)->name = QStringLiteral("edited copy");
    copies.at(0)->setProperty(QStringLiteral("l"), QStringLiteral("sv"));
    QCOMPARE(registry.customerAt(0)->name, QStringLiteral("Aalto Oy"));
    QCOMPARE(
        registry.customerAt(0)->property(QStringLiteral("l")).toString(), QStringLiteral("fi"));
    QCOMPARE(copies.at(1)->number, 11);
    qDeleteAll(copies);
}

void TestRegistry::bankAccountCopiesAreIndependent()
{
    Registry registry;
    QSignalSpy fetched(&registry, &Registry::bankAccountsFetched);
    BankAccount account;
    account.id = 3;
    account.name = QStringLiteral("Käyttötili");
    account.iban = QStringLiteral("FI2112345600000785");
    registry.copyBankAccountsFrom({ &account });
    QCOMPARE(fetched.count(), 1);
    account.iban.clear();

    bool found = false;
    QCOMPARE(registry.bankAccountById(3, found)->iban, QStringLiteral("FI2112345600000785"));
    QVERIFY(found);
    QVERIFY(registry.bankAccountAt(0) != &account);
    QCOMPARE(registry.bankAccountIndexById(3), 0);
    QCOMPARE(registry.bankAccountIndexById(4), -1);

    QList<BankAccount*> copies;
    registry.copyBankAccountsTo(copies);
    copies.at(0)->visible = false;
    QVERIFY(registry.bankAccountAt(0)->visible);
    qDeleteAll(copies);
}

void TestRegistry::disconnectingDeletesLists()
{
    Registry registry;
    registry.setConnected(true);
    registry.copyCustomersFrom({ newCustomer(1, 1, QStringLiteral("A")) });
    BankAccount account;
    registry.copyBankAccountsFrom({ &account });
    QCOMPARE(registry.customerCount(), 1);
    QVERIFY(registry.isConnected());

    QSignalSpy begin(&registry, &Registry::beginUpdateProducts);
    QSignalSpy end(&registry, &Registry::endUpdateProducts);
    registry.setConnected(false);
    QVERIFY(!registry.isConnected());
    QCOMPARE(registry.customerCount(), 0);
    QCOMPARE(registry.bankAccountCount(), 0);
    QCOMPARE(registry.productCount(), 0);
    QCOMPARE(registry.printScriptCount(), 0);
    QCOMPARE(begin.count(), 1);
    QCOMPARE(end.count(), 1);
    bool found = true;
    QCOMPARE(registry.customerById(1, found), nullptr);
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
        customer.setProperty(QStringLiteral("e2"), c.second.toLower());
        if (!query->saveCustomer(&customer))
            return false;
        m_ids.insert(c.second, customer.id);
    }
    for (const QString& number : { QStringLiteral("P2"), QStringLiteral("P1") }) {
        Product product;
        product.number = number;
        product.name = QStringLiteral("Tuote ") + number;
        product.amount = 125000;
        product.vatRate = 2550;
        if (!query->saveProduct(&product))
            return false;
        m_ids.insert(number, product.id);
    }
    const QList<QPair<int, QString>> accounts = { { 2, "Säästö" }, { 1, "Käyttö" } };
    for (const auto& a : accounts) {
        BankAccount account;
        account.name = a.second;
        account.rowNumber = a.first;
        account.iban = QStringLiteral("FI2112345600000785");
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

void TestRegistry::fetchedListsAndLookups_data()
{
    QTest::addColumn<QString>("lookup");
    QTest::addColumn<QString>("key"); // a record name (its id), a number or a missing key
    QTest::addColumn<QString>("expected"); // name found, empty when not found

    QTest::addRow("customer by id") << "customerById"
                                    << "Björk"
                                    << "Björk";
    QTest::addRow("customer by missing id") << "customerById"
                                            << "-1"
                                            << "";
    QTest::addRow("customer by number") << "customerByNumber"
                                        << "30"
                                        << "Cederberg";
    QTest::addRow("customer by missing number") << "customerByNumber"
                                                << "40"
                                                << "";
    QTest::addRow("product by id") << "productById"
                                   << "P1"
                                   << "Tuote P1";
    QTest::addRow("product by number") << "productByNumber"
                                       << "P2"
                                       << "Tuote P2";
    QTest::addRow("initial product by number") << "productByNumber"
                                               << "999"
                                               << "Viivästyskorko";
    QTest::addRow("product by missing number") << "productByNumber"
                                               << "p1"
                                               << "";
    QTest::addRow("bank account by id") << "bankAccountById"
                                        << "Säästö"
                                        << "Säästö";
    QTest::addRow("bank account by missing id") << "bankAccountById"
                                                << "9999"
                                                << "";
}

void TestRegistry::fetchedListsAndLookups()
{
    QFETCH(QString, lookup);
    QFETCH(QString, key);
    QFETCH(QString, expected);

    if (!m_lookupDatabase) {
        m_lookupDatabase = std::make_unique<TestDatabase>(TestDatabase::SQLite);
        QVERIFY2(fillDatabase(*m_lookupDatabase), qPrintable(m_lookupDatabase->lastError()));
    }
    std::unique_ptr<Query> query(m_lookupDatabase->database()->query());
    Registry registry;
    QVERIFY(registry.fetchCustomers(query.get()));
    QVERIFY(registry.fetchProducts(query.get()));
    QVERIFY(registry.fetchBankAccounts(query.get()));

    const int id = m_ids.value(key, key.toInt());
    // Starts as the opposite of the expected result, so the lookup must set it.
    bool found = expected.isEmpty();
    QString name;
    int index = -2;
    if (lookup == QLatin1String("customerById")) {
        if (Customer* c = registry.customerById(id, found))
            name = c->name;
    } else if (lookup == QLatin1String("customerByNumber")) {
        if (Customer* c = registry.customerByNumber(key.toInt(), found))
            name = c->name;
    } else if (lookup == QLatin1String("productById")) {
        if (Product* p = registry.productById(id, found))
            name = p->name;
        index = registry.productIndexById(id);
    } else if (lookup == QLatin1String("productByNumber")) {
        if (Product* p = registry.productByNumber(key, found))
            name = p->name;
    } else if (lookup == QLatin1String("bankAccountById")) {
        if (BankAccount* a = registry.bankAccountById(id, found))
            name = a->name;
        index = registry.bankAccountIndexById(id);
    } else {
        QFAIL("unknown lookup");
    }
    QCOMPARE(found, !expected.isEmpty());
    QCOMPARE(name, expected);
    if (index != -2) {
        if (expected.isEmpty()) {
            QCOMPARE(index, -1);
        } else if (lookup.startsWith(QLatin1String("product"))) {
            QCOMPARE(registry.productAt(index)->id, id);
        } else {
            QCOMPARE(registry.bankAccountAt(index)->id, id);
        }
    }
}

void TestRegistry::fetchedListsFollowTheirOrder()
{
    m_lookupDatabase.reset();
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY2(fillDatabase(db), qPrintable(db.lastError()));
    std::unique_ptr<Query> query(db.database()->query());
    Registry registry;
    QSignalSpy customers(&registry, &Registry::customersFetched);
    QSignalSpy beginProducts(&registry, &Registry::beginUpdateProducts);
    QSignalSpy endProducts(&registry, &Registry::endUpdateProducts);
    QSignalSpy accounts(&registry, &Registry::bankAccountsFetched);

    QVERIFY(registry.fetchCustomers(query.get()));
    QVERIFY(registry.fetchProducts(query.get()));
    QVERIFY(registry.fetchBankAccounts(query.get()));
    QCOMPARE(customers.count(), 1);
    QCOMPARE(beginProducts.count(), 1);
    QCOMPARE(endProducts.count(), 1);
    QCOMPARE(accounts.count(), 1);

    // Customers by number, deleted ones included; products by number; bank
    // accounts by row number.
    QStringList names;
    for (int i = 0; i < registry.customerCount(); ++i)
        names.append(registry.customerAt(i)->name);
    QCOMPARE(names, QStringList({ "Aaltonen", "Björk", "Cederberg" }));
    QVERIFY(registry.customerAt(1)->deleted);
    QCOMPARE(registry.customerAt(2)->property(QStringLiteral("e2")).toString(),
        QStringLiteral("cederberg"));
    QStringList numbers;
    for (int i = 0; i < registry.productCount(); ++i)
        numbers.append(registry.productAt(i)->number);
    QCOMPARE(numbers, QStringList({ "999", "P1", "P2" }));
    QCOMPARE(registry.bankAccountAt(0)->name, QStringLiteral("Käyttö"));
    QCOMPARE(registry.bankAccountAt(1)->name, QStringLiteral("Säästö"));

    // Fetching again replaces the lists instead of adding to them.
    QVERIFY(registry.fetchCustomers(query.get()));
    QCOMPARE(registry.customerCount(), 3);

    // Copies of fetched products are deep.
    QList<Product*> products;
    registry.copyProducts(products);
    QCOMPARE(products.size(), 3);
    products.at(1)->amount = 1;
    QCOMPARE(registry.productAt(1)->amount, 125000);
    qDeleteAll(products);
}

void TestRegistry::fetchPrintScriptsReadsSummaries()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY2(fillDatabase(db), qPrintable(db.lastError()));
    std::unique_ptr<Query> query(db.database()->query());
    Registry registry;
    QVERIFY(registry.fetchPrintScripts(query.get()));

    QCOMPARE(registry.printScriptCount(), 2);
    // Ordered by type: "finvoice" before "invoice".
    QCOMPARE(registry.printScriptIndexByType(QStringLiteral("finvoice")), 0);
    QCOMPARE(registry.printScriptIndexByType(QStringLiteral("invoice")), 1);
    QCOMPARE(registry.printScriptIndexByType(QStringLiteral("invoice-list")), -1);
    QCOMPARE(registry.printScriptIndexByName(QStringLiteral("Oma lasku")), 1);
    QCOMPARE(registry.printScriptIndexByName(QStringLiteral("oma lasku")), -1);
    QCOMPARE(registry.printScriptIndexById(m_ids.value(QStringLiteral("Verkkolasku"))), 0);
    QCOMPARE(registry.printScriptIndexById(-1), -1);
    // The source code stays in the database until a script runs.
    QVERIFY(registry.printScriptAt(0)->sourceCode.isEmpty());

    QList<PrintScript*> copies;
    registry.copyPrintScripts(copies);
    QCOMPARE(copies.size(), 2);
    QCOMPARE(copies.at(1)->name, QStringLiteral("Oma lasku"));
    copies.at(1)->name = QStringLiteral("muutettu");
    QCOMPARE(registry.printScriptAt(1)->name, QStringLiteral("Oma lasku"));
    qDeleteAll(copies);
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

    QSqlQuery remove(QSqlDatabase::database(db.database()->connectionName()));
    QVERIFY2(
        remove.exec(QStringLiteral("DELETE FROM settings")), qPrintable(remove.lastError().text()));
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

    QSqlQuery drop(QSqlDatabase::database(db.database()->connectionName()));
    QVERIFY2(drop.exec(QStringLiteral("DROP TABLE customer")), qPrintable(drop.lastError().text()));
    QVERIFY(!registry.fetchCustomers(query.get()));
    QVERIFY(!query->lastError().isEmpty());
    QCOMPARE(registry.customerCount(), 0);
}

QTEST_GUILESS_MAIN(TestRegistry)
#include "tst_registry.moc"
