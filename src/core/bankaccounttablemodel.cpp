#include "bankaccounttablemodel.h"

#include <QColor>

BankAccountTableModel::BankAccountTableModel(Registry* registry, QObject* parent)
    : RecordTableModel(registry,
        { tr("Pankki"), tr("Lyhenne"), tr("IBAN"), tr("BIC"), tr("Tulostetaan") },
        { &Registry::copyBankAccountsTo, &Query::saveBankAccount, &Registry::fetchBankAccounts },
        parent)
{
}

QVariant BankAccountTableModel::recordData(const BankAccount& account, int column, int role) const
{
    if (role == DeletedRole)
        return account.deleted;
    if (role == IdRole)
        return account.id;
    if (role == Qt::ForegroundRole && account.deleted)
        return QColor(Qt::gray);
    if (role == Qt::CheckStateRole && column == VisibleColumn)
        return account.visible ? Qt::Checked : Qt::Unchecked;
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return QVariant();

    switch (column) {
    case NameColumn:
        return account.name;
    case ShortNameColumn:
        return account.shortName;
    case IbanColumn:
        return role == Qt::EditRole ? account.iban : BankAccount::formatIban(account.iban);
    case BicColumn:
        return account.bic;
    case VisibleColumn:
        return role == Qt::EditRole ? QVariant(account.visible)
                                    : QVariant(account.visible ? tr("Kyllä") : tr("Ei"));
    default:
        return QVariant();
    }
}

int BankAccountTableModel::moveAccount(int row, bool up)
{
    if (row < 0 || row >= m_records.size())
        return -1;
    const int step = up ? -1 : 1;
    int other = row + step;
    while (other >= 0 && other < m_records.size() && m_records.at(other)->deleted)
        other += step;
    if (other < 0 || other >= m_records.size())
        return -1;

    const int first = qMin(row, other);
    const int last = qMax(row, other);
    // Moving the lower one above the upper one swaps them; the deleted
    // accounts between them stay where they are.
    beginMoveRows(QModelIndex(), last, last, QModelIndex(), first);
    m_records.move(last, first);
    m_changed.move(last, first);
    endMoveRows();
    if (last - first > 1) {
        beginMoveRows(QModelIndex(), first + 1, first + 1, QModelIndex(), last + 1);
        m_records.move(first + 1, last);
        m_changed.move(first + 1, last);
        endMoveRows();
    }
    orderChanged();
    return other;
}

bool BankAccountTableModel::markDeleted(BankAccount* account, bool deleted)
{
    account->deleted = deleted;
    return true;
}

void BankAccountTableModel::overwrite(BankAccount* target, const BankAccount& account) const
{
    const int id = target->id;
    const int rowNumber = target->rowNumber;
    account.copy(target);
    target->id = id;
    target->rowNumber = rowNumber;
}

void BankAccountTableModel::orderChanged()
{
    for (int row = 0; row < m_records.size(); ++row) {
        if (m_records.at(row)->rowNumber != row + 1) {
            m_records.at(row)->rowNumber = row + 1;
            markChanged(row);
        }
    }
}
