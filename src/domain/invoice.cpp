#include "invoice.h"
#include "entityutil.h"

#include <QRegularExpression>

Invoice::Invoice()
{
    clear();
}

void Invoice::clear()
{
    id = -1;
    customerId = -1;
    type = 0;
    number = 0;
    date = QDate();
    paymentTerms.clear();
    delivery.clear();
    deliveryDate = QDate();
    buyerRef.clear();
    sellerRef.clear();
    interestOnArrears = 0;
    dueDate = QDate();
    referenceNumber.clear();
    totalAmount = 0;
    balance = 0;
    properties.clear();
}

void Invoice::copy(Invoice* target) const
{
    target->id = id;
    target->customerId = customerId;
    target->type = type;
    target->number = number;
    target->date = date;
    target->paymentTerms = paymentTerms;
    target->delivery = delivery;
    target->deliveryDate = deliveryDate;
    target->buyerRef = buyerRef;
    target->sellerRef = sellerRef;
    target->interestOnArrears = interestOnArrears;
    target->dueDate = dueDate;
    target->referenceNumber = referenceNumber;
    target->totalAmount = totalAmount;
    target->balance = balance;
    target->properties = properties;
}

QVariant Invoice::property(const QString& key, const QVariant& defaultValue) const
{
    return properties.value(key, defaultValue);
}

void Invoice::setProperty(const QString& key, const QVariant& value)
{
    properties.insert(key, value);
}

void Invoice::setPropertyIfNotEmpty(const QString& key, const QString& value)
{
    if (value.isEmpty())
        properties.remove(key);
    else
        properties.insert(key, value);
}

void Invoice::removePropertiesWithPrefix(const QString& prefix)
{
    for (auto it = properties.begin(); it != properties.end();) {
        if (it.key().startsWith(prefix))
            it = properties.erase(it);
        else
            ++it;
    }
}

QMap<QString, QVariant> Invoice::propertiesWithPrefix(const QString& prefix) const
{
    QMap<QString, QVariant> result;
    for (auto it = properties.constBegin(); it != properties.constEnd(); ++it) {
        if (it.key().startsWith(prefix))
            result.insert(it.key(), it.value());
    }
    return result;
}

void Invoice::setProperties(const QMap<QString, QVariant>& map)
{
    for (auto it = map.constBegin(); it != map.constEnd(); ++it)
        properties.insert(it.key(), it.value());
}

QString Invoice::propertiesToString() const
{
    return EntityUtil::propertiesToString(properties);
}

void Invoice::propertiesFromString(const QString& text)
{
    EntityUtil::propertiesFromString(text, properties);
}

QDate Invoice::calculateDueDate() const
{
    static const QRegularExpression daysPattern(QStringLiteral("(\\d+)"));
    const QRegularExpressionMatch match = daysPattern.match(paymentTerms);
    if (!match.hasMatch())
        return QDate();
    bool ok = false;
    const int days = match.captured(1).toInt(&ok);
    if (!ok)
        return QDate();
    return date.addDays(days);
}
