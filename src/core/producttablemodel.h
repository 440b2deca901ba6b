#ifndef PRODUCTTABLEMODEL_H
#define PRODUCTTABLEMODEL_H

#include <QAbstractTableModel>
#include <QList>
#include <QString>
#include <QStringList>

class Database;
class Product;
class Registry;

// The products being edited: deep copies of the registry's list, owned by
// the model. Removed products are deleted from the database by save().
class ProductTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        NumberColumn,
        NameColumn,
        UnitCodeColumn,
        AmountColumn,
        VatModeColumn,
        VatRateColumn,
        CategoryColumn,
        ColumnCount
    };
    enum Role
    {
        IdRole = Qt::UserRole + 1,
        CategoryRole
    };

    explicit ProductTableModel(Registry* registry, QObject* parent = nullptr);
    ~ProductTableModel() override;

    // Replaces the rows with fresh copies of the registry's products.
    void load();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    const Product* productAt(int row) const;
    int rowOfId(int id) const;
    // The row of another product with this number, or -1.
    int rowOfNumber(const QString& number, int exceptRow = -1) const;
    // The distinct non-empty categories in alphabetical order.
    QStringList categories() const;

    // Appends a copy as a new product (its id is ignored); returns its row.
    int addProduct(const Product& product);
    // Overwrites the row with a copy of product, keeping the row's id.
    bool setProduct(int row, const Product& product);
    bool removeProduct(int row);
    bool isModified() const;

    // Deletes the removed products and writes the changed ones in one
    // transaction, then refreshes the registry's list. On failure everything
    // is rolled back, the rows stay as edited and lastError() tells why.
    bool save(Database* database);
    QString lastError() const;

private:
    Registry* m_registry;
    QList<Product*> m_products;
    QList<bool> m_changed;
    QList<int> m_removedIds;
    QString m_lastError;
};

#endif // PRODUCTTABLEMODEL_H
