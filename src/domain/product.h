#ifndef PRODUCT_H
#define PRODUCT_H

#include <QString>

class InvoiceItem;

// A product (table product); amount is the unit price in 1/10000, including
// or excluding VAT as vatExcluded says.
class Product
{
public:
    Product();

    void clear();
    void copy(Product* target) const;
    // Fills an invoice row from the product: number, name, unit, price,
    // VAT rate and VAT mode.
    void toInvoiceItem(InvoiceItem* item) const;

    int id;
    QString number;
    QString name;
    QString unitCode;
    long long amount;
    int vatRate;
    bool vatExcluded;
    QString category;
};

#endif // PRODUCT_H
