#ifndef SQLSTATEMENT_H
#define SQLSTATEMENT_H

#include <QString>

class QSqlDatabase;
class QSqlError;
class QSqlQuery;

// The one place where the storage room executes SQL. Each statement is first
// offered to FaultInjector, then run; a failure is logged as a warning
// "Tietokantavirhe:" with its text, which is also written to *error.
class SqlStatement
{
public:
    // Logs "Tietokantakysely:" and the SQL, then runs it on query.
    static bool exec(QSqlQuery& query, const QString& sql, QString* error);
    // Runs the statement already prepared (and logged) on query.
    static bool execPrepared(QSqlQuery& query, QString* error);
    enum TransactionStep
    {
        Begin,
        Commit,
        Rollback
    };
    // QSqlDatabase::transaction(), commit() or rollback() of the connection,
    // seen by FaultInjector as "BEGIN", "COMMIT" or "ROLLBACK".
    static bool transaction(QSqlDatabase& db, TransactionStep step, QString* error);
    // The driver's text; a lost connection to the server says so first in
    // the user's language, since the driver's words are English.
    static QString errorText(const QSqlError& error);

    SqlStatement() = delete;

private:
    template<class Run>
    static bool run(const QString& sql, Run execute, QString* error);
};

#endif // SQLSTATEMENT_H
