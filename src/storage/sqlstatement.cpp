#include "sqlstatement.h"
#include "domain/logging.h"
#include "faultinjector.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

template<class Run>
bool SqlStatement::run(const QString& sql, Run execute, QString* error)
{
    QString text;
    const bool ok = !FaultInjector::check(sql, &text) && execute(&text);
    if (ok) {
        error->clear();
        return true;
    }
    *error = text;
    qCWarning(logDatabase).noquote() << "Tietokantavirhe:" << text;
    return false;
}

bool SqlStatement::exec(QSqlQuery& query, const QString& sql, QString* error)
{
    qCDebug(logDatabase).noquote() << "Tietokantakysely:" << sql;
    return run(
        sql,
        [&](QString* text) {
            if (query.exec(sql))
                return true;
            *text = query.lastError().text();
            return false;
        },
        error);
}

bool SqlStatement::execPrepared(QSqlQuery& query, QString* error)
{
    return run(
        query.lastQuery(),
        [&](QString* text) {
            if (query.exec())
                return true;
            *text = query.lastError().text();
            return false;
        },
        error);
}

bool SqlStatement::transaction(QSqlDatabase& db, TransactionStep step, QString* error)
{
    static const char* const statements[] = { "BEGIN", "COMMIT", "ROLLBACK" };
    static bool (QSqlDatabase::*const calls[])()
        = { &QSqlDatabase::transaction, &QSqlDatabase::commit, &QSqlDatabase::rollback };
    return run(
        QLatin1String(statements[step]),
        [&](QString* text) {
            if ((db.*calls[step])())
                return true;
            *text = db.lastError().text();
            return false;
        },
        error);
}
