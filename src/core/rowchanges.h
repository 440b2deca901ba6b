#ifndef ROWCHANGES_H
#define ROWCHANGES_H

#include <QList>

// What a save of an invoice's rows (or payments) must know besides the rows
// themselves: the stored rows that were removed and must be deleted, and the
// new rows that a save gave an id, so that a transaction rolled back can
// take those ids back again.
template<typename T>
class RowChanges
{
public:
    // The row leaves the list; a stored one is deleted at the next save.
    void removed(T* row)
    {
        if (row->id >= 0)
            m_removedIds.append(row->id);
        m_inserted.removeOne(row);
    }

    // Deletes the removed rows, then saves every row in list order:
    // deleteRow(int id) and saveRow(T* row, int index) return false on failure.
    template<typename Delete, typename Save>
    bool save(const QList<T*>& rows, Delete deleteRow, Save saveRow)
    {
        for (const int id : qAsConst(m_removedIds)) {
            if (!deleteRow(id))
                return false;
        }
        for (int index = 0; index < rows.size(); ++index) {
            T* row = rows.at(index);
            const bool isNew = row->id < 0;
            if (!saveRow(row, index))
                return false;
            if (isNew)
                m_inserted.append(row);
        }
        return true;
    }

    // The transaction was committed, or the rows were replaced.
    void clear()
    {
        m_removedIds.clear();
        m_inserted.clear();
    }

    // Ids handed out inside a transaction that was rolled back are void.
    void rolledBack()
    {
        for (T* row : qAsConst(m_inserted))
            row->id = -1;
        m_inserted.clear();
    }

private:
    QList<int> m_removedIds;
    QList<T*> m_inserted;
};

#endif // ROWCHANGES_H
