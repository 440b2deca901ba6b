#include "benchsupport.h"

#include "domain/decimal.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/vat.h"
#include "print/printscriptengine.h"
#include "storage/query.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QPdfWriter>
#include <QSettings>
#include <benchmark/benchmark.h>
#include <memory>

BenchDatabase::~BenchDatabase()
{
    m_registry.setDatabase(nullptr);
}

void BenchDatabase::create(const std::function<bool(Query*)>& fill)
{
    QSettings entry(filePath(QStringLiteral("bench.ini")), QSettings::IniFormat);
    entry.setValue(QStringLiteral("filename"), fileName());
    entry.setValue(QStringLiteral("name"), QStringLiteral("Kuusela Design Oy"));
    m_database.setCreateIfNotExist(true);
    if (!m_database.open(&entry)) {
        m_error = m_database.lastError();
        return;
    }
    m_registry.setDatabase(&m_database);
    std::unique_ptr<Query> query(m_database.query());
    m_ok = m_database.transaction() && fill(query.get()) && m_database.commit()
        && m_registry.fetchSettings(query.get()) && m_registry.fetchCustomers(query.get())
        && m_registry.fetchBankAccounts(query.get()) && m_registry.fetchPrintScripts(query.get());
    if (!m_ok)
        m_error = query->lastError();
}

bool saveInvoice(Query* query, Invoice* invoice, QList<InvoiceItem>& items, bool paid)
{
    Vat vat;
    for (const InvoiceItem& item : items)
        vat.addInvoiceItem(&item);
    invoice->totalAmount = int(vat.totalAmountVatIncluded());
    invoice->balance = paid ? 0 : invoice->totalAmount;
    if (!query->saveInvoice(invoice))
        return false;
    for (InvoiceItem& item : items) {
        item.invoiceId = invoice->id;
        if (!query->saveInvoiceItem(&item))
            return false;
    }
    return true;
}

qint64 renderToMemory(PrintScriptEngine* engine, QString* error)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        // The writer finishes the document when it goes out of scope.
        QPdfWriter writer(&buffer);
        writer.setPageSize(QPageSize(QPageSize::A4));
        if (!engine->print(&writer)) {
            *error = engine->lastError();
            return -1;
        }
    }
    return buffer.size();
}

int runBenchmarks(int argc, char** argv, bool gui)
{
    if (gui && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    std::unique_ptr<QCoreApplication> app(
        gui ? new QGuiApplication(argc, argv) : new QCoreApplication(argc, argv));
    Decimal::registerMetaType();
    QLoggingCategory::setFilterRules(QStringLiteral("veklari.*.debug=false"));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
