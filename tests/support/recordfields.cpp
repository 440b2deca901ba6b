#include "recordfields.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoicecriteria.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "domain/printscript.h"
#include "domain/product.h"
#include "domain/settings.h"

#include <QDate>
#include <QVariant>

namespace {

QString field(const char* name, const QVariant& value)
{
    const QString text = value.typeId() == QMetaType::QByteArray
        ? QString::fromLatin1(value.toByteArray().toHex())
        : value.toString();
    return QLatin1String(name) + QLatin1Char('=') + text;
}

QStringList withProperties(QStringList fields, const QMap<QString, QVariant>& properties)
{
    for (auto it = properties.cbegin(); it != properties.cend(); ++it)
        fields.append(
            QStringLiteral("property ") + it.key() + QLatin1Char('=') + it.value().toString());
    return fields;
}

} // namespace

QStringList RecordFields::of(const BankAccount& a)
{
    return { field("id", a.id), field("name", a.name), field("shortName", a.shortName),
        field("iban", a.iban), field("bic", a.bic), field("rowNumber", a.rowNumber),
        field("visible", a.visible), field("deleted", a.deleted) };
}

QStringList RecordFields::of(const Customer& c)
{
    return withProperties(
        { field("id", c.id), field("number", c.number), field("name", c.name),
            field("streetName", c.streetName), field("postCode", c.postCode),
            field("townName", c.townName), field("country", c.country), field("contact", c.contact),
            field("vatNumber", c.vatNumber), field("referenceNumber", c.referenceNumber),
            field("emailAddress", c.emailAddress), field("phoneNumber", c.phoneNumber),
            field("paymentTerms", c.paymentTerms), field("deleted", c.deleted) },
        c.properties);
}

QStringList RecordFields::of(const Invoice& i)
{
    return withProperties(
        { field("id", i.id), field("customerId", i.customerId), field("type", i.type),
            field("number", i.number), field("date", i.date), field("paymentTerms", i.paymentTerms),
            field("delivery", i.delivery), field("deliveryDate", i.deliveryDate),
            field("buyerRef", i.buyerRef), field("sellerRef", i.sellerRef),
            field("interestOnArrears", i.interestOnArrears), field("dueDate", i.dueDate),
            field("referenceNumber", i.referenceNumber), field("totalAmount", i.totalAmount),
            field("balance", i.balance) },
        i.properties);
}

QStringList RecordFields::of(const InvoiceItem& r)
{
    return { field("id", r.id), field("invoiceId", r.invoiceId),
        field("productNumber", r.productNumber), field("productName", r.productName),
        field("quantity", r.quantity), field("unitCode", r.unitCode), field("amount", r.amount),
        field("vatRate", r.vatRate), field("vatExcluded", r.vatExcluded),
        field("discount", r.discount), field("text", r.text), field("rowNumber", r.rowNumber) };
}

QStringList RecordFields::of(const InvoiceCriteria& c)
{
    return { field("dateFrom", c.dateFrom), field("dateTo", c.dateTo),
        field("dueDateFrom", c.dueDateFrom), field("dueDateTo", c.dueDateTo),
        field("deliveryDateFrom", c.deliveryDateFrom), field("deliveryDateTo", c.deliveryDateTo),
        field("numberFrom", c.numberFrom), field("numberTo", c.numberTo), field("number", c.number),
        field("id", c.id), field("customerId", c.customerId), field("types", c.types),
        field("paymentStatus", c.paymentStatus), field("balanceDate", c.balanceDate),
        field("referenceNumber", c.referenceNumber), field("text", c.text), field("limit", c.limit),
        field("descending", c.descending) };
}

QStringList RecordFields::of(const Payment& p)
{
    return { field("id", p.id), field("invoiceId", p.invoiceId), field("date", p.date),
        field("bankAccountId", p.bankAccountId), field("amount", p.amount) };
}

QStringList RecordFields::of(const PrintScript& s)
{
    return { field("id", s.id), field("type", s.type), field("name", s.name),
        field("sourceCode", s.sourceCode) };
}

QStringList RecordFields::of(const Product& p)
{
    return { field("id", p.id), field("number", p.number), field("name", p.name),
        field("unitCode", p.unitCode), field("amount", p.amount), field("vatRate", p.vatRate),
        field("vatExcluded", p.vatExcluded), field("category", p.category) };
}

QStringList RecordFields::of(const Settings& s)
{
    return withProperties(
        { field("sellerName", s.sellerName), field("sellerStreetName", s.sellerStreetName),
            field("sellerPostCode", s.sellerPostCode), field("sellerTownName", s.sellerTownName),
            field("sellerCountry", s.sellerCountry), field("sellerBusinessId", s.sellerBusinessId),
            field("sellerLogo", s.sellerLogo) },
        s.properties);
}
