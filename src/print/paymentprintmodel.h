#ifndef PAYMENTPRINTMODEL_H
#define PAYMENTPRINTMODEL_H

#include "domain/bankaccount.h"
#include "domain/invoice.h"
#include "domain/invoicecriteria.h"
#include "domain/payment.h"
#include "domain/paymentcriteria.h"
#include "printmodel.h"

#include <QList>
#include <QStringList>

class Customer;
class Registry;

// The payment journal ("Suorituspäiväkirja"): every payment matching the
// payment and invoice criteria with its invoice, customer and bank account.
// Amounts are Decimals in cents.
class PaymentPrintModel : public PrintModel
{
    Q_OBJECT
public:
    enum Column
    {
        NumberColumn,
        DateColumn,
        DueDateColumn,
        DeliveryDateColumn,
        CustomerNumberColumn,
        CustomerNameColumn,
        TotalAmountColumn,
        PaymentAmountColumn,
        PaymentDateColumn,
        BankAccountColumn,
        ColumnCount
    };

    explicit PaymentPrintModel(Registry* registry, QObject* parent = nullptr);
    ~PaymentPrintModel() override;

    bool run() override;
    QString title() const override;
    using PrintModel::value;
    QVariant value(QStringList& path) override;
    bool exportToCSV(const QString& fileName, const QString& format) override;

    PaymentCriteria& criteria() { return m_criteria; }
    InvoiceCriteria& invoiceCriteria() { return m_invoiceCriteria; }
    QStringList criteriaTexts() const { return m_criteriaTexts; }
    int columnFlags() const { return m_columnFlags; }
    void setColumnFlags(int flags) { m_columnFlags = flags; }
    static int allColumns() { return (1 << ColumnCount) - 1; }
    static QString columnName(int column);
    static QString columnHeading(int column);

    int sortColumn() const { return m_sortColumn; }
    // Sorts by the column, ties by payment date and invoice number.
    void sort(int column);

    // The words of "extraFields"; read from the configuration's group
    // "paymentPrint" by exportToCSV() unless set here.
    void setExtraFields(const QStringList& fields);

    int paymentCount() const { return m_rows.size(); }
    const Payment& paymentAt(int index) const { return m_rows.at(index).payment; }
    // Each listed invoice's total counted once.
    long long totalAmount() const { return m_totalAmount; }
    long long totalPaymentAmount() const { return m_totalPaymentAmount; }

    static QStringList buildCriteriaTexts(
        const PaymentCriteria& criteria, const QString& bankAccountName = QString());

private:
    struct Row
    {
        Invoice invoice;
        Payment payment;
    };

    const Customer* customerOf(const Invoice& invoice) const;
    const BankAccount* bankAccountOf(const Payment& payment) const;
    QString bankAccountName(const Payment& payment) const;
    QVariant rowValue(const Row& row, const QStringList& path) const;

    Registry* m_registry;
    PaymentCriteria m_criteria;
    InvoiceCriteria m_invoiceCriteria;
    QList<Row> m_rows;
    long long m_totalAmount = 0;
    long long m_totalPaymentAmount = 0;
    QStringList m_criteriaTexts;
    int m_columnFlags;
    int m_sortColumn = PaymentDateColumn;
    QStringList m_extraFields;
    bool m_extraFieldsSet = false;
};

#endif // PAYMENTPRINTMODEL_H
