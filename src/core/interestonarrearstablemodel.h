#ifndef INTERESTONARREARSTABLEMODEL_H
#define INTERESTONARREARSTABLEMODEL_H

#include "core/interestonarrearsrow.h"
#include "domain/dateformat.h"
#include "domain/decimalformat.h"

#include <QAbstractTableModel>
#include <QList>

// The late invoices collected for an interest invoice, one row each, and the
// customer whose interest they are. Rows are read-only.
class InterestOnArrearsTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        NumberColumn,
        DateColumn,
        DaysColumn,
        AmountColumn,
        ColumnCount
    };

    explicit InterestOnArrearsTableModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    // Clamped to the last row; false when row lies beyond it.
    bool removeRows(int row, int count, const QModelIndex& parent = QModelIndex()) override;

    // Appended with the table's customer as the row's own.
    void addRow(int invoiceNumber, const QDate& date, int days, int amount);
    void clear();
    int invoiceNumber(int row) const;
    int amount(int row) const;
    const InterestOnArrearsRow* rowAt(int row) const;

    int customerId() const { return m_customerId; }
    // Also the customer of the last row, which the caller has just added.
    void setCustomerId(int customerId);
    // Whether every row belongs to one customer (true for no rows).
    bool hasOneCustomer() const;

private:
    bool isValidRow(int row) const { return row >= 0 && row < m_rows.size(); }

    QList<InterestOnArrearsRow> m_rows;
    int m_customerId = -1;
    DateFormat m_dateFormat;
    DecimalFormat m_amountFormat;
};

#endif // INTERESTONARREARSTABLEMODEL_H
