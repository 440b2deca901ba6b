#include "database.h"
#include "domain/logging.h"
#include "query.h"
#include "sqlstatement.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QStringList>
#include <QTextStream>

Database::Database(const QString& connectionName, QObject* parent)
    : QObject(parent), m_connectionName(connectionName)
{
}

Database::~Database()
{
    if (QSqlDatabase::contains(m_connectionName))
        close();
}

bool Database::open(QSettings* entry)
{
    if (openEntry(entry)) {
        m_lastError.clear();
        return true;
    }
    if (QSqlDatabase::contains(m_connectionName))
        close();
    return false;
}

void Database::close()
{
    qCDebug(logDatabase).noquote() << "Suljetaan tietokantayhteys";
    {
        QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
        if (db.isValid())
            db.close();
    }
    // Removing the connection lets the next open() add it again without
    // the driver's warning about a duplicate name.
    if (QSqlDatabase::contains(m_connectionName))
        QSqlDatabase::removeDatabase(m_connectionName);
}

void Database::setCreateIfNotExist(bool create)
{
    m_createIfNotExist = create;
}

bool Database::isCreateIfNotExist() const
{
    return m_createIfNotExist;
}

bool Database::transactionStep(const char* logLine, SqlStatement::TransactionStep step)
{
    qCDebug(logDatabase).noquote() << logLine;
    QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
    return SqlStatement::transaction(db, step, &m_lastError);
}

bool Database::transaction()
{
    return transactionStep("Aloitetaan tietokantatapahtuma", SqlStatement::Begin);
}

bool Database::commit()
{
    return transactionStep("Vahvistetaan tietokantatapahtuma", SqlStatement::Commit);
}

bool Database::rollback()
{
    return transactionStep("Peruutetaan tietokantatapahtuma", SqlStatement::Rollback);
}

bool Database::runTransaction(const std::function<bool()>& work, const Query* query, QString* error)
{
    error->clear();
    if (!transaction()) {
        *error = lastError();
        rollback();
        return false;
    }
    if (!work()) {
        if (error->isEmpty())
            *error = query && !query->lastError().isEmpty() ? query->lastError() : lastError();
        rollback();
        return false;
    }
    if (!commit()) {
        *error = lastError();
        rollback();
        return false;
    }
    return true;
}

QString Database::lastError()
{
    // Only our own text: the connection keeps the error of an attempt that
    // was followed by a successful one (a database just created).
    return m_lastError;
}

void Database::setLastError(const QString& text)
{
    m_lastError = text;
}

bool Database::fail(const QString& text)
{
    m_lastError = text;
    qCWarning(logDatabase).noquote() << "Tietokantavirhe:" << m_lastError;
    return false;
}

QSqlQuery Database::forwardOnlyQuery() const
{
    QSqlQuery q(QSqlDatabase::database(m_connectionName, false));
    q.setForwardOnly(true);
    return q;
}

Query* Database::query()
{
    return new Query(forwardOnlyQuery());
}

bool Database::queryExec(QSqlQuery& query, const QString& sql)
{
    return SqlStatement::exec(query, sql, &m_lastError);
}

bool Database::upgradeStep(int from, QSqlQuery& query)
{
    switch (from) {
    case 1:
        return upgrade1To2(query);
    case 2:
        return upgrade2To3(query);
    case 3:
        return upgrade3To4(query);
    case 4:
        return upgrade4To5(query);
    case 5:
        return upgrade5To6(query);
    case 6:
        return upgrade6To7(query);
    case 7:
        return upgrade7To8(query);
    case 8:
        return upgrade8To9(query);
    case 9:
        return upgrade9To10(query);
    default:
        return false;
    }
}

bool Database::runUpgradeStatements(int toVersion, QSqlQuery& query, const QStringList& statements)
{
    qCDebug(logDatabase).noquote()
        << QStringLiteral("Päivitetään tietokanta versioon %1").arg(toVersion);
    for (const QString& sql : statements) {
        if (!queryExec(query, sql)) {
            m_failedStatement = sql;
            return false;
        }
    }
    return true;
}

bool Database::upgradeFrom(int version)
{
    m_failedStatement.clear();
    if (!transaction()) {
        m_failedStatement = QStringLiteral("BEGIN");
        m_lastError = upgradeFailure(version, m_lastError);
        return false;
    }
    bool ok = true;
    {
        QSqlQuery query(QSqlDatabase::database(m_connectionName, false));
        for (int from = version; ok && from < currentVersion; ++from)
            ok = upgradeStep(from, query);
    }
    if (ok && commit())
        return true;
    if (ok)
        m_failedStatement = QStringLiteral("COMMIT");
    const QString error = m_lastError;
    qCWarning(logDatabase).noquote() << "Tietokannan päivittäminen epäonnistui:" << error;
    rollback();
    m_lastError = upgradeFailure(version, error);
    return false;
}

QString Database::upgradeFailure(int version, const QString& error) const
{
    return tr("Tietokannan päivitys versiosta %1 versioon %2 epäonnistui, joten tietokanta "
              "jätettiin ennalleen. Epäonnistunut lause: %3\nVirhe: %4")
        .arg(version)
        .arg(currentVersion)
        .arg(m_failedStatement, error);
}

bool Database::upgrade1To2(QSqlQuery& query)
{
    return runUpgradeStatements(2, query,
        { QStringLiteral("ALTER TABLE customer ADD vat_number varchar(50) NOT NULL DEFAULT ''"),
            QStringLiteral(
                "ALTER TABLE customer ADD reference_number varchar(50) NOT NULL DEFAULT ''"),
            QStringLiteral(
                "ALTER TABLE customer ADD email_address varchar(100) NOT NULL DEFAULT ''"),
            QStringLiteral("UPDATE settings SET version=2") });
}

bool Database::upgrade2To3(QSqlQuery& query)
{
    return runUpgradeStatements(3, query,
        { QStringLiteral("ALTER TABLE customer ADD contact varchar(100) NOT NULL DEFAULT ''"),
            QStringLiteral(
                "ALTER TABLE customer ADD phone_number varchar(100) NOT NULL DEFAULT ''"),
            QStringLiteral("UPDATE settings SET version=3") });
}

bool Database::upgrade3To4(QSqlQuery& query)
{
    return runUpgradeStatements(4, query,
        { QStringLiteral(
              "ALTER TABLE invoice_item ADD vat_excluded boolean NOT NULL DEFAULT FALSE"),
            QStringLiteral("ALTER TABLE product ADD vat_excluded boolean NOT NULL DEFAULT FALSE"),
            QStringLiteral("UPDATE settings SET version=4") });
}

bool Database::upgrade4To5(QSqlQuery& query)
{
    return runUpgradeStatements(5, query,
        { QStringLiteral("ALTER TABLE customer ADD payment_terms varchar(100) NOT NULL DEFAULT ''"),
            QStringLiteral("UPDATE settings SET version=5") });
}

bool Database::upgrade5To6(QSqlQuery& query)
{
    return runUpgradeStatements(6, query,
        { QStringLiteral("ALTER TABLE product ADD category varchar(100) NOT NULL DEFAULT ''"),
            QStringLiteral("ALTER TABLE invoice_item ADD discount integer NOT NULL DEFAULT 0"),
            QStringLiteral("UPDATE settings SET version=6") });
}

bool Database::upgrade6To7(QSqlQuery& query)
{
    return runUpgradeStatements(7, query,
        { QStringLiteral("ALTER TABLE customer ADD properties text NOT NULL DEFAULT ''"),
            QStringLiteral("ALTER TABLE invoice ADD properties text NOT NULL DEFAULT ''"),
            QStringLiteral("UPDATE settings SET version=7") });
}

bool Database::upgrade7To8(QSqlQuery& query)
{
    return runUpgradeStatements(8, query,
        { QStringLiteral("ALTER TABLE invoice ADD delivery_date date"),
            QStringLiteral("UPDATE settings SET version=8") });
}

bool Database::upgrade8To9(QSqlQuery& query)
{
    // Row quantities and unit prices gained two decimals.
    return runUpgradeStatements(9, query,
        { QStringLiteral(
              "ALTER TABLE invoice_item ALTER quantity TYPE bigint, ALTER amount TYPE bigint"),
            QStringLiteral("ALTER TABLE product ALTER amount TYPE bigint"),
            QStringLiteral("ALTER TABLE invoice ADD tags integer NOT NULL DEFAULT 0"),
            QStringLiteral(
                "UPDATE invoice_item SET quantity = 100 * quantity, amount = 100 * amount"),
            QStringLiteral("UPDATE product SET amount = 100 * amount"),
            QStringLiteral("UPDATE settings SET version=9") });
}

bool Database::upgrade9To10(QSqlQuery& query)
{
    return runUpgradeStatements(10, query,
        { QStringLiteral("ALTER TABLE bank_account ADD visible boolean NOT NULL DEFAULT true"),
            QStringLiteral("UPDATE settings SET version=10") });
}

bool Database::createTables(const QString& resource, const QString& companyName)
{
    qCDebug(logDatabase).noquote() << "Luodaan tietokantataulut";
    QFile file(resource);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        m_lastError = file.errorString();
        qCWarning(logDatabase).noquote() << "Tietokantavirhe:" << resource << m_lastError;
        return false;
    }

    bool ok = true;
    {
        QSqlQuery statement(QSqlDatabase::database(m_connectionName, false));
        QTextStream stream(&file);
        while (ok && !stream.atEnd()) {
            const QString line = stream.readLine().trimmed();
            if (line.isEmpty())
                continue;
            ok = queryExec(statement, line);
        }
    }
    file.close();
    if (!ok)
        return false;

    Query* initial = query();
    if (!transaction()) {
        delete initial;
        return fail(m_lastError);
    }
    if (!initial->addInitialData(companyName)) {
        fail(initial->lastError());
        delete initial;
        const QString error = m_lastError;
        rollback();
        m_lastError = error;
        return false;
    }
    delete initial;
    return commit();
}
