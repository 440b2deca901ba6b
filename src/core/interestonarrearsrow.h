#ifndef INTERESTONARREARSROW_H
#define INTERESTONARREARSROW_H

#include <QDate>

// One late invoice collected for an interest invoice: its number and date,
// the days it was late with an open balance and the interest in cents. The
// customer tells invoices of different customers apart.
struct InterestOnArrearsRow
{
    int invoiceNumber = 0;
    QDate date;
    int days = 0;
    int amount = 0;
    int customerId = -1;
};

#endif // INTERESTONARREARSROW_H
