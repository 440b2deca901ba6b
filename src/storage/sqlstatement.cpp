#include "sqlstatement.h"
#include "domain/logging.h"
#include "faultinjector.h"

#include <QCoreApplication>
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
            *text = errorText(query.lastError());
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
            *text = errorText(query.lastError());
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
                *text = errorText(db.lastError());
            return done;
        },
        error);
}

QString SqlStatement::errorText(const QSqlError& error)
{
    // SQLSTATE class 08 and the server shutting down (57P01..57P03); a
    // connection that has just died gives no state, only libpq's words.
    static const QLatin1String lostSigns[] = { QLatin1String("server closed the connection"),
        QLatin1String("no connection to the server"),
        QLatin1String("could not receive data from server"),
        QLatin1String("could not send data to server") };
    const QString state = error.nativeErrorCode();
    bool lost = state.startsWith(QLatin1String("08")) || state == QLatin1String("57P01")
        || state == QLatin1String("57P02") || state == QLatin1String("57P03");
    for (const QLatin1String& sign : lostSigns)
        lost = lost || error.text().contains(sign);
    if (!lost)
        return error.text();
    return QCoreApplication::translate("SqlStatement", "Yhteys tietokantapalvelimeen katkesi: %1")
        .arg(error.text());
}
