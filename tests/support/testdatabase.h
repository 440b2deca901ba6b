#ifndef TESTDATABASE_H
#define TESTDATABASE_H

#include <QSettings>
#include <QTemporaryDir>
#include <QVariantMap>
#include <memory>

class Database;

// A fresh database for one test: an SQLite file in a temporary directory or a
// new database on the throwaway PostgreSQL server that CTest starts (described
// by the INI file in VEKLARI_PG_CONFIG; without it PostgreSQL tests fail, never
// skip). open() goes through Database::open() with a configuration entry like
// the program's own; create() and exec() build a hand-made schema instead.
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

    // Opens the one Database object of this test database, made on the
    // first call.
    bool open(bool createIfNotExist = true);
    void close();
    bool create();
    // Statements on a connection of the test's own, stopping at the first error.
    bool exec(const QStringList& statements);
    // The first value of a SELECT; invalid on failure or without rows.
    QVariant value(const QString& sql);
    // Every row of a SELECT, its values joined with "|".
    QStringList rows(const QString& sql);
    // Every table of the database with its rows in the order of their first
    // column, each line prefixed by the table's name.
    QStringList dump();

    Database* database() const { return m_database.get(); }
    Backend backend() const { return m_backend; }
    QString lastError() const { return m_lastError; }
    QSettings* configuration() const { return m_configuration.get(); }
    QString configurationGroup() const { return QStringLiteral("databases/settings/1"); }
    // The keys open() wrote, to copy into a configuration of the program's own.
    QVariantMap entry() const;
    static void writeEntries(QSettings* settings, const QList<QVariantMap>& entries);
    QString fileName() const { return m_fileName; }
    QString databaseName() const { return m_databaseName; }
    // A PostgreSQL database name of the test's choice instead of a generated
    // one; set before the first open() or create().
    void setDatabaseName(const QString& name) { m_databaseName = name; }
    QString directory() const { return m_dir.path(); }

private:
    bool readServer();
    // Runs the statements; result gets the rows of the last one.
    bool run(
        const QString& databaseName, const QStringList& statements, QList<QVariantList>* result);

    Backend m_backend;
    QString m_companyName;
    QTemporaryDir m_dir;
    std::unique_ptr<QSettings> m_configuration;
    std::unique_ptr<Database> m_database;
    QString m_fileName;
    QString m_databaseName;
    QVariantMap m_server;
    bool m_created = false;
    QString m_lastError;
};

#endif // TESTDATABASE_H
