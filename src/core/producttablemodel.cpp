#include "producttablemodel.h"

#include "domain/constants.h"
#include "domain/decimalformat.h"

#include <algorithm>

ProductTableModel::ProductTableModel(Registry* registry, QObject* parent)
    : RecordTableModel(registry, ColumnCount,
        { &Registry::copyProducts, &Query::saveProduct, &Registry::fetchProducts }, parent)
{
}

QVariant ProductTableModel::data(const QModelIndex& index, int role) const
{
    const Product* product = recordAt(index.row());
    if (!product || index.column() < 0 || index.column() >= ColumnCount)
        return QVariant();

    if (role == IdRole)
        return product->id;
    if (role == CategoryRole)
        return product->category;
    if (role == Qt::TextAlignmentRole
        && (index.column() == AmountColumn || index.column() == VatRateColumn))
        return int(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return QVariant();

    switch (index.column()) {
    case NumberColumn:
        return product->number;
    case NameColumn:
        return product->name;
    case UnitCodeColumn:
        return product->unitCode;
    case AmountColumn: {
        if (role == Qt::EditRole)
            return product->amount;
        const DecimalFormat format(
            Constants::amountFractionDigits, Constants::amountMinFractionDigits);
        return format.format(product->amount);
    }
    case VatModeColumn:
        if (role == Qt::EditRole)
            return product->vatExcluded;
        return product->vatExcluded ? tr("Veroton") : tr("Verollinen");
    case VatRateColumn: {
        if (role == Qt::EditRole)
            return product->vatRate;
        const DecimalFormat format(
            Constants::percentageFractionDigits, Constants::percentageMinFractionDigits);
        return format.format(product->vatRate);
    }
    case CategoryColumn:
        return product->category;
    default:
        return QVariant();
    }
}

QVariant ProductTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case NumberColumn:
        return tr("Numero");
    case NameColumn:
        return tr("Nimi");
    case UnitCodeColumn:
        return tr("Yksikkö");
    case AmountColumn:
        return tr("Hinta");
    case VatModeColumn:
        return tr("Hinnan tyyppi");
    case VatRateColumn:
        return tr("ALV-%");
    case CategoryColumn:
        return tr("Tuoteryhmä");
    default:
        return QVariant();
    }
}

QStringList ProductTableModel::categories() const
{
    QStringList result;
    for (const Product* product : m_records) {
        if (!product->category.isEmpty() && !result.contains(product->category))
            result.append(product->category);
    }
    std::sort(result.begin(), result.end(),
        [](const QString& a, const QString& b) { return QString::localeAwareCompare(a, b) < 0; });
    return result;
}

bool ProductTableModel::deleteRecord(Query* query, int id)
{
    return query->deleteProduct(id);
}
