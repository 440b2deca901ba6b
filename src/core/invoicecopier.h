#ifndef INVOICECOPIER_H
#define INVOICECOPIER_H

#include "domain/invoice.h"

#include <QCoreApplication>
#include <QDate>
#include <QList>
#include <QString>

class Registry;

// Group invoicing: copies one saved invoice with its rows to many customers
// in one transaction, and remembers the range of ids it created in the
// company settings so that the last run can be undone, also in one
// transaction. The settings record is changed in memory only; the caller
// stores it. Failures return false with the text in lastError().
class InvoiceCopier
{
    Q_DECLARE_TR_FUNCTIONS(InvoiceCopier)
public:
    // What the last run created, read back from the company settings.
    struct UndoRecord
    {
        int firstId = -1;
        int lastId = -1;
        int firstNumber = -1;
        int lastNumber = -1;
        QDate date;
        bool isValid() const { return firstId > 0 && lastId >= firstId; }
    };

    InvoiceCopier(Registry* registry, const Invoice& source);

    // One copy for each customer in list order, skipping the source's own
    // customer and ids of no customer; each with the next free number and
    // the customer's reference number and payment terms. Nothing is written
    // unless every copy is.
    bool createInvoices(const QList<int>& customerIds);
    // Copies the last successful createInvoices() made.
    int createdCount() const { return m_createdCount; }

    UndoRecord undoRecord() const;
    bool canUndo() const { return undoRecord().isValid(); }
    // Deletes the invoices of the undo record with their rows and payments
    // and forgets the record.
    bool undoCopy();

    QString lastError() const { return m_lastError; }
    // The day of the run; a null date means the current date.
    void setToday(const QDate& today) { m_today = today; }

private:
    QDate today() const;

    Registry* m_registry;
    Invoice m_source;
    QString m_lastError;
    int m_createdCount = 0;
    QDate m_today;
};

#endif // INVOICECOPIER_H
