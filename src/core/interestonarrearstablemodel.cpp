#include "interestonarrearstablemodel.h"

#include "domain/constants.h"

InterestOnArrearsTableModel::InterestOnArrearsTableModel(QObject* parent)
    : QAbstractTableModel(parent)
    , m_amountFormat(Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits)
{
}

int InterestOnArrearsTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int InterestOnArrearsTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant InterestOnArrearsTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || !isValidRow(index.row()))
        return QVariant();
    const InterestOnArrearsRow& row = m_rows.at(index.row());
    if (role == Qt::TextAlignmentRole)
        return index.column() == DateColumn ? QVariant()
                                            : QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return QVariant();
    switch (index.column()) {
    case NumberColumn:
        return row.invoiceNumber;
    case DateColumn:
        return m_dateFormat.format(row.date);
    case DaysColumn:
        return row.days;
    case AmountColumn:
        return m_amountFormat.format(row.amount);
    default:
        return QVariant();
    }
}

QVariant InterestOnArrearsTableModel::headerData(
    int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case NumberColumn:
        return tr("Nro");
    case DateColumn:
        return tr("Päivämäärä");
    case DaysColumn:
        return tr("Päiviä");
    case AmountColumn:
        return tr("Viivästyskorko");
    default:
        return QVariant();
    }
}

bool InterestOnArrearsTableModel::removeRows(int row, int count, const QModelIndex& parent)
{
    if (parent.isValid() || !isValidRow(row) || count < 1)
        return false;
    const int last = qMin(row + count, int(m_rows.size())) - 1;
    beginRemoveRows(QModelIndex(), row, last);
    m_rows.erase(m_rows.begin() + row, m_rows.begin() + last + 1);
    endRemoveRows();
    return true;
}

void InterestOnArrearsTableModel::addRow(int invoiceNumber, const QDate& date, int days, int amount)
{
    const int row = int(m_rows.size());
    beginInsertRows(QModelIndex(), row, row);
    m_rows.append({ invoiceNumber, date, days, amount, m_customerId });
    endInsertRows();
}

void InterestOnArrearsTableModel::clear()
{
    beginResetModel();
    m_rows.clear();
    m_customerId = -1;
    endResetModel();
}

int InterestOnArrearsTableModel::invoiceNumber(int row) const
{
    return isValidRow(row) ? m_rows.at(row).invoiceNumber : 0;
}

int InterestOnArrearsTableModel::amount(int row) const
{
    return isValidRow(row) ? m_rows.at(row).amount : 0;
}

const InterestOnArrearsRow* InterestOnArrearsTableModel::rowAt(int row) const
{
    return isValidRow(row) ? &m_rows.at(row) : nullptr;
}

void InterestOnArrearsTableModel::setCustomerId(int customerId)
{
    m_customerId = customerId;
    if (!m_rows.isEmpty())
        m_rows.last().customerId = customerId;
}

bool InterestOnArrearsTableModel::hasOneCustomer() const
{
    for (const InterestOnArrearsRow& row : m_rows) {
        if (row.customerId != m_rows.first().customerId)
            return false;
    }
    return true;
}
