#include "raveloinvoicebuilder.h"

#include "core/newinvoice.h"
#include "core/ravelomapping.h"
#include "core/registry.h"
#include "domain/constants.h"
#include "domain/customer.h"
#include "domain/dateformat.h"
#include "domain/invoice.h"
#include "domain/product.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QMap>

#include <limits>
#include <memory>

namespace {

constexpr int minutesPerHour = 60;

// The rows of one invoice, keyed so that the map's order is the rows' order.
struct Row
{
    QString workType;
    int productId = -1;
    QDate first;
    QDate last;
    int minutes = 0;
    QString text;
};

QString rowKey(const RaveloEntry& entry, int itemization)
{
    const QChar tab = QLatin1Char('\t');
    switch (itemization) {
    case RaveloInvoiceBuilder::Monthly:
        return entry.date.toString(QStringLiteral("yyyy-MM")) + tab + entry.workType;
    case RaveloInvoiceBuilder::Daily:
        return entry.date.toString(Qt::ISODate) + tab + entry.workType;
    case RaveloInvoiceBuilder::EntryByEntry:
        return entry.date.toString(Qt::ISODate) + tab
            + entry.start.toString(QStringLiteral("HH:mm")) + tab + entry.fileName + tab
            + QStringLiteral("%1").arg(entry.lineNumber, 9, 10, QLatin1Char('0'));
    default:
        return entry.workType;
    }
}

QString rowText(const Row& row, const RaveloEntry& entry, int itemization)
{
    const DateFormat dates;
    switch (itemization) {
    case RaveloInvoiceBuilder::Monthly:
        return QStringLiteral("%1 %2/%3")
            .arg(row.workType)
            .arg(row.first.month())
            .arg(row.first.year());
    case RaveloInvoiceBuilder::Daily:
        return QStringLiteral("%1 %2").arg(row.workType, dates.format(row.first));
    case RaveloInvoiceBuilder::EntryByEntry: {
        QString text = dates.format(entry.date);
        if (entry.start.isValid())
            text += QStringLiteral(" %1–%2").arg(entry.start.toString(QStringLiteral("H:mm")),
                entry.end.toString(QStringLiteral("H:mm")));
        return text + QLatin1Char(' ')
            + (entry.description.isEmpty() ? entry.workType : entry.description);
    }
    default:
        if (row.first == row.last)
            return QStringLiteral("%1 %2").arg(row.workType, dates.format(row.first));
        return QStringLiteral("%1 %2–%3")
            .arg(row.workType, dates.format(row.first), dates.format(row.last));
    }
}

} // namespace

const QString RaveloInvoiceBuilder::billedEntriesKey = QStringLiteral("ravelo/entries");

long long RaveloInvoiceBuilder::PlannedInvoice::totalAmount() const
{
    long long total = 0;
    for (const InvoiceItem& item : items)
        total += item.totalAmountVatIncluded();
    return total;
}

RaveloInvoiceBuilder::RaveloInvoiceBuilder(Registry* registry) : m_registry(registry) { }

long long RaveloInvoiceBuilder::quantity(int minutes, int roundingStep, bool roundUp)
{
    long long rounded = minutes;
    if (roundingStep > 0) {
        const long long steps = roundUp ? (minutes + roundingStep - 1) / roundingStep
                                        : (minutes + roundingStep / 2) / roundingStep;
        rounded = steps * roundingStep;
    }
    // Minutes to 1/10000 hour, half away from zero.
    return (rounded * Constants::quantityScale + minutesPerHour / 2) / minutesPerHour;
}

bool RaveloInvoiceBuilder::fetchBilledEntries()
{
    m_billed.clear();
    Database* database = m_registry->database();
    if (!database) {
        m_lastError = QStringLiteral("Tietokantaa ei ole avattu.");
        return false;
    }
    std::unique_ptr<Query> query(database->query());
    if (!query->fetchInvoicesWithProperty(billedEntriesKey)) {
        m_lastError = query->lastError();
        return false;
    }
    while (query->next()) {
        Invoice invoice;
        query->invoiceProperties(&invoice);
        const QStringList ids = invoice.property(billedEntriesKey)
                                    .toString()
                                    .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        for (const QString& id : ids)
            m_billed.insert(id);
    }
    return true;
}

QList<RaveloEntry> RaveloInvoiceBuilder::selectEntries(
    const QList<RaveloEntry>& entries, const Options& options) const
{
    QList<RaveloEntry> selected;
    for (const RaveloEntry& entry : entries) {
        if ((options.from.isValid() && entry.date < options.from)
            || (options.to.isValid() && entry.date > options.to)
            || !options.customers.contains(entry.customer) || m_billed.contains(entry.id))
            continue;
        selected.append(entry);
    }
    return selected;
}

bool RaveloInvoiceBuilder::build(
    const QList<RaveloEntry>& entries, const RaveloMapping& mapping, const Options& options)
{
    m_invoices.clear();
    m_lastError.clear();
    const QList<RaveloEntry> selected = selectEntries(entries, options);

    QStringList problems;
    // Invoices in the order of the customers' numbers.
    QMap<int, int> customerIdByNumber;
    QMap<int, QMap<QString, Row>> rowsByCustomer;
    QMap<int, QStringList> idsByCustomer;
    // Both kinds of gap are told at once, so one pass over the mapping fixes them.
    auto report = [&problems](const QString& problem) {
        if (!problems.contains(problem))
            problems.append(problem);
    };
    for (const RaveloEntry& entry : selected) {
        bool customerFound = false;
        const Customer* customer
            = m_registry->customerById(mapping.customerId(entry.customer), customerFound);
        if (!customerFound || !customer)
            report(QStringLiteral("Ravelon asiakasta \"%1\" ei ole yhdistetty asiakkaaseen.")
                       .arg(entry.customer));
        bool productFound = false;
        const int productId = mapping.productId(entry.workType);
        m_registry->productById(productId, productFound);
        if (!productFound)
            report(QStringLiteral("Työlajia \"%1\" ei ole yhdistetty tuotteeseen.")
                       .arg(entry.workType));
        if (!customerFound || !customer || !productFound)
            continue;
        customerIdByNumber.insert(customer->number, customer->id);
        Row& row = rowsByCustomer[customer->id][rowKey(entry, options.itemization)];
        if (row.workType.isEmpty()) {
            row.workType = entry.workType;
            row.productId = productId;
            row.first = entry.date;
            row.last = entry.date;
        }
        row.first = qMin(row.first, entry.date);
        row.last = qMax(row.last, entry.date);
        row.minutes += entry.minutes;
        row.text = rowText(row, entry, options.itemization);
        idsByCustomer[customer->id].append(entry.id);
    }
    if (!problems.isEmpty()) {
        m_lastError = problems.join(QLatin1Char('\n'));
        return false;
    }

    for (const int customerId : qAsConst(customerIdByNumber)) {
        PlannedInvoice invoice;
        invoice.customerId = customerId;
        invoice.entryIds = idsByCustomer.value(customerId);
        const QMap<QString, Row> rows = rowsByCustomer.value(customerId);
        for (const Row& row : rows) {
            bool found = false;
            const Product* product = m_registry->productById(row.productId, found);
            InvoiceItem item;
            product->toInvoiceItem(&item);
            item.quantity = quantity(row.minutes, options.roundingStep, options.roundUp);
            item.text = row.text;
            invoice.items.append(item);
        }
        m_invoices.append(invoice);
    }
    return true;
}

bool RaveloInvoiceBuilder::save(const QDate& date, Settings* settings)
{
    m_savedNumbers.clear();
    m_lastError.clear();
    Database* database = m_registry->database();
    if (!database) {
        m_lastError = QStringLiteral("Tietokantaa ei ole avattu.");
        return false;
    }
    std::unique_ptr<Query> query(database->query());
    QList<int> numbers;
    auto saveAll = [&]() {
        for (const PlannedInvoice& planned : qAsConst(m_invoices)) {
            const long long total = planned.totalAmount();
            if (total > std::numeric_limits<int>::max()
                || total < std::numeric_limits<int>::min()) {
                m_lastError = QStringLiteral("Laskun loppusumma on liian suuri.");
                return false;
            }
            // Asked anew for each, so that the invoices get consecutive numbers.
            const int highest = query->maxInvoiceNumber();
            if (highest < 0)
                return false;
            Invoice invoice;
            NewInvoice::prepare(m_registry, &invoice, highest + 1, date, planned.customerId);
            invoice.setProperty(billedEntriesKey, planned.entryIds.join(QLatin1Char('\n')));
            invoice.totalAmount = static_cast<int>(total);
            invoice.balance = invoice.totalAmount;
            if (!query->saveInvoice(&invoice))
                return false;
            for (int row = 0; row < planned.items.size(); ++row) {
                InvoiceItem item = planned.items.at(row);
                item.id = -1;
                item.invoiceId = invoice.id;
                item.rowNumber = row;
                if (!query->saveInvoiceItem(&item))
                    return false;
            }
            numbers.append(invoice.number);
        }
        return !settings || query->updateSettings(settings);
    };
    if (!database->runTransaction(saveAll, query.get(), &m_lastError))
        return false;
    m_savedNumbers = numbers;
    return true;
}
