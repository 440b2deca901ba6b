#include "logcapture.h"
#include "storage/postgresqldatabase.h"
#include "testdatabase.h"

#include <QStandardPaths>
#include <QtTest>

class PostgreSQLDatabaseTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void missingDatabaseIsCreatedOnlyWhenAsked();
    void wrongPasswordIsRefused();
    void missingSettingsRowOrHostFails();
};

void PostgreSQLDatabaseTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QLoggingCategory::setFilterRules(QStringLiteral("veklari.database.debug=true"));
}

void PostgreSQLDatabaseTest::missingDatabaseIsCreatedOnlyWhenAsked()
{
    TestDatabase db(TestDatabase::PostgreSQL);
    LogCapture log("veklari.database");
    QVERIFY(!db.open(false));
    QVERIFY(!db.database()->exists());
    QVERIFY2(db.lastError().contains(QLatin1String("does not exist")), qPrintable(db.lastError()));
    QVERIFY(!log.containsPrefix(QStringLiteral("debug: Luodaan")));

    QVERIFY2(db.open(true), qPrintable(db.lastError()));
    QVERIFY(db.database()->exists());
    QCOMPARE(db.database()->connectionName(), QStringLiteral("postgresql"));
    const QVariantMap entry = db.entry();
    QVERIFY(log.contains(QStringLiteral("debug: Avataan tietokanta postgresql://%1:%2/%3")
                             .arg(entry.value("host").toString(), entry.value("port").toString(),
                                 db.databaseName())));
    QVERIFY(log.contains(QStringLiteral("debug: Tietokannan luonti onnistui")));
    QVERIFY(log.contains(QStringLiteral("debug: Luodaan tietokantataulut")));
    QCOMPARE(db.value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);

    // The next open finds it.
    log.clear();
    QVERIFY2(db.open(false), qPrintable(db.lastError()));
    QVERIFY(!log.containsPrefix(QStringLiteral("debug: Luodaan")));
}

void PostgreSQLDatabaseTest::wrongPasswordIsRefused()
{
    TestDatabase db(TestDatabase::PostgreSQL);
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    QVERIFY(db.exec({ QStringLiteral("UPDATE settings SET seller_name = 'Ennallaan'") }));
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

void PostgreSQLDatabaseTest::missingSettingsRowOrHostFails()
{
    TestDatabase db(TestDatabase::PostgreSQL);
    QVERIFY(db.open());
    db.close();
    QVERIFY(db.exec({ QStringLiteral("DELETE FROM settings") }));
    QVERIFY(!db.open(false));
    QVERIFY(!db.lastError().isEmpty());
    QCOMPARE(db.value(QStringLiteral("SELECT count(*) FROM product")).toInt(), 1);

    TestDatabase noHost(TestDatabase::PostgreSQL);
    noHost.configuration()->setValue(noHost.configurationGroup() + "/host", QString());
    LogCapture log("veklari.database");
    QVERIFY(!noHost.open(true));
    QVERIFY(!noHost.lastError().isEmpty());
    QVERIFY(!log.containsPrefix(QStringLiteral("debug: Avataan")));
}

QTEST_GUILESS_MAIN(PostgreSQLDatabaseTest)
#include "tst_postgresqldatabase.moc"
