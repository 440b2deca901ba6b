#include "core/filelogger.h"
#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/printscript.h"
#include "domain/product.h"
#include "domain/settings.h"

#include <QtTest>

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

private:
    QString newDirectory();

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

QTEST_GUILESS_MAIN(TestRegistry)
#include "tst_registry.moc"
