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
    QString sql;
    switch (step) {
    case Begin:
        sql = QStringLiteral("BEGIN");
        break;
    case Commit:
        sql = QStringLiteral("COMMIT");
        break;
    case Rollback:
        sql = QStringLiteral("ROLLBACK");
        break;
    }
    return run(
        sql,
        [&db, step](QString* text) {
            const bool done = step == Begin ? db.transaction()
                : step == Commit            ? db.commit()
                                            : db.rollback();
            if (!done)
                *text = db.lastError().text();
            return done;
        },
        error);
}
