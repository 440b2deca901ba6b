// Start-up speed of the main model: opening a SQLite database of 100 000
// invoices, fetching the reference data and the whole invoice list, and
// loading the last invoice with its 20 rows (target under 0.5 s together).
#include "core/invoiceitemtablemodel.h"
#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "storage/query.h"
#include "storage/sqlitedatabase.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QSettings>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <memory>

namespace {

constexpr int invoiceCount = 100000;
constexpr int rowsOfLast = 20;

// One database and configuration file for the whole run, filled on first use.
class BenchFixture
{
public:
    static BenchFixture& instance()
    {
        static BenchFixture fixture;
        return fixture;
    }

    QString iniFile() const { return m_dir.filePath(QStringLiteral("bench.ini")); }
    bool ok() const { return m_ok; }
    QString error() const { return m_error; }

private:
    BenchFixture()
    {
        const QString fileName = m_dir.filePath(QStringLiteral("bench.sqlite"));
        {
            QSettings settings(iniFile(), QSettings::IniFormat);
            settings.beginGroup(QStringLiteral("databases"));
            settings.beginWriteArray(QStringLiteral("settings"), 1);
            settings.setArrayIndex(0);
            settings.setValue(QStringLiteral("number"), 1);
            settings.setValue(QStringLiteral("filename"), fileName);
            settings.endArray();
            settings.endGroup();
        }
        QSettings entry(m_dir.filePath(QStringLiteral("entry.ini")), QSettings::IniFormat);
        entry.setValue(QStringLiteral("filename"), fileName);
        SQLiteDatabase database;
        database.setCreateIfNotExist(true);
        if (!database.open(&entry)) {
            m_error = database.lastError();
            return;
        }
        std::unique_ptr<Query> query(database.query());
        database.transaction();
        QList<int> customerIds;
        for (int number = 1; number <= 200; ++number) {
            Customer customer;
            customer.number = number;
            customer.name = QStringLiteral("Asiakas %1 Oy").arg(number);
            m_ok = query->saveCustomer(&customer);
            if (!m_ok)
                break;
            customerIds.append(customer.id);
        }
        const QDate start(2015, 1, 1);
        Invoice invoice;
        for (int number = 1; m_ok && number <= invoiceCount; ++number) {
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
            m_ok = query->saveInvoice(&invoice);
        }
        for (int row = 0; m_ok && row < rowsOfLast; ++row) {
            InvoiceItem item;
            item.invoiceId = invoice.id;
            item.productName = QStringLiteral("Tuote %1").arg(row);
            item.quantity = 10000;
            item.amount = 6200;
            item.vatRate = 2400;
            item.text = QStringLiteral("Rivi %1").arg(row);
            item.rowNumber = row;
            m_ok = query->saveInvoiceItem(&item);
        }
        Payment payment;
        payment.invoiceId = invoice.id;
        payment.date = invoice.date;
        payment.amount = 100;
        m_ok = m_ok && query->savePayment(&payment);
        m_ok = m_ok && database.commit();
        if (!m_ok)
            m_error = query->lastError();
        query.reset();
        database.close();
    }

    QTemporaryDir m_dir;
    bool m_ok = false;
    QString m_error;
};

void BM_OpenFetchAndLoadLastInvoice(benchmark::State& state)
{
    BenchFixture& fixture = BenchFixture::instance();
    if (!fixture.ok()) {
        state.SkipWithError(qPrintable(fixture.error()));
        return;
    }
    for (auto _ : state) {
        Registry registry;
        registry.loadSettings(fixture.iniFile());
        registry.setDatabaseNumber(1);
        MainModel model(&registry);
        if (model.openDatabase(0, false) != 0 || !model.fetchData()) {
            state.SkipWithError(qPrintable(model.lastError()));
            return;
        }
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
    BenchFixture& fixture = BenchFixture::instance();
    if (!fixture.ok()) {
        state.SkipWithError(qPrintable(fixture.error()));
        return;
    }
    Registry registry;
    registry.loadSettings(fixture.iniFile());
    registry.setDatabaseNumber(1);
    MainModel model(&registry);
    if (model.openDatabase(0, false) != 0 || !model.fetchData()) {
        state.SkipWithError(qPrintable(model.lastError()));
        return;
    }
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
    QCoreApplication app(argc, argv);
    // Statement logging is off in the program unless the user turns it on.
    QLoggingCategory::setFilterRules(QStringLiteral("veklari.*.debug=false"));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
