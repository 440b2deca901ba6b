#ifndef SETTINGS_H
#define SETTINGS_H

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVariant>

// The company settings: the one row of the table settings. Most invoicing
// settings are keys of the property map ("settings/paymentTerms",
// "invoiceForm/noticeText1", "finvoice/senderId", ...).
class Settings
{
public:
    Settings();

    void clear();
    void copy(Settings* target) const;

    QVariant property(const QString& key, const QVariant& defaultValue = QVariant()) const;
    void setProperty(const QString& key, const QVariant& value);
    void setPropertyIfNotEmpty(const QString& key, const QString& value);
    void removeProperty(const QString& key);
    void removeProperties(const QString& prefix);
    QString propertiesToString() const;
    void propertiesFromString(const QString& text);

    // The template of new reference numbers, e.g. "{I}00".
    QString referenceNumberTemplate() const;

    QString sellerName;
    QString sellerStreetName;
    QString sellerPostCode;
    QString sellerTownName;
    QString sellerCountry;
    QString sellerBusinessId;
    QByteArray sellerLogo;
    QMap<QString, QVariant> properties;
};

#endif // SETTINGS_H
