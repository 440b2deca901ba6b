#ifndef POSTGRESQLDATABASE_H
#define POSTGRESQLDATABASE_H

#include "database.h"

// A database on a PostgreSQL server. Entry keys: "host", "port",
// "databaseName", "username", "password". A missing database is created
// through the server's "postgres" database when creation is allowed.
class PostgreSQLDatabase : public Database
{
    Q_OBJECT
public:
    explicit PostgreSQLDatabase(QObject* parent = nullptr);

    // name as an SQL identifier: in double quotes, embedded ones doubled, so
    // that "Vk_Upper" keeps its capitals and "vk-hyphen" is one name.
    static QString quoteIdentifier(const QString& name);

public slots:
    bool driverAvailable() const override;
    bool exists() const override;
    Query* query() override;

protected:
    // -2 when the schema is missing, -1 on failure, else the version found
    // (10 after a successful upgrade).
    int upgrade();
    bool createDatabase(const QString& databaseName);

private:
    bool openEntry(QSettings* entry) override;
};

#endif // POSTGRESQLDATABASE_H
