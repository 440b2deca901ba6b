#ifndef RAVELOINVOICEBUILDER_H
#define RAVELOINVOICEBUILDER_H

#include "core/raveloentry.h"
#include "domain/invoiceitem.h"

#include <QDate>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

class RaveloMapping;
class Registry;
class Settings;

// Turns time entries into invoices: one invoice per customer of the program,
// its rows summed per work type over the whole period, per month, per day or
// one per entry, in hours rounded after summing. Entries already billed are
// left out: an invoice made here keeps the ids of its entries in its
// properties, so removing the invoice frees them again.
class RaveloInvoiceBuilder
{
public:
    // The invoice property that lists the billed entries, one id a line.
    static const QString billedEntriesKey;

    enum Itemization
    {
        // One row per work type.
        NoItemization = 0,
        Monthly = 1,
        Daily = 2,
        EntryByEntry = 3
    };
    static constexpr int itemizationCount = 4;

    struct Options
    {
        // Inclusive; a null date leaves that end open.
        QDate from;
        QDate to;
        // The customers of the time entries to bill.
        QStringList customers;
        int itemization = NoItemization;
        // 0, 15 or 30 minutes.
        int roundingStep = 0;
        // Upward, else to the nearest step (a half step goes up).
        bool roundUp = true;
    };

    struct PlannedInvoice
    {
        int customerId = -1;
        QList<InvoiceItem> items;
        QStringList entryIds;
        // Sum of the row totals, VAT included, in cents.
        long long totalAmount() const;
    };

    explicit RaveloInvoiceBuilder(Registry* registry);

    // The hours of minutes of work in 1/10000 hour, rounded to the step.
    static long long quantity(int minutes, int roundingStep, bool roundUp);

    // The ids of the entries that stored invoices have billed.
    bool fetchBilledEntries();
    const QSet<QString>& billedEntries() const { return m_billed; }
    // The entries that options select and no invoice has billed.
    QList<RaveloEntry> selectEntries(
        const QList<RaveloEntry>& entries, const Options& options) const;

    // Plans the invoices; false (with lastError()) when a selected customer
    // or work type has no mapping or the mapping points at nothing.
    bool build(
        const QList<RaveloEntry>& entries, const RaveloMapping& mapping, const Options& options);
    const QList<PlannedInvoice>& invoices() const { return m_invoices; }

    // Stores the planned invoices dated `date` in one transaction, numbered
    // and referenced as new invoices of the window, together with settings
    // (the mapping and choices of the run) when given. The numbers of the
    // stored invoices are in savedNumbers().
    bool save(const QDate& date, Settings* settings = nullptr);
    const QList<int>& savedNumbers() const { return m_savedNumbers; }

    QString lastError() const { return m_lastError; }

private:
    Registry* m_registry;
    QSet<QString> m_billed;
    QList<PlannedInvoice> m_invoices;
    QList<int> m_savedNumbers;
    QString m_lastError;
};

#endif // RAVELOINVOICEBUILDER_H
