#include "producttablemodel.h"

#include "domain/constants.h"
#include "domain/decimalformat.h"

#include <algorithm>

ProductTableModel::ProductTableModel(Registry* registry, QObject* parent)
    : RecordTableModel(registry,
        { tr("Numero"), tr("Nimi"), tr("Yksikkö"), tr("Hinta"), tr("Hinnan tyyppi"), tr("ALV-%"),
            tr("Tuoteryhmä") },
        { &Registry::copyProducts, &Query::saveProduct, &Registry::fetchProducts }, parent)
{
}

QVariant ProductTableModel::recordData(const Product& product, int column, int role) const
{
    if (role == IdRole)
        return product.id;
    if (role == CategoryRole)
        return product.category;
    if (role == Qt::TextAlignmentRole && (column == AmountColumn || column == VatRateColumn))
        return int(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return QVariant();

    switch (column) {
    case NumberColumn:
        return product.number;
    case NameColumn:
        return product.name;
    case UnitCodeColumn:
        return product.unitCode;
    case AmountColumn: {
        if (role == Qt::EditRole)
            return product.amount;
        const DecimalFormat format(
            Constants::amountFractionDigits, Constants::amountMinFractionDigits);
        return format.format(product.amount);
    }
    case VatModeColumn:
        if (role == Qt::EditRole)
            return product.vatExcluded;
        return product.vatExcluded ? tr("Veroton") : tr("Verollinen");
    case VatRateColumn: {
        if (role == Qt::EditRole)
            return product.vatRate;
        const DecimalFormat format(
            Constants::percentageFractionDigits, Constants::percentageMinFractionDigits);
        return format.format(product.vatRate);
    }
    case CategoryColumn:
        return product.category;
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
