#ifndef BANKACCOUNTTABLEMODEL_H
#define BANKACCOUNTTABLEMODEL_H

#include "core/recordtablemodel.h"
#include "domain/bankaccount.h"

// The seller's bank accounts being edited, in display order. Accounts are
// never removed from the table: removing a stored one marks it deleted. The
// rowNumber of every account follows the list order.
class BankAccountTableModel : public RecordTableModel<BankAccount>
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

    // Swaps the account with the nearest account above (or below) it that is
    // not deleted; returns the account's new row, or -1 when it cannot move.
    int moveAccount(int row, bool up);

protected:
    QVariant recordData(const BankAccount& account, int column, int role) const override;
    bool markDeleted(BankAccount* account, bool deleted) override;
    // An edit keeps the account's place as well as its id.
    void overwrite(BankAccount* target, const BankAccount& account) const override;
    // Renumbers the accounts after the list order.
    void orderChanged() override;
};

#endif // BANKACCOUNTTABLEMODEL_H
