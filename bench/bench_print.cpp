// Print speed: the default invoice layout rendered to PDF, 1 000 one-page
// invoices one file each as the export does (target under 50 ms an
// invoice on a 2-core machine), the rendering alone into memory, and the
// evaluation of the layout script.
#include "benchsupport.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/settings.h"
#include "print/invoiceprintmodel.h"
#include "print/printscriptengine.h"
#include "print/scripthelper.h"
#include "print/scriptpdfwriter.h"
#include "storage/query.h"
#include "util/scriptloader.h"

#include <benchmark/benchmark.h>
#include <memory>

namespace {

constexpr int invoiceCount = 1000;

// A seller, a customer and 1 000 invoices of 3 to 8 rows.
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
        settings->setProperty(QStringLiteral("seller/phoneNumber"), QStringLiteral("040 123 4567"));
        settings->setProperty(QStringLiteral("invoiceForm/barcodeVisible"), QStringLiteral("true"));
        Customer customer;
        customer.number = 1;
        customer.name = QStringLiteral("Rautakauppa Virtanen Oy");
        customer.streetName = QStringLiteral("Teollisuustie 4");
        customer.postCode = QStringLiteral("40320");
        customer.townName = QStringLiteral("Jyväskylä");
        customer.vatNumber = QStringLiteral("1234567-1");
        return saveSeller(query, settings) && query->saveCustomer(&customer)
            && saveDesignInvoices(
                query, { customer.id }, invoiceCount, QStringLiteral("Kiitos tilauksestanne!"));
    }
};

// Every invoice into a file of its own: one-invoice model, layout already
// evaluated, atomic PDF file, as the export writes separate files.
void BM_InvoicesToPdfFiles(benchmark::State& state)
{
    BenchData* data = dataOrSkip<BenchData>(state);
    if (!data)
        return;
    for (auto _ : state) {
        InvoicePrintModel all(data->registry());
        if (!all.run() || all.invoiceCount() != invoiceCount) {
            state.SkipWithError("loading the invoices failed");
            return;
        }
        PrintScriptEngine engine;
        ScriptLoader loader(data->registry());
        engine.setScriptLoader(&loader);
        if (!ScriptHelper(data->registry()).loadInvoiceScript(&engine)) {
            state.SkipWithError(qPrintable(engine.lastError()));
            return;
        }
        for (int i = 0; i < all.invoiceCount(); ++i) {
            InvoicePrintModel single(data->registry());
            single.copyInvoice(&all, i);
            engine.setModel(&single);
            ScriptPdfWriter writer;
            writer.setTitle(single.title());
            if (!writer.write(&engine, data->filePath(QStringLiteral("lasku-%1.pdf").arg(i)))) {
                state.SkipWithError(qPrintable(writer.lastError()));
                return;
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * invoiceCount);
    // Seconds per invoice, shown with an SI prefix ("11.4m" is 11.4 ms).
    state.counters["per_invoice"] = benchmark::Counter(double(invoiceCount) * state.iterations(),
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_InvoicesToPdfFiles)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

// The drawing alone: one invoice into an in-memory PDF.
void BM_RenderOneInvoice(benchmark::State& state)
{
    BenchData* data = dataOrSkip<BenchData>(state);
    if (!data)
        return;
    InvoicePrintModel model(data->registry());
    model.criteria().number = 7;
    PrintScriptEngine engine;
    engine.setModel(&model);
    if (!model.run() || !ScriptHelper(data->registry()).loadInvoiceScript(&engine)) {
        state.SkipWithError("loading failed");
        return;
    }
    qint64 bytes = 0;
    for (auto _ : state) {
        QString error;
        const qint64 size = renderToMemory(&engine, &error);
        if (size < 0) {
            state.SkipWithError(qPrintable(error));
            return;
        }
        bytes += size;
    }
    state.counters["pdf_bytes"] = double(bytes) / state.iterations();
}
BENCHMARK(BM_RenderOneInvoice)->Unit(benchmark::kMillisecond)->UseRealTime();

// A fresh heap and the default layout evaluated in it.
void BM_EvaluateLayout(benchmark::State& state)
{
    BenchData* data = dataOrSkip<BenchData>(state);
    if (!data)
        return;
    const QByteArray source
        = ScriptLoader(data->registry()).loadResource(QStringLiteral("invoice"));
    for (auto _ : state) {
        PrintScriptEngine engine;
        if (!engine.evaluate(source)) {
            state.SkipWithError(qPrintable(engine.lastError()));
            return;
        }
    }
}
BENCHMARK(BM_EvaluateLayout)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, true);
}
