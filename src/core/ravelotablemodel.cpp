#include "ravelotablemodel.h"

#include "core/registry.h"
#include "domain/constants.h"
#include "domain/customer.h"

#include <QFont>

RaveloTableModel::RaveloTableModel(Registry* registry, QObject* parent)
    : QAbstractTableModel(parent)
    , m_registry(registry)
    , m_quantityFormat(Constants::quantityFractionDigits, Constants::quantityMinFractionDigits)
    , m_amountFormat(Constants::amountFractionDigits, Constants::amountMinFractionDigits)
    , m_totalFormat(Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits)
{
}

void RaveloTableModel::setInvoices(const QList<RaveloInvoiceBuilder::PlannedInvoice>& invoices)
{
    beginResetModel();
    m_invoices = invoices;
    m_lines.clear();
    for (int invoice = 0; invoice < m_invoices.size(); ++invoice) {
        for (int item = 0; item < m_invoices.at(invoice).items.size(); ++item)
            m_lines.append({ invoice, item });
        m_lines.append({ invoice, -1 });
    }
    endResetModel();
}

void RaveloTableModel::clear()
{
    setInvoices({});
}

int RaveloTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_lines.size());
}

int RaveloTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant RaveloTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_lines.size())
        return QVariant();
    const Line& line = m_lines.at(index.row());
    const RaveloInvoiceBuilder::PlannedInvoice& invoice = m_invoices.at(line.invoice);
    const int column = index.column();
    if (role == Qt::TextAlignmentRole) {
        const bool number
            = column == QuantityColumn || column == PriceColumn || column == TotalColumn;
        return QVariant::fromValue(Qt::AlignVCenter | (number ? Qt::AlignRight : Qt::AlignLeft));
    }
    if (role == Qt::FontRole && line.item < 0) {
        QFont font;
        font.setBold(true);
        return font;
    }
    if (role != Qt::DisplayRole)
        return QVariant();

    if (line.item < 0) {
        if (column == TextColumn)
            return tr("Yhteensä");
        if (column == TotalColumn)
            return m_totalFormat.format(invoice.totalAmount());
        return QVariant();
    }
    const InvoiceItem& item = invoice.items.at(line.item);
    switch (column) {
    case CustomerColumn: {
        if (line.item != 0)
            return QVariant();
        bool found = false;
        const Customer* customer = m_registry->customerById(invoice.customerId, found);
        return found ? QStringLiteral("%1 %2").arg(customer->number).arg(customer->name)
                     : QString();
    }
    case ProductColumn:
        return QStringLiteral("%1 %2").arg(item.productNumber, item.productName);
    case TextColumn:
        return item.text;
    case QuantityColumn:
        return m_quantityFormat.format(item.quantity);
    case UnitColumn:
        return item.unitCode;
    case PriceColumn:
        return m_amountFormat.format(item.amount);
    case TotalColumn:
        return m_totalFormat.format(item.totalAmountVatIncluded());
    default:
        return QVariant();
    }
}

QVariant RaveloTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case CustomerColumn:
        return tr("Asiakas");
    case ProductColumn:
        return tr("Tuote");
    case TextColumn:
        return tr("Selite");
    case QuantityColumn:
        return tr("Määrä");
    case UnitColumn:
        return tr("Yksikkö");
    case PriceColumn:
        return tr("à-hinta, ALV");
    case TotalColumn:
        return tr("Yhteensä, ALV");
    default:
        return QVariant();
    }
}
