// veklari-samplecompany CONFIG: a small design business in a new SQLite
// database, entered in the configuration file CONFIG (created when missing)
// as the database to open. The screenshots of the user guide show it. Beside
// CONFIG it writes a bank's reference payment file paying some of the
// invoices and a directory of time entries, both remembered in CONFIG as the
// import dialogs remember them.

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
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMap>
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
    int paidPercent; // of the total
    int paidDaysLate; // after the due date; negative is before it
};

// What the bank file pays.
struct Paid
{
    QString reference;
    QString payer;
    int amount; // cents
};

bool fill(Query* query, Settings* settings, QList<Paid>* bankFile)
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

    // Oldest first. Rautakauppa Virtanen pays late, so the interest panel has
    // rows; the bank file pays the open invoices of 1004 and 1005.
    const QList<SampleInvoice> invoices {
        { 0, 80, InvoiceType::Invoice,
            { { 1, 10000, "" }, { 0, 60000, "Luonnokset ja korjaukset" } }, 100, 18 },
        { 2, 55, InvoiceType::Invoice, { { 3, 2000000, "Näyttelyn esite" } }, 100, -3 },
        { 0, 45, InvoiceType::Invoice, { { 0, 40000, "Kylttien suunnittelu" } }, 40, 10 },
        { 0, 30, InvoiceType::Invoice, { { 2, 30000, "Tuotekuvat verkkokauppaan" } }, 0, 0 },
        { 1, 12, InvoiceType::Invoice,
            { { 0, 45000, "Menukortin taitto" }, { 2, 20000, "Tuotekuvat verkkosivuille" } }, 0,
            0 },
        { 0, 3, InvoiceType::Invoice,
            { { 0, 75000, "Esitteen taitto ja kuvankäsittely" }, { 2, 30000, "Tuotekuvat" },
                { 3, 500000, "" } },
            30, -10 },
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
            payment.date = qMin(invoice.dueDate.addDays(sample.paidDaysLate), today);
            payment.bankAccountId = account.id;
            payment.amount = paid;
            if (!query->savePayment(&payment))
                return false;
        }
        if (invoice.number == 1004 || invoice.number == 1005)
            bankFile->append(
                { invoice.referenceNumber, customers.at(sample.customer).at(0), invoice.balance });
    }
    // Ravelo's own names for the customers and work types, mapped as the
    // time-entry dialog keeps them, with its rounding to quarter hours up.
    const QList<QPair<QString, int>> raveloCustomers { { QStringLiteral("Aamukaste"),
                                                           customerIds.at(1) },
        { QStringLiteral("Taideyhdistys"), customerIds.at(2) } };
    const QList<QPair<QString, int>> workTypes { { QStringLiteral("Kuvaus"), products.at(2).id },
        { QStringLiteral("Palaveri"), products.at(0).id },
        { QStringLiteral("Suunnittelu"), products.at(0).id } };
    for (int i = 0; i < raveloCustomers.size(); ++i) {
        settings->setProperty(SettingsKeys::raveloCustomerName.arg(i), raveloCustomers.at(i).first);
        settings->setProperty(SettingsKeys::raveloCustomerId.arg(i), raveloCustomers.at(i).second);
    }
    for (int i = 0; i < workTypes.size(); ++i) {
        settings->setProperty(SettingsKeys::raveloWorkTypeName.arg(i), workTypes.at(i).first);
        settings->setProperty(SettingsKeys::raveloWorkTypeProduct.arg(i), workTypes.at(i).second);
    }
    settings->setProperty(SettingsKeys::raveloRoundingStep, 15);
    // A customer group for group invoicing.
    settings->setProperty(SettingsKeys::groupName.arg(0), QStringLiteral("Kuukausiasiakkaat"));
    settings->setProperty(SettingsKeys::groupCustomers.arg(0),
        QStringLiteral("%1,%2").arg(customerIds.at(1)).arg(customerIds.at(2)));
    if (!query->updateSettings(settings))
        return false;

    // A payment whose reference no invoice has.
    bankFile->append({ QStringLiteral("12344"), QStringLiteral("Mäkelä Anna"), 5000 });
    return true;
}

// Incoming reference payments as the bank sends them: 90-character records,
// the account in its machine form, amounts in cents.
bool writeReferencePayments(const QString& path, const QString& iban, const QList<Paid>& paid)
{
    const QDate today = QDate::currentDate();
    const QString date = today.toString(QStringLiteral("yyMMdd"));
    const QString paymentDate = today.addDays(-1).toString(QStringLiteral("yyMMdd"));
    QStringList records { QLatin1Char('0') + date + QStringLiteral("0815011234567891") };
    int number = 0;
    long long sum = 0;
    for (const Paid& payment : paid) {
        ++number;
        sum += payment.amount;
        records.append(
            QStringLiteral("3%1%2%3%4%5%6%7%8%9")
                .arg(iban.mid(4), date, paymentDate)
                .arg(date + QStringLiteral("5UTT%1").arg(number, 6, 10, QLatin1Char('0')))
                .arg(payment.reference, 20, QLatin1Char('0'))
                .arg(payment.payer.left(12), -12)
                .arg(QStringLiteral("1A"))
                .arg(payment.amount, 10, 10, QLatin1Char('0'))
                .arg(QStringLiteral("0A ")));
    }
    records.append(QStringLiteral("9%1%2%3")
                       .arg(number, 6, 10, QLatin1Char('0'))
                       .arg(sum, 11, 10, QLatin1Char('0'))
                       .arg(QString(17, QLatin1Char('0'))));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    for (const QString& record : records)
        file.write(record.leftJustified(90, QLatin1Char(' ')).toUtf8() + "\r\n");
    return file.flush();
}

// Two months of time entries; the dialog offers the month of fifteen days ago.
bool writeTimeEntries(const QString& directory)
{
    const QDate month = QDate::currentDate().addDays(-15);
    const struct
    {
        int monthsBack;
        int day;
        const char* start;
        const char* end;
        const char* customer;
        const char* workType;
        const char* description;
    } entries[] = {
        { 0, 3, "8:30", "11:45", "Aamukaste", "Suunnittelu", "Kevätmenun taitto" },
        { 0, 4, "9:00", "12:10", "Aamukaste", "Kuvaus", "Annoskuvat" },
        { 0, 10, "13:00", "15:20", "Aamukaste", "Suunnittelu", "Menun korjaukset" },
        { 0, 6, "9:00", "16:30", "Taideyhdistys", "Kuvaus", "Näyttelyn avajaiset" },
        { 0, 12, "10:00", "14:40", "Taideyhdistys", "Suunnittelu", "Julisteen taitto" },
        { 0, 17, "8:15", "9:00", "Taideyhdistys", "Palaveri", "Syksyn ohjelma" },
        { 1, 20, "9:00", "11:00", "Aamukaste", "Suunnittelu", "Logoluonnokset" },
    };
    QMap<QString, QStringList> files;
    for (const auto& entry : entries) {
        const QDate first = month.addMonths(-entry.monthsBack);
        const QDate date(first.year(), first.month(), entry.day);
        files[date.toString(QStringLiteral("yyyy-MM")) + QStringLiteral(".rvt")].append(
            QStringList { date.toString(Qt::ISODate), QString::fromUtf8(entry.start),
                QString::fromUtf8(entry.end), QString::fromUtf8(entry.customer),
                QString::fromUtf8(entry.workType), QString::fromUtf8(entry.description) }
                .join(QLatin1Char('\t')));
    }
    for (auto it = files.cbegin(); it != files.cend(); ++it) {
        QFile file(directory + QLatin1Char('/') + it.key());
        if (!file.open(QIODevice::WriteOnly))
            return false;
        file.write("date\tstart\tend\tcustomer\tworktype\tdescription\n");
        file.write(it.value().join(QLatin1Char('\n')).toUtf8() + '\n');
        if (!file.flush())
            return false;
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
    QList<Paid> paid;
    const bool filled
        = database->transaction() && fill(query.get(), &settings, &paid) && database->commit();
    if (!filled) {
        err << query->lastError() << database->lastError() << "\n";
        return 1;
    }
    const QDir beside = QFileInfo(app.arguments().at(1)).absoluteDir();
    const QString bankFile = beside.absoluteFilePath(QStringLiteral("viitesiirrot.txt"));
    const QString entries = beside.absoluteFilePath(QStringLiteral("ravelo"));
    if (!writeReferencePayments(bankFile, QStringLiteral("FI3457200020086597"), paid)
        || !beside.mkpath(entries) || !writeTimeEntries(entries)) {
        err << "Cannot write the sample files beside " << app.arguments().at(1) << "\n";
        return 1;
    }
    config.setValue(QStringLiteral("incomingReferencePayments/filename"), bankFile);
    config.setValue(QStringLiteral("ravelo/directory"), entries);
    // The desktop's default mail program.
    config.setValue(QStringLiteral("email/app"), QStringLiteral("Järjestelmän oletus"));
    config.setValue(QStringLiteral("email/appPath"), QStringLiteral("/usr/bin/xdg-email"));
    list.setLastUsed(number);
    list.write();
    config.sync();
    return 0;
}
