#include "paymenttablemodel.h"

#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/constants.h"
#include "domain/payment.h"
#include "storage/query.h"

PaymentTableModel::PaymentTableModel(Registry* registry, QObject* parent)
    : QAbstractTableModel(parent)
    , m_registry(registry)
    , m_amountFormat(Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits)
    , m_amountEditFormat(
          Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits)
{
    m_amountEditFormat.setGrouping(false);
}

PaymentTableModel::~PaymentTableModel()
{
    qDeleteAll(m_payments);
}

int PaymentTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_payments.size();
}

int PaymentTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant PaymentTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || !isValidRow(index.row()) || index.column() >= ColumnCount)
        return QVariant();
    const Payment* payment = m_payments.at(index.row());

    if (role == Qt::TextAlignmentRole) {
        if (index.column() == AmountColumn)
            return QVariant(Qt::AlignRight | Qt::AlignVCenter);
        return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    }
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return QVariant();

    switch (index.column()) {
    case DateColumn:
        return m_dateFormat.format(payment->date);
    case AmountColumn:
        return role == Qt::EditRole ? m_amountEditFormat.format(payment->amount)
                                    : m_amountFormat.format(payment->amount);
    case BankAccountColumn: {
        if (role == Qt::EditRole)
            return payment->bankAccountId;
        bool found = false;
        const BankAccount* account = payment->bankAccountId < 0
            ? nullptr
            : m_registry->bankAccountById(payment->bankAccountId, found);
        return found && account ? account->name : QString();
    }
    }
    return QVariant();
}

QVariant PaymentTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case DateColumn:
        return tr("Päivämäärä");
    case AmountColumn:
        return tr("Summa");
    case BankAccountColumn:
        return tr("Pankkitili");
    default:
        return QVariant();
    }
}

Qt::ItemFlags PaymentTableModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags result = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    if (m_editable)
        result |= Qt::ItemIsEditable;
    return result;
}

bool PaymentTableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole || !index.isValid() || !isValidRow(index.row()) || !m_editable)
        return false;
    Payment* payment = m_payments.at(index.row());

    switch (index.column()) {
    case DateColumn: {
        const QString text = value.toString().trimmed();
        QDate date;
        if (value.typeId() == QMetaType::QDate)
            date = value.toDate();
        else if (!text.isEmpty())
            date = m_dateFormat.parse(text);
        // An empty text clears the date; saving then asks for one.
        if (!text.isEmpty() && !date.isValid())
            return false;
        if (date == payment->date)
            return false;
        payment->date = date;
        break;
    }
    case AmountColumn: {
        DecimalFormat::ParseStatus status = DecimalFormat::ParseStatus::Invalid;
        const qint64 amount = m_amountEditFormat.parse(value.toString().trimmed(), status);
        if (status == DecimalFormat::ParseStatus::TooLarge) {
            // Payments are stored in 32 bits, just as they are read.
            m_lastError = tr("Suorituksen summa on liian suuri. Suurin sallittu summa on %1.")
                              .arg(m_amountFormat.format(DecimalFormat::maxParsedValue));
            emit tooLargeAmountEntered(index.row());
            return false;
        }
        if (status != DecimalFormat::ParseStatus::Ok)
            return false;
        if (amount == payment->amount)
            return false;
        payment->amount = static_cast<int>(amount);
        break;
    }
    case BankAccountColumn: {
        bool ok = false;
        const int id = value.toInt(&ok);
        if (!ok)
            return false;
        if (id >= 0) {
            bool found = false;
            m_registry->bankAccountById(id, found);
            if (!found)
                return false;
        }
        if (id == payment->bankAccountId)
            return false;
        payment->bankAccountId = id < 0 ? -1 : id;
        break;
    }
    default:
        return false;
    }
    m_changed = true;
    emit dataChanged(index, index);
    return true;
}

bool PaymentTableModel::insertRows(int row, int count, const QModelIndex& parent)
{
    if (parent.isValid() || row < 0 || row > m_payments.size() || count < 1)
        return false;
    beginInsertRows(QModelIndex(), row, row + count - 1);
    for (int i = 0; i < count; ++i)
        m_payments.insert(row + i, new Payment());
    endInsertRows();
    m_changed = true;
    return true;
}

bool PaymentTableModel::removeRows(int row, int count, const QModelIndex& parent)
{
    if (parent.isValid() || row < 0 || count < 1 || row + count > m_payments.size())
        return false;
    beginRemoveRows(QModelIndex(), row, row + count - 1);
    for (int i = 0; i < count; ++i) {
        Payment* payment = m_payments.takeAt(row);
        m_rowChanges.removed(payment);
        delete payment;
    }
    endRemoveRows();
    m_changed = true;
    return true;
}

int PaymentTableModel::addPayment(const Payment& payment)
{
    auto* copy = new Payment();
    payment.copy(copy);
    copy->id = -1;
    const int row = m_payments.size();
    beginInsertRows(QModelIndex(), row, row);
    m_payments.append(copy);
    endInsertRows();
    m_changed = true;
    return row;
}

bool PaymentTableModel::insertRow(int row)
{
    return insertRows(row, 1);
}

bool PaymentTableModel::removeRow(int row)
{
    return removeRows(row, 1);
}

const Payment* PaymentTableModel::paymentAt(int row) const
{
    return isValidRow(row) ? m_payments.at(row) : nullptr;
}

long long PaymentTableModel::totalAmount() const
{
    long long total = 0;
    for (const Payment* payment : m_payments)
        total += payment->amount;
    return total;
}

int PaymentTableModel::emptyDate() const
{
    for (int row = 0; row < m_payments.size(); ++row) {
        if (!m_payments.at(row)->date.isValid())
            return row;
    }
    return -1;
}

void PaymentTableModel::setEditable(bool editable)
{
    m_editable = editable;
}

bool PaymentTableModel::loadPayments(Query* query, int invoiceId)
{
    if (!query->fetchPayments(invoiceId))
        return false;
    QList<Payment*> payments;
    while (query->next()) {
        auto* payment = new Payment();
        query->payment(payment);
        payments.append(payment);
    }
    clearPayments();
    if (!payments.isEmpty()) {
        beginInsertRows(QModelIndex(), 0, payments.size() - 1);
        m_payments = payments;
        endInsertRows();
    }
    return true;
}

bool PaymentTableModel::savePayments(Query* query, int invoiceId)
{
    if (!m_changed)
        return true;
    return m_rowChanges.save(
        m_payments, [query](int id) { return query->deletePayment(id); },
        [query, invoiceId](Payment* payment, int) {
            payment->invoiceId = invoiceId;
            return query->savePayment(payment);
        });
}

void PaymentTableModel::committed()
{
    m_rowChanges.clear();
    m_changed = false;
}

void PaymentTableModel::rolledBack()
{
    m_rowChanges.rolledBack();
}

void PaymentTableModel::clearPayments()
{
    if (!m_payments.isEmpty()) {
        beginRemoveRows(QModelIndex(), 0, m_payments.size() - 1);
        qDeleteAll(m_payments);
        m_payments.clear();
        endRemoveRows();
    }
    m_rowChanges.clear();
    m_changed = false;
}

void PaymentTableModel::deletePayments()
{
    if (!m_payments.isEmpty())
        removeRows(0, m_payments.size());
}
