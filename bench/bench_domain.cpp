#include "domain/constants.h"
#include "domain/decimalformat.h"
#include "domain/invoiceitem.h"
#include "domain/vat.h"

#include <QList>
#include <QLocale>
#include <QRandomGenerator>

#include <benchmark/benchmark.h>

namespace {

QList<InvoiceItem> makeRows(int count)
{
    static const int rates[] = { 0, 1000, 1400, 2400, 2550 };
    QRandomGenerator random(12345);
    QList<InvoiceItem> rows(count);
    for (InvoiceItem& item : rows) {
        item.quantity = 1 + random.bounded(1000000);
        item.amount = random.bounded(100000000);
        item.vatRate = rates[random.bounded(5)];
        item.vatExcluded = random.bounded(2) == 0;
        item.discount = random.bounded(4) == 0 ? int(random.bounded(5000)) : 0;
    }
    return rows;
}

void vatBreakdown(benchmark::State& state)
{
    const QList<InvoiceItem> rows = makeRows(int(state.range(0)));
    const int mode = int(state.range(1));
    for (auto _ : state) {
        Vat vat;
        vat.setRoundingMode(mode);
        for (const InvoiceItem& item : rows)
            vat.addInvoiceItem(&item);
        long long sum = vat.totalAmountVatIncluded() + vat.totalAmountVatExcluded();
        const QList<int> rates = vat.vatRates();
        for (int rate : rates)
            sum += vat.totalVatAmount(rate);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(vatBreakdown)->Args({ 100000, 0 })->Args({ 100000, 2 })->Unit(benchmark::kMillisecond);

void formatAmounts(benchmark::State& state)
{
    DecimalFormat format(
        Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits);
    format.setLocale(QLocale(QLocale::Finnish, QLocale::Finland));
    format.setGrouping(state.range(1) != 0);
    QRandomGenerator random(54321);
    QList<qint64> values(int(state.range(0)));
    for (qint64& value : values)
        value = qint64(random.bounded(2000000000)) - 1000000000;
    for (auto _ : state) {
        qsizetype length = 0;
        for (qint64 value : values)
            length += format.format(value).size();
        benchmark::DoNotOptimize(length);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(formatAmounts)->Args({ 1000000, 1 })->Args({ 1000000, 0 })->Unit(benchmark::kMillisecond);

void parseAmounts(benchmark::State& state)
{
    DecimalFormat format(Constants::amountFractionDigits, Constants::amountMinFractionDigits);
    format.setLocale(QLocale(QLocale::Finnish, QLocale::Finland));
    format.setGrouping(false);
    QRandomGenerator random(777);
    QStringList texts;
    for (int i = 0; i < state.range(0); ++i)
        texts.append(format.format(qint64(random.bounded(2000000000))));
    for (auto _ : state) {
        qint64 sum = 0;
        bool ok = false;
        for (const QString& text : texts)
            sum += format.parse(text, ok);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(parseAmounts)->Arg(1000000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
