#include "databasefactory.h"

#include "storage/postgresqldatabase.h"
#include "storage/sqlitedatabase.h"

#include <QSettings>

Database* DatabaseFactory::create(const DatabaseList::Entry& entry)
{
    if (DatabaseList::isPostgreSQL(entry))
        return new PostgreSQLDatabase();
    return new SQLiteDatabase();
}

bool DatabaseFactory::open(Database* database, QSettings* settings, const QString& group)
{
    // The back-end reads its own keys in the entry's group.
    settings->beginGroup(group);
    const bool opened = database->open(settings);
    settings->endGroup();
    return opened;
}
