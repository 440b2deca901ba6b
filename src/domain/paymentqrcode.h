#ifndef PAYMENTQRCODE_H
#define PAYMENTQRCODE_H

#include <QString>

// The text of the European credit-transfer QR code (service tag "BCD",
// version 002, UTF-8, SCT) that bank apps read to fill in a payment.
class PaymentQrCode
{
public:
    // Amounts are cents; the format allows 0,01 to 999 999 999,99 euros.
    static constexpr qint64 maxAmount = 99999999999;
    static constexpr int maxNameLength = 70;
    static constexpr int maxCreditorReferenceLength = 35;
    static constexpr int maxRemittanceLength = 140;

    // One field a line: BIC, the payee's name (cut to 70 characters), the
    // IBAN, the amount in euros, and the reference: an RF reference as the
    // structured creditor reference, a national one as the remittance text.
    // Empty when the amount is out of range, the IBAN is not valid, the name
    // is empty or the reference too long for its field: a code that a bank
    // app refuses should not be printed, and a cut reference pays wrong.
    static QString text(const QString& name, const QString& iban, const QString& bic, qint64 amount,
        const QString& reference);
};

#endif // PAYMENTQRCODE_H
