#ifndef EMAILSETTINGS_H
#define EMAILSETTINGS_H

#include <QList>
#include <QString>

class QSettings;

// The mail program of this machine, kept in the configuration file (group
// "email"): one general choice and, in the array "databases", choices of
// their own for some of the configured databases, found by their number.
class EmailSettings
{
public:
    struct Program
    {
        // A profile name of EmailProfile or any other name.
        QString app;
        QString appPath;
        // Empty: the profile's own template.
        QString appArgs;

        bool operator==(const Program& other) const
        {
            return app == other.app && appPath == other.appPath && appArgs == other.appArgs;
        }
    };

    struct DatabaseEntry
    {
        int number = 0;
        Program program;
    };

    explicit EmailSettings(QSettings* settings);

    Program general() const;
    void setGeneral(const Program& program);
    QList<DatabaseEntry> databaseEntries() const;
    // Replaces the whole array.
    void setDatabaseEntries(const QList<DatabaseEntry>& entries);

    // What sending from database `number` uses: the first entry of that
    // number, else the general choice. Numbers below 1 have no entries.
    Program forDatabase(int number) const;

private:
    QSettings* m_settings;
};

#endif // EMAILSETTINGS_H
