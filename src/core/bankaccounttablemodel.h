#ifndef BANKACCOUNTTABLEMODEL_H
#define BANKACCOUNTTABLEMODEL_H

#include <QAbstractTableModel>
#include <QList>
#include <QString>

class BankAccount;
class Database;
class Registry;

// The seller's bank accounts being edited: deep copies of the registry's
// list in display order, owned by the model. Accounts are never removed from
// the table: removing one marks it deleted. Moving an account renumbers the
// rowNumber of every account after the list order.
class BankAccountTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        NameColumn,
        ShortNameColumn,
        IbanColumn,
        BicColumn,
        VisibleColumn,
        ColumnCount
    };
    enum Role
    {
        DeletedRole = Qt::UserRole + 1,
        IdRole
    };

    explicit BankAccountTableModel(Registry* registry, QObject* parent = nullptr);
    ~BankAccountTableModel() override;

    // Replaces the rows with fresh copies of the registry's accounts.
    void load();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    const BankAccount* accountAt(int row) const;
    int rowOfId(int id) const;

    // Appends a copy as a new account after the others; returns its row.
    int addAccount(const BankAccount& account);
    // Overwrites the row with a copy of account, keeping its id and place.
    bool setAccount(int row, const BankAccount& account);
    // Marks a stored account deleted; one that was never saved just goes.
    bool removeAccount(int row);
    // Swaps the account with the nearest account above (or below) it that is
    // not deleted; returns the account's new row, or -1 when it cannot move.
    int moveAccount(int row, bool up);
    bool isModified() const;

    // Writes the changed accounts in one transaction and refreshes the
    // registry's list. On failure everything is rolled back, the rows stay
    // as edited and lastError() tells why.
    bool save(Database* database);
    QString lastError() const;

private:
    void markChanged(int row);
    void renumber();

    Registry* m_registry;
    QList<BankAccount*> m_accounts;
    QList<bool> m_changed;
    QString m_lastError;
};

#endif // BANKACCOUNTTABLEMODEL_H
