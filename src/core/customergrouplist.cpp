#include "customergrouplist.h"

#include "core/registry.h"
#include "domain/customer.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"

namespace {

QString nameKey(int index)
{
    return SettingsKeys::groupName.arg(index);
}

QString customersKey(int index)
{
    return SettingsKeys::groupCustomers.arg(index);
}

} // namespace

QList<CustomerGroupList::Group> CustomerGroupList::load(
    const Settings* settings, const Registry* registry)
{
    QList<Group> groups;
    if (!settings)
        return groups;
    for (int index = 0;; ++index) {
        const QString name = settings->property(nameKey(index), QString()).toString();
        if (name.isEmpty())
            break;
        Group group { name, {} };
        // Stored as text; the database gives every value back as text.
        const QStringList parts = settings->property(customersKey(index), QString())
                                      .toString()
                                      .split(QLatin1Char(','), Qt::SkipEmptyParts);
        for (const QString& part : parts) {
            bool ok = false;
            const int id = part.trimmed().toInt(&ok);
            bool found = false;
            const Customer* customer = ok ? registry->customerById(id, found) : nullptr;
            if (found && customer && !customer->deleted)
                group.customerIds.append(id);
        }
        groups.append(group);
    }
    return groups;
}

void CustomerGroupList::save(Settings* settings, const QList<Group>& groups)
{
    settings->removeProperties(SettingsKeys::groupPrefix);
    for (int index = 0; index < groups.size(); ++index) {
        QStringList ids;
        for (const int id : groups.at(index).customerIds)
            ids.append(QString::number(id));
        settings->setProperty(nameKey(index), groups.at(index).name);
        settings->setProperty(customersKey(index), ids.join(QLatin1Char(',')));
    }
}
