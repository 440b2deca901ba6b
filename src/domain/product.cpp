#include "product.h"
#include "invoiceitem.h"

Product::Product()
{
    clear();
}

void Product::clear()
{
    id = -1;
    number.clear();
    name.clear();
    unitCode.clear();
    amount = 0;
    vatRate = 0;
    vatExcluded = false;
    category.clear();
}

void Product::copy(Product* target) const
{
    *target = *this;
}

void Product::toInvoiceItem(InvoiceItem* item) const
{
    item->productNumber = number;
    item->productName = name;
    item->unitCode = unitCode;
    item->amount = amount;
    item->vatRate = vatRate;
    item->vatExcluded = vatExcluded;
}
