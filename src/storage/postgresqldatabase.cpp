#include "postgresqldatabase.h"
#include "domain/logging.h"
#include "postgresqlquery.h"

#include <QSettings>
#include <QSqlDatabase>
#include <QSqlError>

PostgreSQLDatabase::PostgreSQLDatabase(QObject* parent)
    : Database(QStringLiteral("postgresql"), parent)
{
}

QString PostgreSQLDatabase::quoteIdentifier(const QString& name)
{
    const QChar quote = QLatin1Char('"');
    return quote + QString(name).replace(quote, QStringLiteral("\"\"")) + quote;
}

bool PostgreSQLDatabase::driverAvailable() const
{
    return QSqlDatabase::isDriverAvailable(QStringLiteral("QPSQL"));
}

bool PostgreSQLDatabase::exists() const
{
    return m_existed;
}

Query* PostgreSQLDatabase::query()
{
    return new PostgreSQLQuery(forwardOnlyQuery());
}

bool PostgreSQLDatabase::openEntry(QSettings* entry)
{
    m_lastError.clear();
    const QString host
        = entry->value(QStringLiteral("host"), QStringLiteral("localhost")).toString();
    const int port = entry->value(QStringLiteral("port"), 5432).toInt();
    const QString databaseName
        = entry->value(QStringLiteral("databaseName"), QStringLiteral("veklari")).toString();
    const QString username = entry->value(QStringLiteral("username")).toString();
    const QString password = entry->value(QStringLiteral("password")).toString();
    if (host.isEmpty() || databaseName.isEmpty()) {
        m_lastError = tr("Tietokantapalvelimen tai tietokannan nimi puuttuu");
        return false;
    }

    qCDebug(logDatabase).noquote() << QStringLiteral("Avataan tietokanta postgresql://%1:%2/%3")
                                          .arg(host)
                                          .arg(port)
                                          .arg(databaseName);
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), m_connectionName);
        db.setHostName(host);
        db.setPort(port);
        db.setDatabaseName(databaseName);
        db.setUserName(username);
        db.setPassword(password);
    }

    m_existed = true;
    if (!QSqlDatabase::database(m_connectionName, false).open()) {
        const QSqlError error = QSqlDatabase::database(m_connectionName, false).lastError();
        m_lastError = error.text();
        // The driver's message ends in a line feed; the test is on the words.
        m_existed = !error.databaseText().trimmed().endsWith(QLatin1String("does not exist"));
        if (m_existed || !isCreateIfNotExist()) {
            qCWarning(logDatabase).noquote() << "Tietokantavirhe:" << m_lastError;
            return false;
        }
        if (!createDatabase(databaseName))
            return false;
    }

    bool create = !m_existed;
    if (m_existed) {
        const int result = upgrade();
        if (result == -2)
            create = true;
        else if (result < 0)
            return false;
    }
    if (create) {
        m_lastError.clear();
        // As on SQLite, a database whose tables were just created counts as
        // existing, so the caller does not ask to create it a second time.
        m_existed = createTables(QStringLiteral(":/sql/postgresql.sql"),
            entry->value(QStringLiteral("name")).toString());
        return m_existed;
    }
    return true;
}

bool PostgreSQLDatabase::createDatabase(const QString& databaseName)
{
    qCDebug(logDatabase).noquote() << "Luodaan tietokanta";
    QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
    db.setDatabaseName(QStringLiteral("postgres"));
    bool ok = db.open();
    if (ok) {
        QSqlQuery query(db);
        ok = queryExec(
            query, QStringLiteral("CREATE DATABASE %1").arg(quoteIdentifier(databaseName)));
        if (ok)
            qCDebug(logDatabase).noquote() << "Tietokannan luonti onnistui";
    } else {
        fail(db.lastError().text());
    }
    db.close();
    if (!ok)
        return false;

    db.setDatabaseName(databaseName);
    if (!db.open()) {
        fail(db.lastError().text());
        db.close();
        return false;
    }
    m_lastError.clear();
    return true;
}

int PostgreSQLDatabase::upgrade()
{
    QSqlQuery query(QSqlDatabase::database(m_connectionName, false));
    if (!queryExec(query, QStringLiteral("SELECT version FROM settings")))
        return query.lastError().text().contains(QLatin1String("does not exist")) ? -2 : -1;
    if (!query.next()) {
        fail(tr("Tietokannan versiota ei löytynyt"));
        return -1;
    }
    const int version = query.value(0).toInt();
    if (version >= currentVersion || version < 1)
        return version;

    query.finish();
    return upgradeFrom(version) ? currentVersion : -1;
}
