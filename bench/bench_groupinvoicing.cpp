// Group invoicing: one invoice of 6 rows copied to 1 000 customers in one
// transaction on SQLite (target under 2 s); the undo of each run is not
// timed.
#include "benchsupport.h"
#include "core/invoicecopier.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "storage/query.h"

#include <benchmark/benchmark.h>

namespace {

constexpr int customerCount = 1000;
constexpr int sourceRows = 6;

class BenchFixture : public BenchDatabase
{
public:
    static BenchFixture& instance()
    {
        static BenchFixture fixture;
        return fixture;
    }

    Invoice source;
    QList<int> customerIds;

private:
    BenchFixture()
    {
        create([this](Query* query) { return fill(query); });
        if (ok())
            registry()->settings()->setProperty(
                SettingsKeys::noticeText1, QStringLiteral("Hyvä {{ customer/name }}"));
    }

    bool fill(Query* query)
    {
        for (int number = 1; number <= customerCount + 1; ++number) {
            Customer customer;
            customer.number = number;
            customer.name = QStringLiteral("Asiakas %1 Oy").arg(number);
            // Half have references and terms of their own.
            if (number % 2 == 0) {
                customer.referenceNumber
                    = Invoice::appendCheckDigitToReferenceNumber(QString::number(70000 + number));
                customer.paymentTerms = QStringLiteral("30 päivää netto");
            }
            if (!query->saveCustomer(&customer))
                return false;
            customerIds.append(customer.id);
        }
        source.customerId = customerIds.takeFirst();
        source.number = 1;
        source.date = QDate(2024, 10, 1);
        source.dueDate = source.date.addDays(14);
        source.paymentTerms = QStringLiteral("14 päivää netto");
        QList<InvoiceItem> items;
        for (int row = 0; row < sourceRows; ++row) {
            InvoiceItem item;
            item.productName = QStringLiteral("Kuukausimaksu %1").arg(row);
            item.quantity = 10000;
            item.amount = 125000;
            item.vatRate = 2550;
            item.rowNumber = row;
            items.append(item);
        }
        return saveInvoice(query, &source, items);
    }
};

void BM_GroupInvoicing(benchmark::State& state)
{
    BenchFixture* fixture = dataOrSkip<BenchFixture>(state);
    if (!fixture)
        return;
    InvoiceCopier copier(fixture->registry(), fixture->source);
    for (auto _ : state) {
        if (!copier.createInvoices(fixture->customerIds)
            || copier.createdCount() != customerCount) {
            state.SkipWithError(qPrintable(copier.lastError()));
            return;
        }
        state.PauseTiming();
        if (!copier.undoCopy()) {
            state.SkipWithError(qPrintable(copier.lastError()));
            return;
        }
        state.ResumeTiming();
    }
    state.counters["invoices"] = customerCount;
}
BENCHMARK(BM_GroupInvoicing)->Unit(benchmark::kMillisecond)->Iterations(5);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, false);
}
