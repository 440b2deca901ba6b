#include "invoicetablemodel.h"

#include "core/registry.h"
#include "domain/constants.h"
#include "domain/customer.h"
#include "domain/invoicetype.h"
#include "storage/query.h"

#include <algorithm>

InvoiceTableModel::InvoiceTableModel(Registry* registry, QObject* parent)
    : QAbstractTableModel(parent)
    , m_registry(registry)
    , m_moneyFormat(Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits)
{
}

int InvoiceTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_invoices.size();
}

int InvoiceTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant InvoiceTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_invoices.size())
        return QVariant();
    const Invoice& invoice = m_invoices.at(index.row());

    if (role == Qt::TextAlignmentRole) {
        switch (index.column()) {
        case NumberColumn:
        case TotalAmountColumn:
        case BalanceColumn:
            return QVariant(Qt::AlignRight | Qt::AlignVCenter);
        default:
            return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
        }
    }
    if (role == SortRole) {
        switch (index.column()) {
        case NumberColumn:
            return invoice.number;
        case DateColumn:
            return invoice.date;
        case DueDateColumn:
            return invoice.dueDate;
        case TotalAmountColumn:
            return invoice.totalAmount;
        case BalanceColumn:
            return invoice.balance;
        case TypeColumn:
            return invoice.type;
        default:
            return data(index, Qt::DisplayRole);
        }
    }
    if (role != Qt::DisplayRole)
        return QVariant();

    switch (index.column()) {
    case NumberColumn:
        return invoice.number;
    case DateColumn:
        return m_dateFormat.format(invoice.date);
    case DueDateColumn:
        return m_dateFormat.format(invoice.dueDate);
    case CustomerColumn: {
        bool found = false;
        const Customer* customer = m_registry->customerById(invoice.customerId, found);
        return found ? customer->name : QString();
    }
    case TotalAmountColumn:
        return m_moneyFormat.format(invoice.totalAmount);
    case BalanceColumn:
        return m_moneyFormat.format(invoice.balance);
    case TypeColumn:
        return InvoiceType::name(invoice.type);
    default:
        return QVariant();
    }
}

QVariant InvoiceTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case NumberColumn:
        return tr("Numero");
    case DateColumn:
        return tr("Päivämäärä");
    case DueDateColumn:
        return tr("Eräpäivä");
    case CustomerColumn:
        return tr("Asiakas");
    case TotalAmountColumn:
        return tr("Summa");
    case BalanceColumn:
        return tr("Avoinna");
    case TypeColumn:
        return tr("Tyyppi");
    default:
        return QVariant();
    }
}

void InvoiceTableModel::load(Query* query, bool latestOnly)
{
    beginResetModel();
    m_invoices.clear();
    while (query->next()) {
        Invoice invoice;
        query->invoiceSummary(&invoice);
        m_invoices.append(invoice);
    }
    if (latestOnly)
        std::reverse(m_invoices.begin(), m_invoices.end());
    endResetModel();
}

void InvoiceTableModel::clear()
{
    beginResetModel();
    m_invoices.clear();
    endResetModel();
}

const Invoice* InvoiceTableModel::invoiceAt(int row) const
{
    if (row < 0 || row >= m_invoices.size())
        return nullptr;
    return &m_invoices.at(row);
}

int InvoiceTableModel::rowOfInvoiceId(int id) const
{
    for (int i = 0; i < m_invoices.size(); ++i) {
        if (m_invoices.at(i).id == id)
            return i;
    }
    return -1;
}

void InvoiceTableModel::updateInvoice(int row, const Invoice& invoice)
{
    if (row < 0 || row >= m_invoices.size())
        return;
    Invoice& target = m_invoices[row];
    target.id = invoice.id;
    target.customerId = invoice.customerId;
    target.type = invoice.type;
    target.number = invoice.number;
    target.date = invoice.date;
    target.dueDate = invoice.dueDate;
    target.deliveryDate = invoice.deliveryDate;
    target.referenceNumber = invoice.referenceNumber;
    target.totalAmount = invoice.totalAmount;
    target.balance = invoice.balance;
    emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

void InvoiceTableModel::setTotalAmount(int row, int totalAmount)
{
    if (row < 0 || row >= m_invoices.size())
        return;
    m_invoices[row].totalAmount = totalAmount;
    emitRowChanged(row, TotalAmountColumn);
}

void InvoiceTableModel::setBalance(int row, int balance)
{
    if (row < 0 || row >= m_invoices.size())
        return;
    m_invoices[row].balance = balance;
    emitRowChanged(row, BalanceColumn);
}

void InvoiceTableModel::setType(int row, int type)
{
    if (row < 0 || row >= m_invoices.size())
        return;
    m_invoices[row].type = type;
    emitRowChanged(row, TypeColumn);
}

bool InvoiceTableModel::removeRow(int row)
{
    if (row < 0 || row >= m_invoices.size())
        return false;
    beginRemoveRows(QModelIndex(), row, row);
    m_invoices.removeAt(row);
    endRemoveRows();
    return true;
}

void InvoiceTableModel::emitRowChanged(int row, int column)
{
    emit dataChanged(index(row, column), index(row, column));
}
