#include "recordfields.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoicecriteria.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
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

#define F(name) field(#name, r.name)

QStringList RecordFields::of(const BankAccount& r)
{
    return { F(id), F(name), F(shortName), F(iban), F(bic), F(rowNumber), F(visible), F(deleted) };
}

QStringList RecordFields::of(const Customer& r)
{
    return withProperties({ F(id), F(number), F(name), F(streetName), F(postCode), F(townName),
                              F(country), F(contact), F(vatNumber), F(referenceNumber),
                              F(emailAddress), F(phoneNumber), F(paymentTerms), F(deleted) },
        r.properties);
}

QStringList RecordFields::of(const Invoice& r)
{
    return withProperties(
        { F(id), F(customerId), F(type), F(number), F(date), F(paymentTerms), F(delivery),
            F(deliveryDate), F(buyerRef), F(sellerRef), F(interestOnArrears), F(dueDate),
            F(referenceNumber), F(totalAmount), F(balance) },
        r.properties);
}

QStringList RecordFields::of(const InvoiceItem& r)
{
    return { F(id), F(invoiceId), F(productNumber), F(productName), F(quantity), F(unitCode),
        F(amount), F(vatRate), F(vatExcluded), F(discount), F(text), F(rowNumber) };
}

QStringList RecordFields::of(const InvoiceCriteria& r)
{
    return { F(dateFrom), F(dateTo), F(dueDateFrom), F(dueDateTo), F(deliveryDateFrom),
        F(deliveryDateTo), F(numberFrom), F(numberTo), F(number), F(id), F(customerId), F(types),
        F(paymentStatus), F(balanceDate), F(referenceNumber), F(text), F(limit), F(descending) };
}

QStringList RecordFields::of(const Payment& r)
{
    return { F(id), F(invoiceId), F(date), F(bankAccountId), F(amount) };
}

QStringList RecordFields::of(const Product& r)
{
    return { F(id), F(number), F(name), F(unitCode), F(amount), F(vatRate), F(vatExcluded),
        F(category) };
}

QStringList RecordFields::of(const Settings& r)
{
    return withProperties(
        { F(sellerName), F(sellerStreetName), F(sellerPostCode), F(sellerTownName),
            F(sellerCountry), F(sellerBusinessId), F(sellerLogo) },
        r.properties);
}
