#include "invoiceitem.h"
#include "vat.h"

void InvoiceItem::copy(InvoiceItem* target) const
{
    *target = *this;
}

// The row total is rounded to cents once, at the end; the discount is
// applied before VAT and before that rounding.

long long InvoiceItem::amountVatExcluded() const
{
    if (vatExcluded)
        return amount;
    return Vat::roundWithSamePrecision(Vat::substractVat(amount, vatRate), amount);
}

long long InvoiceItem::amountVatIncluded() const
{
    if (!vatExcluded)
        return amount;
    return Vat::roundWithSamePrecision(Vat::addVat(amount, vatRate), amount);
}

long long InvoiceItem::unitAmountVatExcluded() const
{
    const long long unit = Vat::roundProduct(amount, 10000 - discount, 1, 4);
    if (vatExcluded)
        return unit;
    return Vat::roundWithSamePrecision(Vat::substractVat(unit, vatRate), amount);
}

long long InvoiceItem::unitAmountVatIncluded() const
{
    const long long unit = Vat::roundProduct(amount, 10000 - discount, 1, 4);
    if (!vatExcluded)
        return unit;
    return Vat::roundWithSamePrecision(Vat::addVat(unit, vatRate), amount);
}

long long InvoiceItem::totalAmountVatExcluded() const
{
    long long total = Vat::roundProduct(quantity, amount, 10000 - discount, 8);
    if (!vatExcluded)
        total = Vat::substractVat(total, vatRate);
    return Vat::round(total, 2);
}

long long InvoiceItem::totalAmountVatIncluded() const
{
    long long total = Vat::roundProduct(quantity, amount, 10000 - discount, 8);
    if (vatExcluded)
        total = Vat::addVat(total, vatRate);
    return Vat::round(total, 2);
}

int InvoiceItem::discountAmount() const
{
    long long gross = Vat::roundProduct(quantity, amount, 1, 6);
    if (vatExcluded)
        gross = Vat::addVat(gross, vatRate);
    return static_cast<int>(gross - totalAmountVatIncluded());
}
