#ifndef PAYMENTTABLEMODEL_H
#define PAYMENTTABLEMODEL_H

#include "core/rowchanges.h"
#include "domain/dateformat.h"
#include "domain/decimalformat.h"

#include <QAbstractTableModel>
#include <QList>

class Payment;
class Query;
class Registry;

// The payments of the current invoice: date, amount (cents) and the bank
// account they came to. Payments removed since the last save are remembered
// so that saving deletes them.
class PaymentTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        DateColumn,
        AmountColumn,
        BankAccountColumn,
        ColumnCount
    };

    explicit PaymentTableModel(Registry* registry, QObject* parent = nullptr);
    ~PaymentTableModel() override;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    // Edit role: the date and the amount as text, the bank account as its id.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Edit role only, and only while editable. A date or amount that does
    // not parse and an unknown bank account id are refused; an amount too
    // large to be read is refused with tooLargeAmountEntered() and
    // lastError() telling the limit.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    bool insertRows(int row, int count, const QModelIndex& parent = QModelIndex()) override;
    bool removeRows(int row, int count, const QModelIndex& parent = QModelIndex()) override;

    // Appends a payment (as a new, unsaved one); returns its row.
    int addPayment(const Payment& payment);
    bool insertRow(int row);
    bool removeRow(int row);
    // nullptr for a row out of range.
    const Payment* paymentAt(int row) const;
    // Cents.
    long long totalAmount() const;
    // The first payment without a date, -1 for none.
    int emptyDate() const;

    QString lastError() const { return m_lastError; }
    bool isChanged() const { return m_changed; }
    bool isEditable() const { return m_editable; }
    void setEditable(bool editable);

    bool loadPayments(Query* query, int invoiceId);
    // Deletes the removed payments and inserts or updates the others; does
    // nothing when nothing changed. Follow with committed() or rolledBack().
    bool savePayments(Query* query, int invoiceId);
    void committed();
    void rolledBack();
    // Forgets every payment without deleting anything.
    void clearPayments();
    // Removes every payment; saving then deletes the saved ones.
    void deletePayments();

signals:
    void tooLargeAmountEntered(int row);

private:
    bool isValidRow(int row) const { return row >= 0 && row < m_payments.size(); }

    Registry* m_registry;
    QList<Payment*> m_payments;
    RowChanges<Payment> m_rowChanges;
    bool m_editable = false;
    bool m_changed = false;
    QString m_lastError;
    DecimalFormat m_amountFormat;
    DecimalFormat m_amountEditFormat;
    DateFormat m_dateFormat;
};

#endif // PAYMENTTABLEMODEL_H
