// Storage speed: reading the summaries of 100 000 invoices from SQLite
// (target under 0.3 s) and saving 1 000 invoices of 5 rows, each in its own
// transaction as the program saves them (target under 2 s). SQLite keeps its
// default durability: every commit is synced to disk.
#include "benchsupport.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoicecriteria.h"
#include "domain/invoiceitem.h"
#include "storage/query.h"

#include <benchmark/benchmark.h>
#include <memory>

namespace {

constexpr int invoiceCount = 100000;

// One SQLite database for the whole run, filled on first use.
class BenchData : public BenchDatabase
{
public:
    static BenchData& instance()
    {
        static BenchData data;
        return data;
    }

    int customerId() const { return m_customerId; }

private:
    BenchData()
    {
        create([this](Query* query) { return fill(query); });
    }

    bool fill(Query* query)
    {
        Customer customer;
        customer.number = 1;
        customer.name = QStringLiteral("Asiakas Oy");
        if (!query->saveCustomer(&customer))
            return false;
        m_customerId = customer.id;
        const QDate start(2015, 1, 1);
        for (int number = 1; number <= invoiceCount; ++number) {
            Invoice invoice;
            invoice.customerId = m_customerId;
            invoice.number = number;
            invoice.type = number % 6;
            invoice.date = start.addDays(number / 30);
            invoice.dueDate = invoice.date.addDays(14);
            if (number % 3 == 0)
                invoice.deliveryDate = invoice.date.addDays(-2);
            invoice.referenceNumber
                = Invoice::appendCheckDigitToReferenceNumber(QString::number(number * 100));
            invoice.totalAmount = number % 100000;
            invoice.balance = number % 2 ? invoice.totalAmount : 0;
            if (!query->saveInvoice(&invoice))
                return false;
        }
        return true;
    }

    int m_customerId = -1;
};

void BM_FetchInvoiceSummaries(benchmark::State& state)
{
    BenchData* db = dataOrSkip<BenchData>(state);
    if (!db)
        return;
    std::unique_ptr<Query> query(db->database()->query());
    const InvoiceCriteria criteria;
    for (auto _ : state) {
        if (!query->fetchInvoiceSummaries(criteria)) {
            state.SkipWithError(qPrintable(query->lastError()));
            return;
        }
        Invoice invoice;
        long long total = 0;
        int rows = 0;
        while (query->next()) {
            query->invoiceSummary(&invoice);
            total += invoice.totalAmount;
            ++rows;
        }
        benchmark::DoNotOptimize(total);
        if (rows != invoiceCount) {
            state.SkipWithError("wrong number of invoices");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * invoiceCount);
}
BENCHMARK(BM_FetchInvoiceSummaries)->Unit(benchmark::kMillisecond);

void BM_SaveInvoicesInTransactions(benchmark::State& state)
{
    BenchData* db = dataOrSkip<BenchData>(state);
    if (!db)
        return;
    const int count = static_cast<int>(state.range(0));
    std::unique_ptr<Query> query(db->database()->query());
    int number = query->maxInvoiceNumber();
    for (auto _ : state) {
        for (int i = 0; i < count; ++i) {
            Invoice invoice;
            invoice.customerId = db->customerId();
            invoice.number = ++number;
            invoice.date = QDate(2025, 1, 1);
            invoice.dueDate = QDate(2025, 1, 15);
            invoice.paymentTerms = QStringLiteral("14 päivää netto");
            invoice.referenceNumber = QStringLiteral("1234561");
            invoice.totalAmount = 12400;
            invoice.balance = 12400;
            bool ok = db->database()->transaction() && query->saveInvoice(&invoice);
            for (int row = 0; ok && row < 5; ++row) {
                InvoiceItem item;
                item.invoiceId = invoice.id;
                item.productNumber = QStringLiteral("P%1").arg(row);
                item.productName = QStringLiteral("Tuote");
                item.quantity = 20000;
                item.unitCode = QStringLiteral("kpl");
                item.amount = 124000;
                item.vatRate = 2400;
                item.text = QStringLiteral("Rivi");
                item.rowNumber = row;
                ok = query->saveInvoiceItem(&item);
            }
            if (!ok || !db->database()->commit()) {
                state.SkipWithError(qPrintable(query->lastError()));
                return;
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_SaveInvoicesInTransactions)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, false);
}
