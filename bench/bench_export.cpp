// Export speed: 1 000 invoices written by the exporter as Finvoice 3.0
// files with the schema check of every file (target under 5 s on a 2-core
// machine) and as PDF files (target under 15 s), each as a file per
// invoice and as one file for all.
#include "benchsupport.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/settings.h"
#include "export/invoiceexporter.h"
#include "storage/query.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

constexpr int invoiceCount = 1000;

// A seller with a bank account and Finvoice identifiers, two customers and
// 1 000 invoices of 3 to 8 rows.
class BenchData : public BenchDatabase
{
public:
    static BenchData& instance()
    {
        static BenchData data;
        return data;
    }

private:
    BenchData()
    {
        create([this](Query* query) { return fill(query); });
    }

    bool fill(Query* query)
    {
        if (!registry()->fetchSettings(query))
            return false;
        Settings* settings = registry()->settings();
        settings->setProperty(QStringLiteral("finvoice/senderId"), QStringLiteral("003723456780"));
        settings->setProperty(
            QStringLiteral("finvoice/intermediatorId"), QStringLiteral("OKOYFIHH"));
        settings->setProperty(
            QStringLiteral("finvoice/defaultReceiverId"), QStringLiteral("TULOSTUS"));
        if (!saveSeller(query, settings))
            return false;
        QList<int> customers;
        for (const QString& name :
            { QStringLiteral("Rautakauppa Virtanen Oy"), QStringLiteral("Nordic Timber AB") }) {
            Customer customer;
            customer.number = customers.size() + 1;
            customer.name = name;
            customer.streetName = QStringLiteral("Teollisuustie 4");
            customer.postCode = QStringLiteral("40320");
            customer.townName = QStringLiteral("Jyväskylä");
            if (!query->saveCustomer(&customer))
                return false;
            customers.append(customer.id);
        }
        return saveDesignInvoices(query, customers, invoiceCount);
    }
};

// Every invoice of the database into a new directory; range(0) is 1 for a
// file per invoice, 0 for one file for all.
void exportAll(benchmark::State& state, bool pdf)
{
    BenchData* data = dataOrSkip<BenchData>(state);
    if (!data)
        return;
    const bool separate = state.range(0) != 0;
    InvoiceExporter exporter(data->registry());
    InvoiceExporter::Options options = exporter.storedOptions();
    options.pdfEnabled = pdf;
    options.finvoiceEnabled = !pdf;
    options.pdfTemplate = QStringLiteral("lasku-$i-$n.pdf");
    options.finvoiceTemplate = QStringLiteral("lasku-$i-$n.xml");
    options.pdfSeparateFiles = options.finvoiceSeparateFiles = separate;
    options.xmlSchemaVersion = QStringLiteral("3.0");
    const int files = separate ? invoiceCount : 1;
    for (auto _ : state) {
        state.PauseTiming();
        QTemporaryDir dir(data->filePath(QStringLiteral("export-XXXXXX")));
        options.pdfDirectory = options.finvoiceDirectory = dir.path();
        state.ResumeTiming();
        if (!exporter.exportInvoices(InvoiceCriteria(), options)) {
            state.SkipWithError(qPrintable(exporter.lastError()));
            return;
        }
        if (exporter.writtenFiles().size() != files || !exporter.findings().isEmpty()) {
            state.SkipWithError("the files were not what they should be");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * invoiceCount);
    // Seconds per invoice, shown with an SI prefix ("2.1m" is 2.1 ms).
    state.counters["per_invoice"] = benchmark::Counter(double(invoiceCount) * state.iterations(),
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_ExportFinvoice(benchmark::State& state)
{
    exportAll(state, false);
}
BENCHMARK(BM_ExportFinvoice)
    ->ArgName("separate")
    ->Arg(1)
    ->Arg(0)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->UseRealTime();

void BM_ExportPdf(benchmark::State& state)
{
    exportAll(state, true);
}
BENCHMARK(BM_ExportPdf)
    ->ArgName("separate")
    ->Arg(1)
    ->Arg(0)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, true);
}
