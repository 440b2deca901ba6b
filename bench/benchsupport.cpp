#include "benchsupport.h"

#include "domain/bankaccount.h"
#include "domain/decimal.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/settings.h"
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

bool saveSeller(Query* query, Settings* settings)
{
    settings->sellerStreetName = QStringLiteral("Hämeenkatu 12 B 7");
    settings->sellerPostCode = QStringLiteral("33100");
    settings->sellerTownName = QStringLiteral("Tampere");
    settings->sellerBusinessId = QStringLiteral("2345678-0");
    BankAccount account;
    account.name = QStringLiteral("Osuuspankki");
    account.iban = QStringLiteral("FI3457200020086597");
    account.bic = QStringLiteral("OKOYFIHH");
    return query->updateSettings(settings) && query->saveBankAccount(&account);
}

bool saveDesignInvoices(
    Query* query, const QList<int>& customerIds, int count, const QString& noticeText)
{
    for (int number = 1; number <= count; ++number) {
        Invoice invoice;
        invoice.customerId = customerIds.at(number % customerIds.size());
        invoice.number = number;
        invoice.date = QDate(2025, 3, 1);
        invoice.dueDate = QDate(2025, 3, 15);
        invoice.paymentTerms = QStringLiteral("14 päivää netto");
        invoice.interestOnArrears = 800;
        invoice.referenceNumber
            = Invoice::appendCheckDigitToReferenceNumber(QString::number(number) + "00");
        if (!noticeText.isEmpty())
            invoice.setProperty(QStringLiteral("t1"), noticeText);
        QList<InvoiceItem> items;
        for (int row = 0; row < 3 + number % 6; ++row) {
            InvoiceItem item;
            item.productNumber = QString::number(100 + row);
            item.productName = QStringLiteral("Graafinen suunnittelu");
            item.text = QStringLiteral("Työvaihe %1").arg(row + 1);
            item.quantity = 10000 + 2500 * row;
            item.unitCode = QStringLiteral("h");
            item.setAmountVatExcluded(850000 + 10000 * row);
            item.vatRate = row % 3 ? 2550 : 1400;
            item.rowNumber = row;
            items.append(item);
        }
        if (!saveInvoice(query, &invoice, items))
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
