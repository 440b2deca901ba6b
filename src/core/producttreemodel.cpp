#include "producttreemodel.h"

#include "core/producttablemodel.h"
#include "domain/product.h"

#include <QFont>
#include <algorithm>

ProductTreeModel::ProductTreeModel(ProductTableModel* source, QObject* parent)
    : QAbstractItemModel(parent), m_source(source)
{
    connect(
        source, &QAbstractItemModel::modelAboutToBeReset, this, &ProductTreeModel::beginRebuild);
    connect(source, &QAbstractItemModel::modelReset, this, &ProductTreeModel::endRebuild);
    connect(
        source, &QAbstractItemModel::rowsAboutToBeInserted, this, &ProductTreeModel::beginRebuild);
    connect(source, &QAbstractItemModel::rowsInserted, this, &ProductTreeModel::endRebuild);
    connect(
        source, &QAbstractItemModel::rowsAboutToBeRemoved, this, &ProductTreeModel::beginRebuild);
    connect(source, &QAbstractItemModel::rowsRemoved, this, &ProductTreeModel::endRebuild);
    connect(source, &QAbstractItemModel::dataChanged, this, &ProductTreeModel::sourceDataChanged);
    m_groups = buildGroups();
}

// Top-level rows carry the id 0, product rows their group's index plus one.
QModelIndex ProductTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (column < 0 || column >= columnCount() || row < 0)
        return QModelIndex();
    if (!parent.isValid()) {
        if (row >= m_groups.size())
            return QModelIndex();
        return createIndex(row, column, quintptr(0));
    }
    if (parent.internalId() != 0 || parent.row() >= m_groups.size())
        return QModelIndex();
    if (row >= m_groups.at(parent.row()).rows.size())
        return QModelIndex();
    return createIndex(row, column, quintptr(parent.row() + 1));
}

QModelIndex ProductTreeModel::parent(const QModelIndex& child) const
{
    if (!child.isValid() || child.internalId() == 0)
        return QModelIndex();
    return createIndex(int(child.internalId() - 1), 0, quintptr(0));
}

int ProductTreeModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return int(m_groups.size());
    if (parent.internalId() != 0 || parent.column() != 0 || parent.row() >= m_groups.size())
        return 0;
    return int(m_groups.at(parent.row()).rows.size());
}

int ProductTreeModel::columnCount(const QModelIndex&) const
{
    return ProductTableModel::ColumnCount;
}

QVariant ProductTreeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    if (index.internalId() == 0) {
        if (index.row() >= m_groups.size())
            return QVariant();
        const QString& category = m_groups.at(index.row()).category;
        if (role == ProductTableModel::CategoryRole)
            return category;
        if (role == Qt::FontRole) {
            QFont font;
            font.setBold(true);
            return font;
        }
        if (index.column() != 0 || role != Qt::DisplayRole)
            return QVariant();
        return category.isEmpty() ? tr("Muut tuotteet") : category;
    }
    const int row = sourceRow(index);
    if (row < 0)
        return QVariant();
    return m_source->data(m_source->index(row, index.column()), role);
}

QVariant ProductTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    return m_source->headerData(section, orientation, role);
}

Qt::ItemFlags ProductTreeModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

int ProductTreeModel::sourceRow(const QModelIndex& index) const
{
    if (!index.isValid() || index.model() != this || index.internalId() == 0)
        return -1;
    const int group = int(index.internalId() - 1);
    if (group >= m_groups.size())
        return -1;
    return m_groups.at(group).rows.value(index.row(), -1);
}

QModelIndex ProductTreeModel::indexOfSourceRow(int sourceRow, int column) const
{
    for (int group = 0; group < m_groups.size(); ++group) {
        const int row = int(m_groups.at(group).rows.indexOf(sourceRow));
        if (row >= 0)
            return index(row, column, index(group, 0));
    }
    return QModelIndex();
}

QString ProductTreeModel::category(const QModelIndex& index) const
{
    if (!index.isValid())
        return QString();
    const int group = index.internalId() == 0 ? index.row() : int(index.internalId() - 1);
    return group < m_groups.size() ? m_groups.at(group).category : QString();
}

QList<ProductTreeModel::Group> ProductTreeModel::buildGroups() const
{
    QList<Group> groups;
    const QStringList categories = m_source->categories();
    for (const QString& category : categories)
        groups.append(Group { category, {} });
    Group other;
    for (int row = 0; row < m_source->rowCount(); ++row) {
        const Product* product = m_source->recordAt(row);
        if (product->category.isEmpty()) {
            other.rows.append(row);
            continue;
        }
        groups[categories.indexOf(product->category)].rows.append(row);
    }
    if (!other.rows.isEmpty())
        groups.append(other);

    for (Group& group : groups) {
        std::sort(group.rows.begin(), group.rows.end(), [this](int a, int b) {
            const QString& first = m_source->recordAt(a)->number;
            const QString& second = m_source->recordAt(b)->number;
            // Numeric product codes sort by value, others as text.
            bool firstOk = false;
            bool secondOk = false;
            const qlonglong firstValue = first.toLongLong(&firstOk);
            const qlonglong secondValue = second.toLongLong(&secondOk);
            if (firstOk && secondOk && firstValue != secondValue)
                return firstValue < secondValue;
            if (firstOk != secondOk)
                return firstOk;
            if (first != second)
                return QString::localeAwareCompare(first, second) < 0;
            return a < b;
        });
    }
    return groups;
}

void ProductTreeModel::sourceDataChanged()
{
    QList<Group> groups = buildGroups();
    if (groups == m_groups) {
        for (int group = 0; group < m_groups.size(); ++group) {
            const QModelIndex parent = index(group, 0);
            const int count = int(m_groups.at(group).rows.size());
            if (count > 0)
                emit dataChanged(index(0, 0, parent), index(count - 1, columnCount() - 1, parent));
        }
        return;
    }
    beginResetModel();
    m_groups = groups;
    endResetModel();
}

void ProductTreeModel::beginRebuild()
{
    beginResetModel();
}

void ProductTreeModel::endRebuild()
{
    m_groups = buildGroups();
    endResetModel();
}
