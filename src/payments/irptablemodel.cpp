#include "irptablemodel.h"

#include "core/registry.h"
#include "domain/constants.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/payment.h"
#include "storage/query.h"

#include <QHash>

IRPTableModel::IRPTableModel(Registry* registry, QObject* parent)
    : QAbstractTableModel(parent)
    , m_registry(registry)
    , m_amountFormat(Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits)
{
}

IRPTableModel::~IRPTableModel()
{
    deleteInvoices();
}

int IRPTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int IRPTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant IRPTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || !isValidRow(index.row()))
        return QVariant();
    const Row& row = m_rows.at(index.row());
    switch (index.column()) {
    case DateColumn:
        if (role == Qt::CheckStateRole)
            return row.checked ? Qt::Checked : Qt::Unchecked;
        if (role == Qt::DisplayRole)
            return m_dateFormat.format(m_saveEntryDate ? row.entryDate : row.paymentDate);
        break;
    case AmountColumn:
        if (role == Qt::DisplayRole)
            return m_amountFormat.format(row.amount);
        if (role == Qt::TextAlignmentRole)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        break;
    case InvoiceColumn:
        if (role == Qt::DisplayRole)
            return invoiceText(row.invoiceIndex);
        if (role == Qt::EditRole)
            return row.invoiceIndex < 0 ? -1 : row.invoiceIndex - row.firstInvoice;
        break;
    case CustomerColumn:
        if (role == Qt::DisplayRole)
            return customerText(index.row());
        break;
    case InfoColumn:
        if (role == Qt::DisplayRole)
            return row.info;
        break;
    default:
        break;
    }
    return QVariant();
}

QVariant IRPTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case DateColumn:
        return m_saveEntryDate ? tr("Kirjauspäivä") : tr("Maksupäivä");
    case AmountColumn:
        return tr("Rahamäärä");
    case InvoiceColumn:
        return tr("Lasku");
    case CustomerColumn:
        return tr("Asiakas");
    case InfoColumn:
        return tr("Lisätiedot");
    default:
        return QVariant();
    }
}

Qt::ItemFlags IRPTableModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    if (index.column() == DateColumn)
        flags |= Qt::ItemIsUserCheckable;
    else if (index.column() == InvoiceColumn)
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool IRPTableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || !isValidRow(index.row()))
        return false;
    Row& row = m_rows[index.row()];
    if (index.column() == DateColumn && role == Qt::CheckStateRole) {
        const bool checked = value.toInt() == Qt::Checked;
        // A row without an invoice has nothing to be saved to.
        if (checked && row.invoiceIndex < 0)
            return false;
        row.checked = checked;
        emit dataChanged(index, index, { Qt::CheckStateRole });
        return true;
    }
    if (index.column() == InvoiceColumn && role == Qt::EditRole) {
        bool ok = false;
        const int choice = value.toInt(&ok);
        if (!ok || choice < 0 || choice >= row.invoiceCount)
            return false;
        row.invoiceIndex = row.firstInvoice + choice;
        row.customerId = m_invoices.at(row.invoiceIndex).second->customerId;
        emit dataChanged(this->index(index.row(), 0), this->index(index.row(), ColumnCount - 1));
        return true;
    }
    return false;
}

void IRPTableModel::addPayment(const QDate& entryDate, const QDate& paymentDate, int amount,
    int customerId, int invoiceIndex, const QString& info, const QString& referenceNumber)
{
    const int rowNumber = int(m_rows.size());
    Row row;
    row.entryDate = entryDate;
    row.paymentDate = paymentDate;
    row.amount = amount;
    row.customerId = customerId;
    row.invoiceIndex = invoiceIndex;
    row.info = info;
    row.referenceNumber = referenceNumber;
    row.checked = invoiceIndex >= 0;
    // The row's candidates were appended last, just before it.
    for (int i = int(m_invoices.size()) - 1; i >= 0 && m_invoices.at(i).first == rowNumber; --i) {
        row.firstInvoice = i;
        ++row.invoiceCount;
    }
    beginInsertRows(QModelIndex(), rowNumber, rowNumber);
    m_rows.append(row);
    endInsertRows();
}

Invoice* IRPTableModel::addInvoice(int paymentRow)
{
    Invoice* invoice = new Invoice();
    m_invoices.append(qMakePair(paymentRow, invoice));
    return invoice;
}

int IRPTableModel::invoiceOffset(int row) const
{
    return isValidRow(row) ? m_rows.at(row).firstInvoice : -1;
}

int IRPTableModel::invoiceCount(int row) const
{
    return isValidRow(row) ? m_rows.at(row).invoiceCount : 0;
}

const Invoice* IRPTableModel::invoiceAt(int index) const
{
    return index >= 0 && index < m_invoices.size() ? m_invoices.at(index).second : nullptr;
}

QString IRPTableModel::invoiceText(int index) const
{
    const Invoice* invoice = invoiceAt(index);
    if (!invoice)
        return QString();
    return QStringLiteral("%1 / %2").arg(invoice->number).arg(m_dateFormat.format(invoice->date));
}

QString IRPTableModel::customerText(int row) const
{
    return isValidRow(row) ? customerNameById(m_rows.at(row).customerId) : QString();
}

QString IRPTableModel::customerNameById(int id) const
{
    if (id < 0)
        return QString();
    bool found = false;
    const Customer* customer = m_registry->customerById(id, found);
    return found ? customer->name : QString();
}

QStringList IRPTableModel::comboBoxItems(const QModelIndex& index) const
{
    QStringList items;
    if (!index.isValid() || !isValidRow(index.row()))
        return items;
    const Row& row = m_rows.at(index.row());
    for (int i = 0; i < row.invoiceCount; ++i)
        items.append(invoiceText(row.firstInvoice + i));
    return items;
}

void IRPTableModel::setSaveEntryDate(bool saveEntryDate)
{
    if (m_saveEntryDate == saveEntryDate)
        return;
    m_saveEntryDate = saveEntryDate;
    emit headerDataChanged(Qt::Horizontal, DateColumn, DateColumn);
    if (!m_rows.isEmpty())
        emit dataChanged(index(0, DateColumn), index(rowCount() - 1, DateColumn));
}

bool IRPTableModel::isChecked(int row) const
{
    return isValidRow(row) && m_rows.at(row).checked;
}

int IRPTableModel::invoiceIndex(int row) const
{
    return isValidRow(row) ? m_rows.at(row).invoiceIndex : -1;
}

int IRPTableModel::customerId(int row) const
{
    return isValidRow(row) ? m_rows.at(row).customerId : -1;
}

QDate IRPTableModel::entryDate(int row) const
{
    return isValidRow(row) ? m_rows.at(row).entryDate : QDate();
}

QDate IRPTableModel::paymentDate(int row) const
{
    return isValidRow(row) ? m_rows.at(row).paymentDate : QDate();
}

int IRPTableModel::amount(int row) const
{
    return isValidRow(row) ? m_rows.at(row).amount : 0;
}

QString IRPTableModel::info(int row) const
{
    return isValidRow(row) ? m_rows.at(row).info : QString();
}

QString IRPTableModel::referenceNumber(int row) const
{
    return isValidRow(row) ? m_rows.at(row).referenceNumber : QString();
}

int IRPTableModel::savePayments(Query* query, int bankAccountId)
{
    m_lastError.clear();
    QHash<int, int> balances;
    m_balancesBeforeSave.clear();
    m_balancesBeforeSave.reserve(m_invoices.size());
    for (const auto& candidate : std::as_const(m_invoices)) {
        balances.insert(candidate.second->id, candidate.second->balance);
        m_balancesBeforeSave.append(candidate.second->balance);
    }
    const auto failed = [&] {
        m_lastError = query->lastError();
        rolledBack();
        return -1;
    };

    int firstId = -1;
    int lastId = -1;
    int count = 0;
    for (const Row& row : std::as_const(m_rows)) {
        if (!row.checked || row.invoiceIndex < 0)
            continue;
        Invoice* invoice = m_invoices.at(row.invoiceIndex).second;
        Payment payment;
        payment.invoiceId = invoice->id;
        payment.date = m_saveEntryDate ? row.entryDate : row.paymentDate;
        payment.bankAccountId = bankAccountId;
        payment.amount = row.amount;
        if (!query->savePayment(&payment))
            return failed();
        if (firstId < 0)
            firstId = payment.id;
        lastId = payment.id;
        const int balance = balances.value(invoice->id) - row.amount;
        balances.insert(invoice->id, balance);
        invoice->balance = balance;
        if (!query->saveInvoice(invoice))
            return failed();
        ++count;
    }
    // Every record of a paid invoice shows its new balance.
    for (const auto& candidate : std::as_const(m_invoices))
        candidate.second->balance = balances.value(candidate.second->id);
    m_firstPaymentId = firstId;
    m_lastPaymentId = lastId;
    return count;
}

void IRPTableModel::rolledBack()
{
    if (m_balancesBeforeSave.size() == m_invoices.size()) {
        for (int i = 0; i < m_invoices.size(); ++i)
            m_invoices[i].second->balance = m_balancesBeforeSave.at(i);
    }
    m_firstPaymentId = -1;
    m_lastPaymentId = -1;
}

void IRPTableModel::clear()
{
    beginResetModel();
    m_rows.clear();
    deleteInvoices();
    m_firstPaymentId = -1;
    m_lastPaymentId = -1;
    endResetModel();
}

void IRPTableModel::deleteInvoices()
{
    for (const auto& candidate : std::as_const(m_invoices))
        delete candidate.second;
    m_invoices.clear();
    m_balancesBeforeSave.clear();
}
