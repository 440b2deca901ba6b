#ifndef PAYMENTPRINTMODEL_H
#define PAYMENTPRINTMODEL_H

#include "domain/bankaccount.h"
#include "domain/invoice.h"
#include "domain/invoicecriteria.h"
#include "domain/payment.h"
#include "domain/paymentcriteria.h"
#include "listprintmodel.h"

#include <QList>

// The payment journal ("Suorituspäiväkirja"): every payment matching the
// payment and invoice criteria with its invoice, customer and bank account.
// Amounts are Decimals in cents. Its choices are kept in the group
// "paymentPrint".
class PaymentPrintModel : public ListPrintModel
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
    bool exportToCSV(const QString& fileName, const QString& format) override;
    QStringList columnHeadings() const override;
    // Sorts by the column, ties by payment date and invoice number.
    void sort(int column) override;

    PaymentCriteria& criteria() { return m_criteria; }
    InvoiceCriteria& invoiceCriteria() { return m_invoiceCriteria; }
    int paymentCount() const { return m_rows.size(); }
    const Payment& paymentAt(int index) const { return m_rows.at(index).payment; }
    // Each listed invoice's total counted once.
    long long totalAmount() const { return m_totalAmount; }
    long long totalPaymentAmount() const { return m_totalPaymentAmount; }

    static QStringList buildCriteriaTexts(
        const PaymentCriteria& criteria, const QString& bankAccountName = QString());

protected:
    int rowCount() const override { return m_rows.size(); }
    QVariant rowValue(int row, const QStringList& path) const override;
    QVariant totalValue(const QString& key) const override;

private:
    struct Row
    {
        Invoice invoice;
        Payment payment;
    };

    const BankAccount* bankAccountOf(const Payment& payment) const;
    QString bankAccountName(const Payment& payment) const;

    PaymentCriteria m_criteria;
    InvoiceCriteria m_invoiceCriteria;
    QList<Row> m_rows;
    long long m_totalAmount = 0;
    long long m_totalPaymentAmount = 0;
};

#endif // PAYMENTPRINTMODEL_H
