#include "invoiceprintmodel.h"

#include "core/registry.h"
#include "csvwriter.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/decimal.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/invoicetype.h"
#include "domain/paymentqrcode.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "listreportformat.h"
#include "storage/database.h"
#include "storage/query.h"

#include <memory>

InvoicePrintModel::InvoicePrintModel(Registry* registry, QObject* parent)
    : PrintModel(parent), m_registry(registry), m_title(tr("Lasku"))
{
}

InvoicePrintModel::~InvoicePrintModel()
{
    clear();
}

void InvoicePrintModel::clear()
{
    qDeleteAll(m_invoices);
    m_invoices.clear();
    qDeleteAll(m_items);
    m_items.clear();
    qDeleteAll(m_bankAccounts);
    m_bankAccounts.clear();
    m_logo = QImage();
    m_sellerLoaded = false;
    m_cacheIndex = -1;
}

Invoice* InvoicePrintModel::invoice(int index) const
{
    return index >= 0 && index < m_invoices.size() ? m_invoices.at(index) : nullptr;
}

bool InvoicePrintModel::run()
{
    clear();
    m_lastError.clear();
    Database* database = m_registry ? m_registry->database() : nullptr;
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu");
        return false;
    }
    std::unique_ptr<Query> query(database->query());
    if (!query->fetchInvoiceDetails(m_criteria)) {
        m_lastError = query->lastError();
        return false;
    }
    while (query->next()) {
        auto* invoice = new Invoice;
        query->invoiceDetails(invoice);
        m_invoices.append(invoice);
    }
    if (!query->fetchInvoiceItems(m_criteria)) {
        m_lastError = query->lastError();
        clear();
        return false;
    }
    while (query->next()) {
        auto* item = new InvoiceItem;
        query->invoiceItem(item);
        m_items.append(item);
    }
    return loadSellerData();
}

bool InvoicePrintModel::loadSellerData()
{
    qDeleteAll(m_bankAccounts);
    m_bankAccounts.clear();
    m_logo = QImage();
    if (m_registry) {
        m_registry->copyBankAccountsTo(m_bankAccounts);
        if (const Settings* settings = m_registry->settings()) {
            if (!settings->sellerLogo.isEmpty())
                m_logo = QImage::fromData(settings->sellerLogo);
        }
    }
    bool ok = false;
    const int mode = setting(SettingsKeys::roundingMode).toInt(&ok);
    m_roundingMode = ok ? mode : 1;
    m_sellerLoaded = true;
    m_cacheIndex = -1;
    return true;
}

void InvoicePrintModel::copyInvoice(InvoicePrintModel* source, int index)
{
    const Invoice* original = source->invoice(index);
    if (!original)
        return;
    if (!m_sellerLoaded) {
        for (const BankAccount* account : std::as_const(source->m_bankAccounts)) {
            auto* copy = new BankAccount;
            account->copy(copy);
            m_bankAccounts.append(copy);
        }
        m_logo = source->m_logo;
        m_roundingMode = source->m_roundingMode;
        m_sellerLoaded = true;
    }
    auto* invoice = new Invoice;
    original->copy(invoice);
    m_invoices.append(invoice);
    const QList<InvoiceItem*> items = source->invoiceItems(index);
    for (const InvoiceItem* item : items) {
        auto* copy = new InvoiceItem;
        item->copy(copy);
        m_items.append(copy);
    }
    m_cacheIndex = -1;
}

void InvoicePrintModel::locateItems(int index)
{
    if (index == m_cacheIndex)
        return;
    m_cacheIndex = index;
    m_cacheOffset = 0;
    m_cacheCount = 0;
    m_cacheVat.clear();
    m_cacheVat.setRoundingMode(m_roundingMode);
    const Invoice* owner = invoice(index);
    if (!owner)
        return;
    // The rows of one invoice lie together in the list.
    int offset = 0;
    while (offset < m_items.size() && m_items.at(offset)->invoiceId != owner->id)
        ++offset;
    int count = 0;
    while (offset + count < m_items.size() && m_items.at(offset + count)->invoiceId == owner->id) {
        // Description-only rows carry no amount and would add an empty rate.
        const InvoiceItem* item = m_items.at(offset + count);
        if (item->quantity != 0)
            m_cacheVat.addInvoiceItem(item);
        ++count;
    }
    m_cacheOffset = offset;
    m_cacheCount = count;
}

QList<InvoiceItem*> InvoicePrintModel::invoiceItems(int index)
{
    locateItems(index);
    return m_items.mid(m_cacheOffset, m_cacheCount);
}

int InvoicePrintModel::printedType(const Invoice* invoice) const
{
    if (m_printType > 0)
        return m_printType;
    // Stored types past the credit note are printed two places further on.
    return invoice->type <= InvoiceType::CreditNote ? invoice->type : invoice->type + 2;
}

QString InvoicePrintModel::typeName(int printedType)
{
    return InvoiceType::name(printedType).toLower();
}

QList<BankAccount*> InvoicePrintModel::visibleBankAccounts() const
{
    QList<BankAccount*> accounts;
    for (BankAccount* account : m_bankAccounts) {
        if (account->visible && !account->deleted)
            accounts.append(account);
    }
    return accounts;
}

QString InvoicePrintModel::createBarcode(Invoice* invoice, int version, bool useBalance) const
{
    const QList<BankAccount*> accounts = visibleBankAccounts();
    if (!invoice || accounts.isEmpty())
        return QString("");
    return invoice->barcode(accounts.first(), version, useBalance);
}

QString InvoicePrintModel::createQrCode(Invoice* invoice, bool useBalance) const
{
    const QList<BankAccount*> accounts = visibleBankAccounts();
    const Settings* settings = m_registry ? m_registry->settings() : nullptr;
    if (!invoice || accounts.isEmpty() || !settings)
        return QString("");
    const BankAccount* account = accounts.first();
    return PaymentQrCode::text(settings->sellerName, account->iban, account->bic,
        useBalance ? invoice->balance : invoice->totalAmount, invoice->referenceNumber);
}

QVariant InvoicePrintModel::setting(const QString& key) const
{
    const Settings* settings = m_registry ? m_registry->settings() : nullptr;
    return settings ? settings->property(key) : QVariant();
}

const Customer* InvoicePrintModel::customerOf(const Invoice* invoice) const
{
    return invoice ? customerById(m_registry, invoice->customerId) : nullptr;
}

QVariant InvoicePrintModel::value(QStringList& path)
{
    if (path.isEmpty())
        return QVariant();
    const QString& root = path.at(0);
    if (root == QLatin1String("invoices"))
        return invoiceValue(path);
    if (root == QLatin1String("seller"))
        return sellerValue(path);
    if (root == QLatin1String("settings"))
        return settingsValue(path);
    return QVariant();
}

QImage InvoicePrintModel::image(QStringList& path)
{
    if (path.size() == 2 && path.at(0) == QLatin1String("seller")
        && path.at(1) == QLatin1String("logo"))
        return m_logo;
    return QImage();
}

QVariant InvoicePrintModel::invoiceValue(const QStringList& path)
{
    if (path.size() == 2 && path.at(1) == QLatin1String("length"))
        return int(m_invoices.size());
    if (path.size() < 3)
        return QVariant();
    bool ok = false;
    const int index = path.at(1).toInt(&ok);
    if (!ok || index < 0 || index >= m_invoices.size())
        return QVariant();
    return invoiceField(index, path.at(2), path);
}

QVariant InvoicePrintModel::invoiceField(int index, const QString& key, const QStringList& path)
{
    Invoice* invoice = m_invoices.at(index);
    if (path.size() == 3) {
        if (key == QLatin1String("type"))
            return printedType(invoice);
        if (key == QLatin1String("number"))
            return invoice->number;
        if (key == QLatin1String("date"))
            return invoice->date;
        if (key == QLatin1String("dueDate"))
            return invoice->dueDate;
        if (key == QLatin1String("deliveryDate"))
            return invoice->deliveryDate;
        if (key == QLatin1String("hasDeliveryDate"))
            return invoice->deliveryDate.isValid();
        if (key == QLatin1String("paymentTerms"))
            return invoice->paymentTerms;
        if (key == QLatin1String("delivery"))
            return invoice->delivery;
        if (key == QLatin1String("buyerRef"))
            return invoice->buyerRef;
        if (key == QLatin1String("sellerRef"))
            return invoice->sellerRef;
        if (key == QLatin1String("interestOnArrears"))
            return Decimal(invoice->interestOnArrears, 2).toVariant();
        if (key == QLatin1String("periodForComplaints")) {
            const QString own = invoice->property(QStringLiteral("periodForComplaints")).toString();
            if (!own.isEmpty())
                return own;
            return setting(SettingsKeys::periodForComplaints).toString();
        }
        if (key == QLatin1String("totalAmountVatExcluded")) {
            locateItems(index);
            return money(m_cacheVat.totalAmountVatExcluded());
        }
        if (key == QLatin1String("totalVatAmount")) {
            locateItems(index);
            return money(m_cacheVat.totalVatAmount());
        }
        if (key == QLatin1String("totalAmount")) {
            locateItems(index);
            return money(m_cacheVat.totalAmountVatIncluded());
        }
        if (key == QLatin1String("balance"))
            return money(invoice->balance);
        const QString& reference = invoice->referenceNumber;
        if (key == QLatin1String("referenceNumber"))
            return Invoice::formatReferenceNumber(reference);
        if (key == QLatin1String("referenceNumberRaw"))
            return reference;
        if (key == QLatin1String("referenceNumberSpy"))
            return Invoice::formatSpyReferenceNumber(reference);
        if (key == QLatin1String("referenceNumberRf"))
            return reference.isEmpty()
                ? QString("")
                : Invoice::formatRfReferenceNumber(Invoice::referenceNumberToRf(reference));
        if (key == QLatin1String("referenceNumberRfRaw"))
            return reference.isEmpty() ? QString("") : Invoice::referenceNumberToRf(reference);
        if (key == QLatin1String("barcode") || key == QLatin1String("barcode5"))
            return createBarcode(invoice, 5, false);
        if (key == QLatin1String("barcode4"))
            return createBarcode(invoice, 4, false);
        if (key == QLatin1String("balanceBarcode"))
            return createBarcode(invoice, 5, true);
        if (key == QLatin1String("balanceBarcode4"))
            return createBarcode(invoice, 4, true);
        if (key == QLatin1String("qrCode"))
            return createQrCode(invoice, false);
        if (key == QLatin1String("balanceQrCode"))
            return createQrCode(invoice, true);
        if (key == QLatin1String("noticeText1"))
            return invoice->property(QStringLiteral("t1")).toString();
        if (key == QLatin1String("noticeText2"))
            return invoice->property(QStringLiteral("t2")).toString();
        return QVariant();
    }
    if (key == QLatin1String("attributes"))
        return invoice->property(
            QStringLiteral("attributes/") + path.mid(3).join(QLatin1Char('/')));
    if (path.size() != 4 && path.size() != 5)
        return QVariant();
    if (key == QLatin1String("customer") && path.size() == 4)
        return customerValue(invoice, path.at(3));
    if (key != QLatin1String("items") && key != QLatin1String("vat"))
        return QVariant();
    locateItems(index);
    const bool items = key == QLatin1String("items");
    const int count = items ? m_cacheCount : m_cacheVat.vatRates().size();
    if (path.size() == 4)
        return path.at(3) == QLatin1String("length") ? QVariant(count) : QVariant();
    bool ok = false;
    const int row = path.at(3).toInt(&ok);
    if (!ok || row < 0 || row >= count)
        return QVariant();
    if (items)
        return itemValue(m_items.at(m_cacheOffset + row), path.at(4));
    return vatValue(m_cacheVat.vatRates().at(row), path.at(4));
}

QVariant InvoicePrintModel::customerValue(const Invoice* invoice, const QString& key) const
{
    const Customer* customer = customerOf(invoice);
    Customer none;
    if (!customer)
        customer = &none;
    const QVariant address = addressValue(*customer, key);
    if (address.isValid())
        return address;
    if (key == QLatin1String("contact"))
        return customer->contact;
    // The one field holds either a business id or a VAT number.
    const QString& id = customer->vatNumber;
    if (key == QLatin1String("vatNumber")) {
        if (Customer::isValidBusinessId(id))
            return Customer::convertBusinessIdToVatNumber(id);
        return id;
    }
    if (key == QLatin1String("businessId")) {
        if (Customer::isValidVatNumber(id))
            return Customer::convertVatNumberToBusinessId(id);
        return Customer::isValidBusinessId(id) ? id : QString("");
    }
    if (key == QLatin1String("hasBusinessId"))
        return Customer::isValidVatNumberOrBusinessId(id);
    if (key == QLatin1String("hasVatNumber"))
        return !id.isEmpty();
    if (key == QLatin1String("emailAddress"))
        return customer->emailAddress;
    if (key == QLatin1String("phoneNumber"))
        return customer->phoneNumber;
    static const char* const propertyKeys[][2] = { { "language", "l" }, { "custom1", "c1" },
        { "custom2", "c2" }, { "intermediatorId", "e1" }, { "receiverId", "e2" }, { "edi", "e3" } };
    for (const auto& pair : propertyKeys) {
        if (key == QLatin1String(pair[0]))
            return customer->property(QLatin1String(pair[1]), QString("")).toString();
    }
    return QVariant();
}

QVariant InvoicePrintModel::itemValue(const InvoiceItem* item, const QString& key) const
{
    if (key == QLatin1String("productNumber"))
        return item->productNumber;
    if (key == QLatin1String("productName"))
        return item->productName;
    if (key == QLatin1String("text"))
        return item->text;
    if (key == QLatin1String("quantity"))
        return Decimal(item->quantity, 4).toVariant();
    if (key == QLatin1String("unitCode"))
        return item->unitCode;
    if (key == QLatin1String("amount"))
        return Decimal(item->amountVatIncluded(), 4).toVariant();
    if (key == QLatin1String("amountVatExcluded"))
        return Decimal(item->amountVatExcluded(), 4).toVariant();
    if (key == QLatin1String("discountPercent"))
        return Decimal(item->discount, 2).toVariant();
    if (key == QLatin1String("discountAmount"))
        return money(item->discountAmount());
    if (key == QLatin1String("vatRate"))
        return Decimal(item->vatRate, 2).toVariant();
    if (key == QLatin1String("vatAmount"))
        return Decimal(item->amountVatIncluded() - item->amountVatExcluded(), 4).toVariant();
    if (key == QLatin1String("totalAmount"))
        return money(item->totalAmountVatIncluded());
    if (key == QLatin1String("totalAmountVatExcluded"))
        return money(item->totalAmountVatExcluded());
    if (key == QLatin1String("totalVatAmount"))
        return money(item->totalAmountVatIncluded() - item->totalAmountVatExcluded());
    return QVariant();
}

QVariant InvoicePrintModel::vatValue(int rate, const QString& key) const
{
    if (key == QLatin1String("percent"))
        return Decimal(rate, 2).toVariant();
    if (key == QLatin1String("amountVatExcluded"))
        return money(m_cacheVat.totalAmountVatExcluded(rate));
    if (key == QLatin1String("vatAmount"))
        return money(m_cacheVat.totalVatAmount(rate));
    if (key == QLatin1String("amount"))
        return money(m_cacheVat.totalAmountVatIncluded(rate));
    return QVariant();
}

QVariant InvoicePrintModel::sellerValue(const QStringList& path) const
{
    if (path.size() < 2)
        return QVariant();
    const QString& key = path.at(1);
    if (key == QLatin1String("bankAccounts"))
        return bankAccountValue(visibleBankAccounts(), path);
    if (key == QLatin1String("bankAccountsAll"))
        return bankAccountValue(m_bankAccounts, path);
    if (path.size() != 2)
        return QVariant();
    Settings empty;
    const Settings* settings
        = m_registry && m_registry->settings() ? m_registry->settings() : &empty;
    if (key == QLatin1String("name"))
        return settings->sellerName;
    if (key == QLatin1String("streetName"))
        return settings->sellerStreetName;
    if (key == QLatin1String("postCode"))
        return settings->sellerPostCode;
    if (key == QLatin1String("townName"))
        return settings->sellerTownName;
    if (key == QLatin1String("country"))
        return settings->sellerCountry;
    if (key == QLatin1String("businessId"))
        return settings->sellerBusinessId;
    if (key == QLatin1String("vatNumber")) {
        if (Customer::isValidBusinessId(settings->sellerBusinessId))
            return Customer::convertBusinessIdToVatNumber(settings->sellerBusinessId);
        return QString("");
    }
    if (key == QLatin1String("phoneNumber") || key == QLatin1String("emailAddress")
        || key == QLatin1String("webAddress"))
        return settings->property(SettingsKeys::sellerGroup + key, QString("")).toString();
    if (key == QLatin1String("webAddressShort")) {
        QString address = settings->property(SettingsKeys::webAddress).toString();
        if (address.startsWith(QLatin1String("http://")))
            address.remove(0, 7);
        else if (address.startsWith(QLatin1String("https://")))
            address.remove(0, 8);
        return address.isNull() ? QString("") : address;
    }
    if (key == QLatin1String("edi"))
        return settings->property(SettingsKeys::edi, QString("")).toString();
    if (key == QLatin1String("hasLogo"))
        return !m_logo.isNull();
    return QVariant();
}

QVariant InvoicePrintModel::bankAccountValue(
    const QList<BankAccount*>& accounts, const QStringList& path) const
{
    if (path.size() == 3 && path.at(2) == QLatin1String("length"))
        return int(accounts.size());
    if (path.size() != 4)
        return QVariant();
    bool ok = false;
    const int index = path.at(2).toInt(&ok);
    if (!ok || index < 0 || index >= accounts.size())
        return QVariant();
    const BankAccount* account = accounts.at(index);
    const QString& key = path.at(3);
    if (key == QLatin1String("name"))
        return account->name;
    if (key == QLatin1String("iban"))
        return BankAccount::formatIban(account->iban);
    if (key == QLatin1String("ibanRaw"))
        return account->iban;
    if (key == QLatin1String("bban"))
        return BankAccount::formatBban(BankAccount::ibanToBban(account->iban));
    if (key == QLatin1String("bbanRaw"))
        return BankAccount::ibanToBban(account->iban);
    if (key == QLatin1String("bic"))
        return account->bic;
    if (key == QLatin1String("visible"))
        return account->visible;
    return QVariant();
}

QVariant InvoicePrintModel::settingsValue(const QStringList& path) const
{
    if (path.size() != 2)
        return QVariant();
    const QString& key = path.at(1);
    bool ok = false;
    if (key == QLatin1String("barcodeVisible"))
        return setting(SettingsKeys::barcodeVisible).toBool();
    if (key == QLatin1String("qrCode")) {
        // On unless switched off: databases from before the setting get the code too.
        const QVariant value = setting(SettingsKeys::qrCode);
        return value.toString().isEmpty() || value.toBool();
    }
    if (key == QLatin1String("logoHeight") || key == QLatin1String("invoiceItemOptions")) {
        const int number = setting(SettingsKeys::invoiceFormGroup + key).toInt(&ok);
        return ok ? QVariant(number) : QVariant();
    }
    if (key == QLatin1String("roundingMode"))
        return m_roundingMode;
    if (key == QLatin1String("reminderText") || key == QLatin1String("language"))
        return setting(SettingsKeys::invoiceFormGroup + key).toString();
    if (key == QLatin1String("epiPaymentInstructionId"))
        return setting(SettingsKeys::epiInstructionId).toString();
    if (key == QLatin1String("senderId") || key == QLatin1String("defaultReceiverId")
        || key == QLatin1String("intermediatorId"))
        return setting(SettingsKeys::finvoiceGroup + key).toString();
    if (key.startsWith(QLatin1String("footerText"))) {
        const int number = key.mid(10).toInt(&ok);
        if (!ok || number < 1 || number > 3)
            return QVariant();
        return setting(SettingsKeys::footerText.arg(number)).toString();
    }
    return QVariant();
}

bool InvoicePrintModel::exportToCSV(const QString& fileName, const QString& format)
{
    // The amounts as the list reports write them: plain minus, no grouping.
    auto cents = [](qint64 value) { return ListReportFormat::cents(value); };
    auto percent = [](qint64 value) { return ListReportFormat::number(value, 2, 0); };
    CsvWriter csv(format);
    csv.addRow({ tr("Numero"), tr("Asiakasnumero"), tr("Nimi"), tr("Lähiosoite"), tr("Postinumero"),
        tr("Postitoimipaikka"), tr("Tyyppi"), tr("Päivämäärä"), tr("Eräpäivä"), tr("Maksuehdot"),
        tr("Toimitus"), tr("Viitteenne"), tr("Viitteemme"), tr("Viivästyskorko"), tr("Viitenumero"),
        tr("Veroton"), tr("ALV"), tr("Verollinen"), tr("Avoin saldo") });
    for (int i = 0; i < m_invoices.size(); ++i) {
        const Invoice* invoice = m_invoices.at(i);
        const Customer* customer = customerOf(invoice);
        Customer none;
        if (!customer)
            customer = &none;
        locateItems(i);
        csv.addNumber(QString::number(invoice->number));
        csv.addNumber(customer->number >= 0 ? QString::number(customer->number) : QString());
        csv.addText(customer->name);
        csv.addText(customer->streetName);
        csv.addText(customer->postCode);
        csv.addText(customer->townName);
        csv.addText(typeName(printedType(invoice)));
        csv.addText(ListReportFormat::date(invoice->date));
        csv.addText(ListReportFormat::date(invoice->dueDate));
        csv.addText(invoice->paymentTerms);
        csv.addText(invoice->delivery);
        csv.addText(invoice->buyerRef);
        csv.addText(invoice->sellerRef);
        csv.addNumber(percent(invoice->interestOnArrears));
        csv.addText(Invoice::formatReferenceNumber(invoice->referenceNumber));
        csv.addNumber(cents(m_cacheVat.totalAmountVatExcluded()));
        csv.addNumber(cents(m_cacheVat.totalVatAmount()));
        csv.addNumber(cents(m_cacheVat.totalAmountVatIncluded()));
        csv.addNumber(cents(invoice->balance));
        csv.endRow();
    }
    csv.endRow();
    csv.addRow({ tr("Numero"), tr("Tuotenumero"), tr("Nimi"), tr("Selite"), tr("Määrä"),
        tr("Yksikkö"), tr("à-hinta"), tr("Veroton"), tr("ALV-%"), tr("ALV"), tr("Verollinen") });
    for (int i = 0; i < m_invoices.size(); ++i) {
        const QList<InvoiceItem*> items = invoiceItems(i);
        for (const InvoiceItem* item : items) {
            const qint64 total = item->totalAmountVatIncluded();
            const qint64 totalVatExcluded = item->totalAmountVatExcluded();
            csv.addNumber(QString::number(m_invoices.at(i)->number));
            csv.addText(item->productNumber);
            csv.addText(item->productName);
            csv.addText(item->text);
            csv.addNumber(ListReportFormat::number(item->quantity, 4, 0));
            csv.addText(item->unitCode);
            csv.addNumber(ListReportFormat::number(item->amountVatExcluded(), 4, 2));
            csv.addNumber(cents(totalVatExcluded));
            csv.addNumber(percent(item->vatRate));
            csv.addNumber(cents(total - totalVatExcluded));
            csv.addNumber(cents(total));
            csv.endRow();
        }
    }
    return ListReportFormat::save(csv, fileName, &m_lastError);
}
