#include "customer.h"
#include "entityutil.h"

#include <QRegularExpression>

Customer::Customer()
{
    clear();
}

void Customer::clear()
{
    id = -1;
    number = -1;
    name.clear();
    streetName.clear();
    postCode.clear();
    townName.clear();
    country.clear();
    contact.clear();
    vatNumber.clear();
    referenceNumber.clear();
    emailAddress.clear();
    phoneNumber.clear();
    paymentTerms.clear();
    deleted = false;
    properties.clear();
}

void Customer::copy(Customer* target) const
{
    *target = *this;
}

QVariant Customer::property(const QString& key, const QVariant& defaultValue) const
{
    return properties.value(key, defaultValue);
}

void Customer::setProperty(const QString& key, const QVariant& value)
{
    properties.insert(key, value);
}

void Customer::setPropertyIfNotEmpty(const QString& key, const QString& value)
{
    EntityUtil::setPropertyIfNotEmpty(properties, key, value);
}

void Customer::removeProperties(const QString& prefix)
{
    EntityUtil::removePropertiesWithPrefix(properties, prefix);
}

QString Customer::propertiesToString() const
{
    return EntityUtil::propertiesToString(properties);
}

void Customer::propertiesFromString(const QString& text)
{
    EntityUtil::propertiesFromString(text, properties);
}

int Customer::businessIdCheckDigit(const QString& sevenDigits)
{
    // Modulus 11 with the weights 7, 9, 10, 5, 8, 4, 2; a remainder of 1
    // has no check digit (such numbers are never issued).
    static const int weights[7] = { 7, 9, 10, 5, 8, 4, 2 };
    if (sevenDigits.size() != 7)
        return -1;
    int sum = 0;
    for (int i = 0; i < 7; ++i) {
        const QChar c = sevenDigits.at(i);
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return -1;
        sum += (c.unicode() - '0') * weights[i];
    }
    const int remainder = sum % 11;
    if (remainder == 0)
        return 0;
    if (remainder == 1)
        return -1;
    return 11 - remainder;
}

bool Customer::isValidBusinessId(const QString& businessId)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d{7})-(\\d)$"));
    const QRegularExpressionMatch match = pattern.match(businessId.trimmed());
    if (!match.hasMatch())
        return false;
    return businessIdCheckDigit(match.captured(1)) == match.captured(2).toInt();
}

bool Customer::isValidVatNumber(const QString& vatNumber)
{
    static const QRegularExpression pattern(QStringLiteral("^FI(\\d{7})(\\d)$"));
    QString text = vatNumber.trimmed().toUpper();
    text.remove(QLatin1Char(' '));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return false;
    return businessIdCheckDigit(match.captured(1)) == match.captured(2).toInt();
}

bool Customer::isValidVatNumberOrBusinessId(const QString& text)
{
    return isValidBusinessId(text) || isValidVatNumber(text);
}

QString Customer::convertVatNumberToBusinessId(const QString& vatNumber)
{
    QString text = vatNumber.trimmed().toUpper();
    text.remove(QLatin1Char(' '));
    if (!isValidVatNumber(text))
        return vatNumber;
    return text.mid(2, 7) + QLatin1Char('-') + text.mid(9, 1);
}

QString Customer::convertBusinessIdToVatNumber(const QString& businessId)
{
    const QString text = businessId.trimmed();
    if (!isValidBusinessId(text))
        return businessId;
    return QStringLiteral("FI") + text.left(7) + text.mid(8, 1);
}
