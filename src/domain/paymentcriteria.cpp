#include "paymentcriteria.h"

PaymentCriteria::PaymentCriteria()
{
    clear();
}

void PaymentCriteria::clear()
{
    dateFrom = QDate();
    dateTo = QDate();
    idFrom = -1;
    idTo = -1;
    invoiceId = -1;
    bankAccountId = -1;
}

void PaymentCriteria::copy(PaymentCriteria* target) const
{
    *target = *this;
}
