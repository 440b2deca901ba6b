#ifndef SQLITEDATABASE_H
#define SQLITEDATABASE_H

#include "database.h"

#include <QDateTime>

// A local SQLite file. The entry key "filename" names the file. An upgrade
// first copies the file to "backup-yyyyMMdd-HHmmss.sqlite" beside it, once for
// every step, then runs all steps in one transaction.
class SQLiteDatabase : public Database
{
    Q_OBJECT
public:
    explicit SQLiteDatabase(QObject* parent = nullptr);

    // What is found at a database file name.
    enum FileStatus
    {
        // A database file that can be read and written.
        FileFound,
        // No file, or an empty one (what a failed open leaves), where a new
        // database can be created.
        FileMissing,
        // The file, or the directory it is to be in, cannot be used: a
        // directory that cannot be written to (SQLite keeps its journal
        // beside the file) or searched, a part of the path that is missing or
        // no directory, a file without read and write permission.
        FileUnusable
    };
    // Looks at fileName without opening it. For FileUnusable, problem gets a
    // message that names the file and the cause.
    static FileStatus checkFile(const QString& fileName, QString* problem = nullptr);

    // The first free name of the form "base-N.suffix" (N = 1, 2, ...) when
    // fileName exists, else fileName itself.
    static QString appendSuffixToFilename(const QString& fileName);

    // The file name of the database last opened.
    QString fileName() const { return m_fileName; }
    // What the last open() found: after a failed open, FileMissing means that
    // there is no database to open (exists() is false) and FileUnusable that
    // it cannot be opened or created, with the cause in lastError().
    FileStatus fileStatus() const { return m_fileStatus; }

public slots:
    bool driverAvailable() const override;
    bool exists() const override;
    bool upgrade3To4(QSqlQuery& query) override;
    bool upgrade8To9(QSqlQuery& query) override;
    bool upgrade9To10(QSqlQuery& query) override;

protected:
    bool upgrade(const QString& fileName);
    // The name of the copy, empty when it could not be made.
    QString backup(const QString& fileName);
    // The time stamp of backup names; tests replace the clock.
    virtual QDateTime currentDateTime() const;

private:
    bool openEntry(QSettings* entry) override;

    QString m_fileName;
    FileStatus m_fileStatus = FileMissing;
};

#endif // SQLITEDATABASE_H
