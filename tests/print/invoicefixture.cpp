#include "invoicefixture.h"

#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/printscript.h"
#include "domain/settings.h"
#include "domain/vat.h"
#include "print/invoiceprintmodel.h"
#include "print/printscriptengine.h"
#include "print/scripthelper.h"
#include "print/scriptpdfwriter.h"
#include "print/xmlscriptengine.h"
#include "print/xmlscriptmodel.h"
#include "storage/database.h"
#include "storage/query.h"
#include "util/scriptloader.h"

InvoiceFixture::InvoiceFixture(TestDatabase::Backend backend)
    : m_database(new TestDatabase(backend, QStringLiteral("Kuusela Design Oy")))
    , m_registry(new Registry)
{
}

InvoiceFixture::~InvoiceFixture()
{
    m_registry->setDatabase(nullptr);
}

bool InvoiceFixture::failed(const QString& error)
{
    m_lastError = error;
    return false;
}

static InvoiceItem item(const char* number, const char* name, const char* text, long long quantity,
    const char* unit, long long amount, bool vatExcluded, int vatRate, int discount = 0)
{
    return { -1, -1, number, name, quantity, unit, amount, vatRate, vatExcluded, discount, text };
}

QList<InvoiceItem> InvoiceFixture::sampleItems()
{
    return {
        item("101", "Graafinen suunnittelu", "Esitteen taitto ja kuvankäsittely", 75000, "h",
            850000, true, 2550),
        item("102", "Logon viimeistely", "", 10000, "kpl", 4500000, true, 2550, 1000),
        item("205", "Brändin käsikirja", "Painettu kirja", 30000, "kpl", 299000, false, 1400),
        item("", "", "Toimitus sovitusti 14.3.2025.", 0, "", 0, true, 0),
    };
}

QList<InvoiceItem> InvoiceFixture::manyItems(int count)
{
    QList<InvoiceItem> rows;
    for (int i = 0; i < count; ++i) {
        InvoiceItem row = item("", "Konsultointi", "", 10000 + 2500 * (i % 4), "h",
            720000 + 1000 * i, true, i % 5 == 0 ? 1400 : 2550);
        row.productNumber = QString::number(300 + i);
        row.text = QStringLiteral("Työvaihe %1").arg(i + 1);
        if (i % 7 == 3)
            row.text += ": suunnittelupalaveri, luonnokset, korjauskierrokset ja lopullisten "
                        "aineistojen toimitus asiakkaalle";
        rows.append(row);
    }
    return rows;
}

bool InvoiceFixture::open()
{
    if (!m_database->open())
        return failed(m_database->lastError());
    m_registry->setDatabase(m_database->database());
    std::unique_ptr<Query> query(m_database->database()->query());
    if (!m_registry->fetchSettings(query.get()))
        return failed(query->lastError());
    Settings* settings = m_registry->settings();
    settings->sellerName = QStringLiteral("Kuusela Design Oy");
    settings->sellerStreetName = QStringLiteral("Hämeenkatu 12 B 7");
    settings->sellerPostCode = QStringLiteral("33100");
    settings->sellerTownName = QStringLiteral("Tampere");
    settings->sellerBusinessId = QStringLiteral("2345678-0");
    settings->setProperty("seller/phoneNumber", "040 123 4567");
    settings->setProperty("seller/webAddress", "https://www.kuuseladesign.fi");
    settings->setProperty("invoiceForm/barcodeVisible", "true");
    if (!query->updateSettings(settings))
        return failed(query->lastError());

    const QList<QStringList> accounts { { "Osuuspankki", "FI3457200020086597", "OKOYFIHH" },
        { "Nordea", "FI5211443500061725", "NDEAFIHH" },
        { "Säästöpankki", "FI1540060010033455", "ITELFIHH" } };
    for (int i = 0; i < accounts.size(); ++i) {
        BankAccount account;
        account.name = accounts.at(i).at(0);
        account.iban = accounts.at(i).at(1);
        account.bic = accounts.at(i).at(2);
        account.visible = i < 2;
        account.rowNumber = i;
        if (!query->saveBankAccount(&account))
            return failed(query->lastError());
    }

    const QList<QStringList> customers {
        { "Rautakauppa Virtanen Oy", "Matti Virtanen", "Teollisuustie 4", "40320", "Jyväskylä" },
        { "Nordic Timber AB", "Anna Lindqvist", "Storgatan 8", "65100", "Vaasa" },
    };
    for (const QStringList& data : customers) {
        Customer customer;
        customer.number = m_customerIds.size() + 1;
        customer.name = data.at(0);
        customer.contact = data.at(1);
        customer.streetName = data.at(2);
        customer.postCode = data.at(3);
        customer.townName = data.at(4);
        if (customer.number == 1)
            customer.vatNumber = QStringLiteral("1234567-1");
        else
            customer.setProperty(QStringLiteral("l"), QStringLiteral("sv"));
        if (!query->saveCustomer(&customer))
            return failed(query->lastError());
        m_customerIds.append(customer.id);
    }
    return refresh();
}

bool InvoiceFixture::refresh()
{
    std::unique_ptr<Query> query(m_database->database()->query());
    if (!m_registry->fetchSettings(query.get()) || !m_registry->fetchCustomers(query.get())
        || !m_registry->fetchBankAccounts(query.get())
        || !m_registry->fetchPrintScripts(query.get()))
        return failed(query->lastError());
    return true;
}

QString InvoiceFixture::referenceNumber(int number) const
{
    return Invoice::appendCheckDigitToReferenceNumber(QString::number(number) + "00");
}

int InvoiceFixture::addInvoice(int type, const QList<InvoiceItem>& items, int number,
    int customerIndex, int paid, const QString& reference)
{
    std::unique_ptr<Query> query(m_database->database()->query());
    Invoice invoice;
    invoice.type = type;
    invoice.number = number;
    invoice.customerId = m_customerIds.value(customerIndex, -1);
    invoice.date = QDate(2025, 3, 1);
    invoice.dueDate = QDate(2025, 3, 15);
    invoice.paymentTerms = QStringLiteral("14 päivää netto");
    invoice.interestOnArrears = 800;
    invoice.referenceNumber = reference.isEmpty() ? referenceNumber(number) : reference;
    Vat vat;
    vat.setRoundingMode(1);
    for (const InvoiceItem& row : items)
        vat.addInvoiceItem(&row);
    invoice.totalAmount = int(vat.totalAmountVatIncluded());
    invoice.balance = invoice.totalAmount - paid;
    bool ok = query->saveInvoice(&invoice);
    for (int i = 0; ok && i < items.size(); ++i) {
        InvoiceItem copy = items.at(i);
        copy.invoiceId = invoice.id;
        copy.rowNumber = i;
        ok = query->saveInvoiceItem(&copy);
    }
    return ok ? invoice.id : (failed(query->lastError()), -1);
}

int InvoiceFixture::addCustomer(Customer customer)
{
    std::unique_ptr<Query> query(m_database->database()->query());
    customer.id = -1;
    customer.number = m_customerIds.size() + 1;
    if (!query->saveCustomer(&customer))
        return failed(query->lastError()), -1;
    m_customerIds.append(customer.id);
    return refresh() ? m_customerIds.size() - 1 : -1;
}

bool InvoiceFixture::showBankAccounts(int count)
{
    std::unique_ptr<Query> query(m_database->database()->query());
    for (int i = 0; i < m_registry->bankAccountCount(); ++i) {
        BankAccount account;
        m_registry->bankAccountAt(i)->copy(&account);
        account.visible = i < count;
        if (!query->saveBankAccount(&account))
            return failed(query->lastError());
    }
    return refresh();
}

bool InvoiceFixture::setSetting(const QString& key, const QVariant& value)
{
    if (value.isValid())
        m_registry->settings()->setProperty(key, value);
    else
        m_registry->settings()->removeProperty(key);
    std::unique_ptr<Query> query(m_database->database()->query());
    return query->updateSettings(m_registry->settings()) || failed(query->lastError());
}

int InvoiceFixture::addPrintScript(const QString& name, const QString& type, const QString& source)
{
    std::unique_ptr<Query> query(m_database->database()->query());
    PrintScript script;
    script.name = name;
    script.type = type;
    script.sourceCode = source;
    return query->savePrintScript(&script) ? script.id : (failed(query->lastError()), -1);
}

bool InvoiceFixture::removePrintScript(int id)
{
    std::unique_ptr<Query> query(m_database->database()->query());
    return (query->deletePrintScript(id) || failed(query->lastError())) && refresh();
}

bool InvoiceFixture::printInvoice(int id, const QString& fileName, int printType)
{
    InvoicePrintModel model(m_registry.get());
    model.criteria().id = id;
    model.setPrintType(printType);
    PrintScriptEngine engine;
    ScriptLoader loader(m_registry.get());
    engine.setScriptLoader(&loader);
    engine.setModel(&model);
    ScriptPdfWriter writer;
    writer.setTitle(model.title());
    if (model.run() && ScriptHelper(m_registry.get()).loadInvoiceScript(&engine)
        && writer.write(&engine, fileName))
        return true;
    return failed(model.lastError() + engine.lastError() + writer.lastError());
}

bool InvoiceFixture::writeFinvoice(int id, const QString& version, const QString& fileName,
    XmlScriptEngine* engine, bool append, int printType)
{
    InvoicePrintModel invoices(m_registry.get());
    invoices.criteria().id = id;
    if (!invoices.run())
        return failed(invoices.lastError());
    XmlScriptModel model(m_registry.get());
    model.copyInvoice(&invoices, 0);
    model.setXmlSchemaVersion(version);
    model.setPrintType(printType);
    engine->setModel(&model);
    const bool written
        = (engine->isEvaluated() || ScriptHelper(m_registry.get()).loadFinvoiceScript(engine))
        && engine->write(fileName, append);
    engine->setModel(nullptr);
    return written || failed(engine->lastError());
}
