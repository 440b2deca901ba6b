#ifndef INVOICE_H
#define INVOICE_H

#include <QDate>
#include <QMap>
#include <QString>
#include <QVariant>

class BankAccount;

// An invoice (table invoice). Types: 0 invoice, 1 interest-on-arrears
// invoice, 2 credit note, 3 payment reminder, 4 receipt, 5 delivery note.
// Amounts are cents. Properties: "t1"/"t2" notice texts and
// "attributes/NAME" free attributes.
class Invoice
{
public:
    Invoice();

    void clear();
    void copy(Invoice* target) const;

    QVariant property(const QString& key, const QVariant& defaultValue = QVariant()) const;
    void setProperty(const QString& key, const QVariant& value);
    void setPropertyIfNotEmpty(const QString& key, const QString& value);
    void removePropertiesWithPrefix(const QString& prefix);
    QMap<QString, QVariant> propertiesWithPrefix(const QString& prefix) const;
    void setProperties(const QMap<QString, QVariant>& map);
    QString propertiesToString() const;
    void propertiesFromString(const QString& text);

    // The first number in the payment terms is the number of days to the due
    // date; terms without a number give no due date.
    QDate calculateDueDate() const;

    // The virtual bank barcode (versions 4 and 5); empty when it cannot be made.
    QString barcode(const BankAccount* account, int version, bool useBalance) const;
    QString barcode(const BankAccount* account) const;

    // Finnish national reference numbers (7-3-1 check digit) and the
    // ISO 11649 RF creditor reference.
    static int calculateReferenceNumberCheckDigit(const QString& digits);
    static QString appendCheckDigitToReferenceNumber(const QString& text);
    static bool isValidReferenceNumber(const QString& text);
    static QString formatReferenceNumber(const QString& text);
    static QString formatRfReferenceNumber(const QString& text);
    static QString formatSpyReferenceNumber(const QString& text);
    static QString referenceNumberToRf(const QString& reference);

    int id;
    int customerId;
    int type;
    int number;
    QDate date;
    QString paymentTerms;
    QString delivery;
    QDate deliveryDate;
    QString buyerRef;
    QString sellerRef;
    int interestOnArrears;
    QDate dueDate;
    QString referenceNumber;
    int totalAmount;
    int balance;
    QMap<QString, QVariant> properties;
};

#endif // INVOICE_H
