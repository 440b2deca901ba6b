#ifndef CUSTOMERTABLEMODEL_H
#define CUSTOMERTABLEMODEL_H

#include <QAbstractTableModel>
#include <QList>
#include <QString>

class Customer;
class Database;
class Registry;

// The customers being edited: deep copies of the registry's list, owned by
// the model. Nothing reaches the database or the registry before save().
// Customers are never removed from the table: removing one marks it deleted.
class CustomerTableModel : public QAbstractTableModel
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
    ~CustomerTableModel() override;

    // Replaces the rows with fresh copies of the registry's customers.
    void load();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    const Customer* customerAt(int row) const;
    int rowOfId(int id) const;
    // One more than the largest number in use; deleted customers keep theirs.
    int nextFreeNumber() const;
    // The row of another customer with this number, or -1.
    int rowOfNumber(int number, int exceptRow = -1) const;

    // Appends a copy as a new customer (its id is ignored); returns its row.
    int addCustomer(const Customer& customer);
    // Overwrites the row with a copy of customer, keeping the row's id.
    bool setCustomer(int row, const Customer& customer);
    // Marks a stored customer deleted; one that was never saved just goes.
    bool removeCustomer(int row);
    bool restoreCustomer(int row);
    bool isModified() const;

    // Writes the changed customers in one transaction and refreshes the
    // registry's list. On failure everything is rolled back, the rows stay
    // as edited and lastError() tells why.
    bool save(Database* database);
    QString lastError() const;

private:
    void markChanged(int row);

    Registry* m_registry;
    QList<Customer*> m_customers;
    QList<bool> m_changed;
    QString m_lastError;
};

#endif // CUSTOMERTABLEMODEL_H
