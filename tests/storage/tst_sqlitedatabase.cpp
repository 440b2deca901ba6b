#include "logcapture.h"
#include "storage/query.h"
#include "storage/sqlitedatabase.h"
#include "testdatabase.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QtTest>

namespace {

// An SQLite database whose clock stands still, for the backup names.
class FixedClockDatabase : public SQLiteDatabase
{
protected:
    QDateTime currentDateTime() const override
    {
        return QDateTime(QDate(2025, 1, 1), QTime(12, 0, 0));
    }
};

bool openWith(SQLiteDatabase* database, const QString& dir, const QString& fileName)
{
    QSettings settings(dir + QStringLiteral("/c.ini"), QSettings::IniFormat);
    TestDatabase::writeEntries(
        &settings, { { { "type", "sqlite" }, { "filename", fileName }, { "name", "Oy" } } });
    settings.beginReadArray(QStringLiteral("databases/settings"));
    settings.setArrayIndex(0);
    return database->open(&settings);
}

// The schema version in a file, or its first bytes when it is no database.
QString versionOf(const QString& fileName)
{
    QString version;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), "version-check");
        db.setDatabaseName(fileName);
        QSqlQuery query(db);
        if (db.open() && query.exec(QStringLiteral("SELECT version FROM settings")) && query.next())
            version = query.value(0).toString();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("version-check"));
    QFile file(fileName);
    if (version.isEmpty() && file.open(QIODevice::ReadOnly))
        version = QString::fromLatin1(file.read(10));
    return version;
}

} // namespace

class SQLiteDatabaseTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void createNewDatabase();
    void badFiles_data();
    void badFiles();
    void backupBeforeEveryStep();
};

void SQLiteDatabaseTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QLoggingCategory::setFilterRules(QStringLiteral("veklari.database.debug=true"));
}

void SQLiteDatabaseTest::createNewDatabase()
{
    LogCapture log("veklari.database");
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(!db.open(false) && !db.database()->exists() && !QFile::exists(db.fileName()));

    QVERIFY2(db.open(true), qPrintable(db.lastError()));
    QVERIFY(log.contains(QStringLiteral("debug: Avataan tietokanta sqlite://") + db.fileName()));
    QVERIFY(log.contains(QStringLiteral("debug: Luodaan tietokantataulut")));
    QCOMPARE(db.value(QStringLiteral("SELECT version || seller_name FROM settings")).toString(),
        QStringLiteral("10Testi Oy"));
}

void SQLiteDatabaseTest::badFiles_data()
{
    QTest::addColumn<QStringList>("statements"); // empty: a corrupt file
    QTest::addRow("corrupt file") << QStringList();
    QTest::addRow("settings row missing") << QStringList { "CREATE TABLE other (x integer)",
        "CREATE TABLE settings (version integer)" };
}

void SQLiteDatabaseTest::badFiles()
{
    QFETCH(QStringList, statements);
    TestDatabase setup(TestDatabase::SQLite);
    if (statements.isEmpty()) {
        QFile file(setup.fileName());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray("This is not a database at all. ").repeated(200));
    } else {
        QVERIFY(setup.exec(statements));
    }
    const QString before = versionOf(setup.fileName());

    SQLiteDatabase database;
    database.setCreateIfNotExist(true);
    LogCapture log("veklari.database");
    QVERIFY(!openWith(&database, setup.directory(), setup.fileName()));
    QVERIFY(log.containsPrefix(QStringLiteral("warning: Tietokantavirhe:")));
    QVERIFY2(!database.lastError().isEmpty(), qPrintable(database.lastError()));
    database.close();
    // Left as it was, and not copied.
    QCOMPARE(versionOf(setup.fileName()), before);
    QCOMPARE(QDir(setup.directory()).entryList({ QStringLiteral("backup-*") }).size(), 0);
}

void SQLiteDatabaseTest::backupBeforeEveryStep()
{
    // From version 7: copies for steps 7->8, 8->9 and 9->10, beside a copy of
    // the same second. The steps run in one transaction, so each copy holds
    // the database as it was before the upgrade.
    TestDatabase setup(TestDatabase::SQLite);
    QVERIFY(setup.open());
    setup.close();
    QVERIFY(setup.exec({ QStringLiteral("UPDATE settings SET version=7"),
        QStringLiteral("ALTER TABLE invoice DROP COLUMN tags"),
        QStringLiteral("ALTER TABLE invoice DROP COLUMN delivery_date"),
        QStringLiteral("ALTER TABLE bank_account DROP COLUMN visible") }));
    const QDir dir(setup.directory());
    QFile older(dir.filePath(QStringLiteral("backup-20250101-120000.sqlite")));
    QVERIFY(older.open(QIODevice::WriteOnly) && older.write("older copy") == 10);
    older.close();

    FixedClockDatabase database;
    QVERIFY(openWith(&database, setup.directory(), setup.fileName()));
    database.close();
    QStringList versions;
    for (const QString& name : dir.entryList({ QStringLiteral("backup-*") }, QDir::Files))
        versions.append(name + QLatin1Char(' ') + versionOf(dir.filePath(name)));
    QCOMPARE(versions,
        QStringList({ "backup-20250101-120000-1.sqlite 7", "backup-20250101-120000-2.sqlite 7",
            "backup-20250101-120000-3.sqlite 7", "backup-20250101-120000.sqlite older copy" }));
    QCOMPARE(versionOf(setup.fileName()), QStringLiteral("10"));
}

QTEST_GUILESS_MAIN(SQLiteDatabaseTest)
#include "tst_sqlitedatabase.moc"
