#include "testdatabase.h"
#include "storage/database.h"
#include "storage/postgresqldatabase.h"
#include "storage/sqlitedatabase.h"

#include <QCoreApplication>
#include <QFile>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace {
const QString helperConnection = QStringLiteral("veklari_test_helper");
}

TestDatabase::TestDatabase(Backend backend, const QString& companyName)
    : m_backend(backend), m_companyName(companyName)
{
    m_configuration = std::make_unique<QSettings>(
        m_dir.filePath(QStringLiteral("Veklari.ini")), QSettings::IniFormat);
    static int counter = 0;
    ++counter;
    m_fileName = m_dir.filePath(QStringLiteral("veklari-%1.sqlite").arg(counter));
    m_databaseName = QStringLiteral("veklari_test_%1_%2_%3")
                         .arg(QCoreApplication::applicationPid())
                         .arg(counter)
                         .arg(QRandomGenerator::global()->bounded(1000000));
}

TestDatabase::~TestDatabase()
{
    close();
    if (m_backend == PostgreSQL && m_created)
        dropDatabase();
}

QString TestDatabase::backendName(Backend backend)
{
    return backend == SQLite ? QStringLiteral("sqlite") : QStringLiteral("postgresql");
}

QString TestDatabase::configurationGroup() const
{
    return QStringLiteral("databases/settings/1");
}

QVariantMap TestDatabase::entry() const
{
    QVariantMap result;
    m_configuration->beginGroup(configurationGroup());
    const QStringList keys = m_configuration->childKeys();
    for (const QString& key : keys)
        result.insert(key, m_configuration->value(key));
    m_configuration->endGroup();
    return result;
}

void TestDatabase::writeEntries(QSettings* settings, const QList<QVariantMap>& entries)
{
    settings->beginGroup(QStringLiteral("databases"));
    settings->beginWriteArray(QStringLiteral("settings"), int(entries.size()));
    for (int i = 0; i < entries.size(); ++i) {
        settings->setArrayIndex(i);
        for (auto it = entries.at(i).cbegin(); it != entries.at(i).cend(); ++it)
            settings->setValue(it.key(), it.value());
    }
    settings->endArray();
    settings->endGroup();
}

bool TestDatabase::readServer()
{
    if (!m_host.isEmpty())
        return true;
    const QString path = qEnvironmentVariable("VEKLARI_PG_CONFIG");
    if (path.isEmpty()) {
        m_lastError = QStringLiteral("VEKLARI_PG_CONFIG is not set: run the test through ctest, "
                                     "which starts the PostgreSQL test server");
        return false;
    }
    if (!QFile::exists(path)) {
        m_lastError = QStringLiteral("PostgreSQL test configuration %1 is missing").arg(path);
        return false;
    }
    QSettings server(path, QSettings::IniFormat);
    server.beginGroup(QStringLiteral("postgresql"));
    m_host = server.value(QStringLiteral("host")).toString();
    m_port = server.value(QStringLiteral("port")).toInt();
    m_username = server.value(QStringLiteral("username")).toString();
    m_password = server.value(QStringLiteral("password")).toString();
    if (m_host.isEmpty() || m_port <= 0) {
        m_lastError = QStringLiteral("PostgreSQL test configuration %1 is incomplete").arg(path);
        return false;
    }
    return true;
}

bool TestDatabase::create()
{
    if (m_created)
        return true;
    if (m_backend == PostgreSQL) {
        if (!readServer() || !adminExec(QStringLiteral("CREATE DATABASE %1").arg(m_databaseName)))
            return false;
    }
    m_created = true;
    return true;
}

bool TestDatabase::open(bool createIfNotExist)
{
    close();
    m_configuration->beginGroup(configurationGroup());
    m_configuration->setValue(QStringLiteral("type"), backendName(m_backend));
    m_configuration->setValue(QStringLiteral("name"), m_companyName);
    if (m_backend == SQLite) {
        m_configuration->setValue(QStringLiteral("filename"), m_fileName);
    } else {
        if (!readServer()) {
            m_configuration->endGroup();
            return false;
        }
        // Tests may have put their own values (a wrong password) in place.
        if (!m_configuration->contains(QStringLiteral("host")))
            m_configuration->setValue(QStringLiteral("host"), m_host);
        if (!m_configuration->contains(QStringLiteral("port")))
            m_configuration->setValue(QStringLiteral("port"), m_port);
        if (!m_configuration->contains(QStringLiteral("databaseName")))
            m_configuration->setValue(QStringLiteral("databaseName"), m_databaseName);
        if (!m_configuration->contains(QStringLiteral("username")))
            m_configuration->setValue(QStringLiteral("username"), m_username);
        if (!m_configuration->contains(QStringLiteral("password")))
            m_configuration->setValue(QStringLiteral("password"), m_password);
        // open() may create the database: it is ours to drop afterwards.
        if (createIfNotExist)
            m_created = true;
    }
    m_configuration->endGroup();

    if (m_backend == SQLite)
        m_database = std::make_unique<SQLiteDatabase>();
    else
        m_database = std::make_unique<PostgreSQLDatabase>();
    m_database->setCreateIfNotExist(createIfNotExist);

    m_configuration->beginGroup(QStringLiteral("databases"));
    m_configuration->beginReadArray(QStringLiteral("settings"));
    m_configuration->setArrayIndex(0);
    const bool ok = m_database->open(m_configuration.get());
    m_configuration->endArray();
    m_configuration->endGroup();
    m_lastError = ok ? QString() : m_database->lastError();
    return ok;
}

void TestDatabase::close()
{
    if (m_database) {
        m_database->close();
        m_database.reset();
    }
}

bool TestDatabase::openHelper()
{
    QSqlDatabase db;
    if (m_backend == SQLite) {
        db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), helperConnection);
        db.setDatabaseName(m_fileName);
    } else {
        db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), helperConnection);
        db.setHostName(m_host);
        db.setPort(m_port);
        db.setUserName(m_username);
        db.setPassword(m_password);
        db.setDatabaseName(m_databaseName);
    }
    if (db.open())
        return true;
    m_lastError = db.lastError().text();
    return false;
}

void TestDatabase::closeHelper()
{
    {
        QSqlDatabase db = QSqlDatabase::database(helperConnection, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(helperConnection);
}

bool TestDatabase::exec(const QStringList& statements)
{
    if (!create())
        return false;
    bool ok = openHelper();
    {
        QSqlQuery query(QSqlDatabase::database(helperConnection, false));
        for (int i = 0; ok && i < statements.size(); ++i) {
            if (!query.exec(statements.at(i))) {
                m_lastError = statements.at(i) + QStringLiteral(": ") + query.lastError().text();
                ok = false;
            }
        }
    }
    closeHelper();
    return ok;
}

QVariant TestDatabase::value(const QString& sql)
{
    QVariant result;
    if ((m_backend == SQLite || readServer()) && openHelper()) {
        QSqlQuery query(QSqlDatabase::database(helperConnection, false));
        if (!query.exec(sql))
            m_lastError = query.lastError().text();
        else if (query.next())
            result = query.value(0);
    }
    closeHelper();
    return result;
}

bool TestDatabase::adminExec(const QString& sql)
{
    bool ok = true;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), helperConnection);
        db.setHostName(m_host);
        db.setPort(m_port);
        db.setUserName(m_username);
        db.setPassword(m_password);
        db.setDatabaseName(QStringLiteral("postgres"));
        if (!db.open()) {
            m_lastError = db.lastError().text();
            ok = false;
        } else {
            QSqlQuery query(db);
            if (!query.exec(sql)) {
                m_lastError = query.lastError().text();
                ok = false;
            }
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(helperConnection);
    return ok;
}

void TestDatabase::dropDatabase()
{
    if (readServer())
        adminExec(QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)").arg(m_databaseName));
    m_created = false;
}
