#include "logcapture.h"
#include "storage/query.h"
#include "storage/sqlitedatabase.h"
#include "testdatabase.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QScopeGuard>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QtTest>

#include <unistd.h>

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

// Everything under a directory, to see that nothing was created.
QStringList listing(const QString& dir)
{
    QStringList names;
    QDirIterator it(
        dir, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        names.append(it.next());
    names.sort();
    return names;
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
    void missingOrUnusable_data();
    void missingOrUnusable();
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

void SQLiteDatabaseTest::missingOrUnusable_data()
{
    QTest::addColumn<QString>("path"); // relative to a temporary directory
    // Made first, in order: "mkdir x", "file x" (empty), "db x" (a database),
    // "chmod x 5555" (QFileDevice::Permissions in hexadecimal).
    QTest::addColumn<QString>("setup");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("cause"); // lastError() after the file name
    QTest::addColumn<bool>("exists");

    QTest::addRow("file missing") << "a.sqlite"
                                  << "" << int(SQLiteDatabase::FileMissing) << "ei ole olemassa"
                                  << false;
    QTest::addRow("empty file") << "a.sqlite"
                                << "file a.sqlite" << int(SQLiteDatabase::FileMissing)
                                << "ei ole olemassa" << false;
    QTest::addRow("parent is a regular file") << "plain/a.sqlite"
                                              << "file plain" << int(SQLiteDatabase::FileUnusable)
                                              << "ei voi avata: %1/plain ei ole hakemisto" << false;
    QTest::addRow("directory missing") << "gone/a.sqlite"
                                       << "" << int(SQLiteDatabase::FileUnusable)
                                       << "ei voi avata: hakemistoa %1/gone ei ole" << false;
    QTest::addRow("a directory") << "a.sqlite"
                                 << "mkdir a.sqlite" << int(SQLiteDatabase::FileUnusable)
                                 << "ei voi avata: se on hakemisto" << true;
    // Permissions bind everyone but root.
    if (::geteuid() == 0)
        return;
    QTest::addRow("directory not writable, file missing")
        << "ro/a.sqlite"
        << "mkdir ro;chmod ro 5555" << int(SQLiteDatabase::FileUnusable)
        << "ei voi avata: hakemistoon %1/ro ei voi kirjoittaa" << false;
    QTest::addRow("directory not writable, database there")
        << "ro/a.sqlite"
        << "mkdir ro;db ro/a.sqlite;chmod ro 5555" << int(SQLiteDatabase::FileUnusable)
        << "ei voi avata: hakemistoon %1/ro ei voi kirjoittaa" << true;
    QTest::addRow("directory not searchable")
        << "closed/a.sqlite"
        << "mkdir closed;db closed/a.sqlite;chmod closed 0" << int(SQLiteDatabase::FileUnusable)
        << "ei voi avata: hakemistoa %1/closed ei voi lukea" << false;
    QTest::addRow("file read-only")
        << "a.sqlite"
        << "db a.sqlite;chmod a.sqlite 4444" << int(SQLiteDatabase::FileUnusable)
        << "ei voi avata: tiedostoon ei ole luku- ja kirjoitusoikeutta" << true;
}

// A missing database is told from one that cannot be used, and the message
// names the file and the cause. Nothing is created for an unusable one.
void SQLiteDatabaseTest::missingOrUnusable()
{
    QFETCH(QString, path);
    QFETCH(QString, setup);
    QFETCH(int, status);
    QFETCH(QString, cause);
    QFETCH(bool, exists);
    TestDatabase source(TestDatabase::SQLite);
    QVERIFY(source.open());
    source.close();
    QTemporaryDir temp;
    const QDir dir(temp.path());
    QStringList restore; // modes to put back for the clean-up
    for (const QString& step : setup.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const QStringList words = step.split(QLatin1Char(' '));
        const QString target = dir.filePath(words.at(1));
        if (words.at(0) == QLatin1String("mkdir")) {
            QVERIFY(dir.mkpath(words.at(1)));
        } else if (words.at(0) == QLatin1String("file")) {
            QFile file(target);
            QVERIFY(file.open(QIODevice::WriteOnly));
        } else if (words.at(0) == QLatin1String("db")) {
            QVERIFY(QFile::copy(source.fileName(), target));
        } else {
            QFile::setPermissions(target, QFileDevice::Permissions(words.at(2).toInt(nullptr, 16)));
            restore.append(target);
        }
    }
    auto cleanUp = qScopeGuard([&] {
        for (const QString& target : restore)
            QFile::setPermissions(target, QFileDevice::Permissions(0x7700));
    });
    const QString fileName = dir.filePath(path);
    const QString expected
        = QStringLiteral("Tietokantatiedostoa %1 %2").arg(fileName, cause.arg(dir.path()));
    const QStringList before = listing(dir.path());

    QString problem;
    QCOMPARE(int(SQLiteDatabase::checkFile(fileName, &problem)), status);
    SQLiteDatabase database;
    QVERIFY(!openWith(&database, source.directory(), fileName));
    QCOMPARE(int(database.fileStatus()), status);
    QCOMPARE(database.exists(), exists);
    QCOMPARE(database.lastError(), expected);
    if (status == SQLiteDatabase::FileUnusable) {
        QCOMPARE(problem, expected);
        database.setCreateIfNotExist(true);
        QVERIFY(!openWith(&database, source.directory(), fileName));
        QCOMPARE(database.lastError(), expected);
        QCOMPARE(listing(dir.path()), before);
    } else {
        // There is no database yet: one can be created there.
        database.setCreateIfNotExist(true);
        QVERIFY2(
            openWith(&database, source.directory(), fileName), qPrintable(database.lastError()));
        QCOMPARE(int(database.fileStatus()), int(SQLiteDatabase::FileMissing));
        database.close();
        QCOMPARE(versionOf(fileName), QStringLiteral("10"));
    }
}

QTEST_GUILESS_MAIN(SQLiteDatabaseTest)
#include "tst_sqlitedatabase.moc"
