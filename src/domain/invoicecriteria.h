#ifndef INVOICECRITERIA_H
#define INVOICECRITERIA_H

#include <QDate>
#include <QList>
#include <QString>

// Search conditions of the invoice list and the reports. Every set condition
// is joined with AND; dates are unset when null, numbers when negative.
class InvoiceCriteria
{
public:
    // Invoice numbers from..to, both included.
    struct NumberRange
    {
        int from;
        int to;
    };

    InvoiceCriteria();

    void clear();
    void copy(InvoiceCriteria* target) const;

    QDate dateFrom;
    QDate dateTo;
    QDate dueDateFrom;
    QDate dueDateTo;
    QDate deliveryDateFrom;
    QDate deliveryDateTo;
    int numberFrom;
    int numberTo;
    int number;
    // An invoice in any of the ranges matches; no ranges, no condition.
    QList<NumberRange> numberRanges;
    int id;
    int customerId;
    int types; // bit n selects type n; negative selects all
    int paymentStatus; // 0 paid, 1 unpaid, other both
    QDate balanceDate; // when set, paymentStatus is judged by the caller at this date
    QString referenceNumber;
    QString text; // pattern over the row texts; * and ? are wildcards
    int limit; // only a value above 0 limits
    bool descending; // newest first: with limit, the latest invoices only
};

#endif // INVOICECRITERIA_H
