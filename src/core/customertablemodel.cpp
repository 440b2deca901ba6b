#include "customertablemodel.h"

#include <QColor>

CustomerTableModel::CustomerTableModel(Registry* registry, QObject* parent)
    : RecordTableModel(registry, ColumnCount,
        { &Registry::copyCustomersTo, &Query::saveCustomer, &Registry::fetchCustomers }, parent)
{
}

QVariant CustomerTableModel::data(const QModelIndex& index, int role) const
{
    const Customer* customer = recordAt(index.row());
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
