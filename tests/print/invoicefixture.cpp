#include "invoicefixture.h"

#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/printscript.h"
#include "domain/settings.h"
#include "domain/vat.h"
#include "print/invoiceprintmodel.h"
#include "print/printscriptengine.h"
#include "print/scripthelper.h"
#include "print/scriptpdfwriter.h"
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
    m_registry.reset();
}

static InvoiceItem item(const QString& number, const QString& name, const QString& text,
    long long quantity, const QString& unit, long long amount, bool vatExcluded, int vatRate,
    int discount = 0)
{
    InvoiceItem row;
    row.productNumber = number;
    row.productName = name;
    row.text = text;
    row.quantity = quantity;
    row.unitCode = unit;
    row.amount = amount;
    row.vatExcluded = vatExcluded;
    row.vatRate = vatRate;
    row.discount = discount;
    return row;
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
        const QString text = i % 7 == 3
            ? QStringLiteral("Työvaihe %1: suunnittelupalaveri, luonnokset, korjauskierrokset ja "
                             "lopullisten aineistojen toimitus asiakkaalle")
                  .arg(i + 1)
            : QStringLiteral("Työvaihe %1").arg(i + 1);
        rows.append(item(QString::number(300 + i), QStringLiteral("Konsultointi"), text,
            10000 + 2500 * (i % 4), "h", 720000 + 1000 * i, true, i % 5 == 0 ? 1400 : 2550));
    }
    return rows;
}

bool InvoiceFixture::open()
{
    if (!m_database->open()) {
        m_lastError = m_database->lastError();
        return false;
    }
    m_registry->setDatabase(m_database->database());
    std::unique_ptr<Query> query(m_database->database()->query());
    auto failed = [&]() {
        m_lastError = query->lastError();
        return false;
    };
    if (!m_registry->fetchSettings(query.get()))
        return failed();
    Settings* settings = m_registry->settings();
    settings->sellerName = QStringLiteral("Kuusela Design Oy");
    settings->sellerStreetName = QStringLiteral("Hämeenkatu 12 B 7");
    settings->sellerPostCode = QStringLiteral("33100");
    settings->sellerTownName = QStringLiteral("Tampere");
    settings->sellerCountry = QStringLiteral("Suomi");
    settings->sellerBusinessId = QStringLiteral("2345678-0");
    const QStringList properties { "seller/phoneNumber", "040 123 4567", "seller/emailAddress",
        "laskutus@kuuseladesign.fi", "seller/webAddress", "https://www.kuuseladesign.fi",
        "invoiceForm/barcodeVisible", "true", "invoiceForm/footer/text1", "Kotipaikka Tampere",
        "invoiceForm/footer/text2", "Ennakkoperintärekisterissä" };
    for (int i = 0; i < properties.size(); i += 2)
        settings->setProperty(properties.at(i), properties.at(i + 1));
    if (!storeSettings())
        return false;

    // The third account is hidden.
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
            return failed();
    }

    // The second customer reads Swedish.
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
        customer.paymentTerms = QStringLiteral("14 päivää netto");
        if (customer.number == 1)
            customer.vatNumber = QStringLiteral("1234567-1");
        else
            customer.setProperty(QStringLiteral("l"), QStringLiteral("sv"));
        if (!query->saveCustomer(&customer))
            return failed();
        m_customerIds.append(customer.id);
    }
    return refresh();
}

bool InvoiceFixture::refresh()
{
    std::unique_ptr<Query> query(m_database->database()->query());
    if (!m_registry->fetchSettings(query.get()) || !m_registry->fetchCustomers(query.get())
        || !m_registry->fetchBankAccounts(query.get())
        || !m_registry->fetchPrintScripts(query.get())) {
        m_lastError = query->lastError();
        return false;
    }
    return true;
}

QString InvoiceFixture::referenceNumber(int number) const
{
    return Invoice::appendCheckDigitToReferenceNumber(QString::number(number) + "00");
}

int InvoiceFixture::addInvoice(
    int type, const QList<InvoiceItem>& items, int number, int customerIndex, int paid)
{
    std::unique_ptr<Query> query(m_database->database()->query());
    Invoice invoice;
    invoice.type = type;
    invoice.number = number;
    invoice.customerId = m_customerIds.value(customerIndex, -1);
    invoice.date = QDate(2025, 3, 1);
    invoice.dueDate = QDate(2025, 3, 15);
    invoice.paymentTerms = QStringLiteral("14 päivää netto");
    invoice.delivery = QStringLiteral("Nouto");
    invoice.buyerRef = QStringLiteral("Tilaus 4471");
    invoice.sellerRef = QStringLiteral("Kaisa Kuusela");
    invoice.interestOnArrears = 800;
    invoice.referenceNumber = referenceNumber(number);
    invoice.setProperty(QStringLiteral("t1"), QStringLiteral("Kiitos tilauksestanne!"));
    invoice.setProperty(QStringLiteral("t2"), QStringLiteral("Lasku %1").arg(number));
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
    if (!ok) {
        m_lastError = query->lastError();
        return -1;
    }
    return invoice.id;
}

bool InvoiceFixture::storeSettings()
{
    std::unique_ptr<Query> query(m_database->database()->query());
    if (query->updateSettings(m_registry->settings()))
        return true;
    m_lastError = query->lastError();
    return false;
}

bool InvoiceFixture::setLogo(const QByteArray& image)
{
    m_registry->settings()->sellerLogo = image.isNull() ? QByteArray("") : image;
    return storeSettings();
}

bool InvoiceFixture::setSetting(const QString& key, const QVariant& value)
{
    m_registry->settings()->setProperty(key, value);
    return storeSettings();
}

int InvoiceFixture::addPrintScript(const QString& name, const QString& type, const QString& source)
{
    std::unique_ptr<Query> query(m_database->database()->query());
    PrintScript script;
    script.name = name;
    script.type = type;
    script.sourceCode = source;
    if (!query->savePrintScript(&script)) {
        m_lastError = query->lastError();
        return -1;
    }
    return script.id;
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
    if (!model.run() || !ScriptHelper(m_registry.get()).loadInvoiceScript(&engine)
        || !writer.write(&engine, fileName)) {
        m_lastError = model.lastError() + engine.lastError() + writer.lastError();
        return false;
    }
    return true;
}
