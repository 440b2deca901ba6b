#include "logcapture.h"
#include "storage/postgresqldatabase.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QSettings>
#include <QStandardPaths>
#include <QtTest>

class PostgreSQLDatabaseTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void serverIsConfigured();
    void missingDatabaseWithoutCreate();
    void missingDatabaseIsCreated();
    void missingTablesAreCreated();
    void wrongPasswordIsRefused();
    void missingSettingsRowFails();
    void emptyHostOrName_data();
    void emptyHostOrName();
};

void PostgreSQLDatabaseTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QLoggingCategory::setFilterRules(QStringLiteral("veklari.database.debug=true"));
}

void PostgreSQLDatabaseTest::serverIsConfigured()
{
    // Without the test server these tests must fail, never pass vacuously.
    if (qEnvironmentVariableIsEmpty("VEKLARI_PG_CONFIG"))
        QFAIL("VEKLARI_PG_CONFIG is not set; run through ctest");
    TestDatabase db(TestDatabase::PostgreSQL);
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    QVERIFY(db.database()->driverAvailable());
    QCOMPARE(db.database()->connectionName(), QStringLiteral("postgresql"));
}

void PostgreSQLDatabaseTest::missingDatabaseWithoutCreate()
{
    TestDatabase db(TestDatabase::PostgreSQL);
    LogCapture log("veklari.database");
    QVERIFY(!db.open(false));
    QVERIFY(!db.database()->exists());
    QVERIFY2(db.lastError().contains(QLatin1String("does not exist")), qPrintable(db.lastError()));
    QVERIFY(!log.contains(QStringLiteral("debug: Luodaan tietokanta")));
    // Still missing on a second try.
    QVERIFY(!db.open(false));
    QVERIFY(!db.database()->exists());
}

void PostgreSQLDatabaseTest::missingDatabaseIsCreated()
{
    TestDatabase db(TestDatabase::PostgreSQL);
    LogCapture log("veklari.database");
    QVERIFY2(db.open(true), qPrintable(db.lastError()));
    QVERIFY(db.database()->exists()); // created, so it exists now
    const QString group = db.configurationGroup() + QLatin1Char('/');
    QVERIFY(log.contains(QStringLiteral("debug: Avataan tietokanta postgresql://%1:%2/%3")
                             .arg(db.configuration()->value(group + "host").toString())
                             .arg(db.configuration()->value(group + "port").toInt())
                             .arg(db.databaseName())));
    QVERIFY(log.contains(QStringLiteral("debug: Luodaan tietokanta")));
    QVERIFY(log.contains(
        QStringLiteral("debug: Tietokantakysely: CREATE DATABASE ") + db.databaseName()));
    QVERIFY(log.contains(QStringLiteral("debug: Tietokannan luonti onnistui")));
    QVERIFY(log.contains(QStringLiteral("debug: Luodaan tietokantataulut")));
    QVERIFY(
        log.contains(QStringLiteral("debug: Tietokantakysely: CREATE SEQUENCE product_id_seq;")));
    QCOMPARE(db.value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);

    // The next open finds it.
    log.clear();
    QVERIFY2(db.open(false), qPrintable(db.lastError()));
    QVERIFY(db.database()->exists());
    QVERIFY(!log.containsPrefix(QStringLiteral("debug: Luodaan")));
}

void PostgreSQLDatabaseTest::missingTablesAreCreated()
{
    TestDatabase db(TestDatabase::PostgreSQL);
    QVERIFY2(db.create(), qPrintable(db.lastError())); // an empty database
    LogCapture log("veklari.database");
    QVERIFY2(db.open(false), qPrintable(db.lastError()));
    QVERIFY(db.database()->exists());
    QVERIFY(log.contains(QStringLiteral("debug: Luodaan tietokantataulut")));
    QVERIFY(!log.contains(QStringLiteral("debug: Luodaan tietokanta")));
    QCOMPARE(db.value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);
    QCOMPARE(db.value(QStringLiteral("SELECT name FROM product")).toString(),
        QStringLiteral("Viivästyskorko"));
}

void PostgreSQLDatabaseTest::wrongPasswordIsRefused()
{
    TestDatabase db(TestDatabase::PostgreSQL);
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    QVERIFY(db.exec({ QStringLiteral("UPDATE settings SET seller_name = 'Ennallaan'") }));
    db.close();

    const QString key = db.configurationGroup() + QStringLiteral("/password");
    const QString password = db.configuration()->value(key).toString();
    db.configuration()->setValue(key, password + QStringLiteral("x"));
    LogCapture log("veklari.database");
    QVERIFY(!db.open(false));
    QVERIFY2(db.lastError().contains(QLatin1String("password authentication failed")),
        qPrintable(db.lastError()));
    QVERIFY(db.database()->exists()); // refused, not missing: nothing is created
    QVERIFY(log.containsPrefix(QStringLiteral("warning: Tietokantavirhe:")));
    QVERIFY(!log.containsPrefix(QStringLiteral("debug: Luodaan")));

    db.configuration()->setValue(key, password);
    QVERIFY2(db.open(false), qPrintable(db.lastError()));
    QCOMPARE(db.value(QStringLiteral("SELECT seller_name FROM settings")).toString(),
        QStringLiteral("Ennallaan"));
}

void PostgreSQLDatabaseTest::missingSettingsRowFails()
{
    TestDatabase db(TestDatabase::PostgreSQL);
    QVERIFY(db.open());
    db.close();
    QVERIFY(db.exec({ QStringLiteral("DELETE FROM settings") }));
    QVERIFY(!db.open(false));
    QVERIFY(!db.lastError().isEmpty());
    QCOMPARE(db.value(QStringLiteral("SELECT count(*) FROM product")).toInt(), 1);
}

void PostgreSQLDatabaseTest::emptyHostOrName_data()
{
    QTest::addColumn<QString>("key");
    QTest::addRow("host") << "host";
    QTest::addRow("database name") << "databaseName";
}

void PostgreSQLDatabaseTest::emptyHostOrName()
{
    QFETCH(QString, key);
    TestDatabase db(TestDatabase::PostgreSQL);
    db.configuration()->setValue(db.configurationGroup() + QLatin1Char('/') + key, QString());
    LogCapture log("veklari.database");
    QVERIFY(!db.open(true));
    QVERIFY(!db.lastError().isEmpty());
    QVERIFY(!log.containsPrefix(QStringLiteral("debug: Avataan")));
}

QTEST_GUILESS_MAIN(PostgreSQLDatabaseTest)
#include "tst_postgresqldatabase.moc"
