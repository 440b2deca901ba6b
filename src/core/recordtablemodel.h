#ifndef RECORDTABLEMODEL_H
#define RECORDTABLEMODEL_H

#include "core/registry.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QAbstractTableModel>
#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>
#include <memory>

// The records of one register being edited: deep copies of the registry's
// list, owned by the model. Nothing reaches the database or the registry
// before save(), which writes every change in one transaction and then has
// the registry fetch its list again. A subclass names the columns and tells
// how its record type is copied, stored and fetched.
//
// A stored record is removed from the table and deleted from the database,
// unless its type keeps deleted records (markDeleted()): then it stays in the
// table marked deleted. A record that was never saved just goes.
template<typename T>
class RecordTableModel : public QAbstractTableModel
{
public:
    using Record = T;

    ~RecordTableModel() override { qDeleteAll(m_records); }

    // Replaces the rows with fresh copies of the registry's records.
    void load()
    {
        beginResetModel();
        qDeleteAll(m_records);
        m_records.clear();
        m_removedIds.clear();
        (m_registry->*m_access.copyFromRegistry)(m_records);
        m_changed = QList<bool>(m_records.size(), false);
        endResetModel();
    }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : int(m_records.size());
    }
    int columnCount(const QModelIndex& parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : int(m_titles.size());
    }
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override
    {
        const T* record = recordAt(index.row());
        if (!record || index.column() < 0 || index.column() >= m_titles.size())
            return QVariant();
        return recordData(*record, index.column(), role);
    }
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override
    {
        if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
            return QAbstractTableModel::headerData(section, orientation, role);
        return section >= 0 && section < m_titles.size() ? QVariant(m_titles.at(section))
                                                         : QVariant();
    }

    const T* recordAt(int row) const { return m_records.value(row, nullptr); }
    int rowOfId(int id) const
    {
        for (int row = 0; id >= 0 && row < m_records.size(); ++row) {
            if (m_records.at(row)->id == id)
                return row;
        }
        return -1;
    }
    // The row of another record with this number, or -1.
    template<typename Number>
    int rowOfNumber(const Number& number, int exceptRow = -1) const
    {
        for (int row = 0; row < m_records.size(); ++row) {
            if (row != exceptRow && m_records.at(row)->number == number)
                return row;
        }
        return -1;
    }

    // Appends a copy as a new record (its id is ignored); returns its row.
    int addRecord(const T& record)
    {
        const int row = int(m_records.size());
        beginInsertRows(QModelIndex(), row, row);
        T* copy = new T();
        record.copy(copy);
        copy->id = -1;
        m_records.append(copy);
        m_changed.append(true);
        endInsertRows();
        orderChanged();
        return row;
    }
    // Overwrites the row with a copy of record, keeping the row's id.
    bool setRecord(int row, const T& record)
    {
        T* target = m_records.value(row, nullptr);
        if (!target)
            return false;
        overwrite(target, record);
        markChanged(row);
        return true;
    }
    bool removeRecord(int row)
    {
        T* record = m_records.value(row, nullptr);
        if (!record)
            return false;
        if (record->id >= 0 && markDeleted(record, true)) {
            markChanged(row);
            return true;
        }
        beginRemoveRows(QModelIndex(), row, row);
        if (record->id >= 0)
            m_removedIds.append(record->id);
        delete m_records.takeAt(row);
        m_changed.removeAt(row);
        endRemoveRows();
        orderChanged();
        return true;
    }
    bool restoreRecord(int row)
    {
        T* record = m_records.value(row, nullptr);
        if (!record || !markDeleted(record, false))
            return false;
        markChanged(row);
        return true;
    }
    bool isModified() const { return !m_removedIds.isEmpty() || m_changed.contains(true); }

    // On failure everything is rolled back, the rows stay as edited and
    // lastError() tells why.
    bool save(Database* database)
    {
        if (!database) {
            m_lastError
                = QCoreApplication::translate("RecordTableModel", "Tietokantaa ei ole avattu.");
            return false;
        }
        if (!database->transaction()) {
            m_lastError = database->lastError();
            return false;
        }
        QList<T*> inserted;
        bool ok = true;
        {
            std::unique_ptr<Query> query(database->query());
            for (int i = 0; ok && i < m_removedIds.size(); ++i)
                ok = deleteRecord(query.get(), m_removedIds.at(i));
            for (int row = 0; ok && row < m_records.size(); ++row) {
                if (!m_changed.at(row))
                    continue;
                if (m_records.at(row)->id < 0)
                    inserted.append(m_records.at(row));
                ok = (query.get()->*m_access.save)(m_records.at(row));
            }
            if (!ok)
                m_lastError = query->lastError();
        }
        if (ok && !database->commit()) {
            m_lastError = database->lastError();
            ok = false;
        }
        if (!ok) {
            database->rollback();
            // The rolled-back inserts must be inserted again on the next try.
            for (T* record : inserted)
                record->id = -1;
            return false;
        }
        m_removedIds.clear();
        m_changed.fill(false);
        std::unique_ptr<Query> query(database->query());
        if (!(m_registry->*m_access.fetchIntoRegistry)(query.get())) {
            m_lastError = query->lastError();
            return false;
        }
        return true;
    }
    QString lastError() const { return m_lastError; }

protected:
    // Where the records come from and go to.
    struct Access
    {
        void (Registry::*copyFromRegistry)(QList<T*>& target) const;
        bool (Query::*save)(T* record);
        bool (Registry::*fetchIntoRegistry)(Query* query);
    };

    // titles: the column headers, one a column.
    RecordTableModel(
        Registry* registry, const QStringList& titles, const Access& access, QObject* parent)
        : QAbstractTableModel(parent), m_registry(registry), m_titles(titles), m_access(access)
    {
    }

    // The value of a cell of the record's row.
    virtual QVariant recordData(const T& record, int column, int role) const = 0;

    // A type that keeps its deleted records marks one deleted or not and
    // returns true; the others are deleted from the database by id.
    virtual bool markDeleted(T*, bool) { return false; }
    virtual bool deleteRecord(Query*, int) { return false; }
    // Copies record over target, keeping target's id.
    virtual void overwrite(T* target, const T& record) const
    {
        const int id = target->id;
        record.copy(target);
        target->id = id;
    }
    // After rows came or went.
    virtual void orderChanged() { }

    void markChanged(int row)
    {
        m_changed[row] = true;
        emit dataChanged(index(row, 0), index(row, int(m_titles.size()) - 1));
    }

    Registry* m_registry;
    QList<T*> m_records;
    // Parallel to m_records: the rows that save() must write.
    QList<bool> m_changed;
    QList<int> m_removedIds;

private:
    QStringList m_titles;
    Access m_access;
    QString m_lastError;
};

#endif // RECORDTABLEMODEL_H
