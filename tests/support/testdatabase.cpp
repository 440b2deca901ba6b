#include "testdatabase.h"
#include "storage/postgresqldatabase.h"
#include "storage/sqlitedatabase.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace {

QString quoted(const QString& name)
{
    return QLatin1Char('"') + QString(name).replace(QLatin1String("\""), QLatin1String("\"\""))
        + QLatin1Char('"');
}

} // namespace

TestDatabase::TestDatabase(Backend backend, const QString& companyName)
    : m_backend(backend)
    , m_companyName(companyName)
    , m_configuration(std::make_unique<QSettings>(
          m_dir.filePath(QStringLiteral("Veklari.ini")), QSettings::IniFormat))
{
    static int counter = 0;
    m_fileName = m_dir.filePath(QStringLiteral("veklari-%1.sqlite").arg(++counter));
    m_databaseName = QStringLiteral("veklari_test_%1_%2_%3")
                         .arg(QCoreApplication::applicationPid())
                         .arg(counter)
                         .arg(QRandomGenerator::global()->bounded(1000000));
}

TestDatabase::~TestDatabase()
{
    close();
    if (m_created && readServer()) {
        run(QStringLiteral("postgres"),
            { QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)")
                    .arg(quoted(m_databaseName)) },
            nullptr);
    }
}

QString TestDatabase::backendName(Backend backend)
{
    return backend == SQLite ? QStringLiteral("sqlite") : QStringLiteral("postgresql");
}

QVariantMap TestDatabase::entry() const
{
    QVariantMap result;
    m_configuration->beginGroup(configurationGroup());
    for (const QString& key : m_configuration->childKeys())
        result.insert(key, m_configuration->value(key));
    m_configuration->endGroup();
    return result;
}

void TestDatabase::writeEntries(QSettings* settings, const QList<QVariantMap>& entries)
{
    settings->beginWriteArray(QStringLiteral("databases/settings"), int(entries.size()));
    for (int i = 0; i < entries.size(); ++i) {
        settings->setArrayIndex(i);
        for (auto it = entries.at(i).cbegin(); it != entries.at(i).cend(); ++it)
            settings->setValue(it.key(), it.value());
    }
    settings->endArray();
}

bool TestDatabase::readServer()
{
    if (m_backend == SQLite || !m_server.isEmpty())
        return true;
    const QString path = qEnvironmentVariable("VEKLARI_PG_CONFIG");
    QSettings server(path, QSettings::IniFormat);
    server.beginGroup(QStringLiteral("postgresql"));
    for (const char* key : { "host", "port", "username", "password" })
        m_server.insert(QLatin1String(key), server.value(QLatin1String(key)));
    if (m_server.value(QStringLiteral("host")).toString().isEmpty()) {
        m_server.clear();
        m_lastError = QStringLiteral("No test server in VEKLARI_PG_CONFIG: run through ctest");
        return false;
    }
    return true;
}

bool TestDatabase::create()
{
    if (m_created || m_backend == SQLite)
        return true;
    m_created = readServer()
        && run(QStringLiteral("postgres"),
            { QStringLiteral("CREATE DATABASE ") + quoted(m_databaseName) }, nullptr);
    return m_created;
}

bool TestDatabase::open(bool createIfNotExist)
{
    close();
    if (!readServer())
        return false;
    QVariantMap defaults = m_server;
    defaults.insert(QStringLiteral("databaseName"), m_databaseName);
    defaults.insert(QStringLiteral("filename"), m_fileName);
    m_configuration->beginGroup(configurationGroup());
    m_configuration->setValue(QStringLiteral("type"), backendName(m_backend));
    m_configuration->setValue(QStringLiteral("name"), m_companyName);
    for (const QString& key : defaults.keys()) {
        // A test may have put its own value (a wrong password) in place.
        if (!m_configuration->contains(key)
            && (m_backend == SQLite) == (key == QLatin1String("filename")))
            m_configuration->setValue(key, defaults.value(key));
    }
    m_configuration->endGroup();
    // open() may create the database: it is ours to drop afterwards.
    m_created = m_created || (m_backend == PostgreSQL && createIfNotExist);

    if (m_backend == SQLite && !m_database)
        m_database = std::make_unique<SQLiteDatabase>();
    else if (!m_database)
        m_database = std::make_unique<PostgreSQLDatabase>();
    m_database->setCreateIfNotExist(createIfNotExist);
    m_configuration->beginReadArray(QStringLiteral("databases/settings"));
    m_configuration->setArrayIndex(0);
    const bool ok = m_database->open(m_configuration.get());
    m_configuration->endArray();
    m_lastError = ok ? QString() : m_database->lastError();
    return ok;
}

void TestDatabase::close()
{
    if (m_database)
        m_database->close();
}

bool TestDatabase::exec(const QStringList& statements)
{
    return create() && run(m_databaseName, statements, nullptr);
}

QVariant TestDatabase::value(const QString& sql)
{
    QList<QVariantList> result;
    if (readServer())
        run(m_databaseName, { sql }, &result);
    return result.value(0).value(0);
}

QStringList TestDatabase::rows(const QString& sql)
{
    QList<QVariantList> result;
    if (readServer() && !run(m_databaseName, { sql }, &result))
        return { m_lastError };
    QStringList lines;
    for (const QVariantList& row : result) {
        QStringList values;
        for (const QVariant& value : row)
            values.append(value.toString());
        lines.append(values.join(QLatin1Char('|')));
    }
    return lines;
}

QStringList TestDatabase::dump()
{
    const QStringList tables = rows(m_backend == SQLite
            ? QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name")
            : QStringLiteral("SELECT table_name FROM information_schema.tables WHERE "
                             "table_schema = 'public' ORDER BY table_name"));
    QStringList lines;
    for (const QString& table : tables) {
        const QStringList tableRows
            = rows(QStringLiteral("SELECT * FROM %1 ORDER BY 1").arg(table));
        for (const QString& row : tableRows)
            lines.append(table + QLatin1Char(':') + row);
    }
    return lines;
}

bool TestDatabase::run(
    const QString& databaseName, const QStringList& statements, QList<QVariantList>* result)
{
    const QString connection = QStringLiteral("veklari_test_helper");
    bool ok = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(
            m_backend == SQLite ? QStringLiteral("QSQLITE") : QStringLiteral("QPSQL"), connection);
        db.setDatabaseName(m_backend == SQLite ? m_fileName : databaseName);
        db.setHostName(m_server.value(QStringLiteral("host")).toString());
        db.setPort(m_server.value(QStringLiteral("port"), -1).toInt());
        db.setUserName(m_server.value(QStringLiteral("username")).toString());
        db.setPassword(m_server.value(QStringLiteral("password")).toString());
        ok = db.open();
        QSqlQuery query(db);
        for (const QString& statement : statements) {
            ok = ok && query.exec(statement);
            if (!ok) {
                const QSqlError error = db.isOpen() ? query.lastError() : db.lastError();
                m_lastError = statement + QStringLiteral(": ") + error.text();
                break;
            }
        }
        while (ok && result && query.next()) {
            QVariantList row;
            for (int column = 0; column < query.record().count(); ++column)
                row.append(query.value(column));
            result->append(row);
        }
        query.finish();
        db.close();
    }
    QSqlDatabase::removeDatabase(connection);
    return ok;
}
