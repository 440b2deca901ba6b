#ifndef PAYMENTCRITERIA_H
#define PAYMENTCRITERIA_H

#include <QDate>

// Search conditions of the payment journal; each set field adds one condition.
class PaymentCriteria
{
public:
    PaymentCriteria();

    void clear();
    void copy(PaymentCriteria* target) const;

    QDate dateFrom;
    QDate dateTo;
    int idFrom;
    int idTo;
    int invoiceId;
    int bankAccountId;
};

#endif // PAYMENTCRITERIA_H
