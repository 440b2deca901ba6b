#include "cliprocess.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QtTest>

#include <memory>

// "veklari-cli import payments" run as a process on the sample bank files,
// against a business whose invoices carry the files' references: the exact
// lines on both outputs, the exit status and what is stored.
class TestCliImport : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void dryRun_data();
    void dryRun();
    void saveThenRefuseTwice();
    void failures_data();
    void failures();

private:
    CliProcess::Result cli(const QStringList& arguments);
    QStringList balances() const
    {
        return m_db->rows(QStringLiteral("SELECT number, balance FROM invoice ORDER BY number"));
    }

    QTemporaryDir m_dir;
    std::unique_ptr<TestDatabase> m_db;
    QString m_iniFile;
    int m_runs = 0;
};

namespace {

QString dataFile(const QString& name)
{
    return qEnvironmentVariable("VEKLARI_TEST_DATA") + QStringLiteral("/payments/") + name;
}

QStringList expectedLines(const QString& name)
{
    QFile file(dataFile(name));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return { QStringLiteral("missing ") + name };
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

const QString summaryOfFive
    = QStringLiteral("Tiedosto sisältää 5 tilitapahtumaa, joista 5 on viitemaksuja");

} // namespace

void TestCliImport::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
}

// A fresh business for each test: each saves.
void TestCliImport::init()
{
    m_db = std::make_unique<TestDatabase>(TestDatabase::SQLite);
    QVERIFY2(m_db->open(), qPrintable(m_db->lastError()));
    std::unique_ptr<Query> query(m_db->database()->query());
    BankAccount account;
    account.name = QStringLiteral("Pankki");
    account.iban = QStringLiteral("FI2112345600000785");
    QVERIFY(query->saveBankAccount(&account));
    const struct
    {
        int number;
        const char* customer;
        const char* reference;
        int balance;
    } invoices[] = { { 1001, "Virtanen Oy", "10016", 20000 },
        { 1002, "Mäkinen; \"Matti\"", "10029", 100000 }, { 1003, "Kallio Ky", "10032", 5000 },
        { 1004, "Laine Tmi", "10045", 4000 }, { 1005, "Laine Tmi", "10045", 9250 } };
    int customerNumber = 0;
    for (const auto& sample : invoices) {
        Customer customer;
        customer.number = ++customerNumber;
        customer.name = QString::fromUtf8(sample.customer);
        QVERIFY(query->saveCustomer(&customer));
        Invoice invoice;
        invoice.customerId = customer.id;
        invoice.number = sample.number;
        invoice.date = QDate(2025, 2, 1);
        invoice.dueDate = QDate(2025, 2, 15);
        invoice.referenceNumber = QString::fromLatin1(sample.reference);
        invoice.totalAmount = sample.balance;
        invoice.balance = sample.balance;
        QVERIFY(query->saveInvoice(&invoice));
    }
    QVariantMap entry = m_db->entry();
    entry.insert(QStringLiteral("number"), 1);
    m_db->close();
    m_iniFile = m_dir.filePath(QStringLiteral("veklari-%1.ini").arg(++m_runs));
    QSettings ini(m_iniFile, QSettings::IniFormat);
    TestDatabase::writeEntries(&ini, { entry });
}

CliProcess::Result TestCliImport::cli(const QStringList& arguments)
{
    const QString home = m_dir.filePath(QStringLiteral("home-%1").arg(++m_runs));
    QDir().mkpath(home);
    return CliProcess::run(QStringList { "-c", m_iniFile, "import", "payments" } + arguments, home);
}

// Standard output in NAME.import; nothing is stored.
void TestCliImport::dryRun_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("err");

    QTest::newRow("reference payments")
        << "reference-payments.txt" << QStringList { summaryOfFive };
    QTest::newRow("account statement")
        << "account-statement.txt"
        << QStringList { "Tiedosto sisältää 4 tilitapahtumaa, joista 2 on viitemaksuja" };
    QTest::newRow("camt.054") << "camt054.xml"
                              << QStringList {
                                     "Tiedosto sisältää 5 tilitapahtumaa, joista 4 on viitemaksuja"
                                 };
    QTest::newRow("camt.053") << "camt053.xml"
                              << QStringList {
                                     "Tiedosto sisältää 4 tilitapahtumaa, joista 3 on viitemaksuja"
                                 };
    QTest::newRow("csv ;") << "statement-semicolon.csv"
                           << QStringList {
                                  "Tiedosto sisältää 4 tilitapahtumaa, joista 2 on viitemaksuja"
                              };
    // No account line: nothing is said of the account.
    QTest::newRow("csv ,") << "statement-comma.csv"
                           << QStringList {
                                  "Tiedosto sisältää 3 tilitapahtumaa, joista 2 on viitemaksuja"
                              };
    QTest::newRow("csv tab") << "statement-tab.csv"
                             << QStringList { "Tiedosto sisältää yhden tilitapahtuman" };
}

void TestCliImport::dryRun()
{
    QFETCH(QString, file);
    QFETCH(QStringList, err);
    const QStringList before = balances();
    const CliProcess::Result result = cli({ dataFile(file), "--dry-run" });
    QVERIFY2(result.finished && result.exitCode == 0, result.describe());
    QCOMPARE(result.outLines(), expectedLines(file + QStringLiteral(".import")));
    QCOMPARE(result.errLines(), err);
    QCOMPARE(balances(), before);
}

void TestCliImport::saveThenRefuseTwice()
{
    const QString file = dataFile(QStringLiteral("reference-payments.txt"));
    CliProcess::Result result = cli({ file, "--payment-date" });
    QVERIFY2(result.exitCode == 0, result.describe());
    QCOMPARE(result.errLines(),
        QStringList({ summaryOfFive, "Tietokantaan lisättiin 4 maksusuoritusta." }));
    QCOMPARE(
        balances(), QStringList({ "1001|6450", "1002|0", "1003|5000", "1004|4000", "1005|5250" }));
    QCOMPARE(m_db->rows(QStringLiteral("SELECT date, amount, bank_account_id FROM payment "
                                       "ORDER BY id")),
        QStringList({ "2025-03-12|12550|1", "2025-03-13|100000|1", "2025-03-13|1000|1",
            "2025-03-14|4000|1" }));

    result = cli({ file });
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.errLines().last(),
        QStringLiteral("veklari-cli: Sähköisen aineiston tiedot on jo tallennettu aiemmin. "
                       "Haluatko varmasti tallentaa tiedot uudelleen?"));
    QCOMPARE(balances().first(), QStringLiteral("1001|6450"));

    result = cli({ file, "--force", "--entry-date" });
    QVERIFY2(result.exitCode == 0, result.describe());
    QCOMPARE(balances().first(), QStringLiteral("1001|-7100"));
    QCOMPARE(m_db->value(QStringLiteral("SELECT count(*) FROM payment WHERE date = '2025-03-13' "
                                        "AND amount = 12550"))
                 .toInt(),
        1);
}

void TestCliImport::failures_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("lastErr");

    QTest::newRow("truncated xml") << QStringList { dataFile("camt054-truncated.xml") } << 1
                                   << "veklari-cli: Tiedoston lukeminen epäonnistui. Premature "
                                      "end of document.";
    QTest::newRow("unknown format")
        << QStringList { dataFile("statement-no-header.csv") } << 1
        << "veklari-cli: Tiedoston lukeminen epäonnistui. Tuntematon tiedostomuoto";
    QTest::newRow("missing file") << QStringList { dataFile("ei-ole.txt") } << 1
                                  << "veklari-cli: Tiedoston lukeminen epäonnistui. No such file "
                                     "or directory";
    QTest::newRow("unknown account")
        << QStringList { dataFile("reference-payments.txt"), "--account", "FI4950009420028730" }
        << 1 << "veklari-cli: Pankkitiliä ei löytynyt tilinumerolla FI49 5000 9420 0287 30";
    QTest::newRow("both dates") << QStringList { dataFile("reference-payments.txt"), "--entry-date",
        "--payment-date" } << 2 << "Ohje: veklari-cli --help";
    QTest::newRow("no file") << QStringList {} << 2 << "Ohje: veklari-cli --help";
}

void TestCliImport::failures()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, lastErr);
    const QStringList before = balances();
    const CliProcess::Result result = cli(arguments);
    QVERIFY2(result.finished, result.describe());
    QCOMPARE(result.exitCode, exitCode);
    QCOMPARE(result.errLines().value(result.errLines().size() - 1), lastErr);
    QCOMPARE(balances(), before);
}

QTEST_GUILESS_MAIN(TestCliImport)
#include "tst_cliimport.moc"
