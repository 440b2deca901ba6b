#ifndef CUSTOMERTABLEMODEL_H
#define CUSTOMERTABLEMODEL_H

#include "core/recordtablemodel.h"
#include "domain/customer.h"

// The customers being edited. Customers are never removed from the table:
// removing a stored one marks it deleted.
class CustomerTableModel : public RecordTableModel<Customer>
{
    Q_OBJECT
public:
    enum Column
    {
        NumberColumn,
        NameColumn,
        StreetNameColumn,
        PostCodeColumn,
        TownNameColumn,
        VatNumberColumn,
        EmailAddressColumn,
        PhoneNumberColumn,
        Custom1Column,
        Custom2Column,
        ColumnCount
    };
    enum Role
    {
        DeletedRole = Qt::UserRole + 1,
        IdRole
    };

    explicit CustomerTableModel(Registry* registry, QObject* parent = nullptr);

    // One more than the largest number in use; deleted customers keep theirs.
    int nextFreeNumber() const;

protected:
    QVariant recordData(const Customer& customer, int column, int role) const override;
    bool markDeleted(Customer* customer, bool deleted) override;
};

#endif // CUSTOMERTABLEMODEL_H
