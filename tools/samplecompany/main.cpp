// veklari-samplecompany CONFIG: a small design business in a new SQLite
// database, entered in the configuration file CONFIG (created when missing)
// as the database to open. The screenshots of the user guide show it.

#include "core/databasefactory.h"
#include "core/databaselist.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/decimal.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/invoicetype.h"
#include "domain/payment.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "domain/vat.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QCoreApplication>
#include <QDate>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSettings>
#include <QTextStream>
#include <memory>

namespace {

struct Row
{
    int product; // index into the products
    long long quantity; // in 1/10000
    const char* text;
};

struct SampleInvoice
{
    int customer;
    int daysAgo;
    int type;
    QList<Row> rows;
    int paidPercent; // of the total, paid before the due date
};

bool fill(Query* query, Settings* settings)
{
    settings->sellerName = QStringLiteral("Kuusela Design Oy");
    settings->sellerStreetName = QStringLiteral("Hämeenkatu 12 B 7");
    settings->sellerPostCode = QStringLiteral("33100");
    settings->sellerTownName = QStringLiteral("Tampere");
    settings->sellerBusinessId = QStringLiteral("2345678-0");
    settings->setProperty(SettingsKeys::phoneNumber, QStringLiteral("040 123 4567"));
    settings->setProperty(SettingsKeys::emailAddress, QStringLiteral("laskutus@kuuseladesign.fi"));
    settings->setProperty(SettingsKeys::webAddress, QStringLiteral("https://kuuseladesign.fi"));
    settings->setProperty(SettingsKeys::paymentTerms, QStringLiteral("14 päivää netto"));
    settings->setProperty(SettingsKeys::interestOnArrears, 800);
    settings->setProperty(SettingsKeys::barcodeVisible, true);
    settings->setProperty(SettingsKeys::qrCode, true);
    settings->setProperty(SettingsKeys::noticeText1, QStringLiteral("Kiitos tilauksestanne!"));
    if (!query->updateSettings(settings))
        return false;

    BankAccount account;
    account.name = QStringLiteral("Osuuspankki");
    account.iban = QStringLiteral("FI3457200020086597");
    account.bic = QStringLiteral("OKOYFIHH");
    if (!query->saveBankAccount(&account))
        return false;

    const QList<QStringList> customers {
        { "Rautakauppa Virtanen Oy", "Matti Virtanen", "Teollisuustie 4", "40320", "Jyväskylä",
            "1234567-1" },
        { "Kahvila Aamukaste", "Liisa Korhonen", "Kauppakatu 21", "70100", "Kuopio", "" },
        { "Tampereen Taideyhdistys ry", "Pekka Laine", "Näsilinnankatu 8", "33210", "Tampere", "" },
    };
    QList<int> customerIds;
    for (const QStringList& data : customers) {
        Customer customer;
        customer.number = int(customerIds.size()) + 1;
        customer.name = data.at(0);
        customer.contact = data.at(1);
        customer.streetName = data.at(2);
        customer.postCode = data.at(3);
        customer.townName = data.at(4);
        customer.vatNumber = data.at(5);
        if (!query->saveCustomer(&customer))
            return false;
        customerIds.append(customer.id);
    }

    QList<Product> products;
    const struct
    {
        const char* number;
        const char* name;
        const char* unit;
        long long amount; // VAT excluded, 1/10000 euros
        int vatRate;
    } productData[] = {
        { "101", "Graafinen suunnittelu", "h", 850000, 2550 },
        { "102", "Logon suunnittelu", "kpl", 4500000, 2550 },
        { "103", "Valokuvaus", "h", 950000, 2550 },
        { "205", "Painettu esite", "kpl", 29900, 1400 },
    };
    for (const auto& data : productData) {
        Product product;
        product.number = QString::fromUtf8(data.number);
        product.name = QString::fromUtf8(data.name);
        product.unitCode = QString::fromUtf8(data.unit);
        product.amount = data.amount;
        product.vatRate = data.vatRate;
        product.vatExcluded = true;
        if (!query->saveProduct(&product))
            return false;
        products.append(product);
    }

    const QList<SampleInvoice> invoices {
        { 0, 60, InvoiceType::Invoice,
            { { 1, 10000, "" }, { 0, 60000, "Luonnokset ja korjaukset" } }, 100 },
        { 2, 35, InvoiceType::Invoice, { { 3, 2000000, "Näyttelyn esite" } }, 0 },
        { 1, 12, InvoiceType::Invoice,
            { { 0, 45000, "Menukortin taitto" }, { 2, 20000, "Tuotekuvat verkkosivuille" } }, 0 },
        { 0, 3, InvoiceType::Invoice,
            { { 0, 75000, "Esitteen taitto ja kuvankäsittely" }, { 2, 30000, "Tuotekuvat" },
                { 3, 500000, "" }, { -1, 0, "Toimitus sovitusti." } },
            30 },
    };
    const QDate today = QDate::currentDate();
    int number = 1001;
    for (const SampleInvoice& sample : invoices) {
        Invoice invoice;
        invoice.type = sample.type;
        invoice.number = number++;
        invoice.customerId = customerIds.at(sample.customer);
        invoice.date = today.addDays(-sample.daysAgo);
        invoice.paymentTerms = QStringLiteral("14 päivää netto");
        invoice.dueDate = invoice.calculateDueDate();
        invoice.interestOnArrears = 800;
        invoice.referenceNumber
            = Invoice::appendCheckDigitToReferenceNumber(QString::number(invoice.number));
        invoice.setProperty(QStringLiteral("t1"), QStringLiteral("Kiitos tilauksestanne!"));
        QList<InvoiceItem> items;
        Vat vat;
        for (const Row& row : sample.rows) {
            InvoiceItem item;
            if (row.product >= 0)
                products.at(row.product).toInvoiceItem(&item);
            item.quantity = row.quantity;
            item.text = QString::fromUtf8(row.text);
            item.rowNumber = int(items.size());
            vat.addInvoiceItem(&item);
            items.append(item);
        }
        invoice.totalAmount = int(vat.totalAmountVatIncluded());
        const int paid = int(qint64(invoice.totalAmount) * sample.paidPercent / 100);
        invoice.balance = invoice.totalAmount - paid;
        if (!query->saveInvoice(&invoice))
            return false;
        for (InvoiceItem& item : items) {
            item.invoiceId = invoice.id;
            if (!query->saveInvoiceItem(&item))
                return false;
        }
        if (paid > 0) {
            Payment payment;
            payment.invoiceId = invoice.id;
            payment.date = qMin(invoice.dueDate.addDays(-2), today);
            payment.bankAccountId = account.id;
            payment.amount = paid;
            if (!query->savePayment(&payment))
                return false;
        }
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    Decimal::registerMetaType();
    QLoggingCategory::setFilterRules(QStringLiteral("veklari.*.debug=false"));
    QTextStream err(stderr);
    if (app.arguments().size() != 2) {
        err << "Usage: veklari-samplecompany CONFIG\n";
        return 2;
    }
    QSettings config(app.arguments().at(1), QSettings::IniFormat);
    DatabaseList list(&config);
    const int number = list.count() > 0 ? DatabaseList::number(list.entry(0)) : list.addDefault();
    const int index = list.indexOfNumber(number);
    const DatabaseList::Entry entry = list.entry(index);
    if (QFileInfo::exists(entry.value(QStringLiteral("filename")).toString())) {
        err << "The database exists already: " << entry.value(QStringLiteral("filename")).toString()
            << "\n";
        return 1;
    }
    std::unique_ptr<Database> database(DatabaseFactory::create(entry));
    database->setCreateIfNotExist(true);
    if (!DatabaseFactory::open(database.get(), &config, list.group(index))) {
        err << database->lastError() << "\n";
        return 1;
    }
    std::unique_ptr<Query> query(database->query());
    // A new database has its settings row with the program's defaults.
    Settings settings;
    if (query->fetchSettings() && query->next())
        query->settings(&settings);
    const bool filled
        = database->transaction() && fill(query.get(), &settings) && database->commit();
    if (!filled) {
        err << query->lastError() << database->lastError() << "\n";
        return 1;
    }
    list.setLastUsed(number);
    list.write();
    config.sync();
    return 0;
}
