#ifndef DATABASE_H
#define DATABASE_H

#include <QObject>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

#include <functional>

#include "sqlstatement.h"

class QSettings;
class Query;

// One open database: SQLite or PostgreSQL. open() creates a missing database
// when allowed and brings an older schema up to version 10 step by step, all
// steps in one transaction: a failed upgrade leaves the database as it was.
// A failed open() leaves nothing open.
// Each back-end uses one fixed connection name, so only one database of a
// kind is open at a time.
class Database : public QObject
{
    Q_OBJECT
public:
    explicit Database(const QString& connectionName, QObject* parent = nullptr);
    ~Database() override;

    QString connectionName() const { return m_connectionName; }

    // The schema version that this program creates and upgrades to.
    static constexpr int currentVersion = 10;

public slots:
    // entry: the settings group of one configured database (its array
    // element). Nothing stays open after a failure.
    bool open(QSettings* entry);
    void close();
    void setCreateIfNotExist(bool create);
    bool isCreateIfNotExist() const;
    virtual bool driverAvailable() const = 0;
    virtual bool exists() const = 0;
    bool transaction();
    bool commit();
    bool rollback();
    // Runs work between a transaction's start and its commit, and rolls back
    // when a step fails. On failure error holds the reason: what work put
    // there itself, else the query's last error, else the failed step's.
    bool runTransaction(const std::function<bool()>& work, const Query* query, QString* error);
    // The text of the last failure; empty after a successful open(),
    // statement or transaction step.
    QString lastError();
    // A new query on this connection; the caller owns it.
    virtual Query* query();
    virtual bool upgrade1To2(QSqlQuery& query);
    virtual bool upgrade2To3(QSqlQuery& query);
    virtual bool upgrade3To4(QSqlQuery& query);
    virtual bool upgrade4To5(QSqlQuery& query);
    virtual bool upgrade5To6(QSqlQuery& query);
    virtual bool upgrade6To7(QSqlQuery& query);
    virtual bool upgrade7To8(QSqlQuery& query);
    virtual bool upgrade8To9(QSqlQuery& query);
    virtual bool upgrade9To10(QSqlQuery& query);
    bool queryExec(QSqlQuery& query, const QString& sql);

protected:
    // Opens the connection the entry describes; open() cleans up after a
    // failure.
    virtual bool openEntry(QSettings* entry) = 0;
    // Runs step "from -> from+1" of the schema upgrade.
    bool upgradeStep(int from, QSqlQuery& query);
    // Logs the progress line of a step and runs its statements in order,
    // stopping at the first failure.
    bool runUpgradeStatements(int toVersion, QSqlQuery& query, const QStringList& statements);
    // Runs every step from version up to currentVersion in one transaction:
    // the upgrade is done completely or not at all. On failure the
    // transaction is rolled back and lastError() is upgradeFailure()'s text.
    bool upgradeFrom(int version);
    // "The upgrade failed and the database was left as it was", with the
    // statement that failed and its error.
    QString upgradeFailure(int version, const QString& error) const;
    // Runs the statements of a resource file (one per line) and writes the
    // initial data in a transaction.
    bool createTables(const QString& resource, const QString& companyName);
    void setLastError(const QString& text);
    // A forward-only query on this connection.
    QSqlQuery forwardOnlyQuery() const;
    // Keeps the text as the last error, logs it as a warning and returns false.
    bool fail(const QString& text);
    // A step of a transaction: its log line, then the step on the connection.
    bool transactionStep(const char* logLine, SqlStatement::TransactionStep step);

    QString m_connectionName;
    bool m_createIfNotExist = false;
    bool m_existed = false;
    QString m_lastError;
    // The statement of an upgrade step that failed.
    QString m_failedStatement;
};

#endif // DATABASE_H
