#include "invoicefixture.h"

#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/printscript.h"
#include "domain/settings.h"
#include "domain/vat.h"
#include "storage/database.h"
#include "storage/query.h"

const QDate InvoiceFixture::invoiceDate(2025, 3, 1);
const QDate InvoiceFixture::dueDate(2025, 3, 15);

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
    Settings* settings = m_registry->settings();
    if (!m_registry->fetchSettings(query.get())) {
        m_lastError = query->lastError();
        return false;
    }
    settings->sellerName = QStringLiteral("Kuusela Design Oy");
    settings->sellerStreetName = QStringLiteral("Hämeenkatu 12 B 7");
    settings->sellerPostCode = QStringLiteral("33100");
    settings->sellerTownName = QStringLiteral("Tampere");
    settings->sellerCountry = QStringLiteral("Suomi");
    settings->sellerBusinessId = QStringLiteral("2345678-0");
    settings->setProperty(QStringLiteral("seller/phoneNumber"), QStringLiteral("040 123 4567"));
    settings->setProperty(
        QStringLiteral("seller/emailAddress"), QStringLiteral("laskutus@kuuseladesign.fi"));
    settings->setProperty(
        QStringLiteral("seller/webAddress"), QStringLiteral("https://www.kuuseladesign.fi"));
    settings->setProperty(QStringLiteral("invoiceForm/barcodeVisible"), QStringLiteral("true"));
    settings->setProperty(
        QStringLiteral("invoiceForm/footer/text1"), QStringLiteral("Kotipaikka Tampere"));
    settings->setProperty(
        QStringLiteral("invoiceForm/footer/text2"), QStringLiteral("Ennakkoperintärekisterissä"));
    if (!query->updateSettings(settings)) {
        m_lastError = query->lastError();
        return false;
    }

    const struct
    {
        const char* name;
        const char* iban;
        const char* bic;
        bool visible;
    } accounts[] = {
        { "Osuuspankki", "FI3457200020086597", "OKOYFIHH", true },
        { "Nordea", "FI5211443500061725", "NDEAFIHH", true },
        { "Säästöpankki", "FI1540060010033455", "ITELFIHH", false },
    };
    int row = 0;
    for (const auto& data : accounts) {
        BankAccount account;
        account.name = QString::fromUtf8(data.name);
        account.iban = QLatin1String(data.iban);
        account.bic = QLatin1String(data.bic);
        account.visible = data.visible;
        account.rowNumber = row++;
        if (!query->saveBankAccount(&account)) {
            m_lastError = query->lastError();
            return false;
        }
    }

    const struct
    {
        int number;
        const char* name;
        const char* contact;
        const char* street;
        const char* postCode;
        const char* town;
        const char* businessId;
        const char* language;
    } customers[] = {
        { 1, "Rautakauppa Virtanen Oy", "Matti Virtanen", "Teollisuustie 4", "40320", "Jyväskylä",
            "1234567-1", "" },
        { 2, "Nordic Timber AB", "Anna Lindqvist", "Storgatan 8", "65100", "Vaasa", "", "sv" },
    };
    for (const auto& data : customers) {
        Customer customer;
        customer.number = data.number;
        customer.name = QString::fromUtf8(data.name);
        customer.contact = QString::fromUtf8(data.contact);
        customer.streetName = QString::fromUtf8(data.street);
        customer.postCode = QLatin1String(data.postCode);
        customer.townName = QString::fromUtf8(data.town);
        customer.vatNumber = QLatin1String(data.businessId);
        customer.paymentTerms = QStringLiteral("14 päivää netto");
        if (*data.language)
            customer.setProperty(QStringLiteral("l"), QLatin1String(data.language));
        if (!query->saveCustomer(&customer)) {
            m_lastError = query->lastError();
            return false;
        }
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
    Database* database = m_database->database();
    Invoice invoice;
    invoice.type = type;
    invoice.number = number;
    invoice.customerId = customerId(customerIndex);
    invoice.date = invoiceDate;
    invoice.dueDate = dueDate;
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

    database->transaction();
    bool ok = query->saveInvoice(&invoice);
    int rowNumber = 0;
    for (const InvoiceItem& row : items) {
        if (!ok)
            break;
        InvoiceItem copy = row;
        copy.invoiceId = invoice.id;
        copy.rowNumber = rowNumber++;
        ok = query->saveInvoiceItem(&copy);
    }
    if (!ok) {
        m_lastError = query->lastError();
        database->rollback();
        return -1;
    }
    database->commit();
    return invoice.id;
}

bool InvoiceFixture::setLogo(const QByteArray& image)
{
    std::unique_ptr<Query> query(m_database->database()->query());
    m_registry->settings()->sellerLogo = image.isNull() ? QByteArray("") : image;
    if (!query->updateSettings(m_registry->settings())) {
        m_lastError = query->lastError();
        return false;
    }
    return true;
}

bool InvoiceFixture::setSetting(const QString& key, const QVariant& value)
{
    std::unique_ptr<Query> query(m_database->database()->query());
    m_registry->settings()->setProperty(key, value);
    if (!query->updateSettings(m_registry->settings())) {
        m_lastError = query->lastError();
        return false;
    }
    return true;
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
