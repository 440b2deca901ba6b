#include "customertablemodel.h"

#include "core/registry.h"
#include "domain/customer.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QColor>
#include <memory>

CustomerTableModel::CustomerTableModel(Registry* registry, QObject* parent)
    : QAbstractTableModel(parent), m_registry(registry)
{
}

CustomerTableModel::~CustomerTableModel()
{
    qDeleteAll(m_customers);
}

void CustomerTableModel::load()
{
    beginResetModel();
    qDeleteAll(m_customers);
    m_customers.clear();
    m_registry->copyCustomersTo(m_customers);
    m_changed = QList<bool>(m_customers.size(), false);
    endResetModel();
}

int CustomerTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_customers.size());
}

int CustomerTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant CustomerTableModel::data(const QModelIndex& index, int role) const
{
    const Customer* customer = customerAt(index.row());
    if (!customer || index.column() < 0 || index.column() >= ColumnCount)
        return QVariant();

    if (role == DeletedRole)
        return customer->deleted;
    if (role == IdRole)
        return customer->id;
    if (role == Qt::ForegroundRole && customer->deleted)
        return QColor(Qt::gray);
    if (role == Qt::TextAlignmentRole && index.column() == NumberColumn)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return QVariant();

    switch (index.column()) {
    case NumberColumn:
        return role == Qt::EditRole ? QVariant(customer->number)
                                    : QVariant(QString::number(customer->number));
    case NameColumn:
        return customer->name;
    case StreetNameColumn:
        return customer->streetName;
    case PostCodeColumn:
        return customer->postCode;
    case TownNameColumn:
        return customer->townName;
    case VatNumberColumn:
        return customer->vatNumber;
    case EmailAddressColumn:
        return customer->emailAddress;
    case PhoneNumberColumn:
        return customer->phoneNumber;
    case Custom1Column:
        return customer->property(QStringLiteral("c1"), QString()).toString();
    case Custom2Column:
        return customer->property(QStringLiteral("c2"), QString()).toString();
    default:
        return QVariant();
    }
}

QVariant CustomerTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case NumberColumn:
        return tr("Numero");
    case NameColumn:
        return tr("Nimi");
    case StreetNameColumn:
        return tr("Lähiosoite");
    case PostCodeColumn:
        return tr("Postinumero");
    case TownNameColumn:
        return tr("Postitoimipaikka");
    case VatNumberColumn:
        return tr("Y-tunnus");
    case EmailAddressColumn:
        return tr("Sähköposti");
    case PhoneNumberColumn:
        return tr("Puhelin");
    case Custom1Column:
        return tr("Oma 1");
    case Custom2Column:
        return tr("Oma 2");
    default:
        return QVariant();
    }
}

const Customer* CustomerTableModel::customerAt(int row) const
{
    return m_customers.value(row, nullptr);
}

int CustomerTableModel::rowOfId(int id) const
{
    if (id < 0)
        return -1;
    for (int row = 0; row < m_customers.size(); ++row) {
        if (m_customers.at(row)->id == id)
            return row;
    }
    return -1;
}

int CustomerTableModel::nextFreeNumber() const
{
    int largest = 0;
    for (const Customer* customer : m_customers)
        largest = qMax(largest, customer->number);
    return largest + 1;
}

int CustomerTableModel::rowOfNumber(int number, int exceptRow) const
{
    for (int row = 0; row < m_customers.size(); ++row) {
        if (row != exceptRow && m_customers.at(row)->number == number)
            return row;
    }
    return -1;
}

int CustomerTableModel::addCustomer(const Customer& customer)
{
    const int row = int(m_customers.size());
    beginInsertRows(QModelIndex(), row, row);
    Customer* copy = new Customer();
    customer.copy(copy);
    copy->id = -1;
    m_customers.append(copy);
    m_changed.append(true);
    endInsertRows();
    return row;
}

bool CustomerTableModel::setCustomer(int row, const Customer& customer)
{
    Customer* target = m_customers.value(row, nullptr);
    if (!target)
        return false;
    const int id = target->id;
    customer.copy(target);
    target->id = id;
    markChanged(row);
    return true;
}

bool CustomerTableModel::removeCustomer(int row)
{
    Customer* customer = m_customers.value(row, nullptr);
    if (!customer)
        return false;
    if (customer->id < 0) {
        beginRemoveRows(QModelIndex(), row, row);
        delete m_customers.takeAt(row);
        m_changed.removeAt(row);
        endRemoveRows();
        return true;
    }
    customer->deleted = true;
    markChanged(row);
    return true;
}

bool CustomerTableModel::restoreCustomer(int row)
{
    Customer* customer = m_customers.value(row, nullptr);
    if (!customer)
        return false;
    customer->deleted = false;
    markChanged(row);
    return true;
}

bool CustomerTableModel::isModified() const
{
    return m_changed.contains(true);
}

bool CustomerTableModel::save(Database* database)
{
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return false;
    }
    if (!database->transaction()) {
        m_lastError = database->lastError();
        return false;
    }

    QList<Customer*> inserted;
    bool ok = true;
    {
        std::unique_ptr<Query> query(database->query());
        for (int row = 0; ok && row < m_customers.size(); ++row) {
            if (!m_changed.at(row))
                continue;
            Customer* customer = m_customers.at(row);
            if (customer->id < 0)
                inserted.append(customer);
            if (!query->saveCustomer(customer)) {
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
        // The rolled-back inserts must be inserted again on the next try.
        for (Customer* customer : inserted)
            customer->id = -1;
        return false;
    }

    m_changed.fill(false);
    std::unique_ptr<Query> query(database->query());
    if (!m_registry->fetchCustomers(query.get())) {
        m_lastError = query->lastError();
        return false;
    }
    return true;
}

QString CustomerTableModel::lastError() const
{
    return m_lastError;
}

void CustomerTableModel::markChanged(int row)
{
    m_changed[row] = true;
    emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
}
