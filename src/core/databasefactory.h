#ifndef DATABASEFACTORY_H
#define DATABASEFACTORY_H

#include "core/databaselist.h"

class Database;
class QSettings;

// The back-end of a configured database and how it is opened, shared by the
// window and the command-line program so that both read an entry alike.
class DatabaseFactory
{
public:
    // A new, unopened PostgreSQL database for an entry of that type, else an
    // SQLite file; the caller owns it. Nothing is created unless the caller
    // allows it with Database::setCreateIfNotExist().
    static Database* create(const DatabaseList::Entry& entry);
    // Opens the database with the keys of its entry's configuration group
    // (DatabaseList::group()).
    static bool open(Database* database, QSettings* settings, const QString& group);
};

#endif // DATABASEFACTORY_H
