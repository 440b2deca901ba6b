#ifndef INVOICEITEM_H
#define INVOICEITEM_H

#include <QString>

// One row of an invoice (table invoice_item). quantity and amount are in
// 1/10000, vatRate and discount in 1/100 %. amount is the unit price in the
// form the user entered it: excluding VAT when vatExcluded, else including.
class InvoiceItem
{
public:
    InvoiceItem() = default;

    void copy(InvoiceItem* target) const;

    void setAmountVatExcluded(long long value)
    {
        amount = value;
        vatExcluded = true;
    }
    void setAmountVatIncluded(long long value)
    {
        amount = value;
        vatExcluded = false;
    }

    // Unit prices (1/10000) and totals (cents) derived from the stored amount.
    long long amountVatExcluded() const;
    long long amountVatIncluded() const;
    long long unitAmountVatExcluded() const;
    long long unitAmountVatIncluded() const;
    long long totalAmountVatExcluded() const;
    long long totalAmountVatIncluded() const;
    int discountAmount() const;

    int id = -1;
    int invoiceId = -1;
    QString productNumber;
    QString productName;
    long long quantity = 0;
    QString unitCode;
    long long amount = 0;
    int vatRate = 0;
    bool vatExcluded = false;
    int discount = 0;
    QString text;
    int rowNumber = 0;
};

#endif // INVOICEITEM_H
