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
    void namesAreKeptAsTyped_data();
    void namesAreKeptAsTyped();
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
    QVERIFY(!db.open(false) && !db.database()->exists());
    QVERIFY2(db.lastError().contains(QLatin1String("does not exist")), qPrintable(db.lastError()));

    QVERIFY2(db.open(true), qPrintable(db.lastError()));
    const QVariantMap entry = db.entry();
    QVERIFY(log.contains(QStringLiteral("debug: Avataan tietokanta postgresql://%1:%2/%3")
                             .arg(entry.value("host").toString(), entry.value("port").toString(),
                                 db.databaseName())));
    QVERIFY(log.contains(QStringLiteral("debug: Tietokannan luonti onnistui")));
    QCOMPARE(db.value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);
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

    db.configuration()->setValue(key, password);
    QVERIFY2(db.open(false), qPrintable(db.lastError()));
    QCOMPARE(db.value(QStringLiteral("SELECT seller_name FROM settings")).toString(),
        QStringLiteral("Ennallaan"));
}

void PostgreSQLDatabaseTest::namesAreKeptAsTyped_data()
{
    QTest::addColumn<QString>("name");
    QTest::addRow("capitals") << QStringLiteral("Vk_Upper");
    QTest::addRow("hyphen") << QStringLiteral("vk-hyphen");
    QTest::addRow("double quote") << QStringLiteral("vk\"quote");
}

// A database is created under exactly the configured name, so that the next
// open finds it.
void PostgreSQLDatabaseTest::namesAreKeptAsTyped()
{
    QFETCH(QString, name);
    TestDatabase db(TestDatabase::PostgreSQL);
    db.setDatabaseName(name);
    LogCapture log("veklari.database");
    QVERIFY2(db.open(true), qPrintable(db.lastError()));
    QVERIFY(log.contains(QStringLiteral("debug: Tietokannan luonti onnistui")));
    db.close();

    log.clear();
    QVERIFY2(db.open(false), qPrintable(db.lastError()));
    QVERIFY(!log.contains(QStringLiteral("debug: Luodaan tietokanta")));
    QCOMPARE(
        db.value(QStringLiteral("SELECT current_database() || version FROM settings")).toString(),
        name + QStringLiteral("10"));
}

QTEST_GUILESS_MAIN(PostgreSQLDatabaseTest)
#include "tst_postgresqldatabase.moc"
