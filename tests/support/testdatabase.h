#ifndef TESTDATABASE_H
#define TESTDATABASE_H

#include <QSettings>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariantMap>
#include <memory>

class Database;

// A fresh, empty database for one test, on SQLite (a file in a temporary
// directory) or on the throwaway PostgreSQL server that CTest starts (a new
// uniquely named database; the server is described by the INI file named in
// VEKLARI_PG_CONFIG). Everything is removed again in the destructor.
//
//   TestDatabase db(TestDatabase::SQLite); // or TestDatabase::PostgreSQL
//   QVERIFY2(db.open(), qPrintable(db.lastError()));
//   std::unique_ptr<Query> query(db.database()->query());
//
// open() goes through Database::open() with a configuration entry like the
// program's own, so the tables and the initial data are created as for a
// user. To start from a hand-made schema instead, call create() first, run
// statements with exec() and then open(). A PostgreSQL test without
// VEKLARI_PG_CONFIG fails in open() or create(): it is never skipped.
class TestDatabase
{
public:
    enum Backend
    {
        SQLite,
        PostgreSQL
    };

    explicit TestDatabase(Backend backend, const QString& companyName = QStringLiteral("Testi Oy"));
    ~TestDatabase();
    TestDatabase(const TestDatabase&) = delete;
    TestDatabase& operator=(const TestDatabase&) = delete;

    static QString backendName(Backend backend);

    // Opens (creating when needed) the database through the real open path.
    bool open(bool createIfNotExist = true);
    // Closes and deletes the Database object; the data stays for a reopen.
    void close();
    // Creates the empty database (PostgreSQL) or reserves the file name
    // (SQLite) without any tables.
    bool create();
    // Runs statements on a connection of its own, stopping at the first error.
    bool exec(const QStringList& statements);
    // The first column of the first row of a SELECT on a connection of its
    // own; an invalid QVariant on failure or without rows.
    QVariant value(const QString& sql);

    Database* database() const { return m_database.get(); }
    Backend backend() const { return m_backend; }
    QString lastError() const { return m_lastError; }
    // The configuration file whose entry open() reads; tests may change keys
    // (for example a wrong password) before opening.
    QSettings* configuration() const { return m_configuration.get(); }
    QString configurationGroup() const;
    // The keys of the entry open() wrote (type, name, filename or the server's
    // host, port, databaseName, username and password), to copy into a
    // configuration of the program's own.
    QVariantMap entry() const;
    // Writes the database list of a configuration file: one array element a map.
    static void writeEntries(QSettings* settings, const QList<QVariantMap>& entries);
    QString fileName() const { return m_fileName; }
    QString databaseName() const { return m_databaseName; }
    QString directory() const { return m_dir.path(); }

private:
    bool readServer();
    bool adminExec(const QString& sql);
    bool openHelper();
    void closeHelper();
    void dropDatabase();

    Backend m_backend;
    QString m_companyName;
    QTemporaryDir m_dir;
    std::unique_ptr<QSettings> m_configuration;
    std::unique_ptr<Database> m_database;
    QString m_fileName;
    QString m_databaseName;
    QString m_host;
    int m_port = 0;
    QString m_username;
    QString m_password;
    bool m_created = false;
    QString m_lastError;
};

#endif // TESTDATABASE_H
