// List report speed: the invoice list of 5 000 invoices (about 100 pages)
// gathered with its VAT breakdown, drawn into a PDF and written as CSV, and
// the payment journal of 5 000 payments gathered and drawn. The target is
// a whole year's list on screen within two seconds on a 2-core machine.
#include "benchsupport.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "domain/settings.h"
#include "print/invoicelistprintmodel.h"
#include "print/paymentprintmodel.h"
#include "print/printscriptengine.h"
#include "print/scripthelper.h"
#include "storage/query.h"

#include <benchmark/benchmark.h>

namespace {

constexpr int invoiceCount = 5000;

// 20 customers and 5 000 invoices of three rows; two thirds of them paid
// in one or two parts.
class ReportData : public BenchDatabase
{
public:
    static ReportData& instance()
    {
        static ReportData data;
        return data;
    }

private:
    ReportData()
    {
        create([](Query* query) { return fill(query); });
    }

    static bool fill(Query* query)
    {
        QList<int> customerIds;
        for (int i = 0; i < 20; ++i) {
            Customer customer;
            customer.number = i + 1;
            customer.name = QStringLiteral("Asiakas %1 Oy").arg(i + 1);
            customer.townName = QStringLiteral("Tampere");
            if (!query->saveCustomer(&customer))
                return false;
            customerIds.append(customer.id);
        }
        for (int number = 1; number <= invoiceCount; ++number) {
            Invoice invoice;
            invoice.customerId = customerIds.at(number % customerIds.size());
            invoice.number = number;
            invoice.date = QDate(2025, 1, 1).addDays(number % 365);
            invoice.dueDate = invoice.date.addDays(14);
            invoice.referenceNumber
                = Invoice::appendCheckDigitToReferenceNumber(QString::number(number) + "00");
            QList<InvoiceItem> items;
            for (int row = 0; row < 3; ++row) {
                InvoiceItem item;
                item.productName = QStringLiteral("Työ");
                item.quantity = 10000 + 2500 * row;
                item.setAmountVatExcluded(850000 + 10000 * (number % 50));
                item.vatRate = row == 2 ? 1400 : 2550;
                item.rowNumber = row;
                items.append(item);
            }
            const int parts = number % 3;
            if (!saveInvoice(query, &invoice, items, parts > 0))
                return false;
            for (int part = 0; part < parts; ++part) {
                Payment payment;
                payment.invoiceId = invoice.id;
                payment.date = invoice.date.addDays(10 + part * 20);
                payment.amount = parts == 1 ? invoice.totalAmount
                    : part == 0             ? invoice.totalAmount / 2
                                            : invoice.totalAmount - invoice.totalAmount / 2;
                if (!query->savePayment(&payment))
                    return false;
            }
        }
        return true;
    }
};

// The list drawn into memory; the PDF's size, or -1 after skipping.
qint64 render(PrintScriptEngine& engine, benchmark::State& state)
{
    QString error;
    const qint64 bytes = renderToMemory(&engine, &error);
    if (bytes < 0)
        state.SkipWithError(qPrintable(error));
    return bytes;
}

// The database query, the per-invoice VAT breakdowns and the sort.
void BM_InvoiceListRun(benchmark::State& state)
{
    ReportData* data = dataOrSkip<ReportData>(state);
    if (!data)
        return;
    for (auto _ : state) {
        InvoiceListPrintModel model(data->registry());
        if (!model.run() || model.invoiceCount() != invoiceCount) {
            state.SkipWithError("the invoice list failed");
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * invoiceCount);
}
BENCHMARK(BM_InvoiceListRun)->Unit(benchmark::kMillisecond)->UseRealTime();

// The list drawn by its script: measuring the columns, every line and the
// page breaks.
void BM_InvoiceListPdf(benchmark::State& state)
{
    ReportData* data = dataOrSkip<ReportData>(state);
    if (!data)
        return;
    InvoiceListPrintModel model(data->registry());
    PrintScriptEngine engine;
    engine.setModel(&model);
    if (!model.run() || !ScriptHelper(data->registry()).loadInvoiceListScript(&engine)) {
        state.SkipWithError("loading failed");
        return;
    }
    qint64 bytes = 0;
    for (auto _ : state) {
        if ((bytes = render(engine, state)) < 0)
            return;
    }
    state.counters["pages"] = engine.pageNumber();
    state.counters["pdf_bytes"] = double(bytes);
}
BENCHMARK(BM_InvoiceListPdf)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_InvoiceListCsv(benchmark::State& state)
{
    ReportData* data = dataOrSkip<ReportData>(state);
    if (!data)
        return;
    InvoiceListPrintModel model(data->registry());
    model.setExtraFields({ QStringLiteral("postitoimipaikka"), QStringLiteral("alv-erittely") });
    if (!model.run()) {
        state.SkipWithError("loading failed");
        return;
    }
    const QString fileName = data->filePath(QStringLiteral("laskut.csv"));
    for (auto _ : state) {
        if (!model.exportToCSV(fileName, QStringLiteral(";"))) {
            state.SkipWithError(qPrintable(model.lastError()));
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * invoiceCount);
}
BENCHMARK(BM_InvoiceListCsv)->Unit(benchmark::kMillisecond)->UseRealTime();

// The payment journal of every payment, gathered and drawn.
void BM_PaymentListRunAndPdf(benchmark::State& state)
{
    ReportData* data = dataOrSkip<ReportData>(state);
    if (!data)
        return;
    PrintScriptEngine engine;
    if (!ScriptHelper(data->registry()).loadPaymentListScript(&engine)) {
        state.SkipWithError("loading failed");
        return;
    }
    qint64 bytes = 0;
    int payments = 0;
    for (auto _ : state) {
        PaymentPrintModel model(data->registry());
        if (!model.run()) {
            state.SkipWithError(qPrintable(model.lastError()));
            return;
        }
        payments = model.paymentCount();
        engine.setModel(&model);
        if ((bytes = render(engine, state)) < 0)
            return;
        engine.setModel(nullptr);
    }
    state.counters["payments"] = payments;
    state.counters["pages"] = engine.pageNumber();
}
BENCHMARK(BM_PaymentListRunAndPdf)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, true);
}
