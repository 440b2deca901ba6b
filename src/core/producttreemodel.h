#ifndef PRODUCTTREEMODEL_H
#define PRODUCTTREEMODEL_H

#include <QAbstractItemModel>
#include <QList>
#include <QStringList>

class ProductTableModel;

// The products of a ProductTableModel grouped by category: the categories
// in alphabetical order at the top level (products without one last, under
// "Muut tuotteet"), their products by number below. The columns are those
// of the table model; a category row shows its name in the first column.
class ProductTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    explicit ProductTreeModel(ProductTableModel* source, QObject* parent = nullptr);

    QModelIndex index(
        int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // The row of the product in the table model; -1 for a category row.
    int sourceRow(const QModelIndex& index) const;
    QModelIndex indexOfSourceRow(int sourceRow, int column = 0) const;
    // The category of a row (a product's own category), empty for "other".
    QString category(const QModelIndex& index) const;

private:
    struct Group
    {
        QString category;
        QList<int> rows;
        bool operator==(const Group& other) const
        {
            return category == other.category && rows == other.rows;
        }
    };

    QList<Group> buildGroups() const;
    void sourceDataChanged();
    void beginRebuild();
    void endRebuild();

    ProductTableModel* m_source;
    QList<Group> m_groups;
};

#endif // PRODUCTTREEMODEL_H
