#include "bankaccounttablemodel.h"

#include "core/registry.h"
#include "domain/bankaccount.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QColor>
#include <memory>

BankAccountTableModel::BankAccountTableModel(Registry* registry, QObject* parent)
    : QAbstractTableModel(parent), m_registry(registry)
{
}

BankAccountTableModel::~BankAccountTableModel()
{
    qDeleteAll(m_accounts);
}

void BankAccountTableModel::load()
{
    beginResetModel();
    qDeleteAll(m_accounts);
    m_accounts.clear();
    m_registry->copyBankAccountsTo(m_accounts);
    m_changed = QList<bool>(m_accounts.size(), false);
    endResetModel();
}

int BankAccountTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_accounts.size());
}

int BankAccountTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant BankAccountTableModel::data(const QModelIndex& index, int role) const
{
    const BankAccount* account = accountAt(index.row());
    if (!account || index.column() < 0 || index.column() >= ColumnCount)
        return QVariant();

    if (role == DeletedRole)
        return account->deleted;
    if (role == IdRole)
        return account->id;
    if (role == Qt::ForegroundRole && account->deleted)
        return QColor(Qt::gray);
    if (role == Qt::CheckStateRole && index.column() == VisibleColumn)
        return account->visible ? Qt::Checked : Qt::Unchecked;
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return QVariant();

    switch (index.column()) {
    case NameColumn:
        return account->name;
    case ShortNameColumn:
        return account->shortName;
    case IbanColumn:
        return role == Qt::EditRole ? account->iban : BankAccount::formatIban(account->iban);
    case BicColumn:
        return account->bic;
    case VisibleColumn:
        return role == Qt::EditRole ? QVariant(account->visible)
                                    : QVariant(account->visible ? tr("Kyllä") : tr("Ei"));
    default:
        return QVariant();
    }
}

QVariant BankAccountTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case NameColumn:
        return tr("Pankki");
    case ShortNameColumn:
        return tr("Lyhenne");
    case IbanColumn:
        return tr("IBAN");
    case BicColumn:
        return tr("BIC");
    case VisibleColumn:
        return tr("Tulostetaan");
    default:
        return QVariant();
    }
}

const BankAccount* BankAccountTableModel::accountAt(int row) const
{
    return m_accounts.value(row, nullptr);
}

int BankAccountTableModel::rowOfId(int id) const
{
    if (id < 0)
        return -1;
    for (int row = 0; row < m_accounts.size(); ++row) {
        if (m_accounts.at(row)->id == id)
            return row;
    }
    return -1;
}

int BankAccountTableModel::addAccount(const BankAccount& account)
{
    const int row = int(m_accounts.size());
    beginInsertRows(QModelIndex(), row, row);
    BankAccount* copy = new BankAccount();
    account.copy(copy);
    copy->id = -1;
    m_accounts.append(copy);
    m_changed.append(true);
    endInsertRows();
    renumber();
    return row;
}

bool BankAccountTableModel::setAccount(int row, const BankAccount& account)
{
    BankAccount* target = m_accounts.value(row, nullptr);
    if (!target)
        return false;
    const int id = target->id;
    const int rowNumber = target->rowNumber;
    account.copy(target);
    target->id = id;
    target->rowNumber = rowNumber;
    markChanged(row);
    return true;
}

bool BankAccountTableModel::removeAccount(int row)
{
    BankAccount* account = m_accounts.value(row, nullptr);
    if (!account)
        return false;
    if (account->id < 0) {
        beginRemoveRows(QModelIndex(), row, row);
        delete m_accounts.takeAt(row);
        m_changed.removeAt(row);
        endRemoveRows();
        renumber();
        return true;
    }
    account->deleted = true;
    markChanged(row);
    return true;
}

int BankAccountTableModel::moveAccount(int row, bool up)
{
    if (row < 0 || row >= m_accounts.size())
        return -1;
    const int step = up ? -1 : 1;
    int other = row + step;
    while (other >= 0 && other < m_accounts.size() && m_accounts.at(other)->deleted)
        other += step;
    if (other < 0 || other >= m_accounts.size())
        return -1;

    const int first = qMin(row, other);
    const int last = qMax(row, other);
    // Moving the lower one above the upper one swaps them; the deleted
    // accounts between them stay where they are.
    beginMoveRows(QModelIndex(), last, last, QModelIndex(), first);
    m_accounts.move(last, first);
    m_changed.move(last, first);
    endMoveRows();
    if (last - first > 1) {
        beginMoveRows(QModelIndex(), first + 1, first + 1, QModelIndex(), last + 1);
        m_accounts.move(first + 1, last);
        m_changed.move(first + 1, last);
        endMoveRows();
    }
    renumber();
    return other;
}

bool BankAccountTableModel::isModified() const
{
    return m_changed.contains(true);
}

bool BankAccountTableModel::save(Database* database)
{
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return false;
    }
    if (!database->transaction()) {
        m_lastError = database->lastError();
        return false;
    }

    QList<BankAccount*> inserted;
    bool ok = true;
    {
        std::unique_ptr<Query> query(database->query());
        for (int row = 0; ok && row < m_accounts.size(); ++row) {
            if (!m_changed.at(row))
                continue;
            BankAccount* account = m_accounts.at(row);
            if (account->id < 0)
                inserted.append(account);
            if (!query->saveBankAccount(account)) {
                m_lastError = query->lastError();
                ok = false;
            }
        }
    }
    if (ok && !database->commit()) {
        m_lastError = database->lastError();
        ok = false;
    }
    if (!ok) {
        database->rollback();
        for (BankAccount* account : inserted)
            account->id = -1;
        return false;
    }

    m_changed.fill(false);
    std::unique_ptr<Query> query(database->query());
    if (!m_registry->fetchBankAccounts(query.get())) {
        m_lastError = query->lastError();
        return false;
    }
    return true;
}

QString BankAccountTableModel::lastError() const
{
    return m_lastError;
}

void BankAccountTableModel::markChanged(int row)
{
    m_changed[row] = true;
    emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

void BankAccountTableModel::renumber()
{
    for (int row = 0; row < m_accounts.size(); ++row) {
        if (m_accounts.at(row)->rowNumber != row + 1) {
            m_accounts.at(row)->rowNumber = row + 1;
            markChanged(row);
        }
    }
}
