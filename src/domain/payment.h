#ifndef PAYMENT_H
#define PAYMENT_H

#include <QDate>

// A payment received for an invoice (table payment); amount in cents.
// bankAccountId -1 is stored as NULL.
class Payment
{
public:
    Payment() = default;

    void copy(Payment* target) const;

    int id = -1;
    int invoiceId = -1;
    QDate date;
    int bankAccountId = -1;
    int amount = 0;
};

#endif // PAYMENT_H
