#include "producttablemodel.h"

#include "core/registry.h"
#include "domain/constants.h"
#include "domain/decimalformat.h"
#include "domain/product.h"
#include "storage/database.h"
#include "storage/query.h"

#include <algorithm>
#include <memory>

ProductTableModel::ProductTableModel(Registry* registry, QObject* parent)
    : QAbstractTableModel(parent), m_registry(registry)
{
}

ProductTableModel::~ProductTableModel()
{
    qDeleteAll(m_products);
}

void ProductTableModel::load()
{
    beginResetModel();
    qDeleteAll(m_products);
    m_products.clear();
    m_removedIds.clear();
    m_registry->copyProducts(m_products);
    m_changed = QList<bool>(m_products.size(), false);
    endResetModel();
}

int ProductTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_products.size());
}

int ProductTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant ProductTableModel::data(const QModelIndex& index, int role) const
{
    const Product* product = productAt(index.row());
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

const Product* ProductTableModel::productAt(int row) const
{
    return m_products.value(row, nullptr);
}

int ProductTableModel::rowOfId(int id) const
{
    if (id < 0)
        return -1;
    for (int row = 0; row < m_products.size(); ++row) {
        if (m_products.at(row)->id == id)
            return row;
    }
    return -1;
}

int ProductTableModel::rowOfNumber(const QString& number, int exceptRow) const
{
    for (int row = 0; row < m_products.size(); ++row) {
        if (row != exceptRow && m_products.at(row)->number == number)
            return row;
    }
    return -1;
}

QStringList ProductTableModel::categories() const
{
    QStringList result;
    for (const Product* product : m_products) {
        if (!product->category.isEmpty() && !result.contains(product->category))
            result.append(product->category);
    }
    std::sort(result.begin(), result.end(),
        [](const QString& a, const QString& b) { return QString::localeAwareCompare(a, b) < 0; });
    return result;
}

int ProductTableModel::addProduct(const Product& product)
{
    const int row = int(m_products.size());
    beginInsertRows(QModelIndex(), row, row);
    Product* copy = new Product();
    product.copy(copy);
    copy->id = -1;
    m_products.append(copy);
    m_changed.append(true);
    endInsertRows();
    return row;
}

bool ProductTableModel::setProduct(int row, const Product& product)
{
    Product* target = m_products.value(row, nullptr);
    if (!target)
        return false;
    const int id = target->id;
    product.copy(target);
    target->id = id;
    m_changed[row] = true;
    emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
    return true;
}

bool ProductTableModel::removeProduct(int row)
{
    Product* product = m_products.value(row, nullptr);
    if (!product)
        return false;
    beginRemoveRows(QModelIndex(), row, row);
    if (product->id >= 0)
        m_removedIds.append(product->id);
    delete m_products.takeAt(row);
    m_changed.removeAt(row);
    endRemoveRows();
    return true;
}

bool ProductTableModel::isModified() const
{
    return !m_removedIds.isEmpty() || m_changed.contains(true);
}

bool ProductTableModel::save(Database* database)
{
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return false;
    }
    if (!database->transaction()) {
        m_lastError = database->lastError();
        return false;
    }

    QList<Product*> inserted;
    bool ok = true;
    {
        std::unique_ptr<Query> query(database->query());
        for (int i = 0; ok && i < m_removedIds.size(); ++i) {
            if (!query->deleteProduct(m_removedIds.at(i))) {
                m_lastError = query->lastError();
                ok = false;
            }
        }
        for (int row = 0; ok && row < m_products.size(); ++row) {
            if (!m_changed.at(row))
                continue;
            Product* product = m_products.at(row);
            if (product->id < 0)
                inserted.append(product);
            if (!query->saveProduct(product)) {
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
        for (Product* product : inserted)
            product->id = -1;
        return false;
    }

    m_removedIds.clear();
    m_changed.fill(false);
    std::unique_ptr<Query> query(database->query());
    if (!m_registry->fetchProducts(query.get())) {
        m_lastError = query->lastError();
        return false;
    }
    return true;
}

QString ProductTableModel::lastError() const
{
    return m_lastError;
}
