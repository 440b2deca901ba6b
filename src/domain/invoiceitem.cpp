#include "invoiceitem.h"

void InvoiceItem::copy(InvoiceItem* target) const
{
    target->id = id;
    target->invoiceId = invoiceId;
    target->productNumber = productNumber;
    target->productName = productName;
    target->quantity = quantity;
    target->unitCode = unitCode;
    target->amount = amount;
    target->vatRate = vatRate;
    target->vatExcluded = vatExcluded;
    target->discount = discount;
    target->text = text;
    target->rowNumber = rowNumber;
}
