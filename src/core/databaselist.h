#ifndef DATABASELIST_H
#define DATABASELIST_H

#include <QCoreApplication>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>

class QSettings;

// The databases of the configuration file: the array "databases/settings",
// one map of keys per database (number, name, type and the keys its
// back-end reads), and "databases/lastUsed", the number of the database
// opened last. The list is read when the object is made and changed in
// memory until write(); keys this class does not know are kept as they are.
class DatabaseList
{
    Q_DECLARE_TR_FUNCTIONS(DatabaseList)
public:
    using Entry = QMap<QString, QVariant>;

    explicit DatabaseList(QSettings* settings);

    // The numbered groups of the array that hold keys, in the order of
    // their numbers: 1 to the array's size, or every one there is when a
    // hand-written list lacks the size.
    void read();
    // The list as it is in memory, renumbered from 1 without gaps.
    void write();

    int count() const { return m_entries.size(); }
    // An empty entry for an index out of range.
    Entry entry(int index) const { return m_entries.value(index); }
    void setEntry(int index, const Entry& entry);
    // Returns the index of the entry.
    int add(const Entry& entry);
    void remove(int index);
    // The first entry with the number, -1 for none.
    int indexOfNumber(int number) const;
    // The configuration group that holds entry `index`, where its back-end
    // reads its keys.
    QString group(int index) const;

    // A new SQLite file beside the configuration, numbered one above the
    // highest number of the list. Not added.
    Entry newEntry() const;
    // Adds and writes the first entry of an empty list: number 1 for
    // "laskutus.sqlite" beside the configuration. Returns its number.
    int addDefault();

    // -1 when no database has been opened yet.
    int lastUsed() const;
    void setLastUsed(int number);

    static int number(const Entry& entry);
    // An entry without a type is an SQLite file.
    static bool isPostgreSQL(const Entry& entry);
    // The name, or else the database or the file it stands for.
    static QString displayName(const Entry& entry);

private:
    QString configurationDirectory() const;

    QSettings* m_settings;
    QList<Entry> m_entries;
    // The group number each entry was read from; 0 for one not written yet.
    QList<int> m_groups;
};

#endif // DATABASELIST_H
