// Start-up speed of the main model: opening a SQLite database of 100 000
// invoices, fetching the reference data and the whole invoice list, and
// loading the last invoice with its 20 rows (target under 0.5 s together).
#include "benchsupport.h"
#include "core/invoiceitemtablemodel.h"
#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "storage/query.h"

#include <QSettings>
#include <benchmark/benchmark.h>

namespace {

constexpr int invoiceCount = 100000;
constexpr int rowsOfLast = 20;

// One database and configuration file for the whole run, filled on first
// use and closed again: the benchmarks open it as the program does.
class BenchFixture : public BenchDatabase
{
public:
    static BenchFixture& instance()
    {
        static BenchFixture fixture;
        return fixture;
    }

    QString iniFile() const { return filePath(QStringLiteral("veklari.ini")); }

private:
    BenchFixture()
    {
        {
            QSettings settings(iniFile(), QSettings::IniFormat);
            settings.beginGroup(QStringLiteral("databases"));
            settings.beginWriteArray(QStringLiteral("settings"), 1);
            settings.setArrayIndex(0);
            settings.setValue(QStringLiteral("number"), 1);
            settings.setValue(QStringLiteral("filename"), fileName());
            settings.endArray();
            settings.endGroup();
        }
        create([](Query* query) { return fill(query); });
        database()->close();
    }

    static bool fill(Query* query)
    {
        QList<int> customerIds;
        for (int number = 1; number <= 200; ++number) {
            Customer customer;
            customer.number = number;
            customer.name = QStringLiteral("Asiakas %1 Oy").arg(number);
            if (!query->saveCustomer(&customer))
                return false;
            customerIds.append(customer.id);
        }
        const QDate start(2015, 1, 1);
        Invoice invoice;
        for (int number = 1; number <= invoiceCount; ++number) {
            invoice.clear();
            invoice.customerId = customerIds.at(number % customerIds.size());
            invoice.number = number;
            invoice.date = start.addDays(number / 30);
            invoice.dueDate = invoice.date.addDays(14);
            invoice.paymentTerms = QStringLiteral("14 päivää netto");
            invoice.referenceNumber
                = Invoice::appendCheckDigitToReferenceNumber(QString::number(number * 100));
            invoice.totalAmount = 12400;
            invoice.balance = number % 2 ? 12400 : 0;
            if (!query->saveInvoice(&invoice))
                return false;
        }
        for (int row = 0; row < rowsOfLast; ++row) {
            InvoiceItem item;
            item.invoiceId = invoice.id;
            item.productName = QStringLiteral("Tuote %1").arg(row);
            item.quantity = 10000;
            item.amount = 6200;
            item.vatRate = 2400;
            item.text = QStringLiteral("Rivi %1").arg(row);
            item.rowNumber = row;
            if (!query->saveInvoiceItem(&item))
                return false;
        }
        Payment payment;
        payment.invoiceId = invoice.id;
        payment.date = invoice.date;
        payment.amount = 100;
        return query->savePayment(&payment);
    }
};

// Opens the database as the program does at start-up: the configured
// database, its reference data and the invoice list.
bool openAsTheProgram(
    const BenchFixture& fixture, Registry* registry, MainModel* model, benchmark::State& state)
{
    registry->loadSettings(fixture.iniFile());
    registry->setDatabaseNumber(1);
    if (model->openDatabase(0, false) == 0 && model->fetchData())
        return true;
    state.SkipWithError(qPrintable(model->lastError()));
    return false;
}

void BM_OpenFetchAndLoadLastInvoice(benchmark::State& state)
{
    BenchFixture* fixture = dataOrSkip<BenchFixture>(state);
    if (!fixture)
        return;
    for (auto _ : state) {
        Registry registry;
        MainModel model(&registry);
        if (!openAsTheProgram(*fixture, &registry, &model, state))
            return;
        if (model.invoiceCount() != invoiceCount || !model.goToInvoice(model.invoiceCount() - 1)) {
            state.SkipWithError("the last invoice could not be loaded");
            return;
        }
        if (model.invoiceItemTableModel()->rowCount() != rowsOfLast) {
            state.SkipWithError("wrong number of rows");
            return;
        }
        benchmark::DoNotOptimize(model.invoiceItemTableModel()->totalAmountVatIncluded());
    }
}
BENCHMARK(BM_OpenFetchAndLoadLastInvoice)->Unit(benchmark::kMillisecond);

void BM_GoToLastInvoice(benchmark::State& state)
{
    BenchFixture* fixture = dataOrSkip<BenchFixture>(state);
    if (!fixture)
        return;
    Registry registry;
    MainModel model(&registry);
    if (!openAsTheProgram(*fixture, &registry, &model, state))
        return;
    for (auto _ : state) {
        if (!model.goToInvoice(model.invoiceCount() - 1)) {
            state.SkipWithError(qPrintable(model.lastError()));
            return;
        }
    }
}
BENCHMARK(BM_GoToLastInvoice)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, false);
}
