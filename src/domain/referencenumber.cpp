#include "referencenumber.h"

#include "invoice.h"

#include <QRegularExpression>

namespace {

const QString rfPrefix = QStringLiteral("RF");
// "RF", two check digits and at least one character; at most 25 in all.
const int rfMinLength = 5;
const int rfMaxLength = 25;
const int rfHeadLength = 4;

} // namespace

QString ReferenceNumber::compact(const QString& text)
{
    QString result = text;
    result.remove(QLatin1Char(' '));
    return result.toUpper();
}

bool ReferenceNumber::isValid(const QString& reference)
{
    const QString text = compact(reference);
    if (text.startsWith(rfPrefix)) {
        if (text.size() < rfMinLength || text.size() > rfMaxLength)
            return false;
        return Invoice::referenceNumberToRf(text.mid(rfHeadLength)) == text;
    }
    static const QRegularExpression digits(QStringLiteral("^\\d{4,20}$"));
    if (!digits.match(text).hasMatch())
        return false;
    return Invoice::calculateReferenceNumberCheckDigit(text.chopped(1)) == text.right(1).toInt();
}

QString ReferenceNumber::national(const QString& base)
{
    const QString text = compact(base);
    static const QRegularExpression digits(QStringLiteral("^\\d{1,19}$"));
    if (!digits.match(text).hasMatch())
        return QString();
    return Invoice::appendCheckDigitToReferenceNumber(text);
}

QString ReferenceNumber::rf(const QString& base)
{
    const QString reference = national(base);
    return reference.isEmpty() ? QString() : Invoice::referenceNumberToRf(reference);
}
