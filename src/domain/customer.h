#ifndef CUSTOMER_H
#define CUSTOMER_H

#include <QMap>
#include <QString>
#include <QVariant>

// A customer (table customer). Customers are never deleted, only marked.
// The property map uses short keys: "l" language, "c1"/"c2" free fields,
// "e1" e-invoice intermediator, "e2" e-invoice address, "e3" OVT identifier.
class Customer
{
public:
    Customer();

    void clear();
    void copy(Customer* target) const;

    QVariant property(const QString& key, const QVariant& defaultValue = QVariant()) const;
    void setProperty(const QString& key, const QVariant& value);
    void setPropertyIfNotEmpty(const QString& key, const QString& value);
    void removeProperties(const QString& prefix);
    QString propertiesToString() const;
    void propertiesFromString(const QString& text);

    // Finnish business ids ("1234567-1") and VAT numbers ("FI12345671").
    static bool isValidBusinessId(const QString& businessId);
    static bool isValidVatNumber(const QString& vatNumber);
    static bool isValidVatNumberOrBusinessId(const QString& text);
    static QString convertVatNumberToBusinessId(const QString& vatNumber);
    static QString convertBusinessIdToVatNumber(const QString& businessId);
    static int businessIdCheckDigit(const QString& sevenDigits);

    int id;
    int number;
    QString name;
    QString streetName;
    QString postCode;
    QString townName;
    QString country;
    QString contact;
    QString vatNumber;
    QString referenceNumber;
    QString emailAddress;
    QString phoneNumber;
    QString paymentTerms;
    bool deleted;
    QMap<QString, QVariant> properties;
};

#endif // CUSTOMER_H
