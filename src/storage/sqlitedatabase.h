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

    // The first free name of the form "base-N.suffix" (N = 1, 2, ...) when
    // fileName exists, else fileName itself.
    static QString appendSuffixToFilename(const QString& fileName);

    // The file name of the database last opened.
    QString fileName() const { return m_fileName; }

public slots:
    bool open(QSettings* entry) override;
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
    bool openEntry(QSettings* entry);

    QString m_fileName;
};

#endif // SQLITEDATABASE_H
