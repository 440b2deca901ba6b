#include "logcapture.h"
#include "storage/query.h"
#include "storage/sqlitedatabase.h"
#include "testdatabase.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

namespace {

// An SQLite database whose clock stands still, for the backup names.
class FixedClockDatabase : public SQLiteDatabase
{
public:
    explicit FixedClockDatabase(const QDateTime& now) : m_now(now) { }

protected:
    QDateTime currentDateTime() const override { return m_now; }

private:
    QDateTime m_now;
};

bool openWith(SQLiteDatabase* database, const QString& iniPath, const QString& fileName)
{
    QSettings settings(iniPath, QSettings::IniFormat);
    settings.beginGroup(QStringLiteral("databases"));
    settings.beginWriteArray(QStringLiteral("settings"));
    settings.setArrayIndex(0);
    settings.setValue(QStringLiteral("type"), QStringLiteral("sqlite"));
    settings.setValue(QStringLiteral("filename"), fileName);
    settings.setValue(QStringLiteral("name"), QStringLiteral("Oy"));
    settings.endArray();
    settings.beginReadArray(QStringLiteral("settings"));
    settings.setArrayIndex(0);
    return database->open(&settings);
}

int versionOf(const QString& fileName)
{
    int version = -1;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), "version-check");
        db.setDatabaseName(fileName);
        if (db.open()) {
            QSqlQuery query(db);
            if (query.exec(QStringLiteral("SELECT version FROM settings")) && query.next())
                version = query.value(0).toInt();
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("version-check"));
    return version;
}

QByteArray contents(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class SQLiteDatabaseTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void appendSuffixToFilename_data();
    void appendSuffixToFilename();
    void createNewDatabase();
    void missingFileWithoutCreate();
    void badFiles_data();
    void badFiles();
    void backupBeforeEveryStep();
    void backupNamesPerSecond();
};

void SQLiteDatabaseTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QLoggingCategory::setFilterRules(QStringLiteral("veklari.database.debug=true"));
}

void SQLiteDatabaseTest::appendSuffixToFilename_data()
{
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    auto row = [](const char* tag, const QStringList& existing, const QString& name,
                   const QString& expected) {
        QTest::addRow("%s", tag) << existing << name << expected;
    };
    const QString backup = QStringLiteral("backup-20250101-120000");
    row("free name", {}, backup + ".sqlite", backup + ".sqlite");
    row("taken twice", { backup + ".sqlite", backup + "-1.sqlite" }, backup + ".sqlite",
        backup + "-2.sqlite");
    row("gap is reused", { backup + ".sqlite", backup + "-2.sqlite" }, backup + ".sqlite",
        backup + "-1.sqlite");
    row("complete suffix", { "a.tar.gz" }, "a.tar.gz", "a-1.tar.gz");
    row("no suffix", { "name" }, "name", "name-1");
}

void SQLiteDatabaseTest::appendSuffixToFilename()
{
    QFETCH(QStringList, existing);
    QFETCH(QString, name);
    QFETCH(QString, expected);
    QTemporaryDir dir;
    for (const QString& file : existing) {
        QFile f(dir.filePath(file));
        QVERIFY(f.open(QIODevice::WriteOnly));
    }
    QCOMPARE(SQLiteDatabase::appendSuffixToFilename(dir.filePath(name)), dir.filePath(expected));
}

void SQLiteDatabaseTest::createNewDatabase()
{
    LogCapture log("veklari.database");
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(!QFile::exists(db.fileName()));
    QVERIFY2(db.open(true), qPrintable(db.lastError()));
    QVERIFY(db.database()->driverAvailable());
    QVERIFY(db.database()->exists());
    QCOMPARE(db.database()->connectionName(), QStringLiteral("sqlite"));
    QVERIFY(log.contains(QStringLiteral("debug: Avataan tietokanta sqlite://") + db.fileName()));
    QVERIFY(log.contains(QStringLiteral("debug: Luodaan tietokantataulut")));
    QVERIFY(
        log.contains(QStringLiteral("debug: Tietokantakysely: CREATE INDEX invoice_number_idx ON "
                                    "invoice (number)")));
    QVERIFY(log.contains(QStringLiteral("debug: Vahvistetaan tietokantatapahtuma")));
    QCOMPARE(db.value(QStringLiteral("SELECT count(*) FROM sqlite_master WHERE type = 'index' AND "
                                     "name LIKE '%_idx'"))
                 .toInt(),
        7);
    QCOMPARE(db.value(QStringLiteral("SELECT version FROM settings")).toInt(), 10);
    QCOMPARE(db.value(QStringLiteral("SELECT seller_name FROM settings")).toString(),
        QStringLiteral("Testi Oy"));
    // No upgrade of a new database, so no backups.
    QCOMPARE(QDir(db.directory()).entryList({ QStringLiteral("backup-*") }).size(), 0);

    log.clear();
    db.close();
    QVERIFY(log.contains(QStringLiteral("debug: Suljetaan tietokantayhteys")));

    // Opening the existing file again creates nothing.
    log.clear();
    QVERIFY2(db.open(true), qPrintable(db.lastError()));
    QVERIFY(db.database()->exists());
    QVERIFY(!log.contains(QStringLiteral("debug: Luodaan tietokantataulut")));
    QCOMPARE(db.value(QStringLiteral("SELECT count(*) FROM settings")).toInt(), 1);
}

void SQLiteDatabaseTest::missingFileWithoutCreate()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(!db.open(false));
    QVERIFY(!db.database()->exists());
    QVERIFY(!db.lastError().isEmpty());
    QVERIFY(!QFile::exists(db.fileName()));

    QTemporaryDir dir;
    SQLiteDatabase database;
    database.setCreateIfNotExist(true);
    QVERIFY(!openWith(&database, dir.filePath(QStringLiteral("c.ini")), QString()));
    QVERIFY(!database.lastError().isEmpty());
}

void SQLiteDatabaseTest::badFiles_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addRow("corrupt file") << "corrupt";
    QTest::addRow("directory in place of the file") << "directory";
    QTest::addRow("tables missing") << "empty schema";
    QTest::addRow("settings row missing") << "no settings row";
    QTest::addRow("directory of the file missing") << "no directory";
}

void SQLiteDatabaseTest::badFiles()
{
    QFETCH(QString, kind);
    QTemporaryDir dir;
    QString fileName = dir.filePath(QStringLiteral("bad.sqlite"));
    QByteArray before;
    if (kind == QLatin1String("corrupt")) {
        QFile file(fileName);
        QVERIFY(file.open(QIODevice::WriteOnly));
        before = QByteArray("This is not a database at all. ").repeated(200);
        file.write(before);
    } else if (kind == QLatin1String("directory")) {
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("bad.sqlite")));
    } else if (kind == QLatin1String("no directory")) {
        fileName = dir.filePath(QStringLiteral("missing/bad.sqlite"));
    } else {
        TestDatabase setup(TestDatabase::SQLite);
        QStringList statements { QStringLiteral("CREATE TABLE other (x integer)") };
        if (kind == QLatin1String("no settings row"))
            statements.append(QStringLiteral("CREATE TABLE settings (version integer)"));
        QVERIFY(setup.exec(statements));
        QVERIFY(QFile::copy(setup.fileName(), fileName));
        before = contents(fileName);
    }

    SQLiteDatabase database;
    database.setCreateIfNotExist(true);
    LogCapture log("veklari.database");
    QVERIFY(!openWith(&database, dir.filePath(QStringLiteral("c.ini")), fileName));
    QVERIFY2(!database.lastError().isEmpty(), qPrintable(kind));
    QVERIFY(log.containsPrefix(QStringLiteral("warning: Tietokantavirhe:")));
    if (kind == QLatin1String("corrupt"))
        QVERIFY2(database.lastError().contains(QLatin1String("not a database")),
            qPrintable(database.lastError()));
    database.close();
    if (!before.isEmpty())
        QCOMPARE(contents(fileName), before);
    QCOMPARE(QDir(dir.path()).entryList({ QStringLiteral("backup-*") }).size(), 0);
}

void SQLiteDatabaseTest::backupBeforeEveryStep()
{
    // From version 7: copies before steps 7->8, 8->9 and 9->10, each holding
    // the database as it was before its step.
    TestDatabase setup(TestDatabase::SQLite);
    QVERIFY(setup.open());
    setup.close();
    QVERIFY(setup.exec({ QStringLiteral("UPDATE settings SET version=7"),
        QStringLiteral("ALTER TABLE invoice DROP COLUMN tags"),
        QStringLiteral("ALTER TABLE invoice DROP COLUMN delivery_date"),
        QStringLiteral("ALTER TABLE bank_account DROP COLUMN visible") }));

    FixedClockDatabase database(QDateTime(QDate(2025, 1, 1), QTime(12, 0, 0)));
    QVERIFY(openWith(&database, setup.directory() + QStringLiteral("/c.ini"), setup.fileName()));
    database.close();
    const QDir dir(setup.directory());
    QCOMPARE(dir.entryList({ QStringLiteral("backup-*") }, QDir::Files, QDir::Name),
        QStringList({ QStringLiteral("backup-20250101-120000-1.sqlite"),
            QStringLiteral("backup-20250101-120000-2.sqlite"),
            QStringLiteral("backup-20250101-120000.sqlite") }));
    QCOMPARE(versionOf(dir.filePath(QStringLiteral("backup-20250101-120000.sqlite"))), 7);
    QCOMPARE(versionOf(dir.filePath(QStringLiteral("backup-20250101-120000-1.sqlite"))), 8);
    QCOMPARE(versionOf(dir.filePath(QStringLiteral("backup-20250101-120000-2.sqlite"))), 9);
    QCOMPARE(versionOf(setup.fileName()), 10);
}

void SQLiteDatabaseTest::backupNamesPerSecond()
{
    TestDatabase setup(TestDatabase::SQLite);
    QVERIFY(setup.open());
    setup.close();
    QVERIFY(setup.exec({ QStringLiteral("UPDATE settings SET version=9"),
        QStringLiteral("ALTER TABLE bank_account DROP COLUMN visible") }));
    const QDir dir(setup.directory());
    {
        QFile existing(dir.filePath(QStringLiteral("backup-20250101-120000.sqlite")));
        QVERIFY(existing.open(QIODevice::WriteOnly));
        existing.write("older copy");
    }

    FixedClockDatabase database(QDateTime(QDate(2025, 1, 1), QTime(12, 0, 0)));
    QVERIFY(openWith(&database, dir.filePath(QStringLiteral("c.ini")), setup.fileName()));
    database.close();
    QCOMPARE(contents(dir.filePath(QStringLiteral("backup-20250101-120000.sqlite"))),
        QByteArray("older copy"));
    QCOMPARE(versionOf(dir.filePath(QStringLiteral("backup-20250101-120000-1.sqlite"))), 9);
    QCOMPARE(dir.entryList({ QStringLiteral("backup-*") }).size(), 2);
}

QTEST_GUILESS_MAIN(SQLiteDatabaseTest)
#include "tst_sqlitedatabase.moc"
