#include "invoicecriteria.h"

InvoiceCriteria::InvoiceCriteria()
{
    clear();
}

void InvoiceCriteria::clear()
{
    dateFrom = QDate();
    dateTo = QDate();
    dueDateFrom = QDate();
    dueDateTo = QDate();
    deliveryDateFrom = QDate();
    deliveryDateTo = QDate();
    numberFrom = -1;
    numberTo = -1;
    number = -1;
    numberRanges.clear();
    id = -1;
    customerId = -1;
    types = -1;
    paymentStatus = -1;
    balanceDate = QDate();
    referenceNumber.clear();
    text.clear();
    limit = -1;
    descending = false;
}

void InvoiceCriteria::copy(InvoiceCriteria* target) const
{
    *target = *this;
}
