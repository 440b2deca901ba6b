#include "customertablemodel.h"

#include <QColor>

CustomerTableModel::CustomerTableModel(Registry* registry, QObject* parent)
    : RecordTableModel(registry,
        { tr("Numero"), tr("Nimi"), tr("Lähiosoite"), tr("Postinumero"), tr("Postitoimipaikka"),
            tr("Y-tunnus"), tr("Sähköposti"), tr("Puhelin"), tr("Oma 1"), tr("Oma 2") },
        { &Registry::copyCustomersTo, &Query::saveCustomer, &Registry::fetchCustomers }, parent)
{
}

QVariant CustomerTableModel::recordData(const Customer& customer, int column, int role) const
{
    if (role == DeletedRole)
        return customer.deleted;
    if (role == IdRole)
        return customer.id;
    if (role == Qt::ForegroundRole && customer.deleted)
        return QColor(Qt::gray);
    if (role == Qt::TextAlignmentRole && column == NumberColumn)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return QVariant();

    switch (column) {
    case NumberColumn:
        return role == Qt::EditRole ? QVariant(customer.number)
                                    : QVariant(QString::number(customer.number));
    case NameColumn:
        return customer.name;
    case StreetNameColumn:
        return customer.streetName;
    case PostCodeColumn:
        return customer.postCode;
    case TownNameColumn:
        return customer.townName;
    case VatNumberColumn:
        return customer.vatNumber;
    case EmailAddressColumn:
        return customer.emailAddress;
    case PhoneNumberColumn:
        return customer.phoneNumber;
    case Custom1Column:
        return customer.property(QStringLiteral("c1"), QString()).toString();
    case Custom2Column:
        return customer.property(QStringLiteral("c2"), QString()).toString();
    default:
        return QVariant();
    }
}

int CustomerTableModel::nextFreeNumber() const
{
    int largest = 0;
    for (const Customer* customer : m_records)
        largest = qMax(largest, customer->number);
    return largest + 1;
}

bool CustomerTableModel::markDeleted(Customer* customer, bool deleted)
{
    customer->deleted = deleted;
    return true;
}
