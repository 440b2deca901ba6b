#include "invoice.h"
#include "bankaccount.h"
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
    *target = *this;
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
    EntityUtil::setPropertyIfNotEmpty(properties, key, value);
}

void Invoice::removePropertiesWithPrefix(const QString& prefix)
{
    EntityUtil::removePropertiesWithPrefix(properties, prefix);
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

int Invoice::calculateReferenceNumberCheckDigit(const QString& digits)
{
    static const int weights[3] = { 7, 3, 1 };
    int sum = 0;
    int position = 0;
    for (qsizetype i = digits.size() - 1; i >= 0; --i, ++position) {
        // Anything that is not a digit weighs nothing, so that a stray
        // character cannot make the sum negative.
        const int value = qMax(0, digits.at(i).digitValue());
        sum += value * weights[position % 3];
    }
    return (10 - sum % 10) % 10;
}

QString Invoice::appendCheckDigitToReferenceNumber(const QString& text)
{
    // Digits of any script count; they are written as ASCII digits, the only
    // ones a bank accepts in a reference.
    QString digits;
    for (const QChar c : text) {
        if (c.isDigit())
            digits += QChar(u'0' + c.digitValue());
    }
    qsizetype firstNonZero = 0;
    while (firstNonZero < digits.size() && digits.at(firstNonZero) == QLatin1Char('0'))
        ++firstNonZero;
    digits.remove(0, firstNonZero);
    if (digits.isEmpty())
        digits = QStringLiteral("100");
    if (digits.size() > 19)
        digits = digits.right(19);
    // The base must have at least three digits; padding on the right keeps
    // the digits the user typed at the front.
    while (digits.size() < 3)
        digits += QLatin1Char('0');
    return digits + QString::number(calculateReferenceNumberCheckDigit(digits));
}

bool Invoice::isValidReferenceNumber(const QString& text)
{
    // Only the length: the field accepts what the user is still typing.
    return text.size() >= 3 && text.size() <= 19;
}

QString Invoice::formatReferenceNumber(const QString& text)
{
    if (text.startsWith(QLatin1String("RF")))
        return formatRfReferenceNumber(text);
    QString compact = text;
    compact.remove(QLatin1Char(' '));
    QString result;
    for (qsizetype end = compact.size(); end > 0; end -= 5) {
        const qsizetype start = qMax<qsizetype>(0, end - 5);
        if (!result.isEmpty())
            result.prepend(QLatin1Char(' '));
        result.prepend(compact.mid(start, end - start));
    }
    return result;
}

QString Invoice::formatRfReferenceNumber(const QString& text)
{
    return BankAccount::formatIban(text);
}

QString Invoice::formatSpyReferenceNumber(const QString& text)
{
    return text.rightJustified(20, QLatin1Char('0'));
}

QString Invoice::referenceNumberToRf(const QString& reference)
{
    QString compact = reference;
    compact.remove(QLatin1Char(' '));
    if (compact.isEmpty())
        return QString();
    // The number is far longer than 64 bits, so the remainder is carried
    // along digit by digit; letters count as two digits (A = 10 ... Z = 35).
    int remainder = 0;
    const QString checked = compact + QStringLiteral("RF00");
    for (const QChar c : checked) {
        const ushort u = c.toUpper().unicode();
        if (u >= '0' && u <= '9')
            remainder = (remainder * 10 + (u - '0')) % 97;
        else if (u >= 'A' && u <= 'Z')
            remainder = (remainder * 100 + (u - 'A' + 10)) % 97;
        else
            return QString();
    }
    const int check = 98 - remainder;
    return QStringLiteral("RF") + QString::number(check).rightJustified(2, QLatin1Char('0'))
        + compact;
}

QString Invoice::barcode(const BankAccount* account) const
{
    return barcode(account, 4, false);
}

QString Invoice::barcode(const BankAccount* account, int version, bool useBalance) const
{
    if (version != 4 && version != 5)
        return QString();
    if (!account || account->iban.size() != 18 || !account->iban.startsWith(QLatin1String("FI")))
        return QString();

    const int amount = qMax(0, useBalance ? balance : totalAmount);
    QString reference;
    if (version == 4) {
        reference = QStringLiteral("000") + referenceNumber.rightJustified(20, QLatin1Char('0'));
    } else {
        // The padding zeros go in front of the check digits, not between
        // them and the reference, as this program has always written them.
        reference
            = referenceNumberToRf(referenceNumber).mid(2).rightJustified(23, QLatin1Char('0'));
    }
    const QString due
        = dueDate.isValid() ? dueDate.toString(QStringLiteral("yyMMdd")) : QStringLiteral("000000");

    const QString result = QString::number(version) + account->iban.mid(2)
        + QString::number(amount).rightJustified(8, QLatin1Char('0')) + reference + due;
    // A barcode made of anything but digits could not be printed or read.
    for (const QChar c : result) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return QString();
    }
    return result;
}
