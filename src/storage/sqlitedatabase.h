#ifndef SQLITEDATABASE_H
#define SQLITEDATABASE_H

#include "database.h"

#include <QDateTime>

// A local SQLite file. The entry key "filename" names the file. Before every
// upgrade step the file is copied to "backup-yyyyMMdd-HHmmss.sqlite" beside it.
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
    bool backup(const QString& fileName);
    // The time stamp of backup names; tests replace the clock.
    virtual QDateTime currentDateTime() const;

private:
    QString m_fileName;
};

#endif // SQLITEDATABASE_H
