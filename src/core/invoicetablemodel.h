#ifndef INVOICETABLEMODEL_H
#define INVOICETABLEMODEL_H

#include "domain/dateformat.h"
#include "domain/decimalformat.h"
#include "domain/invoice.h"

#include <QAbstractTableModel>
#include <QList>

class Query;
class Registry;

// The invoice list: summaries of the invoices that match the active search,
// in ascending order of invoice number. Sort through a proxy on SortRole.
class InvoiceTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        NumberColumn,
        DateColumn,
        DueDateColumn,
        CustomerColumn,
        TotalAmountColumn,
        BalanceColumn,
        TypeColumn,
        ColumnCount
    };
    // Raw values (numbers, dates, cents) for sorting.
    static constexpr int SortRole = Qt::UserRole;

    explicit InvoiceTableModel(Registry* registry, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // Replaces the rows with those of an executed invoice-summary query.
    // latestOnly: the query listed the newest invoices first (to cut the
    // list at its limit); the rows are then reversed so the list still runs
    // from the oldest to the newest.
    void load(Query* query, bool latestOnly);
    void clear();

    // nullptr for a row out of range.
    const Invoice* invoiceAt(int row) const;
    // Copies the list columns of a saved invoice into its row.
    void updateInvoice(int row, const Invoice& invoice);
    void setTotalAmount(int row, int totalAmount);
    void setBalance(int row, int balance);
    void setType(int row, int type);
    bool removeRow(int row);
    // -1 when no row has the id.
    int rowOfInvoiceId(int id) const;

private:
    void emitRowChanged(int row, int column);

    Registry* m_registry;
    QList<Invoice> m_invoices;
    DecimalFormat m_moneyFormat;
    DateFormat m_dateFormat;
};

#endif // INVOICETABLEMODEL_H
