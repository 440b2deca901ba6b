#ifndef IRPTABLEMODEL_H
#define IRPTABLEMODEL_H

#include "domain/dateformat.h"
#include "domain/decimalformat.h"

#include <QAbstractTableModel>
#include <QDate>
#include <QList>
#include <QPair>
#include <QStringList>

class Invoice;
class Query;
class Registry;

// The payments read from a bank file, each with the invoices whose reference
// it carries. Ticked rows with an invoice are saved as payments and lower
// their invoices' balances. The candidates of one row are consecutive in
// one list of (row, invoice) pairs that the model owns.
class IRPTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        DateColumn,
        AmountColumn,
        InvoiceColumn,
        CustomerColumn,
        InfoColumn,
        ColumnCount
    };

    explicit IRPTableModel(Registry* registry, QObject* parent = nullptr);
    ~IRPTableModel() override;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    // Edit role of the invoice column: the chosen candidate's place among
    // the row's candidates.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Check state of the date column ticks a row; edit role of the invoice
    // column chooses a candidate by its place among the row's candidates.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    // Appends a row, ticked when it has an invoice. Candidates for it are
    // added with addInvoice() before.
    void addPayment(const QDate& entryDate, const QDate& paymentDate, int amount, int customerId,
        int invoiceIndex, const QString& info, const QString& referenceNumber = QString());
    // Appends an empty invoice as a candidate of row paymentRow, to be filled
    // by the caller; the model owns it.
    Invoice* addInvoice(int paymentRow);
    int lastInvoiceIndex() const { return int(m_invoices.size()) - 1; }
    // The first candidate of a row, -1 when it has none.
    int invoiceOffset(int row) const;
    int invoiceCount(int row) const;
    // "number / date" of a candidate.
    QString invoiceText(int index) const;
    const Invoice* invoiceAt(int index) const;
    QString customerText(int row) const;
    QString customerNameById(int id) const;
    // The texts of a row's candidates, for the invoice column's combo box.
    QStringList comboBoxItems(const QModelIndex& index) const;

    // Which date a saved payment gets: the entry date or the payment date.
    void setSaveEntryDate(bool saveEntryDate);
    bool saveEntryDate() const { return m_saveEntryDate; }

    bool isChecked(int row) const;
    // The candidate chosen for a row, -1 for none.
    int invoiceIndex(int row) const;
    int customerId(int row) const;
    QDate entryDate(int row) const;
    QDate paymentDate(int row) const;
    int amount(int row) const;
    QString info(int row) const;
    QString referenceNumber(int row) const;

    // Saves the ticked rows that have an invoice as payments to bank account
    // bankAccountId (-1 for none) and lowers the invoices' balances; several
    // payments to one invoice lower it cumulatively. The caller holds the
    // transaction. The number saved, -1 on failure (lastError()), after
    // which the invoices are as before.
    int savePayments(Query* query, int bankAccountId);
    QString lastError() const { return m_lastError; }
    // After a rollback of the save: the invoices' balances as before it.
    void rolledBack();
    int firstPaymentId() const { return m_firstPaymentId; }
    int lastPaymentId() const { return m_lastPaymentId; }

    void clear();
    void deleteInvoices();

private:
    struct Row
    {
        bool checked = false;
        QDate entryDate;
        QDate paymentDate;
        int amount = 0;
        int customerId = -1;
        int invoiceIndex = -1;
        QString info;
        QString referenceNumber;
        int firstInvoice = -1;
        int invoiceCount = 0;
    };

    bool isValidRow(int row) const { return row >= 0 && row < m_rows.size(); }

    Registry* m_registry;
    QList<Row> m_rows;
    QList<QPair<int, Invoice*>> m_invoices;
    bool m_saveEntryDate = true;
    int m_firstPaymentId = -1;
    int m_lastPaymentId = -1;
    QString m_lastError;
    QList<int> m_balancesBeforeSave;
    DecimalFormat m_amountFormat;
    DateFormat m_dateFormat;
};

#endif // IRPTABLEMODEL_H
