#include "paymentqrcode.h"

#include "bankaccount.h"
#include "referencenumber.h"

#include <QStringList>

namespace {
const QString serviceTag = QStringLiteral("BCD");
const QString version = QStringLiteral("002");
const QString utf8 = QStringLiteral("1");
const QString sepaCreditTransfer = QStringLiteral("SCT");
const QString currency = QStringLiteral("EUR");
const QString rfPrefix = QStringLiteral("RF");
const int centsPerEuro = 100;
} // namespace

QString PaymentQrCode::text(const QString& name, const QString& iban, const QString& bic,
    qint64 amount, const QString& reference)
{
    const QString payee = name.simplified().left(maxNameLength);
    const QString account = ReferenceNumber::compact(iban);
    if (amount <= 0 || amount > maxAmount || payee.isEmpty() || !BankAccount::isValidIban(account))
        return QString();

    const QString euros = QStringLiteral("%1.%2")
                              .arg(amount / centsPerEuro)
                              .arg(amount % centsPerEuro, 2, 10, QLatin1Char('0'));
    const QString ref = ReferenceNumber::compact(reference);
    const bool rf = ref.startsWith(rfPrefix);
    if (ref.size() > (rf ? maxCreditorReferenceLength : maxRemittanceLength))
        return QString();
    // Purpose, structured reference, remittance text; empty trailing lines are left out.
    QStringList lines { serviceTag, version, utf8, sepaCreditTransfer,
        ReferenceNumber::compact(bic), payee, account, currency + euros, QString(),
        rf ? ref : QString(), rf ? QString() : ref };
    while (lines.last().isEmpty())
        lines.removeLast();
    return lines.join(QLatin1Char('\n'));
}
