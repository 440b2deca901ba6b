#include "ravelomapping.h"

#include "domain/settings.h"
#include "domain/settingskeys.h"

namespace {

// Names may hold any character, "=" too, so they are values under
// numbered keys rather than keys themselves.
void loadMap(
    const Settings& settings, const QString& nameKey, const QString& idKey, QMap<QString, int>& map)
{
    map.clear();
    for (int i = 0;; ++i) {
        const QString name = settings.property(nameKey.arg(i)).toString();
        if (name.isEmpty())
            break;
        bool ok = false;
        const int id = settings.property(idKey.arg(i)).toInt(&ok);
        if (ok && id >= 0)
            map.insert(name, id);
    }
}

void saveMap(Settings* settings, const QString& group, const QString& nameKey, const QString& idKey,
    const QMap<QString, int>& map)
{
    settings->removeProperties(group);
    int i = 0;
    for (auto it = map.cbegin(); it != map.cend(); ++it, ++i) {
        settings->setProperty(nameKey.arg(i), it.key());
        settings->setProperty(idKey.arg(i), it.value());
    }
}

void setId(QMap<QString, int>& map, const QString& name, int id)
{
    if (id < 0)
        map.remove(name);
    else
        map.insert(name, id);
}

} // namespace

void RaveloMapping::load(const Settings& settings)
{
    loadMap(
        settings, SettingsKeys::raveloCustomerName, SettingsKeys::raveloCustomerId, m_customers);
    loadMap(settings, SettingsKeys::raveloWorkTypeName, SettingsKeys::raveloWorkTypeProduct,
        m_products);
}

void RaveloMapping::save(Settings* settings) const
{
    saveMap(settings, SettingsKeys::raveloCustomerGroup, SettingsKeys::raveloCustomerName,
        SettingsKeys::raveloCustomerId, m_customers);
    saveMap(settings, SettingsKeys::raveloWorkTypeGroup, SettingsKeys::raveloWorkTypeName,
        SettingsKeys::raveloWorkTypeProduct, m_products);
}

int RaveloMapping::customerId(const QString& raveloCustomer) const
{
    return m_customers.value(raveloCustomer, -1);
}

void RaveloMapping::setCustomerId(const QString& raveloCustomer, int id)
{
    setId(m_customers, raveloCustomer, id);
}

int RaveloMapping::productId(const QString& workType) const
{
    return m_products.value(workType, -1);
}

void RaveloMapping::setProductId(const QString& workType, int id)
{
    setId(m_products, workType, id);
}
