#include "databaselist.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

#include <algorithm>

namespace {

const QString databasesGroup = QStringLiteral("databases");
const QString arrayName = QStringLiteral("settings");
const QString arrayGroup = QStringLiteral("databases/settings");
const QString sizeKey = QStringLiteral("size");
const QString lastUsedKey = QStringLiteral("databases/lastUsed");
const QString numberKey = QStringLiteral("number");
const QString nameKey = QStringLiteral("name");
const QString typeKey = QStringLiteral("type");
const QString fileNameKey = QStringLiteral("filename");
const QString databaseNameKey = QStringLiteral("databaseName");
const QString sqliteType = QStringLiteral("sqlite");
const QString postgresqlType = QStringLiteral("postgresql");

} // namespace

DatabaseList::DatabaseList(QSettings* settings) : m_settings(settings)
{
    read();
}

void DatabaseList::read()
{
    m_entries.clear();
    m_groups.clear();
    m_settings->beginGroup(arrayGroup);
    const bool sized = m_settings->contains(sizeKey);
    const int size = m_settings->value(sizeKey).toInt();
    QList<int> groups;
    const QStringList names = m_settings->childGroups();
    for (const QString& name : names) {
        bool ok = false;
        const int group = name.toInt(&ok);
        // Groups past the size are what a shorter list left behind.
        if (ok && group >= 1 && (!sized || group <= size))
            groups.append(group);
    }
    std::sort(groups.begin(), groups.end());
    for (const int group : qAsConst(groups)) {
        m_settings->beginGroup(QString::number(group));
        Entry entry;
        const QStringList keys = m_settings->childKeys();
        for (const QString& key : keys)
            entry.insert(key, m_settings->value(key));
        m_settings->endGroup();
        if (entry.isEmpty())
            continue;
        m_entries.append(entry);
        m_groups.append(group);
    }
    m_settings->endGroup();
}

void DatabaseList::write()
{
    m_settings->beginGroup(databasesGroup);
    // Rewritten whole, so that no group of a removed entry stays behind.
    m_settings->remove(arrayName);
    m_settings->beginWriteArray(arrayName, int(m_entries.size()));
    for (int i = 0; i < m_entries.size(); ++i) {
        m_settings->setArrayIndex(i);
        const Entry& entry = m_entries.at(i);
        for (auto it = entry.cbegin(); it != entry.cend(); ++it)
            m_settings->setValue(it.key(), it.value());
        m_groups[i] = i + 1;
    }
    m_settings->endArray();
    m_settings->endGroup();
}

void DatabaseList::setEntry(int index, const Entry& entry)
{
    if (index >= 0 && index < m_entries.size())
        m_entries[index] = entry;
}

int DatabaseList::add(const Entry& entry)
{
    m_entries.append(entry);
    m_groups.append(0);
    return int(m_entries.size()) - 1;
}

void DatabaseList::remove(int index)
{
    if (index < 0 || index >= m_entries.size())
        return;
    m_entries.removeAt(index);
    m_groups.removeAt(index);
}

int DatabaseList::indexOfNumber(int number) const
{
    for (int i = 0; i < m_entries.size(); ++i) {
        if (DatabaseList::number(m_entries.at(i)) == number)
            return i;
    }
    return -1;
}

QString DatabaseList::group(int index) const
{
    const int group = m_groups.value(index);
    return arrayGroup + QLatin1Char('/') + QString::number(group > 0 ? group : index + 1);
}

QString DatabaseList::configurationDirectory() const
{
    return QFileInfo(m_settings->fileName()).absolutePath();
}

DatabaseList::Entry DatabaseList::newEntry() const
{
    int next = 1;
    for (const Entry& entry : m_entries)
        next = qMax(next, number(entry) + 1);
    Entry entry;
    entry.insert(numberKey, next);
    entry.insert(nameKey, QString());
    entry.insert(typeKey, sqliteType);
    entry.insert(fileNameKey,
        QDir(configurationDirectory())
            .absoluteFilePath(tr("laskutus") + QStringLiteral("-%1.sqlite").arg(next)));
    return entry;
}

int DatabaseList::addDefault()
{
    const int first = 1;
    // No type: an entry without one is an SQLite file.
    Entry entry;
    entry.insert(numberKey, first);
    entry.insert(nameKey, QString());
    entry.insert(fileNameKey,
        QDir(configurationDirectory())
            .absoluteFilePath(tr("laskutus") + QStringLiteral(".sqlite")));
    add(entry);
    write();
    return first;
}

int DatabaseList::lastUsed() const
{
    return m_settings->value(lastUsedKey, -1).toInt();
}

void DatabaseList::setLastUsed(int number)
{
    m_settings->setValue(lastUsedKey, number);
}

int DatabaseList::number(const Entry& entry)
{
    return entry.value(numberKey, 0).toInt();
}

bool DatabaseList::isPostgreSQL(const Entry& entry)
{
    return entry.value(typeKey, sqliteType).toString().compare(postgresqlType, Qt::CaseInsensitive)
        == 0;
}

QString DatabaseList::displayName(const Entry& entry)
{
    const QString name = entry.value(nameKey).toString();
    if (!name.isEmpty())
        return name;
    const QString databaseName = entry.value(databaseNameKey).toString();
    const QString fileName = entry.value(fileNameKey).toString();
    const QString fileBaseName
        = fileName.isEmpty() ? QString() : QFileInfo(fileName).completeBaseName();
    if (isPostgreSQL(entry))
        return databaseName.isEmpty() ? fileBaseName : databaseName;
    return fileBaseName.isEmpty() ? databaseName : fileBaseName;
}
