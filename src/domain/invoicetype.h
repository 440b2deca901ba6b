#ifndef INVOICETYPE_H
#define INVOICETYPE_H

#include <QString>

// The kinds of documents an invoice is stored or printed as. The values are
// stored in the database and seen by the print scripts.
class InvoiceType
{
public:
    enum Value
    {
        Invoice = 0,
        InterestInvoice = 1,
        CreditNote = 2,
        Reminder = 3,
        Receipt = 4,
        DeliveryNote = 5
    };
    static constexpr int count = 6;

    static bool isValid(int type) { return type >= Invoice && type < count; }
    // "Lasku", "Korkolasku", ...; empty for an unknown type.
    static QString name(int type);
};

#endif // INVOICETYPE_H
