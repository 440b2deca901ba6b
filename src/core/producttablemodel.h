#ifndef PRODUCTTABLEMODEL_H
#define PRODUCTTABLEMODEL_H

#include "core/recordtablemodel.h"
#include "domain/product.h"

#include <QStringList>

// The products being edited. Removed products are deleted from the
// database by save().
class ProductTableModel : public RecordTableModel<Product>
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

    // The distinct non-empty categories in alphabetical order.
    QStringList categories() const;

protected:
    QVariant recordData(const Product& product, int column, int role) const override;
    bool deleteRecord(Query* query, int id) override;
};

#endif // PRODUCTTABLEMODEL_H
