#ifndef NEWINVOICE_H
#define NEWINVOICE_H

#include <QDate>
#include <QString>

class Invoice;
class Registry;

// The rules of a new invoice, shared by the main window's new invoice and
// the invoices made from time entries: number, date, payment terms and
// interest from the company settings, the due date that the terms give,
// and the reference number and notice texts for the invoice's customer.
class NewInvoice
{
public:
    // Clears the invoice and fills it for `number` dated `date`; the
    // customer (set it before when it is known) keeps -1 otherwise.
    static void prepare(const Registry* registry, Invoice* invoice, int number, const QDate& date,
        int customerId = -1);
    // Terms without a number of days keep the current due date.
    static void calculateDueDate(Invoice* invoice);
    // The company template expanded for this invoice, with its check digit.
    static QString buildReferenceNumber0(const Registry* registry, const Invoice& invoice);
    // The customer's own reference number; empty when there is none.
    static QString buildReferenceNumber1(const Registry* registry, const Invoice& invoice);
    // Reference number and, with a known customer, the notice texts "t1"/"t2".
    static void updateReferenceNumber(const Registry* registry, Invoice* invoice);

    NewInvoice() = delete;
};

#endif // NEWINVOICE_H
