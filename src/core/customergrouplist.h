#ifndef CUSTOMERGROUPLIST_H
#define CUSTOMERGROUPLIST_H

#include <QList>
#include <QString>

class Registry;
class Settings;

// Named sets of customers for group invoicing, kept in the company settings
// as "groups/0/name", "groups/0/customers" ("12,15,20"), "groups/1/..." with
// no gaps in the indexes.
class CustomerGroupList
{
public:
    struct Group
    {
        QString name;
        QList<int> customerIds;
    };

    // Stops at the first index without a name. Ids that are no number, or
    // of customers that are unknown or deleted, are left out.
    static QList<Group> load(const Settings* settings, const Registry* registry);
    // Replaces every stored group with groups, in their order.
    static void save(Settings* settings, const QList<Group>& groups);

    CustomerGroupList() = delete;
};

#endif // CUSTOMERGROUPLIST_H
