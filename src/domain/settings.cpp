#include "settings.h"
#include "entityutil.h"
#include "settingskeys.h"

Settings::Settings()
{
    clear();
}

void Settings::clear()
{
    sellerName.clear();
    sellerStreetName.clear();
    sellerPostCode.clear();
    sellerTownName.clear();
    sellerCountry.clear();
    sellerBusinessId.clear();
    sellerLogo.clear();
    properties.clear();
}

void Settings::copy(Settings* target) const
{
    *target = *this;
}

QVariant Settings::property(const QString& key, const QVariant& defaultValue) const
{
    return properties.value(key, defaultValue);
}

void Settings::setProperty(const QString& key, const QVariant& value)
{
    properties.insert(key, value);
}

void Settings::setPropertyIfNotEmpty(const QString& key, const QString& value)
{
    EntityUtil::setPropertyIfNotEmpty(properties, key, value);
}

void Settings::removeProperty(const QString& key)
{
    properties.remove(key);
}

void Settings::removeProperties(const QString& prefix)
{
    EntityUtil::removePropertiesWithPrefix(properties, prefix);
}

QString Settings::propertiesToString() const
{
    return EntityUtil::propertiesToString(properties);
}

void Settings::propertiesFromString(const QString& text)
{
    EntityUtil::propertiesFromString(text, properties);
}

QString Settings::referenceNumberTemplate() const
{
    const QString configured = property(SettingsKeys::referenceNumberTemplate).toString();
    if (!configured.isEmpty())
        return configured;
    // Older databases kept only a suffix appended to the invoice number.
    QString suffix = property(SettingsKeys::referenceNumberSuffix).toString();
    if (suffix.isEmpty())
        return QStringLiteral("{I}00");
    if (suffix.size() < 2)
        suffix.prepend(QLatin1Char('0'));
    return QStringLiteral("{I}") + suffix;
}
